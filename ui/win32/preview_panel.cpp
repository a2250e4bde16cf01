#include "ui/win32/preview_panel.h"

#include "core/files.h"
#include "core/paths.h"
#include "ui/live_preview.h"
#include "ui/win32/app.h"

namespace nv::ui::win {

void PreviewPanel::refresh() {
    setPixels(0, 0, {});
    PreviewPicture picture;
    std::wstring logLine;
    switch (renderLivePreview(app_.workingSkin(), picture, logLine)) {
    case PreviewOutcome::Drawn:
        setPixels(picture.width, picture.height, std::move(picture.pixels));
        break;
    case PreviewOutcome::Failed:
        app_.appendLog(logLine, 3);
        break;
    case PreviewOutcome::NoSkin:
    case PreviewOutcome::Empty:
        break;
    }
    InvalidateRect(app_.hwnd(), nullptr, FALSE);
}

void PreviewPanel::setPixels(int width, int height, std::vector<uint32_t> pixels) {
    const bool valid = width > 0 && height > 0 && pixels.size() == size_t(width) * size_t(height);
    rendered_ = valid;
    width_ = valid ? width : 0;
    height_ = valid ? height : 0;
    pixels_ = valid ? std::move(pixels) : std::vector<uint32_t>();
    InvalidateRect(app_.hwnd(), nullptr, FALSE);
}

// The whole build, on this thread, into a fixed file of the temporary folder: unsigned, its progress not
// logged, the operator's output place and signing switch never touched. A preview patcher that is still open
// holds that file, and the build then fails with its in-use message.
void PreviewPanel::openPatcher() {
    if (!app_.skinLoaded()) {
        app_.setStatus(L"Önce bir skin yükleyin.", true);
        return;
    }
    if (!fileExists(app_.templatePath())) {
        app_.setStatus(L"Patcher şablonu yok — build.bat ile derleyin.", true);
        return;
    }
    wchar_t temp[MAX_PATH + 1] = {};
    GetTempPathW(MAX_PATH + 1, temp);
    const std::wstring previewPath = pathJoin(temp, L"NorvanePreview.exe");
    BuildInputs inputs = app_.buildInputs();
    inputs.outputPath = previewPath;
    inputs.signing.enabled = false;

    HWND window = app_.hwnd();
    HCURSOR previous = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
    app_.setStatus(L"Önizleme hazırlanıyor…", false);
    UpdateWindow(window);
    const BuildResult result = runBuild(app_.workingSkin(), inputs, nullptr, nullptr);
    SetCursor(previous);

    if (!result.ok) {
        app_.setStatus(L"Önizleme açılamadı: " + result.message, true);
        app_.appendLog(L"Önizleme hatası: " + result.message, 3);
        return;
    }
    const std::wstring folder = pathParent(previewPath);
    ShellExecuteW(window, L"open", previewPath.c_str(), L"--preview", folder.c_str(), SW_SHOWNORMAL);
    app_.setStatus(L"Patcher önizlemesi açıldı (ağ ve disk işlemi yapılmaz).", false);
}

} // namespace nv::ui::win
