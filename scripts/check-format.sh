#!/usr/bin/env bash
# check-format.sh: fails, naming the files, when a C++ file of the tree (tracked or new, not ignored) differs
# from what clang-format makes of it with the repository's .clang-format. `make format` fixes them.
set -u
cd "$(dirname "$0")/.."
bad=()
while IFS= read -r f; do
    [ -f "$f" ] || continue
    clang-format --style=file "$f" | cmp -s - "$f" || bad+=("$f")
done < <(git ls-files --cached --others --exclude-standard -- '*.cpp' '*.h' | sort -u)
if [ ${#bad[@]} -ne 0 ]; then
    echo "format: ${#bad[@]} file(s) are not formatted with .clang-format (run 'make format'):"
    printf '  %s\n' "${bad[@]}"
    exit 1
fi
