#pragma once
// The builder's application object: the one main window (NV_BuilderMain) and its parts, one concern each:
// the edit fields (field_set.h), the build (build_runner.h), the previews (preview_panel.h) and the session
// file (session_store.h). The window itself routes messages, keeps the status line, the section and the
// pointer, loads skins and carries out the commands of the clicked items. Lives on the entry function's stack
// for the whole run; everything here runs on the UI thread.

#include "readers/image.h"
#include "recipe/recipe.h"
#include "skin/workspace.h"
#include "ui/focus.h"
#include "ui/layout.h"
#include "ui/win32/build_runner.h"
#include "ui/win32/draw.h"
#include "ui/win32/field_set.h"
#include "ui/win32/log_view.h"
#include "ui/win32/preview_panel.h"
#include "ui/win32/session_store.h"
#include "ui/win32/signing_probe.h"

#include <shellapi.h>

#include <string>
#include <vector>

namespace nv::ui::win {

constexpr UINT kMsgRunSnapshot = WM_APP + 9; // snapshot mode starts here

constexpr int kClientWidth = 1320, kClientHeight = 820;
constexpr int kMinClientWidth = 1100, kMinClientHeight = 700;

// What a status line speaks of, so that it can go when its cause does: a start check's refusal once the
// check passes, a missing template once it is there, a build's outcome once the settings change.
enum class StatusCause { Plain, StartCheck, Template, BuildOutcome };

struct CommandLine {
    bool snapshot = false;
    std::wstring snapFolder, snapSkin;
    std::wstring open; // a path given as the only argument: Explorer's drop on the icon, "Open with"
    // Snapshot mode's "--screen WxH": the window sized as on a screen of that size (its work area the screen
    // less a taskbar), so that the pictures show a laptop's clamped client on any display.
    int screenWidth = 0, screenHeight = 0;
};
// "--snap" (any case) followed by a folder and optionally a skin; "--snap" as the last argument does nothing.
// Any other single argument is a path to open as if it were dropped on the window. With "--snap", "--screen
// WxH" sizes the window for a screen of that size.
CommandLine parseCommandLine(int argc, wchar_t** argv);

class BuilderApp {
public:
    BuilderApp();
    ~BuilderApp();
    BuilderApp(const BuilderApp&) = delete;
    BuilderApp& operator=(const BuilderApp&) = delete;

    void setCommandLine(CommandLine commandLine) { commandLine_ = std::move(commandLine); }
    // The work area the window is sized and clamped to: the screen's, or the one "--screen" describes (tests
    // set it to stand for a smaller screen).
    RECT workArea() const;
    // The window for the minimum client (1100 x 700, scaled), clamped to the work area.
    SIZE minimumWindowSize() const;
    void setScreen(int width, int height) {
        commandLine_.screenWidth = width;
        commandLine_.screenHeight = height;
    }
    // The patcher template; by default beside the builder. Tests that create the window keep theirs apart
    // from the real template that other test programs find beside them.
    void setTemplatePath(std::wstring path) { templatePath_ = std::move(path); }
    bool createWindow();
    int messageLoop();
    HWND hwnd() const { return hwnd_; }

    // --- The parts
    // ------------------------------------------------------------------------------------------
    FieldSet& fields() { return fields_; }
    const FieldSet& fields() const { return fields_; }
    BuildRunner& build() { return build_; }
    const BuildRunner& build() const { return build_; }
    PreviewPanel& preview() { return preview_; }
    const PreviewPanel& preview() const { return preview_; }
    SessionStore& session() { return session_; }

    // --- The operator's decisions and the working skin
    // ----------------------------------------------------------------------
    // Everything the operator decided: the switches, chips and chosen files, with the fields' texts.
    Recipe recipe() const;
    // The working skin with the recipe in it, as a build or a preview takes it.
    const SkinWorkspace& workingSkin();
    // The build's inputs from the recipe, the template and the icon.
    BuildInputs buildInputs() const;
    const std::wstring& templatePath() const { return templatePath_; }
    bool skinLoaded() const { return skinLoaded_; }
    const std::wstring& skinSource() const { return skinSource_; }
    bool hasIcon() const { return !iconBytes_.empty(); }
    bool snapshotMode() const { return commandLine_.snapshot; }

    // --- What the window shows, for the commands and for tests
    // ---------------------------------------------
    int section() const { return section_; }
    int pageScroll() const { return pageScroll_; }
    int linkPage() const { return linkPage_; }
    int linkPages() const { return layout_.linkPages; }
    const std::wstring& status() const { return status_; }
    bool statusWarning() const { return statusWarning_; }
    const BuildLog& buildLog() const { return log_.log(); }
    const LogView& logView() const { return log_; }
    const WindowLayout& layout() const { return layout_; }

    // --- Operations the parts and the commands use
    // ------------------------------------------------------------------
    void setStatus(const std::wstring& text, bool warning, StatusCause cause = StatusCause::Plain);
    // Everything a build would be made from, as one value to compare: the recipe, the password, the icon's
    // bytes and the working skin's changes.
    std::string settingsFingerprint() const;
    void relayout();
    void showSection(int section);
    void appendLog(const std::wstring& text, int level);

