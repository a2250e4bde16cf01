// nvbuild.exe entry point.

#include "core/win32/gdiplus_session.h"
#include "cli/guarded_main.h"
#include "cli/nvbuild.h"

#include <windows.h>

int wmain(int argc, wchar_t** argv) {
    HeapSetInformation(nullptr, HeapEnableTerminationOnCorruption, nullptr, 0);
    nv::GdiplusSession gdiplus; // skin images are decoded with GDI+
    return nv::runGuarded([&] {
        std::vector<std::wstring> args(argv + 1, argv + argc);
        return nv::runNvbuild(args, nv::processConsole());
    });
}
