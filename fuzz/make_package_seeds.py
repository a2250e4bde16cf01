#!/usr/bin/env python3
"""Writes the seed corpus of fuzz_skin_package: a small package, the largest count a package may hold, and one
file more than that (which the reader refuses, as `nvbuild pack` must). Run from the repository root:
python3 fuzz/make_package_seeds.py"""
import os
import struct
import zlib

OUT = "fuzz/corpus/fuzz_skin_package"


def package(entries, count=None):
    body = b"NVSK" + struct.pack("<II", 1, len(entries) if count is None else count)
    for name, data in entries:
        body += struct.pack("<H", len(name)) + name + struct.pack("<I", len(data)) + data
    return body + struct.pack("<I", zlib.crc32(body) & 0xFFFFFFFF)


def main():
    os.makedirs(OUT, exist_ok=True)
    many = [(b"f%d.txt" % i, b"") for i in range(4100)]
    seeds = {
        "small": package([(b"skin.xml", b'<skin background_image="main"/>'), (b"main.png", b"\x89PNG"),
                          (b"empty.txt", b"")]),
        "count_4096": package(many[:4096]),
        "count_4100": package(many),
    }
    for name, data in seeds.items():
        with open(os.path.join(OUT, name), "wb") as f:
            f.write(data)


if __name__ == "__main__":
    main()
