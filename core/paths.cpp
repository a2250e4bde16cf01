#include "core/paths.h"

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

} // namespace nv
