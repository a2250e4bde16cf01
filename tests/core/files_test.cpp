#include "core/files.h"
#include "core/paths.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

TEST(ReadFileBytes, CapEqualToTheSizeSucceedsOneSmallerFailsWithoutData) {
    test::TempDir dir;
    const std::wstring path = dir.file(L"f.bin");
    Bytes data = test::noiseBytes(1000, 1);
    test::writeFile(path, data);

    Bytes out = {1, 2, 3};
    ASSERT_TRUE(readFileBytes(path, out, 1000));
    EXPECT_EQ(out, data);
    EXPECT_FALSE(readFileBytes(path, out, 999));
    EXPECT_TRUE(out.empty());
    EXPECT_FALSE(readFileBytes(dir.file(L"missing"), out, 1000));
    EXPECT_FALSE(readFileBytes(dir.path(), out, 1000)) << "a folder is not a file";

    test::writeFile(dir.file(L"empty"), Bytes{});
    out = {9};
    EXPECT_TRUE(readFileBytes(dir.file(L"empty"), out, 0));
    EXPECT_TRUE(out.empty());
}

TEST(WriteFileAtomic, ReplacesTheTargetAndLeavesNoTemporaryFile) {
    test::TempDir dir;
    const std::wstring path = dir.file(L"session.ini");
    ASSERT_TRUE(writeFileAtomic(path, test::bytesOf("first")));
    ASSERT_TRUE(writeFileAtomic(path, test::bytesOf("second, longer")));
    EXPECT_EQ(test::textOf(test::readFile(path)), "second, longer");
    EXPECT_FALSE(fileExists(path + L".nvtmp"));
    ASSERT_TRUE(writeFileAtomic(path, Bytes{}));
    EXPECT_TRUE(test::readFile(path).empty());
}

TEST(WriteFileAtomic, AFailedWriteLeavesTheOldTargetNoTemporaryFileAndItsOwnError) {
    test::TempDir dir;
    // Into a folder that does not exist, over a folder standing in the target's place, and from memory that
    // cannot be read, which fails the write itself after the temporary file exists.
    const std::wstring missing = pathJoin(dir.file(L"no-such-folder"), L"x.bin");
    const std::wstring taken = dir.file(L"taken");
    const std::wstring kept = dir.file(L"kept.bin");
    test::writeFile(pathJoin(taken, L"inside.txt"), "keep");
    test::writeFile(kept, "keep");
    test::UnreadablePage unreadable;
    const struct {
        std::wstring target;
        const void* data;
        uint32_t error; // 0: any
    } cases[] = {
        {missing, "x", 0},
        {taken, "x", 0},
        {kept, unreadable.data(), unreadable.readError()},
    };
    ASSERT_NE(unreadable.readError(), 0u);
    for (const auto& c : cases) {
        EXPECT_FALSE(writeFileAtomic(c.target, c.data, 1));
        const uint32_t error = lastSystemError();
        EXPECT_FALSE(fileExists(c.target + L".nvtmp"));
        if (c.error) {
            EXPECT_EQ(error, c.error) << "the clean-up's own calls must not replace the cause";
        }
    }
    EXPECT_FALSE(fileExists(missing));
    EXPECT_EQ(test::textOf(test::readFile(pathJoin(taken, L"inside.txt"))), "keep");
    EXPECT_EQ(test::textOf(test::readFile(kept)), "keep");
}

TEST(CreateFolders, CreatesEveryMissingLevel) {
    test::TempDir dir;
    const std::wstring deep = pathJoin(pathJoin(dir.file(L"a"), L"b"), L"c");
    EXPECT_TRUE(createFolders(deep));
    EXPECT_TRUE(folderExists(deep));
    EXPECT_TRUE(createFolders(deep)) << "an existing folder succeeds";
    EXPECT_TRUE(createFolders(L""));
    EXPECT_FALSE(fileExists(deep)) << "a folder is not a file";

    test::writeFile(dir.file(L"file"), "x");
    EXPECT_FALSE(createFolders(pathJoin(dir.file(L"file"), L"sub"))) << "a file stands in the way";
}

TEST(SystemErrorText, EndsWithTheCodeInParentheses) {
    std::wstring text = systemErrorText(2);
    ASSERT_GE(text.size(), 4u);
    EXPECT_EQ(text.substr(text.size() - 4), L" (2)");
}

} // namespace
} // namespace nv
