#!/usr/bin/env python3
"""Writes the seed corpus of fuzz_render: small skin packages ("NVSK", version 1, entries, CRC-32) with every
control kind, transparent and opaque windows, and controls that reach out of the window. Run from the
repository root: python3 fuzz/make_render_seeds.py"""
import os
import struct
import zlib

OUT = "fuzz/corpus/fuzz_render"
ADDRESS = b'<urls remoteConfigPath="https://patch.example/cfg.xml"/>'


def png(width, height, rgba):
    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))
    rows = b"".join(b"\0" + bytes(rgba) * width for _ in range(height))
    header = struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b"")


def package(files):
    body = b"NVSK" + struct.pack("<II", 1, len(files))
    for name, data in files:
        body += struct.pack("<H", len(name)) + name.encode() + struct.pack("<I", len(data)) + data
    return body + struct.pack("<I", zlib.crc32(body))


def main():
    os.makedirs(OUT, exist_ok=True)
    every_kind = (b'<skin><control type="button" id="BTN_START" x="1" y="1" image="b.png" exec_path="a.exe"/>'
                  b'<control type="gauge" id="PROGRESS_MAIN" x="2" y="9" image_full="full" image_empty="empty.png"'
                  b' w="12"/><control type="gauge" id="PROGRESS_SUB" x="-3" y="11" image_full="full.png" h="2"/>'
                  b'<control type="text" id="TEXT_MAIN" x="0" y="3" width="20" text="Kaldra" color="#80FFFFFF"'
                  b' shadow="#000000" align="right"/><control type="iframe" id="NEWS" x="4" y="4" w="10" h="5"/>'
                  b'<control type="image" id="I" x="15" y="-2" image="b_on.png"/><control type="warp" id="W"/>'
                  b'</skin>')
    seeds = {
        "every_kind": [("fernwick.url.xml", ADDRESS), ("skin.xml", every_kind),
                       ("main.png", png(20, 14, (30, 60, 90, 255))), ("b_up.png", png(4, 3, (200, 100, 0, 255))),
                       ("b_on.png", png(4, 3, (250, 150, 0, 128))), ("b_dn.png", png(4, 3, (90, 40, 0, 255))),
                       ("full.png", png(16, 2, (0, 255, 0, 255))), ("empty.png", png(16, 2, (0, 60, 0, 100)))],
        "transparent_margin": [("fernwick.url.xml", ADDRESS),
                               ("skin.xml", b'<skin background_image="bg"><control type="image" id="I" x="1" y="1"'
                                            b' image="dot.png"/></skin>'),
                               ("bg.png", png(6, 5, (0, 0, 0, 0))), ("dot.png", png(2, 2, (255, 255, 255, 64)))],
        "far_away": [("fernwick.url.xml", ADDRESS),
                     ("skin.xml", b'<skin><control type="button" id="B" x="2147483647" y="-2147483647"'
                                  b' image="p.png"/><control type="gauge" id="G" x="-2147483647" image_full="p"'
                                  b' w="2147483647"/></skin>'),
                     ("main.png", png(3, 3, (1, 2, 3, 255))), ("p.png", png(5, 5, (9, 9, 9, 255)))],
    }
    for name, files in seeds.items():
        with open(os.path.join(OUT, name), "wb") as f:
            f.write(package(files))


if __name__ == "__main__":
    main()
