// The background job: what the work posts arrives in order and owned, a cancelled work stops, a job is joined
// once, and nothing posted leaks when the window is gone.

#include "core/win32/background_job.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

namespace nv {
namespace {

constexpr UINT kMsgStep = WM_APP + 1;
constexpr UINT kMsgDone = WM_APP + 2;

// Counts live instances, so that a leak or a double free of a posted object shows.
struct Counted {
    static inline std::atomic<int> alive{0};
    int value = 0;
    explicit Counted(int v) : value(v) { ++alive; }
    Counted(const Counted& other) : value(other.value) { ++alive; }
    ~Counted() { --alive; }
};

// A message-only window: receives posts, shows nothing.
struct Receiver {
    HWND hwnd = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    ~Receiver() {
        if (hwnd) DestroyWindow(hwnd);
    }

    // Takes every posted message until kMsgDone arrives (or 5 s pass): the steps' values, then the result.
    std::vector<int> collect(int& done) {
        std::vector<int> steps;
        done = -1;
        const DWORD start = GetTickCount();
        while (done < 0 && GetTickCount() - start < 5000) {
            MSG msg{};
            if (!PeekMessageW(&msg, hwnd, 0, 0, PM_REMOVE)) {
                Sleep(1);
                continue;
            }
            if (msg.message == kMsgStep) steps.push_back(takePosted<Counted>(msg.lParam)->value);
            if (msg.message == kMsgDone) done = takePosted<Counted>(msg.lParam)->value;
        }
        return steps;
    }
};

TEST(BackgroundJob, PostsArriveInOrderAndOwnedAndTheJobIsJoinedOnce) {
    Receiver receiver;
    ASSERT_TRUE(receiver.hwnd);
    {
        BackgroundJob job;
        ASSERT_TRUE(job.start(receiver.hwnd, [](JobContext& context) {
            for (int i = 0; i < 100; ++i)
                context.post(kMsgStep, Counted(i));
            context.post(kMsgDone, Counted(7));
        }));
        std::wstring message;
        EXPECT_FALSE(job.start(
            receiver.hwnd, [](JobContext&) {}, &message))
            << "one job at a time";
        EXPECT_FALSE(message.empty());

        int done = 0;
        const std::vector<int> steps = receiver.collect(done);
        EXPECT_EQ(done, 7);
        ASSERT_EQ(steps.size(), 100u);
        for (int i = 0; i < 100; ++i)
            EXPECT_EQ(steps[size_t(i)], i);
        EXPECT_TRUE(job.join());
        EXPECT_FALSE(job.active());
        EXPECT_TRUE(job.join()) << "a second join has nothing to wait for";
        EXPECT_TRUE(job.failure().empty());

        // Joined, the job takes a new work.
        ASSERT_TRUE(
            job.start(receiver.hwnd, [](JobContext& context) { context.post(kMsgDone, Counted(8)); }));
        receiver.collect(done);
        EXPECT_EQ(done, 8);
    }
    EXPECT_EQ(Counted::alive.load(), 0);
}

TEST(BackgroundJob, CancelStopsTheWorkAndTheOwnerWaitsForIt) {
    Receiver receiver;
    std::atomic<bool> returned{false};
    {
        BackgroundJob job;
        ASSERT_TRUE(job.start(receiver.hwnd, [&](JobContext& context) {
            while (!context.cancelled())
                Sleep(1);
            returned = true;
        }));
        EXPECT_FALSE(job.join(20)) << "still running: join times out and the job stays active";
        EXPECT_TRUE(job.active());
    } // the destructor cancels and joins
    EXPECT_TRUE(returned.load());
}

TEST(BackgroundJob, NothingPostedLeaksWhenTheWindowIsGoneOrTheWorkThrows) {
    {
        Receiver receiver;
        BackgroundJob job;
        ASSERT_TRUE(job.start(receiver.hwnd, [](JobContext& context) {
            for (int i = 0; i < 10; ++i)
                context.post(kMsgStep, Counted(i));
            throw std::runtime_error("the work failed");
        }));
        ASSERT_TRUE(job.join());
        EXPECT_FALSE(job.failure().empty()) << "the exception stayed on the work's thread";
        dropPosted<Counted>(receiver.hwnd, kMsgStep);
        EXPECT_EQ(Counted::alive.load(), 0);
    }
    // A post to a window that no longer exists frees its object.
    Receiver gone;
    HWND stale = gone.hwnd;
    DestroyWindow(gone.hwnd);
    gone.hwnd = nullptr;
    EXPECT_FALSE(postOwned(stale, kMsgStep, std::make_unique<Counted>(1)));
    EXPECT_EQ(Counted::alive.load(), 0);
}

} // namespace
} // namespace nv
