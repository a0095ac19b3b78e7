#!/bin/sh
# wine.sh start|end - makes WINEPREFIX ready and keeps Wine's server and services up until the end.
set -e
case "$1" in
  start)
    mkdir -p "$WINEPREFIX"
    wineserver --persistent
    # The services keep the streams that they are started with.
    wineboot --init >"$WINEPREFIX/log" 2>&1 </dev/null
    ;;
  end) wineserver --kill ;;
esac
