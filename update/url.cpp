#include "update/url.h"

#include "core/text.h"

namespace nv::update {

namespace {

size_t schemeLength(std::string_view url) {
    if (url.size() >= 7 && equalsIgnoreCase(url.substr(0, 7), "http://")) return 7;
    if (url.size() >= 8 && equalsIgnoreCase(url.substr(0, 8), "https://")) return 8;
    return 0;
}

bool isUnreserved(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '.' || c == '_' || c == '~';
}

} // namespace

bool isHttpUrl(std::string_view url) {
    const size_t scheme = schemeLength(url);
    if (scheme == 0 || scheme >= url.size() || url[scheme] == '/') return false;
    for (unsigned char c : url)
        if (c <= 0x20 || c == 0x7F) return false;
    return true;
}

std::string percentEncodePath(std::string_view path) {
    static const char kHex[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(path.size());
    for (unsigned char c : path) {
        if (isUnreserved(c) || c == '/') {
            out += char(c);
        } else {
            out += '%';
            out += kHex[c >> 4];
            out += kHex[c & 15];
        }
    }
    return out;
}

std::string fileUrl(std::string_view base, std::string_view path) {
    return std::string(base) + percentEncodePath(path);
}

std::string resolveUrl(std::string_view base, std::string_view ref) {
    if (schemeLength(ref) > 0) return std::string(ref);
    if (!ref.empty() && ref[0] == '/') {
        const size_t scheme = schemeLength(base);
        const size_t hostEnd = base.find('/', scheme);
        return std::string(base.substr(0, hostEnd)) + percentEncodePath(ref);
    }
    return fileUrl(base, ref);
}

std::string cacheBusted(std::string_view url, uint64_t token) {
    static const char kHex[] = "0123456789abcdef";
    std::string out(url);
    out += url.find('?') == std::string_view::npos ? "?nvt=" : "&nvt=";
    bool started = false;
    for (int shift = 60; shift >= 0; shift -= 4) {
        const unsigned digit = unsigned(token >> shift) & 15;
        if (digit || started || shift == 0) {
            out += kHex[digit];
            started = true;
        }
    }
    return out;
}

} // namespace nv::update
