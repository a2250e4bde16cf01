#pragma once
// One painter per kind of block: each draws a block of the layout with the toolkit, in the state the page
// model gives (hovered, pressed, on, disabled). paintBlock hands each block to the painter of its kind.

#include "readers/image.h"
#include "ui/layout.h"
#include "ui/win32/draw.h"

#include <cstdint>
#include <vector>

namespace nv::ui::win {

// What painters read besides their block.
struct PaintContext {
    HDC dc;
    const FontSet& fonts;
    int dpi;
    const PageModel& model;
    const DecodedImage& icon; // the chosen icon's pixels, for the Kimlik page's tile
    int previewWidth, previewHeight;
    const std::vector<uint32_t>& previewPixels; // the live preview's picture

    int s(int length) const { return scaleLength(length, dpi); }
    HFONT font(int index) const { return fonts.get(index); }
    // Under the pointer (clickable and enabled blocks only), and held down there.
    bool hovered(const Block& b) const;
    bool pressed(const Block& b) const;
};

void paintBlock(const PaintContext& context, const Block& block);
// The keyboard's focus on a self-drawn item: a ring in the fields' focus green around it.
void paintFocusRing(const PaintContext& context, const Block& block);
// A thin scroll bar (the page's and the log's): a track and its thumb, the thumb in the given colour.
void paintThinScrollBar(HDC dc, const Rect& track, const ThinScrollBar& bar, Rgb thumb, int dpi);

// The painters, by the family of their kinds. Single-line texts are vertically centred and end in an
// ellipsis.
inline constexpr UINT kLine = DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS;
Rect centredSquare(const Rect& r, int side);

// The frame: sidebar, navigation, skin card, footer (paint_frame.cpp).
void paintSidebarBackground(const PaintContext& c, const Block& b);
void paintBrand(const PaintContext& c, const Block& b);
void paintNavEntry(const PaintContext& c, const Block& b);
void paintSkinCard(const PaintContext& c, const Block& b);
void paintFooterBar(const PaintContext& c, const Block& b);
void paintStatusDot(const PaintContext& c, const Block& b);

// What the operator clicks or types into (paint_controls.cpp).
void paintPrimaryButton(const PaintContext& c, const Block& b); // the sidebar's build button too
void paintButton(const PaintContext& c, const Block& b);        // with text, or only an icon
void paintFieldBox(const PaintContext& c, const Block& b);
void paintChip(const PaintContext& c, const Block& b);
void paintToggle(const PaintContext& c, const Block& b);

// What the page shows (paint_content.cpp).
void paintCard(const PaintContext& c, const Block& b);
void paintText(const PaintContext& c, const Block& b);
void paintDropZone(const PaintContext& c, const Block& b);
void paintStatCell(const PaintContext& c, const Block& b);
void paintCheckRow(const PaintContext& c, const Block& b);
void paintStateTile(const PaintContext& c, const Block& b);
void paintPill(const PaintContext& c, const Block& b);
void paintPreviewArea(const PaintContext& c, const Block& b);
void paintPagerText(const PaintContext& c, const Block& b);
void paintSeparator(const PaintContext& c, const Block& b);

} // namespace nv::ui::win
