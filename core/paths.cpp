#include "core/paths.h"

#include "core/text.h"

namespace nv {
namespace {

#ifdef _WIN32
constexpr wchar_t kJoinSeparator = L'\\';
#else
constexpr wchar_t kJoinSeparator = L'/'; // the native build joins with the separator its file system knows
#endif

size_t lastSeparator(std::wstring_view path) {
    for (size_t i = path.size(); i > 0; --i)
        if (isPathSeparator(path[i - 1])) return i - 1;
    return std::wstring_view::npos;
}

} // namespace

bool isPathSeparator(wchar_t c) {
    return c == L'\\' || c == L'/';
}

std::string_view bareFileName(std::string_view path) {
    size_t sep = path.find_last_of("/\\");
    return sep == std::string_view::npos ? path : path.substr(sep + 1);
}

std::wstring pathFileName(std::wstring_view path) {
    size_t sep = lastSeparator(path);
    return std::wstring(sep == std::wstring_view::npos ? path : path.substr(sep + 1));
}

std::wstring pathParent(std::wstring_view path) {
    size_t sep = lastSeparator(path);
    return sep == std::wstring_view::npos ? std::wstring() : std::wstring(path.substr(0, sep));
}

std::wstring pathJoin(std::wstring_view a, std::wstring_view b) {
    if (a.empty()) return std::wstring(b);
    if (b.empty()) return std::wstring(a);
    std::wstring out(a);
#ifdef _WIN32
    // A folder typed with '/' (Windows takes both) keeps its style: "skins/x\bg.png" reads as a typo.
    const bool slashes = a.find(L'/') != std::wstring_view::npos && a.find(L'\\') == std::wstring_view::npos;
    const wchar_t separator = slashes ? L'/' : kJoinSeparator;
#else
    const wchar_t separator = kJoinSeparator;
#endif
    if (!isPathSeparator(out.back())) out.push_back(separator);
    out.append(b);
    return out;
}

bool isWindowsDeviceName(std::string_view name) {
    const std::string base = asciiLower(name.substr(0, name.find('.')));
    for (const char* device : {"con", "prn", "aux", "nul", "conin$", "conout$"})
        if (base == device) return true;
    return base.size() == 4 && (base.starts_with("com") || base.starts_with("lpt")) && base[3] >= '0' &&
           base[3] <= '9';
}

bool isKeptFileName(std::string_view name) {
    if (name.empty() || name == "." || name == ".." || name.back() == '.' || name.back() == ' ' ||
        isWindowsDeviceName(name))
        return false;
    for (unsigned char c : name)
        if (c < 0x20 || c == '/' || c == '\\' || c == ':' || c == '*' || c == '?' || c == '"' || c == '<' ||
            c == '>' || c == '|')
            return false;
    return true;
}

} // namespace nv
