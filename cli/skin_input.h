#pragma once
// What nvbuild accepts as a skin: a folder or a .zip (as the builder loads them), a skin package, or a
// patcher executable carrying one.

#include "readers/skin_files.h"
#include "skin/workspace.h"

#include <string>

namespace nv {

// Loads the skin at path into the workspace. note receives a folder's first unreadable file, if any. A path
// with nothing at it fails with "Bulunamadı: " + path before any reader runs.
bool loadSkinInput(const std::wstring& path, SkinWorkspace& workspace, std::wstring& message,
                   std::wstring& note);

// Whether writing out spares the source: false with "Çıktı kaynağın üzerine yazılamaz: " + out when it would
// replace the source itself, or one of the files a folder source is read from. Checked before anything is
// written.
bool checkOutputSparesSource(const std::wstring& source, const std::wstring& out, std::wstring& message);

// For a command that writes a skin package: the output spares the source, and what is already there is a
// skin package (or an empty file) and nothing else. Two paths swapped by mistake ("compose skin.nvsk
// skin.zip") would otherwise replace the operator's archive, often their only copy of the skin: false with
// "Çıktı bir skin paketi değil, üzerine yazılmadı: " + out.
bool checkPackageOutput(const std::wstring& source, const std::wstring& out, std::wstring& message);

// The folder reader's note about the first file it could not read ("Okunamadi: " + path), with why: a file
// larger than a skin file may be, or the system's reason. Any other note as it is.
std::wstring unreadableWithCause(const std::wstring& note);

// A skin package file (.nvsk), read whole; the same "Bulunamadı: " check first.
bool readPackageFile(const std::wstring& path, SkinFileSet& files, std::wstring& message);

// A skin package file, or the package embedded in a patcher executable (a path ending in ".exe").
bool readSkinFile(const std::wstring& path, SkinFileSet& files, std::wstring& message);

// The package embedded in an executable (platform layer; the native build cannot load executables).
bool readExecutableSkin(const std::wstring& path, SkinFileSet& files, std::wstring& message);

} // namespace nv
