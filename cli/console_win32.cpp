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

} // namespace nv
