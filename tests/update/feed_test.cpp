#include "core/text.h"
#include "update/feed.h"
#include "update/feed_refresh.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace nv::update {
namespace {

// A feed with the given members after the required two.
std::string feedWith(const std::string& members) {
    return R"({"status": "online", "players": 7)" + (members.empty() ? "" : ", " + members) + "}";
}

std::string headline(const std::string& title, const std::string& date, const std::string& url) {
    return R"({"title": ")" + title + R"(", "date": ")" + date + R"(", "url": ")" + url + R"("})";
}

TEST(Feed, AFullDocumentReadsWithHeadlinesNewestFirstAndUnknownMembersIgnored) {
    const std::string document = R"({
        "status": "maintenance", "players": 12345, "message": "  Bakım 03:00'e kadar  ",
        "version": 2, "theme": {"colours": [1, 2, {"deep": null}]},
        "news": [
            {"title": "Eski", "date": "2024-05-31", "url": "https://kaldra.example/a", "image": "x.png"},
            {"title": "Yeni \u0130\u011f", "date": "2024-06-14", "url": "HTTP://kaldra.example/b?x=1#y"},
            {"title": "Aynı gün ilk", "date": "2024-06-07", "url": "http://kaldra.example/c"},
            {"title": "Aynı gün ikinci", "date": "2024-06-07", "url": "http://kaldra.example/d"}
        ]
    })";
    ServerFeed feed;
    std::wstring error;
    ASSERT_TRUE(parseFeed(document, feed, &error)) << wideToUtf8(error);
    EXPECT_EQ(feed.status, FeedStatus::Maintenance);
    EXPECT_EQ(feed.players, 12345);
    EXPECT_EQ(feed.message, L"Bakım 03:00'e kadar");
    const std::pair<std::wstring, std::string> order[] = {{L"Yeni İğ", "2024-06-14"},
                                                          {L"Aynı gün ilk", "2024-06-07"},
                                                          {L"Aynı gün ikinci", "2024-06-07"},
                                                          {L"Eski", "2024-05-31"}};
    ASSERT_EQ(feed.headlines.size(), 4u);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(feed.headlines[i].title, order[i].first);
        EXPECT_EQ(feed.headlines[i].date, order[i].second);
    }
    EXPECT_EQ(feed.headlines[0].url, L"HTTP://kaldra.example/b?x=1#y");
}

TEST(Feed, TheSmallestFeedAndOneAtEveryLimitRead) {
    std::string full;
    for (int i = 0; i < 20; ++i)
        full += (i ? "," : "") + headline(std::string(200, 'T'), "2024-02-29",
                                          "https://k.example/" + std::string(2030, 'p')); // 2048 bytes
    const std::string documents[] = {
        R"({"status":"offline","players":0})",
        "\xEF\xBB\xBF" + feedWith(R"("news": [], "message": "")"),
        R"({"players": 100000000, "status": "online", "message": ")" + std::string(200, 'm') +
            R"(", "news": [)" + full + "]}",
    };
    for (const std::string& document : documents) {
        ServerFeed feed;
        EXPECT_TRUE(parseFeed(document, feed)) << document.substr(0, 80);
    }
}

