#!/usr/bin/env bash
# Everything that must hold: format, warnings, tests (also under the sanitizers, and of the Windows
# programs under Wine), packages, static analysis and a short run of each fuzzer. Ends with
# "N passed, N failed", counting tests and steps; the exit status is 0 when nothing failed.
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

# Tests PRESET OPTION... - runs a preset's tests and counts each of them as well.
Tests() {
  local sPreset="$1" lStatus lTotal=0 lBad=0
  shift
  ctest --preset "$sPreset" --parallel "$lJobs" --timeout "$TEST_SECONDS" \
    --no-tests=error "$@" | tee "$sLog"
  lStatus=$?
  read -r lBad lTotal < <(sed -n 's/.*% tests passed, \([0-9]*\) tests failed out of \([0-9]*\)$/\1 \2/p' "$sLog")
  lPassed=$((lPassed + lTotal - lBad))
  lFailed=$((lFailed + lBad))
  return "$lStatus"
}

# Packages a preset's programs, and gives the package's path.
Package() {
  rm -rf "build/$1/package"
  cpack --preset "$1" >"$sLog" 2>&1 || {
    cat "$sLog" >&2
    return 1
  }
  find "build/$1/package" -maxdepth 1 -name "$2"
}

# Holds LISTING END... - whether each of these ends a line of a package's listing.
Holds() {
  local sListing="$1" sEnd
  shift
  for sEnd in "$@"; do
    grep -q "$sEnd\$" <<<"$sListing" || {
      echo "not in the package: $sEnd"
      return 1
    }
  done
}

# Work JOURNEY FOLDER [END] - whether the programs of a folder, whose names end so, do a journey.
Work() { python3 tests/e2e/Journeys.py "$1" "$2"/varnel-{emulator,disass,z80}"${3:-}"; }

DebianPackage() {
  local sPackage
  Build run && sPackage="$(Package run '*.deb')" || return 1
  Holds "$(dpkg-deb --contents "$sPackage")" bin/varnel-disass bin/varnel-emulator bin/varnel-z80 \
    man1/varnel-{disass,emulator,z80}.1 applications/varnel-disass.desktop apps/varnel.svg &&
    dpkg-deb --field "$sPackage" Depends | grep -q libqt6widgets6 &&
    desktop-file-validate packaging/varnel-disass.desktop || return 1
  if [ "$(id -u)" -ne 0 ]; then
    echo "NOT RUN: only root can install the package and remove it again"
    return
  fi
  if apt-get install --yes --no-install-recommends "./$sPackage" >"$sLog" 2>&1 && Work Start /usr/bin &&
    apt-get remove --yes varnel >>"$sLog" 2>&1 && [ ! -e /usr/bin/varnel-disass ]; then
    return
  fi
  cat "$sLog"
  return 1
}

WindowsPackage() {
  local sPackage sProgram sFolder=build/windows/unpacked
  sPackage="$(Package windows '*.zip')" || return 1
  Holds "$(unzip -l "$sPackage")" /varnel-{disass,emulator,z80}.exe /README.txt "/Try Varnel.cmd" \
    /notices/MinGW-w64.txt /notices/GCC.txt || return 1
  rm -rf "$sFolder"
  unzip -q -j "$sPackage" -d "$sFolder" || return 1
  # A program needs no DLL that Windows does not have.
  for sProgram in "$sFolder"/*.exe; do
    x86_64-w64-mingw32-objdump -p "$sProgram" | awk '/DLL Name/ { print tolower($3) }'
  done | grep -vxE '(advapi32|com(ctl|dlg)32|gdi32|kernel32|msvcrt|ole(32|acc|aut32)|shell32|user32)\.dll' &&
    return 1
  local -x WINEPREFIX="$PWD/build/windows/wine" WINEDEBUG=-all
  Work Start "$PWD/$sFolder" .exe && Work DoubleClick "$PWD/$sFolder" .exe
}

# Tidy PRESET FOLDER... - checks these folders of ours as that preset compiles them, in a log of the
# preset's own. Not every warning option of GCC is known to clang.
Tidy() {
  local sPreset="$1" sFolders
  shift
  sFolders="$(IFS='|' && echo "$*")"
  run-clang-tidy -quiet -j "$lJobs" -p "build/$sPreset" \
    -extra-arg=-Wno-unknown-warning-option "^$(pwd -P)/($sFolders)/" \
    >"build/$sPreset/tidy.log" 2>&1
}

# Tidied PRESET - waits for the check that was begun before, and shows what it found.
Tidied() {
  wait "$lTidy" && return
  grep -v -e '^clang-tidy' -e 'warnings\? generated' "build/$1/tidy.log"
  return 1
}

# Fuzz TARGET OPTION... - runs a fuzzer for a short time.
Fuzz() {
  local sTarget="$1"
  shift
  "build/fuzz/fuzz/$sTarget" "$@" -max_total_time="$FUZZ_SECONDS" -print_final_stats=1 \
    -artifact_prefix=build/fuzz/ 2>"$sLog" || {
    tail -n 50 "$sLog"
    return 1
  }
  grep -e number_of_executed_units "$sLog"
}

Step "format" Format
Step "build" Build dev -DVARNEL_BENCH=ON
# It takes as long as much of the rest, which often waits: it runs beside that, giving way. Tests and
# benchmarks would take as long again: run-clang-tidy is for whoever changes them (README.md).
(renice -n 19 "$BASHPID" >/dev/null && Tidy dev src tools) &
lTidy=$!
Step "tests" Tests dev --exclude-regex "^e2e" # the journeys are made with the sanitizers
Step "build with sanitizers" Build sanitize
Step "tests with sanitizers" Tests sanitize
Step "Debian package" DebianPackage
if InstallPackages windows && wine --version; then
  Step "build for Windows" Build windows -DVARNEL_BENCH=ON
  Step "tests under Wine" Tests windows
  Step "Windows package" WindowsPackage
else
  Step "Windows programs: NOT RUN, since packages are missing" false
fi
Step "build of the fuzzers" Build fuzz
Step "FuzzDecoder" Fuzz FuzzDecoder
Step "FuzzAssembler" Fuzz FuzzAssembler -max_len=128 -dict=fuzz/FuzzAssembler.dict
Step "FuzzRoundTrip" Fuzz FuzzRoundTrip
Step "clang-tidy" Tidied dev
Tidy fuzz fuzz &
lTidy=$!
Step "clang-tidy of the fuzzers" Tidied fuzz

printf '\n'
for sName in "${asFailed[@]}"; do
  echo "failed: $sName"
done
echo "$lPassed passed, $lFailed failed"
[ "$lFailed" -eq 0 ]
