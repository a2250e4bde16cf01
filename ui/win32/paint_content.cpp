// The painters of what the pages show: cards, texts, the drop area, summary cells, checklist rows, tiles and
// the live preview.

#include "ui/win32/block_painters.h"

#include <algorithm>

namespace nv::ui::win {

void paintCard(const PaintContext& c, const Block& b) {
    fillRoundRect(c.dc, b.rect, float(c.s(12)), color::kWhite);
    strokeRoundRect(c.dc, b.rect, float(c.s(12)), color::kHairline, float(c.s(1)));
}

void paintText(const PaintContext& c, const Block& b) {
    UINT flags = 0;
    if (b.wrap)
        flags = DT_WORDBREAK;
    else
        flags = kLine;
    if (b.align == Align::Center) flags |= DT_CENTER;
    if (b.align == Align::Right) flags |= DT_RIGHT;
    if (b.wrap) {
        drawText(c.dc, b.text, b.rect, c.font(b.font), b.color, flags);
        return;
    }
    // A message of several lines (a build error, say) reads as one line here.
    std::wstring line = b.text;
    for (wchar_t& ch : line)
        if (ch == L'\n' || ch == L'\r') ch = L' ';
    if (b.path) flags = (flags & ~UINT(DT_END_ELLIPSIS)) | DT_PATH_ELLIPSIS;
    drawText(c.dc, line, b.rect, c.font(b.font), b.color, flags);
}

void paintDropZone(const PaintContext& c, const Block& b) {
    fillRoundRect(c.dc, b.rect, float(c.s(12)), color::kDropFill);
    strokeDashedRoundRect(c.dc, b.rect, float(c.s(12)), color::kDropEdge, float(c.s(3)) / 2);
    const Rect inner = b.rect.inset(c.s(16), 0);
    const int iconSide = c.s(28);
    const int titleHeight = c.fonts.textHeight(kFontCardTitle);
    // The note wraps where the area is narrow (the compact window).
    const int noteHeight =
        measureText(c.dc, b.text2, c.font(kFontSmall), DT_WORDBREAK | DT_CENTER, inner.width()).cy;
    const int total = iconSide + c.s(8) + titleHeight + c.s(4) + noteHeight;
    int y = b.rect.top + (b.rect.height() - total) / 2;
    drawIcon(c.dc,
             {b.rect.left + (b.rect.width() - iconSide) / 2, y, b.rect.left + (b.rect.width() + iconSide) / 2,
              y + iconSide},
             b.icon, color::kAccent, 1.6f);
    y += iconSide + c.s(8);
    drawText(c.dc, b.text, {inner.left, y, inner.right, y + titleHeight}, c.font(kFontCardTitle),
             color::kText, kLine | DT_CENTER);
    y += titleHeight + c.s(4);
    drawText(c.dc, b.text2, {inner.left, y, inner.right, y + noteHeight}, c.font(kFontSmall), color::kMuted,
             DT_WORDBREAK | DT_CENTER);
}

void paintStatCell(const PaintContext& c, const Block& b) {
    fillRoundRect(c.dc, b.rect, float(c.s(8)), color::kPage);
    const Rect inner = b.rect.inset(c.s(10), 0);
    const int keyHeight = c.fonts.textHeight(kFontTiny);
    const int valueFont = b.font == kFontBody ? kFontStateTitle : b.font;
    const int valueHeight = c.fonts.textHeight(valueFont);
    const int top = b.rect.top + (b.rect.height() - keyHeight - valueHeight - c.s(1)) / 2;
    drawText(c.dc, b.text, {inner.left, top, inner.right, top + keyHeight}, c.font(kFontTiny), color::kMuted,
             kLine);
    drawText(c.dc, b.text2,
             {inner.left, top + keyHeight + c.s(1), inner.right, top + keyHeight + c.s(1) + valueHeight},
             c.font(valueFont), b.color, kLine);
}

void paintCheckRow(const PaintContext& c, const Block& b) {
    // A row that leads to its field shows so under the pointer.
    if (c.hovered(b))
        fillRoundRect(c.dc, b.rect.inset(-c.s(6), 0), float(c.s(6)), blend(color::kChip, color::kWhite, 50));
    fillRect(c.dc, {b.rect.left, b.rect.top, b.rect.right, b.rect.top + c.s(1)}, color::kHairline);
    const int dot = c.s(18);
    const Rect dotRect{b.rect.left, b.rect.top + (b.rect.height() - dot) / 2, b.rect.left + dot,
                       b.rect.top + (b.rect.height() - dot) / 2 + dot};
    const Rgb ink = b.on ? color::kAccent : b.warning ? color::kWarning : color::kError;
    fillEllipse(c.dc, dotRect,
                b.on        ? color::kAccentTint
                : b.warning ? color::kWarningTint
                            : color::kErrorTint);
    drawIcon(c.dc, dotRect.inset(c.s(4), c.s(4)), b.on ? Icon::Check : Icon::Minus, ink, 2.6f);
    const int labelLeft = dotRect.right + c.s(10);
    const int valueLeft = labelLeft + c.s(110);
    drawText(c.dc, b.text, {labelLeft, b.rect.top, valueLeft - c.s(6), b.rect.bottom}, c.font(kFontSmallBold),
             color::kText, kLine);
    drawText(c.dc, b.text2, {valueLeft, b.rect.top, b.rect.right, b.rect.bottom}, c.font(kFontSmall),
             b.on ? color::kSecondary : ink, kLine | DT_PATH_ELLIPSIS);
}

// The Derleme page's state tile (icon or spinner), or the Kimlik page's icon tile.
void paintStateTile(const PaintContext& c, const Block& b) {
    if (b.field == 1) {
        // The icon tile of the Kimlik page: the chosen icon's pixels on a checkerboard, or a placeholder.
        fillRoundRect(c.dc, b.rect, float(c.s(8)), color::kPage);
        strokeRoundRect(c.dc, b.rect, float(c.s(8)), color::kHairline, float(c.s(1)));
        if (!c.icon.empty())
            drawPixels(c.dc, b.rect.inset(c.s(6), c.s(6)), c.icon.width, c.icon.height, c.icon.data());
        else
            drawIcon(c.dc, centredSquare(b.rect, c.s(24)), Icon::Image, color::kMuted, 1.6f);
        return;
    }
    const BuildPageState state = static_cast<BuildPageState>(b.sub);
    const Rgb fill = state == BuildPageState::Failed   ? color::kErrorTint
                     : state == BuildPageState::NoSkin ? color::kChip
                                                       : color::kAccentTint;
    fillRoundRect(c.dc, b.rect, float(c.s(12)), fill);
    const Rgb ink = state == BuildPageState::NoSkin ? color::kSecondary : b.color;
    if (state == BuildPageState::Building)
        strokeArc(c.dc, centredSquare(b.rect, c.s(22)), float((c.model.tick * 30) % 360), 270, ink,
                  float(c.s(2)) + 0.5f);
    else
        drawIcon(c.dc, centredSquare(b.rect, c.s(24)), b.icon, ink, 2.2f);
}

void paintPill(const PaintContext& c, const Block& b) {
    fillRoundRect(c.dc, b.rect, float(b.rect.height()) / 2, color::kAccentTint);
    drawText(c.dc, b.text, b.rect, c.font(kFontTiny), color::kAccent, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
}

// The live preview: the patcher's picture on a checkerboard, or the panel's empty state.
void paintPreviewArea(const PaintContext& c, const Block& b) {
    // A checkerboard shows where the patcher window is transparent.
    fillRoundRect(c.dc, b.rect, float(c.s(8)), color::kWhite);
    {
        SavedDC saved(c.dc);
        IntersectClipRect(c.dc, b.rect.left + c.s(1), b.rect.top + c.s(1), b.rect.right - c.s(1),
                          b.rect.bottom - c.s(1));
        const int cell = c.s(8);
        for (int y = b.rect.top; y < b.rect.bottom; y += cell)
            for (int x = b.rect.left + (((y - b.rect.top) / cell) % 2) * cell; x < b.rect.right;
                 x += 2 * cell)
                fillRect(c.dc, {x, y, x + cell, y + cell}, color::kChip);
    }
    strokeRoundRect(c.dc, b.rect, float(c.s(8)), color::kHairline, float(c.s(1)));
    if (b.on && !c.previewPixels.empty()) {
        drawPixels(c.dc, b.rect.inset(c.s(10), c.s(10)), c.previewWidth, c.previewHeight,
                   c.previewPixels.data());
        return;
    }
    // The empty states, on a quiet plate in the middle.
    const Rect inner = b.rect.inset(c.s(24), 0);
    const SIZE size = measureText(c.dc, b.text, c.font(kFontSmall), DT_WORDBREAK | DT_CENTER, inner.width());
    const int iconSide = c.s(28);
    const int plateHeight = iconSide + c.s(10) + size.cy + c.s(36);
    const int plateWidth = std::min(inner.width(), int(size.cx) + c.s(56));
    const Rect plate{b.rect.left + (b.rect.width() - plateWidth) / 2,
                     b.rect.top + (b.rect.height() - plateHeight) / 2,
                     b.rect.left + (b.rect.width() + plateWidth) / 2,
                     b.rect.top + (b.rect.height() - plateHeight) / 2 + plateHeight};
    fillRoundRect(c.dc, plate, float(c.s(12)), color::kWhite, 235);
    strokeRoundRect(c.dc, plate, float(c.s(12)), color::kHairline, float(c.s(1)));
    const int top = plate.top + c.s(18);
    const bool unresolved = c.model.preview == PreviewState::Unresolved;
    drawIcon(c.dc,
             {plate.left + (plate.width() - iconSide) / 2, top, plate.left + (plate.width() + iconSide) / 2,
              top + iconSide},
             unresolved ? Icon::Warning : Icon::Image, unresolved ? color::kError : color::kMuted, 1.6f);
    drawText(c.dc, b.text,
             {plate.left + c.s(12), top + iconSide + c.s(10), plate.right - c.s(12), plate.bottom},
             c.font(kFontSmall), unresolved ? color::kError : color::kSecondary, DT_WORDBREAK | DT_CENTER);
}

void paintPagerText(const PaintContext& c, const Block& b) {
    drawText(c.dc, b.text, b.rect, c.font(kFontTiny), color::kMuted, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
}

void paintSeparator(const PaintContext& c, const Block& b) {
    fillRect(c.dc, b.rect, color::kHairline);
}

} // namespace nv::ui::win
