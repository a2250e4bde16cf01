#include "core/paths.h"
#include "skin/skin_source.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

TEST(SkinSource, ZipsAreReadWhateverTheCaseOfTheirExtension) {
    test::TempDir dir;
    const Bytes zip =
        test::readFile(pathJoin(pathJoin(test::testDataDir(), L"zips"), L"infozip_deflate.zip"));
    const std::wstring path = dir.file(L"Kaldra Skin.ZIP");
    test::writeFile(path, zip);

    SkinFileSet set;
    std::wstring message;
    int added = -1;
    EXPECT_TRUE(readSkinSource(path, set, message, &added));
    EXPECT_EQ(message, L"");
    EXPECT_EQ(added, 5);
    EXPECT_TRUE(set.hasFile("skin.xml"));
}

TEST(SkinSource, ZipFailuresCarryTheReadersMessage) {
    test::TempDir dir;
    SkinFileSet set;
    std::wstring message;
    EXPECT_FALSE(readSkinSource(dir.file(L"missing.zip"), set, message));
    EXPECT_EQ(message, L"Zip okunamadi: " + dir.file(L"missing.zip"));

    test::writeFile(dir.file(L"bad.zip"), std::string_view("not a zip, though long enough to look"));
    EXPECT_FALSE(readSkinSource(dir.file(L"bad.zip"), set, message));
    EXPECT_EQ(message, L"Gecersiz zip dosyasi (dizin sonu yok).");

    EXPECT_FALSE(readSkinSource(dir.file(L"skin.rar"), set, message));
    EXPECT_EQ(message, L"Zip dosyası ya da klasör bırakın.");
}

TEST(SkinSource, AFolderNamedLikeAZipIsReadAsAFolder) {
    test::TempDir dir;
    test::writeFile(pathJoin(dir.file(L"skin.zip"), L"Skin.xml"), std::string_view("<skin/>"));
    SkinFileSet set;
    std::wstring message;
    int added = -1;
    EXPECT_TRUE(readSkinSource(dir.file(L"skin.zip"), set, message, &added));
    EXPECT_EQ(added, 1);
    EXPECT_TRUE(set.hasFile("skin.xml"));
}

} // namespace
} // namespace nv
