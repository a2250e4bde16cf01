#include "cli/skin_input.h"

#include "cli/nvbuild.h"
#include "core/files.h"
#include "core/paths.h"
#include "core/text.h"
#include "skin/package.h"

#include <cstring>

namespace nv {
namespace {

// A package holds at most 64 MiB of data plus its names; anything this large is not one.
constexpr uint64_t kMaxPackageFile = 0x10000000;

bool isZipName(const std::wstring& path) {
    return endsWithIgnoreCase(std::wstring_view(path), std::wstring_view(L".zip"));
}

} // namespace

bool checkOutputSparesSource(const std::wstring& source, const std::wstring& out, std::wstring& message) {
    const bool replaces =
        sameFile(out, source) || (folderExists(source) && sameFile(pathParent(out), source) &&
                                  fileExists(out) && !skinFileName(out).empty());
    if (replaces) message = L"Çıktı kaynağın üzerine yazılamaz: " + out;
    return !replaces;
}

bool checkPackageOutput(const std::wstring& source, const std::wstring& out, std::wstring& message) {
    if (!checkOutputSparesSource(source, out, message)) return false;
    if (!fileExists(out) && !folderExists(out)) return true;
    Bytes head;
    const bool package = readFileHead(out, 4, head) &&
                         (head.empty() || (head.size() == 4 && std::memcmp(head.data(), "NVSK", 4) == 0));
    if (!package) message = L"Çıktı bir skin paketi değil, üzerine yazılmadı: " + out;
    return package;
}

std::wstring unreadableWithCause(const std::wstring& note) {
    constexpr std::wstring_view kUnreadable = L"Okunamadi: ";
    if (!note.starts_with(kUnreadable)) return note;
    const std::wstring path = note.substr(kUnreadable.size());
    // The reader opens, sizes and reads: a file that opens and reads now failed on its size.
    Bytes head;
    if (readFileHead(path, 1, head))
        return note + L" (dosya " + std::to_wstring(SkinFileSet::kMaxFileBytes >> 20) +
               L" MB sınırından büyük)";
    return note + L" (" + systemErrorText(lastSystemError()) + L")";
}

bool readPackageFile(const std::wstring& path, SkinFileSet& files, std::wstring& message) {
    if (!requireExisting(path, message)) return false;
    Bytes bytes;
    if (!readFileBytes(path, bytes, kMaxPackageFile)) {
        message = L"Okunamadı: " + path;
        return false;
    }
    return readSkinPackage(bytes.data(), bytes.size(), files, &message);
}

bool readSkinFile(const std::wstring& path, SkinFileSet& files, std::wstring& message) {
    if (!endsWithIgnoreCase(std::wstring_view(path), std::wstring_view(L".exe")))
        return readPackageFile(path, files, message);
    return requireExisting(path, message) && readExecutableSkin(path, files, message);
}

bool loadSkinInput(const std::wstring& path, SkinWorkspace& workspace, std::wstring& message,
                   std::wstring& note) {
    note.clear();
    if (!requireExisting(path, message)) return false;
    if (folderExists(path) || isZipName(path)) {
        if (!workspace.loadSkinSource(path, message)) return false;
        note = unreadableWithCause(message);
        message.clear();
        return true;
    }
    SkinFileSet files;
    return readSkinFile(path, files, message) && workspace.loadSkinSet(std::move(files), path, message);
}

} // namespace nv
