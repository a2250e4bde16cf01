// The builder window in this process, under Wine's display: what the fields hold after a skin loads, what the
// chips, steppers, toggles and pages do, the locks while a build runs, and building from the window.

#include "core/files.h"
#include "core/paths.h"
#include "tests/support/test_support.h"
#include "ui/win32/app.h"

#include <gtest/gtest.h>

namespace nv::ui::win {
namespace {

// The sample skin, copied beside the test programs' fixtures.
std::wstring samplePath() {
    return pathJoin(test::testDataDir(), L"gece-mavisi");
}

// Handles what is queued for the window, until `done` holds or about ten seconds have passed.
template <typename Done> bool pumpUntil(Done done) {
    for (int i = 0; i < 1000 && !done(); ++i) {
        MSG msg;
        while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&msg);
            DispatchMessageW(&msg);
        }
        if (!done()) Sleep(10);
    }
    return done();
}

TEST(BuilderCommandLine, SnapNeedsAFolder) {
    struct Case {
        std::vector<const wchar_t*> args;
        bool snapshot;
        const wchar_t* folder;
        const wchar_t* skin;
    } cases[] = {
        {{L"b.exe"}, false, L"", L""},
        {{L"b.exe", L"--snap"}, false, L"", L""}, // the last argument: no effect
        {{L"b.exe", L"--SNAP", L"out"}, true, L"out", L""},
        {{L"b.exe", L"--snap", L"out", L"skin.zip"}, true, L"out", L"skin.zip"},
        {{L"b.exe", L"x", L"--Snap", L"o", L"s", L"extra"}, true, L"o", L"s"},
        {{L"b.exe", L"-snap", L"out"}, false, L"", L""},
    };
    for (const Case& c : cases) {
        std::vector<wchar_t*> argv;
        for (const wchar_t* a : c.args)
            argv.push_back(const_cast<wchar_t*>(a));
        const CommandLine line = parseCommandLine(static_cast<int>(argv.size()), argv.data());
        EXPECT_EQ(line.snapshot, c.snapshot) << c.args.size();
        EXPECT_EQ(line.snapFolder, c.folder);
        EXPECT_EQ(line.snapSkin, c.skin);
    }
}

// One window for the whole suite, in the order the tests are written: taking a shown window down costs Wine
// two seconds under a display without a window manager. Each test sets up the state it looks at.
class BuilderWindow : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        DeleteFileW(templatePath().c_str());
        createFolders(pathParent(templatePath()));
        app_ = new BuilderApp;
        app_->setTemplatePath(templatePath());
        app_->setSessionPath(L""); // a fresh window every run, whatever earlier runs left behind
        created_ = app_->createWindow();
    }
    static void TearDownTestSuite() {
        delete app_;
        app_ = nullptr;
        DeleteFileW(templatePath().c_str());
    }
    void SetUp() override {
        ASSERT_TRUE(created_);
        ASSERT_TRUE(IsWindow(app_->hwnd()));
        DeleteFileW(templatePath().c_str());
    }
    // Apart from the real template that the patcher's tests copy beside the test programs.
    static std::wstring templatePath() { return pathJoin(exeFolder(), L"ui_window\\Norvane.Template.exe"); }
    void loadSample() { ASSERT_TRUE(app_->loadSkin(samplePath(), false)) << app_->status(); }
    bool visible(int id) const { return IsWindowVisible(app_->fieldWindow(id)) != 0; }
    bool enabled(int id) const { return IsWindowEnabled(app_->fieldWindow(id)) != 0; }
    void setSigning(bool on) {
        if (app_->signing() != on) app_->runCommand(kItemToggleSigning, 0);
    }

    static BuilderApp* app_;
    static bool created_;
};
BuilderApp* BuilderWindow::app_ = nullptr;
bool BuilderWindow::created_ = false;

TEST_F(BuilderWindow, StartsOnTheSourceSectionAndWarnsOfAMissingTemplate) {
    EXPECT_EQ(app_->section(), kKaynak);
    EXPECT_EQ(app_->status(), L"Patcher şablonu (Norvane.Template.exe) bulunamadı — build.bat ile derleyin.");
    EXPECT_TRUE(app_->statusWarning());
    EXPECT_EQ(app_->fieldText(kFieldOutName), L"Kaldra.exe");
    EXPECT_EQ(app_->fieldText(kFieldSegment), L"4");
    EXPECT_EQ(app_->fieldText(kFieldTimestamp), kDefaultTimestampUrl);
    // Signing is off: its fields are locked.
    EXPECT_FALSE(enabled(kFieldPfx));
    EXPECT_FALSE(enabled(kFieldPassword));
    EXPECT_FALSE(enabled(kFieldTimestamp));
}

