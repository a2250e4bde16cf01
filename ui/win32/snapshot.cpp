// Snapshot mode: every section drawn to PNG at the normal and the minimum window size, with one build in
// between when a skin was given. Runs on the UI thread and ends the program.

#include "ui/win32/app.h"

#include "core/files.h"
#include "core/paths.h"

#include <cwchar>
#include <vector>

namespace nv::ui::win {
namespace {

bool pngEncoder(CLSID& clsid) {
    UINT count = 0, size = 0;
    if (gp::GdipGetImageEncodersSize(&count, &size) != Gdiplus::Ok || size == 0) return false;
    std::vector<BYTE> buffer(size);
    auto* codecs = reinterpret_cast<Gdiplus::ImageCodecInfo*>(buffer.data());
    if (gp::GdipGetImageEncoders(count, size, codecs) != Gdiplus::Ok) return false;
    for (UINT i = 0; i < count; ++i) {
        if (codecs[i].MimeType && wcscmp(codecs[i].MimeType, L"image/png") == 0) {
            clsid = codecs[i].Clsid;
            return true;
        }
    }
    return false;
}

// Child windows are printed into the parent's picture at their places: PrintWindow leaves them out on some
// systems, and painting them again over themselves is harmless where it does not.
void printChildren(HWND parent, HDC dc) {
    for (HWND child = GetWindow(parent, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        if (!IsWindowVisible(child)) continue;
        RECT r{};
        GetWindowRect(child, &r);
        MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&r), 2);
        SavedDC saved(dc);
        SetViewportOrgEx(dc, r.left, r.top, nullptr);
        IntersectClipRect(dc, 0, 0, r.right - r.left, r.bottom - r.top);
        SendMessageW(child, WM_PRINT, reinterpret_cast<WPARAM>(dc),
                     PRF_CLIENT | PRF_NONCLIENT | PRF_ERASEBKGND);
    }
}

} // namespace

bool BuilderApp::capture(const std::wstring& path) {
    RECT client{};
    GetClientRect(hwnd_, &client);
    WindowDC windowDc(hwnd_);
    MemoryDC memory(windowDc.get());
    GdiObject<HBITMAP> bitmap(CreateCompatibleBitmap(windowDc.get(), client.right, client.bottom));
    if (!memory.get() || !bitmap.get()) return false;
    {
        SelectIn select(memory.get(), bitmap.get());
        if (!PrintWindow(hwnd_, memory.get(), PW_CLIENTONLY)) paint(memory.get());
        printChildren(hwnd_, memory.get());
    }
    CLSID png{};
    if (!pngEncoder(png)) return false;
    Gdiplus::GpBitmap* image = nullptr;
    if (gp::GdipCreateBitmapFromHBITMAP(bitmap.get(), nullptr, &image) != Gdiplus::Ok) return false;
    ImagePtr owned(image);
    return gp::GdipSaveImageToFile(image, path.c_str(), &png, nullptr) == Gdiplus::Ok;
}

void BuilderApp::runSnapshots() {
    const std::wstring& folder = commandLine_.snapFolder;
    createFolders(folder);
    if (!commandLine_.snapSkin.empty()) loadSkin(commandLine_.snapSkin, true);

    // The build writes into a scratch place, never where an operator keeps patchers.
    wchar_t temp[MAX_PATH + 1] = {};
    GetTempPathW(MAX_PATH + 1, temp);
    const std::wstring scratch = pathJoin(temp, L"nv_snap_out");
    createFolders(scratch);
    fields_.setText(kFieldOutPath, pathJoin(scratch, L"Kaldra.exe"));

    auto shootSections = [&](const wchar_t* suffix) {
        for (int i = 0; i < kSectionCount; ++i) {
            showSection(i);
            UpdateWindow(hwnd_);
            wchar_t name[64];
            swprintf(name, 64, L"%d_%hs%ls.png", i, sectionInfo(i).identifier, suffix);
            capture(pathJoin(folder, name));
        }
    };
    shootSections(L"");
    if (skinLoaded_) build_.runNow();
    showSection(kDerleme);
    UpdateWindow(hwnd_);
    capture(pathJoin(folder, L"5_derleme.png"));

    // The minimum as the operator can drag it: on a screen smaller than it, the work area.
    const SIZE minimum = minimumWindowSize();
    SetWindowPos(hwnd_, nullptr, 0, 0, minimum.cx, minimum.cy, SWP_NOMOVE | SWP_NOACTIVATE | SWP_NOZORDER);
    shootSections(L"_min");
    showSection(kDerleme);
    UpdateWindow(hwnd_);
    capture(pathJoin(folder, L"5_derleme_min.png"));
    DestroyWindow(hwnd_);
}

} // namespace nv::ui::win
