#include "core/text.h"
#include "readers/inflate.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <utility>

namespace nv {
namespace {

// Sparse code lengths: {symbol, length} for every symbol that has a code.
using Lengths = std::vector<std::pair<int, int>>;

// Canonical Huffman codes from their lengths, exactly as RFC 1951 3.2.2 assigns them.
std::vector<uint32_t> canonical(const std::vector<int>& lengths) {
    int perLength[16] = {};
    for (int len : lengths)
        perLength[len]++;
    perLength[0] = 0;
    uint32_t next[16] = {};
    uint32_t code = 0;
    for (int len = 1; len <= 15; ++len)
        next[len] = code = (code + perLength[len - 1]) << 1;
    std::vector<uint32_t> codes(lengths.size());
    for (size_t s = 0; s < lengths.size(); ++s)
        if (lengths[s]) codes[s] = next[lengths[s]]++;
    return codes;
}

std::vector<int> dense(int n, const Lengths& sparse) {
    std::vector<int> lengths(n);
    for (auto [symbol, len] : sparse)
        lengths[symbol] = len;
    return lengths;
}

// Writes Deflate streams by hand, one field at a time. Header fields and extra bits go least significant bit
// first, Huffman codes most significant bit first, as RFC 1951 3.1.1 packs them.
class Stream {
public:
    Stream& bits(uint64_t value, int n) {
        for (int i = 0; i < n; ++i)
            bit((value >> i) & 1);
        return *this;
    }
    Stream& storedHeader(bool last, uint16_t len, uint16_t nlen) {
        bits(last, 1).bits(0, 2);
        while (used_ % 8)
            bit(0);
        return bits(len, 16).bits(nlen, 16);
    }
    Stream& stored(bool last, std::string_view data) {
        storedHeader(last, uint16_t(data.size()), uint16_t(~data.size()));
        for (char c : data)
            bits(uint8_t(c), 8);
        return *this;
    }
    Stream& fixed(bool last) {
        std::vector<int> lit(288, 8);
        for (int s = 144; s < 256; ++s)
            lit[s] = 9;
        for (int s = 256; s < 280; ++s)
            lit[s] = 7;
        bits(last, 1).bits(1, 2);
        return codes(lit, std::vector<int>(32, 5));
    }
    // A dynamic block header whose code-length code has the given lengths (all 19 sent); the code lengths of
    // the block's codes then follow through lengthSymbol().
    Stream& dynamicHeader(bool last, int nlen, int ndist, const Lengths& codeLengthCode) {
        static const int order[19] = {16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1, 15};
        bits(last, 1).bits(2, 2).bits(nlen - 257, 5).bits(ndist - 1, 5).bits(19 - 4, 4);
        clLengths_ = dense(19, codeLengthCode);
        for (int s : order)
            bits(clLengths_[s], 3);
        clCodes_ = canonical(clLengths_);
        return *this;
    }
    Stream& lengthSymbol(int symbol, uint32_t extra = 0, int extraBits = 0) {
        return code(clCodes_[symbol], clLengths_[symbol]).bits(extra, extraBits);
    }
    // A dynamic block sending every code length as a plain symbol through a complete code-length code.
    Stream& dynamic(bool last, int nlen, const Lengths& litLen, int ndist, const Lengths& dist) {
        Lengths plain;
        for (int s = 0; s < 19; ++s)
            plain.push_back({s, s < 13 ? 4 : 5});
        dynamicHeader(last, nlen, ndist, plain);
        std::vector<int> lit = dense(nlen, litLen), dst = dense(ndist, dist);
        for (int len : lit)
            lengthSymbol(len);
        for (int len : dst)
            lengthSymbol(len);
        return codes(lit, dst);
    }
    // The codes the following symbols are written with (set by fixed() and dynamic()).
    Stream& codes(std::vector<int> litLen, std::vector<int> dist) {
        litLengths_ = std::move(litLen);
        distLengths_ = std::move(dist);
        litCodes_ = canonical(litLengths_);
        distCodes_ = canonical(distLengths_);
        return *this;
    }
    Stream& symbol(int s) { return code(litCodes_[s], litLengths_[s]); }
    Stream& text(std::string_view literals) {
        for (char c : literals)
            symbol(uint8_t(c));
        return *this;
    }
    Stream& distance(int s, uint32_t extra = 0, int extraBits = 0) {
        return code(distCodes_[s], distLengths_[s]).bits(extra, extraBits);
    }
    Stream& end() { return symbol(256); }
    Bytes bytes() const { return out_; }

private:
    Stream& code(uint32_t value, int len) {
        for (int i = len - 1; i >= 0; --i)
            bit((value >> i) & 1);
        return *this;
    }
    void bit(uint32_t b) {
        if (used_ % 8 == 0) out_.push_back(0);
        out_.back() |= uint8_t(b << (used_ % 8));
        ++used_;
    }
    Bytes out_;
    size_t used_ = 0;
    std::vector<int> clLengths_, litLengths_, distLengths_;
    std::vector<uint32_t> clCodes_, litCodes_, distCodes_;
};

// What a stream of the given literals followed by back-references of distance pattern.size() decodes to.
std::string repeated(std::string_view pattern, size_t size) {
    std::string s;
    while (s.size() < size)
        s += pattern[s.size() % pattern.size()];
    return s;
}

Bytes truncated(Bytes b, size_t drop) {
    b.resize(b.size() - drop);
    return b;
}

// A literal/length code for a, b, c, end of block and length symbol 257 (3 bytes), complete.
const Lengths kAbc = {{'a', 2}, {'b', 2}, {'c', 3}, {256, 3}, {257, 2}};

// Code lengths 1, 2, ... 14 for a..n, 15 for o and end of block: the longest codes there are.
const Lengths kLongest = {{'a', 1},  {'b', 2},  {'c', 3},  {'d', 4},  {'e', 5},  {'f', 6},
                          {'g', 7},  {'h', 8},  {'i', 9},  {'j', 10}, {'k', 11}, {'l', 12},
                          {'m', 13}, {'n', 14}, {'o', 15}, {256, 15}};

// a..h 4 bits, end of block and length 3 two bits each: the code sent with repeats below.
const Lengths kAToH = {{'a', 4}, {'b', 4}, {'c', 4}, {'d', 4}, {'e', 4},
                       {'f', 4}, {'g', 4}, {'h', 4}, {256, 2}, {257, 2}};

struct Case {
    const char* name;
    Bytes stream;
    size_t expectedSize;
    std::string output;   // when the stream decodes
    const wchar_t* error; // when it does not
};

const Case kCases[] = {
    // Stored blocks and the size checks.
    {"stored", Stream().stored(true, "hello").bytes(), 5, "hello", nullptr},
    {"stored, one byte more expected", Stream().stored(true, "hello").bytes(), 6, "",
     L"Deflate cikti boyutu uyusmuyor."},
    {"stored, one byte fewer expected", Stream().stored(true, "hello").bytes(), 4, "",
     L"Deflate ciktisi beklenen boyutu asti."},
    {"stored, NLEN not the complement", Stream().storedHeader(true, 5, 0xFFFB).bits(0, 40).bytes(), 5, "",
     L"Deflate saklanan blok bozuk."},
    {"stored, data cut short", truncated(Stream().stored(true, "hello").bytes(), 1), 5, "",
     L"Deflate verisi erken bitti."},
    // Both too long and cut short: the size is checked first.
    {"stored, too long and cut short", Stream().storedHeader(true, 5, 0xFFFA).bits('a', 8).bytes(), 3, "",
     L"Deflate ciktisi beklenen boyutu asti."},
    {"stored, padding bits set",
     Stream()
         .bits(0, 1)
         .bits(0, 2)
         .bits(0x1F, 5) // padding up to the byte boundary
         .bits(2, 16)
         .bits(0xFFFD, 16)
         .bits('h', 8)
         .bits('i', 8)
         .stored(true, "!")
         .bytes(),
     3, "hi!", nullptr},
    {"empty input", Bytes(), 0, "", L"Deflate verisi erken bitti."},
    {"no final block", Stream().stored(false, "ab").bytes(), 2, "", L"Deflate verisi erken bitti."},
    {"block type 3", Stream().bits(1, 1).bits(3, 2).bits(0, 13).bytes(), 0, "",
     L"Gecersiz deflate blok turu."},
    {"input after the final block is ignored", Stream().stored(true, "hi").bits(0xFFFF, 16).bytes(), 2, "hi",
     nullptr},

    // Fixed codes, back-references and their limits.
    {"fixed", Stream().fixed(true).text("abc\xff").end().bytes(), 4, "abc\xff", nullptr},
    {"distance 1 run", Stream().fixed(true).text("a").symbol(264).distance(0).end().bytes(), 11,
     std::string(11, 'a'), nullptr},
    // Length 12 (symbol 265 + 1), distance 2: the copy reads what it has just written.
    {"overlapping copy with extra bits",
     Stream().fixed(true).text("ab").symbol(265).bits(1, 1).distance(1).end().bytes(), 14, repeated("ab", 14),
     nullptr},
    // Length 258 (symbol 285), distance 6 (symbol 4 + 1).
    {"longest match", Stream().fixed(true).text("abcdef").symbol(285).distance(4, 1, 1).end().bytes(), 264,
     repeated("abcdef", 264), nullptr},
    {"back-reference first", Stream().fixed(true).symbol(257).distance(0).end().bytes(), 3, "",
     L"Deflate mesafesi cok uzak."},
    {"distance one past the output", Stream().fixed(true).text("ab").symbol(257).distance(2).bytes(), 5, "",
     L"Deflate mesafesi cok uzak."},
    {"distance as far as the output", Stream().fixed(true).text("ab").symbol(257).distance(1).end().bytes(),
     5, "ababa", nullptr},
    {"length symbol 286", Stream().fixed(true).text("a").symbol(286).bits(0, 16).bytes(), 1, "",
     L"Deflate uzunluk kodu gecersiz."},
    {"distance symbol 30", Stream().fixed(true).text("a").symbol(257).distance(30).bits(0, 16).bytes(), 4, "",
     L"Deflate mesafe kodu gecersiz."},
    {"literal past the expected size", Stream().fixed(true).text("abc").end().bytes(), 2, "",
     L"Deflate ciktisi beklenen boyutu asti."},
    {"copy past the expected size", Stream().fixed(true).text("a").symbol(264).distance(0).end().bytes(), 10,
     "", L"Deflate ciktisi beklenen boyutu asti."},
    // Several blocks; a back-reference reaches into an earlier block.
    {"stored, fixed and dynamic blocks",
     Stream()
         .stored(false, "xyz")
         .fixed(false)
         .text("c")
         .symbol(258)
         .distance(2) // 3 back: "yzcy"
         .end()
         .dynamic(true, 258, kAbc, 1, {{0, 1}})
         .text("ab")
         .symbol(257)
         .distance(0)
         .end()
         .bytes(),
     13, "xyzcyzcyabbbb", nullptr},

    // Dynamic blocks: the shape of the two codes.
    {"dynamic, single one-bit distance code",
     Stream().dynamic(true, 258, kAbc, 1, {{0, 1}}).text("abc").symbol(257).distance(0).end().bytes(), 6,
     "abcccc", nullptr},
    {"dynamic, fifteen-bit codes", Stream().dynamic(true, 257, kLongest, 1, {}).text("ona").end().bytes(), 3,
     "ona", nullptr},
    {"dynamic, incomplete distance code", Stream().dynamic(true, 258, kAbc, 2, {{0, 2}, {1, 2}}).bytes(), 0,
     "", L"Deflate mesafe kodlari bozuk."},
    {"dynamic, single two-bit distance code", Stream().dynamic(true, 258, kAbc, 1, {{0, 2}}).bytes(), 0, "",
     L"Deflate mesafe kodlari bozuk."},
    {"dynamic, over-subscribed distance code",
     Stream().dynamic(true, 258, kAbc, 3, {{0, 1}, {1, 1}, {2, 1}}).bytes(), 0, "",
     L"Deflate mesafe kodlari bozuk."},
    {"dynamic, no distance codes", Stream().dynamic(true, 258, kAbc, 1, {}).text("ab").end().bytes(), 2, "ab",
     nullptr},
    {"dynamic, match without distance codes",
     Stream().dynamic(true, 258, kAbc, 1, {}).text("a").symbol(257).bits(0, 16).bytes(), 4, "",
     L"Deflate Huffman kodu gecersiz."},
    {"dynamic, end of block as the only code", Stream().dynamic(true, 257, {{256, 1}}, 1, {}).end().bytes(),
     0, "", nullptr},
    {"dynamic, unused half of a one-bit code",
     Stream().dynamic(true, 257, {{256, 1}}, 1, {}).bits(0xFFFF, 16).bytes(), 0, "",
     L"Deflate Huffman kodu gecersiz."},
    {"dynamic, single two-bit literal/length code", Stream().dynamic(true, 257, {{256, 2}}, 1, {}).bytes(), 0,
     "", L"Deflate uzunluk kodlari bozuk."},
    {"dynamic, incomplete literal/length code",
     Stream().dynamic(true, 257, {{'a', 2}, {256, 2}}, 1, {}).bytes(), 0, "",
     L"Deflate uzunluk kodlari bozuk."},
    {"dynamic, over-subscribed literal/length code",
     Stream().dynamic(true, 258, {{'a', 1}, {256, 1}, {257, 1}}, 1, {}).bytes(), 0, "",
     L"Deflate uzunluk kodlari bozuk."},
    {"dynamic, no end-of-block code", Stream().dynamic(true, 258, {{'a', 1}, {257, 1}}, 1, {}).bytes(), 0, "",
     L"Deflate blok sonu kodu yok."},

    // Dynamic blocks: the header and the code-length code.
    {"dynamic, 287 literal/length codes", Stream().dynamicHeader(true, 287, 1, {}).bits(0, 64).bytes(), 0, "",
     L"Deflate dinamik blok sayilari gecersiz."},
    {"dynamic, 31 distance codes", Stream().dynamicHeader(true, 257, 31, {}).bits(0, 64).bytes(), 0, "",
     L"Deflate dinamik blok sayilari gecersiz."},
    {"dynamic, incomplete code-length code",
     Stream().dynamicHeader(true, 257, 1, {{0, 2}, {1, 2}}).bits(0, 16).bytes(), 0, "",
     L"Deflate kod uzunluklari bozuk."},
    {"dynamic, one-bit code-length code", Stream().dynamicHeader(true, 257, 1, {{1, 1}}).bits(0, 16).bytes(),
     0, "", L"Deflate kod uzunluklari bozuk."},
    {"dynamic, over-subscribed code-length code",
     Stream().dynamicHeader(true, 257, 1, {{0, 1}, {1, 1}, {2, 1}}).bits(0, 16).bytes(), 0, "",
     L"Deflate kod uzunluklari bozuk."},
    {"dynamic, empty code-length code", Stream().dynamicHeader(true, 257, 1, {}).bits(0, 16).bytes(), 0, "",
     L"Deflate Huffman kodu gecersiz."},
    {"dynamic, repeat with no previous length",
     Stream()
         .dynamicHeader(true, 257, 1, {{0, 2}, {1, 2}, {16, 2}, {18, 2}})
         .lengthSymbol(16)
         .bits(0, 16)
         .bytes(),
     0, "", L"Deflate tekrar kodu gecersiz."},
    {"dynamic, repeat past the announced lengths",
     Stream()
         .dynamicHeader(true, 257, 1, {{0, 2}, {1, 2}, {16, 2}, {18, 2}})
         .lengthSymbol(18, 127, 7) // 138 zeros
         .lengthSymbol(18, 106, 7) // 117 more: 255
         .lengthSymbol(1)
         .lengthSymbol(16, 0, 2) // 3 copies where two lengths are left
         .bits(0, 16)
         .bytes(),
     0, "", L"Deflate uzunluk tekrari tasti."},
    // Every repeat code, and a run of zeros crossing from the literal/length into the distance lengths.
    {"dynamic, lengths written with repeats",
     Stream()
         .dynamicHeader(true, 259, 3, {{0, 2}, {1, 3}, {2, 3}, {4, 3}, {16, 3}, {17, 3}, {18, 3}})
         .lengthSymbol(18, 86, 7) // 97 zeros
         .lengthSymbol(4)
         .lengthSymbol(16, 3, 2) // 6 more fours
         .lengthSymbol(4)
         .lengthSymbol(18, 127, 7) // 138 zeros: 105..242
         .lengthSymbol(17, 7, 3)   // 10 zeros: 243..252
         .lengthSymbol(17, 0, 3)   // 3 zeros: 253..255
         .lengthSymbol(2)
         .lengthSymbol(2)
         .lengthSymbol(17, 0, 3) // 258 and distance symbols 0 and 1
         .lengthSymbol(1)
         .codes(dense(259, kAToH), dense(3, {{2, 1}}))
         .text("abcdefgh")
         .symbol(257)
         .distance(2)
         .end()
         .bytes(),
     11, "abcdefghfgh", nullptr},
};

TEST(InflateRaw, HandMadeStreams) {
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.name);
        const Bytes& stream = c.stream;
        Bytes out = test::bytesOf("left over");
        std::wstring error;
        bool ok = inflateRaw(stream.data(), stream.size(), c.expectedSize, out, &error);
        if (c.error) {
            EXPECT_FALSE(ok);
            EXPECT_EQ(error, c.error);
            EXPECT_TRUE(out.empty());
        } else {
            ASSERT_TRUE(ok) << wideToUtf8(error);
            EXPECT_EQ(test::textOf(out), c.output);
        }
    }
}

} // namespace
} // namespace nv
