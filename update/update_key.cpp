#include "update/update_key.h"

#include "core/text.h"

namespace nv::update {
namespace {

constexpr std::string_view kPublicPrefix = "norvane-update-key p256 ";
constexpr std::string_view kPrivatePrefix = "norvane-update-private-key p256 ";

// The text without its single line end; false when it has none or more than one line.
bool oneLine(std::string_view text, std::string_view& line, std::string& error) {
    if (text.size() > kMaxKeyFileBytes) return error = "anahtar dosyasi cok buyuk", false;
    if (text.ends_with("\r\n"))
        text.remove_suffix(2);
    else if (text.ends_with('\n'))
        text.remove_suffix(1);
    else
        return error = "satir sonu yok (dosya kesilmis olabilir)", false;
    if (text.find_first_of("\r\n") != std::string_view::npos) return error = "tek satir olmali", false;
    line = text;
    return true;
}

} // namespace

std::string hexText(const uint8_t* data, size_t size) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string out;
    out.reserve(size * 2);
    for (size_t i = 0; i < size; ++i) {
        out += kDigits[data[i] >> 4];
        out += kDigits[data[i] & 15];
    }
    return out;
}

bool parseHex(std::string_view text, uint8_t* out, size_t size) {
    if (text.size() != size * 2) return false;
    for (size_t i = 0; i < size; ++i) {
        const int high = hexDigitValue(text[2 * i]), low = hexDigitValue(text[2 * i + 1]);
        if (high < 0 || low < 0) return false;
        out[i] = uint8_t(high << 4 | low);
    }
    return true;
}

std::string publicKeyText(const PublicKey& key) {
    return std::string(kPublicPrefix) + hexText(key.data(), key.size()) + "\n";
}

std::string privateKeyText(const PrivateKey& key) {
    return std::string(kPrivatePrefix) + hexText(key.d.data(), key.d.size()) + " " +
           hexText(key.publicKey.data(), key.publicKey.size()) + "\n";
}

bool parsePublicKey(std::string_view text, PublicKey& key, std::string& error) {
    std::string_view line;
    if (!oneLine(text, line, error)) return false;
    if (line.starts_with(kPrivatePrefix)) return error = "bu ozel anahtar; .pub dosyasini verin", false;
    if (!line.starts_with(kPublicPrefix)) return error = "Norvane guncelleme anahtari (.pub) degil", false;
    if (!parseHex(line.substr(kPublicPrefix.size()), key.data(), key.size()))
        return error = "anahtar 128 onaltilik basamak olmali", false;
    return true;
}

bool parsePrivateKey(std::string_view text, PrivateKey& key, std::string& error) {
    std::string_view line;
    if (!oneLine(text, line, error)) return false;
    if (line.starts_with(kPublicPrefix)) return error = "bu acik anahtar; .key dosyasini verin", false;
    if (!line.starts_with(kPrivatePrefix)) return error = "Norvane ozel anahtari (.key) degil", false;
    line.remove_prefix(kPrivatePrefix.size());
    if (line.size() != 64 + 1 + 128 || line[64] != ' ' || !parseHex(line.substr(0, 64), key.d.data(), 32) ||
        !parseHex(line.substr(65), key.publicKey.data(), key.publicKey.size()))
        return error = "anahtar 64 + 128 onaltilik basamak olmali", false;
    return true;
}

bool parsePublicKeys(std::string_view text, std::vector<PublicKey>& keys, std::string& error) {
    keys.clear();
    while (!text.empty()) {
        const size_t end = text.find('\n');
        if (end == std::string_view::npos) return error = "son satirin sonu yok", false;
        if (keys.size() == kMaxUpdateKeys)
            return error = "en cok " + std::to_string(kMaxUpdateKeys) + " anahtar", false;
        PublicKey key;
        if (!parsePublicKey(text.substr(0, end + 1), key, error)) return false;
        keys.push_back(key);
        text.remove_prefix(end + 1);
    }
    if (keys.empty()) return error = "anahtar yok", false;
    return true;
}

std::string keyLabel(const PublicKey& key) {
    return hexText(key.data(), 8);
}

bool sha256Of(Crypto& crypto, const uint8_t* data, size_t size, Sha256Digest& digest) {
    std::unique_ptr<Sha256> hash = crypto.sha256();
    if (!hash) return false;
    hash->update(data, size);
    digest = hash->finish();
    return true;
}

} // namespace nv::update
