#include "skin/server_feed.h"
#include "skin/skin_model.h"
#include "tests/support/image_files.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

TEST(ServerFeed, LampPicturesAreNamedAfterTheStatusWhateverTheSkinNamesItsOwn) {
    const std::pair<const char*, std::array<std::string, kFeedStatusCount>> cases[] = {
        {"lamp_online.png",
         {"lamp_nodata.png", "lamp_online.png", "lamp_maintenance.png", "lamp_offline.png"}},
        {"lamp.png", {"lamp_nodata.png", "lamp_online.png", "lamp_maintenance.png", "lamp_offline.png"}},
        {"img/Lamp_OFFLINE.PNG",
         {"img/Lamp_nodata.PNG", "img/Lamp_online.PNG", "img/Lamp_maintenance.PNG", "img/Lamp_offline.PNG"}},
        {"lamp_nodata", {"lamp_nodata", "lamp_online", "lamp_maintenance", "lamp_offline"}},
        {"online.gif",
         {"online_nodata.gif", "online_online.gif", "online_maintenance.gif", "online_offline.gif"}},
        {"", {"_nodata", "_online", "_maintenance", "_offline"}},
    };
    for (const auto& [image, names] : cases)
        EXPECT_EQ(lampPictureNames(image), names) << image;
}

TEST(ServerFeed, OnlyHttpAndHttpsAddressesWithAHostAreWebAddresses) {
    const std::pair<const char*, bool> cases[] = {
        {"https://kaldra.example/", true},
        {"http://kaldra.example", true},
        {"HTTPS://k.example/a?b=c#d", true},
        {"https://k.example/haber/güncel", true},
        {"https://", false},
        {"https:///yol", false},
        {"https://@k.example", false},
        {"https://k.example/a b", false},
        {"https://k.example/\t", false},
        {"ftp://k.example/", false},
        {"javascript:alert(1)", false},
        {"file:///C:/Windows", false},
        {"//k.example/", false},
        {"k.example", false},
        {"", false},
    };
    for (const auto& [address, web] : cases)
        EXPECT_EQ(isWebAddress(address), web) << address;
}

TEST(ServerFeed, StatusKeysAndDates) {
    EXPECT_STREQ(feedStatusKey(FeedStatus::NoData), "NV_FEED_NO_DATA");
    EXPECT_STREQ(feedStatusKey(FeedStatus::Online), "NV_FEED_ONLINE");
    EXPECT_STREQ(feedStatusKey(FeedStatus::Maintenance), "NV_FEED_MAINTENANCE");
    EXPECT_STREQ(feedStatusKey(FeedStatus::Offline), "NV_FEED_OFFLINE");
    EXPECT_EQ(feedDateText("2024-05-14"), L"14.05.2024");
}

TEST(ServerFeed, TheLoaderTakesTheLampsOwnPicturesAndTheMessageSwitch) {
    SkinFileSet set;
    set.putFile("Fernwick.url.xml",
                test::bytesOf("<urls remoteConfigPath=\"https://patch.example/c.xml\"/>"));
    set.putFile("main.png", test::makePng(40, 30, 0xFF102030));
    set.putFile("lamp_online.png", test::makePng(4, 4, 0xFF00FF00));
    set.putFile("lamp_offline.png", test::makePng(4, 4, 0xFFFF0000));
    set.putFile("skin.xml",
                test::bytesOf("<skin><control type='image' id='feed_lamp' image='lamp_online.png'/>"
                              "<control type='image' id='OTHER' image='lamp_online.png'/>"
                              "<control type='text' id='FEED_STATUS' feed_message='evet'/>"
                              "<control type='text' id='T'/></skin>"));
    SkinModel model;
    ASSERT_TRUE(loadSkinModel(set, model));
    const auto& lamp = model.controls[0].imageLamp;
    EXPECT_TRUE(lamp[size_t(FeedStatus::NoData)].empty());
    EXPECT_EQ(lamp[size_t(FeedStatus::Online)].at(0, 0), 0xFF00FF00u);
    EXPECT_TRUE(lamp[size_t(FeedStatus::Maintenance)].empty());
    EXPECT_EQ(lamp[size_t(FeedStatus::Offline)].at(0, 0), 0xFFFF0000u);
    for (const DecodedImage& picture : model.controls[1].imageLamp) // only the lamp has status pictures
        EXPECT_TRUE(picture.empty());
    EXPECT_TRUE(model.controls[2].feedMessage);
    EXPECT_FALSE(model.controls[3].feedMessage);
}

} // namespace
} // namespace nv
