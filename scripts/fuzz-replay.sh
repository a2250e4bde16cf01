#!/usr/bin/env bash
# fuzz-replay.sh TARGET FOLDER...
# Runs one libFuzzer target once over every file of the folders (its seed corpus and the inputs that once made
# it fail), mutating nothing: the deterministic check that `make test` runs. Any crash, leak, sanitizer report or
# timeout fails it, and the input is named. Timed random fuzzing is `make fuzz` (scripts/fuzz.sh).
set -u
target=$1
shift
name=$(basename "$target")
inputs=()
for folder in "$@"; do
    [ -d "$folder" ] || continue
    while IFS= read -r -d '' f; do inputs+=("$f"); done < <(find "$folder" -type f ! -name '.*' -print0 | sort -z)
done
if [ ${#inputs[@]} -eq 0 ]; then
    echo "$name: no inputs to replay in $*"
    exit 1
fi
log=$(mktemp)
scratch=$(mktemp -d) # where libFuzzer would copy a failing input; the failing input is named below anyway
trap 'rm -rf "$log" "$scratch"' EXIT
# Seeds are small; the memory limit is tight enough that a regression in memory use (the image bomb decoded per
# control and state) fails the replay rather than passing under a generous limit.
# The timeout catches a hang, not slowness: the largest seed (a picture at the size limit, decoded under the
# sanitizers) takes tens of seconds on a busy machine. Decoding speed is the benchmarks' business.
"$target" -timeout=300 -rss_limit_mb=1024 -artifact_prefix="$scratch/" "${inputs[@]}" >"$log" 2>&1
rc=$?
if [ $rc -ne 0 ]; then
    grep -E -B 2 -A 30 'ERROR|==ERROR|deadly signal|Running:' "$log" | tail -n 60
    echo "$name failed on one of ${#inputs[@]} inputs (the last \"Running:\" line above names it)"
else
    echo "$name: ${#inputs[@]} inputs replayed"
fi
exit $rc
