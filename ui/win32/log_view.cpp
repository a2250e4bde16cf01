#include "ui/win32/log_view.h"

#include "ui/win32/block_painters.h"

#include <commctrl.h>
#include <windowsx.h>

#include <algorithm>

namespace nv::ui::win {
namespace {

constexpr const wchar_t* kClassName = L"NV_LogView";

struct LevelLook {
    Rgb color;
    int font;
};
LevelLook levelLook(int level) {
    switch (level) {
    case 1:
        return {color::kAccent, kFontSmallBold};
    case 2:
        return {color::kText, kFontSmallBold};
    case 3:
        return {color::kError, kFontSmallBold};
    default:
        return {color::kSecondary, kFontSmall};
    }
}

} // namespace

bool LogView::create(HWND parent, int controlId, int dpi, const FontSet* fonts) {
    fonts_ = fonts;
    dpi_ = dpi;
    log_.setMetrics(s(20), s(8), s(24));
    static bool registered = false;
    HINSTANCE instance = GetModuleHandleW(nullptr);
    if (!registered) {
        WNDCLASSEXW wc{};
        wc.cbSize = sizeof(wc);
        wc.lpfnWndProc = windowProc;
        wc.hInstance = instance;
        wc.hCursor = LoadCursorW(nullptr, IDC_ARROW);
        wc.lpszClassName = kClassName;
        registered = RegisterClassExW(&wc) != 0;
        if (!registered) return false;
    }
    hwnd_ = CreateWindowExW(0, kClassName, L"", WS_CHILD | WS_TABSTOP, 0, 0, 0, 0, parent,
                            reinterpret_cast<HMENU>(static_cast<INT_PTR>(controlId)), instance, this);
    if (!hwnd_) return false;
    // A line cut with "…" shows whole in a tooltip over it, wrapped where it is long.
    tip_ = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_NOPREFIX | TTS_ALWAYSTIP,
                           0, 0, 0, 0, hwnd_, nullptr, instance, nullptr);
    if (tip_) {
        TTTOOLINFOW tool{};
        tool.cbSize = sizeof(tool);
        tool.uFlags = TTF_SUBCLASS;
        tool.hwnd = hwnd_;
        tool.uId = 1;
        tool.lpszText = LPSTR_TEXTCALLBACKW;
        SendMessageW(tip_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
        SendMessageW(tip_, TTM_SETMAXTIPWIDTH, 0, s(520));
    }
    return true;
}

void LogView::add(const std::wstring& text, int level) {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    log_.add(text, level, logTimeText(now.wHour, now.wMinute, now.wSecond));
    if (hwnd_) InvalidateRect(hwnd_, nullptr, FALSE);
}

void LogView::paint(HDC dc) {
    RECT client{};
    GetClientRect(hwnd_, &client);
    const Rect area{0, 0, client.right, client.bottom};
    fillRect(dc, area, color::kWhite);
    if (log_.size() == 0) {
        drawText(dc, L"Derleme başladığında adımlar burada görünür.", area, fonts_->get(kFontSmall),
                 color::kMuted, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
        return;
    }
    size_t first = 0, last = 0;
    log_.visibleRange(first, last);
    const int lineHeight = log_.lineHeight();
    const int timeLeft = s(12), textLeft = s(12 + 62);
    for (size_t i = first; i < last; ++i) {
        const LogLine& line = log_.lines()[i];
        const int top = log_.lineTop(i);
        if (top + lineHeight <= 0) continue;
        if (top >= area.bottom) break;
        if (!line.time.empty())
            drawText(dc, line.time, {timeLeft, top, textLeft, top + lineHeight}, fonts_->get(kFontMono),
                     color::kMuted, DT_SINGLELINE | DT_VCENTER);
        const LevelLook look = levelLook(line.level);
        drawText(dc, line.text, {textLeft, top, area.right - s(16), top + lineHeight}, fonts_->get(look.font),
                 look.color, DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS);
    }
    const LogScrollBar bar = log_.scrollBar();
    if (!bar.visible) return;
    const int right = area.right - s(3);
    const Rgb thumbColor = dragging_   ? color::kThumbActive
                           : hoverBar_ ? blend(color::kThumb, color::kMuted, 50)
                                       : color::kThumb;
    paintThinScrollBar(dc, {right - s(3), bar.trackTop, right, bar.trackBottom},
                       {true, bar.trackTop, bar.trackBottom, bar.thumbTop, bar.thumbBottom}, thumbColor,
                       dpi_);
}

std::wstring LogView::cutLineAt(int x, int y) const {
    RECT client{};
    GetClientRect(hwnd_, &client);
    if (x < 0 || x >= client.right || y < 0 || y >= client.bottom || log_.size() == 0) return {};
    size_t first = 0, last = 0;
    log_.visibleRange(first, last);
    for (size_t i = first; i < last; ++i) {
        const int top = log_.lineTop(i);
        if (y < top || y >= top + log_.lineHeight()) continue;
        const LogLine& line = log_.lines()[i];
        // Cut when the text is wider than its column (as painting draws it).
        WindowDC dc(hwnd_);
        const SIZE size =
            measureText(dc.get(), line.text, fonts_->get(levelLook(line.level).font), DT_SINGLELINE);
        const int width = client.right - s(16) - s(12 + 62);
        return size.cx > width ? line.text : std::wstring();
    }
    return {};
}

void LogView::updateTip(int x, int y) {
    if (!tip_) return;
    const std::wstring text = cutLineAt(x, y);
    const int line = text.empty() ? -1 : (y - log_.lineTop(0)) / std::max(1, log_.lineHeight());
    if (line == tipLine_) return;
    tipLine_ = line;
    tipText_ = text;
    TTTOOLINFOW tool{};
    tool.cbSize = sizeof(tool);
    tool.hwnd = hwnd_;
    tool.uId = 1;
    if (line >= 0) {
        const int top = log_.lineTop(static_cast<size_t>(line));
        RECT client{};
        GetClientRect(hwnd_, &client);
        tool.rect = RECT{s(12 + 62), top, client.right - s(16), top + log_.lineHeight()};
    }
    // The tool covers the cut line only; elsewhere it is empty and no tip shows.
    SendMessageW(tip_, TTM_NEWTOOLRECTW, 0, reinterpret_cast<LPARAM>(&tool));
    SendMessageW(tip_, TTM_POP, 0, 0);
}

bool LogView::overScrollBar(int x) const {
    RECT client{};
    GetClientRect(hwnd_, &client);
    return log_.scrollBar().visible && x >= client.right - s(12);
}

void LogView::scrollTo(int offset) {
    if (log_.scrollTo(offset)) InvalidateRect(hwnd_, nullptr, FALSE);
}

void LogView::onButtonDown(int x, int y) {
    SetFocus(hwnd_);
    const LogScrollBar bar = log_.scrollBar();
    if (!bar.visible || !overScrollBar(x)) return;
    if (y >= bar.thumbTop - s(4) && y < bar.thumbBottom + s(4)) {
        dragging_ = true;
        dragStartY_ = y;
        dragStartOffset_ = log_.offset();
        SetCapture(hwnd_);
        InvalidateRect(hwnd_, nullptr, FALSE);
        return;
    }
    RECT client{};
    GetClientRect(hwnd_, &client);
    scrollTo(log_.offset() + (y < bar.thumbTop ? -client.bottom : client.bottom));
}

LRESULT CALLBACK LogView::windowProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        auto* create = reinterpret_cast<CREATESTRUCTW*>(lParam);
        auto* self = static_cast<LogView*>(create->lpCreateParams);
        self->hwnd_ = hwnd;
        SetWindowLongPtrW(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
    }
    auto* self = reinterpret_cast<LogView*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
    if (!self) return DefWindowProcW(hwnd, message, wParam, lParam);
    return self->handle(message, wParam, lParam);
}

LRESULT LogView::handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_ERASEBKGND:
        return 1;
    case WM_PAINT:
        paintBuffered(hwnd_, [this](HDC dc) { paint(dc); });
        return 0;
    case WM_PRINTCLIENT:
        paint(reinterpret_cast<HDC>(wParam));
        return 0;
    case WM_SIZE:
        log_.setViewHeight(HIWORD(lParam));
        InvalidateRect(hwnd_, nullptr, FALSE);
        return 0;
    case WM_MOUSEWHEEL: {
        const int delta = GET_WHEEL_DELTA_WPARAM(wParam);
        scrollTo(log_.offset() - delta * 3 * log_.lineHeight() / WHEEL_DELTA);
        return 0;
    }
    case WM_KEYDOWN: {
        RECT client{};
        GetClientRect(hwnd_, &client);
        switch (wParam) {
        case VK_PRIOR:
            scrollTo(log_.offset() - client.bottom);
            return 0;
        case VK_NEXT:
            scrollTo(log_.offset() + client.bottom);
            return 0;
        case VK_HOME:
            scrollTo(0);
            return 0;
        case VK_END:
            scrollTo(log_.maxOffset());
            return 0;
        case VK_UP:
            scrollTo(log_.offset() - log_.lineHeight());
            return 0;
        case VK_DOWN:
            scrollTo(log_.offset() + log_.lineHeight());
            return 0;
        default:
            break;
        }
        break;
    }
    case WM_GETDLGCODE:
        return DLGC_WANTARROWS;
    case WM_NOTIFY: {
        auto* info = reinterpret_cast<NMTTDISPINFOW*>(lParam);
        if (info->hdr.hwndFrom == tip_ && info->hdr.code == TTN_GETDISPINFOW) {
            info->lpszText = tipText_.data();
            return 0;
        }
        break;
    }
    case WM_LBUTTONDOWN:
        onButtonDown(GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam));
        return 0;
    case WM_MOUSEMOVE: {
        const int x = GET_X_LPARAM(lParam), y = GET_Y_LPARAM(lParam);
        if (dragging_) {
            scrollTo(log_.dragOffset(dragStartOffset_, y - dragStartY_));
            return 0;
        }
        updateTip(x, y);
        if (!trackingLeave_) {
            TRACKMOUSEEVENT track{sizeof(track), TME_LEAVE, hwnd_, 0};
            trackingLeave_ = TrackMouseEvent(&track) != 0;
        }
        const bool over = overScrollBar(x);
        if (over != hoverBar_) {
            hoverBar_ = over;
            InvalidateRect(hwnd_, nullptr, FALSE);
        }
        return 0;
    }
    case WM_MOUSELEAVE:
        trackingLeave_ = false;
        if (hoverBar_) {
            hoverBar_ = false;
            InvalidateRect(hwnd_, nullptr, FALSE);
        }
        return 0;
    case WM_LBUTTONUP:
    case WM_CAPTURECHANGED:
        if (dragging_) {
            dragging_ = false;
            if (message == WM_LBUTTONUP) ReleaseCapture();
            InvalidateRect(hwnd_, nullptr, FALSE);
        }
        return 0;
    default:
        break;
    }
    return DefWindowProcW(hwnd_, message, wParam, lParam);
}

} // namespace nv::ui::win
