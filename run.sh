#!/usr/bin/env bash
# Builds the programs and opens the window on the stand-in for the emulator.
#
#   ./run.sh [FILE[@HEX]...]
#
# loads the files into the emulated memory (at 0000 where no address is given); without any, a BIOS
# ROM at 0000, write-protected, and the sample program at 8000. Without a display the window opens
# on a virtual one, leaves a picture and the first page of its listing in out/, and closes.
set -euo pipefail
sRoot="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
. "$sRoot/packaging/install.sh"

ROM=/usr/share/cbios/cbios_main_msx1.rom
BUILD="$sRoot/build/run"
PAGE_LINES=32
PATIENCE=60 # seconds

if [[ "${1:-}" == -* ]]; then
  echo "Usage: $0 [FILE[@HEX]...]" >&2
  exit 2
fi
InstallPackages build run
if [ -n "${WAYLAND_DISPLAY:-}" ] && [ -z "${DISPLAY:-}" ]; then
  InstallPackages wayland # there is no other display that the window could open on
fi
(cd "$sRoot" && cmake --preset run && cmake --build --preset run)

asFile=("$@")
asOption=()
if [ $# -eq 0 ]; then
  asFile=("$ROM@0000")
  asOption=(--protect "0000-$(printf %X $(($(stat -c %s "$ROM") - 1)))" --sample 8000)
fi
asCommand=("$BUILD/tools/varnel-emulator" "${asOption[@]}" "${asFile[@]}"
  -- "$BUILD/src/varnel-disass")

# Where there are both a Wayland compositor and an X server, Qt takes the compositor if its plugin for
# that is installed, whatever XDG_SESSION_TYPE says.
if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  exec "${asCommand[@]}"
fi

# From here on there is no display. The run has folders of its own, so that it meets no other one
# and the window stands where it does by default.
sWork="$(mktemp -d)"
alStarted=()
CleanUp() {
  kill "${alStarted[@]}" 2>/dev/null || true
  wait || true
  rm -rf "$sWork"
}
trap CleanUp EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# WaitFor WHAT COMMAND... - repeats a command until it succeeds.
WaitFor() {
  local sWhat="$1" lEnd=$((SECONDS + PATIENCE))
  shift
  until "$@" >/dev/null 2>&1; do
    if [ $SECONDS -ge $lEnd ] || ! kill -0 "${alStarted[-1]}" 2>/dev/null; then
      echo "run.sh: there is no $sWhat" >&2
      cat "$sWork"/*.log >&2
      exit 1
    fi
    sleep 0.1
  done
}

Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$sWork/display" 2>"$sWork/xvfb.log" &
alStarted+=($!)
WaitFor "virtual display" test -s "$sWork/display"
DISPLAY=":$(cat "$sWork/display")"
export DISPLAY
openbox >"$sWork/openbox.log" 2>&1 &
alStarted+=($!)
WaitFor "window manager" xdotool get_desktop # a window that is older than it gets no focus

mkdir "$sWork/temp" "$sWork/data"
TEMP="$sWork/temp" LOCALAPPDATA="$sWork/data" QT_QPA_PLATFORM=xcb \
  "${asCommand[@]}" >"$sWork/emulator.log" 2>&1 &
lEmulator=$!
alStarted+=("$lEmulator")

# The window reports a moved selection: once it does, the listing is there and has the keys.
ListingMoves() {
  xdotool key Down
  grep -q "^active program 12" "$sWork/emulator.log"
}
DrawingRests() {
  import -window root "$sWork/before.png"
  sleep 0.5
  import -window root "$sWork/screenshot.png"
  compare -metric AE "$sWork/before.png" "$sWork/screenshot.png" null:
}
WaitFor "listing" ListingMoves
xdotool key Home
WaitFor "picture" DrawingRests

# The same page from the command line: the files in a memory of their own.
lStart=
truncate -s 65536 "$sWork/memory"
for sFile in "${asFile[@]}"; do
  sAddress=0
  [[ "$sFile" == *@* ]] && sAddress="${sFile##*@}"
  dd if="${sFile%@*}" of="$sWork/memory" oflag=seek_bytes seek=$((16#$sAddress)) conv=notrunc \
    status=none
  lStart="${lStart:-$((16#$sAddress))}"
done
lEnd=$((lStart + 0x2000 < 0xFFFF ? lStart + 0x2000 : 0xFFFF))
"$BUILD/tools/varnel-z80" dis --start "$(printf %X "$lStart")" --end "$(printf %X "$lEnd")" \
  "$sWork/memory" >"$sWork/listing"
mkdir -p "$sRoot/out"
convert "$sWork/screenshot.png" -trim +repage "$sRoot/out/screenshot.png" # the window alone
head -n "$PAGE_LINES" "$sWork/listing" >"$sRoot/out/listing.txt"

xdotool key alt+F4
Closed() { ! kill -0 "$lEmulator" 2>/dev/null; }
for ((lTry = 0; lTry < 10 * PATIENCE; ++lTry)); do
  if Closed; then break; fi
  sleep 0.1
done
if ! Closed || ! wait "$lEmulator"; then
  echo "run.sh: the window did not close as it should" >&2
  exit 1
fi
echo "There is no display: the window was opened on a virtual one."
echo "  picture:                 $sRoot/out/screenshot.png"
echo "  listing, its first page: $sRoot/out/listing.txt"
