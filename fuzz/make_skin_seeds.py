#!/usr/bin/env python3
"""Writes the seed corpus of fuzz_skin: the sample skin's text files with small pictures, in the target's input
format ([name index][length u32 LE][data] per file). Run from the repository root: python3 fuzz/make_skin_seeds.py"""
import os
import struct
import zlib

NAMES = ["skin.xml", "fernwick.url.xml", "fernwick.locale.xml", "norvane.ini", "bg.png", "main.png",
         "btn_up.png", "btn_on.png", "gauge.png", "crest.bmp", "custom_url.xml", "en.locale.xml"]
SAMPLE = "examples/skins/gece-mavisi"
OUT = "fuzz/corpus/fuzz_skin"


def png(width, height, rgba, level=-1):
    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))
    rows = b"".join(b"\0" + bytes(rgba) * width for _ in range(height))
    header = struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows, level)) + chunk(b"IEND", b"")


def bmp(width, height):
    row = (width * 3 + 3) & ~3
    pixels = (b"\x10\x20\x30" * width + b"\0" * (row - width * 3)) * height
    header = struct.pack("<2sIHHIIiiHHIIiiII", b"BM", 54 + len(pixels), 0, 0, 54, 40, width, height, 1, 24, 0,
                         len(pixels), 0, 0, 0, 0)
    return header + pixels


def entry(name, data):
    return bytes([NAMES.index(name)]) + struct.pack("<I", len(data)) + data


def sample(name):
    with open(os.path.join(SAMPLE, name), "rb") as f:
        return f.read()


def main():
    os.makedirs(OUT, exist_ok=True)
    texts = (entry("skin.xml", sample("skin.xml").replace(b'background_image="bg"', b'background_image="main"')) +
             entry("fernwick.url.xml", sample("Fernwick.url.xml")) +
             entry("fernwick.locale.xml", sample("Fernwick.locale.xml")) +
             entry("norvane.ini", sample("norvane.ini")))
    seeds = {
        "sample_small_pictures": texts + entry("main.png", png(8, 6, (10, 20, 30, 200))) +
                                 entry("btn_up.png", png(3, 2, (200, 100, 0, 255))),
        "minimal": entry("fernwick.url.xml", b'<u remoteConfigPath="x"/>') +
                   entry("skin.xml", b'<skin><control type="button" id="B" image="btn.png" link_url="url_x"/>'
                                     b'<control type="gauge" id="FEED_G" image_full="gauge"/></skin>') +
                   entry("main.png", png(2, 2, (1, 2, 3, 255))) + entry("gauge.png", png(4, 1, (0, 255, 0, 255))) +
                   entry("fernwick.locale.xml", b"<torrent_locale>\r\n\t<string key=\"URL_X\">u</string>\r\n"
                                                b"</torrent_locale>\r\n"),
        "bmp_background": entry("custom_url.xml", b"<u/>") + entry("skin.xml", b'<s background_image="crest.bmp"/>') +
                          entry("crest.bmp", bmp(3, 2)),
        # Regressions. One 4096 x 4096 picture of about 65 KB as the background and in six buttons: decoded once
        # and shared, it stays far below the target's memory limit, copied per control and state it would not.
        "image_bomb": entry("fernwick.url.xml", b'<u remoteConfigPath="x"/>') +
                      entry("skin.xml", b'<skin background_image="bg">' +
                            b"".join(b'<control type="button" id="B%d" image="bg.png"/>' % i for i in range(6)) +
                            b"</skin>") +
                      entry("bg.png", png(4096, 4096, (0, 0, 0, 0), level=9)),
        # Feed controls whose ids are written in lower case: the feed address must still be edited.
        "feed_ids_lower_case": entry("fernwick.url.xml", b'<u remoteConfigPath="x"/>') +
                               entry("skin.xml", b'<skin feed_url="https://eski/"><control type="text" '
                                                 b'id="feed_status"/></skin>') +
                               entry("main.png", png(2, 2, (1, 2, 3, 255))),
    }
    for name, data in seeds.items():
        with open(os.path.join(OUT, name), "wb") as f:
            f.write(data)


if __name__ == "__main__":
    main()
