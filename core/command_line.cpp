#include "core/command_line.h"

namespace nv {

std::wstring quoteArgument(std::wstring_view value) {
    std::wstring out;
    out.reserve(value.size() + 2);
    out += L'"';
    size_t backslashes = 0;
    for (wchar_t c : value) {
        if (c == L'\\') {
            ++backslashes;
            continue;
        }
        // Backslashes that end up in front of a quote would escape it: each is doubled, and the value's own
        // quote gets one more to make it literal.
        if (c == L'"')
            out.append(backslashes * 2 + 1, L'\\');
        else
            out.append(backslashes, L'\\');
        out += c;
        backslashes = 0;
    }
    out.append(backslashes * 2, L'\\'); // before the closing quote
    out += L'"';
    return out;
}

std::wstring quoteProgram(std::wstring_view path) {
    return L"\"" + std::wstring(path) + L"\"";
}

std::wstring programOf(std::wstring_view commandLine) {
    size_t start = commandLine.find_first_not_of(L" \t");
    if (start == std::wstring_view::npos) return {};
    if (commandLine[start] == L'"') {
        size_t end = commandLine.find(L'"', start + 1);
        return std::wstring(
            commandLine.substr(start + 1, end == std::wstring_view::npos ? end : end - start - 1));
    }
    size_t end = commandLine.find_first_of(L" \t", start);
    return std::wstring(commandLine.substr(start, end == std::wstring_view::npos ? end : end - start));
}

} // namespace nv
