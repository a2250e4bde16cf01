// The two previews: the live picture in the right column, drawn by the patcher's own renderer, and the real
// patcher built into the temporary folder and started with "--preview".

#include "ui/win32/app.h"

#include "core/files.h"
#include "core/paths.h"
#include "ui/live_preview.h"

namespace nv::ui::win {

// After a skin loads, after dropped files join it, after the session is restored and when an address, the
// title, the segment size or a link field loses the focus.
void BuilderApp::refreshPreview() {
    // The working skin takes the field texts first; a build reading it on its own thread must not see that.
    if (building()) return;
    copyFieldsToSettings();
    setPreviewPixels(0, 0, {});
    PreviewPicture picture;
    std::wstring logLine;
    switch (renderLivePreview(workspace_, picture, logLine)) {
    case PreviewOutcome::Drawn:
        setPreviewPixels(picture.width, picture.height, std::move(picture.pixels));
        break;
    case PreviewOutcome::Failed:
        appendLog(logLine, 3);
        break;
    case PreviewOutcome::NoSkin:
    case PreviewOutcome::Empty:
        break;
    }
    InvalidateRect(hwnd_, nullptr, FALSE);
}

void BuilderApp::setPreviewPixels(int width, int height, std::vector<uint32_t> pixels) {
    const bool valid = width > 0 && height > 0 && pixels.size() == size_t(width) * size_t(height);
    previewRendered_ = valid;
    previewWidth_ = valid ? width : 0;
    previewHeight_ = valid ? height : 0;
    previewPixels_ = valid ? std::move(pixels) : std::vector<uint32_t>();
    InvalidateRect(hwnd_, nullptr, FALSE);
}

// The whole build, on this thread, into a fixed file of the temporary folder: unsigned, its progress not
// logged, the operator's output place and signing switch never touched. A preview patcher that is still open
// holds that file, and the build then fails with its in-use message.
void BuilderApp::previewPatcher() {
    if (building()) return;
    copyFieldsToSettings();
    if (!skinLoaded_) {
        setStatus(L"Önce bir skin yükleyin.", true);
        return;
    }
    if (!fileExists(templatePath_)) {
        setStatus(L"Patcher şablonu yok — build.bat ile derleyin.", true);
        return;
    }
    wchar_t temp[MAX_PATH + 1] = {};
    GetTempPathW(MAX_PATH + 1, temp);
    const std::wstring previewPath = pathJoin(temp, L"NorvanePreview.exe");
    BuildInputs inputs = buildInputs();
    inputs.outputPath = previewPath;
    inputs.signing.enabled = false;

    HCURSOR previous = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
    setStatus(L"Önizleme hazırlanıyor…", false);
    UpdateWindow(hwnd_);
    const BuildResult result = runBuild(workspace_, inputs, nullptr, nullptr);
    SetCursor(previous);

    if (!result.ok) {
        setStatus(L"Önizleme açılamadı: " + result.message, true);
        appendLog(L"Önizleme hatası: " + result.message, 3);
        return;
    }
    const std::wstring folder = pathParent(previewPath);
    ShellExecuteW(hwnd_, L"open", previewPath.c_str(), L"--preview", folder.c_str(), SW_SHOWNORMAL);
    setStatus(L"Patcher önizlemesi açıldı (ağ ve disk işlemi yapılmaz).", false);
}

} // namespace nv::ui::win