    // Every clicked item ends here (item numbers of ui/sections.h).
    void runCommand(int item, int sub);

    // --- The keyboard (keyboard.cpp)
    // ------------------------------------------------------------------------------
    // A key on its way to the window or one of its fields, before the dialog-style handling: Tab and
    // Shift+Tab through every stop, Ctrl+1...6 and Ctrl+PgUp/PgDn for the sections, Ctrl+B to build, and on
    // the window's own items Space/Enter, the arrows and the page's scroll keys. True when it was used.
    bool preTranslate(const MSG& msg);
    bool onKey(HWND target, UINT key, bool ctrl, bool shift);
    // Where the keyboard's focus is, as a stop of the focus chain (kind Item with kItemNone for none).
    FocusStop focusedStop() const;
    // Moves the focus to a stop, scrolling the page to show it.
    void focusStop(const FocusStop& stop);
    // Scrolls the form column to an offset (kept to its range).
    void scrollPageTo(int offset);
    // Loads a skin source into the working skin and the fields. In restore mode the status line is left to
    // the caller.
    bool loadSkin(const std::wstring& path, bool restoreMode);
    // Files dropped on the window.
    void dropFiles(HDROP drop);
    // Paths dropped or given on the command line: the first folder or zip is the skin, else the files join
    // it.
    void openPaths(const std::vector<std::wstring>& paths);
    // A checklist row's way to what fixes it: its section, its link page, its field with the focus.
    void goToFix(const ReadinessRow& row);
    // The icon taken from a picture; quietly when a session is restored (no status, no session write).
    void setIcon(const std::wstring& path, bool quiet);
    // A chosen certificate: into its field, signing switched on when it is off, the session written.
    void useCertificate(const std::wstring& path);
    // The save dialog for the output executable; the chosen path goes into field 1110. False when cancelled.
    bool chooseOutputFile();
    // CF_UNICODETEXT on the clipboard; false when the clipboard could not be opened or set.
    bool copyToClipboard(const std::wstring& text);

    // --- Snapshot mode
    // ---------------------------------------------------------------------------------------
    void runSnapshots();
    bool capture(const std::wstring& path);

private:
    friend class MainWindowClass;
    friend class WindowSessionTarget;
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam);
    void onMouseMove(int x, int y);
    void onWheel(int delta);
    // The page's scroll bar: a press on it (true when it took the press), the thumb dragged, let go.
    bool onPageBarDown(int x, int y);
    void onPageBarDrag(int y);
    void onEditCommand(int id, int code);
    // Commands that open dialogs, use the clipboard or start programs.
    void chooseSkin(bool folder);
    void chooseIcon();
    void removeIcon();
    void chooseCertificate();
    // The signing plug-in's .dll or its metadata file, by the item of its "Seç".
    void choosePluginFile(int item);
    void showOutputInFolder();
    void copyResultText(int item);
    void toggle(std::string_view key);
    // The skin's values into the fields and the switches, after a load.
    void showSkinValues();
    void updateSkinSummary();
    // Painting: the page model gathered from the parts, the layout computed from it, the blocks drawn.
    void paint(HDC dc);
    // A status line whose cause is gone is cleared before the page is drawn.
    void followState();
    PageModel pageModel() const;
    ReadinessInputs readinessInputs(const Recipe& recipe) const;
    WindowLayout computeLayout();

    CommandLine commandLine_;
    HWND hwnd_ = nullptr;
    int dpi_ = 96;
    FontSet fonts_;
    GdiObject<HBRUSH> whiteBrush_;
    std::wstring templatePath_;

    int section_ = kKaynak;
    int pageScroll_ = 0;
    int linkPage_ = 0;
    // The self-drawn item that the keyboard works on while the window itself has the focus.
    int focusItem_ = kItemNone, focusSub_ = 0;
    bool barDragging_ = false;
    int barDragY_ = 0, barDragOffset_ = 0;
    int hoverItem_ = kItemNone, hoverSub_ = 0;
    int pressedItem_ = kItemNone, pressedSub_ = 0;
    std::wstring status_;
    bool statusWarning_ = false;
    StatusCause statusCause_ = StatusCause::Plain;
    WindowLayout layout_;

    // The working skin and what the page shows of it.
    SkinWorkspace workspace_;
    bool skinLoaded_ = false;
    bool skinLoadFailed_ = false;
    std::wstring skinSource_; // the path, or the label of a skin made of dropped files
    SkinSummary summary_;
    uint64_t skinGeneration_ = 0; // counts the loads and drops that changed the working skin

    // The decisions that no edit field holds (the connection count, the switches, the skin and icon chosen);
    // the fields hold the rest.
    Recipe decisions_;
    Bytes iconBytes_;
    DecodedImage iconPreview_;

    FieldSet fields_;
    LogView log_;
    BuildRunner build_;
    PreviewPanel preview_;
    SessionStore session_;
    SigningProbe signingProbe_;
};

} // namespace nv::ui::win
