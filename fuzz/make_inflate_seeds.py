#!/usr/bin/env python3
"""Writes the seed corpus of fuzz_inflate: small raw Deflate streams of every block type, each behind the
3-byte little-endian size that the fuzz target expects. Deterministic; run from anywhere."""
import os
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))
OUT = os.path.join(HERE, "corpus", "fuzz_inflate")

TEXT = b'<skin><control type="button" name="start" link_url="https://example.org/"/>\n' * 6


def noise(n, x=2463534242):
    out = bytearray()
    for _ in range(n):
        x ^= (x << 13) & 0xFFFFFFFF
        x ^= x >> 17
        x ^= (x << 5) & 0xFFFFFFFF
        out.append(x >> 24)
    return bytes(out)


NOISE = noise(300)
WORDS = [b"skin", b"button", b"patcher", b"indir", b"baslat", b"ayarlar", b"haberler", b"\n"]
PROSE = b" ".join(WORDS[(i * 7919 >> 3) % len(WORDS)] for i in range(400))


def raw(data, level=6, strategy=zlib.Z_DEFAULT_STRATEGY, flush_every=0):
    c = zlib.compressobj(level, zlib.DEFLATED, -15, 9, strategy)
    if not flush_every:
        return c.compress(data) + c.flush()
    out = b""
    for i in range(0, len(data), flush_every):
        out += c.compress(data[i:i + flush_every]) + c.flush(zlib.Z_SYNC_FLUSH)
    return out + c.flush()


SEEDS = {
    "stored": (TEXT[:100], raw(TEXT[:100], level=0)),
    "stored_empty": (b"", raw(b"", level=0)),
    "fixed": (TEXT, raw(TEXT, strategy=zlib.Z_FIXED)),
    "fixed_run": (b"a" * 300, raw(b"a" * 300, strategy=zlib.Z_FIXED)),
    "dynamic_text": (PROSE, raw(PROSE, level=9)),
    "dynamic_huffman_only": (PROSE[:600], raw(PROSE[:600], strategy=zlib.Z_HUFFMAN_ONLY)),
    "stored_noise": (NOISE, raw(NOISE)),
    "dynamic_rle": (b"ab" * 50 + b"c" * 200, raw(b"ab" * 50 + b"c" * 200, strategy=zlib.Z_RLE)),
    "mixed_flushed": (TEXT + NOISE, raw(TEXT + NOISE, flush_every=97)),
}

os.makedirs(OUT, exist_ok=True)
for name, (data, stream) in SEEDS.items():
    assert zlib.decompressobj(-15).decompress(stream) == data
    first_block_type = (stream[0] >> 1) & 3
    assert first_block_type == {"stored": 0, "fixed": 1, "dynamic": 2, "mixed": 2}[name.split("_")[0]], name
    with open(os.path.join(OUT, name), "wb") as f:
        f.write(len(data).to_bytes(3, "little") + stream)
