// Text through GDI+ (Windows only; the native build draws none).

#include "renderer/news_area.h"
#include "renderer/scene.h"
#include "tests/renderer/skin_builder.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

using test::TestSkin;

constexpr int kW = 120, kH = 40;
constexpr uint32_t kBackground = 0xFF204060;

PatcherScene textScene(std::string_view attributes) {
    return TestSkin(kW, kH, kBackground)
        .controls("<control type=\"text\" id=\"T\" x=\"20\" y=\"10\" size=\"12\" " + std::string(attributes) +
                  "/>")
        .scene();
}

std::vector<uint32_t> pixelsOf(const PatcherScene& scene, const std::wstring& text) {
    std::vector<ControlState> states(1);
    states[0].text = text;
    return test::render(scene, states);
}

// The changed pixels of a render: how many, and the mean column of those changes.
struct Ink {
    int count = 0;
    double column = 0;
    int outsideColumns = 0; // changed pixels left of x or right of the box
    int outsideRows = 0;    // changed pixels far above or below the box
};

Ink inkOf(const PatcherScene& scene, const std::wstring& text, int boxRight) {
    const std::vector<uint32_t> pixels = pixelsOf(scene, text);
    Ink ink;
    for (int y = 0; y < kH; ++y)
        for (int x = 0; x < kW; ++x) {
            if (pixels[size_t(y) * kW + x] == kBackground) continue;
            ++ink.count;
            ink.column += x;
            if (x < 20 || x >= boxRight + 1) ++ink.outsideColumns; // + 1: the shadow's offset
            if (y < 10 - 8 || y >= 28 + 8) ++ink.outsideRows;
        }
    if (ink.count) ink.column /= ink.count;
    return ink;
}

TEST(Text, IsDrawnInsideItsBoxWhereItsAlignmentPutsIt) {
    ASSERT_TRUE(rendererDrawsText());
    struct Case {
        const char* attributes;
        const wchar_t* text;
        int boxRight;
        double minColumn, maxColumn;
    } cases[] = {
        {"width=\"80\" align=\"left\"", L"Iğdır", 100, 20, 45},
        {"width=\"80\" align=\"center\"", L"Iğdır", 100, 50, 70},
        {"width=\"80\" align=\"right\"", L"Iğdır", 100, 75, 100},
        {"width=\"0\" align=\"right\"", L"Iğdır", kW, 20, 45}, // no width: left from x whatever the alignment
        {"width=\"80\" shadow=\"#FF000000\"", L"Iğdır", 100, 20, 45},
        {"width=\"40\"", L"Kaldra Online güncelleniyor, lütfen bekleyin", 60, 20,
         60}, // kept inside its width
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.attributes);
        const Ink ink = inkOf(textScene(c.attributes), c.text, c.boxRight);
        EXPECT_GT(ink.count, 40);
        EXPECT_GE(ink.column, c.minColumn);
        EXPECT_LE(ink.column, c.maxColumn);
        EXPECT_EQ(ink.outsideColumns, 0);
        EXPECT_EQ(ink.outsideRows, 0);
    }
}

TEST(Text, ColourAlphaAndTurkishLettersAreHonoured) {
    const PatcherScene scene = textScene("width=\"80\" color=\"#00FFFFFF\"");
    EXPECT_EQ(inkOf(scene, L"Görünmez", 100).count, 0);
    // İ and ı differ from I and i only by their dots: the letters arrive as written, not folded or replaced.
    const PatcherScene white = textScene("width=\"80\"");
    EXPECT_TRUE(pixelsOf(white, L"İI ıi") != pixelsOf(white, L"II ii"));
    EXPECT_TRUE(pixelsOf(white, L"ŞĞÜÖÇ") != pixelsOf(white, L"SGUOC"));
    // A half-transparent colour leaves some of the background in every inked pixel.
    const std::vector<uint32_t> half = pixelsOf(textScene("width=\"80\" color=\"#80FFFFFF\""), L"Kaldra");
    for (uint32_t p : half)
        EXPECT_LT(p & 0xFF, 0xE0u);
}

TEST(Text, TheNewsPanelIsTitledFromTheLocale) {
    auto render = [](const char* title) {
        PatcherScene scene =
            TestSkin(200, 100, kBackground)
                .locale(std::string("<string key=\"NV_NEWS\">") + title + "</string>")
                .controls("<control type=\"iframe\" id=\"NEWS\" x=\"10\" y=\"10\" w=\"180\" h=\"80\"/>")
                .scene();
        return test::render(scene, defaultStates(scene), true);
    };
    EXPECT_TRUE(render("Haberler") != render("Duyurular"));
}

TEST(Text, HeadlinesAreDrawnInTheirLinesInTheAreasStyleAsManyAsFit) {
    auto scene = [](const char* colour) {
        return TestSkin(340, 120, kBackground)
            .controls(
                std::string("<control type=\"iframe\" id=\"NEWS\" x=\"10\" y=\"10\" w=\"320\" h=\"100\" "
                            "color=\"") +
                colour + "\"/>")
            .scene();
    };
    ServerFeed feed;
    for (int i = 0; i < 5; ++i)
        feed.headlines.push_back({L"Kaldra haberi " + std::to_wstring(i), "2024-06-0" + std::to_string(i + 1),
                                  L"https://k.example/"});
    auto draw = [&](const PatcherScene& s) {
        std::vector<ControlState> states = defaultStates(s);
        applyFeed(s, feed, states);
        return test::render(s, states, true);
    };
    const PatcherScene visible = scene("#FFFFFFFF");
    const std::vector<uint32_t> inked = draw(visible), bare = draw(scene("#00FFFFFF"));
    auto changed = [&](const Box& box) {
        int count = 0;
        for (int64_t y = box.y0; y < box.y1; ++y)
            for (int64_t x = box.x0; x < box.x1; ++x)
                count += inked[size_t(y) * 340 + size_t(x)] != bare[size_t(y) * 340 + size_t(x)];
        return count;
    };
    const std::vector<NewsRow> rows = newsRows(visible.controls[0], feed.headlines.size());
    ASSERT_EQ(rows.size(), 3u);
    int inRows = 0;
    for (const NewsRow& row : rows) {
        EXPECT_GT(changed(row.title), 40);
        EXPECT_GT(changed(row.date), 40);
        inRows += changed(row.row);
    }
    EXPECT_EQ(changed({0, 0, 340, 120}), inRows); // nothing beyond the lines that fit
}

TEST(Text, ARunKeptFromAnEarlierRenderGivesTheSamePixels) {
    const PatcherScene scene = textScene("width=\"80\" shadow=\"#80000000\" color=\"#C0FFE0A0\"");
    PatcherScene uncached = scene;
    uncached.textCache = nullptr;
    const std::vector<uint32_t> first = pixelsOf(scene, L"Kaldra");
    EXPECT_TRUE(first == pixelsOf(scene, L"Kaldra"));
    EXPECT_TRUE(first == pixelsOf(uncached, L"Kaldra"));
    EXPECT_TRUE(first != pixelsOf(scene, L"Kaldrb")); // a new text is drawn anew, not taken from the cache
}

} // namespace
} // namespace nv
