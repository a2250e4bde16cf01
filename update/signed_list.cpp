#include "update/signed_list.h"

#include "update/bookkeeping.h"
#include "update/update_key.h"

#include <cstdio>

namespace nv::update {
namespace {

constexpr std::string_view kVersionTag = "#nvversion\t";
constexpr std::string_view kExpiresTag = "#nvexpires\t";
constexpr std::string_view kSha256Tag = "#nvsha256\t";
constexpr std::string_view kAcceptedHeader = "norvane-accepted 1\n";
// Tags are matched without their tab too, so that "#nvversion 5" is refused rather than skipped as a comment.
constexpr std::string_view kTagNames[] = {"#nvversion", "#nvexpires", "#nvsha256", "#nvsignature"};

// Days since 1970-01-01 of a proleptic Gregorian date (Howard Hinnant's civil-days algorithm).
int64_t daysFromCivil(int64_t y, unsigned m, unsigned d) {
    y -= m <= 2;
    const int64_t era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = unsigned(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + int64_t(doe) - 719468;
}

void civilFromDays(int64_t z, int64_t& y, unsigned& m, unsigned& d) {
    z += 719468;
    const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = unsigned(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    d = doy - (153 * mp + 2) / 5 + 1;
    m = mp < 10 ? mp + 3 : mp - 9;
    y = int64_t(yoe) + era * 400 + (m <= 2);
}

bool digits(std::string_view text, size_t at, size_t count, unsigned& value) {
    value = 0;
    for (size_t i = at; i < at + count; ++i) {
        if (text[i] < '0' || text[i] > '9') return false;
        value = value * 10 + unsigned(text[i] - '0');
    }
    return true;
}

bool parseDate(std::string_view text, int64_t& days) {
    unsigned y, m, d;
    if (text.size() != 10 || text[4] != '-' || text[7] != '-' || !digits(text, 0, 4, y) ||
        !digits(text, 5, 2, m) || !digits(text, 8, 2, d) || y < 1970 || m < 1 || m > 12 || d < 1)
        return false;
    static constexpr unsigned kMonthDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
    if (d > kMonthDays[m - 1] + (m == 2 && leap)) return false;
    days = daysFromCivil(y, m, d);
    return true;
}

bool parseVersion(std::string_view text, uint64_t& version) {
    if (text.empty() || text.size() > 18 || text[0] == '0') return false;
    version = 0;
    for (char c : text) {
        if (c < '0' || c > '9') return false;
        version = version * 10 + uint64_t(c - '0');
    }
    return true;
}

// The signature line's start, when the list ends in exactly one well-formed one.
bool findSignature(std::string_view bytes, size_t& lineStart, Signature& signature, std::string& error) {
    if (!bytes.ends_with('\n')) return error = "imza satiri son satir degil ya da kesilmis", false;
    const size_t previous = bytes.rfind('\n', bytes.size() - 2);
    lineStart = previous == std::string_view::npos ? 0 : previous + 1;
    const std::string_view line = bytes.substr(lineStart, bytes.size() - 1 - lineStart);
    if (!line.starts_with(kSignatureTag)) return error = "imza satiri son satir degil", false;
    if (!parseHex(line.substr(kSignatureTag.size()), signature.data(), signature.size()))
        return error = "imza 128 onaltilik basamak olmali", false;
    return true;
}

} // namespace

bool hasSignatureLine(std::string_view bytes) {
    return bytes.starts_with("#nvsignature") || bytes.find("\n#nvsignature") != std::string_view::npos;
}

namespace {

bool readSignedList(std::string_view bytes, std::string_view listName, FileList& list, SignedList& info,
                    std::string& error) {
    list = FileList();
    size_t lineStart = 0;
    if (!findSignature(bytes, lineStart, info.signature, error)) return false;
    const std::string_view body = bytes.substr(0, lineStart);
    if (hasSignatureLine(body)) return error = "ikinci imza satiri", false;
    if (!parseFileList(body, listName, list, error)) return false;
    info.signedSize = lineStart;

    bool haveVersion = false, haveExpiry = false;
    for (const std::string& comment : list.comments) {
        const std::string_view line = comment;
        bool ours = false;
        for (std::string_view tag : kTagNames)
            ours = ours || line.starts_with(tag);
        if (!ours) continue;
        if (line.starts_with(kVersionTag)) {
            if (haveVersion) return error = "ikinci #nvversion", false;
            if (!parseVersion(line.substr(kVersionTag.size()), info.version))
                return error = "#nvversion gecersiz: " + comment, false;
            haveVersion = true;
        } else if (line.starts_with(kExpiresTag)) {
            if (haveExpiry) return error = "ikinci #nvexpires", false;
            if (!parseUtcTime(line.substr(kExpiresTag.size()), info.expires))
                return error = "#nvexpires gecersiz: " + comment, false;
            haveExpiry = true;
        } else if (line.starts_with(kSha256Tag)) {
            const std::string_view rest = line.substr(kSha256Tag.size());
            const size_t tab = rest.rfind('\t');
            Sha256Digest digest;
            if (tab == std::string_view::npos ||
                !parseHex(rest.substr(tab + 1), digest.data(), digest.size()))
                return error = "#nvsha256 gecersiz: " + comment, false;
            const std::string path(rest.substr(0, tab));
            if (!info.sha256.emplace(path, digest).second) return error = "iki kez #nvsha256: " + path, false;
        } else {
            return error = "taninmayan imza alani: " + comment, false;
        }
    }
    if (!haveVersion) return error = "#nvversion yok", false;
    if (!haveExpiry) return error = "#nvexpires yok", false;
    for (const ListEntry& entry : list.files)
        if (!info.sha256.count(entry.path)) return error = "SHA-256'si olmayan dosya: " + entry.path, false;
    // Every listed file has its hash and no list path lies under the index folder, so a hash outside it
    // beyond the listed files' names a path the list does not hold.
    const std::string indexPrefix = std::string(kIndexFolder) + "/";
    size_t outsideIndexes = 0;
    for (const auto& [path, digest] : info.sha256)
        outsideIndexes += !path.starts_with(indexPrefix);
    if (outsideIndexes != list.files.size())
        return error = "listede olmayan bir dosyanin SHA-256'si var", false;
    return true;
}

} // namespace

bool parseSignedList(std::string_view bytes, std::string_view listName, FileList& list, SignedList& info,
                     std::string& error) {
    info = SignedList();
    if (readSignedList(bytes, listName, list, info, error)) return true;
    list = FileList();
    return false;
}

std::string signedListBody(const FileList& list, uint64_t version, int64_t expires,
                           const std::map<std::string, Sha256Digest>& sha256) {
    FileList out;
    out.comments.push_back(std::string(kVersionTag) + std::to_string(version));
    out.comments.push_back(std::string(kExpiresTag) + utcTimeText(expires));
    for (const auto& [path, digest] : sha256)
        out.comments.push_back(std::string(kSha256Tag) + path + "\t" + hexText(digest.data(), digest.size()));
    out.comments.insert(out.comments.end(), list.comments.begin(), list.comments.end());
    out.files = list.files;
    return writeFileList(out);
}

std::string signatureLine(const Signature& signature) {
    return std::string(kSignatureTag) + hexText(signature.data(), signature.size()) + "\n";
}

std::string utcTimeText(int64_t seconds) {
    const int64_t days = seconds >= 0 ? seconds / 86400 : (seconds - 86399) / 86400;
    const int64_t rest = seconds - days * 86400;
    int64_t y;
    unsigned m, d;
    civilFromDays(days, y, m, d);
    char text[32];
    snprintf(text, sizeof text, "%04lld-%02u-%02uT%02u:%02u:%02uZ", static_cast<long long>(y), m, d,
             unsigned(rest / 3600), unsigned(rest / 60 % 60), unsigned(rest % 60));
    return text;
}

bool parseUtcTime(std::string_view text, int64_t& seconds) {
    unsigned h, min, s;
    int64_t days;
    if (text.size() != 20 || text[10] != 'T' || text[13] != ':' || text[16] != ':' || text[19] != 'Z' ||
        !parseDate(text.substr(0, 10), days) || !digits(text, 11, 2, h) || !digits(text, 14, 2, min) ||
        !digits(text, 17, 2, s) || h > 23 || min > 59 || s > 59)
        return false;
    seconds = days * 86400 + int64_t(h) * 3600 + int64_t(min) * 60 + int64_t(s);
    return true;
}

bool parseDayEnd(std::string_view text, int64_t& seconds) {
    int64_t days;
    if (!parseDate(text, days)) return false;
    seconds = days * 86400 + 86399;
    return true;
}

ListVerdict checkSignedList(std::string_view bytes, std::string_view listName,
                            const std::vector<PublicKey>& keys, Crypto& crypto, int64_t now,
                            uint64_t highestAccepted, FileList& list, SignedList& info, std::string& detail) {
    if (!hasSignatureLine(bytes)) {
        detail = "dosya listesi imzasiz";
        return ListVerdict::Unsigned;
    }
    std::string error;
    if (!parseSignedList(bytes, listName, list, info, error)) {
        detail = "imzali liste gecersiz, " + error;
        return ListVerdict::Invalid;
    }
    const PublicKey* signer = nullptr;
    for (const PublicKey& key : keys)
        if (crypto.verify(key, reinterpret_cast<const uint8_t*>(bytes.data()), info.signedSize,
                          info.signature)) {
            signer = &key;
            break;
        }
    if (!signer) {
        detail = "liste imzasi patcher'in anahtarlarinin hicbiriyle dogrulanmadi";
        return ListVerdict::BadSignature;
    }
    if (now > info.expires) {
        detail = "listenin suresi " + utcTimeText(info.expires) + " tarihinde doldu (saat " +
                 utcTimeText(now) + ")";
        return ListVerdict::Expired;
    }
    if (info.version < highestAccepted) {
        detail = "liste surumu " + std::to_string(info.version) + ", daha once kabul edilen " +
                 std::to_string(highestAccepted);
        return ListVerdict::Rollback;
    }
    detail = "liste imzasi dogrulandi (anahtar " + keyLabel(*signer) + ", surum " +
             std::to_string(info.version) + ", gecerlilik " + utcTimeText(info.expires) + ")";
    return ListVerdict::Accepted;
}

uint64_t parseAcceptedVersion(std::string_view text) {
    if (!text.starts_with(kAcceptedHeader)) return 0;
    text.remove_prefix(kAcceptedHeader.size());
    if (!text.ends_with('\n')) return 0;
    text.remove_suffix(1);
    uint64_t version = 0;
    return parseVersion(text, version) ? version : 0;
}

std::string acceptedVersionText(uint64_t version) {
    return std::string(kAcceptedHeader) + std::to_string(version) + "\n";
}

} // namespace nv::update
