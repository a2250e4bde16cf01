#include "cli/console.h"

#include "core/text.h"

#include <cstdio>

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

} // namespace nv
