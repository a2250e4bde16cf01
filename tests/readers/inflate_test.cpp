#include "core/text.h"
#include "readers/inflate.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <map>

namespace nv {

// The decoder's output for the first `size` bytes of stream, or its message; a refused stream leaves no
// output, and nothing that was in the buffer before survives either way. Also used by the zlib comparison.
std::string inflated(const Bytes& stream, size_t size, size_t expectedSize) {
    Bytes out = test::bytesOf("left over");
    std::wstring error;
    bool ok = inflateRaw(stream.data(), size, expectedSize, out, &error);
    EXPECT_TRUE(ok || out.empty());
    return ok ? test::textOf(out) : wideToUtf8(error);
}

namespace {

using Code = std::map<int, unsigned>; // symbol -> code length (0 or absent: no code)

const Code kCl = {{0, 2}, {1, 3}, {2, 3}, {3, 3}, {16, 3}, {17, 3}, {18, 3}}; // lengths 0-3, repeats
const Code kAbc = {{'a', 2}, {'b', 2}, {'c', 3}, {256, 3}, {257, 2}};         // complete; 257 is length 3

// Writes Deflate streams by hand. Header fields and extra bits go least significant bit first, Huffman codes
// (canonical, from their lengths) most significant bit first (RFC 1951 3.1.1, 3.2.2).
struct Stream {
    Bytes out;
    size_t used = 0;
    Code lit, dst; // the literal/length and distance codes in use

