#include "ui/live_preview.h"

namespace nv::ui {

PreviewOutcome renderLivePreview(const SkinWorkspace& workspace, PreviewPicture& picture,
                                 std::wstring& logLine) {
    picture = PreviewPicture{};
    logLine.clear();
    if (!workspace.loaded) return PreviewOutcome::NoSkin;
    PatcherScene scene;
    std::vector<ControlState> states;
    LoadMessages messages;
    if (!prepareLivePreview(workspace, scene, states, messages)) {
        logLine = L"Önizleme hazırlanamadı: " + messages.error;
        return PreviewOutcome::Failed;
    }
    return drawPicture(scene, states, true, picture) ? PreviewOutcome::Drawn : PreviewOutcome::Empty;
}

} // namespace nv::ui
