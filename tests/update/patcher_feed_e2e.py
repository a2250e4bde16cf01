#!/usr/bin/env python3
"""The patcher's server feed and the operator's notice, in the window under Wine.

    patcher_feed_e2e.py WINE_RUN NVBUILD_EXE TEMPLATE_EXE CLOSE_WINDOW_EXE PRESS_BUTTON_EXE SAMPLE_SKIN

Run inside with_servers.py --fault --windows-paths (NV_FAULT_URL, NV_SERVED_DIR). The feed's pictures are taken
by the window itself after each read (--feed-snap) and compared byte for byte with what the renderer draws from
the same feed (nvbuild render --feed): the skin is the sample without its buttons, gauges and progress texts,
which the builder's preview fills with sample values. Prints one line per check; exits 1 when any failed.
"""

import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time

WINE_RUN, NVBUILD, TEMPLATE, CLOSE_WINDOW, PRESS_BUTTON, SAMPLE = sys.argv[1:7]
FAULT = os.environ["NV_FAULT_URL"]
SERVED = os.environ["NV_SERVED_DIR"]
SERVED_UNIX = "/" + SERVED[3:].replace("\\", "/") if SERVED.startswith("Z:") else SERVED
failures = 0


def check(what, condition, detail=""):
    global failures
    print(("ok   " if condition else "FAIL ") + what + ("" if condition or not detail else "\n     " + detail))
    failures += 0 if condition else 1


def winpath(path):
    return "Z:" + path.replace("/", "\\")


def wine(*args, timeout=180):
    return subprocess.run([WINE_RUN] + list(args), capture_output=True, timeout=timeout)


def start(*args):
    return subprocess.Popen([WINE_RUN] + list(args), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                            start_new_session=True)


def ended(process, seconds):
    try:
        process.wait(seconds)
        return True
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, 9)
        process.wait()
        return False


def wait_for(condition, seconds):
    deadline = time.time() + seconds
    while time.time() < deadline:
        if condition():
            return True
        time.sleep(0.1)
    return condition()


def served(name, text):
    with open(os.path.join(SERVED_UNIX, name), "w", encoding="utf-8") as f:
        f.write(text)


def read(path):
    with open(path, "rb") as f:
        return f.read()


def feed(status, players, titles):
    return json.dumps({"status": status, "players": players,
                       "news": [{"title": t, "date": "2024-06-%02d" % (20 - i), "url": "https://kaldra.example/%d" % i}
                                for i, t in enumerate(titles)]}, ensure_ascii=False)


