#!/usr/bin/env python3
"""Draws the builder's own icon, the product mark of its sidebar (the package line icon in white on a green
rounded square), into an .ico file with the sizes Windows asks for. Standard library only: coverage comes from
exact distances to the shapes, so the edges are anti-aliased at every size without a drawing library.

    make_app_icon.py OUTPUT.ico
"""
import math
import struct
import sys
import zlib

ACCENT = (0x0F, 0x62, 0x33)
WHITE = (0xFF, 0xFF, 0xFF)
SIZES = [16, 20, 24, 32, 40, 48, 64, 256]

# The package icon's path on its 24 x 24 grid, as line segments (it has no curves).
_P = [(12, 3), (20.5, 7.5), (20.5, 16.5), (12, 21), (3.5, 16.5), (3.5, 7.5), (12, 3)]
SEGMENTS = [(_P[i], _P[i + 1]) for i in range(len(_P) - 1)] + [
    ((3.5, 7.5), (12, 12)), ((12, 12), (20.5, 7.5)), ((12, 12), (12, 21))]


def segment_distance(px, py, a, b):
    ax, ay = a
    bx, by = b
    dx, dy = bx - ax, by - ay
    t = ((px - ax) * dx + (py - ay) * dy) / (dx * dx + dy * dy)
    t = max(0.0, min(1.0, t))
    return math.hypot(px - ax - t * dx, py - ay - t * dy)


def rounded_rect_distance(px, py, half, radius):
    # Signed distance to a square of half-side `half` centred at the origin with rounded corners.
    qx = abs(px) - half + radius
    qy = abs(py) - half + radius
    outside = math.hypot(max(qx, 0.0), max(qy, 0.0))
    return outside + min(max(qx, qy), 0.0) - radius


def render(size):
    """Straight (not premultiplied) RGBA rows, top row first."""
    centre = size / 2.0
    half = size * 0.47                      # a hair of margin round the square
    radius = half * 2 * 9 / 34              # the sidebar mark: 34 px with 9 px corners
    grid = half * 2 * 20 / 34 / 24          # the icon is 20 px of the 34 px mark
    stroke = max(1.8 * grid, 1.1) / 2       # never thinner than a pixel
    origin = centre - 12 * grid
    rows = []
    for y in range(size):
        row = []
        for x in range(size):
            cx, cy = x + 0.5, y + 0.5
            square = min(1.0, max(0.0, 0.5 - rounded_rect_distance(cx - centre, cy - centre, half, radius)))
            gx, gy = (cx - origin) / grid, (cy - origin) / grid
            d = min(segment_distance(gx, gy, a, b) for a, b in SEGMENTS) * grid - stroke
            line = min(1.0, max(0.0, 0.5 - d)) * square
            colour = [round(ACCENT[i] + (WHITE[i] - ACCENT[i]) * line) for i in range(3)]
            row.append((*colour, round(255 * square)))
        rows.append(row)
    return rows


def png(size, rows):
    raw = b"".join(b"\0" + bytes(v for px in row for v in px) for row in rows)

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    header = struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b"")


def dib(size, rows):
    # 32-bit BGRA bottom-up, height doubled for the AND mask that follows (all zero: alpha decides).
    info = struct.pack("<IiiHHIIiiII", 40, size, size * 2, 1, 32, 0, 0, 0, 0, 0, 0)
    pixels = b"".join(bytes((b, g, r, a)) for row in reversed(rows) for (r, g, b, a) in row)
    mask_row = ((size + 31) // 32) * 4
    return info + pixels + b"\0" * (mask_row * size)


def main():
    images = []
    for size in SIZES:
        rows = render(size)
        images.append((size, png(size, rows) if size >= 256 else dib(size, rows)))
    out = struct.pack("<HHH", 0, 1, len(images))
    offset = 6 + 16 * len(images)
    for size, data in images:
        side = 0 if size >= 256 else size
        out += struct.pack("<BBBBHHII", side, side, 0, 0, 1, 32, len(data), offset)
        offset += len(data)
    out += b"".join(data for _, data in images)
    with open(sys.argv[1], "wb") as f:
        f.write(out)


if __name__ == "__main__":
    main()
