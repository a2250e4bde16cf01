#!/usr/bin/env bash
# make_zip_fixtures.sh OUT_DIR
# Writes one skin, wrapped in a single top folder, into OUT_DIR/source and packs it with several real archivers
# into OUT_DIR/*.zip, so that the zip reader is tested against what operators actually send and not only
# against archives the tests write themselves. Needs zip, 7z (p7zip-full), bsdtar (libarchive-tools), python3.
#
# The tests expect from every archive exactly: skin.xml, main.png, logo.png, fernwick.locale.xml, empty.txt
# (and, from the Python archives, a UTF-8 flagged "Şerit.png" and a code page 437 "Über.png"), byte for byte
# equal to the files under source/. The damage tests change single fields of python_deflated.zip, so the Python
# archives keep a fixed entry order (sorted) and end with their end record (no archive comment).
set -euo pipefail
out=$1
src="$out/source"
rm -rf "$src"
mkdir -p "$src"

python3 - "$src" <<'PY'
import os, random, sys
root = sys.argv[1]
rng = random.Random(20240611)

def put(rel, data):
    path = os.path.join(root, rel)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, 'wb') as f:
        f.write(data)

controls = ''.join(f'  <button id="b{i}" x="{10 * i}" y="{7 * i % 300}" image="btn{i % 4}"/>\n' for i in range(24))
put('MySkin/skin.xml', f'<?xml version="1.0" encoding="utf-8"?>\n<skin background_image="main">\n{controls}</skin>\n'.encode())
put('MySkin/Main.PNG', bytes(rng.getrandbits(8) for _ in range(3000)))          # incompressible
put('MySkin/img/Logo.png', bytes((i * i // 7) & 0x3F for i in range(5000)))       # repetitive
words = ['NV_RETRY', 'Yeniden dene', 'Guncelleniyor', 'Dosya', 'indiriliyor', 'Baslat', 'Kapat', 'Hata']
lines = [f'  <string id="K{i}" value="{" ".join(rng.choice(words) for _ in range(rng.randint(1, 6)))}"/>'
         for i in range(200)]
put('MySkin/Fernwick.locale.xml', ('<strings>\n' + '\n'.join(lines) + '\n</strings>\n').encode())
put('MySkin/empty.txt', b'')
put('MySkin/readme.md', b'# MySkin\n')
put('MySkin/Thumbs.db', bytes(range(64)))
put('__MACOSX/MySkin/._skin.xml', b'\x00\x05\x16\x07' + bytes(60))
put('__MACOSX/notes.txt', b'resource fork folder, never read\n')
# Only the Python archives carry these, under names that other archivers would encode each in their own way.
put('extra/serit.png', bytes(rng.getrandbits(8) for _ in range(200)))
put('extra/uber.png', b'\x89PNG' + bytes(100))
PY

make() { # make ARCHIVE COMMAND...: runs COMMAND inside the source folder to write ARCHIVE
    local archive="$out/$1"
    shift
    rm -f "$archive"
    (cd "$src" && "$@") >/dev/null
}

make infozip_deflate.zip zip -r -X -q "$out/infozip_deflate.zip" MySkin __MACOSX
make infozip_stored.zip zip -r -X -q -0 "$out/infozip_stored.zip" MySkin __MACOSX
make 7z_deflate.zip 7z a -tzip "$out/7z_deflate.zip" MySkin __MACOSX
make 7z_copy.zip 7z a -tzip -mm=Copy "$out/7z_copy.zip" MySkin __MACOSX
make bsdtar.zip bsdtar --format zip -cf "$out/bsdtar.zip" MySkin __MACOSX

python3 - "$src" "$out" <<'PY'
import os, sys, zipfile
src, out = sys.argv[1], sys.argv[2]
for method, name in [(zipfile.ZIP_STORED, 'python_stored.zip'), (zipfile.ZIP_DEFLATED, 'python_deflated.zip')]:
    path = os.path.join(out, name)
    with zipfile.ZipFile(path, 'w', method) as z:
        for folder in ['MySkin', '__MACOSX']:
            for base, dirs, files in os.walk(os.path.join(src, folder)):
                dirs.sort()
                rel = os.path.relpath(base, src).replace(os.sep, '/')
                z.write(base, rel + '/')
                for f in sorted(files):
                    z.write(os.path.join(base, f), rel + '/' + f)
        z.write(os.path.join(src, 'extra/serit.png'), 'MySkin/\u015eerit.png')  # not ASCII: UTF-8, bit 11 set
        z.write(os.path.join(src, 'extra/uber.png'), 'MySkin/@ber.png')         # patched to 437 below
    # zipfile writes a name that is not ASCII as UTF-8; a code page 437 name is made by patching an ASCII
    # placeholder of the same length in both headers (names are outside every CRC).
    data = open(path, 'rb').read()
    assert data.count(b'MySkin/@ber.png') == 2
    open(path, 'wb').write(data.replace(b'MySkin/@ber.png', b'MySkin/\x9aber.png'))
PY

# The fixtures must hold what their names promise, whatever a future archiver version decides to do.
python3 - "$out" <<'PY'
import os, sys, zipfile
out = sys.argv[1]
expect = {'infozip_deflate.zip': {8}, 'infozip_stored.zip': {0}, '7z_deflate.zip': {8}, '7z_copy.zip': {0},
          'bsdtar.zip': {8}, 'python_stored.zip': {0}, 'python_deflated.zip': {8}}
for name, methods in expect.items():
    infos = [i for i in zipfile.ZipFile(os.path.join(out, name)).infolist() if i.file_size > 0]
    used = {i.compress_type for i in infos}
    if not methods <= used or not used <= methods | {0}:
        sys.exit(f'{name}: methods {used}, expected {methods}')
    if name.startswith('python'):
        flags = {i.orig_filename: i.flag_bits & 0x800 for i in infos}
        if flags.get('MySkin/\u015eerit.png') != 0x800 or flags.get('MySkin/\u00dcber.png', 1) != 0:
            sys.exit(f'{name}: name flags {flags}')
PY
