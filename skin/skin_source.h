#pragma once
// Reading a skin source as the builder's loader does: a folder, or a file whose name ends in ".zip".

#include "readers/skin_files.h"

#include <string>

namespace nv {

// Adds the source's files to set. False with the reader's message (or "Zip dosyası ya da klasör bırakın." for
// a path that is neither) when the source cannot be read. A folder's files that fail on their own do not fail
// the read: the first such message goes to note. added counts the files put into the set.
bool readSkinSource(const std::wstring& path, SkinFileSet& set, std::wstring& message, int* added = nullptr,
                    std::wstring* note = nullptr);

} // namespace nv
