#!/usr/bin/env bash
# End-to-end test of nvbuild inspect and compose on the sample skin and on hostile copies of it.
# cli_skin_e2e.sh NVBUILD SAMPLE_SKIN [RUNNER]   (RUNNER: the Wine runner for nvbuild.exe; paths go as Z:\...)
set -u
nvbuild=$1
sample=$2
runner=${3:-}
. "$(dirname "$0")/e2e_common.sh"

# json_check FILE PYTHON_EXPRESSION: the expression over the parsed object j must be true.
json_check() { python3 -c "import json,sys; j=json.load(open(sys.argv[1],encoding='utf-8')); sys.exit(0 if ($2) else 1)" "$1"; }
# A copy of the sample to spoil.
copy_sample() { rm -rf "$work/$1"; cp -r "$sample" "$work/$1"; }

# --- inspect: the sample as the preview loads it -------------------------------------------------------------
nv inspect "$(winpath "$sample")" --json >"$work/sample.json" 2>"$work/err"
check "inspect of the sample exits 0" [ $? -eq 0 ]
check "inspect --json prints valid JSON" json_check "$work/sample.json" True
check "... with the window size of bg.png and a transparent window" \
    json_check "$work/sample.json" "j['ok'] and (j['width'], j['height']) == (920, 580) and j['transparent']"
check "... the companion files and addresses" json_check "$work/sample.json" \
    "j['addressFile'] == 'fernwick.url.xml' and j['localeFile'] == 'fernwick.locale.xml' and j['skinFile'] == 'skin.xml' and j['remoteConfigPath'].startswith('https://patch.kaldra.example/') and j['feedRefresh'] == 60"
check "... every control kind, no warnings" json_check "$work/sample.json" \
    "{c['kind'] for c in j['controls']} == {'button','text','gauge','iframe','image'} and j['warnings'] == []"
check "... links resolved through the locale file" json_check "$work/sample.json" \
    "[c['link'] for c in j['controls'] if c['id'] == 'URL_SUPPORT'] == ['https://destek.kaldra.example/']"
check "... button state images and colours" json_check "$work/sample.json" \
    "all(c['images']['up'] and c['images']['disabled'] for c in j['controls'] if c['kind'] == 'button') and [c['color'] for c in j['controls'] if c['id'] == 'FEED_STATUS'] == ['#FF7DF0A6']"
check "... the settings of norvane.ini" json_check "$work/sample.json" "j['settings']['title'] == 'Kaldra Online'"

nv inspect "$(winpath "$sample")" >"$work/sample.txt" 2>"$work/err"
check "inspect as text exits 0" [ $? -eq 0 ]
check "... shows the size, the window kind and that nothing is missing" \
    sh -c "grep -q '^BOYUT: *920 x 580 px' '$work/sample.txt' && grep -q '^PENCERE: *Saydam' '$work/sample.txt' && grep -q 'Tüm görseller bulundu; skin sorunsuz.' '$work/sample.txt'"
check "... the news address that --news-url writes" \
    grep -q 'Haber sayfası (LAUNCHER_IFRAME): *https://www.kaldra.example/haberler/baslatici' "$work/sample.txt"
check "... and one aligned row per control, kinds in Turkish" python3 -c "
import re, sys
rows = [l for l in open(sys.argv[1], encoding='utf-8') if re.match(r'  \d+ ', l)]
kinds = {re.match(r'  \d+ +(buton|metin|ilerleme|haber alanı|görsel) ', l) is not None for l in rows}
places = {re.search(r' -?\d+,-?\d+ ', l).start() for l in rows}
sys.exit(0 if len(rows) == 22 and kinds == {True} and len(places) == 1 else 1)" "$work/sample.txt"

# --- hostile skins ------------------------------------------------------------------------------------------
copy_sample nobg
rm "$work/nobg/bg.png"
nv inspect "$(winpath "$work/nobg")" >"$work/out" 2>"$work/err"
check "a skin without its background exits 1" [ $? -eq 1 ]
check "... with the loader's words on stderr" grep -qx "Düzenleme mevcut değil. (arka plan görseli yok: bg)" "$work/err"

copy_sample controlchars
sed -i '0,/<control /s||<control type="text" id="A\&#10;B\&#27;[2J" text="x\&#13;\&#10;y" width="5"/><control |' \
    "$work/controlchars/skin.xml"
nv inspect "$(winpath "$work/controlchars")" >"$work/out" 2>"$work/err"
check "line breaks and escapes in a skin's ids and texts stay inside their report row" python3 -c "
import re, sys
text = open(sys.argv[1], encoding='utf-8').read()
rows = [l for l in text.splitlines() if re.match(r'  \d+ ', l)]
sys.exit(0 if len(rows) == 23 and '\x1b' not in text and 'A?B?[2J' in rows[0] else 1)" "$work/out"

