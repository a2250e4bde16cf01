#pragma once
// Changing the build's copy of the template where it lies: a copy that carries a large skin package is never
// read whole into memory and written back.

#include "core/files.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace nv {

// Keeps the file's first `keep` bytes and puts `bytes` after them as the file's new end. False with the
// system's error code.
bool replaceFileEnd(const std::wstring& path, uint64_t keep, const Bytes& bytes, DWORD& error);

// Maps the whole file for reading and writing and lets edit look at it and change it; only the pages it
// changes are written back. False with the system's error code when the file cannot be opened or mapped, and
// with ERROR_BAD_EXE_FORMAT when edit says no.
using FileEditFn = std::function<bool(uint8_t* data, size_t size)>;
bool editFileInPlace(const std::wstring& path, const FileEditFn& edit, DWORD& error);

} // namespace nv
