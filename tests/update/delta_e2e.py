#!/usr/bin/env python3
"""Delta updates as players get them, under Wine: a patcher built with nvbuild from the sample skin, a client
of one large pack published with nvbuild crclist (its chunk index beside it), changed a little, and the
patcher run with --headless against nginx and the fault server, whose logs count every byte sent.

    delta_e2e.py WINE_RUN NVBUILD_EXE TEMPLATE_EXE SAMPLE_SKIN

Run inside with_servers.py --fault --nginx. Prints one line per check; exits 1 when any failed.
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

WINE_RUN, NVBUILD, TEMPLATE, SAMPLE = sys.argv[1:5]
FAULT = os.environ["NV_FAULT_URL"]
NGINX = os.environ["NV_NGINX_URL"]
NGINX_LOG = os.environ["NV_NGINX_LOG"]
SERVED = os.environ["NV_SERVED_DIR"]
SERVED_UNIX = "/" + SERVED[3:].replace("\\", "/") if SERVED.startswith("Z:") else SERVED
MIB = 1 << 20
PACK = "data/pack01.pak"
failures = 0


def check(what, condition, detail=""):
    global failures
    print(("ok   " if condition else "FAIL ") + what + ("" if condition or not detail else "\n     " + detail))
    failures += 0 if condition else 1


def winpath(path):
    return "Z:" + path.replace("/", "\\")


def wine(*args, timeout=300):
    return subprocess.run([WINE_RUN] + list(args), capture_output=True, timeout=timeout)


def fault_log(clear=True):
    with urllib.request.urlopen(FAULT + "/_log" + ("?clear=1" if clear else "")) as answer:
        return [json.loads(line) for line in answer.read().decode().splitlines() if line.strip()]


class NginxLog:
    """The records nginx appended since the last look."""

    def __init__(self):
        self.seen = 0

    def new(self):
        records = []
        if os.path.exists(NGINX_LOG):
            with open(NGINX_LOG, encoding="utf-8") as f:
                records = [json.loads(line) for line in f if line.strip()]
        fresh, self.seen = records[self.seen:], len(records)
        return fresh


work = tempfile.mkdtemp(prefix="nv-delta-e2e-")
client = os.path.join(SERVED_UNIX, "client")
game = os.path.join(work, "Kaldra")
nginx_log = NginxLog()
try:
    patcher = os.path.join(work, "KaldraPatcher.exe")
    built = wine(NVBUILD, "build", winpath(SAMPLE), "--out", winpath(patcher), "--template", winpath(TEMPLATE),
                 "--config-url", FAULT + "/launcher/config.xml", "--conn", "3", "--seg", "1")
    check("nvbuild builds the patcher", built.returncode == 0, built.stderr.decode(errors="replace"))

    rng = random.Random(21)
    files = {PACK: rng.randbytes(16 * MIB), "readme.txt": b"Kaldra\r\n"}

    def publish(base):
        shutil.rmtree(client, ignore_errors=True)
        for path, data in files.items():
            os.makedirs(os.path.dirname(os.path.join(client, path)), exist_ok=True)
            with open(os.path.join(client, path), "wb") as f:
                f.write(data)
        made = wine(NVBUILD, "crclist", winpath(client))
        line = made.stdout.decode().strip().splitlines()[-1].strip()
        os.makedirs(os.path.join(SERVED_UNIX, "launcher"), exist_ok=True)
        with open(os.path.join(SERVED_UNIX, "launcher", "config.xml"), "w", encoding="utf-8") as f:
            f.write("<config>\ncrcpatch_url=%s\n%s\n</config>\n" % (base, line))

    def game_view():
        out = {}
        for folder, _, names in os.walk(game):
            for name in names:
                rel = os.path.relpath(os.path.join(folder, name), game).replace(os.sep, "/")
                if not (rel.startswith("norvane") or rel == "kaldratorrent.config.xml" or rel == "KaldraPatcher.exe"):
                    out[rel] = open(os.path.join(folder, name), "rb").read()
        return out

    def parts():
        return sorted(p for p in game_view() if ".nvpart" in p)

    def run(timeout=300):
        return wine(winpath(os.path.join(game, "KaldraPatcher.exe")), "--headless", timeout=timeout)

    def changed(data, insert_at=None, insert=b"", overwrite_at=None, overwrite=b""):
        if overwrite_at is not None:
            data = data[:overwrite_at] + overwrite + data[overwrite_at + len(overwrite):]
        if insert_at is not None:
            data = data[:insert_at] + insert + data[insert_at:]
        return data

    # --- the player has the first version -------------------------------------------------------------------
    publish(NGINX + "/client/")
    os.makedirs(game)
    shutil.copy(patcher, os.path.join(game, "KaldraPatcher.exe"))
    first = run()
    check("a fresh folder is brought up to date", first.returncode == 0 and game_view() == files,
          first.stderr.decode(errors="replace"))
    index_name = [n for n in os.listdir(os.path.join(client, ".nvindex"))][0]
    index_size = os.path.getsize(os.path.join(client, ".nvindex", index_name))
    check("crclist wrote the pack's index, about 0.03%% of it (%d bytes)" % index_size,
          0 < index_size <= len(files[PACK]) // 200)
    fresh = [r for r in nginx_log.new() if r["path"].startswith("/client/.nvindex/")]
    check("a fresh folder has nothing to keep: no index is fetched", fresh == [], str(fresh))

    # --- 1,000 bytes inserted, 100 KiB overwritten: about that much fetched ---------------------------------
    files[PACK] = changed(files[PACK], overwrite_at=12 * MIB, overwrite=rng.randbytes(100 * 1024),
                          insert_at=4 * MIB, insert=rng.randbytes(1000))
    publish(NGINX + "/client/")
    index_size = sum(os.path.getsize(os.path.join(client, ".nvindex", n))
                     for n in os.listdir(os.path.join(client, ".nvindex")))
    delta = run()
    out = delta.stdout.decode("utf-8", errors="replace")
    records = nginx_log.new()
    pack_bytes = sum(r["sent"] for r in records if r["path"] == "/client/" + PACK)
    index_bytes = sum(r["sent"] for r in records if r["path"].startswith("/client/.nvindex/"))
    whole = [r for r in records if r["path"] == "/client/" + PACK and not r["range"]]
    check("the changed pack is brought up to date byte for byte", delta.returncode == 0 and game_view() == files,
          delta.stderr.decode(errors="replace"))
    check("nginx sent %d bytes of the pack and %d of its index: at most 1 MiB of 16" % (pack_bytes, index_bytes),
          100 * 1024 < pack_bytes and pack_bytes + index_bytes <= MIB, json.dumps(records)[:2000])
    check("... in ranges only", whole == [] and index_bytes == index_size, str(whole))
    check("the headless lines say what the delta saved", "fark:" in out and "Fark güncellemesi" in out, out)
    check("no part is left", parts() == [], str(parts()))

    # --- the index missing on the server: the whole file ----------------------------------------------------
    old = dict(files)
    files[PACK] = changed(files[PACK], overwrite_at=1 * MIB, overwrite=rng.randbytes(5000))
    publish(NGINX + "/client/")
    shutil.rmtree(os.path.join(client, ".nvindex"))
    missing = run()
    records = nginx_log.new()
    pack_bytes = sum(r["sent"] for r in records if r["path"] == "/client/" + PACK)
    index_status = [r["status"] for r in records if r["path"].startswith("/client/.nvindex/")]
    check("without its index the pack comes whole (%d bytes) and right" % pack_bytes,
          missing.returncode == 0 and game_view() == files and pack_bytes == len(files[PACK]),
          missing.stderr.decode(errors="replace"))
    check("... after one 404 for the index", index_status == [404], str(index_status))

    # --- a range whose bytes the index does not know: refused, the old file kept ------------------------------
    old = dict(files)
    files[PACK] = changed(files[PACK], overwrite_at=8 * MIB, overwrite=rng.randbytes(50000))
    publish(FAULT + "/~corrupt=%d/client/" % (8 * MIB + 100))
    fault_log()
    corrupt = run()
    err = corrupt.stderr.decode("utf-8", errors="replace")
    asked = [r for r in fault_log() if r.get("file") == "client/" + PACK]
    check("a corrupt range ends in NV_CRC_MISMATCH (exit 1)", corrupt.returncode == 1 and "CRC" in err, err)
    check("... after the delta's range, the whole file was tried", any(r.get("range") for r in asked) and
          any(not r.get("range") for r in asked), str(asked)[:1000])
    check("... and the old pack is left whole", game_view().get(PACK) == old[PACK])
    check("... with no part left", parts() == [], str(parts()))

    # --- an interrupted delta resumes -------------------------------------------------------------------------
    files[PACK] = changed(files[PACK], overwrite_at=4 * MIB, overwrite=rng.randbytes(5 * MIB))
    publish(FAULT + "/~rate=400000/client/")
    fault_log()
    slow = subprocess.Popen([WINE_RUN, winpath(os.path.join(game, "KaldraPatcher.exe")), "--headless"],
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
    deadline, done = time.time() + 90, 0
    while time.time() < deadline and done < 2:
        done += sum(1 for r in fault_log() if r.get("file") == "client/" + PACK and r.get("status") == 206)
        time.sleep(0.2)
    os.killpg(slow.pid, 9)
    slow.wait()
    time.sleep(1)
    check("a delta cut after %d ranges leaves its part" % done, done >= 2 and len(parts()) == 1, str(parts()))
    check("... and the old pack whole", game_view().get(PACK) == old[PACK] or game_view().get(PACK) is None)
    publish(FAULT + "/client/")
    fault_log()
    resumed = run()
    sent = sum(r.get("sent", 0) for r in fault_log() if r.get("file") == "client/" + PACK)
    check("the next run finishes it", resumed.returncode == 0 and game_view() == files,
          resumed.stderr.decode(errors="replace"))
    check("... fetching %d bytes: not the 5 MiB changed again" % sent, 0 < sent <= 4 * MIB)
    check("... and leaves no part", parts() == [])
except Exception as e:  # an unexpected failure is a failed check, with its reason
    check("the test ran to its end", False, repr(e))
finally:
    shutil.rmtree(work, ignore_errors=True)

print("%d check(s) failed" % failures if failures else "all checks passed")
sys.exit(1 if failures else 0)
