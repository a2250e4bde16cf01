#include "ui/scroll.h"

#include <algorithm>

namespace nv::ui {

ThinScrollBar thinScrollBar(int trackTop, int trackBottom, int view, int content, int offset, int minThumb) {
    ThinScrollBar bar;
    const int maximum = content - view;
    const int track = trackBottom - trackTop;
    if (maximum <= 0 || view <= 0 || track <= 0) return bar;
    bar.visible = true;
    bar.trackTop = trackTop;
    bar.trackBottom = trackBottom;
    int thumb = static_cast<int>(static_cast<long long>(track) * view / content);
    thumb = std::clamp(thumb, std::min(minThumb, track), track);
    const int travel = track - thumb;
    bar.thumbTop = trackTop + static_cast<int>(static_cast<long long>(travel) *
                                               std::clamp(offset, 0, maximum) / maximum);
    bar.thumbBottom = bar.thumbTop + thumb;
    return bar;
}

int dragScrollOffset(int startOffset, int dy, int trackLength, int view, int content) {
    const int maximum = std::max(0, content - view);
    if (trackLength <= 0) return std::clamp(startOffset, 0, maximum);
    const long long moved = static_cast<long long>(dy) * content / trackLength;
    return static_cast<int>(std::clamp<long long>(startOffset + moved, 0, maximum));
}

} // namespace nv::ui
