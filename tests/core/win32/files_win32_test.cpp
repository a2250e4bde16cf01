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

TEST(WriteFileAtomicWin32, AReadOnlyTargetIsReplacedOrLeftExactlyAsItWas) {
    const DWORD readOnly = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE;
    const struct {
        DWORD attributes;
        bool heldOpen; // without sharing, so that the move fails
    } cases[] = {{readOnly, false}, {readOnly, true}, {FILE_ATTRIBUTE_ARCHIVE, true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message()
                     << "attributes " << c.attributes << (c.heldOpen ? ", held open" : ""));
        test::TempDir dir;
        const std::wstring path = dir.file(L"old.ini");
        test::writeFile(path, "old");
        ASSERT_TRUE(SetFileAttributesW(path.c_str(), c.attributes));
        win::ScopedHandle holder(c.heldOpen ? CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr,
                                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)
                                            : nullptr);
        ASSERT_EQ(holder.valid(), c.heldOpen);

        const bool written = writeFileAtomic(path, test::bytesOf("new"));
        const DWORD error = GetLastError();
        holder.close();
        EXPECT_EQ(written, !c.heldOpen);
        EXPECT_FALSE(fileExists(path + L".nvtmp"));
        EXPECT_EQ(test::textOf(test::readFile(path)), written ? "new" : "old");
        // A replaced file is writable; one that could not be replaced keeps every attribute it had, and the
        // caller hears why the move failed, not what the clean-up did.
        EXPECT_EQ(GetFileAttributesW(path.c_str()),
                  written ? c.attributes & ~DWORD(FILE_ATTRIBUTE_READONLY) : c.attributes);
        if (!written) {
            EXPECT_TRUE(error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION) << error;
        }
    }
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