TEST_F(BuilderWindow, ALoadedSkinFillsTheFields) {
    loadSample();
    EXPECT_EQ(app_->fieldText(kFieldConfigUrl), L"https://patch.kaldra.example/launcher/config.xml");
    EXPECT_EQ(app_->fieldText(kFieldNewsUrl), L"https://www.kaldra.example/haberler/baslatici");
    EXPECT_EQ(app_->fieldText(kFieldFeedUrl), L"https://status.kaldra.example/launcher/feed.json");
    EXPECT_EQ(app_->fieldText(kFieldTitle), L"Kaldra Online");
    EXPECT_EQ(app_->fieldText(kFieldRunArgs), L"-lang tr");
    EXPECT_EQ(app_->connections(), 6);
    EXPECT_TRUE(app_->toggle(0));
    EXPECT_FALSE(app_->toggle(1));
    // One field per button that opens a link, in the skin's order; the locale key is resolved.
    const wchar_t* links[] = {L"https://www.kaldra.example/haberler/yenilikler",
                              L"https://www.kaldra.example/", L"https://forum.kaldra.example/",
                              L"https://discord.kaldra.example/davet", L"https://destek.kaldra.example/"};
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(app_->fieldText(kFieldLinkFirst + i), links[i]);
    EXPECT_EQ(app_->fieldWindow(kFieldLinkFirst + 5), nullptr);

    // A second load replaces the link fields instead of adding to them.
    loadSample();
    EXPECT_EQ(app_->fieldWindow(kFieldLinkFirst + 5), nullptr);
    EXPECT_FALSE(app_->loadSkin(L"Z:\\yok\\skin.zip", false));
    EXPECT_FALSE(app_->skinLoaded());
    EXPECT_TRUE(app_->statusWarning());
    EXPECT_EQ(app_->fieldWindow(kFieldLinkFirst), nullptr);
}

TEST_F(BuilderWindow, ChipsSteppersAndToggles) {
    struct Step {
        const wchar_t* text;
        int item;
        const wchar_t* expected;
    } steps[] = {{L"abc", kItemSegmentMinus, L"3"},
                 {L"abc", kItemSegmentPlus, L"5"},
                 {L"0", kItemSegmentMinus, L"1"},
                 {L"64", kItemSegmentPlus, L"64"},
                 {L" 9 ", kItemSegmentPlus, L"10"}};
    for (const Step& s : steps) {
        app_->setFieldText(kFieldSegment, s.text);
        app_->runCommand(s.item, 0);
        EXPECT_EQ(app_->fieldText(kFieldSegment), s.expected) << s.text;
    }
    app_->runCommand(kItemConnectionChip, 3);
    EXPECT_EQ(app_->connections(), 3);
    app_->runCommand(kItemConnectionChip, 12);
    EXPECT_EQ(app_->connections(), 3);
    for (int i = 0; i < 4; ++i) {
        const bool before = app_->toggle(i);
        app_->runCommand(kItemToggleCloseOnStart + i, 0);
        EXPECT_NE(app_->toggle(i), before) << i;
    }
}

// Clicks go through the window's own hit test: down and up on the same item run it.
TEST_F(BuilderWindow, ClicksRunTheItemUnderThePointer) {
    auto click = [&](BlockKind kind, int sub) {
        for (const Block& b : app_->layout().blocks) {
            if (b.kind != kind || b.sub != sub) continue;
            const LPARAM at = MAKELPARAM((b.rect.left + b.rect.right) / 2, (b.rect.top + b.rect.bottom) / 2);
            SendMessageW(app_->hwnd(), WM_LBUTTONDOWN, MK_LBUTTON, at);
            SendMessageW(app_->hwnd(), WM_LBUTTONUP, 0, at);
            return true;
        }
        return false;
    };
    app_->runCommand(kItemSection, kKaynak);
    ASSERT_TRUE(click(BlockKind::NavEntry, kDavranis));
    EXPECT_EQ(app_->section(), kDavranis);
    ASSERT_TRUE(click(BlockKind::Chip, 2));
    EXPECT_EQ(app_->connections(), 2);
    // Pressed on one item and let go over another: nothing runs.
    const Block* chip = nullptr;
    const Block* nav = nullptr;
    for (const Block& b : app_->layout().blocks) {
        if (b.kind == BlockKind::Chip && b.sub == 7) chip = &b;
        if (b.kind == BlockKind::NavEntry && b.sub == kKimlik) nav = &b;
    }
    ASSERT_TRUE(chip && nav);
    SendMessageW(app_->hwnd(), WM_LBUTTONDOWN, MK_LBUTTON,
                 MAKELPARAM(chip->rect.left + 2, chip->rect.top + 2));
    SendMessageW(app_->hwnd(), WM_LBUTTONUP, 0, MAKELPARAM(nav->rect.left + 2, nav->rect.top + 2));
    EXPECT_EQ(app_->connections(), 2);
    EXPECT_EQ(app_->section(), kDavranis);
}

