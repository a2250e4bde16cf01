#pragma once
// What the server's feed says and how a skin shows it: the server's status, the players online, the
// operator's one-line message and the news headlines. The patcher fetches and parses the feed
// (update/feed.h), the renderer draws it into the skin's "FEED_" controls and its news area, and the previews
// draw a fixed sample.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nv {

// NoData: nothing fetched yet, or the last fetch failed or did not parse.
enum class FeedStatus { NoData = 0, Online = 1, Maintenance = 2, Offline = 3 };
inline constexpr size_t kFeedStatusCount = 4;

struct FeedHeadline {
    std::wstring title; // one line
    std::string date;   // "YYYY-MM-DD", a real calendar date
    std::wstring url;   // http:// or https://
};

struct ServerFeed {
    FeedStatus status = FeedStatus::NoData;
    int64_t players = -1;                // -1: not known
    std::wstring message;                // one line; empty when the operator has nothing to say
    std::vector<FeedHeadline> headlines; // newest first
};

// The locale key of a status's text: "NV_FEED_NO_DATA", "NV_FEED_ONLINE", "NV_FEED_MAINTENANCE",
// "NV_FEED_OFFLINE".
const char* feedStatusKey(FeedStatus status);

// A headline's date as players read it: "2024-05-14" -> "14.05.2024".
std::wstring feedDateText(std::string_view isoDate);

// An absolute http:// or https:// address (either case) with a host, without spaces or control characters:
// the only kind of address the patcher opens or fetches for a feed.
bool isWebAddress(std::string_view address);

// The pictures a "FEED_LAMP" image control may ship, one per status, indexed by FeedStatus: the name of its
// "image" without its extension and without a trailing "_nodata", "_online", "_maintenance" or "_offline",
// then each of those and the extension ("lamp_online.png" -> "lamp_nodata.png", "lamp_online.png",
// "lamp_maintenance.png", "lamp_offline.png"; "lamp.png" gives the same four).
std::array<std::string, kFeedStatusCount> lampPictureNames(std::string_view image);

} // namespace nv
