#include "recipe/addresses.h"

#include "core/text.h"

namespace nv {
namespace {

bool startsWithIgnoreCase(std::wstring_view text, std::wstring_view prefix) {
    if (text.size() < prefix.size()) return false;
    // ASCII only: a scheme has no other letters, and a locale's lower case (the Turkish I) must not count.
    for (size_t i = 0; i < prefix.size(); ++i) {
        wchar_t c = text[i];
        if (c >= L'A' && c <= L'Z') c = static_cast<wchar_t>(c - L'A' + L'a');
        if (c != prefix[i]) return false;
    }
    return true;
}

bool blank(wchar_t c) {
    return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n' || c == 0x00A0 || c == 0x3000;
}

} // namespace

bool isWebAddress(std::wstring_view text) {
    const std::wstring trimmed = trim(std::wstring(text));
    std::wstring_view rest = trimmed;
    if (startsWithIgnoreCase(rest, L"https://"))
        rest.remove_prefix(8);
    else if (startsWithIgnoreCase(rest, L"http://"))
        rest.remove_prefix(7);
    else
        return false;
    for (wchar_t c : rest)
        if (blank(c) || c < 0x20) return false;
    std::wstring_view authority = rest.substr(0, rest.find_first_of(L"/?#"));
    const size_t at = authority.rfind(L'@');
    if (at != std::wstring_view::npos) authority.remove_prefix(at + 1);
    std::wstring_view host = authority;
    if (!authority.empty() && authority.front() == L'[') {
        // An IPv6 literal: its colons are not the port's.
        const size_t close = authority.find(L']');
        if (close == std::wstring_view::npos) return false;
        host = authority.substr(0, close + 1);
        authority.remove_prefix(close + 1);
        if (!authority.empty() && authority.front() != L':') return false;
    } else {
        host = authority.substr(0, authority.find(L':'));
        authority.remove_prefix(host.size());
    }
    if (host.empty() || host == L"[]") return false;
    if (!authority.empty()) {
        // ":port": one to five digits.
        const std::wstring_view port = authority.substr(1);
        if (port.empty() || port.size() > 5) return false;
        for (wchar_t c : port)
            if (c < L'0' || c > L'9') return false;
    }
    return true;
}

std::vector<std::wstring> addressWarnings(const Recipe& recipe) {
    std::vector<std::wstring> lines;
    const std::wstring config = trim(recipe.configUrl);
    if (config.empty())
        lines.push_back(L"Uyarı: yama adresi boş — bu patcher güncelleme alamaz.");
    else if (!isWebAddress(config))
        lines.push_back(L"Uyarı: yama adresi geçersiz (" + config + L") — bu patcher güncelleme alamaz.");
    const struct {
        const wchar_t* what;
        const std::wstring& address;
    } pages[] = {{L"haber sayfasının adresi", recipe.iframeUrl}, {L"duyuru adresi", recipe.feedUrl}};
    for (const auto& page : pages) {
        const std::wstring address = trim(page.address);
        if (!address.empty() && !isWebAddress(address))
            lines.push_back(L"Uyarı: " + std::wstring(page.what) + L" geçersiz (" + address +
                            L") — açılamaz.");
    }
    for (const RecipeLink& link : recipe.links) {
        const std::wstring address = trim(link.address);
        if (!address.empty() && !isWebAddress(address))
            lines.push_back(L"Uyarı: " + utf8ToWide(link.id) + L" butonunun adresi geçersiz (" + address +
                            L") — açılamaz.");
    }
    return lines;
}

} // namespace nv
