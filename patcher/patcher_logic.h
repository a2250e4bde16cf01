#pragma once
// What the patcher window decides without touching Windows: its command line, its title, the states it starts
// with, what a click on a button does and how the pointer moves hover and press between controls. The window
// (win32/) only carries these decisions out.

#include "renderer/preview.h"
#include "renderer/scene.h"

#include <string>
#include <vector>

namespace nv {

struct PatcherOptions {
    bool preview = false; // "--preview": no network, no disk work, sample values, nothing is started
    bool snap = false;    // "--snap OUT.png": render the window once into a PNG and exit, showing nothing
    std::wstring snapPath;
    bool headless =
        false; // "--headless": the update without a window, progress on stdout; never starts the game
    bool repair = false; // "repair" (or "--repair"): every file read again, whatever the state file says
};

// args: the arguments after the program's name; names compared without regard to ASCII case. "--snap" without
// a following argument is ignored.
PatcherOptions parsePatcherArgs(const std::vector<std::wstring>& args);

// Until the patcher updates the game, the status line says so instead of pretending to download.
inline constexpr const wchar_t* kNoUpdateSourceText = L"Güncelleme kaynağı yapılandırılmadı.";

// The taskbar title: the settings' title (the game's name from the locale when it is empty); in preview it
// ends with the locale text of "NV_PREVIEW".
std::wstring patcherTitle(const PatcherScene& scene, bool preview);

// The states the window opens with: the preview's sample values; else, when the patcher updates the game, the
// first step's text with the controls marked enable_on_complete disabled until the game is up to date; else
// the plain status text (every button, the start button included, enabled; gauges empty).
std::vector<ControlState> startStates(const PatcherScene& scene, bool preview, bool updating = false);

enum class ButtonAction { None, Close, Minimize, StartGame, OpenLink, Repair };

// "BTN_CLOSE" closes, "BTN_MINIMIZE" minimises and "BTN_REPAIR" reads every game file again, whatever else
// they carry; then a button with `exec_path` starts the game and one with a link opens it.
ButtonAction buttonAction(const SkinControl& control);

// The game's command line: its full path in quotes, then the run arguments.
std::wstring gameCommandLine(const std::wstring& gamePath, const std::wstring& runArgs);

// Hover and press over the controls, from the pointer's movements. A press starts only on an enabled button
// and acts only when released over that same button; while held, the button looks pressed only with the
// pointer on it.
class PointerTracker {
public:
    // Each returns true when the window's look changed. control: the control under the pointer (-1 for none).
    bool move(int control);
    bool leave();
    bool down(int control, const PatcherScene& scene, const std::vector<ControlState>& states);
    // The control clicked, or -1.
    int up(int control);
    bool cancel(); // the press was taken away (capture lost)

    int hovered() const { return hovered_; }
    int pressed() const { return pressed_; }
    // Writes hover and pressed into the states of the buttons.
    void apply(std::vector<ControlState>& states) const;

private:
    int hovered_ = -1;
    int pressed_ = -1;
};

} // namespace nv