copy_sample noaddress
rm "$work/noaddress/Fernwick.url.xml"
nv inspect "$(winpath "$work/noaddress")" --json >"$work/out.json" 2>"$work/err"
check "a skin without its address file exits 1" [ $? -eq 1 ]
check "... and says so in valid JSON" json_check "$work/out.json" \
    "not j['ok'] and j['warnings'] == ['Skin içinde Fernwick.url.xml yok.']"

copy_sample brokenxml
printf '<skin background_image="bg">\n<control type="text">\n</skin>\n' >"$work/brokenxml/skin.xml"
nv inspect "$(winpath "$work/brokenxml")" >"$work/out" 2>"$work/err"
check "broken skin.xml exits 1 with the parser's message and line" \
    sh -c "[ $? -eq 1 ] && grep -q 'skin.xml okunamadı: Kapanis etiketi uyusmuyor (satir 3)' '$work/err'"

copy_sample absurd
printf '<skin background_image="bg" feed_refresh="99999999999999">\n<control type="text" id="T" size="-4000000000" x="-99999" color="#GGGGGG" shadow="" align="nowhere" text="&#x110000; &amp;"/>\n<control type="button" id="B" image="../../etc/passwd"/>\n<control type="gauge" id="G" image_full="" w="-5"/>\n<control type="warp" id="W"/>\n</skin>\n' >"$work/absurd/skin.xml"
nv inspect "$(winpath "$work/absurd")" --json >"$work/out.json" 2>"$work/err"
check "absurd attributes still load (exit 0)" [ $? -eq 0 ]
check "... clamped and defaulted" json_check "$work/out.json" \
    "j['feedRefresh'] == 60 and j['controls'][0]['size'] == 12 and j['controls'][0]['x'] == -99999 and j['controls'][0]['color'] == '#FFFFFFFF' and not j['controls'][0]['shadow'] and j['controls'][0]['align'] == 'left' and j['controls'][3]['kind'] == 'unknown'"
check "... with a warning for each missing picture" json_check "$work/out.json" \
    "j['warnings'] == ['Buton görseli yok: ../../etc/passwd_up', 'Gauge görseli yok: ']"

printf 'this is not a zip archive, only text' >"$work/fake.zip"
nv inspect "$(winpath "$work/fake.zip")" >"$work/out" 2>"$work/err"
check "a damaged zip exits 1 with the reader's message" sh -c "[ $? -eq 1 ] && grep -qx 'Gecersiz zip dosyasi (dizin sonu yok).' '$work/err'"

# --- compose: the package a build would embed ---------------------------------------------------------------
nv compose "$(winpath "$sample")" "$(winpath "$work/plain.nvsk")" >"$work/out" 2>"$work/err"
check "compose of the sample without edits exits 0 and warns of nothing" sh -c "[ $? -eq 0 ] && [ ! -s '$work/err' ]"
nv unpack "$(winpath "$work/plain.nvsk")" "$(winpath "$work/plain")" >/dev/null 2>"$work/err" || { echo "unpack failed:"; cat "$work/err"; }
check "... keeps skin.xml byte for byte" cmp -s "$sample/skin.xml" "$work/plain/skin.xml"
check "... keeps the address file byte for byte" cmp -s "$sample/Fernwick.url.xml" "$work/plain/fernwick.url.xml"
check "... keeps the locale file byte for byte" cmp -s "$sample/Fernwick.locale.xml" "$work/plain/fernwick.locale.xml"
check "... and carries every picture" cmp -s "$sample/bg.png" "$work/plain/bg.png"

nv compose "$(winpath "$sample")" "$(winpath "$work/edited.nvsk")" --config-url 'https://yeni.example/cfg.xml?a=1&b=2' \
    --news-url https://yeni.example/haber --feed-url https://yeni.example/feed --title 'Kaldra Türkiye' --conn 6 --seg 16 \
    --close-on-start 0 --auto-start 1 --allow-error 1 --browser-emu 0 --run-args '-fullscreen "x"' \
    --link 'url_site=https://site.example/"q"' --link URL_SUPPORT=https://yardim.example/ >"$work/out" 2>"$work/err"
