#pragma once
// The builder's application object: the one main window (NV_BuilderMain), its fields, the working skin, the
// build log and the state of the last build. Lives on the entry function's stack for the whole run;
// everything here runs on the UI thread except the build worker, which talks to it only through posted
// messages.

#include "packager/build_job.h"
#include "readers/image.h"
#include "skin/workspace.h"
#include "ui/layout.h"
#include "ui/win32/draw.h"
#include "ui/win32/log_view.h"

#include <shellapi.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

namespace nv::ui::win {

// Messages between the build worker, the snapshot driver and the window.
constexpr UINT kMsgLogLine = WM_APP + 1;     // lParam: a heap std::wstring the window frees
constexpr UINT kMsgBuildDone = WM_APP + 2;   // lParam: a heap BuildResult the window frees
constexpr UINT kMsgRunSnapshot = WM_APP + 9; // snapshot mode starts here
constexpr UINT_PTR kBusyTimer = 1;
constexpr UINT kBusyTimerMs = 40;

constexpr int kClientWidth = 1320, kClientHeight = 820;
constexpr int kMinClientWidth = 1100, kMinClientHeight = 700;

struct CommandLine {
    bool snapshot = false;
    std::wstring snapFolder, snapSkin;
};
// "--snap" (any case) followed by a folder and optionally a skin; "--snap" as the last argument does nothing.
CommandLine parseCommandLine(int argc, wchar_t** argv);

struct FieldRecord {
    int id = 0;
    int section = 0;
    HWND hwnd = nullptr;
    Rect row;
    std::wstring label, hint;
    bool mono = false;
};

class BuilderApp {
public:
    BuilderApp() = default;
    ~BuilderApp();
    BuilderApp(const BuilderApp&) = delete;
    BuilderApp& operator=(const BuilderApp&) = delete;

    void setCommandLine(CommandLine commandLine) { commandLine_ = std::move(commandLine); }
    // The patcher template; by default beside the builder. Tests that create the window keep theirs apart
    // from the real template that other test programs find beside them.
    void setTemplatePath(std::wstring path) { templatePath_ = std::move(path); }
    bool createWindow();
    int messageLoop();
    HWND hwnd() const { return hwnd_; }

    // --- What the window shows, for the commands of other parts and for tests
    // ---------------------------------
    int section() const { return section_; }
    int linkPage() const { return linkPage_; }
    int linkPages() const { return layout_.linkPages; }
    int connections() const { return connections_; }
    bool toggle(int index) const { return toggles_[static_cast<size_t>(index & 3)]; }
    bool signing() const { return signing_; }
    bool skinLoaded() const { return skinLoaded_; }
    const std::wstring& status() const { return status_; }
    bool statusWarning() const { return statusFlag_ != 0; }
    const BuildLog& buildLog() const { return log_.log(); }
    HWND fieldWindow(int id) const;
    const WindowLayout& layout() const { return layout_; }
    bool lastBuildSucceeded() const { return lastFinished_ && lastSucceeded_; }
    const BuildResult& lastResult() const { return lastResult_; }
    bool previewShown() const { return previewRendered_; }
    bool hasIcon() const { return !iconBytes_.empty(); }

    // --- Operations the sections, commands and the build use ----------------------------------------------
    void setStatus(const std::wstring& text, bool warning);
    void setBuilding(bool on);
    bool building() const { return building_.load(); }
    void setFieldText(int id, const std::wstring& text);
    std::wstring fieldText(int id) const;
    void relayout();
    void showSection(int section);
    void appendLog(const std::wstring& text, int level);
    void enableSigningFields();

    // Every clicked item ends here (item numbers of ui/sections.h).
    void runCommand(int item, int sub);

    // Loads a skin source into the working skin and the fields. In restore mode the status line is left to
    // the caller.
    bool loadSkin(const std::wstring& path, bool restoreMode);
    // Files dropped on the window.
    void dropFiles(HDROP drop);
    // The field texts into the working skin's settings, addresses and links (before a build or a preview).
    void copyFieldsToSettings();
    BuildInputs buildInputs() const;

