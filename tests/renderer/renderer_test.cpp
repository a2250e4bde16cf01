#include "renderer/composite.h"
#include "renderer/scene.h"
#include "tests/renderer/skin_builder.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>

namespace nv {
namespace {

using test::TestSkin;

uint32_t at(const std::vector<uint32_t>& pixels, int width, int x, int y) {
    return pixels[size_t(y) * size_t(width) + size_t(x)];
}

TEST(Renderer, TheBackgroundIsCopiedExactlyAndControlsWithoutPicturesLeaveItAlone) {
    // A gradient with a transparent margin and half-transparent pixels, as skins with a drop shadow have.
    const int w = 23, h = 17;
    std::vector<uint32_t> straight(size_t(w) * h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const bool margin = x < 2 || y < 2 || x >= w - 2 || y >= h - 2;
            const uint32_t alpha = margin ? (x + y) % 3 == 0 ? 0u : 0x60u : 0xFFu;
            straight[size_t(y) * w + x] = alpha << 24 | uint32_t(x * 11) << 16 | uint32_t(y * 15) << 8 | 0x42;
        }
    const char* skins[] = {
        "",
        "<control type=\"warp\" id=\"W\" x=\"0\" y=\"0\" width=\"23\" height=\"17\" image=\"red.png\"/>",
        "<control type=\"button\" id=\"B\" x=\"3\" y=\"3\" image=\"nothing.png\"/>",
        "<control type=\"gauge\" id=\"G\" x=\"3\" y=\"3\" image_full=\"nothing\" w=\"10\" h=\"4\"/>",
        "<control type=\"iframe\" id=\"NEWS\" x=\"3\" y=\"3\" width=\"10\" height=\"8\"/>", // not in preview
        "<control type=\"image\" id=\"I\" x=\"3\" y=\"3\" image=\"nothing.png\"/>",
    };
    for (const char* controls : skins) {
        SCOPED_TRACE(controls);
        PatcherScene scene =
            TestSkin(w, h, straight).picture("red.png", 23, 17, 0xFFFF0000).controls(controls).scene();
        ASSERT_EQ(scene.width, w);
        EXPECT_TRUE(scene.transparent);
        std::vector<ControlState> states = defaultStates(scene);
        applyPreviewSamples(scene, states);
        EXPECT_EQ(test::render(scene, states), test::backgroundOf(scene));
    }
}

ControlState buttonState(bool visible, bool enabled, bool hover, bool pressed) {
    ControlState state;
    state.visible = visible;
    state.enabled = enabled;
    state.hover = hover;
    state.pressed = pressed;
    return state;
}

TEST(Renderer, AButtonShowsThePictureOfItsState) {
    PatcherScene scene = TestSkin(20, 12, 0xFF000000)
                             .picture("b_up.png", 4, 3, 0xFF0000AA)
                             .picture("b_on.png", 4, 3, 0xFF00AA00)
                             .picture("b_dn.png", 4, 3, 0xFFAA0000)
                             .picture("b_ds.png", 4, 3, 0xFF555555)
                             .controls("<control type=\"button\" id=\"B\" x=\"5\" y=\"6\" image=\"b.png\"/>")
                             .scene();
    struct Case {
        ControlState state; // visible, enabled, hover, pressed
        uint32_t shown;
    } cases[] = {
        {buttonState(true, true, false, false), 0xFF0000AA},
        {buttonState(true, true, true, false), 0xFF00AA00},
        {buttonState(true, true, false, true), 0xFFAA0000},
        {buttonState(true, true, true, true), 0xFFAA0000},
        {buttonState(true, false, false, false), 0xFF555555},
        {buttonState(true, false, true, true), 0xFF555555},
        {buttonState(false, true, true, false), 0xFF000000},
    };
    for (const Case& c : cases) {
        const ControlState& s = c.state;
        SCOPED_TRACE(testing::Message() << s.visible << s.enabled << s.hover << s.pressed);
        const std::vector<uint32_t> pixels = test::render(scene, {s});
        EXPECT_EQ(at(pixels, 20, 5, 6), c.shown);
        EXPECT_EQ(at(pixels, 20, 8, 8), c.shown);
        EXPECT_EQ(at(pixels, 20, 4, 6), 0xFF000000u);
        EXPECT_EQ(at(pixels, 20, 9, 8), 0xFF000000u);
        EXPECT_EQ(at(pixels, 20, 5, 9), 0xFF000000u);
    }
}

TEST(Renderer, AGaugeFillsFloorOfProgressTimesWidthColumnsOverItsEmptyPicture) {
    const uint32_t bg = 0xFF101010, full = 0xFFEE0000, empty = 0xFF0000EE;
    // Pictures 16 wide; the control is 10 wide, so the pictures are clipped to the box.
    PatcherScene scene = TestSkin(30, 8, bg)
                             .picture("full.png", 16, 3, full)
                             .picture("empty.png", 16, 3, empty)
                             .controls("<control type=\"gauge\" id=\"G\" x=\"2\" y=\"1\" image_full=\"full\" "
                                       "image_empty=\"empty.png\" w=\"10\"/>")
                             .scene();
    struct Case {
        float progress;
        int columns;
    } cases[] = {{0.f, 0},  {0.05f, 0}, {0.1f, 1}, {0.45f, 4}, {0.7f, 7},      {0.999f, 9},
                 {1.f, 10}, {1.5f, 10}, {-1.f, 0}, {NAN, 0},   {INFINITY, 10}, {-INFINITY, 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.progress);
        std::vector<ControlState> states(1);
        states[0].progress = c.progress;
        const std::vector<uint32_t> pixels = test::render(scene, states);
        for (int x = 0; x < 30; ++x) {
            const uint32_t expected = x < 2 || x >= 12 ? bg : x < 2 + c.columns ? full : empty;
            EXPECT_EQ(at(pixels, 30, x, 2), expected) << "column " << x;
        }
        EXPECT_EQ(at(pixels, 30, 5, 4), bg); // the pictures are 3 rows high
    }
}

TEST(Renderer, HalfTransparentPicturesCompositeExactly) {
    // Background pixels: opaque, half transparent, fully transparent (premultiplied after decoding).
    std::vector<uint32_t> background = {0xFF204060, 0x80FF00FF, 0x00000000, 0xFF0000FF};
    struct Case {
        uint32_t picture; // straight ARGB, one colour
        uint32_t expected[4];
    } cases[] = {
        // 0x40 white = premultiplied 0x40404040; each channel 0x40 + round(d * 191 / 255).
        {0x40FFFFFF, {0xFF587088, 0xA0A040A0, 0x40404040, 0xFF4040FF}},
        // 0x80 red = premultiplied 0x80800000; channels 0x80 + round(d * 127 / 255).
        {0x80FF0000, {0xFF902030, 0xC0C00040, 0x80800000, 0xFF80007F}},
        {0xFF00FF00, {0xFF00FF00, 0xFF00FF00, 0xFF00FF00, 0xFF00FF00}},
        {0x00FFFFFF, {0xFF204060, 0x80800080, 0x00000000, 0xFF0000FF}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << c.picture);
        PatcherScene scene =
            TestSkin(4, 1, background)
                .picture("p.png", 4, 1, c.picture)
                .controls("<control type=\"image\" id=\"P\" x=\"0\" y=\"0\" image=\"p.png\"/>")
                .scene();
        const std::vector<uint32_t> pixels = test::render(scene, defaultStates(scene));
        for (int x = 0; x < 4; ++x)
            EXPECT_EQ(pixels[size_t(x)], c.expected[x]) << std::hex << "pixel " << x;
    }
}

TEST(Renderer, ControlsReachingOutOfTheWindowAreClipped) {
    const uint32_t bg = 0xFF000000, red = 0xFFFF0000;
    struct Case {
        const char* position;
        int x0, y0, x1, y1; // where red shows
    } cases[] = {
        {"x=\"-3\" y=\"-2\"", 0, 0, 3, 3},
        {"x=\"8\" y=\"6\"", 8, 6, 10, 8},
        {"x=\"-6\" y=\"2\"", 0, 0, 0, 0},
        {"x=\"2147483647\" y=\"2147483647\"", 0, 0, 0, 0},
        {"x=\"-2147483647\" y=\"-2147483647\"", 0, 0, 0, 0},
        {"x=\"2147483646\" y=\"0\"", 0, 0, 0, 0},
    };
    for (const char* type : {"image", "button", "gauge"}) {
        for (const Case& c : cases) {
            SCOPED_TRACE(testing::Message() << type << " " << c.position);
            std::string xml = std::string("<control type=\"") + type + "\" id=\"C\" " + c.position +
                              " image=\"r.png\" image_full=\"r.png\"/>";
            PatcherScene scene = TestSkin(10, 8, bg).picture("r.png", 6, 5, red).controls(xml).scene();
            std::vector<ControlState> states(1);
            states[0].progress = 1.f;
            const std::vector<uint32_t> pixels = test::render(scene, states);
            for (int y = 0; y < 8; ++y)
                for (int x = 0; x < 10; ++x) {
                    const bool inside = x >= c.x0 && x < c.x1 && y >= c.y0 && y < c.y1;
                    ASSERT_EQ(at(pixels, 10, x, y), inside ? red : bg) << x << "," << y;
                }
        }
    }
}

TEST(Renderer, PreviewSamplesStandInForADownload) {
    PatcherScene scene =
        TestSkin(10, 10, 0xFF000000)
            .locale("<string key=\"TORRENT_STATE_DOWNLOADING\">Yükleniyor</string>")
            .controls(
                "<control type=\"gauge\" id=\"PROGRESS_MAIN\"/><control type=\"gauge\" id=\"progress_sub\"/>"
                "<control type=\"gauge\" id=\"OTHER\"/><control type=\"text\" id=\"TEXT_MAIN\"/>"
                "<control type=\"text\" id=\"Text_Sub\"/><control type=\"text\" id=\"TEXT_TORRENT\"/>"
                "<control type=\"text\" id=\"TITLE\" text=\"Kaldra\"/>"
                "<control type=\"button\" id=\"TEXT_MAIN\"/>")
            .scene();
    std::vector<ControlState> states(2); // too short: filled up to one per control
    states[1].enabled = false;
    applyPreviewSamples(scene, states);
    ASSERT_EQ(states.size(), 8u);
    const float progress[] = {0.7f, 0.45f, 0.7f, 0, 0, 0, 0, 0};
    const std::wstring texts[] = {
        L"", L"", L"", L"Yükleniyor  %45", L"pack\\root.kdx (%45)", L"pack\\root.kdx (%45)", L"", L""};
    for (size_t i = 0; i < states.size(); ++i) {
        EXPECT_EQ(states[i].progress, progress[i]) << i;
        EXPECT_EQ(states[i].text, texts[i]) << i;
    }
    EXPECT_FALSE(states[1].enabled); // what was set stays
}

TEST(Renderer, ThePointerMeetsTheTopmostVisibleButtonOrNewsArea) {
    PatcherScene scene =
        TestSkin(50, 40, 0xFF000000)
            .picture("a.png", 10, 10, 0xFFFFFFFF)
            .controls("<control type=\"button\" id=\"A\" x=\"0\" y=\"0\" image=\"a.png\"/>"
                      "<control type=\"button\" id=\"B\" x=\"5\" y=\"5\" image=\"a.png\"/>"
                      "<control type=\"iframe\" id=\"NEWS\" x=\"20\" y=\"20\" w=\"10\" h=\"10\"/>"
                      "<control type=\"text\" id=\"T\" x=\"0\" y=\"30\" width=\"50\"/>"
                      "<control type=\"image\" id=\"I\" x=\"40\" y=\"0\" image=\"a.png\"/>")
            .scene();
    std::vector<ControlState> states = defaultStates(scene);
    struct Case {
        int x, y, expected;
    } cases[] = {{0, 0, 0},   {9, 4, 0},    {7, 7, 1},   {14, 14, 1}, {15, 15, -1},
                 {25, 25, 2}, {30, 25, -1}, {5, 33, -1}, {45, 5, -1}, {-1, 0, -1}};
    for (const Case& c : cases)
        EXPECT_EQ(controlAt(scene, states, c.x, c.y), c.expected) << c.x << "," << c.y;
    states[1].visible = false;
    EXPECT_EQ(controlAt(scene, states, 7, 7), 0);
    states[1].visible = true;
    states[1].enabled = false; // a disabled button still covers the window
    EXPECT_EQ(controlAt(scene, states, 7, 7), 1);
}

TEST(Renderer, SourceOverRoundsLikeExactArithmetic) {
    for (uint32_t alpha = 0; alpha < 256; ++alpha)
        for (uint32_t d = 0; d < 256; ++d) {
            const uint32_t src = alpha << 24 | alpha / 2;
            const uint32_t expected = alpha / 2 + uint32_t(std::lround(double(d) * (255 - alpha) / 255.0));
            ASSERT_EQ(sourceOver(src, 0xFF000000u | d) & 0xFF, expected) << alpha << " " << d;
        }
    EXPECT_EQ(sourceOver(0x10FF0000u, 0xFFFFFFFFu) >> 16 & 0xFF,
              255u); // a channel above alpha cannot spill over
}

} // namespace
} // namespace nv
