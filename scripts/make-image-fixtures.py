#!/usr/bin/env python3
"""Writes the picture fixtures of the image decoder tests into tests/data/images/.

Run from anywhere:  python3 scripts/make-image-fixtures.py
Needs: Python 3 (zlib and struct only) and `cjpeg` from Debian's libjpeg-turbo-progs for the two JPEG files.
The output is deterministic; the generated files are committed, so the build never runs this script.

The pixel formulas below are repeated in tests/build/image_test.cpp and tests/build/win32/image_gdiplus_test.cpp,
which compare every decoded pixel against them: change both together.
"""

import os
import struct
import subprocess
import tempfile
import zlib

OUT = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', 'tests', 'data', 'images')


# ---- PNG ------------------------------------------------------------------------------------------------------

def chunk(kind, body):
    return struct.pack('>I', len(body)) + kind + body + struct.pack('>I', zlib.crc32(kind + body) & 0xFFFFFFFF)


def paeth(a, b, c):
    p = a + b - c
    pa, pb, pc = abs(p - a), abs(p - b), abs(p - c)
    if pa <= pb and pa <= pc:
        return a
    return b if pb <= pc else c


def filter_row(kind, row, prior, step):
    """Applies PNG filter `kind` to one row of bytes (prior: the previous row of the same pass, or zeros)."""
    out = bytearray()
    for i, value in enumerate(row):
        left = row[i - step] if i >= step else 0
        up = prior[i]
        up_left = prior[i - step] if i >= step else 0
        predictor = [0, left, up, (left + up) // 2, paeth(left, up, up_left)][kind]
        out.append((value - predictor) & 0xFF)
    return bytes([kind]) + bytes(out)


def png(width, height, depth, colour_type, pixel_bytes, step, extra=b'', interlaced=False, filters=(0, 1, 2, 3, 4)):
    """pixel_bytes(x, y) gives one pixel's bytes; rows are filtered with the given types in turn."""
    passes = [(0, 0, 8, 8), (4, 0, 8, 8), (0, 4, 4, 8), (2, 0, 4, 4), (0, 2, 2, 4), (1, 0, 2, 2), (0, 1, 1, 2)] \
        if interlaced else [(0, 0, 1, 1)]
    raw = bytearray()
    row_index = 0
    for x0, y0, dx, dy in passes:
        xs = range(x0, width, dx)
        if not xs:
            continue
        prior = None
        for y in range(y0, height, dy):
            row = b''.join(pixel_bytes(x, y) for x in xs)
            if prior is None:
                prior = bytes(len(row))
            raw += filter_row(filters[row_index % len(filters)], row, prior, step)
            prior = row
            row_index += 1
    header = struct.pack('>IIBBBBB', width, height, depth, colour_type, 0, 0, 1 if interlaced else 0)
    return (b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', header) + extra + chunk(b'IDAT', zlib.compress(bytes(raw), 9)) +
            chunk(b'IEND', b''))


def gradient_rgba(x, y):
    # Alpha runs through 0, 255 and values in between, so the premultiplication is exercised everywhere.
    alpha = 255 if (x + y) % 4 == 0 else (x * 37 + y * 11) % 256
    return bytes([x * 15, y * 21, (x * y * 7) % 256, alpha])


def adam7_rgb(x, y):
    return bytes([x * 19, y * 23, (x + y) * 9 % 256])


def paeth_rgb(x, y):
    # Red and blue change along both axes so that every Paeth prediction is a tie (red: up and up-left are
    # equally near, blue: left and up-left); green is irregular.
    return bytes([200 - 6 * x + 3 * y, (x * 29 + y * 7 + x * y * 3) % 256 & 0xF0, 100 + 4 * x - 8 * y])


def grey16_alpha(x, y):
    # 16-bit samples of the form v * 257, whose high byte is also the nearest 8-bit value.
    grey = (x * 40 + y * 3) % 256
    alpha = [0, 64, 255, 128][(x + y) % 4]
    return struct.pack('>HH', grey * 257, alpha * 257)


# ---- BMP inside ICO ---------------------------------------------------------------------------------------------

def icon_image(size, bgra_rows, and_rows):
    """An icon directory image in the classic DIB form: header with doubled height, colours bottom-up, AND mask."""
    bit_count = 32 if len(bgra_rows[0]) == size * 4 else 24
    colour_stride = (size * bit_count // 8 + 3) & ~3
    mask_stride = (size + 31) // 32 * 4
    header = struct.pack('<IiiHHIIiiII', 40, size, size * 2, 1, bit_count, 0, 0, 0, 0, 0, 0)
    colours = b''.join(row + bytes(colour_stride - len(row)) for row in reversed(bgra_rows))
    masks = b''.join(row + bytes(mask_stride - len(row)) for row in reversed(and_rows))
    return header + colours + masks, bit_count


def ico(images):
    out = struct.pack('<HHH', 0, 1, len(images))
    offset = 6 + 16 * len(images)
    for size, data, bit_count in images:
        out += struct.pack('<BBBBHHII', size % 256, size % 256, 0, 0, 1, bit_count, len(data), offset)
        offset += len(data)
    return out + b''.join(data for _, data, _ in images)


def icon_rgba(x, y):
    # Transparent corners, a half-transparent band, an opaque rest: (b, g, r, a), straight alpha.
    if (x < 2 and y < 2) or (x > 13 and y > 13):
        return (0, 0, 0, 0)
    if y == 7:
        return (0, 0, 255, 128)
    return (x * 16, y * 16, 200, 255)


def icon_rgb(x, y):
    return (x * 16, 100, y * 16)


# ---- GIF --------------------------------------------------------------------------------------------------------

def gif(width, height, palette, indexes, transparent=None):
    """A GIF89a with one global palette of 4 colours. The LZW stream sends only literal codes and a clear code
    before the table would widen the codes, which every decoder reads the same way."""
    min_code = 2
    clear, end = 1 << min_code, (1 << min_code) + 1
    width_bits = min_code + 1
    codes = [clear]
    run = 0
    for index in indexes:
        if run == (1 << min_code) - 3:
            codes.append(clear)
            run = 0
        codes.append(index)
        run += 1
    codes.append(end)
    bits, count, data = 0, 0, bytearray()
    for code in codes:
        bits |= code << count
        count += width_bits
        while count >= 8:
            data.append(bits & 0xFF)
            bits >>= 8
            count -= 8
    if count:
        data.append(bits & 0xFF)
    blocks = b''.join(bytes([len(data[i:i + 255])]) + bytes(data[i:i + 255]) for i in range(0, len(data), 255))

    out = b'GIF89a' + struct.pack('<HHBBB', width, height, 0x80 | 0x01, 0, 0)  # global table of 4 entries
    out += b''.join(bytes(c) for c in palette)
    if transparent is not None:
        out += b'\x21\xF9\x04' + bytes([0x01]) + struct.pack('<H', 0) + bytes([transparent, 0])
    out += b'\x2C' + struct.pack('<HHHHB', 0, 0, width, height, 0)
    out += bytes([min_code]) + blocks + b'\x00' + b'\x3B'
    return out


GIF_PALETTE = [(255, 0, 0), (0, 255, 0), (0, 0, 255), (255, 255, 255)]


def gif_index(x, y):
    return (x + 2 * y) % 4


# ---- JPEG -------------------------------------------------------------------------------------------------------

def jpeg(width, height, pixel):
    ppm = b'P6\n%d %d\n255\n' % (width, height) + b''.join(bytes(pixel(x, y)) for y in range(height)
                                                          for x in range(width))
    with tempfile.NamedTemporaryFile(suffix='.ppm') as source:
        source.write(ppm)
        source.flush()
        return subprocess.run(['cjpeg', '-quality', '95', '-sample', '1x1', source.name], check=True,
                              stdout=subprocess.PIPE).stdout


def quadrants(x, y):
    # Four flat 8 x 8 blocks (aligned to the JPEG blocks, so the colours come back nearly unchanged).
    return [(200, 30, 30), (30, 200, 30), (30, 30, 200), (240, 240, 240)][(x // 8) + 2 * (y // 8)]


def main():
    os.makedirs(OUT, exist_ok=True)
    files = {
        'gradient_rgba.png': png(16, 12, 8, 6, gradient_rgba, 4),
        'adam7_rgb.png': png(13, 11, 8, 2, adam7_rgb, 3, interlaced=True),
        'grey16_alpha.png': png(10, 3, 16, 4, grey16_alpha, 4),
        'paeth_rgb.png': png(20, 10, 8, 2, paeth_rgb, 3, filters=(4,)),
        'icon_rgba.ico': ico([(16,) + icon_image(16, [b''.join(bytes(icon_rgba(x, y)) for x in range(16))
                                                      for y in range(16)], [b''] * 16)]),
        'icon_rgb.ico': ico([(16,) + icon_image(16, [b''.join(bytes(icon_rgb(x, y)) for x in range(16))
                                                     for y in range(16)], [b''] * 16)]),
        'transparent.gif': gif(5, 3, GIF_PALETTE, [gif_index(x, y) for y in range(3) for x in range(5)], 3),
        'opaque.gif': gif(5, 3, GIF_PALETTE, [gif_index(x, y) for y in range(3) for x in range(5)]),
        'quadrants.jpg': jpeg(16, 16, quadrants),
        'wide_9000.jpg': jpeg(9000, 8, lambda x, y: (90, 90, 90)),
    }
    for name, data in sorted(files.items()):
        with open(os.path.join(OUT, name), 'wb') as f:
            f.write(data)
        print('%-20s %6d bytes' % (name, len(data)))


if __name__ == '__main__':
    main()