TEST(Feed, AnythingElseIsRefusedWholeWithAMessageThatSaysWhat) {
    const std::string many = [] {
        std::string items;
        for (int i = 0; i < 21; ++i)
            items += (i ? "," : "") + headline("t", "2024-01-01", "https://k.example/");
        return "[" + items + "]";
    }();
    const std::pair<std::string, const wchar_t*> cases[] = {
        // Not JSON, not an object, too big, too deep, ambiguous.
        {"", L"geçerli JSON değil (satır 1"},
        {"{\"status\": \"online\",\n  \"players\": 7,,}", L"(satır 2, sütun 16)"},
        {feedWith("") + " {}", L"geçerli JSON değil"},
        {R"(["online", 7])", L"bir JSON nesnesi"},
        {feedWith(R"("pad": ")" + std::string(kMaxFeedBytes, ' ') + R"(")"), L"çok büyük"},
        {feedWith(R"("x": )" + std::string(40, '[') + std::string(40, ']')), L"çok derin"},
        {R"({"status": "online", "players": 7, "status": "offline"})", L"iki kez var: \"status\""},
        {feedWith(R"("news": [{"title": "a", "title": "b"}])"), L"iki kez var: \"title\""},
        // Status.
        {R"({"players": 7})", L"\"status\" yok"},
        {R"({"status": "Online", "players": 7})", L"online, maintenance ya da offline olmalı: \"Online\""},
        // Players: integers in range only.
        {R"({"status": "online"})", L"\"players\" yok"},
        {R"({"status": "online", "players": -1})", L"\"players\" 0 ile 100000000"},
        {R"({"status": "online", "players": 12.0})", L"\"players\""},
        {R"({"status": "online", "players": "12"})", L"\"players\""},
        {R"({"status": "online", "players": 99999999999999999999999})", L"\"players\""},
        // Message: one line, bounded.
        {feedWith(R"("message": ")" + std::string(201, 'm') + R"(")"), L"\"message\""},
        {feedWith(R"("message": "iki\nsatır")"), L"\"message\""},
        {feedWith(R"("message": "a\u2028b")"), L"\"message\""},
        {feedWith(R"("message": "a\u0000b")"), L"\"message\""},
        // News: an array of at most 20 objects, each fully valid.
        {feedWith(R"("news": {})"), L"\"news\" bir dizi"},
        {feedWith(R"("news": )" + many), L"en çok 20 haber tutabilir; 21 var"},
        {feedWith(R"("news": ["başlık"])"), L"1. haber: bir nesne"},
        {feedWith(R"("news": [)" + headline("a", "2024-01-01", "https://k.example/") + "," +
                  headline("", "2024-01-01", "https://k.example/") + "]"),
         L"2. haber: \"title\""},
        {feedWith(R"("news": [)" + headline(std::string(201, 'T'), "2024-01-01", "https://k.example/") + "]"),
         L"\"title\""},
        {feedWith(R"("news": [{"date": "2024-01-01", "url": "https://k.example/"}])"), L"\"title\""},
        {feedWith(R"("news": [)" + headline("a", "2023-02-29", "https://k.example/") + "]"), L"\"date\""},
        {feedWith(R"("news": [)" + headline("a", "2024-04-31", "https://k.example/") + "]"), L"\"date\""},
        {feedWith(R"("news": [)" + headline("a", "14.06.2024", "https://k.example/") + "]"), L"\"date\""},
        {feedWith(R"("news": [)" + headline("a", "2024-06-14T10:00:00Z", "https://k.example/") + "]"),
         L"\"date\""},
        {feedWith(R"("news": [)" + headline("a", "2024-01-01", "javascript:alert(1)") + "]"), L"\"url\""},
        {feedWith(R"("news": [)" + headline("a", "2024-01-01", "https://") + "]"), L"\"url\""},
        {feedWith(R"("news": [)" + headline("a", "2024-01-01", "https:///yol") + "]"), L"\"url\""},
        {feedWith(R"("news": [)" + headline("a", "2024-01-01", "https://k.example/a b") + "]"), L"\"url\""},
        {feedWith(R"("news": [)" +
                  headline("a", "2024-01-01", "https://k.example/" + std::string(2031, 'p')) + "]"),
         L"\"url\""},
    };
    for (const auto& [document, expected] : cases) {
        SCOPED_TRACE(document.substr(0, 120));
        ServerFeed feed;
        feed.players = 42; // a refused document leaves the feed as it was
        std::wstring error;
        EXPECT_FALSE(parseFeed(document, feed, &error));
        EXPECT_NE(error.find(expected), std::wstring::npos) << wideToUtf8(error);
        EXPECT_EQ(feed.players, 42);
    }
}

TEST(FeedRefresh, TheIntervalIsBoundedAndFailuresRetryAtTheSamePace) {
    for (auto [skin, seconds] : {std::pair{-5, 30}, {29, 30}, {60, 60}, {86401, 86400}, {INT32_MAX, 86400}})
        EXPECT_EQ(feedRefreshSeconds(skin), seconds) << skin;

    FeedRefresh refresh(60);
    EXPECT_TRUE(refresh.due(0)); // the first fetch at once
    refresh.started();
    EXPECT_FALSE(refresh.due(500'000)); // one at a time, however long it takes
    ServerFeed online{
        FeedStatus::Online, 12, L"Hoş geldiniz", {{L"Haber", "2024-06-14", L"https://k.example/"}}};
    refresh.succeeded(1'000, online);
    EXPECT_EQ(refresh.shown().status, FeedStatus::Online);
    EXPECT_EQ(refresh.waitMs(31'000), 30'000u);
    EXPECT_TRUE(refresh.due(61'000));

    refresh.started();
    refresh.failed(62'000, L"Bağlanılamadı");
    EXPECT_EQ(refresh.shown().status, FeedStatus::NoData);
    EXPECT_EQ(refresh.shown().players, -1);
    EXPECT_TRUE(refresh.shown().message.empty());
    EXPECT_EQ(refresh.shown().headlines.size(), 1u); // news does not flicker away
    EXPECT_EQ(refresh.lastError(), L"Bağlanılamadı");
    EXPECT_FALSE(refresh.due(121'999)); // no faster after a failure...
    EXPECT_TRUE(refresh.due(122'000));  // ...and no slower
}

} // namespace
} // namespace nv::update
