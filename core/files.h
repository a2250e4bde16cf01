#pragma once
// Files and folders (platform layer: Win32 on Windows, POSIX in the native build).
// Everything here reports failure by its result; callers compose the messages the operator sees.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace nv {

using Bytes = std::vector<uint8_t>;

// Reads a whole file. A file larger than maxSize fails without reading; an empty file gives an empty vector.
// On failure the output is empty.
bool readFileBytes(const std::wstring& path, Bytes& out, uint64_t maxSize);

// The first bytes of a file, at most count of them (fewer when the file is shorter). False when it cannot be
// opened or read, or is no regular file.
bool readFileHead(const std::wstring& path, size_t count, Bytes& out);

// Writes path + ".nvtmp", then moves it over path (clearing a read-only attribute of the old file first).
// On failure the old file is untouched and no temporary file remains.
bool writeFileAtomic(const std::wstring& path, const void* data, size_t size);
inline bool writeFileAtomic(const std::wstring& path, const Bytes& bytes) {
    return writeFileAtomic(path, bytes.data(), bytes.size());
}

// Creates the folder and every missing parent. An empty path or an existing folder succeeds.
bool createFolders(const std::wstring& path);

bool fileExists(const std::wstring& path);
bool folderExists(const std::wstring& path);

// True when both paths name one existing file, however they are spelt (case, short names, links): compared by
// the file's identity on its volume, not by its name.
bool sameFile(const std::wstring& a, const std::wstring& b);

// The path made absolute against the current folder (a path typed on a command line); an empty path, or one
// the system cannot resolve, comes back as it was.
std::wstring absolutePath(const std::wstring& path);

// The system's text for an error code followed by " (code)", or "Hata kodu " + code when it has none.
std::wstring systemErrorText(uint32_t code);

// The code of the last failed system call on this thread (GetLastError / errno).
uint32_t lastSystemError();

// The running program's own file and its folder (without a trailing separator).
std::wstring exePath();
std::wstring exeFolder();

// One entry of a folder listing, in the order the platform yields them ("." and ".." left out).
struct FolderEntry {
    std::wstring name;
    bool isFolder = false;
};

// Lists the entries directly inside a folder; false when it cannot be listed.
bool listFolder(const std::wstring& folder, std::vector<FolderEntry>& entries);

} // namespace nv
