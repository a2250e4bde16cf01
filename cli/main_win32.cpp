// nvbuild.exe entry point.

#include "cli/nvbuild.h"

#include <windows.h>

int wmain(int argc, wchar_t** argv) {
    HeapSetInformation(nullptr, HeapEnableTerminationOnCorruption, nullptr, 0);
    std::vector<std::wstring> args(argv + 1, argv + argc);
    return nv::runNvbuild(args, nv::processConsole());
}
