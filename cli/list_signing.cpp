#include "cli/list_signing.h"

#include "core/files.h"
#include "core/paths.h"
#include "core/text.h"
#include "update/signed_list.h"
#include "update/update_key.h"

#include <algorithm>
#include <atomic>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <thread>

namespace nv {
namespace {

constexpr int64_t kDefaultExpiryDays = 30;
constexpr int64_t kMaxExpiryDays = 3650;

bool parseWhole(std::wstring_view text, uint64_t limit, uint64_t& value) {
    if (text.empty() || text.size() > 18 || text[0] == L'0') return false;
    value = 0;
    for (wchar_t c : text) {
        if (c < L'0' || c > L'9') return false;
        value = value * 10 + uint64_t(c - L'0');
    }
    return value <= limit;
}

// The version of the list being replaced, signed or not; 0 when it has none.
uint64_t previousVersion(std::string_view bytes) {
    constexpr std::string_view tag = "#nvversion\t";
    for (size_t at = 0; at < bytes.size();) {
        const size_t end = std::min(bytes.find('\n', at), bytes.size());
        std::string_view line = bytes.substr(at, end - at);
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (line.starts_with(tag)) {
            uint64_t version = 0;
            return parseWhole(widenAscii(std::string(line.substr(tag.size()))), update::kMaxListVersion,
                              version)
                       ? version
                       : 0;
        }
        at = end + 1;
    }
    return 0;
}

bool fileSha256(update::Crypto& crypto, const std::wstring& path, update::Sha256Digest& digest) {
    std::ifstream in(
        std::filesystem::path(std::u8string(reinterpret_cast<const char8_t*>(wideToUtf8(path).c_str()))),
        std::ios::binary);
    std::unique_ptr<update::Sha256> hash = crypto.sha256();
    if (!in || !hash) return false;
    std::vector<char> buffer(1 << 20);
    while (in) {
        in.read(buffer.data(), std::streamsize(buffer.size()));
        hash->update(reinterpret_cast<const uint8_t*>(buffer.data()), size_t(in.gcount()));
    }
    if (!in.eof()) return false;
    digest = hash->finish();
    return true;
}

} // namespace

const std::wstring_view kNoCryptoMessage =
    L"Bu nvbuild'de sistem şifrelemesi yok: anahtar üretmek ve listeleri imzalamak için Windows'taki "
    L"nvbuild.exe'yi kullanın (ECDSA P-256, Windows'un CNG'si).";

bool readSigningOptions(const Invocation& invocation, Console& console, ListSigning& signing, int& exitCode) {
    exitCode = kExitUsage;
    const std::wstring* keyPath = invocation.value(L"--sign");
    const std::wstring* expires = invocation.value(L"--expires");
    const std::wstring* version = invocation.value(L"--version");
    if (!keyPath) {
        invocation.usageError(console, L"--expires ve --version yalnızca --sign ile verilir.");
        return false;
    }
    if (expires) {
        uint64_t days = 0;
        int64_t seconds = 0;
        if (!parseWhole(*expires, kMaxExpiryDays, days) &&
            !update::parseDayEnd(wideToUtf8(*expires), seconds)) {
            invocation.usageError(console, L"--expires 1-" + std::to_wstring(kMaxExpiryDays) +
                                               L" arası gün sayısı ya da YYYY-AA-GG tarihi olmalı: " +
                                               *expires);
            return false;
        }
        signing.expiresText = *expires;
    }
    if (version) {
        uint64_t value = 0;
        if (!parseWhole(*version, update::kMaxListVersion, value)) {
            invocation.usageError(console, L"--version 1 ya da daha büyük bir tam sayı olmalı: " + *version);
            return false;
        }
        signing.versionText = *version;
    }
    exitCode = kExitFailed;
    signing.keyPath = absolutePath(*keyPath);
    Bytes bytes;
    if (!readFileBytes(signing.keyPath, bytes, update::kMaxKeyFileBytes + 1)) {
        failed(console, L"Özel anahtar okunamadı: " + signing.keyPath);
        return false;
    }
    std::string error;
    if (!update::parsePrivateKey(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()),
                                 signing.key, error)) {
        failed(console, L"Özel anahtar geçersiz: " + signing.keyPath + L" — " + utf8ToWide(error));
        return false;
    }
    return true;
}

