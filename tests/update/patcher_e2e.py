#!/usr/bin/env python3
"""The patcher as players get it, under Wine: built with nvbuild from the sample skin, pointed at the test
servers, its client published with nvbuild crclist, run with --headless.

    patcher_e2e.py WINE_RUN NVBUILD_EXE TEMPLATE_EXE HOLD_FILE_EXE CLOSE_WINDOW_EXE SAMPLE_SKIN

Run inside with_servers.py --fault --nginx (their addresses come in NV_FAULT_URL and NV_NGINX_URL, the folder
they serve in NV_SERVED_DIR as Wine names it). Prints one line per check; exits 1 when any failed.
"""

import json
import os
import random
import shutil
import subprocess
import sys
import tempfile
import time
import urllib.request
import zlib

WINE_RUN, NVBUILD, TEMPLATE, HOLD_FILE, CLOSE_WINDOW, SAMPLE = sys.argv[1:7]
FAULT = os.environ["NV_FAULT_URL"]
NGINX = os.environ["NV_NGINX_URL"]
SERVED = os.environ["NV_SERVED_DIR"]
SERVED_UNIX = "/" + SERVED[3:].replace("\\", "/") if SERVED.startswith("Z:") else SERVED
failures = 0


def check(what, condition, detail=""):
    global failures
    print(("ok   " if condition else "FAIL ") + what + ("" if condition or not detail else "\n     " + detail))
    failures += 0 if condition else 1


def winpath(path):
    return "Z:" + path.replace("/", "\\")


def wine(*args, timeout=300, **kw):
    return subprocess.run([WINE_RUN] + list(args), capture_output=True, timeout=timeout, **kw)


def crc(data):
    return "%08X" % zlib.crc32(data)


def fault_log(clear=True):
    with urllib.request.urlopen(FAULT + "/_log" + ("?clear=1" if clear else "")) as answer:
        return [json.loads(line) for line in answer.read().decode().splitlines() if line.strip()]


