#!/bin/sh
# wine-fonts.sh WINE: in the primed Wine prefix of $WINEPREFIX, stands DejaVu Sans (package fonts-dejavu-core)
# in for the Windows UI faces that skins and the builder name ("Tahoma", "Segoe UI"), which Wine lacks.
# Test and demo set-up only: the programs never ship or install a font.
# (Wine's own Tahoma from fonts-wine is not used: Debian's Wine does not look in its data folder, and copied into
# a prefix its bold cut is measured but drawn regular by Wine's GDI+.)
wine=$1
grep -q 'Fonts\\\\Replacements' "$WINEPREFIX/user.reg" 2>/dev/null && exit 0
for face in "Tahoma" "Segoe UI"; do
    "$wine" reg add 'HKCU\Software\Wine\Fonts\Replacements' /v "$face" /d "DejaVu Sans" /f </dev/null >/dev/null 2>&1
done
exit 0
