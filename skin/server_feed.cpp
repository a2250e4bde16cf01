#include "skin/server_feed.h"

#include "core/text.h"
#include "skin/skin_model.h"

namespace nv {
namespace {

// The name part of each status in a lamp picture's name, indexed by FeedStatus.
constexpr std::string_view kLampSuffixes[kFeedStatusCount] = {"_nodata", "_online", "_maintenance",
                                                              "_offline"};

} // namespace

const char* feedStatusKey(FeedStatus status) {
    switch (status) {
    case FeedStatus::Online:
        return "NV_FEED_ONLINE";
    case FeedStatus::Maintenance:
        return "NV_FEED_MAINTENANCE";
    case FeedStatus::Offline:
        return "NV_FEED_OFFLINE";
    case FeedStatus::NoData:
        break;
    }
    return "NV_FEED_NO_DATA";
}

std::wstring feedDateText(std::string_view isoDate) {
    if (isoDate.size() != 10) return utf8ToWide(isoDate);
    return widenAscii(std::string(isoDate.substr(8, 2)) + "." + std::string(isoDate.substr(5, 2)) + "." +
                      std::string(isoDate.substr(0, 4)));
}

bool isWebAddress(std::string_view address) {
    size_t hostStart = 0;
    for (std::string_view scheme : {std::string_view("http://"), std::string_view("https://")})
        if (address.size() > scheme.size() && equalsIgnoreCase(address.substr(0, scheme.size()), scheme))
            hostStart = scheme.size();
    if (hostStart == 0) return false;
    for (unsigned char c : address)
        if (c <= 0x20 || c == 0x7F) return false;
    const char first = address[hostStart];
    return first != '/' && first != '?' && first != '#' && first != '@' && first != ':';
}

std::array<std::string, kFeedStatusCount> lampPictureNames(std::string_view image) {
    auto [base, ext] = splitPictureName(image);
    for (std::string_view suffix : kLampSuffixes)
        if (endsWithIgnoreCase(base, suffix)) {
            base.resize(base.size() - suffix.size());
            break;
        }
    std::array<std::string, kFeedStatusCount> names;
    for (size_t i = 0; i < kFeedStatusCount; ++i)
        names[i] = base + std::string(kLampSuffixes[i]) + ext;
    return names;
}

} // namespace nv
