#pragma once
// Work that runs off the UI thread, with one owner. The work gets its inputs by value, reports progress and
// its result to a window as posted messages that carry heap objects (the receiver takes them over with
// takePosted), can be asked to stop, and is joined exactly once. The builder's build, the patcher's update
// run and its feed refresh all run this way, so none of them shares mutable state with the window.

#include <windows.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>

namespace nv {

// Posts value to window as message (lParam: the object, wParam as given). The receiver owns the object from
// then on; when the post fails (the window is gone) it is freed here. False when it was not posted.
template <class T> bool postOwned(HWND window, UINT message, std::unique_ptr<T> value, WPARAM wParam = 0) {
    T* raw = value.release();
    if (window && PostMessageW(window, message, wParam, reinterpret_cast<LPARAM>(raw))) return true;
    delete raw;
    return false;
}

// The object a postOwned message carries, owned by the caller now.
template <class T> std::unique_ptr<T> takePosted(LPARAM lParam) {
    return std::unique_ptr<T>(reinterpret_cast<T*>(lParam));
}

// Frees the objects of every message of that kind still queued for the window: after its job has been joined
// and before the window goes, so that nothing posted is leaked.
template <class T> void dropPosted(HWND window, UINT message) {
    MSG pending{};
    while (PeekMessageW(&pending, window, message, message, PM_REMOVE))
        takePosted<T>(pending.lParam);
}

// What the work sees of its job.
class JobContext {
public:
    JobContext(HWND window, const std::atomic<bool>& cancel) : window_(window), cancel_(cancel) {}

    // True once the owner asked the work to stop; the work ends as soon as it can.
    bool cancelled() const { return cancel_.load(std::memory_order_relaxed); }
    // The flag itself, for portable code that polls it.
    const std::atomic<bool>& cancelFlag() const { return cancel_; }
    HWND window() const { return window_; }

    // A copy of value to the window (see postOwned).
    template <class T> bool post(UINT message, T value, WPARAM wParam = 0) const {
        return postOwned(window_, message, std::make_unique<T>(std::move(value)), wParam);
    }

private:
    HWND window_;
    const std::atomic<bool>& cancel_;
};

class BackgroundJob {
public:
    using Work = std::function<void(JobContext&)>;

    BackgroundJob() = default;
    // Asks a running work to stop and waits for it: a job never outlives its owner.
    ~BackgroundJob();
    BackgroundJob(const BackgroundJob&) = delete;
    BackgroundJob& operator=(const BackgroundJob&) = delete;

    // Starts work on a thread of its own, posting to window. False with a message when a job was started and
    // not joined yet, or when the thread cannot be created. An exception that escapes the work ends it and is
    // kept as failure(); it never crosses into the owner's thread.
    bool start(HWND window, Work work, std::wstring* message = nullptr);

    // Asks the work to stop; returns at once.
    void cancel() { cancel_.store(true, std::memory_order_relaxed); }
    // Started and not joined yet (the work may have returned already).
    bool active() const { return thread_ != nullptr; }
    // Waits up to timeoutMs for the work to return and then releases the thread. True when it returned (or no
    // job was active); false when it is still running, and the job stays active.
    bool join(DWORD timeoutMs = INFINITE);

    // After join: what ended the work when it threw; empty when it returned normally.
    const std::wstring& failure() const { return failure_; }

private:
    struct Launch;
    static unsigned __stdcall threadMain(void* argument);

    HANDLE thread_ = nullptr;
    std::atomic<bool> cancel_{false};
    std::wstring failure_; // written by the work's thread, read after join
};

} // namespace nv
