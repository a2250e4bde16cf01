// NorvaneOlusturucu.exe: the builder's entry point.

#include "core/win32/gdiplus_session.h"
#include "ui/win32/app.h"

#include <ole2.h>
#include <shellapi.h>

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int) {
    HeapSetInformation(nullptr, HeapEnableTerminationOnCorruption, nullptr, 0);
    const HRESULT ole = OleInitialize(nullptr);
    int exitCode = 0;
    {
        nv::GdiplusSession
            gdiplus; // a failed start leaves the window without anti-aliased shapes, nothing more

        nv::ui::win::BuilderApp app;
        int argc = 0;
        if (wchar_t** argv = CommandLineToArgvW(GetCommandLineW(), &argc)) {
            app.setCommandLine(nv::ui::win::parseCommandLine(argc, argv));
            LocalFree(argv);
        }
        if (!app.createWindow()) {
            MessageBoxW(nullptr, L"Pencere oluşturulamadı.", L"Norvane Oluşturucu", MB_ICONERROR);
            exitCode = 1;
        } else {
            exitCode = app.messageLoop();
        }
    }
    if (SUCCEEDED(ole)) OleUninitialize();
    return exitCode;
}
