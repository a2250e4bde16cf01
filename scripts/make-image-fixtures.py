#!/usr/bin/env python3
"""Writes the picture fixtures of the image decoder tests into tests/data/images/.

Run from anywhere:  python3 scripts/make-image-fixtures.py
Needs: Python 3 (zlib and struct only) and `cjpeg` from Debian's libjpeg-turbo-progs for the two JPEG files.
The output is deterministic; the generated files are committed, so the build never runs this script.

The pixel formulas and the pixels of the small files are repeated in tests/readers/image_test.cpp and
tests/readers/win32/image_gdiplus_test.cpp, which compare every decoded pixel against them: change both together.
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


def png_file(width, height, depth, colour_type, stream, extra=b'', interlace=0, idat_parts=1):
    """A PNG around the zlib stream, cut into idat_parts IDAT chunks; extra: chunks between IHDR and the data."""
    header = struct.pack('>IIBBBBB', width, height, depth, colour_type, 0, 0, interlace)
    cuts = [len(stream) * i // idat_parts for i in range(idat_parts + 1)]
    idat = b''.join(chunk(b'IDAT', stream[a:b]) for a, b in zip(cuts, cuts[1:]))
    return b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', header) + extra + idat + chunk(b'IEND', b'')


def raw_png(width, height, depth, colour_type, scanlines, extra=b'', interlace=0, idat_parts=1):
    """scanlines: the rows (of each interlace pass in turn), each after its filter byte."""
    return png_file(width, height, depth, colour_type, zlib.compress(bytes(scanlines), 9), extra, interlace,
                    idat_parts)


def png(width, height, depth, colour_type, pixel_bytes, step, interlaced=False, filters=(0, 1, 2, 3, 4)):
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
    return raw_png(width, height, depth, colour_type, raw, interlace=1 if interlaced else 0)


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


# ---- BMP --------------------------------------------------------------------------------------------------------

def bmp(width, height, bit_count, rows, compression=0, masks=(), header_size=40):
    """An uncompressed BMP: the masks follow a 40-byte header or sit inside a longer one (zero-filled past them);
    the rows are written exactly as given, padding included."""
    info = struct.pack('<IiiHHIIiiII', header_size, width, height, 1, bit_count, compression, len(rows), 2835, 2835,
                       0, 0) + b''.join(struct.pack('<I', mask) for mask in masks)
    info = info.ljust(header_size, b'\0')
    offset = 14 + len(info)
    return b'BM' + struct.pack('<IHHI', offset + len(rows), 0, 0, offset) + info + bytes(rows)


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


# ---- Formats that GDI+ would read but the decoders must refuse ------------------------------------------------

def tiff_grey(width, height):
    """An uncompressed 8-bit grey TIFF, one strip, little-endian."""
    tags = [(256, 3, width), (257, 3, height), (258, 3, 8), (259, 3, 1), (262, 3, 1), (273, 4, 0),
            (277, 3, 1), (278, 3, height), (279, 4, width * height)]
    data_offset = 8 + 2 + 12 * len(tags) + 4
    ifd = struct.pack('<H', len(tags))
    for tag, kind, value in tags:
        value = data_offset if tag == 273 else value
        ifd += struct.pack('<HHI', tag, kind, 1) + (struct.pack('<HH', value, 0) if kind == 3 else
                                                   struct.pack('<I', value))
    return b'II*\0' + struct.pack('<I', 8) + ifd + struct.pack('<I', 0) + bytes(range(width * height))


def emf():
    """An enhanced metafile with its header and end record only."""
    header = struct.pack('<II4i4iIIIIHHIIIiiii', 1, 88, 0, 0, 15, 15, 0, 0, 400, 400, 0x464D4520, 0x10000,
                         88 + 20, 2, 1, 0, 0, 0, 0, 1024, 768, 320, 240)
    return header + struct.pack('<IIIII', 14, 20, 0, 16, 20)


def wmf():
    """A placeable Windows metafile: the placeable header, the metafile header, the end record."""
    words = struct.unpack('<10H', struct.pack('<IHhhhhHI', 0x9AC6CDD7, 0, 0, 0, 100, 100, 1440, 0))
    checksum = 0
    for word in words:
        checksum ^= word
    placeable = struct.pack('<IHhhhhHIH', 0x9AC6CDD7, 0, 0, 0, 100, 100, 1440, 0, checksum)
    return placeable + struct.pack('<HHHIHIH', 1, 9, 0x300, 12, 0, 3, 0) + struct.pack('<IH', 3, 0)


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


def with_byte(data, index, value):
    return data[:index] + bytes([value]) + data[index + 1:]


FOUR_COLOURS = chunk(b'PLTE', bytes([255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255]))
TWO_COLOURS = chunk(b'PLTE', bytes([255, 0, 0, 0, 255, 0]))
ROWS24 = [1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 0, 0, 11, 12, 13, 14, 15, 16, 17, 18, 19, 0, 0, 0]  # 3 x 2, padded rows
ROWS32 = [0, 0, 255, 128, 0, 255, 0, 0]  # a fourth byte of 128 and 0, which GDI+ does not take as alpha


def main():
    os.makedirs(OUT, exist_ok=True)
    stream = zlib.compress(bytes([0, 1, 2]), 9)  # a 2 x 1 grey picture: the filter byte and two pixels
    idat_crc = png_file(2, 1, 8, 0, stream)
    two_idat = png_file(2, 1, 8, 0, stream, idat_parts=2)
    cut = 33 + 12 + len(stream) // 2  # the end of the first IDAT chunk
    files = {
        # Formulas, real compression, every filter type.
        'gradient_rgba.png': png(16, 12, 8, 6, gradient_rgba, 4),
        'adam7_rgb.png': png(13, 11, 8, 2, adam7_rgb, 3, interlaced=True),
        'paeth_rgb.png': png(20, 10, 8, 2, paeth_rgb, 3, filters=(4,)),
        # One small picture of each pixel kind and layout; the expected pixels are in tests/readers/image_test.cpp.
        'grey4_key.png': raw_png(3, 1, 4, 0, [0, 0x7F, 0x30], chunk(b'tRNS', bytes([0, 3]))),
        'grey16_key.png': raw_png(2, 1, 16, 0, [0, 0x12, 0x34, 0x12, 0x35], chunk(b'tRNS', bytes([0x12, 0x34]))),
        'rgb8_key.png': raw_png(2, 1, 8, 2, [0, 10, 20, 30, 10, 20, 31],
                                chunk(b'tRNS', bytes([0, 10, 0, 20, 0, 30]))),
        'rgb16.png': raw_png(1, 1, 16, 2, [0, 0xAB, 0xCD, 0x01, 0xFF, 0xFF, 0x00]),
        'palette2_short_trns.png': raw_png(4, 1, 2, 3, [0, 0b00011011],
                                           FOUR_COLOURS + chunk(b'tRNS', bytes([0, 128]))),
        'grey_alpha8.png': raw_png(2, 1, 8, 4, [0, 200, 128, 50, 255]),
        'rgba16.png': raw_png(1, 1, 16, 6, [0, 0xFF, 0xFF, 0x00, 0x00, 0x80, 0x80, 0xFF, 0xFF]),
        'rgba8_rounding.png': raw_png(6, 1, 8, 6, [0, 127, 0, 127, 1, 128, 0, 128, 1, 1, 0, 1, 128, 1, 0, 1, 127,
                                                   200, 0, 200, 192, 255, 0, 255, 0]),
        'interlaced_1x1.png': raw_png(1, 1, 8, 0, [0, 77], interlace=1),
        'text_three_idat.png': raw_png(2, 2, 8, 0, [0, 1, 2, 0, 3, 4], chunk(b'tEXt', b'C\0x'), idat_parts=3),
        'bottom_up_24.bmp': bmp(3, 2, 24, ROWS24),
        'top_down_v4_24.bmp': bmp(3, -2, 24, ROWS24, header_size=108),
        'rgb32.bmp': bmp(2, 1, 32, ROWS32),
        'bitfields_red_low.bmp': bmp(2, 1, 32, ROWS32, 3, (0xFF, 0xFF00, 0xFF0000)),
        'v5_alpha_mask.bmp': bmp(2, 1, 32, ROWS32, 3, (0xFF0000, 0xFF00, 0xFF, 0xFF000000), 124),
        # Refused by both decoders.
        'bad_adler.png': png_file(2, 1, 8, 0, stream[:-1] + bytes([stream[-1] ^ 1])),
        'bad_filter.png': raw_png(2, 1, 8, 0, [5, 1, 2]),
        'palette_without_plte.png': raw_png(2, 1, 8, 3, [0, 0, 0]),
        'too_little_data.png': raw_png(2, 2, 8, 0, [0, 1, 2]),
        # Refused by the native decoder only: GDI+ tolerates them or reads more kinds of BMP.
        'bad_idat_crc.png': with_byte(idat_crc, len(idat_crc) - 13, idat_crc[-13] ^ 1),  # IEND takes 12 bytes
        'palette_index_past_end.png': raw_png(2, 1, 8, 3, [0, 0, 2], TWO_COLOURS),
        'palette_depth16.png': raw_png(1, 1, 16, 3, [0, 0, 0], TWO_COLOURS),
        'unknown_critical_chunk.png': raw_png(1, 1, 8, 0, [0, 0], chunk(b'ABCD', b'')),
        'more_data_than_needed.png': raw_png(1, 1, 8, 0, [0, 0, 0]),
        # Good Deflate data, but the header's flag asks for a preset dictionary, which PNG does not allow.
        'preset_dictionary.png': png_file(1, 1, 8, 0, b'\x78\x20' + zlib.compress(bytes(2))[2:]),
        # The data in two IDAT chunks with a text chunk between them, which PNG does not allow.
        'idat_after_text.png': two_idat[:cut] + chunk(b'tEXt', b'a\0b') + two_idat[cut:],
        'huge_header.png': raw_png(8192, 8192, 16, 6, bytes(16)),  # 512 MiB promised by a few bytes
        'bits16.bmp': bmp(2, 1, 16, [0x1F, 0, 0xE0, 0x03]),
        'rle.bmp': bmp(2, 1, 24, [2, 0, 0, 1], compression=1),
        'offset_past_end.bmp': with_byte(bmp(1, 1, 24, [0, 0, 0, 0]), 10, 200),
        # Zeros compress at close to Deflate's limit of 1032:1, which the native decoder must still allow.
        'zeros_8192x64.png': raw_png(8192, 64, 16, 6, bytes(64 * (1 + 8192 * 8))),
        # Formats GDI+ would read if it were given them; only the named ones ever reach it.
        'tiff_named.png': tiff_grey(2, 2),
        'metafile.emf': emf(),
        'placeable.wmf': wmf(),
        'cursor.cur': b'\0\0\2\0' + ico([(16,) + icon_image(16, [bytes(64)] * 16, [b''] * 16)])[4:],
        # Formats only GDI+ reads.
        'icon_rgba.ico': ico([(16,) + icon_image(16, [b''.join(bytes(icon_rgba(x, y)) for x in range(16))
                                                      for y in range(16)], [b''] * 16)]),
        'transparent.gif': gif(5, 3, GIF_PALETTE, [gif_index(x, y) for y in range(3) for x in range(5)], 3),
        'quadrants.jpg': jpeg(16, 16, quadrants),
        'wide_9000.jpg': jpeg(9000, 8, lambda x, y: (90, 90, 90)),
    }
    for name, data in sorted(files.items()):
        with open(os.path.join(OUT, name), 'wb') as f:
            f.write(data)
        print('%-28s %6d bytes' % (name, len(data)))


if __name__ == '__main__':
    main()
