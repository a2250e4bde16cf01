// What a click on an item does. Every clickable item of the window arrives in runCommand with its number and
// sub-item; the commands behind dialogs, the clipboard and the previews live beside it (dialogs.cpp,
// result_commands.cpp, preview.cpp).

#include "ui/win32/app.h"

#include "core/paths.h"
#include "core/text.h"
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
        startBuild();
        break;
    case kItemPreviewPanel:
    case kItemPreviewResult:
        previewPatcher();
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
        connections_ = sub;
        saveSession();
        InvalidateRect(hwnd_, nullptr, FALSE);
        break;
    case kItemSegmentMinus:
    case kItemSegmentPlus: {
        const int size = stepSegment(fieldText(kFieldSegment), item == kItemSegmentPlus ? 1 : -1);
        setFieldText(kFieldSegment, std::to_wstring(size));
        workspace_.settings.segmentMb = size;
        saveSession();
        break;
    }
    case kItemToggleCloseOnStart:
    case kItemToggleAutoStart:
    case kItemToggleAllowError:
    case kItemToggleBrowserEmu: {
        bool& toggle = toggles_[static_cast<size_t>(item - kItemToggleCloseOnStart)];
        toggle = !toggle;
        saveSession();
        InvalidateRect(hwnd_, nullptr, FALSE);
        break;
    }
    case kItemChooseIcon:
        chooseIcon();
        break;
    case kItemRemoveIcon:
        removeIcon();
        break;
    case kItemChooseOutput:
        if (chooseOutputFile()) {
            saveSession();
            InvalidateRect(hwnd_, nullptr, FALSE);
        }
        break;
    case kItemToggleSigning:
        signing_ = !signing_;
        enableSigningFields();
        saveSession();
        InvalidateRect(hwnd_, nullptr, FALSE);
        break;
    case kItemChooseCertificate:
        chooseCertificate();
        break;
    case kItemShowInFolder:
        showOutputInFolder();
        break;
    case kItemCopyCrc:
    case kItemCopyLog:
    case kItemCopySelfUpdate:
        copyResultText(item);
        break;
    default:
        break;
    }
}

// The save dialog for the output executable; the chosen path goes into field 1110. False when cancelled.
bool BuilderApp::chooseOutputFile() {
    std::wstring name = trim(fieldText(kFieldOutName));
    if (name.empty()) name = L"Kaldra.exe";
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
    setFieldText(kFieldOutPath, buffer.c_str());
    return true;
}

} // namespace nv::ui::win
