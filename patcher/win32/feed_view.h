#pragma once
// The patcher window's server feed: read when the window opens and again at the skin's pace, each read on a
// BackgroundJob of its own so that neither the window nor the update ever waits for it. Between reads a
// window timer counts; a read's end arrives as a posted message and fills the feed's controls and news areas.
// A read that fails shows NV_FEED_NO_DATA until a later one succeeds.

#include "core/win32/background_job.h"
#include "renderer/scene.h"
#include "update/feed_refresh.h"
#include "update/http.h"

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

namespace nv {

// Where the feed is and how often it is read: the skin's "feed_url" and "feed_refresh".
struct FeedSource {
    std::wstring url;
    int refreshSeconds = 60;
    uint64_t testIntervalMs = 0; // the patcher's tests only: an interval below the skin's bound
};

class FeedView {
public:
    struct Host {
        virtual ~Host() = default;
        // A read ended and the states show its outcome (count: reads so far, from 1).
        virtual void feedRead(int count) = 0;
    };

    FeedView(const PatcherScene& scene, FeedSource source, Host& host);
    ~FeedView();
    FeedView(const FeedView&) = delete;
    FeedView& operator=(const FeedView&) = delete;

    // Starts the first read. False when the system's transport cannot be set up; the feed then shows no data
    // for good.
    bool start(HWND window);
    // No more reads; a read under way is asked to stop and its end is dropped.
    void stop();

    // The window's messages of the feed (its timer, a read's end); true when the message was one of them.
    bool handle(UINT message, WPARAM wParam, LPARAM lParam, std::vector<ControlState>& states);

private:
    void readNow();
    void schedule();

    const PatcherScene& scene_;
    FeedSource source_;
    Host& host_;
    HWND window_ = nullptr;
    update::FeedRefresh refresh_;
    std::unique_ptr<update::HttpTransport> transport_; // outlives the job that uses it
    bool stopped_ = false;
    int reads_ = 0;
    BackgroundJob job_;
};

} // namespace nv
