#pragma once
// The thin scroll bars of the window (the page's and the build log's): a track along the right edge and a
// thumb whose length and place follow the visible share of the content and the offset.

namespace nv::ui {

struct ThinScrollBar {
    bool visible = false; // only when the content is taller than the view
    int trackTop = 0, trackBottom = 0;
    int thumbTop = 0, thumbBottom = 0;
};

// view and content are heights; the offset runs from 0 to content - view.
ThinScrollBar thinScrollBar(int trackTop, int trackBottom, int view, int content, int offset, int minThumb);

// The offset after the pointer moved dy pixels along a track of trackLength since the drag started at
// startOffset: the travel stands for the same share of the whole content. Kept to 0 ... content - view.
int dragScrollOffset(int startOffset, int dy, int trackLength, int view, int content);

} // namespace nv::ui
