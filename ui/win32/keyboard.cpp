// The keyboard: Tab through every stop of the page (the self-drawn items are stops of the window itself, the
// fields and the log their own windows), the shortcuts, the keys of the focused item, and the page's scroll
// keys and scroll bar.

#include "ui/win32/app.h"

namespace nv::ui::win {
namespace {

// Windows' own dialog keys (Tab) need their modifiers from the key state of the message's time.
bool down(int key) {
    return GetKeyState(key) < 0;
}

} // namespace

bool BuilderApp::preTranslate(const MSG& msg) {
    if (msg.message != WM_KEYDOWN || !hwnd_) return false;
    if (msg.hwnd != hwnd_ && !IsChild(hwnd_, msg.hwnd)) return false; // a dialog's own keys
    return onKey(msg.hwnd, static_cast<UINT>(msg.wParam), down(VK_CONTROL), down(VK_SHIFT));
}

FocusStop BuilderApp::focusedStop() const {
    HWND focus = GetFocus();
    if (focus && focus == log_.hwnd()) return {FocusStop::Kind::Log, kItemNone, 0, 0, layout_.logView};
    if (const int field = fields_.focused()) return {FocusStop::Kind::Field, kItemNone, 0, field, {}};
    if (focus == hwnd_ && focusItem_ != kItemNone)
        return {FocusStop::Kind::Item, focusItem_, focusSub_, 0, {}};
    return {};
}

void BuilderApp::scrollPageTo(int offset) {
    const int clamped = std::clamp(offset, 0, layout_.maxPageScroll());
    if (clamped == pageScroll_) return;
    pageScroll_ = clamped;
    relayout();
    InvalidateRect(hwnd_, nullptr, FALSE);
}

void BuilderApp::focusStop(const FocusStop& stop) {
    // A stop of the form column comes into view first, so that its field is shown when it takes the focus.
    const Rect& view = layout_.pageView;
    if (stop.kind != FocusStop::Kind::Log && !stop.rect.empty() && stop.rect.left >= view.left &&
        stop.rect.right <= view.right)
        scrollPageTo(scrollToShow(layout_, stop.rect, scaleLength(12, dpi_)));
    switch (stop.kind) {
    case FocusStop::Kind::Field:
        if (HWND edit = fields_.window(stop.field)) {
            SetFocus(edit);
            SendMessageW(edit, EM_SETSEL, 0, -1); // as a dialog selects a field reached by Tab
        }
        break;
    case FocusStop::Kind::Log:
        SetFocus(log_.hwnd());
        break;
    case FocusStop::Kind::Item:
        focusItem_ = stop.item;
        focusSub_ = stop.sub;
        SetFocus(hwnd_);
        break;
    }
    InvalidateRect(hwnd_, nullptr, FALSE);
}

bool BuilderApp::onKey(HWND target, UINT key, bool ctrl, bool shift) {
    // The sections and the build, wherever the focus is.
    if (ctrl) {
        int section = -1;
        if (key >= '1' && key < '1' + kSectionCount) section = static_cast<int>(key - '1');
        if (key == VK_NEXT) section = (section_ + 1) % kSectionCount;
        if (key == VK_PRIOR) section = (section_ + kSectionCount - 1) % kSectionCount;
        if (section >= 0) {
            showSection(section);
            // A field of the section left behind is hidden now; the focus goes to the new section's entry.
            if (!IsWindowVisible(GetFocus()) || GetFocus() == hwnd_)
                focusStop({FocusStop::Kind::Item, kItemSection, section, 0, {}});
            return true;
        }
        if (key == 'B') {
            runCommand(kItemBuildPage, 0);
            return true;
        }
    }
    if (key == VK_TAB && !ctrl) {
        const std::vector<FocusStop> chain = focusChain(layout_);
        const int next = nextFocusStop(chain, findFocusStop(chain, focusedStop()), !shift);
        if (next >= 0) focusStop(chain[static_cast<size_t>(next)]);
        return true;
    }
    // The segment field steps with the arrows, as a spin box does.
    if (target == fields_.window(kFieldSegment) && (key == VK_UP || key == VK_DOWN)) {
        runCommand(key == VK_UP ? kItemSegmentPlus : kItemSegmentMinus, 0);
        return true;
    }
    if (target != hwnd_) return false;

    const FocusStop stop = focusedStop();
    switch (key) {
    case VK_SPACE:
    case VK_RETURN:
        if (stop.item != kItemNone) {
            // Only what the page shows and takes clicks on runs (a disabled button does not).
            const std::vector<FocusStop> chain = focusChain(layout_);
            if (findFocusStop(chain, stop) >= 0) runCommand(stop.item, stop.sub);
        }
        return true;
    case VK_LEFT:
    case VK_RIGHT:
    case VK_UP:
    case VK_DOWN: {
        const Arrow arrow = key == VK_LEFT    ? Arrow::Left
                            : key == VK_RIGHT ? Arrow::Right
                            : key == VK_UP    ? Arrow::Up
                                              : Arrow::Down;
        const ArrowCommand command = arrowCommand(stop, arrow);
        if (command.item != kItemNone) {
            runCommand(command.item, command.sub);
            // On the sections and the chips the focus goes with the choice.
            if (command.item == kItemSection || command.item == kItemConnectionChip) {
                focusItem_ = command.item;
                focusSub_ = command.sub;
            }
            InvalidateRect(hwnd_, nullptr, FALSE);
        } else if (key == VK_UP || key == VK_DOWN) {
            scrollPageTo(pageScroll_ + (key == VK_UP ? -1 : 1) * scaleLength(40, dpi_));
        }
        return true;
    }
    case VK_PRIOR:
    case VK_NEXT: {
        const int page = std::max(scaleLength(40, dpi_), layout_.pageView.height() - scaleLength(40, dpi_));
        scrollPageTo(pageScroll_ + (key == VK_PRIOR ? -page : page));
        return true;
    }
    case VK_HOME:
        scrollPageTo(0);
        return true;
    case VK_END:
        scrollPageTo(layout_.maxPageScroll());
        return true;
    default:
        return false;
    }
}

// The page's thin bar: pressed on the thumb it drags, above or below it the page moves by a view.
bool BuilderApp::onPageBarDown(int x, int y) {
    const ThinScrollBar& bar = layout_.pageBar;
    if (!bar.visible) return false;
    const Rect zone{layout_.pageView.right, bar.trackTop, layout_.frame.right.left, bar.trackBottom};
    if (!zone.contains(x, y)) return false;
    const int margin = scaleLength(4, dpi_);
    if (y >= bar.thumbTop - margin && y < bar.thumbBottom + margin) {
        barDragging_ = true;
        barDragY_ = y;
        barDragOffset_ = pageScroll_;
        SetCapture(hwnd_);
        InvalidateRect(hwnd_, nullptr, FALSE);
    } else {
        const int page = layout_.pageView.height();
        scrollPageTo(pageScroll_ + (y < bar.thumbTop ? -page : page));
    }
    return true;
}

void BuilderApp::onPageBarDrag(int y) {
    const ThinScrollBar& bar = layout_.pageBar;
    scrollPageTo(dragScrollOffset(barDragOffset_, y - barDragY_, bar.trackBottom - bar.trackTop,
                                  layout_.pageView.height(), layout_.pageContent));
}

} // namespace nv::ui::win
