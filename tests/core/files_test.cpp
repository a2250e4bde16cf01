#include "core/files.h"
#include "core/paths.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>

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

TEST(WriteFileAtomic, AFailedWriteLeavesTheOldTargetAndNoTemporaryFile) {
    test::TempDir dir;
    // Into a folder that does not exist, and over a folder standing in the target's place.
    const std::wstring missing = pathJoin(dir.file(L"no-such-folder"), L"x.bin");
    const std::wstring taken = dir.file(L"taken");
    test::writeFile(pathJoin(taken, L"inside.txt"), "keep");
    for (const std::wstring& target : {missing, taken}) {
        EXPECT_FALSE(writeFileAtomic(target, test::bytesOf("x")));
        EXPECT_FALSE(fileExists(target + L".nvtmp"));
    }
    EXPECT_FALSE(fileExists(missing));
    EXPECT_EQ(test::textOf(test::readFile(pathJoin(taken, L"inside.txt"))), "keep");
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

TEST(ListFolder, YieldsFilesAndFoldersButNotDotEntries) {
    test::TempDir dir;
    test::writeFile(dir.file(L"one.png"), "1");
    test::writeFile(dir.file(L"\u011Fzel.xml"), "2");
    ASSERT_TRUE(createFolders(dir.file(L"img")));
    std::vector<FolderEntry> entries;
    ASSERT_TRUE(listFolder(dir.path(), entries));
    std::vector<std::pair<std::wstring, bool>> seen;
    for (const auto& e : entries)
        seen.emplace_back(e.name, e.isFolder);
    std::sort(seen.begin(), seen.end());
    std::vector<std::pair<std::wstring, bool>> expected = {
        {L"img", true}, {L"one.png", false}, {L"\u011Fzel.xml", false}};
    EXPECT_EQ(seen, expected);
    EXPECT_FALSE(listFolder(dir.file(L"missing"), entries));
}

TEST(SystemErrorText, EndsWithTheCodeInParentheses) {
    std::wstring text = systemErrorText(2);
    ASSERT_GE(text.size(), 4u);
    EXPECT_EQ(text.substr(text.size() - 4), L" (2)");
}

} // namespace
} // namespace nv
