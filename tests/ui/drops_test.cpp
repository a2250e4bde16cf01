// Dropping files on the window: which path wins, and what a drop of single files reports.

#include "tests/support/image_files.h"
#include "tests/support/test_support.h"
#include "ui/drops.h"

#include <gtest/gtest.h>

namespace nv::ui {
namespace {

TEST(Drops, WhichPathWins) {
    test::TempDir dir;
    const std::wstring folder = dir.file(L"klasor");
    ASSERT_TRUE(createFolders(folder));
    const std::wstring png = dir.file(L"btn_up.png"), zip = dir.file(L"gece.zip");
    using A = DropPlan::Action;
    const struct {
        const char* what;
        std::vector<std::wstring> paths;
        bool building;
        A action;
        std::wstring source;
    } cases[] = {
        {"a png and a zip: the zip loads", {png, zip}, false, A::LoadSource, zip},
        {"a png and a folder: the folder loads", {png, folder, zip}, false, A::LoadSource, folder},
        {"the name decides", {png, dir.file(L"YOK.ZIP")}, false, A::LoadSource, dir.file(L"YOK.ZIP")},
        {"only pictures join the package", {png, dir.file(L"a.jpg")}, false, A::AddFiles, L""},
        {"nothing dropped", {}, false, A::Ignore, L""},
        {"during a build nothing happens", {png, zip}, true, A::Ignore, L""},
    };
    for (const auto& c : cases) {
        const DropPlan plan = planDrop(c.paths, c.building);
        EXPECT_EQ(plan.action, c.action) << c.what;
        EXPECT_EQ(plan.source, c.source) << c.what;
    }
}

// That a dropped picture replaces its namesake in the working set is the workspace's case; here what the
// window is told.
TEST(Drops, WhatADropOfFilesReports) {
    test::TempDir dir;
    test::writeFile(dir.file(L"a.png"), test::makePng(2, 2, 0xFF00FF00));
    test::writeFile(dir.file(L"b.png"), test::makePng(2, 2, 0xFF00FF00));
    SkinWorkspace ws;
    DropReport report = addDroppedFiles(ws, {dir.file(L"a.png"), dir.file(L"yok.png"), dir.file(L"b.png")});
    EXPECT_EQ(report.count, 2);
    EXPECT_FALSE(report.skinLoaded);
    EXPECT_EQ(report.status, L"Henüz skin.xml yok; önce geçerli bir skin .zip ya da klasörü bırakın.");
    ASSERT_EQ(report.log.size(), 2u);
    EXPECT_EQ(report.log[0].text, L"Pakete eklenen/değiştirilen dosya: 2");
    EXPECT_EQ(report.log[1].text.rfind(L"Not: ", 0), 0u) << "the unreadable file is noted";
    EXPECT_EQ(report.log[1].level, 2);

    // Its skin.xml dropped after them: now a skin, and only the count is logged.
    test::writeFile(dir.file(L"skin.xml"), "<skin/>");
    report = addDroppedFiles(ws, {dir.file(L"skin.xml")});
    EXPECT_TRUE(report.skinLoaded);
    EXPECT_EQ(report.status, L"1 dosya pakete eklendi.");
    ASSERT_EQ(report.log.size(), 1u);
    EXPECT_EQ(report.log[0].text, L"Pakete eklenen/değiştirilen dosya: 1");
}

} // namespace
} // namespace nv::ui
