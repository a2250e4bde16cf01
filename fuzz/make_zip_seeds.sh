#!/usr/bin/env bash
# Writes the seed corpus of fuzz_zip: a tiny skin packed by Info-ZIP, 7-Zip, bsdtar and Python's zipfile, and
# copies of one of them damaged in the ways the reader refuses. Run from anywhere; needs zip, 7z, bsdtar, python3.
set -euo pipefail
out="$(cd "$(dirname "$0")" && pwd)/corpus/fuzz_zip"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$out" "$work/Skin/img" "$work/__MACOSX/Skin"
printf '<skin background_image="main">\n  <control type="button" id="B" image="b"/>\n</skin>\n' >"$work/Skin/skin.xml"
printf '\x89PNG\r\n\x1a\n%s' "$(printf 'pixels%.0s' {1..20})" >"$work/Skin/Main.PNG"
printf '[patcher]\nconnections=4\n' >"$work/Skin/img/norvane.ini"
printf 'x' >"$work/Skin/readme.md"
printf '\x00\x05\x16\x07' >"$work/__MACOSX/Skin/._skin.xml"

cd "$work"
zip -r -X -q "$out/infozip_deflate.zip" Skin __MACOSX
zip -r -X -q -0 "$out/infozip_stored.zip" Skin
7z a -tzip "$out/7z_deflate.zip" Skin >/dev/null
bsdtar --format zip -cf "$out/bsdtar.zip" Skin __MACOSX
python3 - "$out" <<'PY'
import os, struct, sys, zipfile
out = sys.argv[1]
with zipfile.ZipFile(os.path.join(out, 'python_names.zip'), 'w', zipfile.ZIP_DEFLATED) as z:
    z.write('Skin/skin.xml', 'Skin/\u015eerit.xml')   # UTF-8 name, flag bit 11
    z.write('Skin/Main.PNG', 'Skin/@ber.png')          # an ASCII placeholder, patched to code page 437 below
data = open(os.path.join(out, 'python_names.zip'), 'rb').read()
open(os.path.join(out, 'python_names.zip'), 'wb').write(data.replace(b'Skin/@ber.png', b'Skin/\x9aber.png'))

good = open(os.path.join(out, 'infozip_stored.zip'), 'rb').read()
end = good.rfind(b'PK\x05\x06')
central = good.find(b'PK\x01\x02')
while good[central + 46:central + 46 + 13] != b'Skin/skin.xml':  # damage a file the filter keeps
    central = good.find(b'PK\x01\x02', central + 4)
def patched(name, at, fmt, value):
    b = bytearray(good)
    struct.pack_into(fmt, b, at, value)
    open(os.path.join(out, name), 'wb').write(bytes(b))
patched('damaged_zip64.zip', end + 10, '<H', 0xFFFF)
patched('damaged_directory.zip', end + 12, '<I', 0xFFFF)
patched('damaged_encrypted.zip', central + 8, '<H', 1)
patched('damaged_method.zip', central + 10, '<H', 12)
patched('damaged_crc.zip', central + 16, '<I', 0)
patched('damaged_size.zip', central + 24, '<I', 0x2000001)
patched('damaged_local.zip', central + 42, '<I', 0xFFFF)
open(os.path.join(out, 'damaged_cut.zip'), 'wb').write(good[:len(good) // 2])
PY
