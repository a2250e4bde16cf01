#include "ui/live_preview.h"

#include "renderer/scene.h"

#include <new>

namespace nv::ui {

PreviewOutcome drawPreviewModel(const SkinModel& model, const PatcherSettings& settings,
                                PreviewPicture& picture) {
    picture = PreviewPicture{};
    const PatcherScene scene = buildScene(model, settings);
    if (scene.width < 1 || scene.height < 1) return PreviewOutcome::Empty;
    std::vector<ControlState> states = defaultStates(scene);
    applyPreviewSamples(scene, states);
    // The loader keeps pictures within its pixel budget, so the window's size is bounded; the buffer is still
    // the one big allocation here.
    try {
        picture.pixels.assign(size_t(scene.width) * size_t(scene.height), 0);
    } catch (const std::bad_alloc&) {
        picture.pixels.clear();
        return PreviewOutcome::Empty;
    }
    renderScene(scene, states, true, picture.pixels.data());
    picture.width = scene.width;
    picture.height = scene.height;
    return PreviewOutcome::Drawn;
}

PreviewOutcome renderLivePreview(const SkinWorkspace& workspace, PreviewPicture& picture,
                                 std::wstring& logLine) {
    picture = PreviewPicture{};
    logLine.clear();
    if (!workspace.loaded) return PreviewOutcome::NoSkin;
    SkinModel model;
    std::vector<std::wstring> messages;
    if (!workspace.loadPreviewModel(model, messages)) {
        // The loader's reason for giving up is its last line; the ones before it are warnings.
        logLine = L"Önizleme hazırlanamadı: " + (messages.empty() ? std::wstring() : messages.back());
        return PreviewOutcome::Failed;
    }
    return drawPreviewModel(model, workspace.settings, picture);
}

} // namespace nv::ui
