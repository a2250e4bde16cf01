#pragma once
// When the patcher fetches its skin's feed and what it shows between fetches. The first fetch is due at once;
// each later one a fixed interval after the previous one ended, whether that one succeeded or not: a failure
// is retried at the same pace, never faster, so that a broken server is not hammered by every player at once,
// and never slower, so that a server coming back shows within one interval. One fetch at a time.
//
// The interval is the skin's "feed_refresh", bounded below: thousands of players each asking every second
// would be an attack on the operator's own server.

#include "skin/server_feed.h"

#include <cstdint>
#include <string>

namespace nv::update {

inline constexpr int kMinFeedRefreshSeconds = 30;
inline constexpr int kMaxFeedRefreshSeconds = 24 * 60 * 60;

// The skin's value clamped to kMinFeedRefreshSeconds..kMaxFeedRefreshSeconds.
int feedRefreshSeconds(int skinSeconds);

class FeedRefresh {
public:
    explicit FeedRefresh(int skinSeconds) : intervalMs_(uint64_t(feedRefreshSeconds(skinSeconds)) * 1000) {}
    // Below the bound, for the patcher's own tests only (a skin can never ask for it): they watch a feed
    // change between reads without waiting half a minute for each.
    static FeedRefresh withIntervalMs(uint64_t intervalMs) {
        FeedRefresh refresh(kMinFeedRefreshSeconds);
        refresh.intervalMs_ = intervalMs;
        return refresh;
    }

    // Times are milliseconds of a monotonic clock.
    bool due(uint64_t nowMs) const { return !running_ && nowMs >= nextMs_; }
    // How long until the next fetch is due (0 when it is, or while one runs: its end decides).
    uint64_t waitMs(uint64_t nowMs) const { return running_ || nowMs >= nextMs_ ? 0 : nextMs_ - nowMs; }
    void started() { running_ = true; }

    // The fetch ended with a parsed feed. What shows becomes that feed.
    void succeeded(uint64_t nowMs, ServerFeed feed);
    // The fetch failed or its document did not parse (reason: the message, for the log). The status shows no
    // data and the players are unknown; the headlines of the last good feed stay, since news does not turn
    // false the moment a server is unreachable and the news area should not flicker empty.
    void failed(uint64_t nowMs, std::wstring reason);

    const ServerFeed& shown() const { return shown_; }
    const std::wstring& lastError() const { return lastError_; }
    uint64_t intervalMs() const { return intervalMs_; }

private:
    void ended(uint64_t nowMs);

    uint64_t intervalMs_;
    uint64_t nextMs_ = 0;
    bool running_ = false;
    ServerFeed shown_;
    std::wstring lastError_;
};

} // namespace nv::update
