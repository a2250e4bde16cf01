// nvbuild crclist: the file list of a game client folder, as the patcher reads it from the server.

#include "cli/list_signing.h"
#include "cli/nvbuild.h"
#include "core/crc32.h"
#include "core/files.h"
#include "core/format.h"
#include "core/paths.h"
#include "core/text.h"
#include "update/bookkeeping.h"
#include "update/chunk_index.h"
#include "update/file_list.h"
#include "update/folder_files.h"
#include "update/remote_config.h"

#include <algorithm>
#include <atomic>
#include <optional>
#include <set>
#include <thread>

namespace nv {
namespace {

// "*" any run of characters but "/", "?" one such character, ASCII case ignored.
bool globMatches(std::string_view pattern, std::string_view text) {
    size_t p = 0, t = 0, starP = std::string_view::npos, starT = 0;
    while (t < text.size()) {
        const char pc = p < pattern.size() ? pattern[p] : 0;
        if (pc == '*') {
            starP = p++, starT = t;
        } else if (p < pattern.size() && text[t] != '/' &&
                   (pc == '?' || asciiLower(std::string_view(&pc, 1)) == asciiLower(text.substr(t, 1)))) {
            ++p, ++t;
        } else if (p < pattern.size() && pc == '/' && text[t] == '/') {
            ++p, ++t;
        } else if (starP != std::string_view::npos && text[starT] != '/') {
            p = starP + 1, t = ++starT;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}

// A pattern with a "/" is matched against the whole path, one without against every name along it, so "*.log"
// leaves out log files anywhere and "logs" a whole folder.
bool excluded(const std::vector<std::string>& patterns, const std::string& path) {
    for (const std::string& pattern : patterns) {
        if (pattern.find('/') != std::string::npos) {
            if (globMatches(pattern, path)) return true;
            continue;
        }
        for (size_t start = 0;;) {
            const size_t slash = path.find('/', start);
            if (globMatches(pattern, std::string_view(path).substr(start, slash - start))) return true;
            if (slash == std::string::npos) break;
            start = slash + 1;
        }
    }
    return false;
}

struct Walk {
    std::wstring root;
    std::string outKey; // the list's own path in the folder, lower-cased ("" when it is written elsewhere)
    std::vector<std::string> patterns;
    std::vector<std::string> paths;
    std::wstring error;

    bool folder(const std::wstring& at, const std::string& prefix) {
        std::vector<FolderEntry> entries;
        if (!listFolder(at, entries)) {
            error = L"Klasör okunamadı: " + at;
            return false;
        }
        for (const FolderEntry& entry : entries) {
            const std::string path = prefix + wideToUtf8(entry.name);
            // Never the list itself, nor what a patcher leaves in a folder it updates.
            if (update::isBookkeepingPath(path) || asciiLower(path) == outKey || excluded(patterns, path))
                continue;
            if (entry.isFolder) {
                if (!folder(pathJoin(at, entry.name), path + "/")) return false;
                continue;
            }
            std::string why;
            if (!update::isValidListPath(path, why)) {
                error = L"Patcher'ın kabul etmeyeceği dosya adı: " + utf8ToWide(path) + L" (" +
                        utf8ToWide(why) + L"); adı değiştirin ya da --exclude ile dışarıda bırakın.";
                return false;
            }
            paths.push_back(path);
        }
        return true;
    }
};

int commandCrclist(const Invocation& invocation, Console& console) {
    const std::wstring root = absolutePath(invocation.arguments[0]);
    if (!folderExists(root)) return failed(console, L"Klasör bulunamadı: " + invocation.arguments[0]);
    const std::wstring* outOption = invocation.value(L"--out");
    const std::wstring out = outOption ? absolutePath(*outOption) : pathJoin(root, L"crclist.txt");
    ListSigning signing;
    update::Crypto* crypto = nullptr;
    const bool sign =
        invocation.has(L"--sign") || invocation.has(L"--expires") || invocation.has(L"--version");
    if (sign) {
        int exitCode = kExitOk;
        if (!readSigningOptions(invocation, console, signing, exitCode)) return exitCode;
        crypto = update::systemCrypto();
        if (!crypto) return failed(console, kNoCryptoMessage);
    }

    Walk walk;
    walk.root = root;
    for (const std::wstring& pattern : invocation.values(L"--exclude")) {
        std::string p = wideToUtf8(pattern);
        std::replace(p.begin(), p.end(), '\\', '/');
        walk.patterns.push_back(p);
    }
    // The output inside the folder is left out by its path there; one elsewhere cannot be listed anyway.
    std::wstring relative = out.size() > root.size() && out.compare(0, root.size(), root) == 0 &&
                                    isPathSeparator(out[root.size()])
                                ? out.substr(root.size() + 1)
                                : std::wstring();
    std::string relativeUtf8 = wideToUtf8(relative);
    std::replace(relativeUtf8.begin(), relativeUtf8.end(), '\\', '/');
    walk.outKey = asciiLower(relativeUtf8);
    if (!walk.folder(root, "")) return failed(console, walk.error);
    if (walk.paths.size() > update::kMaxListFiles)
        return failed(console, L"Çok fazla dosya: " + std::to_wstring(walk.paths.size()));
    std::sort(walk.paths.begin(), walk.paths.end());

    // Files are read on several threads at once: a disk that serves parallel reads (any SSD) is kept busy.
    // A large file is read once for both its CRC-32 and its chunk index.
    const std::wstring indexFolder = pathJoin(root, utf8ToWide(std::string(update::kIndexFolder)));
    if (!createFolders(indexFolder))
        return failed(console, L"Yazılamadı: " + indexFolder + L" — " + systemErrorText(lastSystemError()));
    std::unique_ptr<update::GameFiles> folder = update::openGameFolder(root);
    update::FileList list;
    list.files.resize(walk.paths.size());
    std::vector<std::optional<update::IndexRef>> indexes(walk.paths.size());
    std::atomic<size_t> next{0};
    std::atomic<bool> failedRead{false};
    const std::atomic<bool> never{false};
    std::vector<std::wstring> problems(walk.paths.size());
    auto hashAll = [&] {
        for (size_t i; !failedRead && (i = next++) < walk.paths.size();) {
            update::ListEntry& entry = list.files[i];
            entry.path = walk.paths[i];
            const std::wstring native = pathJoin(root, utf8ToWide(entry.path));
            update::FileInfo info;
            if (folder->info(entry.path, info) && info.size >= update::kIndexThreshold) {
                update::ChunkIndex index;
                update::FileError error;
                if (!update::chunkFile(*folder, entry.path, update::kChunkParams, never, index, error)) {
                    problems[i] = L"Okunamadı: " + native + L" — " + utf8ToWide(update::describe(error));
                    failedRead = true;
                    continue;
                }
                entry.size = index.fileSize;
                entry.crc = index.fileCrc;
                const std::string bytes = update::writeChunkIndex(index);
                const std::wstring indexFile = pathJoin(root, utf8ToWide(update::indexPathFor(entry.path)));
                if (!writeFileAtomic(indexFile, bytes.data(), bytes.size())) {
                    problems[i] = L"Yazılamadı: " + indexFile + L" — " + systemErrorText(lastSystemError());
                    failedRead = true;
                    continue;
                }
                indexes[i] = update::IndexRef{bytes.size(), update::hash128(bytes.data(), bytes.size())};
            } else if (!fileCrc32(native, entry.crc, entry.size)) {
                problems[i] = L"Okunamadı: " + native + L" — " + systemErrorText(lastSystemError());
                failedRead = true;
            }
        }
    };
    const unsigned threads = std::clamp(std::thread::hardware_concurrency(), 1u, 4u);
    std::vector<std::thread> pool;
    for (unsigned t = 1; t < threads; ++t)
        pool.emplace_back(hashAll);
    hashAll();
    for (std::thread& thread : pool)
        thread.join();
    for (const std::wstring& problem : problems)
        if (!problem.empty()) return failed(console, problem);

    // The list names each index; indexes of files no longer listed (or now too small) are removed, so that
    // the folder as it is left is the one to upload.
    std::set<std::string> kept;
    uint64_t indexBytes = 0;
    for (size_t i = 0; i < indexes.size(); ++i) {
        if (!indexes[i]) continue;
        list.comments.push_back(update::indexRefLine(list.files[i].path, *indexes[i]));
        kept.insert(update::indexPathFor(list.files[i].path));
        // A signed list carries each index's SHA-256 too, so a patcher with a key trusts no index the key did
        // not sign.
        signing.extraFiles.push_back(update::indexPathFor(list.files[i].path));
        indexBytes += indexes[i]->size;
    }
    std::vector<FolderEntry> present;
    if (listFolder(indexFolder, present))
        for (const FolderEntry& entry : present)
            if (const std::string path = std::string(update::kIndexFolder) + "/" + wideToUtf8(entry.name);
                !entry.isFolder && path.ends_with(".nvx") && !kept.count(asciiLower(path))) {
                update::FileError error;
                folder->remove(path, error);
            }

    std::string text;
    if (sign) {
        Bytes previous;
        readFileBytes(out, previous, update::kMaxListBytes);
        if (!signList(*crypto, signing, root, list, std::string(previous.begin(), previous.end()), console,
                      text))
            return kExitFailed;
    } else {
        text = update::writeFileList(list);
    }
    if (!writeFileAtomic(out, text.data(), text.size()))
        return failed(console, L"Yazılamadı: " + out + L" — " + systemErrorText(lastSystemError()));
    uint64_t total = 0;
    for (const update::ListEntry& entry : list.files)
        total += entry.size;
    console.outLine(out + L": " + std::to_wstring(list.files.size()) + L" dosya, " + sizeText(total));
    console.outLine(indexFolder + L": " + std::to_wstring(kept.size()) + L" parça dizini, " +
                    sizeText(indexBytes));
    console.outLine(L"crclist_crc32=" + widenAscii(update::crcText(Crc32::of(text.data(), text.size()))));
    return kExitOk;
}

constexpr std::wstring_view kCrclistArguments[] = {L"CLIENT_DIR"};
constexpr OptionSpec kCrclistOptions[] = {
    {L"--out", L"FILE"},  {L"--exclude", L"PATTERN", true}, {L"--sign", L"KEY"}, {L"--expires", L"DAYS|DATE"},
    {L"--version", L"N"},
};

} // namespace

const Command kCrclistCommand{
    L"crclist",
    L"Oyun klasörünün dosya listesini (crclist.txt) yazar; patcher sunucudan bunu okur.",
    L"crclist CLIENT_DIR [--out FILE] [--exclude PATTERN]... [--sign KEY [--expires DAYS|DATE] [--version "
    L"N]]",
    L"Argümanlar:\n"
    L"  CLIENT_DIR  oyuncuların klasörü olacak istemci klasörü (sunucuya olduğu gibi yüklenir)\n"
    L"\n"
    L"Seçenekler:\n"
    L"  --out FILE         listenin yazılacağı dosya (varsayılan: CLIENT_DIR/crclist.txt)\n"
    L"  --exclude PATTERN  listeye girmeyecek dosyalar; tekrarlanabilir. * ve ? kullanılabilir\n"
    L"                     (büyük/küçük harf fark etmez). '/' içeren desen yolun tamamına, içermeyen\n"
    L"                     her ada uyar: \"*.log\" her yerdeki günlükleri, \"ekran\" bir klasörü dışarıda "
    L"bırakır.\n"
    L"  --sign KEY         listeyi `nvbuild keygen`in özel anahtarıyla (.key) imzalar: her dosyanın\n"
    L"                     SHA-256'sı, sürüm, geçerlilik ve imza eklenir (yalnızca Windows'ta)\n"
    L"  --expires DAYS|DATE  imzanın geçerliliği: gün sayısı ya da YYYY-AA-GG (o günün sonu, UTC);\n"
    L"                     varsayılan 30 gün. Geçmiş bir tarih uyarıyla imzalanır (sınama için)\n"
    L"  --version N        listenin sürümü; varsayılan, değiştirilen listeninkinin bir fazlası.\n"
    L"                     Anahtarlı patcher'lar daha önce kabul ettiklerinden eski sürümü reddeder\n"
    L"\n"
    L"Her satır: yol<TAB>boyut<TAB>crc32 (yollar '/' ile, UTF-8). Liste kendisini, patcher'ın bıraktığı\n"
    L"dosyaları (.nvpart, norvane.state, norvane*.log) ve .nvindex/ klasörünü hiçbir zaman içermez.\n"
    L"1 MiB ve daha büyük her dosyanın parça dizini CLIENT_DIR/.nvindex/ altına yazılır (patcher değişen\n"
    L"büyük dosyaların yalnız değişen parçalarını indirir); liste her dizini bir #nvindex satırıyla anar.\n"
    L"Klasörle birlikte .nvindex/ de yüklenir. Listede artık olmayan dosyaların dizinleri silinir.\n"
    L"Dosyalar paralel okunur. Son satır, sunucu yapılandırmasına yapıştırılacak satırdır:\n"
    L"  crclist_crc32=XXXXXXXX\n"
    L"Patcher'ın kabul etmeyeceği bir ad (aygıt adı, Windows'un reddettiği karakter...) çıkış 1 ile "
    L"bildirilir.\n",
    kCrclistArguments,
    kCrclistOptions,
    commandCrclist,
};

} // namespace nv
