#!/usr/bin/python3
"""An independent reading of the chunk index format, as the operators' page describes it: the cut rule, the
index bytes, the index names and the list's #nvindex lines, with python3-xxhash's XXH3-128 as the referee
for every hash.

    nvindex_referee.py CLIENT_DIR    prints the list crclist should write for the folder's listed files
                                     (read from CLIENT_DIR/crclist.txt) and checks every index file, byte
                                     for byte; exit 1 on any difference (named on stderr).
"""
import os
import struct
import sys
import zlib

import xxhash

MIN, AVG, MAX = 16 << 10, 64 << 10, 256 << 10
THRESHOLD = 1 << 20
M64 = (1 << 64) - 1


def gear_table():
    x, table = 0x4E4F5256414E4544, []
    for _ in range(256):
        x = (x + 0x9E3779B97F4A7C15) & M64
        z = x
        z = ((z ^ (z >> 30)) * 0xBF58476D1CE4E5B9) & M64
        z = ((z ^ (z >> 27)) * 0x94D049BB133111EB) & M64
        table.append(z ^ (z >> 31))
    return table


GEAR = gear_table()
BITS = AVG.bit_length() - 1
HARD = (M64 << (64 - (BITS + 2))) & M64
EASY = (M64 << (64 - (BITS - 2))) & M64


def cut(data):
    lengths, start, n = [], 0, len(data)
    while start < n:
        pos, h = start + max(MIN - 64, 0), 0
        end = None
        while pos < n:
            h = ((h << 1) + GEAR[data[pos]]) & M64
            pos += 1
            length = pos - start
            if length < MIN:
                continue
            if h & (HARD if length < AVG else EASY) == 0 or length >= MAX:
                end = pos
                break
        end = end or n
        lengths.append(end - start)
        start = end
    return lengths


def index_bytes(data):
    lengths = cut(data)
    out = b"NVCHIDX1" + struct.pack("<IIIQII", MIN, AVG, MAX, len(data), zlib.crc32(data), len(lengths))
    at = 0
    for length in lengths:
        out += struct.pack("<I", length) + xxhash.xxh3_128_digest(data[at:at + length])
        at += length
    return out + xxhash.xxh3_128_digest(out)


def index_name(path):
    return ".nvindex/" + xxhash.xxh3_128_hexdigest(path.encode()) + ".nvx"


def main(root):
    rows, refs, ok = [], [], True
    listed = open(os.path.join(root, "crclist.txt"), "rb").read().decode().splitlines()
    paths = sorted(line.split("\t")[0] for line in listed if line and not line.startswith("#"))
    for path in paths:
        data = open(os.path.join(root, path), "rb").read()
        rows.append("%s\t%d\t%08X\n" % (path, len(data), zlib.crc32(data)))
        if len(data) < THRESHOLD:
            continue
        want = index_bytes(data)
        name = os.path.join(root, index_name(path))
        got = open(name, "rb").read() if os.path.exists(name) else b""
        if got != want:
            print("index of %s: %d bytes at %s, the referee's %d differ" % (path, len(got), name, len(want)),
                  file=sys.stderr)
            ok = False
        refs.append("#nvindex\t%s\t%d\t%s\n" % (path, len(want), xxhash.xxh3_128_hexdigest(want)))
    sys.stdout.write("".join(refs + rows))
    return 0 if ok else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
