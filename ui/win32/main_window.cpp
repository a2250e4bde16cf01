// NV_BuilderMain: the builder's one top-level window. Creation, sizing, the message loop and the window
// procedure; what the messages do lives in the parts beside it (fields, build, previews, session) and in the
// commands, the painting and snapshot mode.

#include "ui/win32/app.h"

#include "core/files.h"
#include "core/paths.h"
#include "packager/signing.h"
#include "recipe/recipe_keys.h"

#include <commctrl.h>
#include <cwchar>
#include <shellapi.h>
#include <windowsx.h>

namespace nv::ui::win {
namespace {

constexpr const wchar_t* kClassName = L"NV_BuilderMain";
constexpr const wchar_t* kTitle = L"Norvane Oluşturucu";

// The window rectangle for a client size, each side kept within the work area.
SIZE windowSizeFor(int clientWidth, int clientHeight, const RECT& workArea) {
    RECT r{0, 0, clientWidth, clientHeight};
    AdjustWindowRectEx(&r, WS_OVERLAPPEDWINDOW, FALSE, WS_EX_ACCEPTFILES);
    const LONG width = std::min(r.right - r.left, workArea.right - workArea.left);
    const LONG height = std::min(r.bottom - r.top, workArea.bottom - workArea.top);
    return SIZE{width, height};
}

// "WxH": a screen's size; false when the text is not two positive numbers.
bool parseScreen(const wchar_t* text, int& width, int& height) {
    int w = 0, h = 0;
    wchar_t x = 0, rest = 0;
    if (swscanf(text, L"%d%lc%d%lc", &w, &x, &h, &rest) != 3 || (x != L'x' && x != L'X')) return false;
    if (w <= 0 || h <= 0 || w > 100000 || h > 100000) return false;
    width = w;
    height = h;
    return true;
}

} // namespace

// The class procedure: the object pointer arrives with WM_NCCREATE and is kept in the window's user data.
class MainWindowClass {
public:
    static LRESULT CALLBACK proc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_NCCREATE) {
            auto* app = static_cast<BuilderApp*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
            app->hwnd_ = hwnd;
            SetWindowLongPtrW(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(app));
        }
        auto* app = reinterpret_cast<BuilderApp*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
        if (!app) return DefWindowProcW(hwnd, message, wParam, lParam);
        return app->handleMessage(message, wParam, lParam);
    }
};

RECT BuilderApp::workArea() const {
    if (commandLine_.screenWidth > 0) {
        // A screen of that size with a taskbar along its bottom, as Windows sizes it at this DPI.
        return RECT{0, 0, commandLine_.screenWidth,
                    std::max(1, commandLine_.screenHeight - scaleLength(40, dpi_))};
    }
    RECT area{0, 0, 1024, 768};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0);
    return area;
}

SIZE BuilderApp::minimumWindowSize() const {
    return windowSizeFor(scaleLength(kMinClientWidth, dpi_), scaleLength(kMinClientHeight, dpi_), workArea());
}

CommandLine parseCommandLine(int argc, wchar_t** argv) {
    CommandLine line;
    for (int i = 1; i < argc; ++i) {
        if (lstrcmpiW(argv[i], L"--screen") == 0 && i + 1 < argc &&
            parseScreen(argv[i + 1], line.screenWidth, line.screenHeight)) {
            ++i;
            continue;
        }
        if (lstrcmpiW(argv[i], L"--snap") == 0 && i + 1 < argc) {
            line.snapshot = true;
            line.snapFolder = argv[i + 1];
            line.snapSkin = i + 2 < argc ? argv[i + 2] : L"";
        }
    }
    if (!line.snapshot && argc == 2 && argv[1][0] != L'\0') line.open = argv[1];
    if (!line.snapshot) line.screenWidth = line.screenHeight = 0; // a picture-taking aid only
    return line;
}

BuilderApp::BuilderApp() : build_(*this), preview_(*this), session_(*this) {}

BuilderApp::~BuilderApp() {
    build_.shutdown();
    if (hwnd_ && IsWindow(hwnd_)) DestroyWindow(hwnd_);
}

