// The working skin as the window shows it: loading a source into the fields, dropped files, and the summary
// of the Kaynak page.

#include "ui/win32/app.h"

#include "core/files.h"
#include "core/text.h"
#include "ui/drops.h"
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
    const DropPlan plan = planDrop(paths, building());
    if (plan.action == DropPlan::Action::Ignore) return;
    if (plan.action == DropPlan::Action::LoadSource) {
        loadSkin(plan.source, false);
        return;
    }
    const bool wasLoaded = workspace_.loaded;
    copyFieldsToSettings();
    const DropReport report = addDroppedFiles(workspace_, paths);
    for (const ReportLine& line : report.log)
        appendLog(line.text, line.level);
    if (!report.skinLoaded) {
        setStatus(report.status, false);
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
    setStatus(report.status, false);
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

} // namespace nv::ui::win
