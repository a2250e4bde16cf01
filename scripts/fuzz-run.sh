#!/usr/bin/env bash
# fuzz-run.sh TARGET SEED_CORPUS FINDINGS SECONDS
# Runs one libFuzzer target for a bounded time over a scratch copy of its seed corpus and its saved findings
# (the committed folders are never written to, except that a new failure is saved into FINDINGS). A crash, leak,
# timeout or sanitizer report fails the run; commit the saved input with the fix: `make test` replays every
# file in FINDINGS from then on.
set -u
target=$1 seeds=$2 findings=$3 seconds=$4
name=$(basename "$target")
work=$(mktemp -d)
trap 'rm -rf "$work" "$work.log"' EXIT
mkdir -p "$findings"
for folder in "$seeds" "$findings"; do
    [ -d "$folder" ] && cp -r "$folder/." "$work/" 2>/dev/null
done
"$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
    -artifact_prefix="$findings/" "$work" >"$work.log" 2>&1
rc=$?
tail -n 12 "$work.log" | grep -E 'stat::number_of_executed_units|Done|ERROR|SUMMARY' || true
if [ $rc -ne 0 ]; then
    grep -E -A 30 'ERROR|==ERROR' "$work.log" | head -n 60
    echo "fuzz target $name failed; the input is saved in $findings"
fi
exit $rc
