// The commands of the Derleme page's result: the output shown in Explorer, and the CRC, the self-update line
// and the build log put on the clipboard.

#include "ui/win32/app.h"

#include "core/files.h"
#include "ui/readiness.h"

#include <cstring>

namespace nv::ui::win {

bool BuilderApp::copyToClipboard(const std::wstring& text) {
    if (!OpenClipboard(hwnd_)) return false;
    EmptyClipboard();
    const size_t bytes = (text.size() + 1) * sizeof(wchar_t);
    bool placed = false;
    if (HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, bytes)) {
        if (void* target = GlobalLock(block)) {
            std::memcpy(target, text.c_str(), bytes);
            GlobalUnlock(block);
            // On success the clipboard owns the block.
            placed = SetClipboardData(CF_UNICODETEXT, block) != nullptr;
        }
        if (!placed) GlobalFree(block);
    }
    CloseClipboard();
    return placed;
}

// Items 23 (CRC), 24 (the whole log) and 25 (the self-update line). The CRC belongs to a finished build.
void BuilderApp::copyResultText(int item) {
    const bool haveCrc = build_.succeeded();
    const uint32_t crc = build_.lastResult().crc32;
    std::wstring text;
    const wchar_t* status = nullptr;
    switch (item) {
    case kItemCopyCrc:
        if (!haveCrc) return;
        text = crcText(crc);
        status = L"CRC32 panoya kopyalandı.";
        break;
    case kItemCopyLog:
        text = log_.log().plainText();
        status = L"Günlük panoya kopyalandı.";
        break;
    case kItemCopySelfUpdate:
        if (!haveCrc) return;
        text = L"nv_patcher_crc32=" + crcText(crc);
        status = L"Kendini güncelleme satırı panoya kopyalandı.";
        break;
    default:
        return;
    }
    if (copyToClipboard(text)) setStatus(status, false);
}

// Explorer opens the output's folder with the file selected; before a build, or once the file is gone, there
// is nothing to show.
void BuilderApp::showOutputInFolder() {
    const std::wstring& output = build_.lastOutput();
    if (!build_.succeeded() || output.empty() || !fileExists(output)) return;
    const std::wstring parameters = L"/select,\"" + output + L"\"";
    ShellExecuteW(hwnd_, L"open", L"explorer.exe", parameters.c_str(), nullptr, SW_SHOWNORMAL);
}

} // namespace nv::ui::win
