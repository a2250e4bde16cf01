// The window in an operator's hands, under Wine's display: the keyboard through the window's own key
// handling, the page scrolling on a laptop's client, results and status lines that follow the settings, and
// the checklist leading to its fields.

#include "tests/ui/window/builder_window.h"

#include <algorithm>

namespace nv::ui::win {
namespace {

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

TEST(BuilderCommandLine, OnlyArgumentOpensLikeADrop) {
    struct Case {
        std::vector<const wchar_t*> args;
        const wchar_t* open;
    } cases[] = {
        {{L"b.exe", L"C:\\skins\\kaldra.zip"}, L"C:\\skins\\kaldra.zip"},
        {{L"b.exe"}, L""},
        {{L"b.exe", L"a.zip", L"b.zip"}, L""}, // only an only argument
        {{L"b.exe", L"--snap", L"out"}, L""},
        {{L"b.exe", L"--screen", L"1366x768"}, L""}, // not a path, and only for snapshots
    };
    for (const Case& c : cases) {
        std::vector<wchar_t*> argv;
        for (const wchar_t* a : c.args)
            argv.push_back(const_cast<wchar_t*>(a));
        EXPECT_EQ(parseCommandLine(static_cast<int>(argv.size()), argv.data()).open, c.open) << c.args.size();
    }
    const wchar_t* snap[] = {L"b.exe", L"--screen", L"1366x768", L"--snap", L"o"};
    const CommandLine line = parseCommandLine(5, const_cast<wchar_t**>(snap));
    EXPECT_TRUE(line.snapshot);
    EXPECT_EQ(line.snapFolder, L"o");
    EXPECT_EQ(line.screenWidth, 1366);
    EXPECT_EQ(line.screenHeight, 768);
    const wchar_t* bad[] = {L"b.exe", L"--snap", L"o", L"s", L"--screen", L"1366"};
    EXPECT_EQ(parseCommandLine(6, const_cast<wchar_t**>(bad)).screenWidth, 0);
}

class BuilderKeyboard : public BuilderWindowTest {
protected:
    void TearDown() override {
        setClient(kClientWidth, kClientHeight);
        app_->setScreen(0, 0);
    }

