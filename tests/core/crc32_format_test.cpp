#include "core/crc32.h"
#include "core/format.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

// The bitwise definition, to check the sliced tables against.
uint32_t slowCrc(const Bytes& bytes) {
    uint32_t c = 0xFFFFFFFFu;
    for (uint8_t b : bytes) {
        c ^= b;
        for (int k = 0; k < 8; ++k)
            c = (c & 1) ? (c >> 1) ^ 0xEDB88320u : c >> 1;
    }
    return ~c;
}

TEST(Crc32, KnownValues) {
    EXPECT_EQ(Crc32::of("123456789", 9), 0xCBF43926u);
    EXPECT_EQ(Crc32::of("", 0), 0u);
    EXPECT_EQ(Crc32::of("The quick brown fox jumps over the lazy dog", 43), 0x414FA339u);
}

TEST(Crc32, MatchesTheBitwiseDefinitionForEveryLengthAndSplit) {
    Bytes data = test::noiseBytes(67, 7);
    for (size_t length = 0; length <= data.size(); ++length) {
        Bytes prefix(data.begin(), data.begin() + length);
        uint32_t expected = slowCrc(prefix);
        for (size_t split = 0; split <= length; ++split) {
            Crc32 crc;
            crc.update(prefix.data(), split);
            crc.update(prefix.data() + split, 0);
            crc.update(prefix.data() + split, length - split);
            ASSERT_EQ(crc.value(), expected) << "length " << length << " split " << split;
        }
    }
}

// Long runs take the folding path: every length around its 256-byte threshold and its 16-byte blocks, from
// unaligned starts, split so that a run ends mid-block.
TEST(Crc32, LongRunsMatchTheBitwiseDefinition) {
    const Bytes data = test::noiseBytes(2000, 9);
    for (size_t start : {0, 1, 7}) {
        for (size_t length : {255, 256, 257, 271, 272, 319, 320, 321, 1000, 1993}) {
            const Bytes run(data.begin() + start, data.begin() + start + length);
            const uint32_t expected = slowCrc(run);
            ASSERT_EQ(Crc32::of(run.data(), run.size()), expected)
                << "start " << start << " length " << length;
            Crc32 split;
            split.update(run.data(), 3);
            split.update(run.data() + 3, length - 3);
            ASSERT_EQ(split.value(), expected) << "start " << start << " length " << length;
        }
    }
    const Bytes ones(4096, 0xFF);
    EXPECT_EQ(Crc32::of(ones.data(), ones.size()), slowCrc(ones));
}

// Pieces summed apart combine into the checksum of the whole, for empty pieces and lengths across the bit
// boundaries of the shift.
TEST(Crc32, CombinedPiecesGiveTheWholeChecksum) {
    const Bytes data = test::noiseBytes(70000, 5);
    for (size_t split : {0, 1, 2, 3, 8, 255, 256, 4097, 65536, 69999, 70000}) {
        const uint32_t a = Crc32::of(data.data(), split);
        const uint32_t b = Crc32::of(data.data() + split, data.size() - split);
        ASSERT_EQ(crc32Combine(a, b, data.size() - split), Crc32::of(data.data(), data.size()))
            << "split " << split;
    }
    // Past 4 GiB the shift needs more than 32 bits: 8192 MiB of zeros summed one mebibyte at a time must
    // equal the same made by doubling, whose last step shifts by 4096 MiB.
    const Bytes zeros(1 << 20, 0);
    const uint32_t mebibyte = Crc32::of(zeros.data(), zeros.size());
    uint32_t pieceByPiece = mebibyte;
    for (int i = 1; i < 8192; ++i)
        pieceByPiece = crc32Combine(pieceByPiece, mebibyte, zeros.size());
    uint32_t doubled = mebibyte;
    for (uint64_t length = zeros.size(); length <= (uint64_t(1) << 32); length *= 2)
        doubled = crc32Combine(doubled, doubled, length);
    EXPECT_EQ(pieceByPiece, doubled);
}

TEST(FileCrc32, ChecksumsAWholeFileAcrossBufferBoundaries) {
    test::TempDir dir;
    Bytes data = test::noiseBytes(0x10000 * 3 + 17, 3);
    test::writeFile(dir.file(L"big.bin"), data);
    uint32_t crc = 0;
    uint64_t size = 0;
    ASSERT_TRUE(fileCrc32(dir.file(L"big.bin"), crc, size));
    EXPECT_EQ(crc, Crc32::of(data.data(), data.size()));
    EXPECT_EQ(size, data.size());
    EXPECT_FALSE(fileCrc32(dir.file(L"missing.bin"), crc, size));
}

TEST(SizeText, ThresholdsAreOnTheByteCount) {
    struct Case {
        uint64_t bytes;
        const wchar_t* text;
    } cases[] = {
        {0, L"0 B"},
        {1023, L"1023 B"},
        {1024, L"1,0 KB"},
        {1536, L"1,5 KB"},
        {1048575, L"1024,0 KB"},
        {1048576, L"1,0 MB"},
        {1073741823, L"1024,0 MB"},
        {1073741824, L"1,0 GB"},
        {5ull * 1073741824 / 2, L"2,5 GB"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(sizeText(c.bytes), c.text) << c.bytes;
    EXPECT_EQ(decimalText(12.34), L"12,3");
    EXPECT_EQ(integerText(-9000000000ll), L"-9000000000");
}

TEST(GroupedIntegerText, GroupsThousandsWithDots) {
    struct Case {
        uint64_t value;
        const wchar_t* text;
    } cases[] = {
        {0, L"0"},
        {999, L"999"},
        {1000, L"1.000"},
        {12345, L"12.345"},
        {100000, L"100.000"},
        {1234567, L"1.234.567"},
        {18446744073709551615ull, L"18.446.744.073.709.551.615"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(groupedIntegerText(c.value), c.text) << c.value;
}

} // namespace
} // namespace nv
