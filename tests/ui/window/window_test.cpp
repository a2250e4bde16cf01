// The builder window in this process, under Wine's display: what the fields hold after a skin loads, what the
// chips, steppers, toggles and pages do, the locks while a build runs, and building from the window.

#include "core/crc32.h"
#include "tests/ui/window/builder_window.h"

#include <algorithm>
#include <cwchar>

namespace nv::ui::win {
namespace {

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

std::wstring clipboardText() {
    if (!OpenClipboard(nullptr)) return L"<kapalı>";
    std::wstring text;
    if (HANDLE data = GetClipboardData(CF_UNICODETEXT)) {
        if (const auto* chars = static_cast<const wchar_t*>(GlobalLock(data))) {
            text = chars;
            GlobalUnlock(data);
        }
    }
    CloseClipboard();
    return text;
}

TEST(BuilderCommandLine, SnapNeedsAFolder) {
    struct Case {
        std::vector<const wchar_t*> args;
        bool snapshot;
        const wchar_t* folder;
        const wchar_t* skin;
    } cases[] = {
        {{L"b.exe", L"--snap"}, false, L"", L""}, // the last argument: no effect
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

class BuilderWindow : public BuilderWindowTest {};

TEST_F(BuilderWindow, StartsOnTheSourceSectionAndWarnsOfAMissingTemplate) {
    EXPECT_EQ(app_->section(), kKaynak);
    EXPECT_EQ(app_->status(), L"Patcher şablonu (Norvane.Template.exe) bulunamadı — build.bat ile derleyin.");
    EXPECT_TRUE(app_->statusWarning());
    // Signing is off: its fields are locked.
    EXPECT_FALSE(enabled(kFieldPfx) || enabled(kFieldPassword) || enabled(kFieldTimestamp));
}

TEST_F(BuilderWindow, ALoadedSkinFillsTheFields) {
    loadSample();
    EXPECT_EQ(app_->fields().text(kFieldConfigUrl), L"https://patch.kaldra.example/launcher/config.xml");
    EXPECT_EQ(app_->fields().text(kFieldNewsUrl), L"https://www.kaldra.example/haberler/baslatici");
    EXPECT_EQ(app_->fields().text(kFieldFeedUrl), L"https://status.kaldra.example/launcher/feed.json");
    EXPECT_EQ(app_->fields().text(kFieldTitle), L"Kaldra Online");
    EXPECT_EQ(app_->fields().text(kFieldRunArgs), L"-lang tr");
    EXPECT_EQ(app_->recipe().settings.connections, 6);
    EXPECT_TRUE(app_->recipe().settings.closeOnStart);
    EXPECT_FALSE(app_->recipe().settings.autoStart);
    // One field per button that opens a link, in the skin's order; a locale key is resolved.
    EXPECT_EQ(app_->fields().text(kFieldLinkFirst), L"https://www.kaldra.example/haberler/yenilikler");
    EXPECT_EQ(app_->fields().text(kFieldLinkFirst + 4), L"https://destek.kaldra.example/");
    EXPECT_EQ(app_->fields().window(kFieldLinkFirst + 5), nullptr);

    // A second load replaces the link fields instead of adding to them; a failed one removes them.
    loadSample();
    EXPECT_EQ(app_->fields().window(kFieldLinkFirst + 5), nullptr);
    EXPECT_FALSE(app_->loadSkin(L"Z:\\yok\\skin.zip", false));
    EXPECT_FALSE(app_->skinLoaded());
    EXPECT_TRUE(app_->statusWarning());
    EXPECT_EQ(app_->fields().window(kFieldLinkFirst), nullptr);
}

TEST_F(BuilderWindow, ChipsSteppersAndToggles) {
    // The stepper reads what the field holds, whatever it is, and writes the step back.
    app_->fields().setText(kFieldSegment, L"abc");
    app_->runCommand(kItemSegmentMinus, 0);
    EXPECT_EQ(app_->fields().text(kFieldSegment), L"3");
    app_->runCommand(kItemSegmentPlus, 0);
    EXPECT_EQ(app_->fields().text(kFieldSegment), L"4");

    app_->runCommand(kItemConnectionChip, 3);
    EXPECT_EQ(app_->recipe().settings.connections, 3);
    app_->runCommand(kItemConnectionChip, 12);
    EXPECT_EQ(app_->recipe().settings.connections, 3);
    for (const ToggleSpec& toggle : behaviourToggles()) {
        const RecipeKey& key = *findKey(toggle.key);
        const bool before = keyOn(key, app_->recipe());
        app_->runCommand(toggle.item, 0);
        EXPECT_NE(keyOn(key, app_->recipe()), before) << toggle.item;
    }
}

// Clicks go through the window's own hit test: down and up on the same item run it.
TEST_F(BuilderWindow, ClicksRunTheItemUnderThePointer) {
    auto block = [&](BlockKind kind, int sub) -> const Block* {
        for (const Block& b : app_->layout().blocks)
            if (b.kind == kind && b.sub == sub) return &b;
        return nullptr;
    };
    auto press = [&](const Block* from, const Block* to) {
        const LPARAM down = MAKELPARAM(from->rect.left + 2, from->rect.top + 2);
        const LPARAM up = MAKELPARAM(to->rect.left + 2, to->rect.top + 2);
        SendMessageW(app_->hwnd(), WM_LBUTTONDOWN, MK_LBUTTON, down);
        SendMessageW(app_->hwnd(), WM_LBUTTONUP, 0, up);
    };
    app_->runCommand(kItemSection, kKaynak);
    ASSERT_TRUE(block(BlockKind::NavEntry, kDavranis));
    press(block(BlockKind::NavEntry, kDavranis), block(BlockKind::NavEntry, kDavranis));
    EXPECT_EQ(app_->section(), kDavranis);
    ASSERT_TRUE(block(BlockKind::Chip, 2) && block(BlockKind::Chip, 7) &&
                block(BlockKind::NavEntry, kKimlik));
    press(block(BlockKind::Chip, 2), block(BlockKind::Chip, 2));
    EXPECT_EQ(app_->recipe().settings.connections, 2);
    // Pressed on one item and let go over another: nothing runs.
    press(block(BlockKind::Chip, 7), block(BlockKind::NavEntry, kKimlik));
    EXPECT_EQ(app_->recipe().settings.connections, 2);
    EXPECT_EQ(app_->section(), kDavranis);
}

TEST_F(BuilderWindow, SigningAndBuildingLockFields) {
    app_->runCommand(kItemToggleSigning, 0);
    EXPECT_TRUE(app_->recipe().signing.enabled);
    EXPECT_TRUE(enabled(kFieldPfx) && enabled(kFieldPassword) && enabled(kFieldTimestamp));

    app_->build().setBuilding(true);
    for (int id : {kFieldConfigUrl, kFieldOutPath, kFieldPfx, kFieldSegment})
        EXPECT_FALSE(enabled(id)) << id;
    app_->build().setBuilding(false);
    EXPECT_TRUE(enabled(kFieldConfigUrl) && enabled(kFieldPfx));

    app_->runCommand(kItemToggleSigning, 0);
    EXPECT_FALSE(enabled(kFieldPfx));
}

TEST_F(BuilderWindow, OnlyTheCurrentSectionsFieldsShow) {
    loadSample();
    app_->runCommand(kItemSection, kKimlik);
    EXPECT_TRUE(visible(kFieldOutName));
    EXPECT_FALSE(visible(kFieldConfigUrl) || visible(kFieldOutPath) || visible(kFieldLinkFirst));
    app_->runCommand(kItemSection, kBaglantilar);
    EXPECT_TRUE(visible(kFieldConfigUrl) && visible(kFieldLinkFirst));
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

    auto wheel = [&](int delta) {
        SendMessageW(app_->hwnd(), WM_MOUSEWHEEL, MAKEWPARAM(0, static_cast<WORD>(delta)), 0);
    };
    wheel(WHEEL_DELTA);
    EXPECT_EQ(app_->linkPage(), pages - 2);
    wheel(-WHEEL_DELTA);
    wheel(-WHEEL_DELTA);
    EXPECT_EQ(app_->linkPage(), pages - 1);
    // Outside the links section the wheel leaves the pages alone.
    app_->runCommand(kItemSection, kDavranis);
    wheel(WHEEL_DELTA);
    EXPECT_EQ(app_->linkPage(), pages - 1);
}

// The start checks themselves are the command line's too (and tested there); here what the window does with
// their message.
TEST_F(BuilderWindow, StartChecksStopABuildWithTheirMessage) {
    app_->loadSkin(L"Z:\\yok\\skin.zip", false);
    app_->runCommand(kItemSection, kDerleme);
    const size_t before = app_->buildLog().size();
    app_->runCommand(kItemBuildPage, 0);
    EXPECT_EQ(app_->status(), L"Önce bir skin yükleyin.");
    EXPECT_EQ(app_->section(), kKaynak);
    EXPECT_EQ(app_->buildLog().size(), before);

    loadSample();
    test::TempDir dir;
    app_->fields().setText(kFieldOutPath, dir.file(L"Kaldra.exe"));
    app_->runCommand(kItemBuildSidebar, 0);
    EXPECT_EQ(app_->section(), kDerleme);
    EXPECT_EQ(app_->status().rfind(L"Patcher şablonu bulunamadı: ", 0), 0u) << test::fsPath(app_->status());
    EXPECT_TRUE(app_->statusWarning());
    EXPECT_FALSE(app_->build().building());
    ASSERT_EQ(app_->buildLog().size(), before + 1);
    EXPECT_EQ(app_->buildLog().lines().back().level, 3);
}

// A whole build from the window, with this test program standing in for the patcher template (any executable
// takes the resources): the worker's lines reach the log through the window's messages; then what the
// result's commands copy.
TEST_F(BuilderWindow, BuildsAPatcherOnTheWorkerThread) {
    // Before any build there is no CRC to copy: the clipboard and the status stay.
    app_->copyToClipboard(L"önceki");
    const std::wstring status = app_->status();
    app_->runCommand(kItemCopyCrc, 0);
    app_->runCommand(kItemCopySelfUpdate, 0);
    EXPECT_EQ(clipboardText(), L"önceki");
    EXPECT_EQ(app_->status(), status);

    ASSERT_TRUE(CopyFileW(exePath().c_str(), templatePath().c_str(), FALSE));
    loadSample();
    test::TempDir dir;
    const std::wstring output = dir.file(L"Kaldra.exe");
    app_->fields().setText(kFieldOutPath, output);
    app_->runCommand(kItemBuildPage, 0);
    EXPECT_TRUE(app_->build().building());
    EXPECT_FALSE(enabled(kFieldConfigUrl));
    // Closing is refused while the worker runs.
    SendMessageW(app_->hwnd(), WM_CLOSE, 0, 0);
    EXPECT_TRUE(IsWindow(app_->hwnd()));
    EXPECT_EQ(app_->status(), L"Oluşturma sürüyor — bitmesini bekleyin.");
    ASSERT_TRUE(pumpUntil([&] { return !app_->build().building(); }));

    ASSERT_TRUE(app_->build().succeeded()) << test::fsPath(app_->build().lastResult().message);
    EXPECT_EQ(app_->status(), L"Patcher hazır: Kaldra.exe");
    const auto& all = app_->buildLog().lines();
    const auto first = std::find_if(
        all.rbegin(), all.rend(), [](const LogLine& l) { return l.text.starts_with(L"Oluşturma başladı"); });
    ASSERT_NE(first, all.rend());
    const std::vector<LogLine> lines(first.base() - 1, all.end());
    ASSERT_GE(lines.size(), 4u);
    EXPECT_EQ(lines.front().text, L"Oluşturma başladı → " + output);
    EXPECT_EQ(lines.front().level, 1);
    // The worker's lines come before the outcome, which closes the log.
    EXPECT_EQ(lines[lines.size() - 2].text, L"Tamamlandı → " + output);
    EXPECT_EQ(lines.back().text.rfind(L"CRC32: ", 0), 0u);
    EXPECT_NE(lines.back().text.find(L"    Boyut: "), std::wstring::npos);
    for (size_t i = 1; i + 2 < lines.size(); ++i)
        EXPECT_EQ(lines[i].level, 0) << i;
    EXPECT_TRUE(enabled(kFieldConfigUrl));

    const Bytes built = test::readFile(output);
    wchar_t crc[16];
    swprintf(crc, 16, L"%08X", Crc32::of(built.data(), built.size()));
    const struct {
        int item;
        std::wstring text;
        const wchar_t* status;
    } copies[] = {
        {kItemCopyCrc, crc, L"CRC32 panoya kopyalandı."},
        {kItemCopySelfUpdate, std::wstring(L"nv_patcher_crc32=") + crc,
         L"Kendini güncelleme satırı panoya kopyalandı."},
        {kItemCopyLog, app_->buildLog().plainText(), L"Günlük panoya kopyalandı."},
    };
    for (const auto& c : copies) {
        app_->runCommand(c.item, 0);
        EXPECT_EQ(clipboardText(), c.text) << c.item;
        EXPECT_EQ(app_->status(), c.status);
        EXPECT_FALSE(app_->statusWarning());
    }

    // Once the build is over the window closes.
    SendMessageW(app_->hwnd(), WM_CLOSE, 0, 0);
    EXPECT_FALSE(IsWindow(app_->hwnd()));
}

} // namespace
} // namespace nv::ui::win
