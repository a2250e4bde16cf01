#pragma once
// Output of the console tool. To a console the text goes out as wide text; to a file or a pipe as UTF-8.

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

} // namespace nv
