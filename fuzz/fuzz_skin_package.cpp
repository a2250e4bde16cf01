// Skin packages come from executables the tool did not necessarily write: any bytes must be refused cleanly,
// and whatever reads back must write back to the same bytes it was read from (up to the ignored tail). The
// check that copies nothing (the build's verification) must say exactly what the reader says.

#include "skin/package.h"

#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    nv::SkinFileSet files;
    std::wstring error, checkError;
    const bool read = nv::readSkinPackage(data, size, files, &error);
    if (nv::checkSkinPackage(data, size, &checkError) != read || checkError != error) std::abort();
    if (!read) {
        if (error.empty()) std::abort();
        return 0;
    }
    nv::Bytes again = nv::writeSkinPackage(files);
    nv::SkinFileSet second;
    if (!nv::readSkinPackage(again.data(), again.size(), second, &error)) std::abort();
    if (second.entries.size() != files.entries.size()) std::abort();
    for (size_t i = 0; i < files.entries.size(); ++i)
        if (second.entries[i].name != files.entries[i].name ||
            second.entries[i].data != files.entries[i].data)
            std::abort();
    return 0;
}
