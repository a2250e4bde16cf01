#!/usr/bin/env python3
"""Delta update benchmark: what the patcher fetches for a client changed a little, and how long it takes,
against the same patcher fetching whole files, from the same local nginx that limits each connection's rate.
Printed as ratios measured in the same run:

  insert     one 64 MiB pack with 1,000 bytes inserted at 10 MiB and 100 KiB overwritten at 40 MiB: bytes
             fetched (index included) against the pack's size (goal: at most 1 MiB)
  client     a client of a few packs (--client-mb, default 2048) with 1% of its bytes changed in place across
             three of them: bytes fetched against the client's size (goal: at most 3%), and the time to done
             against the whole-file engine's (the same patcher with no index published; goal: under half)
  index      the indexes' size against the data they describe (goal: at most 0.5%)

The patcher is the one make builds, from the sample skin (bench/patcher_bench.sh prepare), run with --headless
under Wine; the lists and indexes come from nvbuild.exe crclist. Every result is checked byte for byte before it
counts. Run by `make bench`, never by `make test`.

    bench_delta.py [--client-mb 2048] [--rate 8m] [--connections 4] [--segment-mb 4]
"""

import argparse
import os
import random
import shutil
import subprocess
import sys
import tempfile
import time
import zlib

sys.dont_write_bytecode = True
HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "tests", "update", "servers"))
from nginx_harness import Nginx  # noqa: E402

MiB = 1024 * 1024
OUT = os.environ.get("OUT", os.path.join(HERE, "..", "out"))
WINE_RUN = os.path.join(OUT, "windows", "wine-run")
NVBUILD = os.path.join(OUT, "windows", "cli", "nvbuild.exe")
PATCHER_SH = os.path.join(HERE, "patcher_bench.sh")


def winpath(path):
    return "Z:" + os.path.abspath(path).replace("/", "\\")


def write_random(path, size, seed):
    rng = random.Random(seed)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as f:
        left = size
        while left:
            n = min(left, 4 * MiB)
            f.write(rng.randbytes(n))
            left -= n


def overwrite(path, offset, data):
    with open(path, "r+b") as f:
        f.seek(offset)
        f.write(data)


def insert(path, offset, data):
    with open(path, "rb") as f:
        head = f.read(offset)
        tail = f.read()
    with open(path, "wb") as f:
        f.write(head + data + tail)


def publish(root, client, base_url, with_indexes=True):
    """crclist over the client folder and the configuration announcing it."""
    made = subprocess.run([WINE_RUN, NVBUILD, "crclist", winpath(client)], capture_output=True, timeout=1800)
    if made.returncode != 0:
        sys.exit("crclist failed: " + made.stderr.decode(errors="replace"))
    line = made.stdout.decode().strip().splitlines()[-1].strip()
    if not with_indexes:
        shutil.rmtree(os.path.join(client, ".nvindex"), ignore_errors=True)
    with open(os.path.join(root, "config.xml"), "w", encoding="utf-8") as f:
        f.write("<config>\ncrcpatch_url=%s/client/\n%s\n</config>\n" % (base_url, line))


def client_files(root):
    """The client's own files under root (relative paths), without the list and the indexes."""
    for folder, _, names in os.walk(root):
        for name in names:
            rel = os.path.relpath(os.path.join(folder, name), root)
            if not (rel.startswith(".nvindex") or rel == "crclist.txt"):
                yield rel


def same_tree(a, b):
    """None when every client file of a is in b with the same bytes."""
    for rel in client_files(a):
        with open(os.path.join(a, rel), "rb") as x, open(os.path.join(b, rel), "rb") as y:
            while True:
                p, q = x.read(4 * MiB), y.read(4 * MiB)
                if p != q:
                    return "differs: " + rel
                if not p:
                    break
    return None


def copy_client(client, dest):
    for rel in client_files(client):
        os.makedirs(os.path.dirname(os.path.join(dest, rel)), exist_ok=True)
        shutil.copyfile(os.path.join(client, rel), os.path.join(dest, rel))


def run_patcher(config_url, dest, connections, segment_mb):
    start = time.monotonic()
    done = subprocess.run([PATCHER_SH, "run", config_url, dest, str(connections), str(segment_mb)],
                          capture_output=True, timeout=3600)
    elapsed = time.monotonic() - start
    if done.returncode != 0:
        sys.exit("the patcher failed: " + (done.stderr or done.stdout).decode(errors="replace")[-800:])
    return elapsed


