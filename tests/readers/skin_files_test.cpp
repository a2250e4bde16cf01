#include "core/files.h"
#include "core/paths.h"
#include "readers/skin_files.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace nv {
namespace {

std::vector<std::string> namesOf(const SkinFileSet& set) {
    std::vector<std::string> names;
    for (const SkinEntry& e : set.entries)
        names.push_back(e.name);
    return names;
}

TEST(SkinFileName, KeepsOnlySkinFilesUnderTheirBareLowerCaseName) {
    // A capital G with breve stays as it is; only ASCII letters fold.
    const std::pair<const wchar_t*, const char*> kept[] = {{L"C:\\skins\\dark\\Skin.XML", "skin.xml"},
                                                           {L"images/Logo.PNG", "logo.png"},
                                                           {L"a.JPEG", "a.jpeg"},
                                                           {L"norvane.INI", "norvane.ini"},
                                                           {L"\u011Eemi.PNG", "\xC4\x9E\x65mi.png"}};
    for (const auto& [path, name] : kept)
        EXPECT_EQ(skinFileName(path), name) << test::fsPath(path).string();
    for (const wchar_t* path : {L"photo.jpeg.bak", L"readme.md", L"Thumbs.db", L"DESKTOP.INI", L".DS_Store",
                                L"._skin.xml", L"folder/", L"", L"png"})
        EXPECT_EQ(skinFileName(path), "") << test::fsPath(path).string();
}

TEST(AddSkinFile, RefusalsCarryTheirMessagesAndLeaveTheSetAlone) {
    test::TempDir dir;
    test::writeFile(dir.file(L"Read Me.MD"), "x");
    test::writeFile(dir.file(L"exact.bmp"), Bytes(SkinFileSet::kMaxFileBytes, 7));
    test::writeFile(dir.file(L"over.bmp"), Bytes(SkinFileSet::kMaxFileBytes + 1, 7));
    struct Case {
        const wchar_t* name;
        std::wstring error; // empty: accepted
    } cases[] = {
        {L"Read Me.MD", L"Desteklenmeyen dosya: Read Me.MD"},
        {L"missing.png", L"Okunamadi: " + dir.file(L"missing.png")},
        {L"exact.bmp", L""}, // the per-file limit is inclusive
        {L"over.bmp", L"Okunamadi: " + dir.file(L"over.bmp")},
    };
    SkinFileSet set;
    for (const Case& c : cases) {
        std::wstring error;
        EXPECT_EQ(addSkinFile(set, dir.file(c.name), &error), c.error.empty())
            << test::fsPath(c.name).string();
        EXPECT_EQ(error, c.error);
    }
    EXPECT_EQ(namesOf(set), std::vector<std::string>{"exact.bmp"});
}

TEST(AddSkinFile, WholeSetLimitCountsTheOldBytesOfAReplacedEntry) {
    test::TempDir dir;
    constexpr size_t MiB = 1 << 20;
    SkinFileSet set;
    for (int i = 0; i < 2; ++i)
        set.putFile("part" + std::to_string(i) + ".bmp", Bytes(30 * MiB, 1));

    // 60 MiB held: 5 MiB more is refused and the set stays as it was.
    test::writeFile(dir.file(L"five.bmp"), Bytes(5 * MiB, 2));
    std::wstring error;
    EXPECT_FALSE(addSkinFile(set, dir.file(L"five.bmp"), &error));
    EXPECT_EQ(error, L"Skin paketi 64 MB sinirini asiyor.");
    EXPECT_EQ(set.totalBytes(), 60 * MiB);
    EXPECT_EQ(set.entries.size(), 2u);

    // Exactly 64 MiB is accepted.
    test::writeFile(dir.file(L"four.bmp"), Bytes(4 * MiB, 3));
    EXPECT_TRUE(addSkinFile(set, dir.file(L"four.bmp"), &error));
    EXPECT_EQ(set.totalBytes(), SkinFileSet::kMaxTotalBytes);

    // Replacing a file of the same name still counts the bytes it replaces.
    test::writeFile(dir.file(L"FOUR.bmp"), Bytes(1, 4));
    EXPECT_FALSE(addSkinFile(set, dir.file(L"FOUR.bmp"), &error));
}

TEST(AddSkinFolder, KeepsTheFirstFailureAndGoesOn) {
    test::TempDir dir;
    test::writeFile(dir.file(L"a.png"), "a");
    test::writeFile(dir.file(L"big1.bmp"), Bytes(SkinFileSet::kMaxFileBytes + 1, 0));
    test::writeFile(dir.file(L"big2.bmp"), Bytes(SkinFileSet::kMaxFileBytes + 1, 0));
    test::writeFile(dir.file(L"z.png"), "z");

    SkinFileSet set;
    int added = 0;
    std::wstring error;
    ASSERT_TRUE(addSkinFolder(set, dir.path(), &added, &error));
    EXPECT_EQ(added, 2);
    auto names = namesOf(set);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"a.png", "z.png"}));
    EXPECT_EQ(error.rfind(L"Okunamadi: ", 0), 0u);

    // A message that is already there is not overwritten.
    std::wstring earlier = L"earlier";
    SkinFileSet again;
    addSkinFolder(again, dir.path(), nullptr, &earlier);
    EXPECT_EQ(earlier, L"earlier");

    EXPECT_FALSE(addSkinFolder(again, dir.file(L"gone"), &added, &error));
    EXPECT_EQ(error, L"Klasor okunamadi: " + dir.file(L"gone"));
    EXPECT_EQ(added, 0);
}

TEST(SkinSetFiller, FillsTheSetExactlyAsPutFileDoes) {
    // A set that already holds files (one of them named in capitals, as a package read back keeps it), then
    // new names, repeated names in other cases, and a repeat that shrinks an entry: putFile is the referee.
    SkinFileSet start;
    start.putFile("skin.xml", Bytes(5));
    start.entries.push_back({"Logo.PNG", Bytes(7)});
    const std::vector<std::pair<std::string, size_t>> puts = {{"a.png", 3}, {"SKIN.xml", 9}, {"logo.png", 2},
                                                              {"A.PNG", 1}, {"b.txt", 0},    {"Logo.PNG", 4}};
    SkinFileSet byPutFile = start, byFiller = start;
    SkinSetFiller filler(byFiller);
    for (const auto& [name, size] : puts) {
        byPutFile.putFile(name, Bytes(size, uint8_t(name[0])));
        filler.putFile(name, Bytes(size, uint8_t(name[0])));
        EXPECT_EQ(filler.totalBytes(), byPutFile.totalBytes()) << name;
    }
    ASSERT_EQ(byFiller.entries.size(), byPutFile.entries.size());
    for (size_t i = 0; i < byPutFile.entries.size(); ++i) {
        EXPECT_EQ(byFiller.entries[i].name, byPutFile.entries[i].name);
        EXPECT_EQ(byFiller.entries[i].data, byPutFile.entries[i].data);
    }
}

} // namespace
} // namespace nv
