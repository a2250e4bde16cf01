// Files and folders for the native build, with the same contracts as the Windows layer.

#include "core/crc32.h"
#include "core/files.h"
#include "core/paths.h"
#include "core/text.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>

namespace nv {
namespace {

constexpr size_t kPiece = 0x1000000; // 16 MiB per read / write call

std::string native(const std::wstring& path) {
    return wideToUtf8(path);
}

// A file descriptor closed on every path out of a scope.
class ScopedFd {
public:
    explicit ScopedFd(int fd) : fd_(fd) {}
    ~ScopedFd() { close(); }
    ScopedFd(const ScopedFd&) = delete;
    ScopedFd& operator=(const ScopedFd&) = delete;
    int get() const { return fd_; }
    bool valid() const { return fd_ >= 0; }
    bool close() {
        bool ok = fd_ < 0 || ::close(fd_) == 0;
        fd_ = -1;
        return ok;
    }

private:
    int fd_;
};

bool isRegularFile(int fd, uint64_t& size) {
    struct stat st;
    if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) return false;
    size = uint64_t(st.st_size);
    return true;
}

} // namespace

bool readFileBytes(const std::wstring& path, Bytes& out, uint64_t maxSize) {
    out.clear();
    ScopedFd fd(::open(native(path).c_str(), O_RDONLY | O_CLOEXEC));
    uint64_t size = 0;
    if (!fd.valid() || !isRegularFile(fd.get(), size) || size > maxSize) return false;

    try {
        out.resize(size_t(size));
    } catch (const std::bad_alloc&) {
        return false; // a cap of hundreds of megabytes can meet a machine that has less
    }
    size_t done = 0;
    while (done < out.size()) {
        ssize_t got = ::read(fd.get(), out.data() + done, std::min(out.size() - done, kPiece));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) {
            out.clear();
            return false;
        }
        done += size_t(got);
    }
    return true;
}

bool readFileHead(const std::wstring& path, size_t count, Bytes& out) {
    out.clear();
    ScopedFd fd(::open(native(path).c_str(), O_RDONLY | O_CLOEXEC));
    uint64_t size = 0;
    if (!fd.valid() || !isRegularFile(fd.get(), size)) return false;
    out.resize(size_t(std::min<uint64_t>(size, std::min(count, kPiece))));
    ssize_t got = 0;
    do
        got = out.empty() ? 0 : ::read(fd.get(), out.data(), out.size());
    while (got < 0 && errno == EINTR);
    if (got < 0) {
        out.clear();
        return false;
    }
    out.resize(size_t(got));
    return true;
}

namespace {

// Removes the temporary file of a failed write, keeping errno of the step that failed for the caller.
bool abandon(const std::string& temp, ScopedFd& fd) {
    const int error = errno;
    fd.close();
    ::unlink(temp.c_str());
    errno = error;
    return false;
}

} // namespace

bool writeFileAtomic(const std::wstring& path, const void* data, size_t size) {
    const std::string target = native(path);
    const std::string temp = target + ".nvtmp";
    ScopedFd fd(::open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    if (!fd.valid()) return false;

    const uint8_t* p = static_cast<const uint8_t*>(data);
    size_t done = 0;
    while (done < size) {
        ssize_t wrote = ::write(fd.get(), p + done, std::min(size - done, kPiece));
        if (wrote < 0 && errno == EINTR) continue;
        if (wrote <= 0) return abandon(temp, fd);
        done += size_t(wrote);
    }
    if (!fd.close()) return abandon(temp, fd);

    // The owner's write bit plays the part of the read-only attribute: cleared for the move, put back when
    // the move fails.
    struct stat st;
    const bool readOnly = ::stat(target.c_str(), &st) == 0 && S_ISREG(st.st_mode) && !(st.st_mode & S_IWUSR);
    if (readOnly) ::chmod(target.c_str(), (st.st_mode & 07777) | S_IWUSR);

    if (::rename(temp.c_str(), target.c_str()) != 0) {
        const int error = errno;
        if (readOnly) ::chmod(target.c_str(), st.st_mode & 07777);
        ::unlink(temp.c_str());
        errno = error;
        return false;
    }
    return true;
}

bool fileExists(const std::wstring& path) {
    struct stat st;
    return ::stat(native(path).c_str(), &st) == 0 && !S_ISDIR(st.st_mode);
}

bool folderExists(const std::wstring& path) {
    struct stat st;
    return ::stat(native(path).c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool sameFile(const std::wstring& a, const std::wstring& b) {
    struct stat first, second;
    return ::stat(native(a).c_str(), &first) == 0 && ::stat(native(b).c_str(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

std::wstring absolutePath(const std::wstring& path) {
    if (path.empty() || path[0] == L'/') return path;
    char* cwd = ::getcwd(nullptr, 0);
    if (!cwd) return path;
    const std::wstring folder = utf8ToWide(cwd);
    ::free(cwd);
    return pathJoin(folder, path);
}

bool createFolders(const std::wstring& path) {
    if (path.empty() || folderExists(path)) return true;
    std::wstring parent = pathParent(path);
    if (!parent.empty() && parent != path && !createFolders(parent)) return false;
    if (::mkdir(native(path).c_str(), 0755) == 0) return true;
    return errno == EEXIST && folderExists(path);
}

std::wstring systemErrorText(uint32_t code) {
    const char* text = std::strerror(int(code));
    if (!text || !*text) return L"Hata kodu " + std::to_wstring(code);
    return utf8ToWide(trim(text)) + L" (" + std::to_wstring(code) + L")";
}

uint32_t lastSystemError() {
    return uint32_t(errno);
}

std::wstring exePath() {
    std::string buffer(PATH_MAX, '\0');
    ssize_t n = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (n <= 0 || size_t(n) >= buffer.size()) return {};
    buffer.resize(size_t(n));
    return utf8ToWide(buffer);
}

std::wstring exeFolder() {
    return pathParent(exePath());
}

bool listFolder(const std::wstring& folder, std::vector<FolderEntry>& entries) {
    entries.clear();
    const std::string base = native(folder);
    DIR* dir = ::opendir(base.c_str());
    if (!dir) return false;
    while (struct dirent* e = ::readdir(dir)) {
        std::string name = e->d_name;
        if (name == "." || name == "..") continue;
        struct stat st;
        bool isFolder = ::stat((base + "/" + name).c_str(), &st) == 0 && S_ISDIR(st.st_mode);
        entries.push_back({utf8ToWide(name), isFolder});
    }
    ::closedir(dir);
    return true;
}

bool fileCrc32(const std::wstring& path, uint32_t& crc, uint64_t& size) {
    crc = 0;
    size = 0;
    ScopedFd fd(::open(native(path).c_str(), O_RDONLY | O_CLOEXEC));
    if (!fd.valid() || !isRegularFile(fd.get(), size)) return false;

    constexpr size_t kBuffer = 0x10000;
    std::vector<uint8_t> buffer(kBuffer);
    Crc32 sum;
    for (;;) {
        ssize_t got = ::read(fd.get(), buffer.data(), kBuffer);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) {
            crc = sum.value();
            return false;
        }
        if (got == 0) break;
        sum.update(buffer.data(), size_t(got));
    }
    crc = sum.value();
    return true;
}

} // namespace nv
