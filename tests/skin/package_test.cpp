#include "core/crc32.h"
#include "skin/package.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace nv {
namespace {

void put32(Bytes& b, size_t at, uint32_t v) {
    for (int i = 0; i < 4; ++i)
        b[at + i] = uint8_t(v >> (8 * i));
}

// Recomputes the trailing checksum so that a deliberately changed header reaches the later checks.
void reseal(Bytes& b) {
    put32(b, b.size() - 4, Crc32::of(b.data(), b.size() - 4));
}

std::wstring readError(const Bytes& b) {
    SkinFileSet out;
    std::wstring error;
    EXPECT_FALSE(readSkinPackage(b.data(), b.size(), out, &error));
    return error;
}

SkinFileSet sampleSet() {
    SkinFileSet set;
    set.putFile("skin.xml", test::bytesOf("<skin/>"));
    set.putFile("main.png", test::noiseBytes(300, 5));
    set.putFile("empty.txt", Bytes{});
    return set;
}

TEST(SkinPackage, AnEmptySetIsSixteenBytes) {
    Bytes b = writeSkinPackage(SkinFileSet{});
    const uint8_t head[12] = {'N', 'V', 'S', 'K', 1, 0, 0, 0, 0, 0, 0, 0};
    ASSERT_EQ(b.size(), 16u);
    EXPECT_TRUE(std::equal(head, head + 12, b.begin()));
    uint32_t crc = Crc32::of(head, 12);
    EXPECT_EQ(b[12] | b[13] << 8 | b[14] << 16 | uint32_t(b[15]) << 24, crc);

    SkinFileSet out;
    out.putFile("stale.png", Bytes{1});
    EXPECT_TRUE(readSkinPackage(b.data(), b.size(), out));
    EXPECT_TRUE(out.entries.empty());
}

TEST(SkinPackage, RoundTripKeepsOrderNamesAndBytes) {
    SkinFileSet set = sampleSet();
    Bytes b = writeSkinPackage(set);
    EXPECT_EQ(b.size(), 16 + (2 + 8 + 4 + 7) + (2 + 8 + 4 + 300) + (2 + 9 + 4));
    SkinFileSet out;
    ASSERT_TRUE(readSkinPackage(b.data(), b.size(), out));
    ASSERT_EQ(out.entries.size(), 3u);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(out.entries[i].name, set.entries[i].name);
        EXPECT_EQ(out.entries[i].data, set.entries[i].data);
    }
}

TEST(SkinPackage, NamesFromAForeignWriterComeBackAsStored) {
    SkinFileSet set;
    set.entries.push_back({"Upper.PNG", test::bytesOf("x")});
    set.entries.push_back({"Upper.PNG", test::bytesOf("y")});
    Bytes b = writeSkinPackage(set);
    SkinFileSet out;
    ASSERT_TRUE(readSkinPackage(b.data(), b.size(), out));
    ASSERT_EQ(out.entries.size(), 2u);
    EXPECT_EQ(out.entries[0].name, "Upper.PNG");
    EXPECT_EQ(out.entries[1].data, test::bytesOf("y"));
}

TEST(SkinPackage, EveryFlippedByteAfterTheMagicIsACrcError) {
    Bytes good = writeSkinPackage(sampleSet());
    for (size_t i = 4; i < good.size(); ++i) {
        Bytes b = good;
        b[i] ^= 0x01;
        ASSERT_EQ(readError(b), L"Skin paketi bozuk (CRC).") << "byte " << i;
    }
}

TEST(SkinPackage, HeaderChecksInOrder) {
    Bytes good = writeSkinPackage(sampleSet());

    Bytes shortOne(good.begin(), good.begin() + 15);
    EXPECT_EQ(readError(shortOne), L"Skin paketi bulunamadi ya da bozuk.");
    Bytes magic = good;
    magic[0] = 'X';
    EXPECT_EQ(readError(magic), L"Skin paketi bulunamadi ya da bozuk.");

    Bytes version = good;
    put32(version, 4, 2);
    reseal(version);
    EXPECT_EQ(readError(version), L"Skin paketi surumu desteklenmiyor.");

    Bytes tooMany = writeSkinPackage(SkinFileSet{});
    put32(tooMany, 8, 4097);
    reseal(tooMany);
    EXPECT_EQ(readError(tooMany), L"Skin paketi bozuk (adet).");
}

TEST(SkinPackage, CountMustMatchTheEntriesPresent) {
    // 4096 entries are accepted.
    SkinFileSet many;
    for (int i = 0; i < 4096; ++i)
        many.entries.push_back({std::to_string(i) + ".txt", Bytes{uint8_t(i)}});
    Bytes b = writeSkinPackage(many);
    SkinFileSet out;
    EXPECT_TRUE(readSkinPackage(b.data(), b.size(), out));
    EXPECT_EQ(out.entries.size(), 4096u);

    // More announced than present: the bytes run out.
    Bytes more = writeSkinPackage(sampleSet());
    put32(more, 8, 4);
    reseal(more);
    EXPECT_EQ(readError(more), L"Skin paketi bozuk.");

    // Fewer announced than present: the rest is ignored.
    Bytes fewer = writeSkinPackage(sampleSet());
    put32(fewer, 8, 1);
    reseal(fewer);
    ASSERT_TRUE(readSkinPackage(fewer.data(), fewer.size(), out));
    ASSERT_EQ(out.entries.size(), 1u);
    EXPECT_EQ(out.entries[0].name, "skin.xml");
}

TEST(SkinPackage, EntryLengthsMayNotReachIntoTheChecksum) {
    SkinFileSet one;
    one.putFile("a.txt", test::bytesOf("abc"));
    Bytes good = writeSkinPackage(one);
    struct Case {
        size_t at;
        uint32_t value;
        int width;
    } cases[] = {
        {12, 0xFFFF, 2},            // name length far past the end
        {12, 5 + 4 + 3 + 1, 2},     // name swallowing the data length
        {12 + 2 + 5, 4, 4},         // data one byte into the checksum
        {12 + 2 + 5, 0xFFFFFFFF, 4} // data length that would overflow a careless sum
    };
    for (const Case& c : cases) {
        Bytes b = good;
        for (int i = 0; i < c.width; ++i)
            b[c.at + i] = uint8_t(c.value >> (8 * i));
        reseal(b);
        EXPECT_EQ(readError(b), L"Skin paketi bozuk.") << "field at " << c.at;
    }
    // A package whose count promises an entry but holds not even its name length.
    Bytes bare = writeSkinPackage(SkinFileSet{});
    put32(bare, 8, 1);
    reseal(bare);
    EXPECT_EQ(readError(bare), L"Skin paketi bozuk.");
}

} // namespace
} // namespace nv
