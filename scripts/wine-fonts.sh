#!/bin/sh
# wine-fonts.sh PREFIX: makes Wine's own fonts (package fonts-wine: Tahoma and others) visible in a primed test
# prefix. Debian's Wine does not look for them in its data folder, but it does read the prefix's Fonts folder.
# Test set-up only: the programs never ship or install a font.
fonts="$1/drive_c/windows/Fonts"
[ -d "$fonts" ] || exit 0
for f in /usr/share/wine/fonts/*.ttf; do
    [ -e "$f" ] && [ ! -e "$fonts/$(basename "$f")" ] && cp "$f" "$fonts/"
done
exit 0
