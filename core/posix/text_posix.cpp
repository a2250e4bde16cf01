// Text conversions for the native build. Wide strings hold one code point per wchar_t here; invalid UTF-8
// bytes become U+FFFD, as the Windows converter does.

#include "core/cp437.h"
#include "core/text.h"

#include <cwctype>

namespace nv {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// Decodes one UTF-8 sequence at s[i]; advances i past it (past one byte when it is invalid).
char32_t decodeOne(std::string_view s, size_t& i) {
    const unsigned char lead = static_cast<unsigned char>(s[i++]);
    if (lead < 0x80) return lead;
    int extra;
    char32_t cp, min;
    if (lead >= 0xC2 && lead <= 0xDF)
        extra = 1, cp = lead & 0x1F, min = 0x80;
    else if (lead >= 0xE0 && lead <= 0xEF)
        extra = 2, cp = lead & 0x0F, min = 0x800;
    else if (lead >= 0xF0 && lead <= 0xF4)
        extra = 3, cp = lead & 0x07, min = 0x10000;
    else
        return kReplacement;
    size_t j = i;
    for (int k = 0; k < extra; ++k, ++j) {
        if (j >= s.size() || (static_cast<unsigned char>(s[j]) & 0xC0) != 0x80) return kReplacement;
        cp = (cp << 6) | (static_cast<unsigned char>(s[j]) & 0x3F);
    }
    if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return kReplacement;
    i = j;
    return cp;
}

} // namespace

std::wstring utf8ToWide(std::string_view utf8) {
    std::wstring out;
    out.reserve(utf8.size());
    for (size_t i = 0; i < utf8.size();)
        out.push_back(wchar_t(decodeOne(utf8, i)));
    return out;
}

std::string wideToUtf8(std::wstring_view wide) {
    std::string out;
    out.reserve(wide.size());
    for (wchar_t c : wide) {
        char32_t cp = char32_t(c);
        appendUtf8(out, cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF) ? kReplacement : cp);
    }
    return out;
}

std::wstring cp437ToWide(std::string_view bytes) {
    std::wstring out;
    out.reserve(bytes.size());
    for (char c : bytes)
        out.push_back(cp437Char(static_cast<uint8_t>(c)));
    return out;
}

std::wstring lowerWide(std::wstring_view s) {
    std::wstring out(s);
    for (wchar_t& c : out)
        c = wchar_t(std::towlower(wint_t(c)));
    return out;
}

} // namespace nv
