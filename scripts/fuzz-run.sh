#!/usr/bin/env bash
# fuzz-run.sh TARGET SEED_CORPUS SECONDS
# Runs one libFuzzer target for a bounded time over a scratch copy of its seed corpus (the committed corpus is
# never written to). Any crash, leak or sanitizer report fails the run; the input that caused it is kept in
# out/fuzz-findings/ to become a regression test.
set -u
target=$1 seeds=$2 seconds=$3
name=$(basename "$target")
root=$(cd "$(dirname "$target")" && pwd)
findings="$root/findings/$name"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$findings"
[ -d "$seeds" ] && cp -r "$seeds/." "$work/" 2>/dev/null
"$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
    -artifact_prefix="$findings/" "$work" >"$work.log" 2>&1
rc=$?
tail -n 12 "$work.log" | grep -E 'stat::number_of_executed_units|Done|ERROR|SUMMARY' || true
if [ $rc -ne 0 ]; then
    grep -E -A 30 'ERROR|==ERROR' "$work.log" | head -n 60
    echo "fuzz target $name failed; reproducer in $findings"
fi
rm -f "$work.log"
exit $rc
