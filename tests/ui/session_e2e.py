#!/usr/bin/env python3
"""The builder's session file and live preview, end to end under Wine and Xvfb.

    session_e2e.py BUILDER_EXE TEMPLATE_EXE NVBUILD_EXE SAMPLE_SKIN WORK_DIR WINE64 WINESERVER

1. Snapshot mode with the sample skin and no session file: the live preview in the Kaynak and Bağlantılar
   pictures is the picture that `nvbuild render` draws of the same skin, scaled into the panel.
2. A session file written into the prefix's application-data folder, then snapshot mode without a skin: the
   session's skin is loaded, its values show in the pictures (they differ from run 1 where the fields differ) and
   reach the built patcher (its embedded skin, read back with `nvbuild inspect`, and its version texts), and the
   file stays byte for byte as it was.
3. `nvbuild build --session` with that file writes the same patcher, byte for byte.
"""
import json
import os
import shutil
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from snapshot_e2e import Wine, configure, read_png, start_xvfb, winpath  # noqa: E402

failures = 0


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


def differing(a, b, box):
    x0, y0, x1, y1 = box
    return sum(1 for y in range(y0, y1) for x in range(x0, x1) if a.pixel(x, y)[:3] != b.pixel(x, y)[:3])


def preview_box(shot):
    """The rendered patcher inside the preview panel: the rows and columns of the right column in which more than
    a few pixels are neither the panel's white nor its checkerboard (the panel's rounded border has a few)."""
    plain = {(255, 255, 255), (0xEE, 0xF2, 0xEF)}
    xs, ys = range(shot.width - 440, shot.width - 48), range(150, shot.height - 140)
    rows = [y for y in ys if sum(shot.pixel(x, y)[:3] not in plain for x in xs) > 20]
    cols = [x for x in xs if sum(shot.pixel(x, y)[:3] not in plain for y in ys) > 20]
    if not rows or not cols:
        return 0, 0, 0, 1
    return cols[0], rows[0], cols[-1] + 1, rows[-1] + 1


