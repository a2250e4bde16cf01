#pragma once
// The game folder as the update engine sees it: every path is relative to the folder, "/"-separated UTF-8
// (as the list writes it). The platform's implementation (POSIX for tests and tools, Win32 in the patcher)
// classifies every failure, so that the player is told what to do about it: free disk space, close the
// program that holds a file, allow the patcher to write, or just try again.

#include "core/files.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace nv::update {

enum class FileFault {
    None,
    NotFound,
    DiskFull,     // Windows 112 and 39; ENOSPC, EDQUOT
    InUse,        // another program holds the file (Windows 32, 33; 5 when the file itself is held)
    AccessDenied, // a folder the player may not write without elevation (Windows 5; EACCES, EPERM, EROFS)
    Other,
};

struct FileError {
    FileFault fault = FileFault::None;
    uint32_t code = 0; // the system's error code
    std::string path;  // the game path concerned
};

struct FileInfo {
    bool exists = false;
    bool isFolder = false;
    uint64_t size = 0;
    int64_t writeTime = 0; // the system's own units: only ever compared for equality
};

// A ".nvpart" (or other bookkeeping file) open for writing. write() may be called from several threads at
// once for ranges that do not overlap.
class PartFile {
public:
    virtual ~PartFile() = default;
    virtual bool write(uint64_t offset, const uint8_t* data, size_t size, FileError& error) = 0;
    virtual bool read(uint64_t offset, uint8_t* data, size_t size, FileError& error) = 0;
    // The bytes written so far reach the disk before this returns.
    virtual bool flush(FileError& error) = 0;
};

class GameFiles {
public:
    virtual ~GameFiles() = default;

    // The game folder itself, as the player would recognise it (for messages and the log).
    virtual std::wstring displayPath(const std::string& path) const = 0;

    // False only when the system cannot say (info.exists false: nothing there).
    virtual bool info(const std::string& path, FileInfo& info) = 0;
    // CRC-32 and size of a whole file, read sequentially; stops (false, fault Other, code 0) once cancel is
    // set.
    virtual bool checksum(const std::string& path, uint32_t& crc, uint64_t& size,
                          const std::atomic<bool>& cancel, FileError& error) = 0;
    // Opens a file for writing, creating its folders: emptied unless keep, which keeps what an earlier run
    // left (a resumed ".nvpart").
    virtual std::unique_ptr<PartFile> open(const std::string& path, bool keep, FileError& error) = 0;
    // Opens an existing file for reading only (its write() fails), shared with programs that have it open:
    // the old copy of a file whose unchanged chunks a delta update keeps.
    virtual std::unique_ptr<PartFile> openRead(const std::string& path, FileError& error) = 0;
    // Moves a finished, flushed file over its target (replacing it; a read-only target is made writable
    // first) in one step that reaches the disk before it returns.
    virtual bool replace(const std::string& from, const std::string& to, FileError& error) = 0;
    // Nothing there counts as success.
    virtual bool remove(const std::string& path, FileError& error) = 0;
    // A small file (state, log, configuration) whole; false when absent, unreadable or larger than maxSize.
    virtual bool readSmall(const std::string& path, Bytes& bytes, uint64_t maxSize) = 0;
    // Written to a temporary file first, then moved into place.
    virtual bool writeSmall(const std::string& path, const Bytes& bytes, FileError& error) = 0;
};

// The message-ready name of a fault, for the log ("disk dolu (112)").
std::string describe(const FileError& error);

} // namespace nv::update
