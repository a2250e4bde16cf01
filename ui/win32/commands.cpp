// What a click on an item does. Every clickable item of the window arrives in runCommand with its number and
// sub-item; the commands behind dialogs, the clipboard and the previews live beside it (dialogs.cpp,
// result_commands.cpp, preview.cpp).

#include "ui/win32/app.h"

#include "core/paths.h"
#include "core/text.h"
#include "recipe/recipe_keys.h"
#include "ui/readiness.h"

#include <commdlg.h>

namespace nv::ui::win {

void BuilderApp::runCommand(int item, int sub) {
    switch (item) {
    case kItemSection:
        showSection(sub);
        break;
    case kItemBuildSidebar:
    case kItemBuildPage:
        build_.start();
        break;
    case kItemPreviewPanel:
    case kItemPreviewResult:
        preview_.openPatcher();
        break;
    case kItemChooseZip:
    case kItemChooseFolder:
        chooseSkin(item == kItemChooseFolder);
        break;
    case kItemLinkPagePrev:
    case kItemLinkPageNext: {
        const int next = linkPage_ + (item == kItemLinkPageNext ? 1 : -1);
        if (next < 0 || next >= layout_.linkPages) break;
        linkPage_ = next;
        relayout();
        InvalidateRect(hwnd_, nullptr, FALSE);
        break;
    }
    case kItemConnectionChip:
        if (sub < kMinConnections || sub > kMaxConnections) break;
        decisions_.settings.connections = sub;
        session_.save();
        InvalidateRect(hwnd_, nullptr, FALSE);
        break;
    case kItemSegmentMinus:
    case kItemSegmentPlus: {
        const RecipeKey& segment = *findKeyByField(kFieldSegment);
        const int size =
            clampedCount(segment, fields_.text(kFieldSegment), item == kItemSegmentPlus ? 1 : -1);
        fields_.setText(kFieldSegment, std::to_wstring(size));
        session_.save();
        break;
    }
    case kItemToggleCloseOnStart:
    case kItemToggleAutoStart:
    case kItemToggleAllowError:
    case kItemToggleBrowserEmu:
        toggle(findToggle(item)->key);
        session_.save();
        InvalidateRect(hwnd_, nullptr, FALSE);
        break;
    case kItemChooseIcon:
        chooseIcon();
        break;
    case kItemRemoveIcon:
        removeIcon();
        break;
    case kItemChooseOutput:
        if (chooseOutputFile()) {
            session_.save();
            InvalidateRect(hwnd_, nullptr, FALSE);
        }
        break;
    case kItemToggleSigning:
        toggle("sign");
        fields_.enable(build_.building(), decisions_.signing.enabled);
        // Switched on without the tool, the switch says why the build would fail rather than let it.
        if (decisions_.signing.enabled && decisions_.signing.signtoolPath.empty())
            setStatus(
                L"signtool.exe bulunamadı — imza açıkken derleme başarısız olur; Windows SDK'yı kurun ya "
                L"da imzayı kapatın.",
                true);
        session_.save();
        InvalidateRect(hwnd_, nullptr, FALSE);
        break;
    case kItemChooseCertificate:
        chooseCertificate();
        break;
    case kItemSigningSource:
        if (sub < 0 || sub > static_cast<int>(SigningSource::Command)) break;
        decisions_.signing.source = static_cast<SigningSource>(sub);
        session_.save();
        relayout(); // the card's fields are the source's own
        InvalidateRect(hwnd_, nullptr, FALSE);
        break;
    case kItemToggleMachineStore:
        toggle("sign_machine_store");
        session_.save();
        InvalidateRect(hwnd_, nullptr, FALSE);
        break;
    case kItemChoosePlugin:
    case kItemChoosePluginMetadata:
        choosePluginFile(item);
        break;
    case kItemShowInFolder:
        showOutputInFolder();
        break;
    case kItemCopyCrc:
    case kItemCopyLog:
    case kItemCopySelfUpdate:
        copyResultText(item);
        break;
    case kItemReadinessRow: {
        const std::vector<ReadinessRow> rows = readinessRows(readinessInputs(recipe()));
        if (sub >= 0 && static_cast<size_t>(sub) < rows.size()) goToFix(rows[static_cast<size_t>(sub)]);
        break;
    }
    default:
        break;
    }
}

void BuilderApp::toggle(std::string_view key) {
    bool& on = findKey(key)->flag(decisions_);
    on = !on;
}

bool BuilderApp::chooseOutputFile() {
    std::wstring name = trim(fields_.text(kFieldOutName));
    if (name.empty()) name = kDefaultOutputName;
    std::wstring buffer(MAX_PATH * 4, L'\0');
    name = name.substr(0, buffer.size() - 1);
    std::copy(name.begin(), name.end(), buffer.begin());
    static const wchar_t filter[] = L"Program (*.exe)\0*.exe\0";
    OPENFILENAMEW ofn{};
    ofn.lStructSize = sizeof(ofn);
    ofn.hwndOwner = hwnd_;
    ofn.lpstrFilter = filter;
    ofn.lpstrFile = buffer.data();
    ofn.nMaxFile = static_cast<DWORD>(buffer.size());
    ofn.lpstrTitle = L"Patcher exe'sinin kaydedileceği yer";
    ofn.lpstrDefExt = L"exe";
    ofn.Flags = OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST | OFN_NOCHANGEDIR | OFN_EXPLORER;
    if (!GetSaveFileNameW(&ofn)) return false;
    fields_.setText(kFieldOutPath, buffer.c_str());
    return true;
}

} // namespace nv::ui::win

namespace nv::ui::win {

void BuilderApp::goToFix(const ReadinessRow& row) {
    if (row.ready || row.fixSection < 0) return;
    showSection(row.fixSection);
    // A link field may be on another page of the list.
    if (isLinkField(row.fixField) && layout_.linkPageSize > 0) {
        linkPage_ = (row.fixField - kFieldLinkFirst) / layout_.linkPageSize;
        relayout();
    }
    const std::vector<FocusStop> chain = focusChain(layout_);
    for (const FocusStop& stop : chain) {
        const bool target = row.fixField ? stop.kind == FocusStop::Kind::Field && stop.field == row.fixField
                                         : stop.kind == FocusStop::Kind::Item && stop.item != kItemSection;
        if (target) {
            focusStop(stop);
            return;
        }
    }
}

} // namespace nv::ui::win
