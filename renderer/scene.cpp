#include "renderer/scene.h"

#include "core/text.h"
#include "renderer/composite.h"
#include "renderer/text_painter.h"

namespace nv {

PatcherScene buildScene(const SkinModel& model, const PatcherSettings& settings) {
    PatcherScene scene;
    scene.width = model.width;
    scene.height = model.height;
    scene.background = model.background;
    // The window is as large as the background; a model whose sizes disagree with its picture draws nothing.
    if (scene.background.width != scene.width || scene.background.height != scene.height) {
        scene.width = scene.height = 0;
        scene.background = {};
    }
    scene.transparent = scene.background.hasTransparency;
    scene.controls = model.controls;
    scene.strings = model.strings;
    scene.settings = settings;
    scene.textCache = std::make_shared<TextCache>();
    return scene;
}

std::wstring sceneText(const PatcherScene& scene, std::string_view key) {
    return localeText(scene.strings, key);
}

int findControl(const PatcherScene& scene, std::string_view name) {
    for (size_t i = 0; i < scene.controls.size(); ++i)
        if (equalsIgnoreCase(scene.controls[i].id, name)) return int(i);
    return -1;
}

std::vector<ControlState> defaultStates(const PatcherScene& scene) {
    return std::vector<ControlState>(scene.controls.size());
}

void applyPreviewSamples(const PatcherScene& scene, std::vector<ControlState>& states) {
    states.resize(scene.controls.size());
    const std::wstring mainText = sceneText(scene, "TORRENT_STATE_DOWNLOADING") + L"  %45";
    for (size_t i = 0; i < scene.controls.size(); ++i) {
        const SkinControl& control = scene.controls[i];
        ControlState& state = states[i];
        if (control.kind == ControlKind::Gauge) {
            state.progress = control.id == "PROGRESS_SUB" ? 0.45f : 0.7f;
        } else if (control.kind == ControlKind::Text) {
            if (control.id == "TEXT_MAIN")
                state.text = mainText;
            else if (control.id == "TEXT_SUB" || control.id == "TEXT_TORRENT")
                state.text = L"pack\\root.kdx (%45)";
        }
    }
}

int controlAt(const PatcherScene& scene, const std::vector<ControlState>& states, int x, int y) {
    for (size_t i = scene.controls.size(); i-- > 0;) {
        const SkinControl& control = scene.controls[i];
        if (control.kind != ControlKind::Button && control.kind != ControlKind::Iframe) continue;
        if (i < states.size() && !states[i].visible) continue;
        if (Box::at(control.x, control.y, control.width, control.height).contains(x, y)) return int(i);
    }
    return -1;
}

} // namespace nv