check "compose with every edit exits 0 and notes nothing" sh -c "[ $? -eq 0 ] && ! grep -q '^Not: ' '$work/err'"
nv unpack "$(winpath "$work/edited.nvsk")" "$(winpath "$work/edited")" >/dev/null 2>"$work/err" || { echo "unpack failed:"; cat "$work/err"; }
check "... writes norvane.ini whole from the edits" cmp -s "$work/edited/norvane.ini" <(printf '; Norvane ayarlari (yapici tarafindan yazilir)\r\n[patcher]\r\ntitle=Kaldra Türkiye\r\nconnections=6\r\nsegment_mb=16\r\nclose_on_start=0\r\nauto_start=1\r\nallow_start_on_error=1\r\nbrowser_emulation=0\r\nrun_args=-fullscreen "x"\r\n')
check "... sets the server address, escaped" grep -q 'remoteConfigPath="https://yeni.example/cfg.xml?a=1&amp;b=2"' "$work/edited/fernwick.url.xml"
check "... sets the feed address" grep -q 'feed_url="https://yeni.example/feed"' "$work/edited/skin.xml"
check "... sets a literal link, escaped" grep -q 'link_url="https://site.example/&quot;q&quot;"' "$work/edited/skin.xml"
check "... writes a locale-key link back under its key" \
    grep -q '<string key="URL_SUPPORT">https://yardim.example/</string>' "$work/edited/fernwick.locale.xml"
check "... and the news address under both news keys" sh -c \
    "grep -q 'LAUNCHER_IFRAME\">https://yeni.example/haber<' '$work/edited/fernwick.locale.xml' && grep -q 'LAUNCHER_NEW_URL\">https://yeni.example/haber<' '$work/edited/fernwick.locale.xml'"
nv inspect "$(winpath "$work/edited.nvsk")" --json >"$work/edited.json" 2>"$work/err"
check "the composed package inspects clean" json_check "$work/edited.json" \
    "j['ok'] and j['warnings'] == [] and j['settings']['connections'] == 6 and j['remoteConfigPath'] == 'https://yeni.example/cfg.xml?a=1&b=2'"

# Ids compare without regard to ASCII case: feed controls written in lower case still let the feed be edited.
copy_sample lowerfeed
sed -i 's/id="FEED_/id="feed_/' "$work/lowerfeed/skin.xml"
nv compose "$(winpath "$work/lowerfeed")" "$(winpath "$work/lowerfeed.nvsk")" --feed-url https://yeni.example/durum \
    >"$work/out" 2>"$work/err"
nv unpack "$(winpath "$work/lowerfeed.nvsk")" "$(winpath "$work/lowerfeed-out")" >/dev/null 2>"$work/err" || { echo "unpack failed:"; cat "$work/err"; }
check "feed controls in lower case take --feed-url" grep -q 'feed_url="https://yeni.example/durum"' \
    "$work/lowerfeed-out/skin.xml"

# An edit that the skin has no place for is composed away, and said so: skin change, option, note.
copy_sample placeless
rm "$work/placeless/Fernwick.locale.xml"
sed -i 's/remoteConfigPath="[^"]*"//; ' "$work/placeless/Fernwick.url.xml"
sed -i 's/id="FEED_/id="STATUS_/' "$work/placeless/skin.xml"
nv compose "$(winpath "$work/placeless")" "$(winpath "$work/placeless.nvsk")" --news-url https://n.example/ \
    --config-url https://c.example/ --feed-url https://f.example/ >"$work/out" 2>"$work/err"
check "edits without a place in the skin exit 0 with one note each" sh -c "[ $? -eq 0 ] && [ \"\$(tr -d '\r' <'$work/err')\" = \
\"Not: --news-url yazılmadı: skinde dil dosyası yok
Not: --config-url yazılmadı: fernwick.url.xml remoteConfigPath taşımıyor
Not: --feed-url yazılmadı: skinde kimliği FEED_ ile başlayan kontrol yok\" ]"

nv compose "$(winpath "$work/nobg")" "$(winpath "$work/nobg.nvsk")" >"$work/out" 2>"$work/err"
check "compose of a skin that cannot load exits 1" [ $? -eq 1 ]
check "... with the loader's message and no package" \
    sh -c "grep -q 'arka plan görseli yok: bg' '$work/err' && [ ! -e '$work/nobg.nvsk' ]"
nv compose "$(winpath "$sample")" "$(winpath "$work/x.nvsk")" --link NOPE=https://x/ >"$work/out" 2>"$work/err"
check "a link for an id without a button exits 1" [ $? -eq 1 ]

# --- lint: nothing on the sample; on a copy that inspect calls sound, each mistake with its file and line ------
nv lint "$(winpath "$sample")" >"$work/out" 2>"$work/err"
check "lint of the sample exits 0 and finds nothing" \
    sh -c "[ $? -eq 0 ] && [ \"\$(tr -d '\r' <'$work/out')\" = 'Bulgu yok.' ] && [ ! -s '$work/err' ]"
copy_sample careless
sed -i 's|<control type="iframe" id="NEWS"|<control type="slider" id="VOLUME" x="900" y="570" />\n  &|; s|color="#7DF0A6"|color="#7DF0A"|' \
    "$work/careless/skin.xml"
