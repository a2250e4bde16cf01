#pragma once
// Helpers shared by the test programs: scratch folders, fixture files and byte buffers.

#include "core/files.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace nv::test {

// The same path as the platform's file functions see it (UTF-8 bytes in the native build).
std::filesystem::path fsPath(const std::wstring& path);
std::wstring widePath(const std::filesystem::path& path);

// A fresh folder under the system's temporary folder, removed with everything in it at the end of the scope.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::wstring& path() const { return path_; }
    // path() joined with a relative name.
    std::wstring file(std::wstring_view name) const;

private:
    std::wstring path_;
};

// The folder of fixtures copied beside the test programs.
std::wstring testDataDir();

Bytes bytesOf(std::string_view text);
std::string textOf(const Bytes& bytes);

// Writes (creating parent folders) or reads a whole file; failures fail the current test.
void writeFile(const std::wstring& path, const Bytes& bytes);
void writeFile(const std::wstring& path, std::string_view text);
Bytes readFile(const std::wstring& path);

// A page of memory that the process may not read, to make a system call fail on its buffer; readError() is
// the code that such a failed write reports.
class UnreadablePage {
public:
    UnreadablePage();
    ~UnreadablePage();
    UnreadablePage(const UnreadablePage&) = delete;
    UnreadablePage& operator=(const UnreadablePage&) = delete;
    const void* data() const { return page_; }
    uint32_t readError() const;

private:
    void* page_ = nullptr;
};

// Deterministic pseudo-random bytes (a fixed xorshift sequence per seed).
Bytes noiseBytes(size_t size, uint32_t seed);

} // namespace nv::test
