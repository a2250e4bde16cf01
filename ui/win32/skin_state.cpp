// The working skin as the window shows it: loading a source into the fields, the summary of the Kaynak page,
// and the hooks of the session file and the live preview.

#include "ui/win32/app.h"

#include "core/files.h"
#include "core/text.h"
#include "ui/readiness.h"

namespace nv::ui::win {

bool BuilderApp::loadSkin(const std::wstring& path, bool restoreMode) {
    std::wstring message;
    const bool ok = workspace_.loadSkinSource(path, message);
    skinLoaded_ = ok;
    skinLoadFailed_ = !ok;
    skinSource_ = ok ? path : std::wstring();
    rebuildLinkFields();
    if (ok) {
        setFieldText(kFieldConfigUrl, workspace_.serverAddress);
        setFieldText(kFieldNewsUrl, workspace_.newsAddress);
        setFieldText(kFieldFeedUrl, workspace_.feedUrl);
        const PatcherSettings& settings = workspace_.settings;
        setFieldText(kFieldTitle, settings.title);
        setFieldText(kFieldSegment, std::to_wstring(settings.segmentMb));
        setFieldText(kFieldRunArgs, settings.runArgs);
        connections_ = settings.connections;
        toggles_ = {settings.closeOnStart, settings.autoStart, settings.allowStartOnError,
                    settings.browserEmulation};
    }
    updateSkinSummary();
    refreshPreview();
    if (!restoreMode) {
        if (ok)
            setStatus(sourceName(path) + L" yüklendi", false);
        else
            setStatus(message, true);
        // A folder file that could not be read does not stop the load, but the operator hears of it.
        if (ok && !message.empty()) appendLog(L"Not: " + message, 2);
        saveSession();
    }
    relayout();
    InvalidateRect(hwnd_, nullptr, FALSE);
    return ok;
}

void BuilderApp::fillFieldsFromSkin() {
    setFieldText(kFieldConfigUrl, workspace_.serverAddress);
    setFieldText(kFieldNewsUrl, workspace_.newsAddress);
    setFieldText(kFieldFeedUrl, workspace_.feedUrl);
    const PatcherSettings& settings = workspace_.settings;
    setFieldText(kFieldTitle, settings.title);
    setFieldText(kFieldSegment, std::to_wstring(settings.segmentMb));
    setFieldText(kFieldRunArgs, settings.runArgs);
    connections_ = settings.connections;
    toggles_ = {settings.closeOnStart, settings.autoStart, settings.allowStartOnError,
                settings.browserEmulation};
}

// Dropped files: the first folder or zip becomes the skin; otherwise the files join the loaded package (an
// image of the same name replaces the skin's own).
void BuilderApp::dropFiles(HDROP drop) {
    std::vector<std::wstring> paths;
    const UINT count = DragQueryFileW(drop, 0xFFFFFFFF, nullptr, 0);
    for (UINT i = 0; i < count; ++i) {
        wchar_t path[261] = {};
        if (DragQueryFileW(drop, i, path, 261)) paths.emplace_back(path);
    }
    DragFinish(drop);
    if (paths.empty() || building()) return;
    for (const std::wstring& path : paths) {
        if (folderExists(path) || endsWithIgnoreCase(std::wstring_view(path), std::wstring_view(L".zip"))) {
            loadSkin(path, false);
            return;
        }
    }
    const bool wasLoaded = workspace_.loaded;
    copyFieldsToSettings();
    int added = 0;
    std::wstring note;
    workspace_.addDroppedFiles(paths, added, note);
    appendLog(L"Pakete eklenen/değiştirilen dosya: " + std::to_wstring(added), 0);
    if (!note.empty()) appendLog(L"Not: " + note, 2);
    if (!workspace_.loaded) {
        setStatus(L"Henüz skin.xml yok; önce geçerli bir skin .zip ya da klasörü bırakın.", false);
        return;
    }
    skinLoaded_ = true;
    skinLoadFailed_ = false;
    if (!wasLoaded) {
        skinSource_ = workspace_.sourceLabel;
        rebuildLinkFields();
        fillFieldsFromSkin();
    }
    updateSkinSummary();
    refreshPreview();
    setStatus(std::to_wstring(added) + L" dosya pakete eklendi.", false);
    saveSession();
    relayout();
}

void BuilderApp::updateSkinSummary() {
    summary_ = SkinSummary{};
    if (!skinLoaded_) return;
    SkinModel model;
    summary_.resolved = workspace_.loadPreviewModel(model, summary_.warnings);
    if (!summary_.resolved) return;
    summary_.width = model.width;
    summary_.height = model.height;
    summary_.transparent = model.background.hasTransparency;
    for (const SkinControl& control : model.controls) {
        if (control.kind == ControlKind::Button) {
            ++summary_.buttons;
            if (!control.link.empty()) ++summary_.links;
        }
        if (control.kind == ControlKind::Text) ++summary_.textAreas;
        if (control.kind == ControlKind::Iframe)
            summary_.newsAreas.push_back(utf8ToWide(control.id) + L"  •  " + std::to_wstring(control.width) +
                                         L" × " + std::to_wstring(control.height) + L" px  •  skin.xml'den");
    }
}

// Where the session file ("olusturucu.ini") is saved: on every accepted close, when an edit field loses the
// focus and after every command that changes a setting. The file's writer plugs in below the guard; a
// snapshot run must never touch it.
void BuilderApp::saveSession() {
    if (commandLine_.snapshot) return;
}

// Where the last session is restored, once, while the window is created (after the fields exist, before the
// first section is chosen). The fields keep their defaults until the session file's reader fills them.
void BuilderApp::restoreSession() {
    enableSigningFields();
}

// The live preview is drawn here from the working skin: after a skin loads, after dropped images join it,
// after the session is restored and when an address, the title, the segment size or a link field loses the
// focus. Until the renderer has drawn the skin the panel says it is waiting.
void BuilderApp::refreshPreview() {
    copyFieldsToSettings();
    setPreviewPixels(0, 0, {});
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

} // namespace nv::ui::win
