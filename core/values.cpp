#include "core/values.h"

#include "core/text.h"

#include <cstdint>

namespace nv {

int parseInt(std::string_view text, int defaultValue) {
    std::string s = trim(text);
    size_t pos = 0;
    bool negative = false;
    if (pos < s.size() && (s[pos] == '+' || s[pos] == '-')) negative = s[pos++] == '-';
    if (pos == s.size()) return defaultValue; // empty text or a lone sign

    // The magnitude is accumulated in 64 bits and abandoned once it reaches 2^47, far beyond any int.
    int64_t magnitude = 0;
    for (; pos < s.size(); ++pos) {
        char c = s[pos];
        if (c < '0' || c > '9') return defaultValue;
        magnitude = magnitude * 10 + (c - '0');
        if (magnitude >= (int64_t(1) << 47)) return defaultValue;
    }
    // Symmetric on purpose: -2147483648 is refused like any other out-of-range value.
    if (magnitude > 2147483647) return defaultValue;
    return int(negative ? -magnitude : magnitude);
}

bool parseYesNo(std::string_view text, bool defaultValue) {
    std::string s = asciiLower(trim(text));
    if (s == "1" || s == "true" || s == "yes" || s == "evet" || s == "on") return true;
    if (s == "0" || s == "false" || s == "no" || s == "hayir" || s == "off") return false;
    return defaultValue;
}

} // namespace nv
