// One read of the feed against the scripted server: what is shown when it works, and the operator's message
// (the one nvbuild feed prints) for each way it does not.

#include "core/text.h"
#include "tests/update/fake_server.h"
#include "update/feed.h"
#include "update/feed_fetch.h"

#include <gtest/gtest.h>

namespace nv::update {
namespace {

using test::FakeServer;
using test::Fault;
using test::FaultRule;

constexpr const char* kFeedUrl = "http://status.test/launcher/feed.json";
const std::string kGoodFeed =
    R"({"status":"maintenance","players":12,"news":[{"title":"Eski","date":"2024-01-02","url":"https://a/1"},)"
    R"({"title":"Yeni","date":"2024-03-04","url":"https://a/2"}]})";

TEST(FeedFetch, AGoodFeedIsTakenWholeNewestFirst) {
    FakeServer server;
    server.putText(kFeedUrl, kGoodFeed);
    const std::atomic<bool> cancel{false};
    ServerFeed feed;
    std::wstring error;
    ASSERT_TRUE(fetchFeed(server, kFeedUrl, cancel, feed, error)) << error;
    EXPECT_EQ(feed.status, FeedStatus::Maintenance);
    EXPECT_EQ(feed.players, 12);
    ASSERT_EQ(feed.headlines.size(), 2u);
    EXPECT_EQ(feed.headlines[0].title, L"Yeni");
    // Fetched plainly: a CDN in front of the feed may cache it.
    ASSERT_EQ(server.log().size(), 1u);
    EXPECT_FALSE(server.log()[0].noCache);
    EXPECT_EQ(server.log()[0].url, kFeedUrl);
}

TEST(FeedFetch, EveryFailureIsNamedAndLeavesTheFeedAsItWas) {
    struct Case {
        const char* name;
        std::string url;
        std::string body;
        FaultRule fault;
        const wchar_t* says;
    };
    const Case cases[] = {
        {"not found", kFeedUrl, kGoodFeed, {Fault::Status, 404}, L"HTTP 404"},
        {"server error", kFeedUrl, kGoodFeed, {Fault::Status, 503}, L"HTTP 503"},
        {"refused", kFeedUrl, kGoodFeed, {Fault::Refused}, L"bağlanılamadı"},
        {"cut", kFeedUrl, kGoodFeed, {Fault::CutShort, 0, 10}, L"yarıda kesildi"},
        {"endless", kFeedUrl, kGoodFeed, {Fault::Endless}, L"64 KB"},
        {"too large", kFeedUrl, kGoodFeed + std::string(kMaxFeedBytes, ' '), {}, L"64 KB"},
        {"not a feed", kFeedUrl, R"({"status":"up","players":1})", {}, L"\"status\""},
        {"an HTML page", kFeedUrl, "<html>502 Bad Gateway</html>", {}, L"Duyuru belgesi okunamadı"},
        {"not a web address", "file:///C:/feed.json", kGoodFeed, {}, L"http://"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        FakeServer server;
        server.putText(kFeedUrl, c.body);
        if (c.fault.fault != Fault::None) server.fault(kFeedUrl, c.fault);
        const std::atomic<bool> cancel{false};
        ServerFeed feed;
        feed.players = 99;
        std::wstring error;
        EXPECT_FALSE(fetchFeed(server, c.url, cancel, feed, error));
        EXPECT_NE(error.find(c.says), std::wstring::npos) << wideToUtf8(error);
        EXPECT_EQ(feed.players, 99);
    }
}

TEST(FeedFetch, ACancelledReadSaysNothing) {
    FakeServer server;
    server.putText(kFeedUrl, kGoodFeed);
    server.fault(kFeedUrl, {Fault::Stall});
    const std::atomic<bool> cancel{true};
    ServerFeed feed;
    std::wstring error;
    EXPECT_FALSE(fetchFeed(server, kFeedUrl, cancel, feed, error));
    EXPECT_TRUE(error.empty());
}

} // namespace
} // namespace nv::update
