#include "core/crc32.h"
#include "skin/package.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <functional>

namespace nv {
namespace {

void put(Bytes& b, size_t at, uint32_t v, int width) {
    for (int i = 0; i < width; ++i)
        b[at + i] = uint8_t(v >> (8 * i));
}

// Recomputes the trailing checksum so that a deliberately changed header reaches the later checks.
void reseal(Bytes& b) {
    put(b, b.size() - 4, Crc32::of(b.data(), b.size() - 4), 4);
}

SkinFileSet sampleSet() {
    SkinFileSet set;
    set.putFile("skin.xml", test::bytesOf("<skin/>"));
    set.putFile("main.png", test::noiseBytes(300, 5));
    set.putFile("empty.txt", Bytes{});
    return set;
}

TEST(SkinPackage, RoundTripKeepsOrderNamesAndBytes) {
    Bytes empty = writeSkinPackage(SkinFileSet{});
    const Bytes head = {'N', 'V', 'S', 'K', 1, 0, 0, 0, 0, 0, 0, 0};
    ASSERT_EQ(empty.size(), 16u);
    EXPECT_EQ(Bytes(empty.begin(), empty.begin() + 12), head);
    EXPECT_EQ(empty[12] | empty[13] << 8 | empty[14] << 16 | uint32_t(empty[15]) << 24,
              Crc32::of(head.data(), 12));

    // Names come back as stored, even upper-case or repeated ones from a foreign writer.
    SkinFileSet set = sampleSet();
    set.entries.push_back({"Upper.PNG", test::bytesOf("x")});
    set.entries.push_back({"Upper.PNG", test::bytesOf("y")});
    for (const SkinFileSet& original : {SkinFileSet{}, set}) {
        Bytes b = writeSkinPackage(original);
        SkinFileSet out;
        out.putFile("stale.png", Bytes{1});
        ASSERT_TRUE(readSkinPackage(b.data(), b.size(), out));
        ASSERT_EQ(out.entries.size(), original.entries.size());
        for (size_t i = 0; i < out.entries.size(); ++i) {
            EXPECT_EQ(out.entries[i].name, original.entries[i].name);
            EXPECT_EQ(out.entries[i].data, original.entries[i].data);
        }
    }
}

TEST(SkinPackage, EveryFlippedByteAfterTheMagicIsACrcError) {
    Bytes good = writeSkinPackage(sampleSet());
    for (size_t i = 4; i < good.size(); ++i) {
        Bytes b = good;
        b[i] ^= 0x01;
        SkinFileSet out;
        std::wstring error;
        ASSERT_FALSE(readSkinPackage(b.data(), b.size(), out, &error));
        ASSERT_EQ(error, L"Skin paketi bozuk (CRC).") << "byte " << i;
    }
}

TEST(SkinPackage, DamageIsReportedInTheCheckOrder) {
    SkinFileSet many;
    for (int i = 0; i < 4096; ++i)
        many.entries.push_back({std::to_string(i), Bytes{uint8_t(i)}});
    const Bytes sample = writeSkinPackage(sampleSet());
    const size_t firstData = 12 + 2 + 8; // the data length of skin.xml
    struct Case {
        const char* what;
        Bytes base;
        std::function<void(Bytes&)> change; // the checksum is resealed afterwards
        const wchar_t* error;               // null: accepted
        size_t entries;                     // read back when accepted
    } cases[] = {
        {"15 bytes", Bytes(sample.begin(), sample.begin() + 15), nullptr,
         L"Skin paketi bulunamadi ya da bozuk.", 0},
        {"other magic", sample, [](Bytes& b) { b[0] = 'X'; }, L"Skin paketi bulunamadi ya da bozuk.", 0},
        {"version 2", sample, [](Bytes& b) { put(b, 4, 2, 4); }, L"Skin paketi surumu desteklenmiyor.", 0},
        {"4096 entries", writeSkinPackage(many), nullptr, nullptr, 4096},
        {"count 4097", sample, [](Bytes& b) { put(b, 8, 4097, 4); }, L"Skin paketi bozuk (adet).", 0},
        {"more announced than present", sample, [](Bytes& b) { put(b, 8, 4, 4); }, L"Skin paketi bozuk.", 0},
        {"fewer announced: the rest is ignored", sample, [](Bytes& b) { put(b, 8, 1, 4); }, nullptr, 1},
        {"name past the end", sample, [](Bytes& b) { put(b, 12, 0xFFFF, 2); }, L"Skin paketi bozuk.", 0},
        {"data into the checksum", sample, [&](Bytes& b) { put(b, b.size() - 8, 5, 4); },
         L"Skin paketi bozuk.", 0},
        {"data length that would wrap", sample, [&](Bytes& b) { put(b, firstData, 0xFFFFFFFF, 4); },
         L"Skin paketi bozuk.", 0},
    };
    for (const Case& c : cases) {
        Bytes b = c.base;
        if (c.change) {
            c.change(b);
            if (b[0] == 'N') reseal(b);
        }
        SkinFileSet out;
        std::wstring error;
        EXPECT_EQ(readSkinPackage(b.data(), b.size(), out, &error), c.error == nullptr) << c.what;
        EXPECT_EQ(error, c.error ? c.error : L"") << c.what;
        if (!c.error) {
            EXPECT_EQ(out.entries.size(), c.entries) << c.what;
        }
    }
}

} // namespace
} // namespace nv
