#include "renderer/png_writer.h"

#include "core/crc32.h"
#include "readers/deflate_tables.h"

#include <array>
#include <cstdlib>
#include <vector>

namespace nv {
namespace {

// Deflate's bits go out least significant first; Huffman codes are defined most significant first.
class BitWriter {
public:
    explicit BitWriter(Bytes& out) : out_(out) {}

    void bits(uint32_t value, int count) {
        buffer_ |= uint64_t(value) << filled_;
        filled_ += count;
        while (filled_ >= 8) {
            out_.push_back(uint8_t(buffer_));
            buffer_ >>= 8;
            filled_ -= 8;
        }
    }
    void code(uint32_t code, int length) {
        uint32_t reversed = 0;
        for (int i = 0; i < length; ++i)
            reversed |= ((code >> i) & 1u) << (length - 1 - i);
        bits(reversed, length);
    }
    void flush() {
        if (filled_ > 0) out_.push_back(uint8_t(buffer_));
        buffer_ = 0;
        filled_ = 0;
    }

private:
    Bytes& out_;
    uint64_t buffer_ = 0;
    int filled_ = 0;
};

// The fixed literal/length code of RFC 1951, 3.2.6.
void literalOrLength(BitWriter& w, uint32_t symbol) {
    if (symbol < 144)
        w.code(0x30 + symbol, 8);
    else if (symbol < 256)
        w.code(0x190 + symbol - 144, 9);
    else if (symbol < 280)
        w.code(symbol - 256, 7);
    else
        w.code(0xC0 + symbol - 280, 8);
}

void match(BitWriter& w, uint32_t length, uint32_t distance) {
    int l = 28;
    while (deflate::kLengthBase[l] > length)
        --l;
    literalOrLength(w, 257 + uint32_t(l));
    w.bits(length - deflate::kLengthBase[l], deflate::kLengthExtra[l]);
    int d = 29;
    while (deflate::kDistanceBase[d] > distance)
        --d;
    w.code(uint32_t(d), 5);
    w.bits(distance - deflate::kDistanceBase[d], deflate::kDistanceExtra[d]);
}

constexpr uint32_t kWindow = 32768;
constexpr uint32_t kMinMatch = 3;
constexpr uint32_t kMaxMatch = 258;
constexpr int kHashBits = 15;
constexpr int kMaxChain = 48;

uint32_t hash3(const uint8_t* p) {
    return ((uint32_t(p[0]) << 16 | uint32_t(p[1]) << 8 | p[2]) * 2654435761u) >> (32 - kHashBits);
}

void deflateFixed(const uint8_t* data, size_t size, Bytes& out) {
    BitWriter w(out);
    w.bits(1, 1); // the last block
    w.bits(1, 2); // fixed Huffman codes
    // head: the latest position + 1 of each hash; previous: the position before it of the same hash (+ 1).
    std::vector<uint32_t> head(size_t(1) << kHashBits, 0);
    std::vector<uint32_t> previous(kWindow, 0);
    auto insert = [&](size_t pos) {
        const uint32_t h = hash3(data + pos);
        previous[pos % kWindow] = head[h];
        head[h] = uint32_t(pos + 1);
    };
    size_t pos = 0;
    while (pos < size) {
        uint32_t bestLength = 0, bestDistance = 0;
        if (size - pos >= kMinMatch) {
            const uint32_t limit = uint32_t(std::min<size_t>(kMaxMatch, size - pos));
            uint32_t candidate = head[hash3(data + pos)];
            for (int chain = 0; candidate != 0 && chain < kMaxChain; ++chain) {
                const size_t from = candidate - 1;
                if (pos - from > kWindow - 1) break;
                uint32_t length = 0;
                while (length < limit && data[from + length] == data[pos + length])
                    ++length;
                if (length > bestLength) {
                    bestLength = length;
                    bestDistance = uint32_t(pos - from);
                    if (length == limit) break;
                }
                const uint32_t next = previous[from % kWindow];
                if (next == 0 || next - 1 >= from)
                    break; // older entries only; a recycled slot ends the chain
                candidate = next;
            }
        }
        if (bestLength >= kMinMatch) {
            match(w, bestLength, bestDistance);
            const size_t end = pos + bestLength;
            for (; pos < end; ++pos)
                if (size - pos >= kMinMatch) insert(pos);
        } else {
            literalOrLength(w, data[pos]);
            if (size - pos >= kMinMatch) insert(pos);
            ++pos;
        }
    }
    literalOrLength(w, 256);
    w.flush();
}

void put32(Bytes& out, uint32_t v) {
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(uint8_t(v >> shift));
}

void chunk(Bytes& png, const char* type, const Bytes& data) {
    put32(png, uint32_t(data.size()));
    const size_t start = png.size();
    png.insert(png.end(), type, type + 4);
    png.insert(png.end(), data.begin(), data.end());
    put32(png, Crc32::of(png.data() + start, png.size() - start));
}

uint8_t unpremultiplied(uint32_t channel, uint32_t alpha) {
    if (alpha == 0) return 0;
    return uint8_t(std::min<uint32_t>(255, (channel * 255 + alpha / 2) / alpha));
}

uint8_t paeth(int a, int b, int c) {
    const int p = a + b - c;
    const int pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
    if (pa <= pb && pa <= pc) return uint8_t(a);
    return uint8_t(pb <= pc ? b : c);
}

// One row filtered with each of the five filters; the one whose bytes, read as signed, sum smallest is kept
// (the usual heuristic: small differences compress best).
void filterRow(const uint8_t* row, const uint8_t* above, size_t length, Bytes& out) {
    std::array<Bytes, 5> candidates;
    uint64_t bestCost = UINT64_MAX;
    int best = 0;
    for (int filter = 0; filter < 5; ++filter) {
        Bytes& f = candidates[size_t(filter)];
        f.resize(length);
        uint64_t cost = 0;
        for (size_t i = 0; i < length; ++i) {
            const int a = i >= 4 ? row[i - 4] : 0;
            const int b = above ? above[i] : 0;
            const int c = above && i >= 4 ? above[i - 4] : 0;
            int predicted = 0;
            switch (filter) {
            case 1:
                predicted = a;
                break;
            case 2:
                predicted = b;
                break;
            case 3:
                predicted = (a + b) / 2;
                break;
            case 4:
                predicted = paeth(a, b, c);
                break;
            default:
                break;
            }
            f[i] = uint8_t(row[i] - predicted);
            cost += uint64_t(std::abs(int(int8_t(f[i]))));
        }
        if (cost < bestCost) {
            bestCost = cost;
            best = filter;
        }
    }
    out.push_back(uint8_t(best));
    out.insert(out.end(), candidates[size_t(best)].begin(), candidates[size_t(best)].end());
}

} // namespace

Bytes zlibCompress(const uint8_t* data, size_t size) {
    Bytes out = {0x78, 0x9C};
    deflateFixed(data, size, out);
    uint32_t a = 1, b = 0;
    for (size_t i = 0; i < size; ++i) {
        a = (a + data[i]) % 65521;
        b = (b + a) % 65521;
    }
    put32(out, b << 16 | a);
    return out;
}

Bytes encodePng(const uint32_t* pixels, int width, int height) {
    Bytes png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    Bytes header;
    put32(header, uint32_t(width));
    put32(header, uint32_t(height));
    header.insert(header.end(), {8, 6, 0, 0, 0}); // 8 bits, RGBA, deflate, adaptive filters, no interlace
    chunk(png, "IHDR", header);

    const size_t rowLength = size_t(width) * 4;
    Bytes raw;
    raw.reserve((rowLength + 1) * size_t(height));
    Bytes row(rowLength), above(rowLength);
    for (int y = 0; y < height; ++y) {
        const uint32_t* src = pixels + size_t(y) * size_t(width);
        for (int x = 0; x < width; ++x) {
            const uint32_t p = src[x];
            const uint32_t alpha = p >> 24;
            uint8_t* px = row.data() + size_t(x) * 4;
            px[0] = unpremultiplied((p >> 16) & 0xFF, alpha);
            px[1] = unpremultiplied((p >> 8) & 0xFF, alpha);
            px[2] = unpremultiplied(p & 0xFF, alpha);
            px[3] = uint8_t(alpha);
        }
        filterRow(row.data(), y > 0 ? above.data() : nullptr, rowLength, raw);
        row.swap(above);
    }
    chunk(png, "IDAT", zlibCompress(raw.data(), raw.size()));
    chunk(png, "IEND", {});
    return png;
}

} // namespace nv
