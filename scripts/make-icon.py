#!/usr/bin/env python3
"""Draws the programs' own icons into .ico files with the sizes Windows asks for. Pure Python (zlib and struct
only) and deterministic: running it again gives the same bytes. The 256 px image is stored as PNG, the smaller
ones as 32-bit bitmaps with an empty AND mask, which every Windows version reads.

    scripts/make-icon.py template [OUT.ico]   the patcher template's icon (patcher/resources/norvane.ico): a
                                             night-blue rounded tile with an amber arrow coming down onto a tray,
                                             a patcher fetching the game's files; builds replace it with the
                                             operator's icon
    scripts/make-icon.py builder OUT.ico      the builder's icon, the product mark of its sidebar (the package
                                             line icon in white on a green rounded square), drawn at build time
"""
import math
import os
import struct
import sys
import zlib

# --- The template's icon: supersampled shapes ---------------------------------------------------------------

TEMPLATE_SIZES = [256, 64, 48, 32, 24, 16]
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


def sample_template(u, v, size):
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


def render_template(size):
    """Rows of straight RGBA bytes, supersampled."""
    rows = []
    n = SAMPLES
    for y in range(size):
        row = bytearray()
        for x in range(size):
            acc = [0.0, 0.0, 0.0, 0.0]
            for sy in range(n):
                for sx in range(n):
                    r, g, b, a = sample_template((x + (sx + 0.5) / n) / size, (y + (sy + 0.5) / n) / size, size)
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


# --- The builder's icon: coverage from exact distances to the shapes, anti-aliased at every size ------------

ACCENT = (0x0F, 0x62, 0x33)
WHITE = (0xFF, 0xFF, 0xFF)
BUILDER_SIZES = [16, 20, 24, 32, 40, 48, 64, 256]

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


def render_builder(size):
    """Rows of straight (not premultiplied) RGBA bytes, top row first."""
    centre = size / 2.0
    half = size * 0.47                      # a hair of margin round the square
    radius = half * 2 * 9 / 34              # the sidebar mark: 34 px with 9 px corners
    grid = half * 2 * 20 / 34 / 24          # the icon is 20 px of the 34 px mark
    stroke = max(1.8 * grid, 1.1) / 2       # never thinner than a pixel
    origin = centre - 12 * grid
    rows = []
    for y in range(size):
        row = bytearray()
        for x in range(size):
            cx, cy = x + 0.5, y + 0.5
            square = min(1.0, max(0.0, 0.5 - rounded_rect_distance(cx - centre, cy - centre, half, radius)))
            gx, gy = (cx - origin) / grid, (cy - origin) / grid
            d = min(segment_distance(gx, gy, a, b) for a, b in SEGMENTS) * grid - stroke
            line = min(1.0, max(0.0, 0.5 - d)) * square
            colour = [round(ACCENT[i] + (WHITE[i] - ACCENT[i]) * line) for i in range(3)]
            row += bytes((*colour, round(255 * square)))
        rows.append(bytes(row))
    return rows


# --- The .ico container --------------------------------------------------------------------------------------

def png(size, rows):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    raw = b"".join(b"\0" + row for row in rows)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))


def bitmap(size, rows):
    """32-bit BGRA bottom-up, height doubled for the AND mask that follows (all zero: alpha decides)."""
    header = struct.pack("<IiiHHIIiiII", 40, size, size * 2, 1, 32, 0, 0, 0, 0, 0, 0)
    pixels = bytearray()
    for row in reversed(rows):
        for i in range(0, len(row), 4):
            r, g, b, a = row[i:i + 4]
            pixels += bytes((b, g, r, a))
    mask_row = ((size + 31) // 32) * 4
    return header + bytes(pixels) + bytes(mask_row * size)


def write_icon(out, sizes, render):
    images = []
    for size in sizes:
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
    print("%s: %d bytes, sizes %s" % (os.path.normpath(out), len(data), ", ".join(map(str, sizes))))


def main():
    which = sys.argv[1] if len(sys.argv) > 1 else ""
    if which == "template":
        out = sys.argv[2] if len(sys.argv) > 2 else os.path.join(
            os.path.dirname(os.path.abspath(__file__)), "..", "patcher", "resources", "norvane.ico")
        write_icon(out, TEMPLATE_SIZES, render_template)
    elif which == "builder" and len(sys.argv) > 2:
        write_icon(sys.argv[2], BUILDER_SIZES, render_builder)
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main()
