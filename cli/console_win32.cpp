#include "cli/console.h"

#include "core/text.h"

#include <windows.h>

namespace nv {
namespace {

class StreamWriter {
public:
    explicit StreamWriter(DWORD which) : handle_(GetStdHandle(which)) {
        DWORD mode = 0;
        isConsole_ = handle_ && handle_ != INVALID_HANDLE_VALUE && GetConsoleMode(handle_, &mode);
    }

    void write(std::wstring_view text) {
        if (!handle_ || handle_ == INVALID_HANDLE_VALUE || text.empty()) return;
        if (isConsole_) {
            DWORD written = 0;
            WriteConsoleW(handle_, text.data(), DWORD(text.size()), &written, nullptr);
            return;
        }
        std::string utf8 = wideToUtf8(text);
        DWORD written = 0;
        WriteFile(handle_, utf8.data(), DWORD(utf8.size()), &written, nullptr);
    }

private:
    HANDLE handle_;
    bool isConsole_ = false;
};

class Win32Console : public Console {
public:
    void out(std::wstring_view text) override { out_.write(text); }
    void err(std::wstring_view text) override { err_.write(text); }

private:
    StreamWriter out_{STD_OUTPUT_HANDLE};
    StreamWriter err_{STD_ERROR_HANDLE};
};

} // namespace

Console& processConsole() {
    static Win32Console console;
    return console;
}

namespace {

std::atomic<bool> stopRequested = false;
HANDLE stopsDone = nullptr; // set once the command's cleanup is done

// Runs on a thread of its own that the system starts for each event.
BOOL WINAPI onConsoleEvent(DWORD event) {
    switch (event) {
    case CTRL_C_EVENT:
    case CTRL_BREAK_EVENT:
        stopRequested = true;
        return TRUE;
    case CTRL_CLOSE_EVENT:
    case CTRL_LOGOFF_EVENT:
    case CTRL_SHUTDOWN_EVENT:
        // The process ends when this returns (the system allows about five seconds in all).
        stopRequested = true;
        WaitForSingleObject(stopsDone, 4500);
        return TRUE;
    default:
        return FALSE;
    }
}

} // namespace

StopRequests::StopRequests() {
    stopRequested = false;
    stopsDone = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    SetConsoleCtrlHandler(onConsoleEvent, TRUE);
}

StopRequests::~StopRequests() {
    SetConsoleCtrlHandler(onConsoleEvent, FALSE);
    // A close that came meanwhile is waiting for this; the event stays, the process is about to end anyway.
    if (stopsDone) SetEvent(stopsDone);
}

const std::atomic<bool>& StopRequests::requested() const {
    return stopRequested;
}

} // namespace nv
