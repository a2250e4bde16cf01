#include "patcher/win32/feed_view.h"

#include "core/text.h"
#include "update/feed_fetch.h"
#include "update/win32/winhttp_transport.h"

#include <algorithm>

namespace nv {
namespace {

constexpr UINT kFeedEndMessage = WM_APP + 30; // FeedEnd
constexpr UINT_PTR kFeedTimer = 0x4E46;       // one timer id of the window's own, apart from any other

struct FeedEnd {
    bool ok = false;
    ServerFeed feed;
    std::wstring error;
};

// A feed is a few kilobytes: a server that keeps it waiting this long is down for the player. Short timeouts
// also bound how long a closed window's last read may keep the process alive.
update::WinHttpOptions feedTransportOptions() {
    update::WinHttpOptions options;
    options.connectTimeoutMs = 8000;
    options.sendTimeoutMs = 8000;
    options.receiveTimeoutMs = 8000;
    return options;
}

uint64_t nowMs() {
    return GetTickCount64();
}

} // namespace

FeedView::FeedView(const PatcherScene& scene, FeedSource source, Host& host)
    : scene_(scene), source_(std::move(source)), host_(host),
      refresh_(source_.testIntervalMs ? update::FeedRefresh::withIntervalMs(source_.testIntervalMs)
                                      : update::FeedRefresh(source_.refreshSeconds)) {}

FeedView::~FeedView() {
    stop();
    job_.join();
    if (window_) dropPosted<FeedEnd>(window_, kFeedEndMessage);
}

bool FeedView::start(HWND window) {
    window_ = window;
    transport_ = update::openWinHttpTransport(feedTransportOptions());
    if (!transport_) return false;
    readNow();
    return true;
}

void FeedView::stop() {
    stopped_ = true;
    job_.cancel();
    if (window_) KillTimer(window_, kFeedTimer);
}

void FeedView::readNow() {
    if (stopped_ || job_.active()) return;
    refresh_.started();
    update::HttpTransport* transport = transport_.get();
    const std::string url = wideToUtf8(trim(source_.url));
    const bool started = job_.start(window_, [transport, url](JobContext& context) {
        FeedEnd end;
        end.ok = update::fetchFeed(*transport, url, context.cancelFlag(), end.feed, end.error);
        context.post(kFeedEndMessage, std::move(end));
    });
    if (!started) {
        // No thread for it now: counted as a failed read, tried again at the same pace.
        refresh_.failed(nowMs(), L"");
        schedule();
    }
}

void FeedView::schedule() {
    if (stopped_) return;
    const uint64_t wait = refresh_.waitMs(nowMs());
    SetTimer(window_, kFeedTimer, UINT(std::min<uint64_t>(std::max<uint64_t>(wait, 1), USER_TIMER_MAXIMUM)),
             nullptr);
}

bool FeedView::handle(UINT message, WPARAM wParam, LPARAM lParam, std::vector<ControlState>& states) {
    if (message == WM_TIMER && wParam == kFeedTimer) {
        KillTimer(window_, kFeedTimer);
        if (refresh_.due(nowMs()))
            readNow();
        else
            schedule(); // a timer may fire early
        return true;
    }
    if (message != kFeedEndMessage) return false;
    const auto end = takePosted<FeedEnd>(lParam);
    job_.join();
    if (stopped_) return true;
    if (end->ok)
        refresh_.succeeded(nowMs(), std::move(end->feed));
    else
        refresh_.failed(nowMs(), std::move(end->error));
    applyFeed(scene_, refresh_.shown(), states);
    host_.feedRead(++reads_);
    schedule();
    return true;
}

} // namespace nv
