#!/usr/bin/env bash
# End-to-end test of nvbuild pack / list / unpack on a folder made here.
# cli_e2e.sh NVBUILD [RUNNER]   (RUNNER: e.g. the Wine runner for nvbuild.exe; paths are then given as Z:\...)
set -u
nvbuild=$1
runner=${2:-}
. "$(dirname "$0")/e2e_common.sh"

src="$work/Skin Kaynak"
mkdir -p "$src/img"
printf '<skin background_image="main"/>\n' >"$src/Skin.XML"
head -c 70000 /dev/urandom >"$src/Main.PNG"
head -c 3 /dev/urandom >"$src/$(printf '\xc5\x9eerit.png')"
printf '' >"$src/empty.txt"
printf 'x' >"$src/readme.md"
printf 'x' >"$src/Thumbs.db"
printf 'x' >"$src/.DS_Store"
printf 'x' >"$src/img/inside.png"
truncate -s 33554433 "$src/huge.bmp" # one byte over the per-file limit

# pack: the too-large file is noted, the rest is packed.
nv pack "$(winpath "$src")" "$(winpath "$work/skin.nvsk")" >"$work/out" 2>"$work/err"
check "pack exits 0" [ $? -eq 0 ]
check "pack notes the file it could not read, why, and its path in one style" \
    grep -qxF "Not: Okunamadi: $(winpath "$src/huge.bmp") (dosya 32 MB sınırından büyük)" <(tr -d '\r' <"$work/err")
check "pack writes the package" [ -s "$work/skin.nvsk" ]
check "no temporary file stays" [ ! -e "$work/skin.nvsk.nvtmp" ]

# list: size, CRC-32 and name of exactly the accepted files.
nv list "$(winpath "$work/skin.nvsk")" >"$work/list" 2>"$work/err"
check "list exits 0" [ $? -eq 0 ]
python3 - "$src" "$work/list" <<'PY' >"$work/listcheck" 2>&1
import os, sys, zlib
src, listing = sys.argv[1], sys.argv[2]
want = {}
for name, set_name in [("Skin.XML", "skin.xml"), ("Main.PNG", "main.png"), ("\u015eerit.png", "\u015eerit.png"),
                       ("empty.txt", "empty.txt")]:
    data = open(os.path.join(src, name), "rb").read()
    want[set_name] = (len(data), zlib.crc32(data))
got = {}
for line in open(listing, encoding="utf-8").read().splitlines():
    size, crc, name = line.split("\t")
    got[name] = (int(size), int(crc, 16))
if got != want:
    print("listed", got, "\nexpected", want)
    sys.exit(1)
PY
check "list shows size, CRC and name of each accepted file" [ $? -eq 0 ]
[ -s "$work/listcheck" ] && cat "$work/listcheck"

# pack from a zip: the same skin wrapped in a top folder, with the litter archivers and other systems add. The
# zip's package lists the same files as the folder's (without the Turkish name, which Info-ZIP stores unflagged
# and which therefore reads as code page 437).
zipped="$work/zipped"
mkdir -p "$zipped/Skin Kaynak/img" "$zipped/__MACOSX/Skin Kaynak"
cp "$src/Skin.XML" "$src/Main.PNG" "$src/empty.txt" "$src/readme.md" "$src/Thumbs.db" "$src/.DS_Store" \
    "$zipped/Skin Kaynak/"
printf 'fork' >"$zipped/__MACOSX/Skin Kaynak/._Skin.XML"
printf 'fork' >"$zipped/__MACOSX/Skin Kaynak/Main.PNG"
(cd "$zipped" && zip -r -q -X "$work/Skin.ZIP" "Skin Kaynak" __MACOSX)
cp "$work/Skin.ZIP" "$work/zip-copy"
nv pack "$(winpath "$work/Skin.ZIP")" "$(winpath "$work/zip.nvsk")" >"$work/out" 2>"$work/err"
check "pack from a zip exits 0" [ $? -eq 0 ]
check "... and notes nothing" [ ! -s "$work/err" ]
nv list "$(winpath "$work/zip.nvsk")" >"$work/ziplist" 2>"$work/err"
check "list of the zip's package exits 0" [ $? -eq 0 ]
tr -d '\r' <"$work/list" | grep -v "$(printf '\xc5\x9e')erit.png" | sort >"$work/list.folder"
tr -d '\r' <"$work/ziplist" | sort >"$work/list.zip"
check "the zip's package holds the folder's files" cmp -s "$work/list.folder" "$work/list.zip"
cmp -s "$work/list.folder" "$work/list.zip" || diff "$work/list.folder" "$work/list.zip"
head -c 100 "$work/Skin.ZIP" >"$work/cut.zip"
nv pack "$(winpath "$work/cut.zip")" "$(winpath "$work/cut.nvsk")" >"$work/out" 2>"$work/err"
check "a cut zip exits 1" [ $? -eq 1 ]
check "... with the zip reader's message" grep -qx "Gecersiz zip dosyasi (dizin sonu yok)." "$work/err"
check "... and writes nothing" [ ! -e "$work/cut.nvsk" ]

