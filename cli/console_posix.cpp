#include "cli/console.h"

#include "core/text.h"

#include <signal.h>

#include <cstdio>
#include <iterator>

namespace nv {
namespace {

class PosixConsole : public Console {
public:
    void out(std::wstring_view text) override { write(stdout, text); }
    void err(std::wstring_view text) override { write(stderr, text); }

private:
    static void write(std::FILE* stream, std::wstring_view text) {
        std::string utf8 = wideToUtf8(text);
        std::fwrite(utf8.data(), 1, utf8.size(), stream);
        std::fflush(stream);
    }
};

} // namespace

Console& processConsole() {
    static PosixConsole console;
    return console;
}

namespace {

std::atomic<bool> stopRequested = false;
static_assert(std::atomic<bool>::is_always_lock_free);
constexpr int kStopSignals[] = {SIGINT, SIGTERM, SIGHUP};
struct sigaction previous[std::size(kStopSignals)];

void onStopSignal(int) {
    stopRequested = true; // lock-free, so safe in a signal handler
}

} // namespace

StopRequests::StopRequests() {
    stopRequested = false;
    struct sigaction action {};
    action.sa_handler = onStopSignal;
    sigemptyset(&action.sa_mask);
    for (size_t i = 0; i < std::size(kStopSignals); ++i)
        sigaction(kStopSignals[i], &action, &previous[i]);
}

StopRequests::~StopRequests() {
    for (size_t i = 0; i < std::size(kStopSignals); ++i)
        sigaction(kStopSignals[i], &previous[i], nullptr);
}

const std::atomic<bool>& StopRequests::requested() const {
    return stopRequested;
}

} // namespace nv
