#include "ui/log_model.h"

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
    LogScrollBar bar;
    const int maximum = maxOffset();
    if (maximum <= 0 || viewHeight_ <= 0) return bar;
    bar.visible = true;
    bar.trackTop = 0;
    bar.trackBottom = viewHeight_;
    const int track = viewHeight_;
    const long long content = contentHeight();
    int thumb = static_cast<int>(static_cast<long long>(track) * viewHeight_ / content);
    thumb = std::clamp(thumb, std::min(minThumb_, track), track);
    const int travel = track - thumb;
    bar.thumbTop = static_cast<int>(static_cast<long long>(travel) * offset_ / maximum);
    bar.thumbBottom = bar.thumbTop + thumb;
    return bar;
}

int BuildLog::dragOffset(int startOffset, int dy) const {
    if (viewHeight_ <= 0) return std::clamp(startOffset, 0, maxOffset());
    // The pointer's travel over the track stands for the same share of the whole content.
    const long long moved = static_cast<long long>(dy) * contentHeight() / viewHeight_;
    return static_cast<int>(std::clamp<long long>(startOffset + moved, 0, maxOffset()));
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