def compare_preview(name, shot, render):
    """Box-averages the opaque parts of the reference into the panel's picture and compares colour by colour,
    over the whole window and over the band of the stand-in download (gauges and status texts). Small text
    shrunk to two fifths (the sample feed's headlines) comes out of the panel's filter and a box average a little
    differently, so some pixels may be far off."""
    x0, y0, x1, y1 = preview_box(shot)
    w, h = x1 - x0, y1 - y0
    check(f"{name}: the preview keeps the skin's proportions ({w}x{h})",
          w > 200 and abs(w / h - render.width / render.height) < 0.02, (x0, y0, x1, y1))
    if w <= 200:
        return
    band = (465 * h // render.height, 560 * h // render.height)
    stats = {"all": [0, 0, 0], "band": [0, 0, 0]}  # sum of differences, pixels, pixels far off
    for ty in range(h):
        sy0, sy1 = ty * render.height // h, max((ty + 1) * render.height // h, ty * render.height // h + 1)
        for tx in range(w):
            sx0, sx1 = tx * render.width // w, max((tx + 1) * render.width // w, tx * render.width // w + 1)
            box = [render.pixel(sx, sy) for sy in range(sy0, sy1) for sx in range(sx0, sx1)]
            if any(p[3] != 255 for p in box):
                continue  # the checkerboard shows through there
            got = shot.pixel(x0 + tx, y0 + ty)
            d = max(abs(got[c] - sum(p[c] for p in box) / len(box)) for c in range(3))
            for key in ("all", "band") if band[0] <= ty < band[1] else ("all",):
                stats[key][0] += d
                stats[key][1] += 1
                stats[key][2] += d > 48
    for key, (total, count, far) in stats.items():
        mean = total / max(count, 1)
        check(f"{name}: {key}: the preview matches nvbuild render (mean difference {mean:.1f}, {far} of {count}"
              " far off)", count > 1000 and mean < 8 and far < count * 0.05, (mean, far, count))


SESSION_LINES = [
    "; Norvane Olusturucu - son oturum (parola kaydedilmez)",
    "skin={skin}",
    "config_url=https://oturum.example/kaldratorrent.config.xml",
    "iframe_url=https://oturum.example/haberler",
    "feed_url=https://oturum.example/patcher/feed",
    "title=Oturum Çevrimiçi",
    "out_name=Oturum.exe",
    "out_path=C:\\yok\\Oturum.exe",
    "icon={icon}",
    "conn=7",
    "seg=24",
    "close_on_start=0",
    "auto_start=1",
    "allow_error=1",
    "browser_emu=0",
    "run_args=--oturum 1",
    "v_product=Oturum Ürünü",
    "v_company=Oturum Şirketi",
    "v_version=9.8.7.6",
    "v_copyright=© 2026 Oturum",
    "sign=0",
    "sign_pfx=",
    "sign_ts=http://ts.oturum.example",
    "link.3.URL_SITE=https://site.oturum.example/",
]


def main():
    builder, template, nvbuild, sample, work, wine64, wineserver = sys.argv[1:8]
    builder, template, nvbuild, sample, work = (os.path.abspath(p) for p in (builder, template, nvbuild, sample, work))
    os.makedirs(work, exist_ok=True)
    prefix = os.path.join(work, "wineprefix")
    scratch = tempfile.mkdtemp(dir=work)
    dist = os.path.join(scratch, "dist")
    os.makedirs(dist)
    for exe in (builder, nvbuild):
        shutil.copy(exe, dist)
    shutil.copy(template, os.path.join(dist, "Norvane.Template.exe"))
    exe = os.path.join(dist, os.path.basename(builder))
    tool = os.path.join(dist, os.path.basename(nvbuild))

    xvfb, display = start_xvfb()
    wine = Wine(wine64, wineserver, prefix, display)
    try:
        wine.restart()
        configure(wine, scratch, 96)
        users = os.path.join(prefix, "drive_c", "users")
        homes = [os.path.join(users, u) for u in os.listdir(users) if u != "Public"]
        session_files = [os.path.join(h, "AppData", "Roaming", "Norvane", "olusturucu.ini") for h in homes]
        outputs = [os.path.join(h, *p, "nv_snap_out", "Kaldra.exe") for h in homes
                   for p in (("AppData", "Local", "Temp"), ("Temp",))]

        def tool_out(*args):
            out = os.path.join(scratch, "tool.out")
            with open(out, "wb") as f:
                code = subprocess.run([wine64, tool, *args], env=wine.env, stdin=subprocess.DEVNULL, stdout=f,
                                      stderr=subprocess.DEVNULL, timeout=180).returncode
            with open(out, "rb") as f:
                return code, f.read()

        def snap(name, *skin):
            for out in outputs:
                if os.path.exists(out):
                    os.remove(out)
            folder = os.path.join(scratch, name)
            check(f"{name}: exit code 0", wine.run(exe, "--snap", winpath(folder), *skin) == 0)
            return folder

        # 1. No session: the sample from the command line, and its picture from nvbuild.
        for f in session_files:
            if os.path.exists(f):
                os.remove(f)
        plain = snap("plain", winpath(sample))
        render_png = os.path.join(scratch, "render.png")
        code, _ = tool_out("render", winpath(sample), winpath(render_png))
        check("nvbuild render exits 0", code == 0, code)
        render = Image(render_png)
        for shot in ("0_kaynak.png", "1_baglantilar.png"):
            compare_preview(shot, Image(os.path.join(plain, shot)), render)

        # 2. The session file alone brings the skin and every value back.
        text = ("\r\n".join(SESSION_LINES) + "\r\n").format(skin=winpath(sample), icon=winpath(os.path.join(sample, "crest.png"))).encode("utf-8")
        for f in session_files:
            os.makedirs(os.path.dirname(f), exist_ok=True)
            with open(f, "wb") as out:
                out.write(text)
        restored = snap("restored")
        for f in session_files:
            with open(f, "rb") as data:
                check("the session file is unchanged", data.read() == text)

        pictures = {}
        for shot in ("1_baglantilar.png", "2_davranis.png", "3_kimlik.png"):
            a, b = Image(os.path.join(plain, shot)), Image(os.path.join(restored, shot))
            pictures[shot] = differing(a, b, (250, 80, 840, 780))
        check("the restored addresses and title show in their fields", pictures["1_baglantilar.png"] > 300,
              pictures)
        check("the restored connections and toggles show", pictures["2_davranis.png"] > 300, pictures)
        check("the restored file texts show", pictures["3_kimlik.png"] > 300, pictures)

        built = [out for out in outputs if os.path.exists(out)]
        check("the restored session was built", len(built) == 1, built)
        if built:
            code, out = tool_out("inspect", winpath(built[0]), "--json")
            check("nvbuild inspect reads the patcher", code == 0, code)
            info = json.loads(out.decode("utf-8")) if code == 0 else {}
            settings = info.get("settings", {})
            expected = {
                "remoteConfigPath": "https://oturum.example/kaldratorrent.config.xml",
                "newsUrl": "https://oturum.example/haberler",
                "feedUrl": "https://oturum.example/patcher/feed",
            }
            for key, value in expected.items():
                check(f"patcher's {key}", info.get(key) == value, info.get(key))
            expected_settings = {"title": "Oturum Çevrimiçi", "connections": 7, "segmentMb": 24,
                                 "closeOnStart": False, "autoStart": True, "allowStartOnError": True,
                                 "browserEmulation": False, "runArgs": "--oturum 1"}
            for key, value in expected_settings.items():
                check(f"patcher's {key}", settings.get(key) == value, settings.get(key))
            links = {c["id"]: c["link"] for c in info.get("controls", [])}
            check("patcher's URL_SITE link", links.get("URL_SITE") == "https://site.oturum.example/", links)
            with open(built[0], "rb") as f:
                image = f.read()
            for value in ("Oturum Ürünü", "Oturum Şirketi", "9.8.7.6", "© 2026 Oturum", "Oturum.exe"):
                check(f"version text {value!r} in the patcher", value.encode("utf-16-le") in image)

            # 3. The same file as nvbuild's recipe builds the same patcher, byte for byte.
            headless = os.path.join(scratch, "headless", "Kaldra.exe")
            os.makedirs(os.path.dirname(headless))
            session = winpath(session_files[0])
            code, _ = tool_out("build", "--session", session, "--out", winpath(headless))
            check("nvbuild build --session exits 0", code == 0, code)
            same = os.path.exists(headless) and open(headless, "rb").read() == image
            check("nvbuild build --session writes the builder's patcher byte for byte", same)
            # A skin and a title given on the command line win over the file's.
            code, _ = tool_out("build", "--session", session, winpath(sample), "--out", winpath(headless),
                               "--title", "Komut Satırı")
            code, out = tool_out("inspect", winpath(headless), "--json")
            info = json.loads(out.decode("utf-8")) if code == 0 else {}
            check("an option on the command line wins", info.get("settings", {}).get("title") == "Komut Satırı")
            check("... the rest still comes from the file",
                  info.get("remoteConfigPath") == expected["remoteConfigPath"])
    finally:
        wine.stop()
        xvfb.kill()
        xvfb.wait()
        keep = os.environ.get("NV_SNAP_KEEP")  # a folder to keep the pictures in, for looking at them
        if keep:
            for name in ("plain", "restored"):
                if os.path.isdir(os.path.join(scratch, name)):
                    shutil.copytree(os.path.join(scratch, name), os.path.join(keep, "session-" + name),
                                    dirs_exist_ok=True)
            if os.path.exists(os.path.join(scratch, "render.png")):
                shutil.copy(os.path.join(scratch, "render.png"), keep)
        shutil.rmtree(scratch, ignore_errors=True)
    if failures:
        print(f"{failures} check(s) failed")
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
