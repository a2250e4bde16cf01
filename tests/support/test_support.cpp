#include "tests/support/test_support.h"

#include "core/paths.h"
#include "core/text.h"

#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>

#include <cerrno>
#endif

#include <atomic>
#include <chrono>
#include <fstream>

namespace nv::test {

namespace fs = std::filesystem;

fs::path fsPath(const std::wstring& path) {
#ifdef _WIN32
    return fs::path(path);
#else
    return fs::path(wideToUtf8(path));
#endif
}

std::wstring widePath(const fs::path& path) {
#ifdef _WIN32
    return path.wstring();
#else
    return utf8ToWide(path.string());
#endif
}

TempDir::TempDir() {
    static std::atomic<unsigned> counter{0};
    auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
    fs::path base = fs::temp_directory_path();
    for (;;) {
        fs::path candidate =
            base / ("nvtest-" + std::to_string(stamp) + "-" + std::to_string(counter.fetch_add(1)));
        std::error_code ec;
        if (fs::create_directory(candidate, ec)) {
            path_ = widePath(candidate);
            return;
        }
        if (ec && ec != std::errc::file_exists) throw std::runtime_error("no temporary folder");
    }
}

TempDir::~TempDir() {
    std::error_code ec;
    fs::remove_all(fsPath(path_), ec);
}

std::wstring TempDir::file(std::wstring_view name) const {
    return pathJoin(path_, name);
}

std::wstring testDataDir() {
    return pathJoin(exeFolder(), L"testdata");
}

Bytes bytesOf(std::string_view text) {
    return Bytes(text.begin(), text.end());
}
std::string textOf(const Bytes& bytes) {
    return std::string(bytes.begin(), bytes.end());
}

void writeFile(const std::wstring& path, const Bytes& bytes) {
    fs::path p = fsPath(path);
    if (p.has_parent_path()) fs::create_directories(p.parent_path());
    std::ofstream out(p, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    ASSERT_TRUE(out.good()) << "cannot write " << p.string();
}

void writeFile(const std::wstring& path, std::string_view text) {
    writeFile(path, bytesOf(text));
}

Bytes readFile(const std::wstring& path) {
    std::ifstream in(fsPath(path), std::ios::binary);
    EXPECT_TRUE(in.good()) << "cannot read " << fsPath(path).string();
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

#ifdef _WIN32
UnreadablePage::UnreadablePage()
    : page_(VirtualAlloc(nullptr, 4096, MEM_COMMIT | MEM_RESERVE, PAGE_NOACCESS)) {}
UnreadablePage::~UnreadablePage() {
    if (page_) VirtualFree(page_, 0, MEM_RELEASE);
}
// Windows and Wine word it differently (ERROR_NOACCESS, ERROR_INVALID_USER_BUFFER), so the system is asked:
// the error of a plain write of the page to a scratch file.
uint32_t UnreadablePage::readError() const {
    wchar_t folder[MAX_PATH + 1], name[MAX_PATH + 1];
    if (!GetTempPathW(MAX_PATH + 1, folder) || !GetTempFileNameW(folder, L"nv", 0, name)) return 0;
    HANDLE file =
        CreateFileW(name, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE) return 0;
    DWORD written = 0;
    const DWORD error = WriteFile(file, page_, 1, &written, nullptr) ? 0 : GetLastError();
    CloseHandle(file);
    return error;
}
#else
UnreadablePage::UnreadablePage() {
    void* page = mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    page_ = page == MAP_FAILED ? nullptr : page;
}
UnreadablePage::~UnreadablePage() {
    if (page_) munmap(page_, 4096);
}
uint32_t UnreadablePage::readError() const {
    return EFAULT;
}
#endif

Bytes noiseBytes(size_t size, uint32_t seed) {
    Bytes out(size);
    uint32_t x = seed ? seed : 0x9E3779B9u;
    for (auto& b : out) {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        b = uint8_t(x >> 24);
    }
    return out;
}

} // namespace nv::test