    // --- The session file and the live preview hook in here
    // ---------------------------------------------------
    void saveSession();
    void restoreSession();
    // Where the session file is; by default under the roaming application-data folder. Tests that create the
    // window point it at a scratch file, or at nothing (empty: no session is read or written).
    void setSessionPath(std::wstring path) {
        sessionPath_ = std::move(path);
        sessionPathSet_ = true;
    }
    void refreshPreview();
    // The patcher built into the temporary folder and started with "--preview".
    void previewPatcher();
    // The icon taken from a picture; quietly when a session is restored (no status, no session write).
    void setIcon(const std::wstring& path, bool quiet);
    // CF_UNICODETEXT on the clipboard; false when the clipboard could not be opened or set.
    bool copyToClipboard(const std::wstring& text);
    // A chosen certificate: into its field, signing switched on when it is off, the session written.
    void useCertificate(const std::wstring& path);
    // Pixels for the preview panel (premultiplied ARGB, rows from the top); an empty vector clears it.
    void setPreviewPixels(int width, int height, std::vector<uint32_t> pixels);

    // --- Building
    // --------------------------------------------------------------------------------------------
    void startBuild();
    // Completion on the UI thread; takes ownership of the result (null allowed).
    void completeBuild(BuildResult* result);
    // The same build on the calling thread (snapshot mode), its result handed to completeBuild.
    void buildNow();

    // --- Snapshot mode
    // ----------------------------------------------------------------------------------------
    void runSnapshots();
    bool capture(const std::wstring& path);

private:
    friend class MainWindowClass;
    friend class WindowSessionTarget;
    // Commands that open dialogs, use the clipboard or start programs.
    void chooseSkin(bool folder);
    void chooseIcon();
    void removeIcon();
    void chooseCertificate();
    void showOutputInFolder();
    void copyResultText(int item);
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam);
    void paint(HDC dc);
    PageModel pageModel() const;
    WindowLayout computeLayout();
    void createFields();
    HWND createEdit(int id, const std::wstring& text, uint32_t style, bool mono,
                    const std::wstring& placeholder);
    void rebuildLinkFields();
    void updateSkinSummary();
    void fillFieldsFromSkin();
    FieldRecord* findFieldRecord(int id);
    const FieldRecord* findFieldRecord(int id) const;
    void onMouseMove(int x, int y);
    void onWheel(int delta);
    void onEditCommand(int id, int code);
    bool chooseOutputFile();
    void paintBlock(HDC dc, const Block& block, const PageModel& model);

    CommandLine commandLine_;
    HWND hwnd_ = nullptr;
    int dpi_ = 96;
    FontSet fonts_;
    GdiObject<HBRUSH> whiteBrush_;
    std::wstring templatePath_;

    int section_ = kKaynak;
    int linkPage_ = 0;
    int hoverItem_ = kItemNone, hoverSub_ = 0;
    int pressedItem_ = kItemNone, pressedSub_ = 0;
    bool trackingLeave_ = false;
    std::wstring status_;
    uint8_t statusFlag_ = 0;
    std::atomic<bool> building_{false};
    int tick_ = 0;
    WindowLayout layout_;

    // The working skin and what the page shows of it.
    SkinWorkspace workspace_;
    bool skinLoaded_ = false;
    bool skinLoadFailed_ = false;
    std::wstring skinSource_;
    SkinSummary summary_;
    std::vector<FieldRecord> fields_;
    std::vector<size_t> linkButtons_; // link field i edits workspace_.buttonLinks[linkButtons_[i]]
    LogView log_;

    // Settings that are not edit fields.
    int connections_ = 4;
    std::array<bool, 4> toggles_{true, false, false, true};
    bool signing_ = false;
    std::wstring iconPath_;
    Bytes iconBytes_;
    DecodedImage iconPreview_;
    bool signtoolFound_ = false;
    std::wstring signtoolPath_;

    std::wstring sessionPath_;
    bool sessionPathSet_ = false;

    // The preview panel.
    bool previewRendered_ = false;
    int previewWidth_ = 0, previewHeight_ = 0;
    std::vector<uint32_t> previewPixels_;

    // The build.
    HANDLE worker_ = nullptr;
    uint32_t buildStart_ = 0;
    uint32_t elapsed_ = 0;
    bool lastFinished_ = false;
    bool lastSucceeded_ = false;
    BuildResult lastResult_;
    std::wstring lastOutput_;
};

} // namespace nv::ui::win