    Stream& bits(uint64_t value, int n) {
        for (int i = 0; i < n; ++i, ++used)
            out.resize(used / 8 + 1), out.back() |= uint8_t((value >> i & 1) << used % 8);
        return *this;
    }
    Stream& code(const Code& c, int symbol, uint32_t extra = 0, int extraBits = 0) {
        uint32_t v = 0, len = c.at(symbol);
        for (auto [s, l] : c)
            v += l == 0 ? 0 : l < len ? 1u << (len - l) : l == len && s < symbol;
        for (int i = len; i-- > 0;)
            bits(v >> i, 1);
        return bits(extra, extraBits);
    }
    // A stored block starting on a byte boundary; NLEN is LEN's complement with the bits of `damage` flipped.
    Stream& stored(std::string_view data, bool last = true, int padding = 0, uint16_t damage = 0) {
        bits(last, 3).bits(padding, 5).bits(data.size(), 16).bits(~data.size() ^ damage, 16);
        out.insert(out.end(), data.begin(), data.end()), used += 8 * data.size();
        return *this;
    }
    Stream& fixed() {
        for (int s = 0; s < 288; ++s)
            lit[s] = s < 144 || s >= 280 ? 8 : s < 256 ? 9 : 7, dst[s % 32] = 5;
        return bits(3, 3);
    }
    // A final dynamic block's header with the lengths of the code-length code; the code lengths follow.
    Stream& header(int nlen, int ndist, Code cl) {
        bits(5, 3).bits(nlen - 257, 5).bits(ndist - 1, 5).bits(19 - 4, 4);
        for (int s : {16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1, 15})
            bits(cl[s], 3);
        return *this;
    }
    Stream& dynamic(int nlen, const Code& litLen, int ndist, const Code& dist) {
        header(nlen, ndist, kCl), lit = litLen, dst = dist;
        for (int i = 0; i < nlen + ndist; ++i)
            code(kCl, i < nlen ? lit[i] : dst[i - nlen]);
        return *this;
    }
    Stream& sym(std::initializer_list<int> symbols, int distance = -1) {
        for (int s : symbols)
            code(lit, s);
        return distance < 0 ? *this : code(dst, distance);
    }
};

// 256 zeros and a one sent with repeats: three lengths are left of a block with 258 + 2 codes.
const Stream kZeros = Stream().header(258, 2, kCl).code(kCl, 18, 127, 7).code(kCl, 18, 107, 7).code(kCl, 1);

// The stream, the expected size, and the output or the message when the stream is refused.
const std::tuple<Bytes, size_t, const char*> kCases[] = {
    // Stored: set padding bits and input after the final block are ignored; LEN and NLEN cut short.
    {Stream().stored("hi", false, 31).stored("!").bits(0xFFFF, 16).out, 3, "hi!"},
    {Stream().stored("hello").out, 6, "Deflate cikti boyutu uyusmuyor."},
    {Stream().stored("hello").out, 4, "Deflate ciktisi beklenen boyutu asti."},
    {Stream().stored("hello", true, 0, 4).out, 5, "Deflate saklanan blok bozuk."},
    {Stream().bits(1, 24).out, 0, "Deflate verisi erken bitti."},
    {Bytes(), 0, "Deflate verisi erken bitti."},
    {Stream().bits(7, 3).out, 0, "Gecersiz deflate blok turu."},
    // A copy from as far back as the output reaches, and from before its start.
    {Stream().fixed().sym({'a', 264}, 0).sym({256}).out, 11, "aaaaaaaaaaa"},
    {Stream().fixed().sym({257}, 0).out, 3, "Deflate mesafesi cok uzak."},
    {Stream().fixed().sym({'a', 286}).bits(0, 16).out, 1, "Deflate uzunluk kodu gecersiz."},
    {Stream().fixed().sym({'a', 257}, 30).bits(0, 16).out, 4, "Deflate mesafe kodu gecersiz."},
    // A single one-bit code is the only incomplete code accepted.
    {Stream().dynamic(258, kAbc, 2, {{1, 1}}).sym({'a', 'b', 'c', 257}, 1).sym({256}).out, 6, "abcbcb"},
    {Stream().dynamic(258, kAbc, 2, {{0, 2}, {1, 2}}).out, 0, "Deflate mesafe kodlari bozuk."},
    {Stream().dynamic(258, kAbc, 1, {{0, 2}}).out, 0, "Deflate mesafe kodlari bozuk."},
    {Stream().dynamic(258, kAbc, 3, {{0, 1}, {1, 1}, {2, 1}}).out, 0, "Deflate mesafe kodlari bozuk."},
    {Stream().dynamic(257, {{'a', 2}, {256, 2}}, 1, {}).out, 0, "Deflate uzunluk kodlari bozuk."},
    {Stream().dynamic(258, {{'a', 1}, {256, 1}, {257, 1}}, 1, {}).out, 0, "Deflate uzunluk kodlari bozuk."},
    {Stream().dynamic(258, {{'a', 1}, {257, 1}}, 1, {}).out, 0, "Deflate blok sonu kodu yok."},
    {Stream().header(287, 1, {}).out, 0, "Deflate dinamik blok sayilari gecersiz."},
    {Stream().header(257, 31, {}).out, 0, "Deflate dinamik blok sayilari gecersiz."},
    {Stream().header(257, 1, {{1, 1}}).out, 0, "Deflate kod uzunluklari bozuk."},
    {Stream().header(257, 1, {{0, 1}, {1, 1}, {2, 1}}).out, 0, "Deflate kod uzunluklari bozuk."},
    {Stream().header(257, 1, kCl).code(kCl, 16).out, 0, "Deflate tekrar kodu gecersiz."},
    // End of block alone, no distance code, the last zeros crossing from one code into the other; the unused
    // half of that one-bit code; four copies where three lengths are left.
    {Stream(kZeros).code(kCl, 17, 0, 3).bits(0, 1).out, 0, ""},
    {Stream(kZeros).code(kCl, 17, 0, 3).bits(1, 16).out, 0, "Deflate Huffman kodu gecersiz."},
    {Stream(kZeros).code(kCl, 16, 1, 2).out, 0, "Deflate uzunluk tekrari tasti."},
};

TEST(InflateRaw, HandMadeStreams) {
    for (const auto& [stream, expectedSize, result] : kCases)
        EXPECT_EQ(inflated(stream, stream.size(), expectedSize), result);
}

} // namespace
} // namespace nv
