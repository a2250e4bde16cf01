#include "core/text.h"

namespace nv {
namespace {

bool isTrimmed(wchar_t c) {
    return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n';
}

template <typename Char> Char lowerAscii(Char c) {
    return (c >= 'A' && c <= 'Z') ? Char(c + 32) : c;
}

template <typename Char>
bool endsWithFolded(std::basic_string_view<Char> s, std::basic_string_view<Char> suffix) {
    if (suffix.size() > s.size()) return false;
    const Char* tail = s.data() + (s.size() - suffix.size());
    for (size_t i = 0; i < suffix.size(); ++i)
        if (lowerAscii(tail[i]) != lowerAscii(suffix[i])) return false;
    return true;
}

template <typename Char> std::basic_string<Char> trimmed(std::basic_string_view<Char> s) {
    size_t begin = 0, end = s.size();
    while (begin < end && isTrimmed(wchar_t(s[begin])))
        ++begin;
    while (end > begin && isTrimmed(wchar_t(s[end - 1])))
        --end;
    return std::basic_string<Char>(s.substr(begin, end - begin));
}

} // namespace

std::string asciiLower(std::string_view s) {
    std::string out(s);
    for (char& c : out)
        c = lowerAscii(c);
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

bool endsWithIgnoreCase(std::string_view s, std::string_view suffix) {
    return endsWithFolded(s, suffix);
}
bool endsWithIgnoreCase(std::wstring_view s, std::wstring_view suffix) {
    return endsWithFolded(s, suffix);
}

std::string trim(std::string_view s) {
    return trimmed(s);
}
std::wstring trim(std::wstring_view s) {
    return trimmed(s);
}

void appendUtf8(std::string& out, char32_t cp) {
    if (cp < 0x80) {
        out.push_back(char(cp));
    } else if (cp < 0x800) {
        out.push_back(char(0xC0 | (cp >> 6)));
        out.push_back(char(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
        out.push_back(char(0xE0 | (cp >> 12)));
        out.push_back(char(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(char(0x80 | (cp & 0x3F)));
    } else {
        out.push_back(char(0xF0 | (cp >> 18)));
        out.push_back(char(0x80 | ((cp >> 12) & 0x3F)));
        out.push_back(char(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(char(0x80 | (cp & 0x3F)));
    }
}

std::string utf16BytesToUtf8(const uint8_t* data, size_t size, bool bigEndian) {
    std::string out;
    out.reserve(size);
    const size_t units = size / 2;
    auto unitAt = [&](size_t i) -> char32_t {
        const uint8_t* p = data + 2 * i;
        return bigEndian ? char32_t(p[0] << 8 | p[1]) : char32_t(p[1] << 8 | p[0]);
    };
    for (size_t i = 0; i < units; ++i) {
        char32_t unit = unitAt(i);
        if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < units) {
            const char32_t low = unitAt(i + 1);
            if (low >= 0xDC00 && low <= 0xDFFF) {
                appendUtf8(out, 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00));
                ++i;
                continue;
            }
        }
        if (unit >= 0xD800 && unit <= 0xDFFF) unit = 0xFFFD;
        appendUtf8(out, unit);
    }
    return out;
}

int hexDigitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::wstring widenAscii(std::string_view ascii) {
    std::wstring out;
    out.reserve(ascii.size());
    for (char c : ascii)
        out.push_back(wchar_t(static_cast<unsigned char>(c)));
    return out;
}

} // namespace nv
