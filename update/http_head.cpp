#include "update/http_head.h"

#include "core/text.h"

#include <utility>
#include <vector>

namespace nv::update {

namespace {

// Lengths and offsets up to 2^63 - 1: enough for any file, and the sums the engine makes of them cannot wrap.
constexpr uint64_t kMaxNumber = 0x7FFFFFFFFFFFFFFFull;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
bool isSpace(char c) {
    return c == ' ' || c == '\t';
}
bool isAlpha(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

std::string_view trimSpace(std::string_view s) {
    while (!s.empty() && isSpace(s.front()))
        s.remove_prefix(1);
    while (!s.empty() && isSpace(s.back()))
        s.remove_suffix(1);
    return s;
}

// Decimal digits only (no sign, no spaces), at most kMaxNumber.
bool parseNumber(std::string_view s, uint64_t& out) {
    if (s.empty()) return false;
    uint64_t v = 0;
    for (char c : s) {
        if (!isDigit(c)) return false;
        uint64_t d = uint64_t(c - '0');
        if (v > (kMaxNumber - d) / 10) return false;
        v = v * 10 + d;
    }
    out = v;
    return true;
}

// "HTTP/" digit "." digit SP three digits, then a reason phrase or nothing.
bool parseStatusLine(std::string_view line, int& status) {
    if (line.size() < 12 || line.substr(0, 5) != "HTTP/" || !isDigit(line[5]) || line[6] != '.' ||
        !isDigit(line[7]) || line[8] != ' ')
        return false;
    std::string_view code = line.substr(9, 3);
    if (!isDigit(code[0]) || !isDigit(code[1]) || !isDigit(code[2]) || code[0] == '0') return false;
    if (line.size() > 12 && line[12] != ' ') return false;
    status = (code[0] - '0') * 100 + (code[1] - '0') * 10 + (code[2] - '0');
    return true;
}

// Content-Length may come as several headers or as a list ("5, 5"): every value must be the same number,
// or the body's end is ambiguous (the way responses are smuggled past a cache).
bool mergeContentLength(std::string_view value, std::optional<uint64_t>& length) {
    for (;;) {
        size_t comma = value.find(',');
        uint64_t n = 0;
        if (!parseNumber(trimSpace(value.substr(0, comma)), n)) return false;
        if (length && *length != n) return false;
        length = n;
        if (comma == std::string_view::npos) return true;
        value.remove_prefix(comma + 1);
    }
}

struct UrlParts {
    std::string_view scheme;
    std::string_view authority;
    std::string_view path;
    std::string_view query; // with its "?", empty when none
};

// scheme "://" authority path ["?" query]; the fragment is cut off before this is called.
bool splitUrl(std::string_view url, UrlParts& parts) {
    size_t colon = url.find(':');
    if (colon == std::string_view::npos || colon == 0 || !isAlpha(url[0])) return false;
    for (size_t i = 1; i < colon; ++i) {
        char c = url[i];
        if (!isAlpha(c) && !isDigit(c) && c != '+' && c != '-' && c != '.') return false;
    }
    if (url.substr(colon + 1, 2) != "//") return false;
    parts.scheme = url.substr(0, colon);
    std::string_view rest = url.substr(colon + 3);
    size_t end = rest.find_first_of("/?");
    parts.authority = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end);
    size_t q = rest.find('?');
    parts.path = rest.substr(0, q);
    parts.query = q == std::string_view::npos ? std::string_view() : rest.substr(q);
    return true;
}

bool hasScheme(std::string_view ref) {
    if (ref.empty() || !isAlpha(ref[0])) return false;
    for (char c : ref) {
        if (c == ':') return true;
        if (!isAlpha(c) && !isDigit(c) && c != '+' && c != '-' && c != '.') return false;
    }
    return false;
}

// RFC 3986's remove_dot_segments, so that "/a/b/../c" asks the server for "/a/c" as a browser would.
std::string removeDotSegments(std::string_view in) {
    std::string out;
    while (!in.empty()) {
        if (in.substr(0, 3) == "../") {
            in.remove_prefix(3);
        } else if (in.substr(0, 2) == "./") {
            in.remove_prefix(2);
        } else if (in.substr(0, 3) == "/./") {
            in.remove_prefix(2);
        } else if (in == "/.") {
            in = "/";
        } else if (in.substr(0, 4) == "/../" || in == "/..") {
            in = in.size() == 3 ? std::string_view("/") : in.substr(3);
            size_t slash = out.rfind('/');
            out.erase(slash == std::string::npos ? 0 : slash);
        } else if (in == "." || in == "..") {
            in = {};
        } else {
            size_t next = in.find('/', 1);
            out.append(in.substr(0, next));
            in = next == std::string_view::npos ? std::string_view() : in.substr(next);
        }
    }
    return out;
}

// Bytes a request line cannot carry as they are. "%" stays: the address is already encoded where it was.
bool needsEscape(unsigned char c) {
    if (c <= 0x20 || c >= 0x7F) return true;
    switch (c) {
    case '"':
    case '<':
    case '>':
    case '\\':
    case '^':
    case '`':
    case '{':
    case '|':
    case '}':
        return true;
    default:
        return false;
    }
}

std::string escapeUnsafe(std::string_view s) {
    static const char kHex[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(s.size());
    for (char ch : s) {
        auto c = static_cast<unsigned char>(ch);
        if (needsEscape(c)) {
            out += '%';
            out += kHex[c >> 4];
            out += kHex[c & 15];
        } else {
            out += ch;
        }
    }
    return out;
}

// An absolute http:// or https:// address with a host (the scheme in any case).
bool isHttpAddress(std::string_view url) {
    UrlParts parts;
    if (url.find('#') != std::string_view::npos || !splitUrl(url, parts)) return false;
    if (!equalsIgnoreCase(parts.scheme, "http") && !equalsIgnoreCase(parts.scheme, "https")) return false;
    std::string_view host = parts.authority;
    size_t at = host.rfind('@');
    if (at != std::string_view::npos) host.remove_prefix(at + 1);
    if (host.empty() || host[0] == ':') return false;
    return true;
}

} // namespace

std::optional<ContentRange> parseContentRange(std::string_view value) {
    value = trimSpace(value);
    if (value.size() < 6 || !equalsIgnoreCase(value.substr(0, 5), "bytes") || !isSpace(value[5])) return {};
    value = trimSpace(value.substr(6));
    size_t dash = value.find('-');
    size_t slash = value.find('/');
    if (dash == std::string_view::npos || slash == std::string_view::npos || slash < dash) return {};
    ContentRange cr;
    if (!parseNumber(value.substr(0, dash), cr.range.first) ||
        !parseNumber(value.substr(dash + 1, slash - dash - 1), cr.range.last) ||
        cr.range.last < cr.range.first)
        return {};
    std::string_view total = value.substr(slash + 1);
    if (total != "*") {
        uint64_t n = 0;
        if (!parseNumber(total, n) || cr.range.last >= n) return {};
        cr.total = n;
    }
    return cr;
}

bool parseResponseHead(std::string_view raw, ParsedHead& out) {
    out = ParsedHead();
    std::vector<std::pair<std::string, std::string>> fields; // lower-case name, value (folded lines joined)
    size_t pos = 0;
    bool first = true;
    while (pos < raw.size()) {
        size_t end = raw.find('\n', pos);
        std::string_view line = raw.substr(pos, end == std::string_view::npos ? end : end - pos);
        pos = end == std::string_view::npos ? raw.size() : end + 1;
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (first) {
            if (!parseStatusLine(line, out.head.status)) return false;
            first = false;
            continue;
        }
        if (line.empty()) break;
        if (isSpace(line[0])) { // an obsolete folded line continues the previous value
            if (fields.empty()) return false;
            fields.back().second += ' ';
            fields.back().second += trimSpace(line);
            continue;
        }
        size_t colon = line.find(':');
        if (colon == std::string_view::npos || colon == 0) return false;
        std::string_view name = line.substr(0, colon);
        for (char c : name)
            if (isSpace(c)) return false;
        fields.emplace_back(asciiLower(name), std::string(trimSpace(line.substr(colon + 1))));
    }
    if (first) return false;

    std::optional<uint64_t> contentLength;
    std::optional<std::string> contentRange;
    for (const auto& [name, value] : fields) {
        if (name == "content-length") {
            if (!mergeContentLength(value, contentLength)) return false;
        } else if (name == "transfer-encoding") {
            out.chunked = true;
        } else if (name == "content-range") {
            if (contentRange && *contentRange != value) return false;
            contentRange = value;
        } else if (name == "location") {
            if (out.location && *out.location != value) return false;
            out.location = value;
        }
    }
    // With a transfer coding the body's end is the coding's, whatever Content-Length says.
    if (!out.chunked) out.head.contentLength = contentLength;
    if (contentRange) out.head.contentRange = parseContentRange(*contentRange);
    return true;
}

std::optional<uint64_t> promisedBodyLength(const ParsedHead& parsed) {
    int status = parsed.head.status;
    if (status < 200 || status == 204 || status == 304) return 0;
    if (parsed.chunked) return {};
    if (parsed.head.contentLength) return parsed.head.contentLength;
    if (status == 206 && parsed.head.contentRange) return parsed.head.contentRange->range.length();
    return {};
}

bool resolveLocation(std::string_view base, std::string_view location, std::string& out) {
    out.clear();
    std::string_view ref = trimSpace(location);
    ref = ref.substr(0, ref.find('#'));
    UrlParts b;
    if (!splitUrl(base.substr(0, base.find('#')), b)) return false;

    std::string joined;
    if (hasScheme(ref)) {
        joined = ref;
    } else if (ref.substr(0, 2) == "//") {
        joined = std::string(b.scheme) + ":" + std::string(ref);
    } else {
        joined = std::string(b.scheme) + "://" + std::string(b.authority);
        if (ref.empty()) {
            joined += b.path;
            joined += b.query;
        } else if (ref[0] == '/') {
            joined += ref;
        } else if (ref[0] == '?') {
            joined += b.path;
            joined += ref;
        } else {
            size_t slash = b.path.rfind('/');
            joined += slash == std::string_view::npos ? std::string_view("/") : b.path.substr(0, slash + 1);
            joined += ref;
        }
    }

    UrlParts r;
    if (!splitUrl(joined, r)) return false;
    std::string path = removeDotSegments(r.path);
    if (path.empty()) path = "/";
    std::string result =
        asciiLower(r.scheme) + "://" + std::string(r.authority) + path + std::string(r.query);
    result = escapeUnsafe(result);
    if (!isHttpAddress(result)) return false;
    out = std::move(result);
    return true;
}

} // namespace nv::update
