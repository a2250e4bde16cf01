#!/usr/bin/env bash
# fuzz.sh FUZZ_BUILD_DIR SECONDS: every fuzz target for SECONDS each, over its corpus and saved findings; a
# failure is saved into fuzz/findings/<target>/ and fails the run after the other targets have had their turn.
set -u
dir=$1 seconds=$2
fuzz=$(cd "$(dirname "$0")/../fuzz" && pwd)
status=0
for target in "$dir"/fuzz/fuzz_*; do
    [ -x "$target" ] || continue
    name=$(basename "$target")
    echo "== $name ($seconds s)"
    "$(dirname "$0")/fuzz-run.sh" "$target" "$fuzz/corpus/$name" "$fuzz/findings/$name" "$seconds" || status=1
done
exit $status
