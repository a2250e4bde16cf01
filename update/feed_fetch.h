#pragma once
// One read of a skin's feed: the GET, the checks on the response (status 200, at most kMaxFeedBytes) and the
// parse. The patcher does it at each refresh and `nvbuild check` once, so that an operator reads the very
// message the patcher would have.

#include "skin/server_feed.h"
#include "update/http.h"

#include <atomic>
#include <string>

namespace nv::update {

// True with the feed; false with why not, in Turkish, one line (feed is then left as it was). A cancelled
// read is false with an empty message: nothing went wrong that anyone should read about.
bool fetchFeed(HttpTransport& transport, const std::string& url, const std::atomic<bool>& cancel,
               ServerFeed& feed, std::wstring& error);

} // namespace nv::update
