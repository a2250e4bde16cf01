#!/usr/bin/env python3
"""Snapshot mode of NorvaneOlusturucu.exe under Wine and Xvfb, end to end.

    snapshot_e2e.py BUILDER_EXE TEMPLATE_EXE|- SAMPLE_SKIN WORK_DIR WINE64 WINESERVER

Runs the builder with "--snap" without and with the sample skin at 96 DPI, and without a skin at 144 DPI, in a
Wine prefix of its own (the font names the builder asks for are mapped to free look-alikes there, and the DPI
is changed, neither of which may touch the prefix that the other tests share). Checks the pictures' names and
sizes, that they show the sidebar, a card, the text of an edit field and the log lines, that the build ran when
a template was given, and that the session file stayed as it was.
"""
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import time
import zlib

SECTIONS = ["kaynak", "baglantilar", "davranis", "kimlik", "cikti", "derleme"]
failures = 0


def check(what, condition):
    global failures
    print(("ok   " if condition else "FAIL ") + what)
    if not condition:
        failures += 1


# --- PNG reading (8-bit RGB or RGBA, as GDI+ writes them) -----------------------------------------------------
def read_png(path, last_row):
    with open(path, "rb") as f:
        data = f.read()
    assert data[:8] == b"\x89PNG\r\n\x1a\n", path
    pos, idat = 8, b""
    width = height = 0
    while pos < len(data):
        length, kind = struct.unpack(">I4s", data[pos:pos + 8])
        body = data[pos + 8:pos + 8 + length]
        if kind == b"IHDR":
            width, height, depth, colour = struct.unpack(">IIBB", body[:10])
            assert depth == 8 and colour in (2, 6), (depth, colour)
            channels = 3 if colour == 2 else 4
        elif kind == b"IDAT":
            idat += body
        pos += 12 + length
    raw = zlib.decompress(idat)
    stride = width * channels
    rows, previous = [], bytearray(stride)
    for y in range(min(height, last_row + 1)):
        kind = raw[y * (stride + 1)]
        line = bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for i in range(stride):
            a = line[i - channels] if i >= channels else 0
            b = previous[i]
            c = previous[i - channels] if i >= channels else 0
            if kind == 1:
                line[i] = (line[i] + a) & 0xFF
            elif kind == 2:
                line[i] = (line[i] + b) & 0xFF
            elif kind == 3:
                line[i] = (line[i] + (a + b) // 2) & 0xFF
            elif kind == 4:
                p = a + b - c
                pa, pb, pc = abs(p - a), abs(p - b), abs(p - c)
                line[i] = (line[i] + (a if pa <= pb and pa <= pc else b if pb <= pc else c)) & 0xFF
        rows.append(bytes(line))
        previous = line
    return width, height, channels, rows


def png_size(path):
    with open(path, "rb") as f:
        head = f.read(24)
    return struct.unpack(">II", head[16:24])


class Picture:
    """The rows down to last_row of a picture (the probes look at the upper part only)."""

    def __init__(self, path, last_row=420):
        self.width, self.height, self.channels, self.rows = read_png(path, last_row)

    def pixel(self, x, y):
        i = x * self.channels
        return tuple(self.rows[y][i:i + 3])

    def count(self, box, test):
        x0, y0, x1, y1 = box
        return sum(1 for y in range(y0, y1) for x in range(x0, x1) if test(self.pixel(x, y)))


def dark(p):
    return max(p) < 110


def green(p):
    return p[1] > p[0] + 25 and p[1] > p[2] + 10


# --- Wine ---------------------------------------------------------------------------------------------------
class Wine:
    def __init__(self, wine64, wineserver, prefix, display):
        self.wine64, self.wineserver = wine64, wineserver
        self.env = dict(os.environ, WINEPREFIX=prefix, WINEDEBUG="-all", DISPLAY=display,
                        WINEDLLOVERRIDES="mscoree,mshtml=")

    def run(self, *args, timeout=180):
        if os.environ.get("NV_SNAP_TRACE"):
            print(f"{time.monotonic():.1f} wine {args[0]}", flush=True)
        return subprocess.run([self.wine64, *args], env=self.env, stdin=subprocess.DEVNULL,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=timeout).returncode

    def restart(self):
        subprocess.run([self.wineserver, "-k"], env=self.env, stderr=subprocess.DEVNULL)
        subprocess.run([self.wineserver, "-w"], env=self.env, stderr=subprocess.DEVNULL)
        self.run("cmd", "/c", "exit")


    def stop(self):
        subprocess.run([self.wineserver, "-k"], env=self.env, stderr=subprocess.DEVNULL)


def configure(wine, scratch, dpi):
    """The font names the builder asks for mapped to free look-alikes, and the screen's DPI for the processes
    started after it."""
    reg = os.path.join(scratch, "settings.reg")
    with open(reg, "w", encoding="utf-16") as f:
        f.write("Windows Registry Editor Version 5.00\r\n\r\n"
                "[HKEY_CURRENT_USER\\Software\\Wine\\Fonts\\Replacements]\r\n"
                "\"Segoe UI\"=\"Inter\"\r\n\"Consolas\"=\"DejaVu Sans Mono\"\r\n"
                # the face that skins name by default, for the live preview's texts
                "\"Tahoma\"=\"DejaVu Sans\"\r\n\r\n"
                "[HKEY_CURRENT_USER\\Control Panel\\Desktop]\r\n"
                f"\"LogPixels\"=dword:{dpi:08x}\r\n\r\n"
                "[HKEY_CURRENT_CONFIG\\Software\\Fonts]\r\n"
                f"\"LogPixels\"=dword:{dpi:08x}\r\n")
    wine.run("regedit", "/s", winpath(reg))


def winpath(path):
    return "Z:" + os.path.abspath(path).replace("/", "\\")


def start_xvfb():
    # Xvfb takes a free display number itself and writes it once it accepts clients, so lock files left
    # behind by killed servers neither stop us nor make two runs share a display.
    read_end, write_end = os.pipe()
    proc = subprocess.Popen(["Xvfb", "-displayfd", str(write_end), "-screen", "0", "2560x1600x24", "-nolisten",
                             "tcp"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, pass_fds=(write_end,))
    os.close(write_end)
    with os.fdopen(read_end) as pipe:
        number = pipe.readline().strip()
    if not number:
        proc.kill()
        raise RuntimeError("no display")
    return proc, f":{number}"


def main():
    builder, template, sample, work, wine64, wineserver = sys.argv[1:7]
    builder, sample, work = (os.path.abspath(p) for p in (builder, sample, work))
    template = template if template == "-" else os.path.abspath(template)
    os.makedirs(work, exist_ok=True)
    prefix = os.path.join(work, "wineprefix")
    scratch = tempfile.mkdtemp(dir=work)
    dist = os.path.join(scratch, "dist")
    os.makedirs(dist)
    shutil.copy(builder, dist)
    exe = os.path.join(dist, os.path.basename(builder))
    has_template = template != "-"
    if has_template:
        shutil.copy(template, os.path.join(dist, "Norvane.Template.exe"))

    xvfb, display = start_xvfb()
    wine = Wine(wine64, wineserver, prefix, display)
    try:
        wine.restart()
        # The session file must come out of every snapshot run as it went in.
        users = os.path.join(prefix, "drive_c", "users")
        session_dirs = [os.path.join(users, u, "AppData", "Roaming", "Norvane") for u in os.listdir(users)
                        if u != "Public"]
        session_text = b"; Norvane Olusturucu - son oturum (parola kaydedilmez)\r\nskin=C:\\yok\r\n"
        for d in session_dirs:
            os.makedirs(d, exist_ok=True)
            with open(os.path.join(d, "olusturucu.ini"), "wb") as f:
                f.write(session_text)
        outputs = [os.path.join(users, u, "AppData", "Local", "Temp", "nv_snap_out", "Kaldra.exe")
                   for u in os.listdir(users)] + [os.path.join(users, u, "Temp", "nv_snap_out", "Kaldra.exe")
                                                  for u in os.listdir(users)]
        for out in outputs:
            if os.path.exists(out):
                os.remove(out)

        def snap(name, dpi, *skin, screen=None):
            configure(wine, scratch, dpi)
            folder = os.path.join(scratch, name)
            extra = ["--screen", screen] if screen else []
            code = wine.run(exe, *extra, "--snap", winpath(folder), *skin)
            check(f"{name}: exit code 0", code == 0)
            return folder

        def files_and_sizes(name, folder, normal, minimum):
            expected = [f"{i}_{s}{suffix}.png" for suffix in ("", "_min") for i, s in enumerate(SECTIONS)]
            present = sorted(os.listdir(folder)) if os.path.isdir(folder) else []
            check(f"{name}: the twelve pictures", present == sorted(expected))
            for f in present:
                size = png_size(os.path.join(folder, f))
                check(f"{name}: {f} is {size[0]}x{size[1]}", size == (minimum if "_min" in f else normal))

        empty = snap("empty", 96)
        files_and_sizes("empty", empty, (1320, 820), (1100, 700))
        loaded = snap("loaded", 96, winpath(sample))
        files_and_sizes("loaded", loaded, (1320, 820), (1100, 700))
        built = [out for out in outputs if os.path.exists(out)]
        if has_template:
            check("loaded: the build wrote its patcher", len(built) == 1)
        else:
            check("loaded: without a template no patcher appears", not built)

        # Pixel probes at 96 DPI: the page background, the white sidebar with its edge, a white card, the text
        # of an edit field (a child window, printed into the picture), the log's lines (another child).
        links = Picture(os.path.join(loaded, "1_baglantilar.png"))
        check("sidebar is white", links.pixel(120, 415) == (255, 255, 255))
        check("page background", links.pixel(245, 400) == (0xF7, 0xFA, 0xF8))
        check("a card is drawn", links.pixel(560, 120) == (255, 255, 255))
        check("the config field shows its text", links.count((285, 176, 700, 204), dark) > 150)
        check("the section title is drawn", links.count((260, 24, 400, 50), dark) > 200)
        build = Picture(os.path.join(loaded, "5_derleme.png"))
        log_lines = build.count((875, 146, 1275, 400), lambda p: dark(p) or green(p) or p[0] > p[1] + 40)
        check("the log view shows lines", log_lines > 400)
        empty_build = Picture(os.path.join(empty, "5_derleme.png"))
        check("without a skin the log is empty",
              empty_build.count((875, 146, 1275, 400), lambda p: green(p) or p[0] > p[1] + 40) == 0)

        # A laptop at 125 %: the window clamped to a 1366 x 768 screen's work area, the pages scrolling.
        laptop = snap("laptop125", 120, winpath(sample), screen="1366x768")
        present = sorted(os.listdir(laptop)) if os.path.isdir(laptop) else []
        check("laptop125: the twelve pictures", len(present) == 12)
        sizes = {png_size(os.path.join(laptop, f)) for f in present}
        check(f"laptop125: one clamped size {sizes}",
              len(sizes) == 1 and all(w <= 1366 and h <= 768 - 50 and h < 1025 for w, h in sizes))

        big = snap("dpi144", 144)
        files_and_sizes("dpi144", big, (1980, 1230), (1650, 1050))
        snap_back = [d for d in session_dirs if open(os.path.join(d, "olusturucu.ini"), "rb").read() != session_text]
        check("the session file is untouched", not snap_back)
    finally:
        wine.stop()
        xvfb.kill()
        xvfb.wait()
        keep = os.environ.get("NV_SNAP_KEEP")  # a folder to keep the pictures in, for looking at them
        if keep:
            for name in ("empty", "loaded", "dpi144", "laptop125"):
                if os.path.isdir(os.path.join(scratch, name)):
                    shutil.copytree(os.path.join(scratch, name), os.path.join(keep, name), dirs_exist_ok=True)
        shutil.rmtree(scratch, ignore_errors=True)
    if failures:
        print(f"{failures} check(s) failed")
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