TEST_F(BuilderWindow, SigningAndBuildingLockFields) {
    setSigning(false);
    app_->runCommand(kItemToggleSigning, 0);
    EXPECT_TRUE(app_->signing());
    EXPECT_TRUE(enabled(kFieldPfx) && enabled(kFieldPassword) && enabled(kFieldTimestamp));

    app_->setBuilding(true);
    for (int id : {kFieldConfigUrl, kFieldOutPath, kFieldPfx, kFieldSegment})
        EXPECT_FALSE(enabled(id)) << id;
    // A build holds the window open.
    SendMessageW(app_->hwnd(), WM_CLOSE, 0, 0);
    EXPECT_TRUE(IsWindow(app_->hwnd()));
    EXPECT_EQ(app_->status(), L"Oluşturma sürüyor — bitmesini bekleyin.");
    app_->setBuilding(false);
    EXPECT_TRUE(enabled(kFieldConfigUrl) && enabled(kFieldPfx));

    app_->runCommand(kItemToggleSigning, 0);
    EXPECT_FALSE(enabled(kFieldPfx));
}

TEST_F(BuilderWindow, OnlyTheCurrentSectionsFieldsShow) {
    loadSample();
    app_->runCommand(kItemSection, kKaynak);
    EXPECT_FALSE(visible(kFieldConfigUrl));
    app_->runCommand(kItemSection, kKimlik);
    EXPECT_TRUE(visible(kFieldOutName));
    EXPECT_FALSE(visible(kFieldConfigUrl));
    EXPECT_FALSE(visible(kFieldOutPath));
    app_->runCommand(kItemSection, kBaglantilar);
    EXPECT_TRUE(visible(kFieldConfigUrl));
    EXPECT_TRUE(visible(kFieldLinkFirst));
    EXPECT_FALSE(visible(kFieldOutName));
}

TEST_F(BuilderWindow, LinkPagesTurnByItemsAndWheelWithoutWrapping) {
    loadSample();
    app_->runCommand(kItemSection, kBaglantilar);
    const int pages = app_->linkPages();
    ASSERT_GE(pages, 2); // five links do not fit on one page of the sample's window
    app_->runCommand(kItemLinkPagePrev, 0);
    EXPECT_EQ(app_->linkPage(), 0);
    for (int i = 1; i < pages + 2; ++i)
        app_->runCommand(kItemLinkPageNext, 0);
    EXPECT_EQ(app_->linkPage(), pages - 1);
    EXPECT_TRUE(visible(kFieldLinkFirst + 4));
    EXPECT_FALSE(visible(kFieldLinkFirst));

    SendMessageW(app_->hwnd(), WM_MOUSEWHEEL, MAKEWPARAM(0, WHEEL_DELTA), 0);
    EXPECT_EQ(app_->linkPage(), pages - 2);
    SendMessageW(app_->hwnd(), WM_MOUSEWHEEL, MAKEWPARAM(0, static_cast<WORD>(-WHEEL_DELTA)), 0);
    SendMessageW(app_->hwnd(), WM_MOUSEWHEEL, MAKEWPARAM(0, static_cast<WORD>(-WHEEL_DELTA)), 0);
    EXPECT_EQ(app_->linkPage(), pages - 1);
    // Outside the links section the wheel leaves the pages alone.
    app_->runCommand(kItemSection, kDavranis);
    SendMessageW(app_->hwnd(), WM_MOUSEWHEEL, MAKEWPARAM(0, WHEEL_DELTA), 0);
    EXPECT_EQ(app_->linkPage(), pages - 1);
}

TEST_F(BuilderWindow, WorkerLogLinesArriveThroughMessages) {
    const size_t before = app_->buildLog().size();
    PostMessageW(app_->hwnd(), kMsgLogLine, 0, reinterpret_cast<LPARAM>(new std::wstring(L"bir\r\niki")));
    PostMessageW(app_->hwnd(), kMsgLogLine, 0, 0); // nothing to append
    ASSERT_TRUE(pumpUntil([&] { return app_->buildLog().size() == before + 2; }));
    EXPECT_EQ(app_->buildLog().lines()[before].text, L"bir");
    EXPECT_EQ(app_->buildLog().lines()[before + 1].text, L"iki");
    EXPECT_EQ(app_->buildLog().lines()[before + 1].level, 0);
}

