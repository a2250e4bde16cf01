// Text conversions through the Windows code-page functions.

#include "core/text.h"

#include <windows.h>

#include <climits>

namespace nv {
namespace {

std::wstring toWide(UINT codePage, std::string_view bytes) {
    if (bytes.empty() || bytes.size() > size_t(INT_MAX)) return {};
    int n = MultiByteToWideChar(codePage, 0, bytes.data(), int(bytes.size()), nullptr, 0);
    if (n <= 0) return {};
    std::wstring out(size_t(n), L'\0');
    if (MultiByteToWideChar(codePage, 0, bytes.data(), int(bytes.size()), out.data(), n) != n) return {};
    return out;
}

} // namespace

std::wstring utf8ToWide(std::string_view utf8) {
    return toWide(CP_UTF8, utf8);
}

std::wstring cp437ToWide(std::string_view bytes) {
    return toWide(437, bytes);
}

std::string wideToUtf8(std::wstring_view wide) {
    if (wide.empty() || wide.size() > size_t(INT_MAX)) return {};
    int n = WideCharToMultiByte(CP_UTF8, 0, wide.data(), int(wide.size()), nullptr, 0, nullptr, nullptr);
    if (n <= 0) return {};
    std::string out(size_t(n), '\0');
    if (WideCharToMultiByte(CP_UTF8, 0, wide.data(), int(wide.size()), out.data(), n, nullptr, nullptr) != n)
        return {};
    return out;
}

std::wstring lowerWide(std::wstring_view s) {
    std::wstring out(s);
    if (!out.empty() && out.size() <= DWORD(-1)) CharLowerBuffW(out.data(), DWORD(out.size()));
    return out;
}

} // namespace nv
