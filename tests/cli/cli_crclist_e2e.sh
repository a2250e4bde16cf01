#!/usr/bin/env bash
# End-to-end test of nvbuild crclist on a client folder made here, with Python's zlib as the referee for every
# size and CRC-32, and nvindex_referee.py (python3-xxhash) for the chunk indexes of the large files.
# cli_crclist_e2e.sh NVBUILD [RUNNER]
set -u
nvbuild=$1
runner=${2:-}
. "$(dirname "$0")/e2e_common.sh"

client="$work/Kaldra Client"
mkdir -p "$client/data/harita 1" "$client/ekran" "$client/.nvindex" "$client/logs"
head -c 2500000 /dev/urandom >"$client/data/harita 1/$(printf '\xc5\x9fehir.pak')"
head -c 70000 /dev/urandom >"$client/KaldraOyun.exe"
head -c 1048576 /dev/zero >"$client/data/zeros.pak" # exactly the threshold: indexed, every chunk the largest
printf '' >"$client/data/empty.txt"
printf 'x' >"$client/ekran/shot1.png"
printf 'x' >"$client/logs/game.log"
printf 'x' >"$client/debug.LOG"
# What a patcher leaves in a folder it updates is never listed.
printf 'x' >"$client/KaldraOyun.exe.nvpart"
printf 'x' >"$client/data/big.pak.nvpart.seg"
printf 'x' >"$client/norvane.state"
printf 'x' >"$client/norvane.1.log"
printf 'x' >"$client/.nvindex/a.idx"
printf 'x' >"$client/.nvindex/0123456789abcdef0123456789abcdef.nvx" # an index no file has any more

expected() { # the list Python makes of the folder, the same files left out
    python3 - "$client" <<'PY'
import os, sys, zlib
root = sys.argv[1]
rows = []
for folder, dirs, files in os.walk(root):
    for name in files:
        full = os.path.join(folder, name)
        rel = os.path.relpath(full, root).replace(os.sep, "/")
        if rel.startswith((".nvindex/", "ekran/", "logs/")) or rel.lower().endswith(".log") or \
           ".nvpart" in rel or rel in ("norvane.state", "crclist.txt"):
            continue
        data = open(full, "rb").read()
        rows.append((rel.encode(), b"%s\t%d\t%08X\n" % (rel.encode(), len(data), zlib.crc32(data))))
sys.stdout.buffer.write(b"".join(r for _, r in sorted(rows)))
PY
}

nv crclist "$(winpath "$client")" --exclude ekran --exclude "*.log" >"$work/out" 2>"$work/err"
check "crclist exits 0" [ $? -eq 0 ]
check "the list is in the folder by default" [ -s "$client/crclist.txt" ]
expected >"$work/expected"
/usr/bin/python3 "$(dirname "$0")/nvindex_referee.py" "$client" >"$work/indexed" 2>"$work/referee"
referee=$?
cat "$work/referee"
check "every index is the referee's, byte for byte (cuts, hashes, header, trailer)" [ $referee -eq 0 ]
check "the list names the large files' indexes by size and hash, before the files" \
    cmp -s "$work/indexed" "$client/crclist.txt"
grep -v '^#' "$client/crclist.txt" >"$work/data-lines"
check "every size and CRC-32 is zlib's, sorted, the excluded and the patcher's own files left out" \
    cmp -s "$work/expected" "$work/data-lines"
check "an index no listed file has is removed, other files are left" \
    [ ! -e "$client/.nvindex/0123456789abcdef0123456789abcdef.nvx" -a -e "$client/.nvindex/a.idx" ]
check "one index per large file" [ "$(ls "$client/.nvindex" | grep -c '\.nvx$')" -eq 2 ]
list_crc=$(python3 -c 'import sys,zlib; print("%08X" % zlib.crc32(open(sys.argv[1],"rb").read()))' \
    "$client/crclist.txt")
check "the last line is the configuration's crclist_crc32 line" \
    [ "$(tail -n 1 "$work/out" | tr -d '\r')" = "crclist_crc32=$list_crc" ]

# Run again: the list does not list itself.
nv crclist "$(winpath "$client")" --exclude ekran --exclude "*.log" >"$work/out" 2>"$work/err"
check "a second run writes the same list" cmp -s "$work/indexed" "$client/crclist.txt"

# --out elsewhere: the folder is left as it was.
rm "$client/crclist.txt"
nv crclist "$(winpath "$client")" --out "$(winpath "$work/liste.txt")" --exclude ekran --exclude "*.log" \
    >"$work/out" 2>"$work/err"
check "--out writes there" cmp -s "$work/indexed" "$work/liste.txt"
check "--out leaves the folder alone" [ ! -e "$client/crclist.txt" ]

# A name the patcher would refuse stops the command before anything is written.
printf 'x' >"$client/nul.txt"
nv crclist "$(winpath "$client")" >"$work/out" 2>"$work/err"
check "a device name exits 1" [ $? -eq 1 ]
check "it names the file" grep -q "nul.txt" "$work/err"
check "no list is written" [ ! -e "$client/crclist.txt" ]
rm "$client/nul.txt"

nv crclist "$(winpath "$work/yok")" >"$work/out" 2>"$work/err"
check "a missing folder exits 1" [ $? -eq 1 ]
finish
