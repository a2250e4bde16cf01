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

# Xvfb takes a free display number itself and writes it once it accepts clients, so lock files left behind
# by killed servers neither stop us nor make two runs share a display.
xvfb_pid=""
if command -v Xvfb >/dev/null; then
    number_file=$(mktemp)
    Xvfb -displayfd 3 -screen 0 1600x1000x24 -nolisten tcp 3>"$number_file" >/dev/null 2>&1 &
    xvfb_pid=$!
    for _ in $(seq 1 200); do [ -s "$number_file" ] && break; sleep 0.05; done
    display=$(head -n 1 "$number_file")
    rm -f "$number_file"
    [ -n "$display" ] && export DISPLAY=":$display"
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
