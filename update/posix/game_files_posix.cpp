// The game folder on POSIX files, with the same contracts as the Windows one.

#include "core/crc32.h"
#include "core/paths.h"
#include "core/text.h"
#include "update/folder_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

namespace nv::update {
namespace {

FileFault faultOf(int code) {
    switch (code) {
    case ENOENT:
    case ENOTDIR:
        return FileFault::NotFound;
    case ENOSPC:
    case EDQUOT:
        return FileFault::DiskFull;
    case ETXTBSY:
    case EBUSY:
        return FileFault::InUse;
    case EACCES:
    case EPERM:
    case EROFS:
        return FileFault::AccessDenied;
    default:
        return FileFault::Other;
    }
}

bool failWith(FileError& error, const std::string& path, int code = errno) {
    error.fault = faultOf(code);
    error.code = uint32_t(code);
    error.path = path;
    return false;
}

class Fd {
public:
    explicit Fd(int fd) : fd_(fd) {}
    ~Fd() {
        if (fd_ >= 0) ::close(fd_);
    }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    int get() const { return fd_; }
    bool valid() const { return fd_ >= 0; }

private:
    int fd_;
};

class PosixPart : public PartFile {
public:
    PosixPart(int fd, std::string path) : fd_(fd), path_(std::move(path)) {}

    bool write(uint64_t offset, const uint8_t* data, size_t size, FileError& error) override {
        while (size > 0) {
            const ssize_t wrote = ::pwrite(fd_.get(), data, size, off_t(offset));
            if (wrote < 0 && errno == EINTR) continue;
            if (wrote <= 0) return failWith(error, path_, wrote < 0 ? errno : ENOSPC);
            data += wrote, size -= size_t(wrote), offset += uint64_t(wrote);
        }
        return true;
    }
    bool read(uint64_t offset, uint8_t* data, size_t size, FileError& error) override {
        while (size > 0) {
            const ssize_t got = ::pread(fd_.get(), data, size, off_t(offset));
            if (got < 0 && errno == EINTR) continue;
            if (got <= 0) return failWith(error, path_, got < 0 ? errno : EIO);
            data += got, size -= size_t(got), offset += uint64_t(got);
        }
        return true;
    }
    bool flush(FileError& error) override { return ::fdatasync(fd_.get()) == 0 || failWith(error, path_); }

private:
    Fd fd_;
    std::string path_;
};

class PosixGameFiles : public GameFiles {
public:
    explicit PosixGameFiles(std::wstring folder) : root_(wideToUtf8(absolutePath(folder))) {}

    std::wstring displayPath(const std::string& path) const override { return utf8ToWide(native(path)); }

    bool info(const std::string& path, FileInfo& info) override {
        info = FileInfo();
        struct stat st;
        if (::stat(native(path).c_str(), &st) != 0) return errno == ENOENT || errno == ENOTDIR;
        info.exists = true;
        info.isFolder = S_ISDIR(st.st_mode);
        info.size = uint64_t(st.st_size);
        info.writeTime = int64_t(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
        return true;
    }

    bool checksum(const std::string& path, uint32_t& crc, uint64_t& size, const std::atomic<bool>& cancel,
                  FileError& error) override {
        crc = 0, size = 0;
        Fd fd(::open(native(path).c_str(), O_RDONLY | O_CLOEXEC));
        if (!fd.valid()) return failWith(error, path);
        ::posix_fadvise(fd.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
        std::vector<uint8_t> buffer(1 << 20);
        Crc32 sum;
        for (;;) {
            if (cancel.load(std::memory_order_relaxed)) return failWith(error, path, ECANCELED);
            const ssize_t got = ::read(fd.get(), buffer.data(), buffer.size());
            if (got < 0 && errno == EINTR) continue;
            if (got < 0) return failWith(error, path);
            if (got == 0) break;
            sum.update(buffer.data(), size_t(got));
            size += uint64_t(got);
        }
        crc = sum.value();
        return true;
    }

    std::unique_ptr<PartFile> open(const std::string& path, bool keep, FileError& error) override {
        const std::wstring full = utf8ToWide(native(path));
        if (!createFolders(pathParent(full))) {
            failWith(error, path);
            return nullptr;
        }
        const int fd =
            ::open(native(path).c_str(), O_RDWR | O_CREAT | O_CLOEXEC | (keep ? 0 : O_TRUNC), 0644);
        if (fd < 0) {
            failWith(error, path);
            return nullptr;
        }
        return std::make_unique<PosixPart>(fd, path);
    }

    std::unique_ptr<PartFile> openRead(const std::string& path, FileError& error) override {
        const int fd = ::open(native(path).c_str(), O_RDONLY | O_CLOEXEC);
        if (fd < 0) {
            failWith(error, path);
            return nullptr;
        }
        return std::make_unique<PosixPart>(fd, path);
    }

    bool replace(const std::string& from, const std::string& to, FileError& error) override {
        const std::string target = native(to);
        struct stat st;
        if (::stat(target.c_str(), &st) == 0 && S_ISREG(st.st_mode) && !(st.st_mode & S_IWUSR))
            ::chmod(target.c_str(), (st.st_mode & 07777) | S_IWUSR);
        if (::rename(native(from).c_str(), target.c_str()) != 0) return failWith(error, to);
        // The new name reaches the disk with the folder's entry.
        Fd folder(
            ::open(wideToUtf8(pathParent(utf8ToWide(target))).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (folder.valid()) ::fsync(folder.get());
        return true;
    }

    bool remove(const std::string& path, FileError& error) override {
        return ::unlink(native(path).c_str()) == 0 || errno == ENOENT || failWith(error, path);
    }

    bool readSmall(const std::string& path, Bytes& bytes, uint64_t maxSize) override {
        return readFileBytes(utf8ToWide(native(path)), bytes, maxSize);
    }

    bool writeSmall(const std::string& path, const Bytes& bytes, FileError& error) override {
        return writeFileAtomic(utf8ToWide(native(path)), bytes) || failWith(error, path);
    }

private:
    std::string native(const std::string& path) const { return root_ + "/" + path; }

    std::string root_;
};

} // namespace

std::unique_ptr<GameFiles> openGameFolder(const std::wstring& folder) {
    return std::make_unique<PosixGameFiles>(folder);
}

} // namespace nv::update
