#include "patcher/patcher_logic.h"
#include "tests/renderer/skin_builder.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

using test::TestSkin;

TEST(PatcherLogic, TitleAndStatusOutsidePreview) {
    PatcherScene scene =
        TestSkin(10, 10, 0xFF000000)
            .locale("<string key=\"TORRENT_PATCH\">Oyun</string>")
            .controls("<control type=\"text\" id=\"TEXT_MAIN\"/><control type=\"gauge\" id=\"G\"/>"
                      "<control type=\"button\" id=\"BTN_START\" enable_on_complete=\"1\"/>")
            .scene();
    EXPECT_EQ(patcherTitle(scene, false), L"Oyun"); // no title in the settings: the game's name
    scene.settings.title = L"  Kaldra Online ";
    EXPECT_EQ(patcherTitle(scene, true), L"Kaldra Online — Önizleme");

    const std::vector<ControlState> live = startStates(scene, false);
    EXPECT_EQ(live[0].text, kNoUpdateSourceText);
    EXPECT_EQ(live[1].progress, 0.f); // nothing pretends to download
    EXPECT_TRUE(live[2].enabled);
    EXPECT_EQ(startStates(scene, true)[1].progress, 0.7f);
}

// The feed's test switches: an interval below the skin's bound, but never a busy loop; a switch without its
// value is ignored.
TEST(PatcherLogic, FeedTestSwitches) {
    struct Case {
        std::vector<std::wstring> args;
        int intervalMs;
        const wchar_t* snapPrefix;
    };
    const Case cases[] = {
        {{L"--feed-interval-ms", L"2500"}, 2500, L""},
        {{L"--FEED-INTERVAL-MS", L"1"}, kMinTestFeedIntervalMs, L""},
        {{L"--feed-interval-ms", L"0"}, 0, L""},
        {{L"--feed-interval-ms", L"hızlı"}, 0, L""},
        {{L"--feed-interval-ms"}, 0, L""},
        {{L"--feed-snap", L"C:\\t\\canli-"}, 0, L"C:\\t\\canli-"},
        {{L"--feed-snap"}, 0, L""},
    };
    for (const Case& c : cases) {
        const PatcherOptions options = parsePatcherArgs(c.args);
        EXPECT_EQ(options.feedIntervalMs, c.intervalMs);
        EXPECT_EQ(options.feedSnapPrefix, c.snapPrefix);
    }
    EXPECT_TRUE(parsePatcherArgs({L"--headless", L"--accept-notice"}).acceptNotice);
    EXPECT_FALSE(parsePatcherArgs({L"--headless"}).acceptNotice);
}

TEST(PatcherLogic, PressAndReleaseOverTheSameEnabledButtonClicks) {
    PatcherScene scene =
        TestSkin(10, 10, 0xFF000000)
            .controls("<control type=\"button\" id=\"A\"/><control type=\"button\" id=\"B\"/>"
                      "<control type=\"iframe\" id=\"NEWS\"/>")
            .scene();
    std::vector<ControlState> states = defaultStates(scene);
    PointerTracker p;
    auto looks = [&] {
        p.apply(states);
        std::string s;
        for (const ControlState& st : states)
            s += st.pressed ? 'P' : st.hover ? 'h' : '.';
        return s;
    };
    p.move(0);
    EXPECT_EQ(looks(), "h..");
    EXPECT_TRUE(p.down(0, scene, states));
    EXPECT_EQ(looks(), "P..");
    p.move(1); // dragged off while held: nothing lights up
    EXPECT_EQ(looks(), "...");
    p.move(0);
    EXPECT_EQ(p.up(0), 0);
    EXPECT_EQ(looks(), "h..");

    EXPECT_TRUE(p.down(0, scene, states));
    EXPECT_EQ(p.up(1), -1);                 // released elsewhere
    EXPECT_FALSE(p.down(2, scene, states)); // the news area is not a button
    states[1].enabled = false;
    EXPECT_FALSE(p.down(1, scene, states));
    EXPECT_EQ(p.up(1), -1);
    EXPECT_TRUE(p.down(0, scene, states));
    EXPECT_TRUE(p.cancel()); // capture lost
    EXPECT_EQ(p.up(0), -1);
}

} // namespace
} // namespace nv