    // The window's client at a size, on a screen just large enough for it (its minimum size is clamped to
    // that screen's work area as to any).
    void setClient(int width, int height) {
        RECT r{0, 0, width, height};
        AdjustWindowRectEx(&r, WS_OVERLAPPEDWINDOW, FALSE, WS_EX_ACCEPTFILES);
        app_->setScreen(r.right - r.left, r.bottom - r.top + scaleLength(40, 96));
        SetWindowPos(app_->hwnd(), nullptr, 0, 0, r.right - r.left, r.bottom - r.top,
                     SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
    // A key as the message loop meets it, with Ctrl and Shift held as asked.
    bool press(UINT key, bool ctrl = false, bool shift = false) {
        BYTE state[256] = {};
        GetKeyboardState(state);
        state[VK_CONTROL] = ctrl ? 0x80 : 0;
        state[VK_SHIFT] = shift ? 0x80 : 0;
        SetKeyboardState(state);
        HWND target = GetFocus() ? GetFocus() : app_->hwnd();
        const MSG msg{target, WM_KEYDOWN, key, 0, 0, {}};
        const bool used = app_->preTranslate(msg);
        state[VK_CONTROL] = state[VK_SHIFT] = 0;
        SetKeyboardState(state);
        return used;
    }
    void focusItem(int item, int sub) { app_->focusStop({FocusStop::Kind::Item, item, sub, 0, {}}); }
    const Block* findBlock(BlockKind kind, const std::wstring& text) const {
        for (const Block& b : app_->layout().blocks)
            if (b.kind == kind && b.text == text) return &b;
        return nullptr;
    }
    std::wstring pageTexts() const {
        std::wstring all;
        for (const Block& b : app_->layout().blocks)
            all += b.text + L"|";
        return all;
    }
};

// Tab visits every stop of the chain in order and back to the first, each shown when it has the focus; on a
// short client the page scrolls to each one.
TEST_F(BuilderKeyboard, TabWalksEveryStopIntoView) {
    loadSample();
    setClient(1100, 560);
    for (int section : {kBaglantilar, kKimlik, kDerleme}) {
        app_->runCommand(kItemSection, section);
        focusItem(kItemNone, 0); // the window itself, no item: Tab starts at the first stop
        const std::vector<FocusStop> chain = focusChain(app_->layout());
        ASSERT_GT(chain.size(), 8u) << section;
        for (size_t i = 0; i <= chain.size(); ++i) {
            ASSERT_TRUE(press(VK_TAB));
            const FocusStop expected = chain[i % chain.size()];
            EXPECT_TRUE(app_->focusedStop() == expected) << section << " stop " << i;
            if (expected.kind == FocusStop::Kind::Field) {
                EXPECT_TRUE(visible(expected.field)) << expected.field;
                for (const Block& b : app_->layout().blocks)
                    if (b.kind == BlockKind::FieldBox && b.field == expected.field) {
                        EXPECT_TRUE(app_->layout().pageView.contains(b.rect)) << expected.field;
                    }
            }
        }
        // Shift+Tab goes back the same way.
        ASSERT_TRUE(press(VK_TAB, false, true));
        EXPECT_TRUE(app_->focusedStop() == chain.back());
        ASSERT_TRUE(press(VK_TAB, false, true));
        EXPECT_TRUE(app_->focusedStop() == chain[chain.size() - 2]);
    }
}

TEST_F(BuilderKeyboard, KeysPressChooseAndStep) {
    loadSample();
    // The sections from anywhere, a field's focus included.
    SetFocus(app_->fields().window(kFieldConfigUrl));
    struct {
        UINT key;
        int section;
    } shortcuts[] = {{'3', kDavranis},     {'6', kDerleme},    {VK_NEXT, kKaynak},
                     {VK_PRIOR, kDerleme}, {VK_PRIOR, kCikti}, {'2', kBaglantilar}};
    for (const auto& s : shortcuts) {
        EXPECT_TRUE(press(s.key, true));
        EXPECT_EQ(app_->section(), s.section) << s.key;
    }
    // A section's entry: the arrows walk the sections, the focus with them.
    focusItem(kItemSection, kBaglantilar);
    press(VK_DOWN);
    EXPECT_EQ(app_->section(), kDavranis);
    EXPECT_TRUE(app_->focusedStop() == (FocusStop{FocusStop::Kind::Item, kItemSection, kDavranis, 0, {}}));

    // The chips: arrows choose the count, not past 1 or 8.
    app_->runCommand(kItemConnectionChip, 7);
    focusItem(kItemConnectionChip, 7);
    press(VK_RIGHT);
    EXPECT_EQ(app_->recipe().settings.connections, 8);
    press(VK_RIGHT);
    EXPECT_EQ(app_->recipe().settings.connections, 8);
    press(VK_LEFT);
    EXPECT_EQ(app_->recipe().settings.connections, 7);

    // A switch flips with Space and with Enter.
    const bool autoStart = app_->recipe().settings.autoStart;
    focusItem(kItemToggleAutoStart, 0);
    press(VK_SPACE);
    EXPECT_NE(app_->recipe().settings.autoStart, autoStart);
    press(VK_RETURN);
    EXPECT_EQ(app_->recipe().settings.autoStart, autoStart);

    // The stepper: its buttons and its field take the arrows, up for more.
    app_->fields().setText(kFieldSegment, L"10");
    focusItem(kItemSegmentMinus, 0);
    press(VK_SPACE);
    EXPECT_EQ(app_->fields().text(kFieldSegment), L"9");
    press(VK_UP);
    EXPECT_EQ(app_->fields().text(kFieldSegment), L"10");
    SetFocus(app_->fields().window(kFieldSegment));
    press(VK_DOWN);
    press(VK_DOWN);
    EXPECT_EQ(app_->fields().text(kFieldSegment), L"8");

    // A field's own keys stay its own.
    SetFocus(app_->fields().window(kFieldRunArgs));
    EXPECT_FALSE(press(VK_LEFT));
    EXPECT_FALSE(press(VK_SPACE));
}

// The segment field shows on leaving it the size that will be written.
TEST_F(BuilderKeyboard, NumberFieldShowsTheValueUsed) {
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"0", L"1"}, {L"99999", L"64"}, {L"abc", L"4"}, {L" 12 ", L"12"}, {L"", L"4"}};
    for (const auto& [typed, shown] : cases) {
        app_->fields().setText(kFieldSegment, typed);
        leaveField(kFieldSegment);
        EXPECT_EQ(app_->fields().text(kFieldSegment), shown) << test::fsPath(typed);
    }
}

// On a laptop's client the page scrolls by wheel and keys; the fields it moves out of view are hidden.
TEST_F(BuilderKeyboard, PagesScrollOnAShortClient) {
    loadSample();
    setClient(1100, 460);
    app_->runCommand(kItemSection, kDavranis);
    const int end = app_->layout().maxPageScroll();
    ASSERT_GT(end, 0);
    EXPECT_TRUE(app_->layout().pageBar.visible);
    EXPECT_TRUE(visible(kFieldSegment));
    EXPECT_FALSE(visible(kFieldRunArgs)); // below the view

    SendMessageW(app_->hwnd(), WM_MOUSEWHEEL, MAKEWPARAM(0, static_cast<WORD>(-WHEEL_DELTA)), 0);
    EXPECT_GT(app_->pageScroll(), 0);
    SetFocus(app_->hwnd());
    focusItem(kItemNone, 0);
    press(VK_END);
    EXPECT_EQ(app_->pageScroll(), end);
    EXPECT_TRUE(visible(kFieldRunArgs));
    press(VK_HOME);
    EXPECT_EQ(app_->pageScroll(), 0);
    press(VK_NEXT);
    EXPECT_GT(app_->pageScroll(), 0);
    // Another section opens at its top; a section that fits has nothing to scroll.
    app_->runCommand(kItemSection, kCikti);
    EXPECT_EQ(app_->pageScroll(), 0);
    setClient(kClientWidth, kClientHeight);
    app_->runCommand(kItemSection, kDavranis);
    EXPECT_EQ(app_->layout().maxPageScroll(), 0);
    EXPECT_FALSE(app_->layout().pageBar.visible);
}

// A log line cut with "…" shows whole in its tooltip; a line that fits has none.
TEST_F(BuilderKeyboard, CutLogLinesShowWhole) {
    app_->runCommand(kItemSection, kDerleme);
    const std::wstring cut = L"Oluşturulamadı: " + std::wstring(300, L'x');
    app_->appendLog(cut, 3);
    app_->appendLog(L"kısa", 0);
    const BuildLog& log = app_->buildLog();
    RECT client{};
    GetClientRect(app_->logView().hwnd(), &client);
    ASSERT_GT(client.bottom, 0);
    const int x = client.right / 2;
    EXPECT_EQ(app_->logView().cutLineAt(x, log.lineTop(log.size() - 2) + 2), cut);
    EXPECT_EQ(app_->logView().cutLineAt(x, log.lineTop(log.size() - 1) + 2), L"");
    EXPECT_EQ(app_->logView().cutLineAt(x, -5), L"");
}

// The checklist's red and amber rows lead to their fields, a link field on another page of the list too.
TEST_F(BuilderKeyboard, ChecklistRowsLeadToTheirFields) {
    loadSample();
    setClient(1100, 560);
    app_->fields().setText(kFieldConfigUrl, L"patch sunucum");
    app_->fields().setText(kFieldLinkFirst + 4, L"forum yok ğüşıöç");
    app_->fields().setText(kFieldOutPath, L"");
    const struct {
        const wchar_t* label;
        bool warning;
        int section, field;
    } rows[] = {{L"Yama adresi", true, kBaglantilar, kFieldConfigUrl},
                {L"Adresler", true, kBaglantilar, kFieldLinkFirst + 4},
                {L"Çıktı yeri", false, kCikti, kFieldOutPath}};
    for (const auto& row : rows) {
        app_->runCommand(kItemSection, kDerleme);
        const Block* check = findBlock(BlockKind::CheckRow, row.label);
        ASSERT_TRUE(check) << test::fsPath(row.label);
        EXPECT_EQ(check->item, kItemReadinessRow);
        EXPECT_EQ(check->warning, row.warning);
        app_->runCommand(check->item, check->sub);
        EXPECT_EQ(app_->section(), row.section);
        EXPECT_EQ(app_->fields().focused(), row.field) << test::fsPath(row.label);
        EXPECT_TRUE(visible(row.field));
    }
    // A ready row leads nowhere.
    app_->runCommand(kItemSection, kDerleme);
    const Block* skin = findBlock(BlockKind::CheckRow, L"Skin");
    ASSERT_TRUE(skin);
    EXPECT_EQ(skin->item, kItemNone);
}

// After a build, a change of any setting makes the result say so and the "Patcher hazır" status go; a start
// check's status goes once its cause is fixed; the log ends with a warning for an address that cannot work.
TEST_F(BuilderKeyboard, ResultsAndStatusFollowTheSettings) {
    ASSERT_TRUE(CopyFileW(exePath().c_str(), templatePath().c_str(), FALSE));
    loadSample();
    test::TempDir dir;
    app_->fields().setText(kFieldOutPath, dir.file(L"yok\\Kaldra.exe"));
    app_->runCommand(kItemBuildPage, 0);
    EXPECT_EQ(app_->status().rfind(L"Çıktı klasörü bulunamadı: ", 0), 0u) << test::fsPath(app_->status());
    app_->fields().setText(kFieldOutPath, dir.file(L"Kaldra.exe"));
    UpdateWindow(app_->hwnd());
    EXPECT_EQ(app_->status(), L"");
    EXPECT_FALSE(app_->statusWarning());

    app_->fields().setText(kFieldLinkFirst + 1, L"forum yok ğüşıöç");
    press('B', true);
    ASSERT_TRUE(pumpUntil([&] { return !app_->build().building(); }));
    ASSERT_TRUE(app_->build().succeeded());
    EXPECT_EQ(app_->buildLog().lines().back().text.rfind(L"Uyarı: ", 0), 0u);
    EXPECT_TRUE(app_->statusWarning());
    UpdateWindow(app_->hwnd());
    EXPECT_FALSE(app_->build().stale());
    EXPECT_NE(pageTexts().find(L"Patcher hazır"), std::wstring::npos);
    EXPECT_EQ(pageTexts().find(L"Ayarlar bu derlemeden sonra değişti"), std::wstring::npos);

    app_->fields().setText(kFieldTitle, L"Başka başlık");
    UpdateWindow(app_->hwnd());
    EXPECT_TRUE(app_->build().stale());
    EXPECT_EQ(app_->status(), L"");
    EXPECT_EQ(pageTexts().find(L"Patcher hazır|"), std::wstring::npos);
    EXPECT_NE(pageTexts().find(L"Derlemeye hazır"), std::wstring::npos);
    EXPECT_NE(pageTexts().find(L"Ayarlar bu derlemeden sonra değişti"), std::wstring::npos);
    // Put back, the result is the settings' again.
    app_->fields().setText(kFieldTitle, L"Kaldra Online");
    UpdateWindow(app_->hwnd());
    EXPECT_FALSE(app_->build().stale());
    DeleteFileW(templatePath().c_str());
}

} // namespace
} // namespace nv::ui::win