# pack and compose write only packages: an output that is already something else (the two paths swapped, an
# archive, a program, a picture) is refused and stays byte for byte; a package or an empty file is replaced.
printf 'MZ\x90\x00' >"$work/prog.exe"
cp "$src/Main.PNG" "$work/pic.png"
: >"$work/empty.nvsk"
cp "$work/zip.nvsk" "$work/old.nvsk"
for target in Skin.ZIP prog.exe pic.png empty.nvsk old.nvsk; do
    cp "$work/$target" "$work/before"
    nv pack "$(winpath "$src")" "$(winpath "$work/$target")" >"$work/out" 2>"$work/err"
    status=$?
    case $target in
    *.nvsk) check "pack replaces $target" sh -c "[ $status -eq 0 ] && cmp -s '$work/$target' '$work/skin.nvsk'" ;;
    *) check "pack refuses to replace $target (exit 1), which stays as it was" sh -c "[ $status -eq 1 ] &&
           grep -qxF 'Çıktı bir skin paketi değil, üzerine yazılmadı: $(winpath "$work/$target")' '$work/err' &&
           cmp -s '$work/$target' '$work/before'" ;;
    esac
done
nv compose "$(winpath "$work/skin.nvsk")" "$(winpath "$work/Skin.ZIP")" >"$work/out" 2>"$work/err"
check "compose with its two paths swapped exits 1 and leaves the zip" sh -c "[ $? -eq 1 ] &&
    grep -qxF 'Çıktı bir skin paketi değil, üzerine yazılmadı: $(winpath "$work/Skin.ZIP")' '$work/err' &&
    cmp -s '$work/Skin.ZIP' '$work/zip-copy'"

# unpack: the same bytes under the set names.
nv unpack "$(winpath "$work/skin.nvsk")" "$(winpath "$work/unpacked/deeper")" >"$work/out" 2>"$work/err"
check "unpack exits 0" [ $? -eq 0 ]
check "skin.xml comes back byte for byte" cmp -s "$src/Skin.XML" "$work/unpacked/deeper/skin.xml"
check "main.png comes back byte for byte" cmp -s "$src/Main.PNG" "$work/unpacked/deeper/main.png"
check "a Turkish name comes back" cmp -s "$src/$(printf '\xc5\x9eerit.png')" "$work/unpacked/deeper/$(printf '\xc5\x9eerit.png')"
check "an empty file comes back" sh -c "[ -f '$work/unpacked/deeper/empty.txt' ] && [ ! -s '$work/unpacked/deeper/empty.txt' ]"
check "only the accepted files are unpacked" [ "$(ls "$work/unpacked/deeper" | wc -l)" -eq 4 ]

# Failures: exit 1 and the reader's message alone on a line.
cp "$work/skin.nvsk" "$work/bad.nvsk"
printf '\x02' | dd of="$work/bad.nvsk" bs=1 seek=4 conv=notrunc status=none
nv list "$(winpath "$work/bad.nvsk")" >"$work/out" 2>"$work/err"
check "a damaged package exits 1" [ $? -eq 1 ]
check "a damaged package gives the CRC message" grep -qx "Skin paketi bozuk (CRC)." "$work/err"
nv unpack "$(winpath "$work/bad.nvsk")" "$(winpath "$work/never")" >"$work/out" 2>"$work/err"
check "unpacking a damaged package creates nothing" [ ! -e "$work/never" ]
nv pack "$(winpath "$work/nothing-here")" "$(winpath "$work/x.nvsk")" >"$work/out" 2>"$work/err"
check "a source that is not there exits 1 and writes nothing" sh -c "[ $? -eq 1 ] && [ ! -e '$work/x.nvsk' ]"

# A foreign package whose names Windows would not keep as they are (a device, a trailing dot, a folder part), or
# that no skin holds.
for name in con.png Com1.txt 'a.png.' 'x/../b.png' run.bat desktop.ini; do
    python3 -c "
import struct, sys, zlib
name, body = sys.argv[1].encode(), b'data'
p = b'NVSK' + struct.pack('<II', 1, 1) + struct.pack('<H', len(name)) + name + struct.pack('<I', len(body)) + body
open(sys.argv[2], 'wb').write(p + struct.pack('<I', zlib.crc32(p)))" "$name" "$work/odd.nvsk"
    nv unpack "$(winpath "$work/odd.nvsk")" "$(winpath "$work/odd")" >"$work/out" 2>"$work/err"
    check "unpack refuses the entry name '$name' and writes nothing" \
        sh -c "[ $? -eq 1 ] && grep -qxF 'Geçersiz dosya adı: $name' '$work/err' && [ ! -e '$work/odd' ]"
done

# More files than a package may hold: pack reads back what it would write and refuses it, as the patcher would.
mkdir "$work/crowd"
(cd "$work/crowd" && seq -f 'f%g.txt' 1 4100 | xargs touch && touch skin.xml)
nv pack "$(winpath "$work/crowd")" "$(winpath "$work/crowd.nvsk")" >"$work/out" 2>"$work/err"
check "4100 files are refused by pack (exit 1) with the reader's message and nothing written" \
    sh -c "[ $? -eq 1 ] && grep -qx 'Skin paketi bozuk (adet).' '$work/err' && [ ! -e '$work/crowd.nvsk' ]"
rm "$work/crowd/skin.xml"
nv pack "$(winpath "$work/crowd")" "$(winpath "$work/crowd.nvsk")" >"$work/out" 2>"$work/err"
check "a source without skin.xml is refused by pack as the builder refuses it, nothing written" \
    sh -c "[ $? -eq 1 ] && grep -qx 'skin.xml bulunamadı (geçerli bir patcher skini değil).' '$work/err' && [ ! -e '$work/crowd.nvsk' ]"

finish
