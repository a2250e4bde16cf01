#!/usr/bin/env bash
# demo.sh DIST SAMPLE_SKIN OUT: the main job on the bundled sample, with the programs of DIST under Wine.
# Runs inside scripts/with-wine.sh (display and prefix ready). Everything it writes goes into OUT.
set -euo pipefail
dist=$(cd "$1" && pwd)
sample=$(cd "$2" && pwd)
mkdir -p "$3"
out=$(cd "$3" && pwd)
wine=$(command -v wine64 || echo /usr/lib/wine/wine64)

winpath() { printf 'Z:%s' "${1//\//\\}"; }
nvbuild() { "$wine" "$dist/nvbuild.exe" "$@"; }
step() { printf '\n== %s\n' "$*"; }

step "Paketle: $sample"
nvbuild pack "$(winpath "$sample")" "$(winpath "$out/sample.nvsk")"
echo "$out/sample.nvsk ($(stat -c %s "$out/sample.nvsk") bayt)"

step "Paketin içeriği (boyut, CRC-32, ad)"
nvbuild list "$(winpath "$out/sample.nvsk")"

step "Skinin özeti (önizlemenin yüklediği gibi) -> $out/sample.txt"
nvbuild inspect "$(winpath "$sample")" | tee "$out/sample.txt"

step "Skin denetimi"
nvbuild lint "$(winpath "$sample")"

# The operator's edits, each one different from what the sample carries, so that the composed skin shows them.
step "Oluşturmanın gömeceği paket, operatörün düzenlemeleriyle -> $out/composed.nvsk"
nvbuild compose "$(winpath "$sample")" "$(winpath "$out/composed.nvsk")" \
    --config-url https://patch.kaldra-tr.example/launcher/config.xml \
    --news-url https://www.kaldra-tr.example/haberler \
    --feed-url https://durum.kaldra-tr.example/feed.json \
    --title "Kaldra Türkiye" --conn 8 --seg 16 --auto-start 1 --run-args "-lang tr -fullscreen" \
    --link URL_SITE=https://www.kaldra-tr.example/ --link URL_SUPPORT=https://destek.kaldra-tr.example/
rm -rf "$out/composed"
nvbuild unpack "$(winpath "$out/composed.nvsk")" "$(winpath "$out/composed")"
nvbuild inspect "$(winpath "$out/composed.nvsk")" >"$out/composed.txt"
nvbuild inspect "$(winpath "$out/composed.nvsk")" --json >"$out/composed.json"
echo "$out/composed.nvsk ($(stat -c %s "$out/composed.nvsk") bayt); dosyaları: $out/composed/"
echo "özeti: $out/composed.txt, $out/composed.json"

step "Düzenlemelerin değiştirdikleri (- örnek skin, + oluşturmanın gömeceği)"
summary() { grep -v '^Kaynak:' "$1" | tr -d '\r'; }
diff --old-line-format='- %L' --new-line-format='+ %L' --unchanged-line-format='' \
    <(summary "$out/sample.txt") <(summary "$out/composed.txt") || true

step "Patcher penceresi, canlı önizlemenin çizdiği gibi"
nvbuild render "$(winpath "$sample")" "$(winpath "$out/preview.png")"
nvbuild render "$(winpath "$sample")" "$(winpath "$out/preview-hover.png")" --state hover BTN_START \
    --state hover URL_SITE
echo "$out/preview.png, $out/preview-hover.png (başlat ve web sitesi düğmeleri üzerinde imleçle)"

step "Patcher: oluşturma, simgesi örnek skinin armasından -> $out/KaldraPatcher.exe"
nvbuild build "$(winpath "$sample")" --out "$(winpath "$out/KaldraPatcher.exe")" \
    --icon "$(winpath "$sample/crest.png")" \
    --company "Kaldra Oyun Hizmetleri" --description "Kaldra Türkiye Patcher" --version 2.4.1 \
    --copyright "© 2026 Kaldra Oyun Hizmetleri" \
    --config-url https://patch.kaldra-tr.example/launcher/config.xml \
    --news-url https://www.kaldra-tr.example/haberler \
    --title "Kaldra Türkiye" --conn 8 --seg 16 --run-args "-lang tr -fullscreen" \
    --link URL_SITE=https://www.kaldra-tr.example/ --link URL_SUPPORT=https://destek.kaldra-tr.example/

step "Oluşturulan patcherin gömülü paketi"
nvbuild list "$(winpath "$out/KaldraPatcher.exe")"

step "Oluşturulan patcher, kendi penceresini çizerek (--preview --snap) -> $out/patcher-preview.png"
"$wine" "$out/KaldraPatcher.exe" --preview --snap "$(winpath "$out/patcher-preview.png")" </dev/null
echo "$out/patcher-preview.png"

if [ -f "$dist/NorvaneOlusturucu.exe" ]; then
    step "Oluşturucu penceresi: her bölümün ekran görüntüsü ($out/snap)"
    # A prefix of its own: the fonts the window asks for are mapped to free look-alikes there only, and so is the
    # face that skins name by default, so that the live preview draws its texts as nvbuild render does.
    snap_prefix="$out/.snap-wineprefix"
    mkdir -p "$snap_prefix"
    reg="$out/.snap-fonts.reg"
    printf 'Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\Software\\Wine\\Fonts\\Replacements]\r\n"Segoe UI"="Inter"\r\n"Consolas"="DejaVu Sans Mono"\r\n"Tahoma"="DejaVu Sans"\r\n' \
        | iconv -f UTF-8 -t UTF-16 >"$reg"
    WINEPREFIX="$snap_prefix" "$wine" regedit /s "$(winpath "$reg")" </dev/null >/dev/null 2>&1
    rm -rf "$out/snap"
    WINEPREFIX="$snap_prefix" "$wine" "$dist/NorvaneOlusturucu.exe" --snap "$(winpath "$out/snap")" \
        "$(winpath "$sample")" </dev/null >/dev/null 2>&1
    WINEPREFIX="$snap_prefix" "$(command -v wineserver || echo /usr/lib/wine/wineserver)" -k >/dev/null 2>&1 || true
    rm -rf "$snap_prefix" "$reg"
    ls "$out/snap"
fi
