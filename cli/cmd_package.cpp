// nvbuild pack / list / unpack: skin packages on disk.

#include "cli/nvbuild.h"
#include "core/crc32.h"
#include "core/files.h"
#include "core/paths.h"
#include "core/text.h"
#include "skin/package.h"
#include "skin/skin_source.h"

#include <cstdio>

namespace nv {
namespace {

// A package holds at most 64 MiB of data plus its names; anything this large is not one.
constexpr uint64_t kMaxPackageFile = 0x10000000;

int failed(Console& console, const std::wstring& message) {
    console.errLine(message);
    return kExitFailed;
}

bool readPackageFile(const std::wstring& path, SkinFileSet& files, std::wstring& message) {
    Bytes bytes;
    if (!readFileBytes(path, bytes, kMaxPackageFile)) {
        message = L"Okunamadi: " + path;
        return false;
    }
    return readSkinPackage(bytes.data(), bytes.size(), files, &message);
}

// Entry names come from the package as they stand; only a bare file name may become a file in the folder.
bool isSafeFileName(const std::string& name) {
    if (name.empty() || name == "." || name == "..") return false;
    for (unsigned char c : name)
        if (c < 0x20 || c == '/' || c == '\\' || c == ':' || c == '*' || c == '?' || c == '"' || c == '<' ||
            c == '>' || c == '|')
            return false;
    return true;
}

} // namespace

int commandPack(const std::vector<std::wstring>& args, Console& console) {
    if (args.size() != 2) return usage(console);
    SkinFileSet files;
    std::wstring message, note;
    if (!readSkinSource(args[0], files, message, nullptr, &note)) return failed(console, message);
    if (!note.empty()) console.errLine(L"Not: " + note);

    Bytes package = writeSkinPackage(files);
    if (!writeFileAtomic(args[1], package))
        return failed(console, L"Yazılamadı: " + args[1] + L" — " + systemErrorText(lastSystemError()));
    return kExitOk;
}

int commandList(const std::vector<std::wstring>& args, Console& console) {
    if (args.size() != 1) return usage(console);
    SkinFileSet files;
    std::wstring message;
    if (!readPackageFile(args[0], files, message)) return failed(console, message);
    for (const SkinEntry& entry : files.entries) {
        char head[48];
        std::snprintf(head, sizeof head, "%llu\t%08X\t", static_cast<unsigned long long>(entry.data.size()),
                      Crc32::of(entry.data.data(), entry.data.size()));
        console.outLine(widenAscii(head) + utf8ToWide(entry.name));
    }
    return kExitOk;
}

int commandUnpack(const std::vector<std::wstring>& args, Console& console) {
    if (args.size() != 2) return usage(console);
    SkinFileSet files;
    std::wstring message;
    if (!readPackageFile(args[0], files, message)) return failed(console, message);
    // Every name is checked before anything is written, so a bad package leaves the folder as it was.
    for (const SkinEntry& entry : files.entries)
        if (!isSafeFileName(entry.name)) return failed(console, L"Geçersiz dosya adı: " + utf8ToWide(entry.name));

    const std::wstring& folder = args[1];
    if (!createFolders(folder)) return failed(console, L"Klasör oluşturulamadı: " + folder);
    for (const SkinEntry& entry : files.entries) {
        std::wstring path = pathJoin(folder, utf8ToWide(entry.name));
        if (!writeFileAtomic(path, entry.data))
            return failed(console, L"Yazılamadı: " + path + L" — " + systemErrorText(lastSystemError()));
    }
    return kExitOk;
}

} // namespace nv
