#include "skin/picture_cache.h"
#include "skin/skin_model.h"
#include "tests/support/image_files.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

const void* pixelsOf(PictureCache& cache, const Bytes& file) {
    DecodedImage image;
    return cache.decode(file.data(), file.size(), image) ? image.pixels.get() : nullptr;
}

TEST(PictureCache, KeepsRecentPicturesWithinItsPixelLimit) {
    const Bytes a = test::makePng(6, 6, 0xFF0000FF), b = test::makePng(4, 4, 0xFF00FF00),
                c = test::makePng(7, 7, 0xFFFF0000), large = test::makePng(8, 8, 0xFF000000);
    PictureCache cache(100);

    const void* first = pixelsOf(cache, a);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(pixelsOf(cache, Bytes(a)), first) << "the same bytes, wherever they sit, decode once";
    EXPECT_NE(pixelsOf(cache, b), nullptr);
    EXPECT_EQ(cache.pixelsKept(), 36u + 16u);

    EXPECT_EQ(pixelsOf(cache, a), first) << "a is now the most recent";
    EXPECT_NE(pixelsOf(cache, c), nullptr);
    EXPECT_EQ(cache.pixelsKept(), 36u + 49u) << "b, the least recently used, made room for c";

    EXPECT_NE(pixelsOf(cache, large), nullptr) << "too large to keep, but decoded for the caller";
    EXPECT_EQ(cache.pixelsKept(), 36u + 49u);

    Bytes broken = a;
    broken[43] = 0x07; // a Deflate block type that does not exist
    DecodedImage image;
    std::wstring error;
    EXPECT_FALSE(cache.decode(broken.data(), broken.size(), image, &error));
    EXPECT_EQ(error, L"Gorsel cozulemedi (desteklenen: PNG, JPG, BMP, GIF).");
    EXPECT_EQ(cache.pixelsKept(), 36u + 49u);
}

TEST(PictureCache, ALoadOfAnEditedSkinReusesThePicturesOfThePreviousLoad) {
    SkinFileSet set;
    set.putFile("Fernwick.url.xml",
                test::bytesOf("<urls remoteConfigPath=\"https://patch.example/c.xml\"/>"));
    set.putFile("skin.xml", test::bytesOf("<skin background_image=\"bg\"/>"));
    set.putFile("bg.png", test::makePng(5, 3, 0xFF336699));
    SkinModel before, after;
    ASSERT_TRUE(loadSkinModel(set, before));
    set.putFile("norvane.ini", test::bytesOf("title=Edited\n"));
    ASSERT_TRUE(loadSkinModel(set, after));
    EXPECT_EQ(after.background.width, 5);
    EXPECT_EQ(after.background.pixels.get(), before.background.pixels.get());
}

} // namespace
} // namespace nv
