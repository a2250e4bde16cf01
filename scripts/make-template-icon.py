#!/usr/bin/env python3
"""Draws the patcher template's own icon (patcher/resources/norvane.ico): a night-blue rounded tile with an
amber arrow coming down onto a tray, the picture of a patcher fetching the game's files. Builds replace it with
the operator's icon; this one is what the bare template shows.

Pure Python (zlib and struct only), deterministic: running it again gives the same bytes. The 256 px image is
stored as PNG, the smaller ones as 32-bit bitmaps with an empty AND mask, which every Windows version reads.

    scripts/make-template-icon.py [OUT.ico]
"""
import os
import struct
import sys
import zlib

SIZES = [256, 64, 48, 32, 24, 16]
SAMPLES = 4  # per axis, per pixel


def mix(a, b, t):
    return tuple(x + (y - x) * t for x, y in zip(a, b))


def hexrgb(text):
    return tuple(int(text[i:i + 2], 16) / 255.0 for i in (0, 2, 4))


TILE_TOP, TILE_BOTTOM = hexrgb("28598a"), hexrgb("0b1828")
TILE_EDGE = hexrgb("7fb0dc")
ARROW_TOP, ARROW_BOTTOM = hexrgb("ffd27a"), hexrgb("ee8420")
TRAY = hexrgb("dce9f4")
GLOW = hexrgb("f0a040")


def rounded_box_distance(u, v, x0, y0, x1, y1, r):
    """Signed distance to a rounded rectangle (negative inside)."""
    cx, cy = (x0 + x1) / 2, (y0 + y1) / 2
    hx, hy = (x1 - x0) / 2 - r, (y1 - y0) / 2 - r
    dx, dy = abs(u - cx) - hx, abs(v - cy) - hy
    outside = (max(dx, 0) ** 2 + max(dy, 0) ** 2) ** 0.5
    return outside + min(max(dx, dy), 0) - r


def in_triangle(u, v, a, b, c):
    def side(p, q):
        return (q[0] - p[0]) * (v - p[1]) - (q[1] - p[1]) * (u - p[0])
    s1, s2, s3 = side(a, b), side(b, c), side(c, a)
    return (s1 >= 0 and s2 >= 0 and s3 >= 0) or (s1 <= 0 and s2 <= 0 and s3 <= 0)


def sample(u, v, size):
    """Straight RGBA (0..1) of the icon at the unit point (u, v)."""
    margin = 0.03 if size >= 48 else 0.0
    tile = rounded_box_distance(u, v, margin, margin, 1 - margin, 1 - margin, 0.2)
    if tile > 0:
        return (0.0, 0.0, 0.0, 0.0)
    colour = mix(TILE_TOP, TILE_BOTTOM, v)
    # A warm glow rising from the tray.
    glow = max(0.0, 1 - (((u - 0.5) / 0.45) ** 2 + ((v - 0.86) / 0.32) ** 2)) * 0.35
    colour = mix(colour, GLOW, glow)
    edge = 1.5 / size if size >= 32 else 1.0 / size
    if tile > -edge:
        colour = mix(colour, TILE_EDGE, 0.45)
    # Thicker strokes at small sizes keep the arrow readable.
    bold = 0.03 if size <= 24 else 0.0
    shaft = abs(u - 0.5) <= 0.085 + bold and 0.16 <= v <= 0.5
    head = in_triangle(u, v, (0.24 - bold, 0.46), (0.76 + bold, 0.46), (0.5, 0.72 + bold / 2))
    if shaft or head:
        colour = mix(ARROW_TOP, ARROW_BOTTOM, (v - 0.16) / 0.56)
    tray = rounded_box_distance(u, v, 0.22, 0.78 - bold, 0.78, 0.86 + bold / 2, 0.035)
    if tray <= 0:
        colour = TRAY
    return colour + (1.0,)


def render(size):
    """Rows of straight RGBA bytes, supersampled."""
    rows = []
    n = SAMPLES
    for y in range(size):
        row = bytearray()
        for x in range(size):
            acc = [0.0, 0.0, 0.0, 0.0]
            for sy in range(n):
                for sx in range(n):
                    r, g, b, a = sample((x + (sx + 0.5) / n) / size, (y + (sy + 0.5) / n) / size, size)
                    acc[0] += r * a
                    acc[1] += g * a
                    acc[2] += b * a
                    acc[3] += a
            a = acc[3] / (n * n)
            if a <= 0:
                row += bytes(4)
                continue
            row += bytes(min(255, round(c / acc[3] * 255)) for c in acc[:3])
            row.append(min(255, round(a * 255)))
        rows.append(bytes(row))
    return rows


def png(size, rows):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    raw = b"".join(b"\0" + row for row in rows)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))


def bitmap(size, rows):
    header = struct.pack("<IiiHHIIiiII", 40, size, size * 2, 1, 32, 0, 0, 0, 0, 0, 0)
    pixels = bytearray()
    for row in reversed(rows):  # bottom-up, BGRA
        for i in range(0, len(row), 4):
            r, g, b, a = row[i:i + 4]
            pixels += bytes((b, g, r, a))
    mask_row = ((size + 31) // 32) * 4
    return header + bytes(pixels) + bytes(mask_row * size)


def main():
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(
        os.path.dirname(os.path.abspath(__file__)), "..", "patcher", "resources", "norvane.ico")
    images = []
    for size in SIZES:
        rows = render(size)
        images.append((size, png(size, rows) if size >= 256 else bitmap(size, rows)))
    data = struct.pack("<HHH", 0, 1, len(images))
    offset = 6 + 16 * len(images)
    for size, blob in images:
        side = 0 if size >= 256 else size
        data += struct.pack("<BBBBHHII", side, side, 0, 0, 1, 32, len(blob), offset)
        offset += len(blob)
    data += b"".join(blob for _, blob in images)
    with open(out, "wb") as f:
        f.write(data)
    print("%s: %d bytes, sizes %s" % (os.path.normpath(out), len(data), ", ".join(map(str, SIZES))))


if __name__ == "__main__":
    main()
