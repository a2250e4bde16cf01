#!/usr/bin/env bash
# End-to-end test of nvbuild render on the sample skin: the picture's size, states that change it, and the ways
# a call can be wrong.  cli_render_e2e.sh NVBUILD SAMPLE_SKIN [RUNNER]
set -u
nvbuild=$1
sample=$2
runner=${3:-}
. "$(dirname "$0")/e2e_common.sh"

# png_size FILE: "WIDTH HEIGHT" from the PNG header.
png_size() { python3 -c "import struct,sys; d=open(sys.argv[1],'rb').read(24); print(*struct.unpack('>II', d[16:24])) if d[:8]==b'\x89PNG\r\n\x1a\n' else print('not-png')" "$1"; }

nv render "$(winpath "$sample")" "$(winpath "$work/plain.png")" 2>"$work/err"
check "render of the sample exits 0" [ $? -eq 0 ]
check "... with a PNG of the window's size" [ "$(png_size "$work/plain.png")" = "920 580" ]

nv render "$(winpath "$sample")" "$(winpath "$work/hover.png")" --state hover BTN_START 2>"$work/err"
check "--state hover changes the picture" sh -c "[ $? -eq 0 ] && ! cmp -s '$work/plain.png' '$work/hover.png'"
nv render "$(winpath "$sample")" "$(winpath "$work/pressed.png")" --state pressed btn_start 2>"$work/err"
check "--state pressed (any case of the id) draws another picture again" \
    sh -c "[ $? -eq 0 ] && ! cmp -s '$work/hover.png' '$work/pressed.png' && ! cmp -s '$work/plain.png' '$work/pressed.png'"

nv render "$(winpath "$sample")" "$(winpath "$work/x.png")" --state hover NOPE >/dev/null 2>"$work/err"
check "an unknown id exits 1 and names it" sh -c "[ $? -eq 1 ] && grep -q 'NOPE' '$work/err' && [ ! -e '$work/x.png' ]"
for wrong in "--state" "--state hover" "--state glow BTN_START" "--bogus" "extra"; do
    # shellcheck disable=SC2086
    nv render "$(winpath "$sample")" "$(winpath "$work/x.png")" $wrong >/dev/null 2>"$work/err"
    check "render ... $wrong is a usage error (exit 2)" sh -c "[ $? -eq 2 ] && [ ! -e '$work/x.png' ]"
done
# compose's edits, composed as the preview composes them: a link for a button the skin lacks is refused as
# compose refuses it, and an edit the skin has no place for is noted.
nv render "$(winpath "$sample")" "$(winpath "$work/x.png")" --link NOPE=https://x.example/ >/dev/null 2>"$work/err"
check "an edited link for a button the skin lacks exits 1" \
    sh -c "[ $? -eq 1 ] && grep -qx \"Skin'de bu kimlikte buton yok: NOPE\" '$work/err' && [ ! -e '$work/x.png' ]"
nv render "$(winpath "$sample")" "$(winpath "$work/edited.png")" --title "Kaldra Test" --feed-url https://f.example/ \
    --link URL_SITE=https://yeni.example/ >/dev/null 2>"$work/err"
status=$?
check "edits that the skin takes render (exit 0, nothing noted but the native build's lack of text)" \
    sh -c "[ $status -eq 0 ] && [ -s '$work/edited.png' ] && ! grep -v 'metin çizmez' '$work/err' | grep -q ."
nv render "$(winpath "$work/missing")" "$(winpath "$work/x.png")" >/dev/null 2>"$work/err"
check "a missing source exits 1" sh -c "[ $? -eq 1 ] && [ ! -e '$work/x.png' ]"
finish
