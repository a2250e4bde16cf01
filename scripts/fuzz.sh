#!/usr/bin/env bash
# fuzz.sh FUZZ_BUILD_DIR SECONDS: every fuzz target for SECONDS each; fails on the first finding.
set -u
dir=$1 seconds=$2
status=0
for target in "$dir"/fuzz/fuzz_*; do
    [ -x "$target" ] || continue
    name=$(basename "$target")
    echo "== $name ($seconds s)"
    "$(dirname "$0")/fuzz-run.sh" "$target" "$(dirname "$0")/../fuzz/corpus/$name" "$seconds" || status=1
done
exit $status
