#pragma once
// The build log's lines and scroll position, apart from the window that shows them (win32/log_view.cpp).

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>

namespace nv::ui {

struct LogLine {
    std::wstring time; // "HH:MM:SS", empty on the continuation lines of a message
    std::wstring text; // one line, no line breaks
    int level = 0;     // 0 plain, 1 success, 2 emphasis, 3 error
};

// "%02d:%02d:%02d".
std::wstring logTimeText(int hours, int minutes, int seconds);

// The thin scroll bar at the view's right edge.
struct LogScrollBar {
    bool visible = false;
    int trackTop = 0, trackBottom = 0; // the whole client height
    int thumbTop = 0, thumbBottom = 0;
};

class BuildLog {
public:
    static constexpr size_t kMaxLines = 5000;

    // lineHeight and padding in pixels (already scaled).
    void setMetrics(int lineHeight, int padding, int minThumb);
    // The view's client height; the offset is clamped again.
    void setViewHeight(int height);

    // Splits the message at line feeds (each piece loses one trailing carriage return); the first piece
    // carries the time text. The oldest lines go beyond kMaxLines. A view that was at the end follows the new
    // end.
    void add(std::wstring_view message, int level, const std::wstring& time);
    void clear();

    const std::deque<LogLine>& lines() const { return lines_; }
    size_t size() const { return lines_.size(); }

    int offset() const { return offset_; }
    int lineHeight() const { return lineHeight_; }
    int maxOffset() const;
    // Clamped to 0 ... maxOffset(); true when the offset changed.
    bool scrollTo(int offset);
    bool scrollBy(int delta) { return scrollTo(offset_ + delta); }
    bool atEnd() const { return offset_ >= maxOffset() - lineHeight_; }

    // Top of line i in client pixels.
    int lineTop(size_t index) const { return padding_ - offset_ + static_cast<int>(index) * lineHeight_; }
    // The lines that touch 0 ... viewHeight: [first, last).
    void visibleRange(size_t& first, size_t& last) const;

    LogScrollBar scrollBar() const;
    // The offset for a thumb dragged by dy pixels from where it was at startOffset.
    int dragOffset(int startOffset, int dy) const;

    // Every line as "time  text", joined by CR LF (the clipboard form).
    std::wstring plainText() const;

private:
    int contentHeight() const { return static_cast<int>(lines_.size()) * lineHeight_ + 2 * padding_; }

    std::deque<LogLine> lines_;
    int offset_ = 0;
    int lineHeight_ = 20;
    int padding_ = 8;
    int minThumb_ = 24;
    int viewHeight_ = 0;
};

} // namespace nv::ui
