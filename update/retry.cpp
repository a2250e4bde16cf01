#include "update/retry.h"

#include <algorithm>
#include <thread>

namespace nv::update {

std::chrono::milliseconds RetryPolicy::delayBefore(int attempt) const {
    std::chrono::milliseconds delay = firstDelay;
    for (int i = 2; i < attempt && delay < maxDelay; ++i)
        delay *= 2;
    return std::min(delay, maxDelay);
}

bool pause(std::chrono::milliseconds duration, const std::atomic<bool>& stop) {
    const auto end = std::chrono::steady_clock::now() + duration;
    while (!stop.load(std::memory_order_relaxed)) {
        const auto now = std::chrono::steady_clock::now();
        if (now >= end) return true;
        std::this_thread::sleep_for(
            std::min<std::chrono::steady_clock::duration>(end - now, std::chrono::milliseconds(20)));
    }
    return false;
}

} // namespace nv::update
