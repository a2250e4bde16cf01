#!/bin/sh
# The patcher in the download benchmark (bench_download.py), under Wine:
#   patcher_bench.sh prepare CONFIG_URL DEST CONNECTIONS SEGMENT_MB   build it from the sample skin, pointed at
#                                                                     CONFIG_URL, into DEST (not timed)
#   patcher_bench.sh run CONFIG_URL DEST CONNECTIONS SEGMENT_MB       bring DEST up to date, headless (timed)
#   patcher_bench.sh start                                            a Windows program started and ended under
#                                                                     the same runner, doing nothing (timed)
# OUT names the build trees (default out).
set -eu
step=$1 config=${2:-} dest=${3:-} connections=${4:-} segment=${5:-}
root=$(cd "$(dirname "$0")/.." && pwd)
out=${OUT:-$root/out}
win() { printf 'Z:%s' "$(printf '%s' "$1" | sed 's|/|\\|g')"; }
case $step in
prepare)
    "$out/windows/wine-run" "$out/windows/cli/nvbuild.exe" build "$(win "$root/examples/skins/gece-mavisi")" \
        --out "$(win "$dest/KaldraPatcher.exe")" --template "$(win "$out/windows/patcher/Norvane.Template.exe")" \
        --config-url "$config" --conn "$connections" --seg "$segment" >/dev/null ;;
run)
    exec "$out/windows/wine-run" "$(win "$dest/KaldraPatcher.exe")" --headless >/dev/null ;;
start)
    exec "$out/windows/wine-run" "$out/windows/cli/nvbuild.exe" --help >/dev/null ;;
esac
