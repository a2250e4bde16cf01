#include "patcher/patcher_logic.h"
#include "tests/renderer/skin_builder.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

using test::TestSkin;

TEST(PatcherLogic, CommandLine) {
    struct Case {
        std::vector<std::wstring> args;
        bool preview, snap;
        std::wstring path;
    } cases[] = {
        {{}, false, false, L""},
        {{L"--preview"}, true, false, L""},
        {{L"--SNAP", L"C:\\o.png"}, false, true, L"C:\\o.png"},
        {{L"--snap", L"o.png", L"--Preview"}, true, true, L"o.png"},
        {{L"--preview", L"--snap"}, true, false, L""}, // --snap needs its file
        {{L"--snapx", L"o.png"}, false, false, L""},
    };
    for (const Case& c : cases) {
        const PatcherOptions o = parsePatcherArgs(c.args);
        EXPECT_EQ(o.preview, c.preview);
        EXPECT_EQ(o.snap, c.snap);
        EXPECT_EQ(o.snapPath, c.path);
    }
}

TEST(PatcherLogic, TitleAndStartingStates) {
    TestSkin skin(10, 10, 0xFF000000);
    skin.locale("<string key=\"NV_PREVIEW\">Deneme</string><string key=\"TORRENT_PATCH\">Oyun</string>")
        .controls(
            "<control type=\"text\" id=\"TEXT_MAIN\"/><control type=\"gauge\" id=\"PROGRESS_MAIN\"/>"
            "<control type=\"button\" id=\"BTN_START\" exec_path=\"Kaldra.exe\" enable_on_complete=\"1\"/>");
    PatcherScene scene = skin.scene();
    EXPECT_EQ(patcherTitle(scene, false), L"Oyun"); // no title in the settings: the game's name
    scene.settings.title = L"  Kaldra Online ";
    EXPECT_EQ(patcherTitle(scene, false), L"Kaldra Online");
    EXPECT_EQ(patcherTitle(scene, true), L"Kaldra Online — Deneme");

    const std::vector<ControlState> live = startStates(scene, false);
    EXPECT_EQ(live[0].text, kNoUpdateSourceText);
    EXPECT_EQ(live[1].progress, 0.f); // nothing pretends to download
    EXPECT_TRUE(live[2].enabled);
    const std::vector<ControlState> preview = startStates(scene, true);
    EXPECT_EQ(preview[0].text, L"İndiriliyor...  %45");
    EXPECT_EQ(preview[1].progress, 0.7f);
    EXPECT_TRUE(preview[2].enabled);
}

TEST(PatcherLogic, WhatAButtonDoes) {
    auto button = [](const char* id, const wchar_t* exec, const wchar_t* link) {
        SkinControl c;
        c.kind = ControlKind::Button;
        c.id = id;
        c.execPath = exec;
        c.link = link;
        return c;
    };
    struct Case {
        SkinControl control;
        ButtonAction action;
    } cases[] = {
        {button("BTN_CLOSE", L"", L"https://x"), ButtonAction::Close},
        {button("BTN_MINIMIZE", L"a.exe", L""), ButtonAction::Minimize},
        {button("BTN_START", L"Kaldra.exe", L"https://x"), ButtonAction::StartGame},
        {button("URL_SITE", L"", L"https://x"), ButtonAction::OpenLink},
        {button("URL_SITE", L" ", L" "), ButtonAction::None},
        {button("PLAIN", L"", L""), ButtonAction::None},
    };
    for (const Case& c : cases)
        EXPECT_EQ(buttonAction(c.control), c.action) << c.control.id;
    SkinControl text = button("BTN_CLOSE", L"", L"");
    text.kind = ControlKind::Text;
    EXPECT_EQ(buttonAction(text), ButtonAction::None);

    EXPECT_EQ(gameCommandLine(L"C:\\Oyun\\Kaldra.exe", L" -lang tr "), L"\"C:\\Oyun\\Kaldra.exe\" -lang tr");
    EXPECT_EQ(gameCommandLine(L"C:\\Oyun\\Kaldra.exe", L""), L"\"C:\\Oyun\\Kaldra.exe\"");
    EXPECT_EQ(fillPlaceholder(L"Oyun başlatılamadı (ErrorCode %d)", L"2"),
              L"Oyun başlatılamadı (ErrorCode 2)");
    EXPECT_EQ(fillPlaceholder(L"Bulunamadı: %s", L"a.exe"), L"Bulunamadı: a.exe");
    EXPECT_EQ(fillPlaceholder(L"Hata", L"5"), L"Hata");
}

TEST(PatcherLogic, PressAndReleaseOverTheSameEnabledButtonClicks) {
    PatcherScene scene =
        TestSkin(10, 10, 0xFF000000)
            .controls("<control type=\"button\" id=\"A\"/><control type=\"button\" id=\"B\"/>"
                      "<control type=\"iframe\" id=\"NEWS\"/>")
            .scene();
    std::vector<ControlState> states = defaultStates(scene);
    auto looks = [&](PointerTracker& p) {
        p.apply(states);
        std::string s;
        for (const ControlState& st : states)
            s += st.pressed ? 'P' : st.hover ? 'h' : '.';
        return s;
    };
    PointerTracker p;
    EXPECT_TRUE(p.move(0));
    EXPECT_EQ(looks(p), "h..");
    EXPECT_FALSE(p.move(0));
    EXPECT_TRUE(p.down(0, scene, states));
    EXPECT_EQ(looks(p), "P..");
    p.move(1); // dragged off while held: nothing lights up
    EXPECT_EQ(looks(p), "...");
    p.move(0);
    EXPECT_EQ(looks(p), "P..");
    EXPECT_EQ(p.up(0), 0);
    EXPECT_EQ(looks(p), "h..");

    EXPECT_TRUE(p.down(0, scene, states));
    EXPECT_EQ(p.up(1), -1);                 // released elsewhere
    EXPECT_FALSE(p.down(2, scene, states)); // the news area is not a button
    EXPECT_EQ(p.up(2), -1);
    states[1].enabled = false;
    EXPECT_FALSE(p.down(1, scene, states));
    EXPECT_EQ(p.up(1), -1);
    EXPECT_TRUE(p.down(0, scene, states));
    EXPECT_TRUE(p.cancel());
    EXPECT_EQ(p.up(0), -1);
    EXPECT_TRUE(p.leave());
    EXPECT_EQ(looks(p), "...");
}

} // namespace
} // namespace nv
