#include "patcher/patcher_logic.h"

#include "core/text.h"

namespace nv {

namespace {

bool equalsArg(const std::wstring& arg, const wchar_t* name) {
    return lowerWide(arg) == name;
}

} // namespace

PatcherOptions parsePatcherArgs(const std::vector<std::wstring>& args) {
    PatcherOptions options;
    for (size_t i = 0; i < args.size(); ++i) {
        if (equalsArg(args[i], L"--preview")) {
            options.preview = true;
        } else if (equalsArg(args[i], L"--headless")) {
            options.headless = true;
        } else if (equalsArg(args[i], L"repair") || equalsArg(args[i], L"--repair")) {
            options.repair = true;
        } else if (equalsArg(args[i], L"--snap") && i + 1 < args.size()) {
            options.snap = true;
            options.snapPath = args[++i];
        }
    }
    return options;
}

std::wstring patcherTitle(const PatcherScene& scene, bool preview) {
    std::wstring title = trim(scene.settings.title);
    if (title.empty()) title = sceneText(scene, "TORRENT_PATCH");
    if (preview) title += L" — " + sceneText(scene, "NV_PREVIEW");
    return title;
}

std::vector<ControlState> startStates(const PatcherScene& scene, bool preview, bool updating) {
    if (preview) return previewStates(scene);
    std::vector<ControlState> states = defaultStates(scene);
    for (size_t i = 0; i < scene.controls.size(); ++i) {
        const SkinControl& control = scene.controls[i];
        if (control.kind == ControlKind::Text && control.id == "TEXT_MAIN")
            states[i].text = updating ? sceneText(scene, "CONFIG_LOADING") : kNoUpdateSourceText;
        if (updating && control.enableOnComplete) states[i].enabled = false;
    }
    return states;
}

ButtonAction buttonAction(const SkinControl& control) {
    if (control.kind != ControlKind::Button) return ButtonAction::None;
    if (control.id == "BTN_CLOSE") return ButtonAction::Close;
    if (control.id == "BTN_MINIMIZE") return ButtonAction::Minimize;
    if (control.id == "BTN_REPAIR") return ButtonAction::Repair;
    if (!trim(control.execPath).empty()) return ButtonAction::StartGame;
    if (!trim(control.link).empty()) return ButtonAction::OpenLink;
    return ButtonAction::None;
}

std::wstring gameCommandLine(const std::wstring& gamePath, const std::wstring& runArgs) {
    std::wstring line = L"\"" + gamePath + L"\"";
    const std::wstring args = trim(runArgs);
    if (!args.empty()) line += L" " + args;
    return line;
}

bool PointerTracker::move(int control) {
    if (control == hovered_) return false;
    hovered_ = control;
    return true;
}

bool PointerTracker::leave() {
    return move(-1);
}

bool PointerTracker::down(int control, const PatcherScene& scene, const std::vector<ControlState>& states) {
    hovered_ = control;
    if (control < 0 || size_t(control) >= scene.controls.size()) return false;
    if (scene.controls[size_t(control)].kind != ControlKind::Button) return false;
    if (size_t(control) < states.size() && !states[size_t(control)].enabled) return false;
    pressed_ = control;
    return true;
}

int PointerTracker::up(int control) {
    const int clicked = pressed_ >= 0 && control == pressed_ ? pressed_ : -1;
    pressed_ = -1;
    hovered_ = control;
    return clicked;
}

bool PointerTracker::cancel() {
    if (pressed_ < 0) return false;
    pressed_ = -1;
    return true;
}

void PointerTracker::apply(std::vector<ControlState>& states) const {
    for (size_t i = 0; i < states.size(); ++i) {
        // While a button is held, the others do not light up under the pointer.
        states[i].hover = int(i) == hovered_ && (pressed_ < 0 || pressed_ == hovered_);
        states[i].pressed = int(i) == pressed_ && pressed_ == hovered_;
    }
}

} // namespace nv
