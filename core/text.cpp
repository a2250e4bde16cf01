#include "core/text.h"

namespace nv {
namespace {

bool isTrimmed(wchar_t c) { return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n'; }

template <typename Char> Char lowerAscii(Char c) { return (c >= 'A' && c <= 'Z') ? Char(c + 32) : c; }

template <typename Char> bool endsWithFolded(std::basic_string_view<Char> s, std::basic_string_view<Char> suffix) {
    if (suffix.size() > s.size()) return false;
    const Char* tail = s.data() + (s.size() - suffix.size());
    for (size_t i = 0; i < suffix.size(); ++i)
        if (lowerAscii(tail[i]) != lowerAscii(suffix[i])) return false;
    return true;
}

template <typename Char> std::basic_string<Char> trimmed(std::basic_string_view<Char> s) {
    size_t begin = 0, end = s.size();
    while (begin < end && isTrimmed(wchar_t(s[begin]))) ++begin;
    while (end > begin && isTrimmed(wchar_t(s[end - 1]))) --end;
    return std::basic_string<Char>(s.substr(begin, end - begin));
}

} // namespace

std::string asciiLower(std::string_view s) {
    std::string out(s);
    for (char& c : out) c = lowerAscii(c);
    return out;
}

std::string asciiUpper(std::string_view s) {
    std::string out(s);
    for (char& c : out)
        if (c >= 'a' && c <= 'z') c = char(c - 32);
    return out;
}

bool equalsIgnoreCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    return endsWithFolded(a, b);
}

bool endsWithIgnoreCase(std::string_view s, std::string_view suffix) { return endsWithFolded(s, suffix); }
bool endsWithIgnoreCase(std::wstring_view s, std::wstring_view suffix) { return endsWithFolded(s, suffix); }

std::string trim(std::string_view s) { return trimmed(s); }
std::wstring trim(std::wstring_view s) { return trimmed(s); }

std::wstring widenAscii(std::string_view ascii) {
    std::wstring out;
    out.reserve(ascii.size());
    for (char c : ascii) out.push_back(wchar_t(static_cast<unsigned char>(c)));
    return out;
}

} // namespace nv
