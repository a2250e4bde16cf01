// The working skin and the operator's decisions as the window holds them: the recipe read from the fields and
// the switches, loading a source into the fields, dropped files, and the summary of the Kaynak page.

#include "ui/win32/app.h"

#include "core/files.h"
#include "core/text.h"
#include "recipe/recipe_keys.h"
#include "recipe/session_file.h"
#include "core/crc32.h"
#include "ui/drops.h"
#include "ui/readiness.h"

namespace nv::ui::win {

Recipe BuilderApp::recipe() const {
    Recipe recipe = decisions_;
    fields_.read(recipe);
    recipe.templatePath = templatePath_;
    return recipe;
}

const SkinWorkspace& BuilderApp::workingSkin() {
    applyRecipe(recipe(), workspace_);
    return workspace_;
}

BuildInputs BuilderApp::buildInputs() const {
    return recipeBuildInputs(recipe(), iconBytes_);
}

std::string BuilderApp::settingsFingerprint() const {
    const Recipe now = recipe();
    // The session text holds every saved decision; what it leaves out is added beside it.
    std::string print = sessionText(now);
    print += '\n' + wideToUtf8(now.signing.pfxPassword) + '\n' +
             std::to_string(Crc32::of(iconBytes_.data(), iconBytes_.size())) + '\n' +
             std::to_string(iconBytes_.size()) + '\n' + std::to_string(skinGeneration_);
    return print;
}

void BuilderApp::showSkinValues() {
    Recipe skinValues = recipe();
    takeSkinValues(workspace_, skinValues);
    decisions_.settings = skinValues.settings;
    decisions_.links = skinValues.links;
    fields_.show(skinValues, RestoreStep::SkinValues);
}

bool BuilderApp::loadSkin(const std::wstring& path, bool restoreMode) {
    std::wstring message;
    const bool ok = workspace_.loadSkinSource(path, message);
    skinLoaded_ = ok;
    skinLoadFailed_ = !ok;
    skinSource_ = ok ? path : std::wstring();
    decisions_.skin = skinSource_;
    decisions_.links.clear();
    fields_.rebuildLinks(workspace_.buttonLinks);
    linkPage_ = 0;
    if (ok) showSkinValues();
    ++skinGeneration_;
    updateSkinSummary();
    preview_.refresh();
    if (!restoreMode) {
        if (ok)
            setStatus(sourceName(path) + L" yüklendi", false);
        else
            setStatus(message, true);
        // A folder file that could not be read does not stop the load, but the operator hears of it.
        if (ok && !message.empty()) appendLog(L"Not: " + message, 2);
        session_.save();
    }
    relayout();
    InvalidateRect(hwnd_, nullptr, FALSE);
    return ok;
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
    openPaths(paths);
}

void BuilderApp::openPaths(const std::vector<std::wstring>& paths) {
    const DropPlan plan = planDrop(paths, build_.building());
    if (plan.action == DropPlan::Action::Ignore) return;
    if (plan.action == DropPlan::Action::LoadSource) {
        loadSkin(plan.source, false);
        return;
    }
    const bool wasLoaded = workspace_.loaded;
    const DropReport report = addDroppedFiles(workspace_, paths);
    for (const ReportLine& line : report.log)
        appendLog(line.text, line.level);
    if (!report.skinLoaded) {
        setStatus(report.status, false);
        return;
    }
    ++skinGeneration_;
    skinLoaded_ = true;
    skinLoadFailed_ = false;
    if (!wasLoaded) {
        skinSource_ = workspace_.sourceLabel;
        // A skin made of dropped files has no source to remember.
        decisions_.skin = skinSource_ != kDroppedFilesLabel ? skinSource_ : std::wstring();
        fields_.rebuildLinks(workspace_.buttonLinks);
        linkPage_ = 0;
        showSkinValues();
    }
    updateSkinSummary();
    preview_.refresh();
    setStatus(report.status, false);
    session_.save();
    relayout();
}

void BuilderApp::updateSkinSummary() {
    summary_ = SkinSummary{};
    if (!skinLoaded_) return;
    SkinModel model;
    LoadMessages messages;
    summary_.resolved = workingSkin().loadPreviewModel(model, messages);
    summary_.warnings = messages.lines();
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
