#include "update/feed_fetch.h"

#include "core/text.h"
#include "update/checked_sink.h"
#include "update/feed.h"

#include <string_view>

namespace nv::update {

bool fetchFeed(HttpTransport& transport, const std::string& url, const std::atomic<bool>& cancel,
               ServerFeed& feed, std::wstring& error) {
    error.clear();
    if (!isWebAddress(url)) {
        error = L"Duyuru adresi http:// ya da https:// ile başlayan bir adres değil: " + utf8ToWide(url);
        return false;
    }
    std::string body;
    // One byte over the limit is enough to know the document is too large.
    CheckedSink sink({std::nullopt, std::nullopt, kMaxFeedBytes + 1}, [&](const uint8_t* data, size_t size) {
        body.append(reinterpret_cast<const char*>(data), size);
        return true;
    });
    // No cache-busting: a CDN in front of the feed keeps thousands of players off the operator's server, and
    // its cache time is the operator's to choose.
    const FetchOutcome outcome =
        sink.finish(transport.get(HttpRequest{url, std::nullopt, false}, sink, cancel));
    switch (outcome.fault) {
    case FetchFault::None:
        break;
    case FetchFault::Cancelled:
        return false;
    case FetchFault::Status:
        error = L"Duyuru adresi okunamadı: sunucu HTTP " + std::to_wstring(outcome.transfer.head.status) +
                L" ile yanıt verdi.";
        return false;
    case FetchFault::TooLong:
        error = L"Duyuru belgesi " + std::to_wstring(kMaxFeedBytes / 1024) + L" KB'tan büyük.";
        return false;
    case FetchFault::ShortBody:
        error = L"Duyuru adresi okunamadı: bağlantı yarıda kesildi.";
        return false;
    case FetchFault::Network:
        error = L"Duyuru adresi okunamadı: " + transferErrorText(outcome.transfer) + L".";
        return false;
    default:
        error = L"Duyuru adresi okunamadı: " + utf8ToWide(outcome.detail) + L".";
        return false;
    }
    std::wstring why;
    if (!parseFeed(body, feed, &why)) {
        error = L"Duyuru belgesi okunamadı: " + why;
        return false;
    }
    return true;
}

} // namespace nv::update
