#!/usr/bin/env python3
"""Texts drawn in a Wine prefix that has none of the faces skins name, end to end.

    bare_fonts_e2e.py NVBUILD_EXE TEMPLATE_EXE SAMPLE_SKIN WORK_DIR WINE64 WINESERVER

A player's Wine or Proton prefix has no Tahoma, Segoe UI, Arial or Microsoft Sans Serif, and none of the font
replacements the other tests' prefixes get. In such a prefix of its own this draws the sample skin with
`nvbuild render`, and with a patcher built from it (`--preview --snap` and `--snap`), and compares each picture
with the same skin whose texts are made fully transparent: every text control and the news area must hold
drawn pixels, nothing else may differ, and the patcher's preview must be nvbuild's picture, pixel for pixel.
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "ui"))
from snapshot_e2e import Wine, read_png, winpath  # noqa: E402

failures = 0
MIN_INK = 25  # pixels: even "%45" in 11 points leaves far more


def check(what, condition, detail=""):
    global failures
    print(("ok   " if condition else "FAIL ") + what + ("" if condition else f"  ({detail})"))
    if not condition:
        failures += 1


class Image:
    def __init__(self, path):
        self.width, self.height, self.channels, self.rows = read_png(path, 10 ** 9)

    def pixel(self, x, y):
        i = x * self.channels
        return tuple(self.rows[y][i:i + self.channels])


def attributes(tag):
    return dict(re.findall(r'(\w+)="([^"]*)"', tag))


def text_boxes(skin_xml, width):
    """(id, box it must ink, box its pixels may reach) of every text control and news area, as the renderer lays
    them out: a text is centred on its line and may reach 1.5 em above and below it, plus its shadow's pixel."""
    boxes = []
    for tag in re.findall(r"<control\b[^>]*>", skin_xml):
        a = attributes(tag)
        x, y = int(a.get("x", 0)), int(a.get("y", 0))
        if a.get("type") == "text":
            size = int(a.get("size", 12))
            w = int(a.get("width", a.get("w", 0))) or width - x
            centre, reach = y + (size + 6) / 2, max((size + 6) / 2, size * 96 / 72 * 1.5)
            boxes.append((a["id"], (x, y, x + w, y + size + 6),
                          (x, int(centre - reach) - 1, x + w + 1, int(centre + reach) + 2)))
        elif a.get("type") == "iframe":
            w, h = int(a.get("width", a.get("w", 0))), int(a.get("height", a.get("h", 0)))
            boxes.append((a["id"], (x, y, x + w, y + h), (x, y, x + w, y + h)))
    return boxes


def without_text(skin_xml):
    """The same skin with every text invisible: text controls and the news area in a transparent colour, no
    shadows."""
    def strip(match):
        tag = match.group(0)
        if 'type="text"' not in tag and 'type="iframe"' not in tag:
            return tag
        tag = re.sub(r'\s(color|shadow)="[^"]*"', "", tag)
        return tag.replace("<control ", '<control color="#00FFFFFF" ', 1)
    return re.sub(r"<control\b[^>]*>", strip, skin_xml)


def differing(a, b, box):
    x0, y0, x1, y1 = box
    return [(x, y) for y in range(max(y0, 0), min(y1, a.height)) for x in range(max(x0, 0), min(x1, a.width))
            if a.pixel(x, y) != b.pixel(x, y)]


def compare_texts(name, shot, textless, boxes, only=None):
    for control, ink, _ in boxes:
        if only is None or control in only:
            inked = len(differing(shot, textless, ink))
            check(f"{name}: {control} is drawn ({inked} pixels)", inked >= MIN_INK, inked)
    if only is not None:
        return
    allowed = [reach for _, _, reach in boxes]
    stray = [p for p in differing(shot, textless, (0, 0, shot.width, shot.height))
             if not any(x0 <= p[0] < x1 and y0 <= p[1] < y1 for x0, y0, x1, y1 in allowed)]
    check(f"{name}: nothing outside the texts differs", not stray, stray[:5])


def main():
    nvbuild, template, sample, work, wine64, wineserver = sys.argv[1:7]
    nvbuild, template, sample, work = (os.path.abspath(p) for p in (nvbuild, template, sample, work))
    os.makedirs(work, exist_ok=True)
    prefix = os.path.join(work, "wineprefix")
    user_reg = os.path.join(prefix, "user.reg")
    if os.path.exists(user_reg) and "Replacements" in open(user_reg, encoding="utf-8", errors="replace").read():
        shutil.rmtree(prefix)  # only a prefix without any font mapping tests what players have
    scratch = tempfile.mkdtemp(dir=work)
    wine = Wine(wine64, wineserver, prefix, os.environ.get("DISPLAY", ""))
    try:
        wine.run("cmd", "/c", "exit")  # creates and primes the prefix, output detached
        check("the prefix maps no font names",
              wine.run("reg", "query", "HKCU\\Software\\Wine\\Fonts\\Replacements") != 0)

        skin, textless = os.path.join(scratch, "skin"), os.path.join(scratch, "textless")
        shutil.copytree(sample, skin)
        shutil.copytree(sample, textless)
        skin_xml = open(os.path.join(sample, "skin.xml"), encoding="utf-8").read()
        with open(os.path.join(textless, "skin.xml"), "w", encoding="utf-8") as f:
            f.write(without_text(skin_xml))

        def out(name):
            return os.path.join(scratch, name)

        for source, png in ((skin, "render.png"), (textless, "textless.png")):
            rc = wine.run(nvbuild, "render", winpath(source), winpath(out(png)))
            check(f"nvbuild render {os.path.basename(source)} exits 0", rc == 0 and os.path.exists(out(png)), rc)
        rc = wine.run(nvbuild, "build", winpath(skin), "--out", winpath(out("Kaldra.exe")), "--template",
                      winpath(template))
        check("nvbuild build exits 0", rc == 0, rc)
        rc = wine.run(out("Kaldra.exe"), "--preview", "--snap", winpath(out("preview.png")))
        check("the patcher's --preview --snap exits 0", rc == 0, rc)
        rc = wine.run(out("Kaldra.exe"), "--snap", winpath(out("snap.png")))
        check("the patcher's --snap exits 0", rc == 0, rc)
        if failures:
            return 1

        render, bare = Image(out("render.png")), Image(out("textless.png"))
        boxes = text_boxes(skin_xml, render.width)
        check("the sample has texts to look at", len(boxes) >= 8, len(boxes))
        compare_texts("nvbuild render", render, bare, boxes)
        preview = Image(out("preview.png"))
        check("the patcher's preview is nvbuild's picture", preview.rows == render.rows)
        # Without --preview the download's band shows no progress; the window's texts are still there.
        compare_texts("the patcher's --snap", Image(out("snap.png")), bare, boxes, only={"TITLE", "TEXT_MAIN"})
    except subprocess.TimeoutExpired as e:
        check("every Wine run ends in time", False, e)
    finally:
        wine.stop()
        if not failures:
            shutil.rmtree(scratch, ignore_errors=True)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