bool signList(update::Crypto& crypto, const ListSigning& signing, const std::wstring& root,
              const update::FileList& list, const std::string& previous, Console& console,
              std::string& text) {
    const int64_t now = int64_t(std::time(nullptr));
    const uint64_t before = previousVersion(previous);
    uint64_t version = before + 1;
    if (!signing.versionText.empty()) {
        parseWhole(signing.versionText, update::kMaxListVersion, version);
        if (version <= before) {
            failed(console, L"--version " + signing.versionText + L" değiştirilen listeninkinden (" +
                                std::to_wstring(before) +
                                L") büyük olmalı: patcher'lar daha eski sürümlü listeyi reddeder.");
            return false;
        }
    }
    int64_t expires = now + kDefaultExpiryDays * 86400;
    uint64_t days = 0;
    if (parseWhole(signing.expiresText, kMaxExpiryDays, days))
        expires = now + int64_t(days) * 86400;
    else if (!signing.expiresText.empty())
        update::parseDayEnd(wideToUtf8(signing.expiresText), expires);

    // The files are read again for their SHA-256, on several threads as their CRC-32 was.
    std::vector<std::string> paths;
    for (const update::ListEntry& entry : list.files)
        paths.push_back(entry.path);
    paths.insert(paths.end(), signing.extraFiles.begin(), signing.extraFiles.end());
    std::vector<update::Sha256Digest> digests(paths.size());
    std::vector<char> unreadable(paths.size(), 0);
    std::atomic<size_t> next{0};
    std::atomic<bool> stop{false};
    auto hashAll = [&] {
        for (size_t i; !stop && (i = next++) < paths.size();)
            if (!fileSha256(crypto, pathJoin(root, utf8ToWide(paths[i])), digests[i]))
                unreadable[i] = 1, stop = true;
    };
    const unsigned threads = std::clamp(std::thread::hardware_concurrency(), 1u, 4u);
    std::vector<std::thread> pool;
    for (unsigned t = 1; t < threads; ++t)
        pool.emplace_back(hashAll);
    hashAll();
    for (std::thread& thread : pool)
        thread.join();
    std::map<std::string, update::Sha256Digest> sha256;
    for (size_t i = 0; i < paths.size(); ++i) {
        if (unreadable[i]) {
            failed(console, L"Okunamadı: " + pathJoin(root, utf8ToWide(paths[i])));
            return false;
        }
        sha256[paths[i]] = digests[i];
    }

    const std::string body = update::signedListBody(list, version, expires, sha256);
    update::Signature signature;
    std::string error;
    const auto* data = reinterpret_cast<const uint8_t*>(body.data());
    if (!crypto.sign(signing.key, data, body.size(), signature, error)) {
        failed(console, L"İmzalanamadı: " + utf8ToWide(error));
        return false;
    }
    // A key file whose public half is not its private key's would sign lists no patcher accepts.
    if (!crypto.verify(signing.key.publicKey, data, body.size(), signature)) {
        failed(console,
               L"Özel anahtar dosyası bozuk (açık anahtar özel anahtarla uyuşmuyor): " + signing.keyPath);
        return false;
    }
    text = body + update::signatureLine(signature);

    const std::wstring expiry = utf8ToWide(update::utcTimeText(expires));
    console.outLine(L"İmzalandı: sürüm " + std::to_wstring(version) + L", geçerlilik " + expiry +
                    (signing.expiresText.empty() ? L" (30 gün)" : L"") + L", anahtar " +
                    utf8ToWide(update::keyLabel(signing.key.publicKey)));
    if (expires < now)
        console.errLine(L"UYARI: geçerlilik tarihi geçmişte (" + expiry +
                        L"); patcher'lar bu listeyi reddeder. Yalnızca sınama için yayımlayın.");
    return true;
}

} // namespace nv