bool BuilderApp::createWindow() {
    INITCOMMONCONTROLSEX icc{sizeof(icc), ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&icc);

    {
        WindowDC screen(nullptr);
        dpi_ = screen.get() ? GetDeviceCaps(screen.get(), LOGPIXELSX) : 0;
        if (dpi_ <= 0) dpi_ = 96;
    }
    fonts_.create(dpi_);
    whiteBrush_.reset(CreateSolidBrush(color::kWhite));

    HINSTANCE instance = GetModuleHandleW(nullptr);
    static bool registered = false;
    if (!registered) {
        WNDCLASSEXW wc{};
        wc.cbSize = sizeof(wc);
        wc.lpfnWndProc = MainWindowClass::proc;
        wc.hInstance = instance;
        wc.hCursor = LoadCursorW(nullptr, IDC_ARROW);
        wc.hIcon = static_cast<HICON>(LoadImageW(instance, MAKEINTRESOURCEW(1), IMAGE_ICON,
                                                 GetSystemMetrics(SM_CXICON), GetSystemMetrics(SM_CYICON),
                                                 LR_SHARED));
        wc.hIconSm = static_cast<HICON>(LoadImageW(instance, MAKEINTRESOURCEW(1), IMAGE_ICON,
                                                   GetSystemMetrics(SM_CXSMICON),
                                                   GetSystemMetrics(SM_CYSMICON), LR_SHARED));
        wc.lpszClassName = kClassName;
        registered = RegisterClassExW(&wc) != 0;
        if (!registered) return false;
    }

    const RECT area = workArea();
    const SIZE size = windowSizeFor(scaleLength(kClientWidth, dpi_), scaleLength(kClientHeight, dpi_), area);
    int x = area.left + (area.right - area.left - size.cx) / 2;
    int y = area.top + (area.bottom - area.top - size.cy) / 2;
    if (commandLine_.snapshot) x = y = -32000;
    if (!CreateWindowExW(WS_EX_ACCEPTFILES, kClassName, kTitle, WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, x, y,
                         size.cx, size.cy, nullptr, nullptr, instance, this))
        return false;
    DragAcceptFiles(hwnd_, TRUE);

    if (templatePath_.empty()) templatePath_ = pathJoin(exeFolder(), L"Norvane.Template.exe");
    decisions_.signing.signtoolPath = findSigntool();
    fields_.create(hwnd_, fonts_, dpi_);
    fields_.enable(false, decisions_.signing.enabled);
    log_.create(hwnd_, kLogViewId, dpi_, &fonts_);
    session_.restore();
    // A skin given on the command line comes after the restored session, as a drop on the window would.
    if (!commandLine_.open.empty()) openPaths({commandLine_.open});
    section_ = skinLoaded_ ? kBaglantilar : kKaynak;
    relayout();
    InvalidateRect(hwnd_, nullptr, FALSE);

    if (commandLine_.snapshot) {
        ShowWindow(hwnd_, SW_SHOWNOACTIVATE);
        PostMessageW(hwnd_, kMsgRunSnapshot, 0, 0);
        return true;
    }
    ShowWindow(hwnd_, SW_SHOW);
    UpdateWindow(hwnd_);
    if (!fileExists(templatePath_))
        setStatus(L"Patcher şablonu (Norvane.Template.exe) bulunamadı — build.bat ile derleyin.", true,
                  StatusCause::Template);
    else if (!skinLoaded_ && commandLine_.open.empty())
        setStatus(L"Başlamak için bir skin .zip dosyasını ya da klasörünü pencereye sürükleyip bırakın.",
                  false);
    return true;
}

