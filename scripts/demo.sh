#!/usr/bin/env bash
# demo.sh DIST SAMPLE_SKIN OUT: the main job on the bundled sample, with the programs of DIST under Wine.
# Runs inside scripts/with-wine.sh (display and prefix ready).
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

step "Skinin özeti (önizlemenin yüklediği gibi)"
nvbuild inspect "$(winpath "$sample")"

step "Oluşturmanın gömeceği paket, operatörün düzenlemeleriyle"
nvbuild compose "$(winpath "$sample")" "$(winpath "$out/composed.nvsk")" \
    --config-url https://patch.kaldra.example/launcher/config.xml --title "Kaldra Online" --conn 6 --seg 8 \
    --link URL_SITE=https://www.kaldra.example/
nvbuild inspect "$(winpath "$out/composed.nvsk")" --json >"$out/composed.json"
echo "$out/composed.nvsk ($(stat -c %s "$out/composed.nvsk") bayt); özet: $out/composed.json"
