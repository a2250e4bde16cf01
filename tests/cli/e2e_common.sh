# Shared by the nvbuild end-to-end scripts (sourced). Expects $nvbuild and $runner (empty natively; the Wine
# runner for nvbuild.exe, in which case paths are handed over as Z:\...). Provides $work, nv, winpath, check and
# finish.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

winpath() { if [ -n "$runner" ]; then printf 'Z:%s' "${1//\//\\}"; else printf '%s' "$1"; fi; }
nv() { $runner "$nvbuild" "$@"; }
check() { # check DESCRIPTION CONDITION...
    local what=$1
    shift
    if "$@"; then echo "ok   $what"; else echo "FAIL $what"; failures=$((failures + 1)); fi
}
finish() { [ $failures -eq 0 ] || { echo "$failures check(s) failed"; exit 1; }; }
