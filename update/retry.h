#pragma once
// When a failed transfer is tried again: network errors and server errors (5xx) are, a bounded number of
// times with growing pauses; a refusal (4xx) never is, nor anything the player's side got wrong.

#include <atomic>
#include <chrono>

namespace nv::update {

struct RetryPolicy {
    int attempts = 5; // tries in all, the first included
    std::chrono::milliseconds firstDelay{500};
    std::chrono::milliseconds maxDelay{8000};

    // The pause before try number `attempt` (2 for the first retry): firstDelay, doubled each time, at most
    // maxDelay.
    std::chrono::milliseconds delayBefore(int attempt) const;
};

inline bool isRetriableStatus(int status) {
    return status >= 500 && status <= 599;
}

// Sleeps for the pause, waking early (false) once stop is set.
bool pause(std::chrono::milliseconds duration, const std::atomic<bool>& stop);

} // namespace nv::update
