#include "patcher/win32/patcher_window.h"

#include "core/files.h"
#include "core/paths.h"
#include "core/text.h"
#include "renderer/png_writer.h"

#include <shellapi.h>
#include <tlhelp32.h>
#include <windowsx.h>

#include <algorithm>
#include <utility>

namespace nv {
namespace {

constexpr const wchar_t* kWindowClass = L"NV_Patcher";

bool registerWindowClass(HINSTANCE instance, WNDPROC proc) {
    WNDCLASSEXW wc{};
    wc.cbSize = sizeof wc;
    wc.lpfnWndProc = proc;
    wc.hInstance = instance;
    wc.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    wc.hIcon =
        static_cast<HICON>(LoadImageW(instance, MAKEINTRESOURCEW(1), IMAGE_ICON, GetSystemMetrics(SM_CXICON),
                                      GetSystemMetrics(SM_CYICON), LR_SHARED));
    wc.hIconSm = static_cast<HICON>(LoadImageW(instance, MAKEINTRESOURCEW(1), IMAGE_ICON,
                                               GetSystemMetrics(SM_CXSMICON), GetSystemMetrics(SM_CYSMICON),
                                               LR_SHARED));
    wc.lpszClassName = kWindowClass;
    return RegisterClassExW(&wc) != 0 || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
}

// Centred on the work area; a window larger than the work area keeps its top-left corner on it.
POINT centredPosition(int width, int height) {
    RECT work{0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    POINT p;
    p.x = work.left + std::max(0L, (work.right - work.left - width) / 2);
    p.y = work.top + std::max(0L, (work.bottom - work.top - height) / 2);
    return p;
}

} // namespace

PatcherWindow::PatcherWindow(PatcherScene scene, bool preview, UpdateSource source, bool repair,
                             FeedSource feed, std::wstring feedSnapPrefix)
    : scene_(std::move(scene)), preview_(preview), repairFirst_(repair),
      feedSnapPrefix_(std::move(feedSnapPrefix)) {
    // A preview does no network or disk work.
    const bool updating = !preview_ && !trim(source.remoteConfigPath).empty();
    states_ = startStates(scene_, preview_, updating);
    if (updating) update_ = std::make_unique<UpdateView>(scene_, std::move(source), *this);
    if (!preview_ && !trim(feed.url).empty())
        feed_ = std::make_unique<FeedView>(scene_, std::move(feed), *this);
}

bool PatcherWindow::open(HINSTANCE instance, std::wstring& error) {
    if (!frame_.create(scene_.width, scene_.height)) {
        error = systemErrorText(GetLastError());
        return false;
    }
    if (!registerWindowClass(instance, windowProc)) {
        error = systemErrorText(GetLastError());
        return false;
    }
    const POINT at = centredPosition(scene_.width, scene_.height);
    const DWORD exStyle = WS_EX_APPWINDOW | (scene_.transparent ? WS_EX_LAYERED : 0);
    // A popup without a frame; the system menu and minimise box give it the taskbar's minimise and close.
    const DWORD style = WS_POPUP | WS_SYSMENU | WS_MINIMIZEBOX;
    const std::wstring title = patcherTitle(scene_, preview_);
    if (!CreateWindowExW(exStyle, kWindowClass, title.c_str(), style, at.x, at.y, scene_.width, scene_.height,
                         nullptr, nullptr, instance, this)) {
        error = systemErrorText(GetLastError());
        return false;
    }
    redraw();
    ShowWindow(hwnd_, SW_SHOW);
    UpdateWindow(hwnd_);
    openNews();
    // The feed first: its read goes on its own thread, and the update's start may ask the player something.
    if (feed_) feed_->start(hwnd_);
    if (update_) update_->start(hwnd_, states_, repairFirst_);
    return true;
}

LRESULT CALLBACK PatcherWindow::windowProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        auto* self = static_cast<PatcherWindow*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
        self->hwnd_ = hwnd;
        SetWindowLongPtrW(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
    }
    auto* self = reinterpret_cast<PatcherWindow*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
    if (!self) return DefWindowProcW(hwnd, message, wParam, lParam);
    return self->handle(message, wParam, lParam);
}

LRESULT PatcherWindow::handle(UINT message, WPARAM wParam, LPARAM lParam) {
    if (update_ && update_->handle(message, wParam, lParam, states_)) {
        if (closing_ && !update_->running()) DestroyWindow(hwnd_);
        return 0;
    }
    if (feed_ && feed_->handle(message, wParam, lParam, states_)) return 0;
    switch (message) {
    case WM_NCHITTEST: {
        // Whatever is not a button or the news area moves the window: the system drags it as a caption.
        const LRESULT hit = DefWindowProcW(hwnd_, message, wParam, lParam);
        if (hit != HTCLIENT) return hit;
        POINT p{GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
        ScreenToClient(hwnd_, &p);
        return controlAt(scene_, states_, p.x, p.y) >= 0 || pointer_.pressed() >= 0 ? HTCLIENT : HTCAPTION;
    }
    case WM_NCLBUTTONDBLCLK:
        return 0; // no maximising by a double click on the "caption"
    case WM_MOUSEMOVE:
        if (!trackingLeave_) {
            TRACKMOUSEEVENT track{sizeof track, TME_LEAVE, hwnd_, 0};
            trackingLeave_ = TrackMouseEvent(&track) != 0;
        }
        pointerChanged(pointer_.move(controlAtPoint(lParam)));
        return 0;
    case WM_MOUSELEAVE:
        trackingLeave_ = false;
        if (pointer_.pressed() < 0) pointerChanged(pointer_.leave());
        return 0;
    case WM_LBUTTONDOWN:
        if (pointer_.down(controlAtPoint(lParam), scene_, states_)) SetCapture(hwnd_);
        pressedHeadline_ = headlineAtPoint(lParam);
        pointerChanged(true);
        return 0;
    case WM_LBUTTONUP: {
        const int clicked = pointer_.up(controlAtPoint(lParam));
        if (GetCapture() == hwnd_) ReleaseCapture();
        pointerChanged(true);
        if (clicked >= 0) act(clicked);
        // A headline opens when the button goes up over the one it went down on.
        const HeadlineHit headline = headlineAtPoint(lParam);
        if (headline.headline >= 0 && headline.control == pressedHeadline_.control &&
            headline.headline == pressedHeadline_.headline)
            openHeadline(headline);
        pressedHeadline_ = {};
        return 0;
    }
    case WM_CAPTURECHANGED:
        pointerChanged(pointer_.cancel());
        return 0;
    case WM_SETCURSOR:
        if (LOWORD(lParam) == HTCLIENT && headlineUnderCursor()) {
            SetCursor(LoadCursorW(nullptr, IDC_HAND));
            return TRUE;
        }
        if (LOWORD(lParam) == HTCLIENT && pointer_.hovered() >= 0 &&
            buttonAction(scene_.controls[size_t(pointer_.hovered())]) != ButtonAction::None &&
            states_[size_t(pointer_.hovered())].enabled) {
            SetCursor(LoadCursorW(nullptr, IDC_HAND));
            return TRUE;
        }
        break;
    case WM_PAINT: {
        PAINTSTRUCT ps;
        HDC dc = BeginPaint(hwnd_, &ps);
        if (!scene_.transparent)
            BitBlt(dc, 0, 0, frame_.width(), frame_.height(), frame_.dc(), 0, 0, SRCCOPY);
        EndPaint(hwnd_, &ps);
        return 0;
    }
    case WM_ERASEBKGND:
        return 1; // the whole window is painted from the off-screen picture
    case WM_KEYDOWN:
        if (wParam == 'R' && GetKeyState(VK_CONTROL) < 0) repair();
        break;
    case WM_CLOSE:
        // The feed stops at once; a read that waits on a silent server ends within its short timeout, after
        // the window has gone.
        if (feed_) feed_->stop();
        // A run in progress is stopped first: it ends within the receive timeout and leaves no half-written
        // file; the window goes once it has.
        if (update_ && update_->running()) {
            closing_ = true;
            update_->cancel();
            ShowWindow(hwnd_, SW_HIDE);
            return 0;
        }
        DestroyWindow(hwnd_);
        return 0;
    case WM_MOVE:
        if (news_) news_->follow();
        break;
    case WM_DESTROY:
        news_.reset(); // the control lets go of its windows before they go
        PostQuitMessage(0);
        return 0;
    default:
        break;
    }
    return DefWindowProcW(hwnd_, message, wParam, lParam);
}

int PatcherWindow::controlAtPoint(LPARAM clientPoint) const {
    return controlAt(scene_, states_, GET_X_LPARAM(clientPoint), GET_Y_LPARAM(clientPoint));
}

HeadlineHit PatcherWindow::headlineAtPoint(LPARAM clientPoint) const {
    return headlineAt(scene_, states_, GET_X_LPARAM(clientPoint), GET_Y_LPARAM(clientPoint));
}

bool PatcherWindow::headlineUnderCursor() const {
    POINT p;
    return GetCursorPos(&p) && ScreenToClient(hwnd_, &p) &&
           headlineAt(scene_, states_, p.x, p.y).headline >= 0;
}

void PatcherWindow::openHeadline(const HeadlineHit& hit) {
    const std::wstring& url = states_[size_t(hit.control)].headlines[size_t(hit.headline)].url;
    // The feed allows nothing else, but the address came from a server: never hand the shell anything that is
    // not a web address.
    if (isWebAddress(wideToUtf8(url)))
        ShellExecuteW(hwnd_, L"open", url.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
}

void PatcherWindow::pointerChanged(bool changed) {
    if (!changed) return;
    std::vector<ControlState> before = states_;
    pointer_.apply(states_);
    for (size_t i = 0; i < states_.size(); ++i)
        if (states_[i].hover != before[i].hover || states_[i].pressed != before[i].pressed) {
            redraw();
            return;
        }
}

void PatcherWindow::redraw() {
    GdiFlush();                                                     // GDI may still be reading the bits
    renderScene(scene_, states_, /*drawNews=*/true, frame_.bits()); // the window hosts no web browser
    present();
}

void PatcherWindow::present() {
    if (!hwnd_) return;
    if (scene_.transparent) {
        SIZE size{frame_.width(), frame_.height()};
        POINT origin{0, 0};
        BLENDFUNCTION blend{AC_SRC_OVER, 0, 255, AC_SRC_ALPHA};
        UpdateLayeredWindow(hwnd_, nullptr, nullptr, &size, frame_.dc(), &origin, 0, &blend, ULW_ALPHA);
    } else {
        InvalidateRect(hwnd_, nullptr, FALSE);
    }
}

void PatcherWindow::act(int control) {
    const SkinControl& c = scene_.controls[size_t(control)];
    switch (buttonAction(c)) {
    case ButtonAction::Close:
        PostMessageW(hwnd_, WM_CLOSE, 0, 0);
        break;
    case ButtonAction::Minimize:
        ShowWindow(hwnd_, SW_MINIMIZE);
        break;
    case ButtonAction::StartGame:
        if (preview_) break; // a preview never starts anything
        if (update_ && update_->running()) {
            showError(sceneText(scene_, "TORRENT_FOREGROUND_PATCH_RUN_GAME"));
            break;
        }
        startGame(c);
        break;
    case ButtonAction::Repair:
        if (!preview_) repair();
        break;
    case ButtonAction::OpenLink:
        // Links open in preview too: the operator checks them there.
        ShellExecuteW(hwnd_, L"open", c.link.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
        break;
    case ButtonAction::None:
        break;
    }
}

namespace {

// Whether a program of that file name runs (a game started earlier, perhaps from its own shortcut).
bool programRuns(const std::wstring& fileName) {
    HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (snapshot == INVALID_HANDLE_VALUE) return false;
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    bool found = false;
    for (BOOL more = Process32FirstW(snapshot, &entry); more && !found;
         more = Process32NextW(snapshot, &entry))
        found = lowerWide(entry.szExeFile) == lowerWide(fileName);
    CloseHandle(snapshot);
    return found;
}

} // namespace

void PatcherWindow::startGame(const SkinControl& control) {
    const std::wstring folder = exeFolder();
    const std::wstring relative = trim(control.execPath);
    if (relative.empty()) {
        showError(sceneText(scene_, "RUN_PATH_EMPTY"));
        return;
    }
    const std::wstring game = pathJoin(folder, relative);
    if (programRuns(pathFileName(game))) {
        showError(sceneText(scene_, "NV_GAME_RUNNING"));
        return;
    }
    std::wstring commandLine = gameCommandLine(game, scene_.settings.runArgs);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(game.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, folder.c_str(),
                        &startup, &process)) {
        const DWORD code = GetLastError();
        if (code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND) {
            showError(fillPlaceholder(sceneText(scene_, "CREATE_PROCESS_ERROR_2"), game));
            return;
        }
        showError(fillPlaceholder(sceneText(scene_, "ERROR_EXECUTE_PROCESS"), std::to_wstring(code)) +
                  L"\n\n" + game + L"\n" + systemErrorText(code));
        return;
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    if (scene_.settings.closeOnStart) PostMessageW(hwnd_, WM_CLOSE, 0, 0);
}

void PatcherWindow::startGameNow() {
    for (const SkinControl& control : scene_.controls)
        if (buttonAction(control) == ButtonAction::StartGame) {
            startGame(control);
            return;
        }
}

void PatcherWindow::feedRead(int count) {
    redraw();
    if (feedSnapPrefix_.empty()) return;
    GdiFlush();
    const Bytes png = encodePng(frame_.bits(), frame_.width(), frame_.height());
    writeFileAtomic(feedSnapPrefix_ + std::to_wstring(count) + L".png", png);
}

// The page at LAUNCHER_IFRAME over the first news area. Where the browser cannot be created the renderer's
// headlines stay, as they do until the page has loaded and after it fails to.
void PatcherWindow::openNews() {
    if (preview_) return; // a preview goes to no network
    const std::wstring url = trim(sceneText(scene_, "LAUNCHER_IFRAME"));
    if (url.empty()) return;
    for (const SkinControl& control : scene_.controls) {
        if (control.kind != ControlKind::Iframe || control.width <= 0 || control.height <= 0) continue;
        const RECT area{control.x, control.y, control.x + control.width, control.y + control.height};
        news_ = std::make_unique<NewsBrowser>();
        if (!news_->open(hwnd_, area, scene_.transparent, url, scene_.settings.browserEmu)) news_.reset();
        return;
    }
}

void PatcherWindow::closeWindow() {
    PostMessageW(hwnd_, WM_CLOSE, 0, 0);
}

// The player asks for every file to be read again (a button "BTN_REPAIR", or Ctrl+R).
void PatcherWindow::repair() {
    if (update_ && !update_->running()) update_->start(hwnd_, states_, true);
    redraw();
}

void PatcherWindow::showError(const std::wstring& text) const {
    MessageBoxW(hwnd_, text.c_str(), patcherTitle(scene_, preview_).c_str(), MB_OK | MB_ICONERROR);
}

} // namespace nv