work = tempfile.mkdtemp(prefix="nv-patcher-feed-")
try:
    # --- a skin whose window holds nothing the preview fills but the feed ------------------------------------
    skin = os.path.join(work, "skin")
    shutil.copytree(SAMPLE, skin)
    xml_path = os.path.join(skin, "skin.xml")
    lines = open(xml_path, encoding="utf-8").read().splitlines(True)
    kept = [l for l in lines if not re.search(r'type="(button|gauge)"|id="TEXT_', l)]
    open(xml_path, "w", encoding="utf-8").write("".join(kept))
    url_path = os.path.join(skin, "Fernwick.url.xml")
    url_xml = open(url_path, encoding="utf-8").read()
    open(url_path, "w", encoding="utf-8").write(re.sub(r'remoteConfigPath="[^"]*"', 'remoteConfigPath=""', url_xml))

    def build(name, *options):
        out = os.path.join(work, name)
        made = wine(NVBUILD, "build", winpath(skin), "--out", winpath(out), "--template", winpath(TEMPLATE),
                    *options)
        check("nvbuild builds %s" % name, made.returncode == 0, made.stderr.decode(errors="replace"))
        return out

    def render(feed_file):
        out = os.path.join(work, "ref-%s.png" % os.path.basename(feed_file))
        made = wine(NVBUILD, "render", winpath(skin), winpath(out), "--feed", winpath(feed_file))
        check("nvbuild render --feed %s" % os.path.basename(feed_file), made.returncode == 0,
              made.stderr.decode(errors="replace"))
        return read(out) if made.returncode == 0 else b""

    # The first read meets a server error, the later ones the file as it is then.
    feed_url = FAULT + "/~times=1/~status=503/feed.json"
    patcher = build("FeedPatcher.exe", "--feed-url", feed_url)
    feed_a = feed("online", 12345, ["Yaz etkinliği başladı", "Yeni zindan", "Bakım notları"])
    feed_b = feed("maintenance", 7, ["Bakım sürüyor"])
    for name, text in (("a.json", feed_a), ("b.json", feed_b)):
        with open(os.path.join(work, name), "w", encoding="utf-8") as f:
            f.write(text)
    served("feed.json", feed_a)

    offline = os.path.join(work, "offline.png")
    snapped = wine(patcher, "--snap", winpath(offline))
    check("--snap draws the feed as not read yet (exit 0)", snapped.returncode == 0,
          snapped.stderr.decode(errors="replace"))

    prefix = os.path.join(work, "live-")
    shot = lambda n: prefix + "%d.png" % n
    window = start(patcher, "--feed-snap", winpath(prefix), "--feed-interval-ms", "2500")
    check("the first read ends (a 503)", wait_for(lambda: os.path.exists(shot(1)), 60))
    check("... and shows no data, as the patcher before any read", os.path.exists(shot(1)) and
          read(shot(1)) == read(offline))
    check("the second read ends (the feed)", wait_for(lambda: os.path.exists(shot(2)), 30))
    served("feed.json", feed_b)
    check("... status, lamp, players and headlines drawn as the renderer draws that feed",
          os.path.exists(shot(2)) and read(shot(2)) == render(os.path.join(work, "a.json")))
    check("the changed feed shows at the next read", wait_for(lambda: os.path.exists(shot(3)), 30))
    served("feed.json", '{"status": "online", "players": "12"}')
    check("... drawn as the renderer draws it", os.path.exists(shot(3)) and
          read(shot(3)) == render(os.path.join(work, "b.json")))
    check("a broken feed is read at the same pace", wait_for(lambda: os.path.exists(shot(4)), 30))
    if os.path.exists(shot(4)):
        four = read(shot(4))
        check("... shows no data but keeps the last headlines", four != read(shot(3)) and four != read(offline))
    closed = wine(CLOSE_WINDOW, "NV_Patcher")
    check("closing the window ends the patcher", closed.returncode == 0 and ended(window, 30))

    # The operator's check reads the feed as the patcher does and says the same.
    told = wine(NVBUILD, "feed", FAULT + "/feed.json")
    err = told.stderr.decode("utf-8", errors="replace")
    check("nvbuild feed names what is wrong with a broken feed (exit 1)",
          told.returncode == 1 and '"players"' in err and "Durum alınamadı" not in err, err)
    served("feed.json", feed_a)
    told = wine(NVBUILD, "feed", FAULT + "/feed.json")
    out = told.stdout.decode("utf-8", errors="replace").replace("\r\n", "\n")
    check("nvbuild feed shows a good one as players will (exit 0)", told.returncode == 0 and
          "Oyuncu: 12.345\n" in out and out.index("Yaz etkinliği") < out.index("Bakım notları"), out)

    # A silent server: the window closes at once and the read waiting on it does not keep the patcher long.
    stalled = build("StallPatcher.exe", "--feed-url", FAULT + "/~stall=60/feed.json")
    window = start(stalled)
    time.sleep(4)
    began = time.time()
    closed = wine(CLOSE_WINDOW, "NV_Patcher")
    check("closing the window while the feed's server is silent ends the patcher within its timeout",
          closed.returncode == 0 and ended(window, 20), "%.1f s" % (time.time() - began))

    # --- the operator's notice ---------------------------------------------------------------------------------
    game = os.path.join(work, "Kaldra")
    client = os.path.join(SERVED_UNIX, "client")
    os.makedirs(client)
    files = {"KaldraOyun.exe": b"oyun" * 1000, "readme.txt": b"Kaldra\r\n"}
    for name, data in files.items():
        with open(os.path.join(client, name), "wb") as f:
            f.write(data)
    line = wine(NVBUILD, "crclist", winpath(client)).stdout.decode().strip().splitlines()[-1].strip()
    os.makedirs(os.path.join(SERVED_UNIX, "launcher"))

    def publish(notice):
        served("launcher/config.xml", "<config>\ncrcpatch_url=%s/client/\n%s\nnotice=%s\n</config>\n"
               % (FAULT, line, notice))

    os.makedirs(game)
    shutil.copy(build("NoticePatcher.exe", "--config-url", FAULT + "/launcher/config.xml"),
                os.path.join(game, "KaldraPatcher.exe"))
    exe = winpath(os.path.join(game, "KaldraPatcher.exe"))

    def folder():
        out = {}
        for name in sorted(os.listdir(game)):
            if not name.endswith(".log"):
                out[name] = read(os.path.join(game, name))
        return out

    def press(label):
        return wait_for(lambda: wine(PRESS_BUTTON, "Duyuru", label, timeout=30).returncode == 0, 60)

    first_notice = "Bu hafta sonu bakım var.\\nGiriş 03:00-05:00 arası kapalı."
    publish(first_notice)
    window = start(exe)
    check("the notice is asked before the update", press("Kabul Et"))
    check("... accepted, the update goes on", wait_for(
        lambda: all(os.path.exists(os.path.join(game, n)) for n in files), 60))
    check("... and the exact text is remembered", wait_for(lambda: os.path.exists(
        os.path.join(game, "norvane.notice")), 10) and read(os.path.join(game, "norvane.notice")) ==
        first_notice.replace("\\n", "\n").encode())
    wine(CLOSE_WINDOW, "NV_Patcher")
    ended(window, 30)

    again = wine(exe, "--headless")
    out = again.stdout.decode("utf-8", errors="replace")
    check("an accepted notice is not asked again", again.returncode == 0 and "bakım" not in out, out)

    publish("Kurallar değişti.\\nOkuyun.")
    before = folder()
    headless = wine(exe, "--headless")
    out = headless.stdout.decode("utf-8", errors="replace")
    err = headless.stderr.decode("utf-8", errors="replace")
    check("headless prints a changed notice and stops (exit 1)", headless.returncode == 1 and
          "Kurallar değişti.\nOkuyun." in out.replace("\r\n", "\n") and "--accept-notice" in err, out + err)
    window = start(exe)
    check("the window asks a changed notice again", press("Reddet"))
    check("... refused, the patcher closes", ended(window, 30))
    check("... leaving the game folder as it was", folder() == before, str(sorted(folder())))
    accepted = wine(exe, "--headless", "--accept-notice")
    check("--headless --accept-notice accepts and remembers it", accepted.returncode == 0 and
          read(os.path.join(game, "norvane.notice")) == "Kurallar değişti.\nOkuyun.".encode(),
          accepted.stderr.decode(errors="replace"))
finally:
    keep = os.environ.get("NV_KEEP_PICTURES")  # a folder to look at the window's pictures afterwards
    if keep:
        os.makedirs(keep, exist_ok=True)
        for name in os.listdir(work):
            if name.endswith(".png"):
                shutil.copy(os.path.join(work, name), keep)
    shutil.rmtree(work, ignore_errors=True)

print("%d check(s) failed" % failures if failures else "all checks passed")
sys.exit(1 if failures else 0)
