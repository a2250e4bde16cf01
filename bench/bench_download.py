#!/usr/bin/env python3
"""Download benchmark: a client set of about 200 MB fetched from a local nginx by the reference clients, and by
the patcher when a command for it is given. Printed as ratios measured in the same run, never as absolute goals:

  limited    nginx caps each connection (--rate, 8 MiB/s), so that parallel connections show: aria2c with the
             same connection count and segment size as the patcher, against the patcher (goal: at least 0.9 of
             aria2c's speed)
  unlimited  no cap: one plain curl stream (and aria2c), against the patcher

aria2c opens up to -x connections for each of its -j downloads at once, so to hold it to N connections in all,
as the patcher is, it runs twice: the files larger than two segments one after the other, split into segments
over N connections (-j1 -xN -sN -kSEG), then the smaller ones whole, N at a time (-jN -x1 -s1). Its time is the
sum. Every tool's result is checked against the set (sizes and CRC-32) before its time counts.

    bench_download.py [--connections 4] [--segment-mb 4] [--rate 8m] [--size-mb 200]
                      [--patcher 'COMMAND {config_url} {dest} {connections} {segment_mb}'] [--patcher-prepare '...']

--patcher (or the environment variable NV_BENCH_PATCHER) is a shell command with those placeholders: it must
bring the folder {dest} to the client set announced by the remote config at {config_url} (crcpatch_url,
crclist, crclist_crc32) and exit 0; --patcher-prepare (NV_BENCH_PATCHER_PREPARE), with the same placeholders, runs
before it untimed (make bench builds the patcher there: bench/patcher_bench.sh). --patcher-start
(NV_BENCH_PATCHER_START) is a command that starts and ends a program that does nothing under the same runner
as the patcher (under Wine with its server running, about 0.2 s): its best of three is printed, and the ratios
are printed a second time with that cost taken off the patcher's time, labelled as such, so that what the runner
costs is told apart from what the transfer costs.
Run by `make bench`, never by `make test`.
"""

import argparse
import os
import shlex
import shutil
import subprocess
import sys
import tempfile
import time
import zlib

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "update", "servers"))
from nginx_harness import Nginx  # noqa: E402

MiB = 1024 * 1024
RUN_TIMEOUT = 900  # seconds for any one tool: a hung tool fails the benchmark instead of hanging it


