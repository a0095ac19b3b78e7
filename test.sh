#!/usr/bin/env bash
# Everything that must hold: format, warnings, tests (also under the sanitizers), static analysis and
# a short run of each fuzzer. Ends with "N passed, N failed", counting tests and steps; the exit
# status is 0 when nothing failed.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")" || exit 2
. packaging/install.sh
InstallPackages build run test || exit 2

FUZZ_SECONDS=10
TEST_SECONDS=300 # for one test at most
lJobs="$(nproc)"
mkdir -p build
sLog="$(mktemp -p build)"
trap 'rm -f "$sLog"' EXIT
lPassed=0
lFailed=0
asFailed=()

# Step NAME COMMAND... - runs one step and counts it.
Step() {
  local sName="$1" lStart=$SECONDS
  shift
  printf '\n==== %s\n' "$sName"
  if "$@"; then
    lPassed=$((lPassed + 1))
    printf -- '---- %s: passed (%d s)\n' "$sName" $((SECONDS - lStart))
  else
    lFailed=$((lFailed + 1))
    asFailed+=("$sName")
    printf -- '---- %s: FAILED (%d s)\n' "$sName" $((SECONDS - lStart))
  fi
}

Sources() { find src tools tests bench fuzz -name '*.cpp' -o -name '*.h'; }

Format() { Sources | xargs clang-format --dry-run -Werror; }

Build() {
  local sPreset="$1"
  shift
  cmake --preset "$sPreset" "$@" >"$sLog" || {
    cat "$sLog"
    return 1
  }
  cmake --build --preset "$sPreset" --parallel "$lJobs" -- --quiet
}

# Runs a preset's tests and counts each of them as well.
Tests() {
  local lStatus lTotal=0 lBad=0
  ctest --preset "$1" --parallel "$lJobs" --timeout "$TEST_SECONDS" --no-tests=error | tee "$sLog"
  lStatus=$?
  read -r lBad lTotal < <(sed -n 's/.*% tests passed, \([0-9]*\) tests failed out of \([0-9]*\)$/\1 \2/p' "$sLog")
  lPassed=$((lPassed + lTotal - lBad))
  lFailed=$((lFailed + lBad))
  return "$lStatus"
}

# Our own sources only: what the build generates is beneath build/. Not every warning option of GCC
# is known to clang.
Tidy() {
  local sHere
  sHere="$(pwd -P)"
  run-clang-tidy -quiet -j "$lJobs" -p "build/$1" \
    -extra-arg=-Wno-unknown-warning-option "^$sHere/(src|tools|tests|bench|fuzz)/" \
    >"$sLog" 2>&1 || {
    grep -v -e '^clang-tidy' -e 'warnings\? generated' "$sLog"
    return 1
  }
}

Fuzz() {
  "build/fuzz/fuzz/$1" -max_total_time="$FUZZ_SECONDS" -print_final_stats=1 \
    -artifact_prefix=build/fuzz/ 2>"$sLog" || {
    tail -n 50 "$sLog"
    return 1
  }
  grep -e number_of_executed_units "$sLog"
}

Step "format" Format
Step "build" Build dev -DVARNEL_BENCH=ON
Step "tests" Tests dev
Step "build with sanitizers" Build sanitize
Step "tests with sanitizers" Tests sanitize
Step "build of the fuzzers" Build fuzz
for sTarget in FuzzDecoder FuzzAssembler FuzzRoundTrip; do
  Step "$sTarget" Fuzz "$sTarget"
done
Step "clang-tidy" Tidy dev
Step "clang-tidy of the fuzzers" Tidy fuzz

printf '\n'
for sName in "${asFailed[@]}"; do
  echo "failed: $sName"
done
echo "$lPassed passed, $lFailed failed"
[ "$lFailed" -eq 0 ]
