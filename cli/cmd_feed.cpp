// nvbuild feed: reads a published server feed once, as the patcher does, and shows what players would see.

#include "cli/net_transport.h"
#include "cli/nvbuild.h"
#include "core/format.h"
#include "core/text.h"
#include "skin/locale.h"
#include "skin/skin_model.h"
#include "update/feed_fetch.h"

#include <atomic>

namespace nv {
namespace {

int commandFeed(const Invocation& invocation, Console& console) {
    const std::string url = wideToUtf8(trim(invocation.arguments[0]));
    std::wstring why;
    const std::unique_ptr<update::HttpTransport> transport = openCliTransport(why);
    if (!transport) return failed(console, why);
    const std::atomic<bool> never{false};
    ServerFeed feed;
    LocaleTable defaults;
    loadLocaleDefaults(defaults);
    if (!update::fetchFeed(*transport, url, never, feed, why)) {
        console.errLine(why);
        return failed(console, L"Patcher bu durumda \"" + localeText(defaults, "NV_FEED_NO_DATA") +
                                   L"\" gösterir ve aynı aralıkla yeniden dener.");
    }
    console.outLine(L"Durum: " + localeText(defaults, feedStatusKey(feed.status)));
    console.outLine(L"Oyuncu: " + groupedIntegerText(uint64_t(feed.players)));
    if (!feed.message.empty()) console.outLine(L"Mesaj: " + feed.message);
    console.outLine(L"Haberler: " + std::to_wstring(feed.headlines.size()));
    for (const FeedHeadline& headline : feed.headlines)
        console.outLine(L"  " + feedDateText(headline.date) + L"  " + headline.title + L"  " + headline.url);
    return kExitOk;
}

constexpr std::wstring_view kFeedArguments[] = {L"URL"};

} // namespace

const Command kFeedCommand{
    L"feed",
    L"Yayımlanan duyuru belgesini (feed) patcher gibi bir kez okur ve oyuncuların göreceğini yazar.",
    L"feed URL",
    L"Argümanlar:\n"
    L"  URL  skinin feed_url adresi (\"Duyuru ve online adresi\"): http:// ya da https://\n"
    L"\n"
    L"Belge patcher'ın okuduğu gibi okunur (en çok 64 KB, aynı denetimlerle): durum, oyuncu sayısı, mesaj\n"
    L"ve haberler (en yeni önce) yazılır, çıkış 0. Okunamayan ya da kurallara uymayan bir belgede\n"
    L"patcher'ın günlüğe yazdığı ileti standart hataya yazılır, çıkış 1. Yalnızca Windows yapısı ağdan\n"
    L"okur; Linux'ta ./nvbuild bunu Wine altında çalıştırır.\n",
    kFeedArguments,
    {},
    commandFeed,
};

} // namespace nv
