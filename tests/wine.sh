#!/bin/sh
# wine.sh start|end - makes WINEPREFIX ready and keeps Wine's server and services up until the end.
set -e
case "$1" in
  start)
    mkdir -p "$WINEPREFIX"
    # What Wine starts keeps the streams that it is started with. Its registry is in files only after
    # the end of a server, and is copied from there.
    {
      wineboot --init
      wineserver --kill
      wineserver --wait
      wineserver --persistent
      wine cmd /c exit
    } >"$WINEPREFIX/log" 2>&1 </dev/null
    ;;
  end) wineserver --kill ;;
esac