int BuilderApp::messageLoop() {
    MSG msg{};
    while (GetMessageW(&msg, nullptr, 0, 0) > 0) {
        // The window's own keys first (Tab through every item, the shortcuts); what is left moves between the
        // edit fields as in a dialog.
        if (preTranslate(msg)) continue;
        if (hwnd_ && IsDialogMessageW(hwnd_, &msg)) continue;
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
    return static_cast<int>(msg.wParam);
}

void BuilderApp::setStatus(const std::wstring& text, bool warning, StatusCause cause) {
    status_ = text;
    statusWarning_ = warning;
    statusCause_ = cause;
    InvalidateRect(hwnd_, nullptr, FALSE);
}

void BuilderApp::followState() {
    bool gone = false;
    switch (statusCause_) {
    case StatusCause::StartCheck:
        gone = !build_.building() && build_.startProblem() != status_;
        break;
    case StatusCause::Template:
        gone = fileExists(templatePath_);
        break;
    case StatusCause::BuildOutcome:
        gone = build_.stale();
        break;
    case StatusCause::Plain:
        break;
    }
    if (!gone) return;
    status_.clear();
    statusWarning_ = false;
    statusCause_ = StatusCause::Plain;
}

void BuilderApp::relayout() {
    if (!hwnd_) return;
    layout_ = computeLayout();
    pageScroll_ = layout_.pageScroll;
    // Only the links section knows how many pages there are; elsewhere the page stays as it was.
    if (section_ == kBaglantilar && linkPage_ >= layout_.linkPages) {
        linkPage_ = layout_.linkPages - 1;
        layout_ = computeLayout();
    }
    HDWP batch = BeginDeferWindowPos(static_cast<int>(fields_.count()) + 1);
    fields_.place(layout_, batch);
    if (HWND log = log_.hwnd()) {
        const Rect r = layout_.logView;
        if (batch)
            batch =
                DeferWindowPos(batch, log, nullptr, r.left, r.top, r.width(), r.height(),
                               (r.empty() ? SWP_HIDEWINDOW : SWP_SHOWWINDOW) | SWP_NOZORDER | SWP_NOACTIVATE);
    }
    if (batch) EndDeferWindowPos(batch);
}

void BuilderApp::onEditCommand(int id, int code) {
    switch (code) {
    case EN_SETFOCUS:
        InvalidateRect(hwnd_, nullptr, FALSE);
        break;
    case EN_KILLFOCUS:
        InvalidateRect(hwnd_, nullptr, FALSE);
        if (id == kFieldSegment) {
            // The field shows the size that will be used: a number kept to its range, or the default.
            const std::wstring used =
                std::to_wstring(clampedCount(*findKeyByField(kFieldSegment), fields_.text(kFieldSegment)));
            if (fields_.text(kFieldSegment) != used) fields_.setText(kFieldSegment, used);
        }
        if (refreshesPreview(id)) preview_.refresh();
        session_.save();
        break;
    case EN_CHANGE:
        // The checklist, the result's freshness and the status follow every keystroke.
        InvalidateRect(hwnd_, nullptr, FALSE);
        break;
    default:
        break;
    }
}

void BuilderApp::showSection(int section) {
    if (section < 0 || section >= kSectionCount) return;
    if (section != section_) pageScroll_ = 0; // a section opens at its top
    section_ = section;
    relayout();
    InvalidateRect(hwnd_, nullptr, FALSE);
}

void BuilderApp::appendLog(const std::wstring& text, int level) {
    log_.add(text, level);
    if (section_ == kDerleme) InvalidateRect(hwnd_, nullptr, FALSE);
}

void BuilderApp::onMouseMove(int x, int y) {
    const Hit hit = hitTest(layout_, x, y);
    if (hit.item != hoverItem_ || hit.sub != hoverSub_) {
        hoverItem_ = hit.item;
        hoverSub_ = hit.sub;
        InvalidateRect(hwnd_, nullptr, FALSE);
    }
    TRACKMOUSEEVENT track{sizeof(track), TME_LEAVE, hwnd_, 0};
    TrackMouseEvent(&track);
}

void BuilderApp::onWheel(int delta) {
    if (section_ != kBaglantilar || layout_.linkPages < 2) {
        // Three lines of text a notch, as the log scrolls.
        scrollPageTo(pageScroll_ - delta * 3 * scaleLength(20, dpi_) / WHEEL_DELTA);
        return;
    }
    const int pages = layout_.linkPages;
    const int next = delta >= 0 ? linkPage_ - 1 : linkPage_ + 1;
    if (next < 0 || next >= pages) return;
    linkPage_ = next;
    relayout();
    InvalidateRect(hwnd_, nullptr, FALSE);
}

LRESULT BuilderApp::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    case WM_SIZE:
        relayout();
        InvalidateRect(hwnd_, nullptr, FALSE);
        return 0;
    case WM_PAINT:
        paintBuffered(hwnd_, [this](HDC dc) { paint(dc); });
        return 0;
    case WM_PRINTCLIENT:
        paint(reinterpret_cast<HDC>(wParam));
        return 0;
    case WM_ERASEBKGND:
        return 1;
    case WM_CLOSE:
        if (build_.building()) {
            setStatus(L"Oluşturma sürüyor — bitmesini bekleyin.", true);
            return 0;
        }
        session_.save();
        DestroyWindow(hwnd_);
        return 0;
    case WM_GETMINMAXINFO: {
        auto* info = reinterpret_cast<MINMAXINFO*>(lParam);
        const SIZE min = minimumWindowSize();
        info->ptMinTrackSize = POINT{min.cx, min.cy};
        return 0;
    }
    case WM_SETCURSOR:
        if (LOWORD(lParam) == HTCLIENT && reinterpret_cast<HWND>(wParam) == hwnd_) {
            POINT p{};
            GetCursorPos(&p);
            ScreenToClient(hwnd_, &p);
            if (hitTest(layout_, p.x, p.y).item != kItemNone) {
                SetCursor(LoadCursorW(nullptr, IDC_HAND));
                return TRUE;
            }
        }
        break;
    case WM_MOUSEMOVE:
        if (barDragging_) {
            onPageBarDrag(GET_Y_LPARAM(lParam));
            return 0;
        }
        onMouseMove(GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam));
        return 0;
    case WM_CAPTURECHANGED:
        if (barDragging_) {
            barDragging_ = false;
            InvalidateRect(hwnd_, nullptr, FALSE);
        }
        return 0;
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
        InvalidateRect(hwnd_, nullptr, FALSE); // the focus ring comes and goes with the focus
        return 0;
    case WM_MOUSELEAVE:
        if (hoverItem_ != kItemNone) {
            hoverItem_ = kItemNone;
            hoverSub_ = 0;
            InvalidateRect(hwnd_, nullptr, FALSE);
        }
        return 0;
    case WM_LBUTTONDOWN: {
        if (onPageBarDown(GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam))) return 0;
        const Hit hit = hitTest(layout_, GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam));
        // The clicked item is the one the keys work on next.
        if (hit.item != kItemNone) {
            focusItem_ = hit.item;
            focusSub_ = hit.sub;
        }
        pressedItem_ = hit.item;
        pressedSub_ = hit.sub;
        if (hit.item == kItemNone)
            SetFocus(hwnd_); // takes the focus out of an edit field
        else
            SetCapture(hwnd_);
        InvalidateRect(hwnd_, nullptr, FALSE);
        return 0;
    }
    case WM_LBUTTONUP: {
        if (GetCapture() == hwnd_) ReleaseCapture();
        if (barDragging_) {
            barDragging_ = false;
            InvalidateRect(hwnd_, nullptr, FALSE);
            return 0;
        }
        const Hit hit = hitTest(layout_, GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam));
        const int pressed = pressedItem_;
        pressedItem_ = kItemNone;
        if (hit.item != kItemNone && hit.item == pressed) runCommand(hit.item, hit.sub);
        InvalidateRect(hwnd_, nullptr, FALSE);
        return 0;
    }
    case WM_MOUSEWHEEL:
        // The links section pages its list; every page scrolls where it is taller than its column.
        if ((section_ == kBaglantilar && layout_.linkPages >= 2) || layout_.maxPageScroll() > 0) {
            onWheel(GET_WHEEL_DELTA_WPARAM(wParam));
            return 0;
        }
        break;
    case WM_DROPFILES:
        dropFiles(reinterpret_cast<HDROP>(wParam));
        return 0;
    case WM_COMMAND:
        if (lParam != 0) onEditCommand(LOWORD(wParam), HIWORD(wParam));
        return 0;
    case WM_CTLCOLOREDIT: {
        HDC dc = reinterpret_cast<HDC>(wParam);
        SetTextColor(dc, color::kEditText);
        SetBkColor(dc, color::kWhite);
        return reinterpret_cast<LRESULT>(whiteBrush_.get());
    }
    case WM_CTLCOLORSTATIC: {
        // Disabled edit fields; the brush is made once and kept for the life of the process.
        static HBRUSH staticBrush = CreateSolidBrush(color::kPage);
        HDC dc = reinterpret_cast<HDC>(wParam);
        SetTextColor(dc, color::kStaticText);
        SetBkColor(dc, color::kPage);
        return reinterpret_cast<LRESULT>(staticBrush);
    }
    case WM_TIMER:
        if (wParam == kBusyTimer) {
            build_.nextTick();
            InvalidateRect(hwnd_, nullptr, FALSE);
        }
        return 0;
    case kMsgLogLine:
        if (auto line = takePosted<std::wstring>(lParam)) appendLog(*line, static_cast<int>(wParam));
        return 0;
    case kMsgBuildDone:
        build_.complete(takePosted<BuildResult>(lParam));
        return 0;
    case kMsgRunSnapshot:
        runSnapshots();
        return 0;
    default:
        break;
    }
    return DefWindowProcW(hwnd_, message, wParam, lParam);
}

} // namespace nv::ui::win
