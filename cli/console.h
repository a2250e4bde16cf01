#pragma once
// Output of the console tool. To a console the text goes out as wide text; to a file or a pipe as UTF-8.

#include <atomic>
#include <string>
#include <string_view>

namespace nv {

class Console {
public:
    virtual ~Console() = default;
    virtual void out(std::wstring_view text) = 0;
    virtual void err(std::wstring_view text) = 0;

    void outLine(std::wstring_view text) {
        out(text);
        out(L"\n");
    }
    void errLine(std::wstring_view text) {
        err(text);
        err(L"\n");
    }
};

// The process's standard output and error.
Console& processConsole();

// While one is alive, Ctrl-C, Ctrl-Break and a closed console window (on POSIX: SIGINT, SIGTERM, SIGHUP) ask
// the running command to stop instead of ending the process on the spot, which would leave a build's
// temporary copy behind. The command looks at requested() between its steps; when the window is closed, the
// system ends the process soon after asking, so the ask waits (a few seconds at most) for this object to go,
// the command's cleanup done. One at a time.
class StopRequests {
public:
    StopRequests();
    ~StopRequests();
    StopRequests(const StopRequests&) = delete;
    StopRequests& operator=(const StopRequests&) = delete;

    const std::atomic<bool>& requested() const;
};

} // namespace nv
