#include "core/paths.h"
#include "core/text.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

TEST(Utf8, RoundTripsTurkishAndAstralText) {
    const std::string utf8 = "\xC4\x9F\xC3\xBC\xC5\x9F\xC4\xB1 \xC3\x96\xC3\x87 \xF0\x9F\x98\x80";
    std::wstring wide = utf8ToWide(utf8);
    EXPECT_EQ(wide.substr(0, 4), L"\u011F\u00FC\u015F\u0131");
    EXPECT_EQ(wideToUtf8(wide), utf8);
    EXPECT_EQ(utf8ToWide(""), L"");
    EXPECT_EQ(wideToUtf8(L""), "");
}

TEST(Utf8, InvalidBytesBecomeReplacementCharacters) {
    // How many replacement characters a bad sequence yields differs between platforms; that one appears does
    // not.
    std::wstring wide = utf8ToWide("a\xFF\x62");
    ASSERT_FALSE(wide.empty());
    EXPECT_EQ(wide.front(), L'a');
    EXPECT_EQ(wide.back(), L'b');
    EXPECT_NE(wide.find(L'\uFFFD'), std::wstring::npos);
}

TEST(Paths, SplitAndJoinWithEitherSeparator) {
    EXPECT_EQ(pathFileName(L"C:\\skins/dark\\skin.xml"), L"skin.xml");
    EXPECT_EQ(pathFileName(L"skin.xml"), L"skin.xml");
    EXPECT_EQ(pathFileName(L"C:\\skins\\"), L"");
    EXPECT_EQ(pathParent(L"C:\\skins/dark\\skin.xml"), L"C:\\skins/dark");
    EXPECT_EQ(pathParent(L"skin.xml"), L"");
    EXPECT_EQ(bareFileName("./img\\sub/Btn.png"), "Btn.png");
    // No doubled separator after a folder that already ends in one.
    EXPECT_EQ(pathJoin(L"C:\\out\\", L"a.exe"), L"C:\\out\\a.exe");
    EXPECT_EQ(pathJoin(L"C:/out/", L"a.exe"), L"C:/out/a.exe");
    EXPECT_EQ(pathJoin(L"", L"a.exe"), L"a.exe");
    EXPECT_EQ(pathJoin(L"dir", L""), L"dir");
    std::wstring joined = pathJoin(L"dir", L"a.exe");
    EXPECT_EQ(joined.size(), 9u);
    EXPECT_TRUE(isPathSeparator(joined[3]));
}

} // namespace
} // namespace nv
