#pragma once
// The list of the client's files that the server publishes (by default "crclist.txt"): UTF-8 lines
//
//   path<TAB>size<TAB>crc32
//
// with paths relative to the game folder, "/"-separated, the size in decimal bytes and the CRC-32 as eight
// hexadecimal digits. Lines starting with "#" are comments: later versions carry signatures and chunk indexes
// there, so they are kept but never read as files. Blank lines are skipped; line ends are LF or CR LF; a
// UTF-8 byte-order mark at the start is allowed. Data lines are strict: one bad line, or one path that could
// leave the game folder or clash with another, refuses the whole list.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nv::update {

inline constexpr size_t kMaxListBytes = 64u << 20; // ~ 600,000 lines of ordinary paths
inline constexpr size_t kMaxListFiles = 500000;
inline constexpr size_t kMaxListLine = 4096;                    // bytes, line end excluded
inline constexpr size_t kMaxListPath = 1024;                    // bytes of UTF-8
inline constexpr uint64_t kMaxListFileSize = uint64_t(1) << 44; // 16 TiB: no game file is larger

struct ListEntry {
    std::string path; // as written in the list
    uint64_t size = 0;
    uint32_t crc = 0;
};

struct FileList {
    std::vector<ListEntry> files;      // in the list's order
    std::vector<std::string> comments; // the "#" lines, without their line ends
};

// True when path may name a game file: relative, "/"-separated, UTF-8, each name one that Windows keeps as
// written (no drive, no device, no character Windows refuses, no "." or ".."), not one of the patcher's own
// bookkeeping files. why: the reason otherwise, for the log.
bool isValidListPath(std::string_view path, std::string& why);

// listName: the list's own name under the base address; a data line naming it is refused. error: the first
// problem with its line number, for the log.
bool parseFileList(std::string_view bytes, std::string_view listName, FileList& list, std::string& error);

// The list's text: the comments first, then one line per file, LF line ends.
std::string writeFileList(const FileList& list);

} // namespace nv::update
