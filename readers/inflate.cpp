// A raw Deflate decoder written to be read beside RFC 1951: one function per construct of the format, bits
// taken one code length at a time, every malformed input refused with its own message. Speed is not the goal;
// skin files are small. The output never grows past the size the caller expects.

#include "readers/inflate.h"

#include "core/memory_guard.h"
#include "readers/deflate_tables.h"

#include <cstring>

namespace nv {
namespace {

constexpr int kMaxBits = 15;           // longest Huffman code (RFC 1951 3.2.2)
constexpr int kMaxLitLenCodes = 286;   // literal/length codes a dynamic block may announce
constexpr int kMaxDistCodes = 30;      // distance codes a dynamic block may announce
constexpr int kFixedLitLenCodes = 288; // the fixed code also assigns 286 and 287, which never decode
constexpr int kFixedDistCodes = 32;    // likewise distance codes 30 and 31

// Raised anywhere inside the decoder; inflateRaw turns it into its false result.
struct InflateError {
    const wchar_t* message;
};

[[noreturn]] void fail(const wchar_t* message) {
    throw InflateError{message};
}

struct State {
    const uint8_t* in;
    size_t inSize;
    size_t inPos = 0;
    uint32_t bitBuf = 0; // bits read from the input but not yet used, the next one in bit 0
    int bitCount = 0;
    Bytes& out;
    size_t expected;
};

// The next n bits (0..16) of the stream, first bit in the lowest position (RFC 1951 3.1.1).
uint32_t bits(State& s, int n) {
    uint32_t value = s.bitBuf;
    while (s.bitCount < n) {
        if (s.inPos == s.inSize) fail(L"Deflate verisi erken bitti.");
        value |= uint32_t(s.in[s.inPos++]) << s.bitCount;
        s.bitCount += 8;
    }
    s.bitBuf = value >> n;
    s.bitCount -= n;
    return value & ((1u << n) - 1);
}

void ensureRoom(const State& s, size_t count) {
    if (count > s.expected - s.out.size()) fail(L"Deflate ciktisi beklenen boyutu asti.");
}

// Stored block (RFC 1951 3.2.4): byte-aligned LEN, its complement NLEN, then LEN bytes as they are.
void stored(State& s) {
    s.bitBuf = 0; // the rest of the current byte is padding
    s.bitCount = 0;
    if (s.inSize - s.inPos < 4) fail(L"Deflate verisi erken bitti.");
    const uint8_t* header = s.in + s.inPos;
    unsigned len = header[0] | (header[1] << 8);
    unsigned nlen = header[2] | (header[3] << 8);
    s.inPos += 4;
    if (len != (~nlen & 0xFFFFu)) fail(L"Deflate saklanan blok bozuk.");
    // A block that cannot fit is refused before looking for its bytes: the header alone proves the stream
    // wrong, however much input follows.
    ensureRoom(s, len);
    if (s.inSize - s.inPos < len) fail(L"Deflate verisi erken bitti.");
    s.out.insert(s.out.end(), s.in + s.inPos, s.in + s.inPos + len);
    s.inPos += len;
}

// A canonical Huffman code as RFC 1951 3.2.2 defines it by its code lengths: how many codes there are of each
// length, and the symbols ordered by code (by length, then by symbol value within a length).
struct Huffman {
    uint16_t count[kMaxBits + 1];
    uint16_t symbol[kFixedLitLenCodes];
};

// Fills h from the code lengths of symbols 0..n-1 (0 = unused). Returns 0 for a complete code, a positive
// number for an incomplete one (codes left unassigned), a negative one for an over-subscribed one. A code
// without any symbol counts as complete; decoding from it fails.
int construct(Huffman& h, const uint8_t* lengths, int n) {
    std::memset(h.count, 0, sizeof h.count);
    for (int symbol = 0; symbol < n; ++symbol)
        h.count[lengths[symbol]]++;
    if (h.count[0] == n) return 0;

    int left = 1; // codes still available at the current length
    for (int len = 1; len <= kMaxBits; ++len) {
        left <<= 1;
        left -= h.count[len];
        if (left < 0) return left;
    }

    uint16_t offset[kMaxBits + 1]; // where each length's symbols start in h.symbol
    offset[1] = 0;
    for (int len = 1; len < kMaxBits; ++len)
        offset[len + 1] = uint16_t(offset[len] + h.count[len]);
    for (int symbol = 0; symbol < n; ++symbol)
        if (lengths[symbol] != 0) h.symbol[offset[lengths[symbol]]++] = uint16_t(symbol);
    return left;
}

// True for the one incomplete code accepted: a single symbol coded with one bit. RFC 1951 3.2.7 has a lone
// distance code sent that way; the same shape of literal/length code (end of block alone) is accepted too.
bool isSingleOneBitCode(const Huffman& h, int n) {
    return h.count[1] == 1 && h.count[0] == n - 1;
}

// Reads one symbol. Codes are packed first bit first (RFC 1951 3.1.1), so the code grows one bit at a time;
// at each length the codes of that length are the consecutive values from `first`.
int decode(State& s, const Huffman& h) {
    int code = 0;  // the bits read so far
    int first = 0; // the first code of the current length
    int index = 0; // where the current length's symbols start in h.symbol
    for (int len = 1; len <= kMaxBits; ++len) {
        code |= int(bits(s, 1));
        int count = h.count[len];
        if (code - first < count) return h.symbol[index + (code - first)];
        index += count;
        first = (first + count) << 1;
        code <<= 1;
    }
    fail(L"Deflate Huffman kodu gecersiz.");
}

// The compressed data of a Huffman block: literals and <length, distance> pairs up to end-of-block (256).
void codes(State& s, const Huffman& litLen, const Huffman& dist) {
    for (;;) {
        int symbol = decode(s, litLen);
        if (symbol < 256) {
            ensureRoom(s, 1);
            s.out.push_back(uint8_t(symbol));
            continue;
        }
        if (symbol == 256) return;

        symbol -= 257;
        if (symbol >= 29) fail(L"Deflate uzunluk kodu gecersiz.");
        size_t length = deflate::kLengthBase[symbol] + bits(s, deflate::kLengthExtra[symbol]);

        symbol = decode(s, dist);
        if (symbol >= 30) fail(L"Deflate mesafe kodu gecersiz.");
        size_t distance = deflate::kDistanceBase[symbol] + bits(s, deflate::kDistanceExtra[symbol]);

        // A pair that both reaches too far and overflows the output is reported for its distance.
        if (distance > s.out.size()) fail(L"Deflate mesafesi cok uzak.");
        ensureRoom(s, length);
        // Byte by byte: the source may overlap what this copy writes (distance < length repeats a pattern).
        // The buffer was reserved at its final size, so no push_back moves it.
        size_t from = s.out.size() - distance;
        for (size_t i = 0; i < length; ++i)
            s.out.push_back(s.out[from + i]);
    }
}

// Fixed Huffman codes (RFC 1951 3.2.6).
void fixed(State& s) {
    uint8_t lengths[kFixedLitLenCodes];
    int symbol = 0;
    for (; symbol < 144; ++symbol)
        lengths[symbol] = 8;
    for (; symbol < 256; ++symbol)
        lengths[symbol] = 9;
    for (; symbol < 280; ++symbol)
        lengths[symbol] = 7;
    for (; symbol < kFixedLitLenCodes; ++symbol)
        lengths[symbol] = 8;
    Huffman litLen;
    construct(litLen, lengths, kFixedLitLenCodes);

    for (symbol = 0; symbol < kFixedDistCodes; ++symbol)
        lengths[symbol] = 5;
    Huffman dist;
    construct(dist, lengths, kFixedDistCodes);

    codes(s, litLen, dist);
}

// Dynamic Huffman codes (RFC 1951 3.2.7): the code lengths of both codes, themselves Huffman coded.
void dynamic(State& s) {
    int nlen = int(bits(s, 5)) + 257;
    int ndist = int(bits(s, 5)) + 1;
    int ncode = int(bits(s, 4)) + 4;
    if (nlen > kMaxLitLenCodes || ndist > kMaxDistCodes) fail(L"Deflate dinamik blok sayilari gecersiz.");

    // The code-length code, its lengths sent in this order so that the usually unused ones come last.
    static constexpr uint8_t kOrder[19] = {16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1, 15};
    uint8_t lengths[kMaxLitLenCodes + kMaxDistCodes] = {};
    for (int i = 0; i < ncode; ++i)
        lengths[kOrder[i]] = uint8_t(bits(s, 3));
    Huffman lenCode;
    if (construct(lenCode, lengths, 19) != 0) fail(L"Deflate kod uzunluklari bozuk.");

    // The literal/length and distance code lengths form one sequence; a repeat may cross from one to the
    // other.
    int total = nlen + ndist;
    int index = 0;
    while (index < total) {
        int symbol = decode(s, lenCode);
        if (symbol < 16) {
            lengths[index++] = uint8_t(symbol);
            continue;
        }
        uint8_t len = 0;
        int repeat;
        if (symbol == 16) {
            if (index == 0) fail(L"Deflate tekrar kodu gecersiz.");
            len = lengths[index - 1];
            repeat = 3 + int(bits(s, 2));
        } else if (symbol == 17) {
            repeat = 3 + int(bits(s, 3));
        } else {
            repeat = 11 + int(bits(s, 7));
        }
        if (repeat > total - index) fail(L"Deflate uzunluk tekrari tasti.");
        while (repeat--)
            lengths[index++] = len;
    }

    if (lengths[256] == 0) fail(L"Deflate blok sonu kodu yok.");

    // Over-subscribed codes are ambiguous and incomplete ones leave bit patterns that mean nothing, apart
    // from the single one-bit code.
    Huffman litLen;
    int left = construct(litLen, lengths, nlen);
    if (left < 0 || (left > 0 && !isSingleOneBitCode(litLen, nlen))) fail(L"Deflate uzunluk kodlari bozuk.");
    Huffman dist;
    left = construct(dist, lengths + nlen, ndist);
    if (left < 0 || (left > 0 && !isSingleOneBitCode(dist, ndist))) fail(L"Deflate mesafe kodlari bozuk.");

    codes(s, litLen, dist);
}

} // namespace

bool inflateRaw(const uint8_t* data, size_t size, size_t expectedSize, Bytes& out, std::wstring* error) {
    out.clear();
    State s{data, size, 0, 0, 0, out, expectedSize};
    try {
        out.reserve(expectedSize);
        bool last;
        do {
            last = bits(s, 1) != 0;
            switch (bits(s, 2)) {
            case 0:
                stored(s);
                break;
            case 1:
                fixed(s);
                break;
            case 2:
                dynamic(s);
                break;
            default:
                fail(L"Gecersiz deflate blok turu.");
            }
        } while (!last);
        // Whatever follows the final block is not part of the stream.
        if (out.size() != expectedSize) fail(L"Deflate cikti boyutu uyusmuyor.");
    } catch (const InflateError& e) {
        out.clear();
        if (error) *error = e.message;
        return false;
    } catch (const std::bad_alloc&) {
        out.clear();
        if (error) *error = kOutOfMemory;
        return false;
    }
    return true;
}

} // namespace nv
