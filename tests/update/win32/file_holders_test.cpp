// The programs holding files, through the Restart Manager. Wine's answers nobody, so there the test checks
// that the question is asked and answered (the caller's "unknown program" case); on Windows the holder is
// this very process and must be named.

#include "update/win32/file_holders.h"

#include "core/text.h"
#include "core/win32/scoped_win.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace nv::update {
namespace {

TEST(FileHolders, AHeldFileIsAnsweredAndAnyHolderNamed) {
    test::TempDir dir;
    std::wstring held = dir.file(L"game.pak");
    test::writeFile(held, "data");
    win::ScopedHandle handle(
        CreateFileW(held.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(handle.valid());

    std::vector<FileHolder> holders;
    std::wstring error;
    ASSERT_TRUE(findFileHolders({held, dir.file(L"not-there.pak")}, holders, &error)) << wideToUtf8(error);
    bool self = false;
    for (const FileHolder& h : holders) {
        EXPECT_FALSE(h.name.empty());
        if (h.processId == GetCurrentProcessId()) {
            self = true;
            EXPECT_FALSE(h.systemService);
        }
    }
    EXPECT_TRUE(holders.empty() || self);

    handle.close();
    ASSERT_TRUE(findFileHolders({held}, holders, &error)) << wideToUtf8(error);
    for (const FileHolder& h : holders)
        EXPECT_NE(h.processId, GetCurrentProcessId());
    ASSERT_TRUE(findFileHolders({}, holders, &error));
    EXPECT_TRUE(holders.empty());
}

} // namespace
} // namespace nv::update