def make_set(client, total_mb):
    """A client folder: a few large files (segmented downloads), some medium ones and many small ones, of
    random (incompressible) bytes. Returns {relative path: (size, crc32)}."""
    sizes = []
    large, medium = total_mb * 6 // 10, total_mb * 3 // 10
    sizes += [("data/large%d.pak" % i, large * MiB // 3) for i in range(3)]
    sizes += [("data/medium/m%02d.pak" % i, medium * MiB // 12) for i in range(12)]
    small_total = total_mb * MiB - sum(s for _, s in sizes)
    count = 100
    sizes += [("ui/k\u00fc\u00e7\u00fck %03d.dds" % i, small_total // count) for i in range(count)]
    files = {}
    for rel, size in sizes:
        path = os.path.join(client, rel)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        crc = 0
        with open(path, "wb") as f:
            left = size
            while left:
                block = os.urandom(min(left, 4 * MiB))
                crc = zlib.crc32(block, crc)
                f.write(block)
                left -= len(block)
        files[rel] = (size, crc)
    return files


def write_list_and_config(root, client, files, base_url):
    """The file list beside the client files and the remote config that announces them."""
    lines = "".join("%s\t%d\t%08X\n" % (rel, size, crc) for rel, (size, crc) in sorted(files.items()))
    data = lines.encode("utf-8")
    with open(os.path.join(client, "crclist.txt"), "wb") as f:
        f.write(data)
    config = "<config>\ncrcpatch_url=%s/client/\ncrclist=crclist.txt\ncrclist_crc32=%08X\n</config>\n" % (
        base_url,
        zlib.crc32(data),
    )
    with open(os.path.join(root, "config.xml"), "w", encoding="utf-8") as f:
        f.write(config)


def quoted_url(base, rel):
    from urllib.parse import quote

    return "%s/client/%s" % (base, quote(rel))


def verify(dest, files):
    """None when dest holds exactly the set's bytes, else what is wrong."""
    for rel, (size, crc) in files.items():
        path = os.path.join(dest, rel)
        if not os.path.isfile(path):
            return "missing " + rel
        if os.path.getsize(path) != size:
            return "wrong size " + rel
        got = 0
        with open(path, "rb") as f:
            while True:
                block = f.read(4 * MiB)
                if not block:
                    break
                got = zlib.crc32(block, got)
        if got != crc:
            return "wrong bytes " + rel
    return None


def run_timed(commands, work):
    """Runs the commands one after the other; the wall time of all, or None with the failure printed."""
    start = time.monotonic()
    for command in commands:
        result = subprocess.run(command, cwd=work, stdin=subprocess.DEVNULL, capture_output=True,
                                timeout=RUN_TIMEOUT, shell=isinstance(command, str))
        if result.returncode != 0:
            shown = command if isinstance(command, str) else " ".join(command[:3]) + " ..."
            print("    %s failed (%d): %s" % (shown, result.returncode,
                                             (result.stderr or result.stdout).decode(errors="replace")[-500:]))
            return None
    return time.monotonic() - start


def aria2(base, files, dest, work, connections, segment_mb):
    segment = segment_mb * MiB
    large = [r for r, (s, _) in files.items() if s > 2 * segment]
    small = [r for r in files if r not in large]
    commands = []
    for name, group, options in (
        ("large", large, ["-j1", "-x%d" % connections, "-s%d" % connections, "-k%dM" % segment_mb]),
        ("small", small, ["-j%d" % connections, "-x1", "-s1"]),
    ):
        if not group:
            continue
        listing = os.path.join(work, "aria2-%s.txt" % name)
        with open(listing, "w", encoding="utf-8") as f:
            for rel in group:
                f.write("%s\n  dir=%s\n  out=%s\n" % (quoted_url(base, rel), dest, rel))
        commands.append(["aria2c", "-q", "--input-file", listing, "--file-allocation=none",
                         "--allow-overwrite=true", "--auto-file-renaming=false", "--max-tries=1"] + options)
    return run_timed(commands, work)


def curl(base, files, dest, work):
    """One curl process, one connection kept alive, the files one after the other."""
    listing = os.path.join(work, "curl.txt")
    with open(listing, "w", encoding="utf-8") as f:
        for rel in files:
            f.write('url = "%s"\noutput = "%s"\n' % (quoted_url(base, rel), os.path.join(dest, rel)))
    return run_timed([["curl", "-sS", "--fail", "--create-dirs", "-K", listing]], work)


def patcher(template, prepare, base, dest, work, connections, segment_mb):
    """The patcher, headless: `prepare` (not timed) puts a patcher pointed at {config_url} into {dest}, the
    timed `template` brings {dest} up to date."""
    fill = dict(config_url=base + "/config.xml", dest=shlex.quote(dest), connections=connections,
                segment_mb=segment_mb)
    if prepare and run_timed([prepare.format(**fill)], work) is None:
        return None
    return run_timed([template.format(**fill)], work)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--connections", type=int, default=4)
    parser.add_argument("--segment-mb", type=int, default=4)
    parser.add_argument("--rate", default="8m")
    parser.add_argument("--size-mb", type=int, default=200)
    parser.add_argument("--patcher", default=os.environ.get("NV_BENCH_PATCHER"))
    parser.add_argument("--patcher-start", default=os.environ.get("NV_BENCH_PATCHER_START"))
    parser.add_argument("--patcher-prepare", default=os.environ.get("NV_BENCH_PATCHER_PREPARE"))
    args = parser.parse_args()
    for tool in ("aria2c", "curl"):
        if not shutil.which(tool):
            print("bench_download: %s is missing (scripts/deps.sh installs it)" % tool, file=sys.stderr)
            return 1

    work = tempfile.mkdtemp(prefix="nv-bench-download-")
    failed = False
    try:
        root = os.path.join(work, "root")
        client = os.path.join(root, "client")
        files = make_set(client, args.size_mb)
        total = sum(s for s, _ in files.values())
        print("set: %d files, %.0f MB; %d connections, %d MiB segments, %s a connection when limited"
              % (len(files), total / 1e6, args.connections, args.segment_mb, args.rate))
        if not args.patcher:
            print("patcher: no command (--patcher or NV_BENCH_PATCHER): reference clients only")
        start_cost = None
        if args.patcher and args.patcher_start:
            costs = [run_timed([args.patcher_start], work) for _ in range(3)]
            if None not in costs:
                start_cost = min(costs)
                print("runner: a program that does nothing starts and ends in %.2f s (best of 3)" % start_cost)

        for phase, rate in (("limited", args.rate), ("unlimited", None)):
            nginx_work = os.path.join(work, "nginx-" + phase)
            os.makedirs(nginx_work)
            with Nginx(root, nginx_work, rate) as server:
                write_list_and_config(root, client, files, server.url)
                runs = [("aria2c", lambda d: aria2(server.url, files, d, work, args.connections, args.segment_mb))]
                if phase == "unlimited":
                    runs.append(("curl (1 stream)", lambda d: curl(server.url, files, d, work)))
                if args.patcher:
                    runs.append(("patcher", lambda d: patcher(args.patcher, args.patcher_prepare, server.url, d, work,
                                                              args.connections,
                                                              args.segment_mb)))
                times = {}
                for name, fetch in runs:
                    dest = os.path.join(work, "dest")
                    shutil.rmtree(dest, ignore_errors=True)
                    os.makedirs(dest)
                    seconds = fetch(dest)
                    wrong = verify(dest, files) if seconds is not None else "did not finish"
                    shutil.rmtree(dest, ignore_errors=True)
                    if wrong:
                        print("  %-9s %-16s FAILED: %s" % (phase, name, wrong))
                        failed = True
                        continue
                    times[name] = seconds
                    print("  %-9s %-16s %7.2f s  %7.1f MB/s" % (phase, name, seconds, total / seconds / 1e6))
                reference = "aria2c" if phase == "limited" else "curl (1 stream)"
                for name, seconds in times.items():
                    if name != reference and reference in times:
                        goal = "  (goal >= 0.9)" if name == "patcher" and phase == "limited" else ""
                        print("  %-9s %s speed / %s speed: %.2fx%s"
                              % (phase, name, reference, times[reference] / seconds, goal))
                        if name == "patcher" and start_cost is not None and seconds > start_cost:
                            # The same ratio without the runner's start and end: what the transfer itself does.
                            print("  %-9s %s speed / %s speed, the runner's start taken off: %.2fx"
                                  % (phase, name, reference, times[reference] / (seconds - start_cost)))
    finally:
        shutil.rmtree(work, ignore_errors=True)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
