#pragma once
// Which programs hold a set of files open, so that the player can be told what to close before a file is
// replaced. Asked of the Restart Manager; a system that cannot tell (Wine answers with nobody) leaves the
// list empty, and the caller says that an unknown program holds the file.

#include <cstdint>
#include <string>
#include <vector>

namespace nv::update {

struct FileHolder {
    std::wstring name; // the name the system shows for the program or service
    uint32_t processId = 0;
    // A service or a critical system process: nothing the player can close from the desktop.
    bool systemService = false;
};

// The programs holding any of the files (full paths). True with an empty list when nobody is named; false
// with the system's reason when the Restart Manager fails.
bool findFileHolders(const std::vector<std::wstring>& paths, std::vector<FileHolder>& holders,
                     std::wstring* error = nullptr);

} // namespace nv::update