def timed_update(server, config_url, player, client, args, name):
    """The patcher's run over player, checked against client: its time and the client bytes nginx sent."""
    mark = len(server.requests())
    seconds = run_patcher(config_url, player, args.connections, args.segment_mb)
    records = server.requests()[mark:]
    fetched = sum(r["sent"] for r in records if r["path"].startswith(("/client/data/", "/client/.nvindex/")))
    wrong = same_tree(client, player)
    if wrong:
        sys.exit("%s: %s" % (name, wrong))
    return seconds, fetched


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--client-mb", type=int, default=2048)
    parser.add_argument("--rate", default="8m")
    parser.add_argument("--connections", type=int, default=4)
    parser.add_argument("--segment-mb", type=int, default=4)
    args = parser.parse_args()
    work = tempfile.mkdtemp(prefix="nv-bench-delta-")
    try:
        root = os.path.join(work, "root")
        client = os.path.join(root, "client")
        os.makedirs(client)
        with Nginx(root, os.path.join(work, "nginx"), args.rate) as server:
            config_url = server.url + "/config.xml"
            prepare = [PATCHER_SH, "prepare", config_url, None, str(args.connections), str(args.segment_mb)]

            # --- insert: one 64 MiB pack -------------------------------------------------------------------
            pack = os.path.join(client, "data", "pack.pak")
            write_random(pack, 64 * MiB, 1)
            publish(root, client, server.url)
            player = os.path.join(work, "insert")
            os.makedirs(player)
            subprocess.run(prepare[:3] + [player] + prepare[4:], check=True, timeout=600)
            run_patcher(config_url, player, args.connections, args.segment_mb)
            insert(pack, 10 * MiB, random.Random(2).randbytes(1000))
            overwrite(pack, 40 * MiB, random.Random(3).randbytes(100 * 1024))
            publish(root, client, server.url)
            seconds, fetched = timed_update(server, config_url, player, client, args, "insert")
            print("insert  64 MiB pack, 1,000 bytes inserted at 10 MiB, 100 KiB overwritten at 40 MiB")
            print("        fetched %d bytes (index included) in %.1f s: %.2f%% of the pack, %.2f MiB (goal: <= 1 MiB)"
                  % (fetched, seconds, 100.0 * fetched / (64 * MiB), fetched / MiB))
            shutil.rmtree(player)
            shutil.rmtree(client)

            # --- client: a few packs, 1% changed in place across three --------------------------------------
            packs = 8
            size = args.client_mb * MiB // packs
            for i in range(packs):
                write_random(os.path.join(client, "data", "pack%02d.pak" % i), size, 10 + i)
            old = os.path.join(work, "old")
            copy_client(client, old)
            total = packs * size
            changed, rng = 0, random.Random(4)
            spots = 30
            piece = total // 100 // spots
            for k in range(spots):
                target = os.path.join(client, "data", "pack%02d.pak" % (k % 3))
                overwrite(target, rng.randrange(0, size - piece), rng.randbytes(piece))
                changed += piece
            print("client  %d MiB in %d packs, %d MiB (%.1f%%) overwritten in %d places across three packs"
                  % (total // MiB, packs, changed // MiB, 100.0 * changed / total, spots))

            results = {}
            for name, with_indexes in (("whole", False), ("delta", True)):
                publish(root, client, server.url, with_indexes)
                player = os.path.join(work, name)
                copy_client(old, player)
                subprocess.run(prepare[:3] + [player] + prepare[4:], check=True, timeout=600)
                seconds, fetched = timed_update(server, config_url, player, client, args, name)
                results[name] = (seconds, fetched)
                print("        %-5s %.1f s, fetched %d MiB (%.2f%% of the client)"
                      % (name, seconds, fetched // MiB, 100.0 * fetched / total))
                shutil.rmtree(player)
            (tw, fw), (td, fd) = results["whole"], results["delta"]
            print("        delta/whole time: %.2f (goal: < 0.5); fetched/client: %.2f%% (goal: <= 3%%)"
                  % (td / tw, 100.0 * fd / total))

            # --- index: size against the data ---------------------------------------------------------------
            publish(root, client, server.url)
            index_bytes = sum(os.path.getsize(os.path.join(client, ".nvindex", n))
                              for n in os.listdir(os.path.join(client, ".nvindex")))
            print("index   %d bytes for %d MiB: %.3f%% of the data (goal: <= 0.5%%)"
                  % (index_bytes, total // MiB, 100.0 * index_bytes / total))
    finally:
        shutil.rmtree(work, ignore_errors=True)


if __name__ == "__main__":
    main()
