#include "ui/drops.h"

#include "core/files.h"
#include "core/text.h"

namespace nv::ui {

DropPlan planDrop(const std::vector<std::wstring>& paths, bool building) {
    DropPlan plan;
    if (building || paths.empty()) return plan;
    for (const std::wstring& path : paths) {
        if (folderExists(path) || endsWithIgnoreCase(std::wstring_view(path), std::wstring_view(L".zip"))) {
            plan.action = DropPlan::Action::LoadSource;
            plan.source = path;
            return plan;
        }
    }
    plan.action = DropPlan::Action::AddFiles;
    return plan;
}

DropReport addDroppedFiles(SkinWorkspace& workspace, const std::vector<std::wstring>& paths) {
    DropReport report;
    std::wstring note;
    workspace.addDroppedFiles(paths, report.count, note);
    report.log.push_back({L"Pakete eklenen/değiştirilen dosya: " + std::to_wstring(report.count), 0});
    if (!note.empty()) report.log.push_back({L"Not: " + note, 2});
    report.skinLoaded = workspace.loaded;
    report.status = workspace.loaded
                        ? std::to_wstring(report.count) + L" dosya pakete eklendi."
                        : L"Henüz skin.xml yok; önce geçerli bir skin .zip ya da klasörü bırakın.";
    return report;
}

} // namespace nv::ui
