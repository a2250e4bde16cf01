#include "ui/log_model.h"

#include "ui/scroll.h"

#include <algorithm>
#include <cwchar>

namespace nv::ui {

std::wstring logTimeText(int hours, int minutes, int seconds) {
    wchar_t buffer[16];
    std::swprintf(buffer, 16, L"%02d:%02d:%02d", hours, minutes, seconds);
    return buffer;
}

void BuildLog::setMetrics(int lineHeight, int padding, int minThumb) {
    lineHeight_ = std::max(1, lineHeight);
    padding_ = std::max(0, padding);
    minThumb_ = std::max(1, minThumb);
    scrollTo(offset_);
}

void BuildLog::setViewHeight(int height) {
    viewHeight_ = std::max(0, height);
    scrollTo(offset_);
}

void BuildLog::add(std::wstring_view message, int level, const std::wstring& time) {
    const bool follow = atEnd();
    size_t start = 0;
    bool first = true;
    for (;;) {
        const size_t end = message.find(L'\n', start);
        std::wstring_view piece = message.substr(start, end == std::wstring_view::npos ? end : end - start);
        if (!piece.empty() && piece.back() == L'\r') piece.remove_suffix(1);
        lines_.push_back({first ? time : std::wstring(), std::wstring(piece), level});
        first = false;
        if (end == std::wstring_view::npos) break;
        start = end + 1;
    }
    while (lines_.size() > kMaxLines)
        lines_.pop_front();
    if (follow)
        offset_ = maxOffset();
    else
        scrollTo(offset_);
}

void BuildLog::clear() {
    lines_.clear();
    offset_ = 0;
}

int BuildLog::maxOffset() const {
    // The padding counts once at the top and once below the last line.
    return std::max(0, contentHeight() - viewHeight_);
}

bool BuildLog::scrollTo(int offset) {
    const int clamped = std::clamp(offset, 0, maxOffset());
    if (clamped == offset_) return false;
    offset_ = clamped;
    return true;
}

void BuildLog::visibleRange(size_t& first, size_t& last) const {
    first = 0;
    if (offset_ > padding_) first = static_cast<size_t>((offset_ - padding_) / lineHeight_);
    last = first;
    while (last < lines_.size() && lineTop(last) < viewHeight_)
        ++last;
    first = std::min(first, last);
}

LogScrollBar BuildLog::scrollBar() const {
    const ThinScrollBar thin =
        thinScrollBar(0, viewHeight_, viewHeight_, contentHeight(), offset_, minThumb_);
    LogScrollBar bar;
    bar.visible = thin.visible;
    bar.trackTop = thin.trackTop;
    bar.trackBottom = thin.trackBottom;
    bar.thumbTop = thin.thumbTop;
    bar.thumbBottom = thin.thumbBottom;
    return bar;
}

int BuildLog::dragOffset(int startOffset, int dy) const {
    if (viewHeight_ <= 0) return std::clamp(startOffset, 0, maxOffset());
    return dragScrollOffset(startOffset, dy, viewHeight_, viewHeight_, contentHeight());
}

std::wstring BuildLog::plainText() const {
    std::wstring text;
    for (const LogLine& line : lines_) {
        if (!line.time.empty()) text += line.time + L"  ";
        text += line.text;
        text += L"\r\n";
    }
    return text;
}

} // namespace nv::ui
