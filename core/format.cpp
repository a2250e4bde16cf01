#include "core/format.h"

#include "core/text.h"

#include <cstdio>
#include <string>

namespace nv {

std::wstring decimalText(double value) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.1f", value);
    std::wstring out = widenAscii(buf);
    for (wchar_t& c : out)
        if (c == L'.') c = L',';
    return out;
}

std::wstring integerText(int64_t value) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%lld", static_cast<long long>(value));
    return widenAscii(buf);
}

std::wstring groupedIntegerText(uint64_t value) {
    const std::wstring digits = std::to_wstring(value);
    std::wstring out;
    for (size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0) out += L'.';
        out += digits[i];
    }
    return out;
}

std::wstring sizeText(uint64_t n) {
    if (n < 1024) return integerText(int64_t(n)) + L" B";
    if (n < 0x100000) return decimalText(double(n) / 1024.0) + L" KB";
    if (n < 0x40000000) return decimalText(double(n) / 1048576.0) + L" MB";
    return decimalText(double(n) / 1073741824.0) + L" GB";
}

} // namespace nv
