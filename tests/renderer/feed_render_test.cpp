// The server feed in the window: what its controls show, the lamp's pictures and the news area's layout.

#include "renderer/news_area.h"
#include "renderer/scene.h"
#include "tests/renderer/skin_builder.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

using test::TestSkin;

constexpr const char* kFeedControls =
    "<control type='text' id='FEED_STATUS' width='50'/>"
    "<control type='text' id='FEED_STATUS' width='50' feed_message='1'/>"
    "<control type='text' id='FEED_PLAYERS' width='50' text='skin stand-in'/>"
    "<control type='image' id='FEED_LAMP'/>"
    "<control type='iframe' id='NEWS' w='50' h='40'/>"
    "<control type='text' id='TITLE' text='Kaldra'/>";

ServerFeed feedOf(FeedStatus status, int64_t players, std::wstring message, size_t headlines) {
    ServerFeed feed;
    feed.status = status;
    feed.players = players;
    feed.message = std::move(message);
    for (size_t i = 0; i < headlines; ++i)
        feed.headlines.push_back({L"Haber " + std::to_wstring(i), "2024-06-1" + std::to_string(i),
                                  L"https://k.example/" + std::to_wstring(i)});
    return feed;
}

TEST(Feed, ItsControlsShowTheStatusTheMessageWhereAskedThePlayersAndTheHeadlines) {
    const PatcherScene scene = TestSkin(60, 60, 0xFF000000)
                                   .locale("<string key='NV_FEED_PLAYERS'>%s oyuncu</string>"
                                           "<string key='NV_FEED_OFFLINE'>Kapalı</string>")
                                   .controls(kFeedControls)
                                   .scene();
    struct Case {
        ServerFeed feed;
        const wchar_t *status, *statusOrMessage, *players; // players: nullptr when hidden
    } cases[] = {
        {{}, L"Sunucu durumu alınamadı", L"Sunucu durumu alınamadı", nullptr},
        {feedOf(FeedStatus::Online, 12345, L"", 0), L"Sunucu Çevrimiçi", L"Sunucu Çevrimiçi",
         L"12.345 oyuncu"},
        {feedOf(FeedStatus::Maintenance, 0, L"03:00'e kadar", 2), L"Sunucu Bakımda", L"03:00'e kadar",
         L"0 oyuncu"},
        {feedOf(FeedStatus::Offline, 1000000, L"Taşınıyoruz", 1), L"Kapalı", L"Taşınıyoruz",
         L"1.000.000 oyuncu"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(int(c.feed.status));
        std::vector<ControlState> states(2); // too short: filled up to one per control
        states[0].enabled = false;
        applyFeed(scene, c.feed, states);
        ASSERT_EQ(states.size(), 6u);
        EXPECT_EQ(states[0].text, c.status);
        EXPECT_FALSE(states[0].enabled); // what was set stays
        EXPECT_EQ(states[1].text, c.statusOrMessage);
        EXPECT_EQ(states[2].visible, c.players != nullptr);
        EXPECT_EQ(states[2].text, c.players ? c.players : L"");
        EXPECT_EQ(states[3].lamp, c.feed.status);
        EXPECT_EQ(states[4].headlines.size(), c.feed.headlines.size());
        EXPECT_TRUE(states[5].text.empty() && states[5].visible && states[5].headlines.empty());
    }
    // A window opens showing that no feed has arrived, never the skin's own stand-in texts.
    const std::vector<ControlState> opening = defaultStates(scene);
    EXPECT_EQ(opening[0].text, L"Sunucu durumu alınamadı");
    EXPECT_FALSE(opening[2].visible);
    EXPECT_EQ(opening[3].lamp, FeedStatus::NoData);
    // The previews show the sample feed.
    std::vector<ControlState> preview = defaultStates(scene);
    applyPreviewSamples(scene, preview);
    EXPECT_EQ(preview[0].text, L"Sunucu Çevrimiçi");
    EXPECT_EQ(preview[2].text, L"2.481 oyuncu");
    EXPECT_EQ(preview[4].headlines.size(), 3u);
}

TEST(Feed, LampPicturesAreNamedAfterTheStatusWhateverTheSkinNamesItsOwn) {
    const std::array<std::string, kFeedStatusCount> lamp = {"lamp_nodata.png", "lamp_online.png",
                                                            "lamp_maintenance.png", "lamp_offline.png"};
    EXPECT_EQ(lampPictureNames("lamp_online.png"), lamp);
    EXPECT_EQ(lampPictureNames("lamp.png"), lamp);
    EXPECT_EQ(lampPictureNames("img/Lamp_OFFLINE.PNG")[2], "img/Lamp_maintenance.PNG");
    EXPECT_EQ(lampPictureNames("online")[1], "online_online");
}

TEST(Feed, TheLampShowsTheSkinsPictureOfTheStatusElseItsOwnTinted) {
    // The skin ships the online and offline pictures; its own picture has a full and a half-light pixel and
    // a half-transparent one.
    const std::vector<uint32_t> own = {0xFF00FF00, 0xFF008000, 0x8000FF00};
    for (const char* image : {"lamp_online.png", "lamp.png"}) {
        SCOPED_TRACE(image);
        TestSkin skin(4, 1, 0xFF000000);
        skin.files.putFile(image, test::makePng(3, 1, own));
        if (std::string(image) != "lamp.png") skin.picture("lamp_offline.png", 3, 1, 0xFFFF0000);
        const PatcherScene scene =
            skin.controls("<control type='image' id='FEED_LAMP' x='1' image='" + std::string(image) + "'/>")
                .scene();
        const bool variants = std::string(image) != "lamp.png";
        struct Case {
            FeedStatus status;
            std::vector<uint32_t> shown; // x = 1..3, premultiplied
        } cases[] = {
            // A picture the skin has: exactly as it is.
            {FeedStatus::Online, variants ? std::vector<uint32_t>{0xFF00FF00, 0xFF008000, 0xFF008000}
                                          : std::vector<uint32_t>{0xFF3DDC84, 0xFF1F6E42, 0xFF1F6E42}},
            {FeedStatus::Offline, variants ? std::vector<uint32_t>{0xFFFF0000, 0xFFFF0000, 0xFFFF0000}
                                           // its picture, opaque red
                                           : std::vector<uint32_t>{0xFFE5484D, 0xFF732427, 0xFF732427}},
            // None: its own picture in the status's colour, lightness and alpha kept.
            {FeedStatus::Maintenance, {0xFFF2B33D, 0xFF795A1F, 0xFF795A1F}},
            {FeedStatus::NoData, {0xFF8C99A6, 0xFF464D53, 0xFF464D53}},
        };
        for (const Case& c : cases) {
            SCOPED_TRACE(int(c.status));
            std::vector<ControlState> states = defaultStates(scene);
            states[0].lamp = c.status;
            const std::vector<uint32_t> pixels = test::render(scene, states);
            EXPECT_EQ(pixels[0], 0xFF000000u);
            // The half-transparent pixel is over black: as dark as the half-light one.
            for (size_t x = 0; x < 3; ++x)
                EXPECT_EQ(pixels[x + 1], c.shown[x]) << x;
        }
    }
}

TEST(Feed, AHeadlineIsHitWhereItsLineIsDrawn) {
    const PatcherScene scene =
        TestSkin(300, 200, 0xFF000000)
            .controls("<control type='iframe' id='NEWS' x='20' y='30' w='240' h='100'/>"
                      "<control type='button' id='OVER' x='150' y='40' w='10' h='10'/>")
            .scene();
    std::vector<ControlState> states = defaultStates(scene);
    applyFeed(scene, feedOf(FeedStatus::Online, 1, L"", 5), states);
    const std::vector<NewsRow> rows = newsRows(scene.controls[0], 5);
    ASSERT_EQ(rows.size(), 3u); // 5 headlines, room for 3 lines of 28 px in 100 - 2 * 6
    for (size_t i = 0; i < rows.size(); ++i) {
        const Box& r = rows[i].row;
        EXPECT_TRUE(r.x0 >= 20 && r.x1 <= 260 && r.y1 <= 130 && r.y1 - r.y0 == 28);
        EXPECT_TRUE(rows[i].title.x1 < rows[i].date.x0 && rows[i].date.x1 == r.x1); // a date column fits
        EXPECT_EQ(i ? rows[i - 1].row.y1 : r.y0, r.y0);                             // one under the other
        for (auto [x, y] : {std::pair{r.x0, r.y0}, std::pair{r.x1 - 1, r.y1 - 1}}) {
            const HeadlineHit hit = headlineAt(scene, states, int(x), int(y));
            EXPECT_EQ(hit.control, 0);
            EXPECT_EQ(hit.headline, int(i));
        }
    }
    struct Miss {
        int x, y;
    } misses[] = {
        {25, 100}, {int(rows[0].row.x1), int(rows[0].row.y0)}, {100, int(rows[2].row.y1)}, {5, 5}, {155, 45}};
    for (const Miss& m : misses) // the padding, below the last line, outside the area, a button over it
        EXPECT_EQ(headlineAt(scene, states, m.x, m.y).headline, -1) << m.x << "," << m.y;
    states[0].headlines.resize(1);
    EXPECT_EQ(headlineAt(scene, states, int(rows[1].row.x0), int(rows[1].row.y0)).headline, -1);
    EXPECT_EQ(headlineAt(scene, states, 0, 0).control, -1);
}

} // namespace
} // namespace nv
