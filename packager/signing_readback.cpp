#include "packager/signing_readback.h"

#include "packager/pe_image.h"
#include "core/byte_order.h"

#include <cwchar>

namespace nv {
namespace {

constexpr uint16_t kCertRevision1 = 0x0100, kCertRevision2 = 0x0200;
constexpr uint16_t kCertTypePkcsSignedData = 0x0002;
constexpr size_t kCertHeader = 8; // dwLength, wRevision, wCertificateType

// The proleptic Gregorian date of a day count since 1970-01-01 (days in 400-year eras of 146097 days).
void civilDate(int64_t days, int64_t& year, unsigned& month, unsigned& day) {
    days += 719468;
    const int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const unsigned dayOfEra = unsigned(days - era * 146097);
    const unsigned yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const unsigned monthIndex = (5 * dayOfYear + 2) / 153;
    day = dayOfYear - (153 * monthIndex + 2) / 5 + 1;
    month = monthIndex < 10 ? monthIndex + 3 : monthIndex - 9;
    year = int64_t(yearOfEra) + era * 400 + (month <= 2);
}

// Days since 1970-01-01 of a proleptic Gregorian date, the inverse of civilDate.
int64_t daysFromCivil(int64_t year, unsigned month, unsigned day) {
    year -= month <= 2;
    const int64_t era = (year >= 0 ? year : year - 399) / 400;
    const unsigned yearOfEra = unsigned(year - era * 400);
    const unsigned dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    const unsigned dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + int64_t(dayOfEra) - 719468;
}

// One DER element: its tag and where its contents lie. Only the single-byte tags a time-stamp token uses.
struct DerItem {
    uint8_t tag = 0;
    size_t start = 0, end = 0;
};

bool readDer(const uint8_t* data, size_t size, size_t at, DerItem& item) {
    if (at >= size || size - at < 2) return false;
    item.tag = data[at];
    size_t length = data[at + 1];
    at += 2;
    if (length & 0x80) {
        const size_t count = length & 0x7F;
        if (count == 0 || count > 4 || size - at < count) return false;
        length = 0;
        for (size_t i = 0; i < count; ++i)
            length = length << 8 | data[at + i];
        at += count;
    }
    if (length > size - at) return false;
    item.start = at;
    item.end = at + length;
    return true;
}

bool digitsValue(const uint8_t* text, size_t count, unsigned& value) {
    value = 0;
    for (size_t i = 0; i < count; ++i) {
        if (text[i] < '0' || text[i] > '9') return false;
        value = value * 10 + unsigned(text[i] - '0');
    }
    return true;
}

} // namespace

bool timestampTokenTime(const uint8_t* data, size_t size, int64_t& seconds) {
    constexpr uint8_t kSequence = 0x30, kSet = 0x31, kInteger = 0x02, kOid = 0x06, kOctets = 0x04,
                      kExplicit0 = 0xA0, kGeneralizedTime = 0x18;
    // Down the token: each step either enters an element (the next read starts inside it) or passes it.
    DerItem item;
    size_t at = 0, end = size;
    auto step = [&](uint8_t tag, bool enter) {
        if (!readDer(data, end, at, item) || item.tag != tag) return false;
        at = enter ? item.start : item.end;
        if (enter) end = item.end;
        return true;
    };
    // ContentInfo { contentType, [0] SignedData { version, digestAlgorithms, encapContentInfo { eContentType,
    // [0] OCTET STRING { TSTInfo { version, policy, messageImprint, serialNumber, genTime ...
    if (!step(kSequence, true) || !step(kOid, false) || !step(kExplicit0, true) || !step(kSequence, true) ||
        !step(kInteger, false) || !step(kSet, false) || !step(kSequence, true) || !step(kOid, false) ||
        !step(kExplicit0, true) || !step(kOctets, true) || !step(kSequence, true) || !step(kInteger, false) ||
        !step(kOid, false) || !step(kSequence, false) || !step(kInteger, false) ||
        !step(kGeneralizedTime, false))
        return false;
    const uint8_t* text = data + item.start;
    const size_t length = item.end - item.start;
    unsigned year, month, day, hour, minute, second;
    if (length < 15 || text[length - 1] != 'Z' || !digitsValue(text, 4, year) ||
        !digitsValue(text + 4, 2, month) || !digitsValue(text + 6, 2, day) ||
        !digitsValue(text + 8, 2, hour) || !digitsValue(text + 10, 2, minute) ||
        !digitsValue(text + 12, 2, second))
        return false;
    if (length > 15 && text[14] != '.') return false;
    if (month < 1 || month > 12 || day < 1 || day > 31 || hour > 23 || minute > 59 || second > 60)
        return false;
    seconds = daysFromCivil(year, month, day) * 86400 + hour * 3600 + minute * 60 + second;
    return true;
}

std::wstring utcTimeText(int64_t seconds) {
    int64_t days = seconds / 86400, rest = seconds % 86400;
    if (rest < 0) {
        rest += 86400;
        --days;
    }
    int64_t year = 0;
    unsigned month = 0, day = 0;
    civilDate(days, year, month, day);
    wchar_t text[64];
    std::swprintf(text, 64, L"%04lld-%02u-%02u %02u:%02u:%02u UTC", static_cast<long long>(year), month, day,
                  unsigned(rest / 3600), unsigned(rest / 60 % 60), unsigned(rest % 60));
    return text;
}

std::vector<std::wstring> signatureLines(const SignatureInfo& info) {
    std::wstring stamp = L"Zaman damgası: ";
    if (info.timestamp == TimestampKind::None) {
        stamp += L"yok";
    } else {
        stamp += info.timestampTime != 0 ? utcTimeText(info.timestampTime) : L"var";
        stamp += info.timestamp == TimestampKind::Rfc3161 ? L" (RFC 3161)" : L" (Authenticode)";
    }
    return {L"İmzalayan: " + info.subject, L"Parmak izi: " + info.thumbprint, stamp};
}

PeSignatureState findPeSignature(const uint8_t* data, size_t size, PeSignatureSpan& span) {
    PeLayout layout;
    if (!readPeLayout(data, size, layout)) return PeSignatureState::NotPe;
    if (layout.certOffset == 0 && layout.certSize == 0) return PeSignatureState::Unsigned;
    if (layout.certSize < kCertHeader || layout.certOffset > size ||
        layout.certSize > size - layout.certOffset)
        return PeSignatureState::Malformed;
    const uint8_t* entry = data + layout.certOffset;
    const uint32_t length = readLe32(entry);
    const uint16_t revision = readLe16(entry + 4), type = readLe16(entry + 6);
    if (length <= kCertHeader || length > layout.certSize ||
        (revision != kCertRevision1 && revision != kCertRevision2) || type != kCertTypePkcsSignedData)
        return PeSignatureState::Malformed;
    span.offset = size_t(layout.certOffset) + kCertHeader;
    span.size = length - kCertHeader;
    return PeSignatureState::Found;
}

} // namespace nv
