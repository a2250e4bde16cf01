#include "update/feed_refresh.h"

#include <algorithm>
#include <utility>

namespace nv::update {

int feedRefreshSeconds(int skinSeconds) {
    return std::clamp(skinSeconds, kMinFeedRefreshSeconds, kMaxFeedRefreshSeconds);
}

void FeedRefresh::ended(uint64_t nowMs) {
    running_ = false;
    nextMs_ = nowMs + intervalMs_;
}

void FeedRefresh::succeeded(uint64_t nowMs, ServerFeed feed) {
    ended(nowMs);
    shown_ = std::move(feed);
    lastError_.clear();
}

void FeedRefresh::failed(uint64_t nowMs, std::wstring reason) {
    ended(nowMs);
    shown_.status = FeedStatus::NoData;
    shown_.players = -1;
    shown_.message.clear();
    lastError_ = std::move(reason);
}

} // namespace nv::update