printf 'notes' >"$work/careless/notlar.txt"
nv inspect "$(winpath "$work/careless")" --json >"$work/out.json" 2>"$work/err"
check "inspect calls the careless copy sound" sh -c "[ $? -eq 0 ] && [ ! -s '$work/err' ]"
check "... without a single warning" json_check "$work/out.json" "j['ok'] and j['warnings'] == []"
nv lint "$(winpath "$work/careless")" --json >"$work/lint.json" 2>"$work/err"
check "lint of it exits 1 and counts its findings on stderr" sh -c "[ $? -eq 1 ] && grep -qx '3 bulgu.' '$work/err'"
check "... each finding with its file, line, column, control and code" json_check "$work/lint.json" \
    "not j['ok'] and j['loaded'] and [(f['file'], f['line'], f['column'], f['control'], f['code']) for f in j['findings']] == [('skin.xml', 19, 3, 'VOLUME', 'unknown-type'), ('skin.xml', 25, 123, 'FEED_STATUS', 'bad-color'), ('notlar.txt', 0, 0, '', 'unused-file')]"
nv lint "$(winpath "$work/careless")" >"$work/out" 2>"$work/err"
check "... and as text, file:line:column: control: first" \
    grep -q '^skin.xml:19:3: VOLUME: Bilinmeyen kontrol türü: slider' "$work/out"

# skin.xml on one line, as exporters write it: the findings still differ by column and name their control,
# an unnamed one by its place among the controls.
python3 - "$work/careless/skin.xml" <<'PY'
import re, sys
text = open(sys.argv[1], encoding="utf-8").read()
text = re.sub(r'<control type="slider" id="VOLUME"', '<control type="slider"', text)
open(sys.argv[1], "w", encoding="utf-8").write(re.sub(r"\s*\n\s*", " ", text))
PY
nv lint "$(winpath "$work/careless")" --json >"$work/lint.json" 2>"$work/err"
check "a one-line skin.xml's findings differ by column and name their control" json_check "$work/lint.json" \
    "[(f['line'], f['control'], f['code']) for f in j['findings'][:2]] == [(1, 'kontrol #8', 'unknown-type'), (1, 'FEED_STATUS', 'bad-color')] and j['findings'][0]['column'] < j['findings'][1]['column']"

# A skin.xml that does not parse: file:line:column where the reader stopped, the reader's words after it.
copy_sample broken
sed -i '0,/<\/skin>/s//<\/skinn>/' "$work/broken/skin.xml"
line=$(grep -n '</skinn>' "$work/broken/skin.xml" | cut -d: -f1)
nv lint "$(winpath "$work/broken")" >"$work/out" 2>"$work/err"
check "a parse error is a finding in the file:line:column: form" \
    grep -qx "skin.xml:$line:3: okunamadı: Kapanis etiketi uyusmuyor (satir $line)" <(tr -d '\r' <"$work/out")

# Names Info-ZIP stored as UTF-8 without the zip's UTF-8 flag read as code page 437: lint says how to re-zip.
copy_sample turkish
mv "$work/turkish/crest.png" "$work/turkish/Işık.png"
sed -i 's/image="crest.png"/image="Işık.png"/' "$work/turkish/skin.xml"
(cd "$work/turkish" && zip -q -X "$work/turkish.zip" ./*)
nv lint "$(winpath "$work/turkish.zip")" --json >"$work/lint.json" 2>"$work/err"
check "a name zipped as UTF-8 without the flag is recognised" json_check "$work/lint.json" \
    "any(f['code'] == 'zip-name-encoding' and 'Asıl adı: işık.png' in f['message'] and '7-Zip' in f['message'] for f in j['findings'])"

# A picture past the decoders' limit: the loader's words stay, inspect and lint add the real reason.
copy_sample huge
python3 -c 'import struct, sys, zlib
ihdr = struct.pack(">IIBBBBB", 12000, 12000, 8, 6, 0, 0, 0)
open(sys.argv[1], "wb").write(b"\x89PNG\r\n\x1a\n" + struct.pack(">I", 13) + b"IHDR" + ihdr + struct.pack(">I", zlib.crc32(b"IHDR" + ihdr)))' \
    "$work/huge/bg.png"
nv inspect "$(winpath "$work/huge")" >"$work/out" 2>"$work/err"
status=$?
tr -d '\r' <"$work/err" >"$work/err.txt"
check "inspect of a 12000 px background exits 1 with the loader's words and the size" sh -c "[ $status -eq 1 ] &&
    grep -qx 'Düzenleme mevcut değil. (arka plan görseli yok: bg)' '$work/err.txt' &&
    grep -qx 'Görsel açılamadı: bg.png (12000x12000 piksel; görseller en çok 8192x8192 olabilir)' '$work/err.txt'"
nv lint "$(winpath "$work/huge")" >"$work/out" 2>"$work/err"
check "... and lint names it too" grep -q 'bg.png (12000x12000 piksel' "$work/out"

finish
