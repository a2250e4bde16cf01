#!/usr/bin/env bash
# End-to-end test of the ./nvbuild wrapper: it runs nvbuild.exe under Wine, and Wine's server and services end
# after the idle time instead of living on.
# cli_wrapper_e2e.sh WRAPPER NVBUILD_EXE   (run with WINEPREFIX set to the build tree's primed prefix)
set -u
wrapper=$1
exe=$2
runner=""
. "$(dirname "$0")/e2e_common.sh"

# The wrapper beside a dist/ of its own, in a prefix of its own: a hard-linked copy of the tree's, so that its
# server is not the one the other tests share and no prefix has to be set up (Wine replaces the files it
# writes, so the tree's prefix stays as it was).
mkdir -p "$work/repo/dist"
cp "$wrapper" "$work/repo/nvbuild"
cp "$exe" "$work/repo/dist/nvbuild.exe"
prefix=$work/prefix
mkdir -p "$prefix"
[ -d "$WINEPREFIX" ] && cp -al "$WINEPREFIX/." "$prefix/"

# Processes (server, services, programs) of the copy's prefix: one grep over every environment, quickly enough
# to see a server that stays only seconds.
wine_processes() { grep -lzxF "WINEPREFIX=$prefix" /proc/[0-9]*/environ 2>/dev/null | wc -l; }

WINEPREFIX=$prefix NVBUILD_WINE_IDLE=5 "$work/repo/nvbuild" --help >"$work/out" 2>"$work/err"
check "./nvbuild --help exits 0 with the overview" sh -c \
    "[ $? -eq 0 ] && head -n 1 '$work/out' | grep -q '^nvbuild: ' && [ ! -s '$work/err' ]"
check "... leaving Wine running for the next run" [ "$(wine_processes)" -gt 0 ]
for _ in $(seq 1 60); do [ "$(wine_processes)" -eq 0 ] && break; sleep 1; done
check "... which ends once it has been idle" [ "$(wine_processes)" -eq 0 ]
WINEPREFIX=$prefix "$(command -v wineserver || echo /usr/lib/wine/wineserver)" -k >/dev/null 2>&1
finish
