#!/usr/bin/env bash
# with-wine.sh PREFIX COMMAND...
# Runs COMMAND with a private X display and a primed, persistent Wine prefix, then shuts both down.
# Order matters: the display exists before the wineserver starts (a server started without one makes later
# windows silently fail), and the prefix is primed with its output detached (Wine's background services would
# otherwise inherit our pipes and keep them open).
set -u
prefix=$1
shift
mkdir -p "$prefix"
export WINEPREFIX
WINEPREFIX=$(cd "$prefix" && pwd)
export WINEDEBUG=-all
wine=$(command -v wine64 || echo /usr/lib/wine/wine64)
wineserver=$(command -v wineserver || echo /usr/lib/wine/wineserver)

display=""
for n in $(seq 90 140); do
    if [ ! -e "/tmp/.X11-unix/X$n" ] && [ ! -e "/tmp/.X$n-lock" ]; then display=$n; break; fi
done
xvfb_pid=""
if [ -n "$display" ] && command -v Xvfb >/dev/null; then
    Xvfb ":$display" -screen 0 1600x1000x24 -nolisten tcp >/dev/null 2>&1 &
    xvfb_pid=$!
    for _ in $(seq 1 100); do [ -e "/tmp/.X11-unix/X$display" ] && break; sleep 0.05; done
    export DISPLAY=":$display"
fi

cleanup() {
    "$wineserver" -k >/dev/null 2>&1
    [ -n "$xvfb_pid" ] && kill "$xvfb_pid" >/dev/null 2>&1
    wait >/dev/null 2>&1
}
trap cleanup EXIT

"$wineserver" -k >/dev/null 2>&1 # a server left from an earlier run may lack the display
"$wineserver" -p >/dev/null 2>&1
"$wine" cmd /c exit </dev/null >/dev/null 2>&1
"$(dirname "$0")/wine-fonts.sh" "$wine"

"$@"