work = tempfile.mkdtemp(prefix="nv-patcher-e2e-")
client = os.path.join(SERVED_UNIX, "client")
game = os.path.join(work, "Kaldra")
try:
    # --- the operator: a patcher from the sample, a client published with crclist -------------------------
    patcher = os.path.join(work, "KaldraPatcher.exe")
    built = wine(NVBUILD, "build", winpath(SAMPLE), "--out", winpath(patcher), "--template", winpath(TEMPLATE),
                 "--config-url", FAULT + "/launcher/config.xml", "--conn", "3", "--seg", "1")
    check("nvbuild builds the patcher", built.returncode == 0, built.stderr.decode(errors="replace"))

    rng = random.Random(19)
    files = {
        "KaldraOyun.exe": rng.randbytes(200000),
        "data/harita 1/\u015fehir.pak": rng.randbytes(5 * 1024 * 1024 + 321),  # 6 segments of 1 MiB
        "data/bo\u015f.txt": b"",
        "readme.txt": b"Kaldra\r\n",
    }

    def publish(base, extra=""):
        shutil.rmtree(client, ignore_errors=True)
        for path, data in files.items():
            os.makedirs(os.path.dirname(os.path.join(client, path)), exist_ok=True)
            with open(os.path.join(client, path), "wb") as f:
                f.write(data)
        made = wine(NVBUILD, "crclist", winpath(client))
        line = made.stdout.decode().strip().splitlines()[-1].strip()
        os.makedirs(os.path.join(SERVED_UNIX, "launcher"), exist_ok=True)
        with open(os.path.join(SERVED_UNIX, "launcher", "config.xml"), "w", encoding="utf-8") as f:
            f.write("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<config>\ncrcpatch_url=%s\n%s\n%s\n</config>\n"
                    % (base, line, extra))
        return line

    def set_base(base, extra=""):
        path = os.path.join(SERVED_UNIX, "launcher", "config.xml")
        text = open(path, encoding="utf-8").read().splitlines()
        text = [l for l in text if not l.startswith(("crcpatch_url=", "nv_patcher"))]
        text.insert(2, "crcpatch_url=" + base)
        if extra:
            text.insert(3, extra)
        open(path, "w", encoding="utf-8").write("\n".join(text) + "\n")

    def game_files():
        out = {}
        for folder, _, names in os.walk(game):
            for name in names:
                rel = os.path.relpath(os.path.join(folder, name), game).replace(os.sep, "/")
                out[rel] = open(os.path.join(folder, name), "rb").read()
        return out

    def client_view():
        return {p: d for p, d in game_files().items()
                if not (p.startswith("norvane") or p == "kaldratorrent.config.xml" or p == "KaldraPatcher.exe")}

    def leftovers():
        return sorted(p for p in game_files() if ".nvpart" in p)

    def run(*extra, timeout=300):
        return wine(winpath(os.path.join(game, "KaldraPatcher.exe")), "--headless", *extra, timeout=timeout)

    line = publish(NGINX + "/client/")
    check("crclist prints the configuration's line", line.startswith("crclist_crc32="), line)
    os.makedirs(game)
    shutil.copy(patcher, os.path.join(game, "KaldraPatcher.exe"))

    # --- a fresh folder, from nginx -------------------------------------------------------------------------
    first = run()
    out = first.stdout.decode("utf-8", errors="replace")
    check("a fresh folder is brought up to date (exit 0)", first.returncode == 0,
          out + first.stderr.decode(errors="replace"))
    check("it has exactly the server's files", client_view() == files, str(sorted(client_view())))
    check("it printed the steps and each file", "Oyun dosyaları denetleniyor" in out and "readme.txt" in out, out)
    check("it ends with the up-to-date text", "güncel" in out.strip().splitlines()[-1] if out.strip() else False, out)
    check("the log is in the game folder", os.path.exists(os.path.join(game, "norvane.log")))
    check("the fetched configuration is kept under localConfigPath",
          os.path.exists(os.path.join(game, "kaldratorrent.config.xml")))

    # --- from now on from the fault server, whose log counts the requests ---------------------------------
    set_base(FAULT + "/client/")
    fault_log()
    second = run()
    asked = [r["file"] for r in fault_log() if r.get("file")]
    check("a second run exits 0", second.returncode == 0, second.stderr.decode(errors="replace"))
    check("a second run fetches nothing but the configuration and the list",
          sorted(asked) == ["client/crclist.txt", "launcher/config.xml"], str(asked))

    files["readme.txt"] = b"Kaldra 2\r\n"
    publish(FAULT + "/client/")
    fault_log()
    third = run()
    asked = [r["file"] for r in fault_log() if r.get("file")]
    check("one changed file is fetched alone", third.returncode == 0 and
          sorted(asked) == ["client/crclist.txt", "client/readme.txt", "launcher/config.xml"], str(asked))
    check("... and is the server's", client_view() == files)

    # --- every fault ends in its message, the old files kept, no part left --------------------------------
    old = {p: d + b"old" for p, d in files.items()}
    faults = [
        ("~status=404", 1, "HTTP 404"),
        ("~status=503", 1, "HTTP 503"),
        # In the large file's last chunk: the only one its old copy lacks, so the delta fetches it too.
        ("~corrupt=%d" % (len(files["data/harita 1/\u015fehir.pak"]) - 10), 1, "CRC"),
        ("~badrange", 1, "indirilemedi"),
        ("~cut=150000", 1, "yarıda kesildi"),
        ("~norange", 0, ""),
    ]
    for fault, code, words in faults:
        for path, data in old.items():
            with open(os.path.join(game, path), "wb") as f:
                f.write(data)
        set_base(FAULT + "/" + fault + "/client/")
        got = run()
        err = got.stderr.decode("utf-8", errors="replace")
        check("%s: exit %d" % (fault, code), got.returncode == code, err)
        if code:
            check("%s: the message says %r and where the log is" % (fault, words), words in err and "Günlük:" in err,
                  err)
            now = client_view()
            check("%s: every game file is the old one or the server's" % fault,
                  all(now.get(p) in (old[p], files[p]) for p in files), str(sorted(now)))
            check("%s: no part is left but a large file's finished segments" % fault,
                  all(p.startswith("data/harita 1/") for p in leftovers()), str(leftovers()))
        else:
            check("%s: the files are the server's" % fault, client_view() == files)

    # --- an interrupted large file resumes ------------------------------------------------------------------
    set_base(FAULT + "/client/")
    run()
    big = "data/harita 1/\u015fehir.pak"
    os.remove(os.path.join(game, big))
    set_base(FAULT + "/~rate=400000/client/")
    fault_log()
    slow = subprocess.Popen([WINE_RUN, winpath(os.path.join(game, "KaldraPatcher.exe")), "--headless"],
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
    record = os.path.join(game, big + ".nvpart.seg")
    deadline = time.time() + 60
    while time.time() < deadline:
        if os.path.exists(record) and open(record).read().count("\n") >= 3:  # the header and two segments
            break
        time.sleep(0.1)
    os.killpg(slow.pid, 9)
    slow.wait()
    time.sleep(1)
    check("a cut run leaves the large file's part and its record", os.path.exists(record), str(leftovers()))
    set_base(FAULT + "/client/")
    fault_log()
    resumed = run()
    ranges = [r for r in fault_log() if r.get("file") == "client/" + big and r.get("range")]
    check("the next run finishes it", resumed.returncode == 0 and client_view() == files,
          resumed.stderr.decode(errors="replace"))
    check("... fetching only the segments that were missing (%d of 6)" % len(ranges), 0 < len(ranges) <= 4)
    check("... and leaves no part", leftovers() == [])

    # --- the window closed mid-download ---------------------------------------------------------------------
    for path in files:
        if path != big:
            with open(os.path.join(game, path), "wb") as f:
                f.write(b"old " + path.encode())
    os.remove(os.path.join(game, big))
    set_base(FAULT + "/~rate=300000/client/")
    window = subprocess.Popen([WINE_RUN, winpath(os.path.join(game, "KaldraPatcher.exe"))],
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
    deadline = time.time() + 60
    while time.time() < deadline and not leftovers():
        time.sleep(0.1)
    time.sleep(1)
    closed = wine(CLOSE_WINDOW, "NV_Patcher")
    try:
        window.wait(40)  # the run ends within the receive timeout, then the window goes
        ended = True
    except subprocess.TimeoutExpired:
        os.killpg(window.pid, 9)
        window.wait()
        ended = False
    check("closing the window mid-download ends the patcher", closed.returncode == 0 and ended)
    now = client_view()
    check("... every game file is the old one or the server's",
          all(now.get(p) in (b"old " + p.encode(), files[p]) for p in files if p != big), str(sorted(now)))
    check("... and no part is left but the large file's finished segments",
          all(p.startswith("data/harita 1/") for p in leftovers()), str(leftovers()))
    set_base(FAULT + "/client/")
    check("... which the next run finishes", run().returncode == 0 and client_view() == files)

    # --- a file held open by another program ---------------------------------------------------------------
    with open(os.path.join(game, "readme.txt"), "wb") as f:
        f.write(b"held")
    holder = subprocess.Popen([WINE_RUN, HOLD_FILE, winpath(os.path.join(game, "readme.txt")), "60"],
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, start_new_session=True)
    check("the holder holds the file", holder.stdout.readline().strip() == b"held")
    held = run()
    err = held.stderr.decode("utf-8", errors="replace")
    os.killpg(holder.pid, 9)
    holder.wait()
    check("a held file ends in NV_FILE_IN_USE (exit 1)",
          held.returncode == 1 and "başka bir program tarafından kullanılıyor" in err, err)
    check("... the held file is untouched", open(os.path.join(game, "readme.txt"), "rb").read() == b"held")
    check("... and its download is not left behind", leftovers() == [], str(leftovers()))

    # --- self-update ------------------------------------------------------------------------------------------
    newer = os.path.join(client, "KaldraPatcher.exe")
    built = wine(NVBUILD, "build", winpath(SAMPLE), "--out", winpath(newer), "--template", winpath(TEMPLATE),
                 "--config-url", FAULT + "/launcher/config.xml", "--conn", "3", "--seg", "1", "--title", "Kaldra 2")
    new_bytes = open(newer, "rb").read()
    set_base(FAULT + "/client/", "nv_patcher_url=KaldraPatcher.exe\nnv_patcher_crc32=00000000")
    wrong = run()
    check("a new patcher with the wrong CRC stops with NV_CRC_MISMATCH",
          wrong.returncode == 1 and "CRC" in wrong.stderr.decode("utf-8", errors="replace"),
          wrong.stderr.decode(errors="replace"))
    check("... leaving the old patcher and no part", open(os.path.join(game, "KaldraPatcher.exe"), "rb").read() ==
          open(patcher, "rb").read() and leftovers() == [])
    set_base(FAULT + "/client/", "nv_patcher_url=KaldraPatcher.exe\nnv_patcher_crc32=" + crc(new_bytes))
    updated = run()
    out = updated.stdout.decode("utf-8", errors="replace")
    check("self-update: the run ends up to date through the new patcher (exit 0)", updated.returncode == 0,
          out + updated.stderr.decode(errors="replace"))
    check("... the exe is the new one", open(os.path.join(game, "KaldraPatcher.exe"), "rb").read() == new_bytes)
    check("... which was started (it says so)", "yeni sürümü" in out, out)
    again = run()
    check("... the next run finds it current and deletes the aside copy",
          again.returncode == 0 and not os.path.exists(os.path.join(game, "KaldraPatcher.exe.nvold")),
          str(sorted(game_files())))
finally:
    shutil.rmtree(work, ignore_errors=True)

print("%d check(s) failed" % failures if failures else "all checks passed")
sys.exit(1 if failures else 0)
