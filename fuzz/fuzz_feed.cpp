// The feed comes from a server the patcher does not control: any bytes must end in a feed that keeps every
// promise of its format, or in one message with the caller's feed untouched.

#include "core/text.h"
#include "update/feed.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

bool oneLine(const std::wstring& text) {
    return std::none_of(text.begin(), text.end(), [](wchar_t c) {
        return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029;
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view document(reinterpret_cast<const char*>(data), size);
    nv::ServerFeed feed;
    feed.players = -7; // a marker: a refused document leaves the feed as it was
    std::wstring error;
    if (!nv::update::parseFeed(document, feed, &error)) {
        check(!error.empty() && feed.players == -7 && feed.status == nv::FeedStatus::NoData);
        return 0;
    }
    check(error.empty() && size <= nv::update::kMaxFeedBytes);
    check(feed.status != nv::FeedStatus::NoData);
    check(feed.players >= 0 && feed.players <= nv::update::kMaxFeedPlayers);
    check(feed.message.size() <= 2 * nv::update::kMaxFeedMessage && oneLine(feed.message));
    check(feed.headlines.size() <= nv::update::kMaxFeedHeadlines);
    for (size_t i = 0; i < feed.headlines.size(); ++i) {
        const nv::FeedHeadline& h = feed.headlines[i];
        check(!h.title.empty() && h.title.size() <= 2 * nv::update::kMaxFeedTitle && oneLine(h.title));
        check(h.date.size() == 10 && (i == 0 || feed.headlines[i - 1].date >= h.date)); // newest first
        const std::string url = nv::wideToUtf8(h.url);
        check(url.size() <= nv::update::kMaxFeedAddress && nv::isWebAddress(url));
    }
    return 0;
}
