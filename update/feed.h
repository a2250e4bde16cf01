#pragma once
// The server feed document at a skin's "feed_url": a small JSON object that the operator changes whenever the
// server's state changes, read by every player's patcher. Strict: a document that is not exactly a feed is
// refused as a whole with one message naming what is wrong, so that the operator can fix it (nvbuild shows
// the same message the patcher logs) and players never see half of a broken feed. Members the parser does not
// know are ignored at every level, so the format can grow.
//
//   {
//     "status": "online",            required: "online", "maintenance" or "offline"
//     "players": 12345,              required: an integer, 0..kMaxFeedPlayers
//     "message": "Bakım 03:00'te",   optional: one line, at most kMaxFeedMessage characters
//     "news": [                      optional: at most kMaxFeedHeadlines objects
//       {"title": "...", "date": "2024-05-14", "url": "https://..."}
//     ]
//   }
//
// Headlines are shown newest first: the parser orders them by date (a stable order, so headlines of one day
// keep the document's order).

#include "skin/server_feed.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace nv::update {

inline constexpr size_t kMaxFeedBytes = 64 * 1024;
inline constexpr int64_t kMaxFeedPlayers = 100'000'000;
inline constexpr size_t kMaxFeedMessage = 200;  // UTF-16 code units
inline constexpr size_t kMaxFeedTitle = 200;    // UTF-16 code units
inline constexpr size_t kMaxFeedAddress = 2048; // bytes
inline constexpr size_t kMaxFeedHeadlines = 20;
inline constexpr int kMaxFeedDepth = 16; // nesting of arrays and objects, unknown members included

// True when the bytes are a feed; feed then holds it. Otherwise false, feed is left as it was and error (when
// given) says why, in Turkish.
bool parseFeed(std::string_view document, ServerFeed& feed, std::wstring* error = nullptr);

} // namespace nv::update
