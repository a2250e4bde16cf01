// Behaviour of the Windows file layer that the portable tests cannot reach.

#include "core/cp437.h"
#include "core/files.h"
#include "core/paths.h"
#include "core/text.h"
#include "core/win32/scoped_win.h"
#include "tests/support/test_support.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace nv {
namespace {

TEST(WriteFileAtomicWin32, ReplacesAReadOnlyTargetAndLeavesItWritable) {
    test::TempDir dir;
    const std::wstring path = dir.file(L"old.ini");
    test::writeFile(path, "old");
    ASSERT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE));

    ASSERT_TRUE(writeFileAtomic(path, test::bytesOf("new")));
    EXPECT_EQ(test::textOf(test::readFile(path)), "new");
    DWORD attributes = GetFileAttributesW(path.c_str());
    ASSERT_NE(attributes, INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(attributes & FILE_ATTRIBUTE_READONLY, 0u);
}

TEST(WriteFileAtomicWin32, ATargetHeldOpenWithoutSharingStaysUntouched) {
    test::TempDir dir;
    const std::wstring path = dir.file(L"busy.bin");
    test::writeFile(path, "previous");
    {
        win::ScopedHandle holder(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                             FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(holder.valid());
        EXPECT_FALSE(writeFileAtomic(path, test::bytesOf("replacement")));
        DWORD error = GetLastError();
        EXPECT_TRUE(error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION) << error;
        EXPECT_FALSE(fileExists(path + L".nvtmp"));
    }
    EXPECT_EQ(test::textOf(test::readFile(path)), "previous");
}

TEST(CreateFoldersWin32, StopsAtTheDriveRoot) {
    test::TempDir dir;
    // A drive-rooted path: the recursion must not try to create "X:" itself.
    std::wstring full(MAX_PATH, L'\0');
    DWORD n = GetFullPathNameW(dir.path().c_str(), DWORD(full.size()), full.data(), nullptr);
    ASSERT_GT(n, 2u);
    full.resize(n);
    ASSERT_EQ(full[1], L':');
    const std::wstring deep = pathJoin(pathJoin(pathJoin(full, L"one"), L"two"), L"three");
    EXPECT_TRUE(createFolders(deep));
    EXPECT_TRUE(folderExists(deep));
}

TEST(SystemErrorTextWin32, UnknownCodesGetTheFallbackText) {
    EXPECT_EQ(systemErrorText(0x2FFFFFFF), L"Hata kodu 805306367");
}

TEST(CodePage437Win32, TheBuiltInTableMatchesThePlatformConverter) {
    for (int b = 0x20; b < 0x100; ++b) {
        char byte = char(b);
        std::wstring platform = cp437ToWide(std::string_view(&byte, 1));
        ASSERT_EQ(platform.size(), 1u) << b;
        EXPECT_EQ(platform[0], cp437Char(uint8_t(b))) << "byte " << b;
    }
}

TEST(LowerWideWin32, FoldsBeyondAscii) {
    EXPECT_EQ(lowerWide(L"SKIN.ZIP \u00C7"), L"skin.zip \u00E7");
}

} // namespace
} // namespace nv