TEST_F(BuilderWindow, StartChecksStopABuildWithTheirMessage) {
    setSigning(false);
    app_->loadSkin(L"Z:\\yok\\skin.zip", false);
    app_->runCommand(kItemSection, kDerleme);
    const size_t before = app_->buildLog().size();
    app_->runCommand(kItemBuildPage, 0);
    EXPECT_EQ(app_->status(), L"Önce bir skin yükleyin.");
    EXPECT_EQ(app_->section(), kKaynak);
    EXPECT_EQ(app_->buildLog().size(), before);

    loadSample();
    test::TempDir dir;
    app_->setFieldText(kFieldOutPath, dir.file(L"Kaldra.exe"));
    app_->runCommand(kItemBuildSidebar, 0);
    EXPECT_EQ(app_->section(), kDerleme);
    EXPECT_EQ(app_->status().rfind(L"Patcher şablonu bulunamadı: ", 0), 0u) << app_->status();
    ASSERT_EQ(app_->buildLog().size(), before + 1);
    EXPECT_EQ(app_->buildLog().lines().back().level, 3);

    test::writeFile(templatePath(), "MZ");
    struct Case {
        std::wstring output;
        bool signing;
        std::wstring message;
    } cases[] = {
        {dir.file(L"Kaldra.exe.bak"), false, L"Çıktı dosyası .exe ile bitmeli."},
        {dir.file(L"yok\\Kaldra.exe"), false, L"Çıktı klasörü bulunamadı: " + dir.file(L"yok")},
        {dir.file(L"Kaldra.EXE"), true, L"İmza açık ama sertifika (.pfx) seçilmedi."},
    };
    for (const Case& c : cases) {
        setSigning(c.signing);
        app_->setFieldText(kFieldOutPath, c.output);
        app_->runCommand(kItemBuildPage, 0);
        EXPECT_EQ(app_->status(), c.message);
        EXPECT_TRUE(app_->statusWarning());
        EXPECT_FALSE(app_->building());
    }
    setSigning(false);
}

// A whole build from the window, with this test program standing in for the patcher template (any executable
// takes the resources).
TEST_F(BuilderWindow, BuildsAPatcherOnTheWorkerThread) {
    ASSERT_TRUE(CopyFileW(exePath().c_str(), templatePath().c_str(), FALSE));
    setSigning(false);
    loadSample();
    test::TempDir dir;
    const std::wstring output = dir.file(L"Kaldra.exe");
    app_->setFieldText(kFieldOutPath, output);
    app_->runCommand(kItemBuildPage, 0);
    EXPECT_TRUE(app_->building());
    EXPECT_FALSE(IsWindowEnabled(app_->fieldWindow(kFieldConfigUrl)));
    // Closing is refused while the worker runs.
    SendMessageW(app_->hwnd(), WM_CLOSE, 0, 0);
    EXPECT_TRUE(IsWindow(app_->hwnd()));
    ASSERT_TRUE(pumpUntil([&] { return !app_->building(); }));

    EXPECT_TRUE(app_->lastBuildSucceeded()) << app_->lastResult().message;
    EXPECT_TRUE(fileExists(output));
    EXPECT_EQ(app_->status(), L"Patcher hazır: Kaldra.exe");
    const auto& all = app_->buildLog().lines();
    size_t start = all.size();
    while (start > 0 && all[start - 1].text.rfind(L"Oluşturma başladı", 0) != 0)
        --start;
    ASSERT_GT(start, 0u);
    const std::vector<LogLine> lines(all.begin() + static_cast<long>(start) - 1, all.end());
    ASSERT_GE(lines.size(), 4u);
    EXPECT_EQ(lines.front().text, L"Oluşturma başladı → " + output);
    EXPECT_EQ(lines.front().level, 1);
    // The worker's lines come before the outcome, which closes the log.
    EXPECT_EQ(lines[lines.size() - 2].text, L"Tamamlandı → " + output);
    EXPECT_EQ(lines.back().text.rfind(L"CRC32: ", 0), 0u);
    EXPECT_NE(lines.back().text.find(L"    Boyut: "), std::wstring::npos);
    for (size_t i = 1; i + 2 < lines.size(); ++i)
        EXPECT_EQ(lines[i].level, 0) << i;
    EXPECT_TRUE(IsWindowEnabled(app_->fieldWindow(kFieldConfigUrl)));

    // Once the build is over the window closes.
    SendMessageW(app_->hwnd(), WM_CLOSE, 0, 0);
    EXPECT_FALSE(IsWindow(app_->hwnd()));
}

} // namespace
} // namespace nv::ui::win
