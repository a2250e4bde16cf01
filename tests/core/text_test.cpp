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

// A joined path keeps the style of the folder it was given in (paths typed on Linux reach nvbuild.exe under
// Wine with '/'), so a message never shows "skins/x\\bg.png".
TEST(Paths, JoinKeepsOneStyle) {
    EXPECT_EQ(pathJoin(L"skins/gece", L"bg.png"), L"skins/gece/bg.png");
#ifdef _WIN32
    EXPECT_EQ(pathJoin(L"C:\\skins", L"bg.png"), L"C:\\skins\\bg.png");
    EXPECT_EQ(pathJoin(L"C:\\skins/gece", L"bg.png"), L"C:\\skins/gece\\bg.png") << "mixed: the platform's";
    EXPECT_EQ(pathJoin(L"gece", L"bg.png"), L"gece\\bg.png");
#endif
}

} // namespace
} // namespace nv
