// The frame's painters: the sidebar with its mark, sections and skin card, and the footer.

#include "ui/win32/block_painters.h"

namespace nv::ui::win {

void paintSidebarBackground(const PaintContext& c, const Block& b) {
    fillRect(c.dc, b.rect, color::kWhite);
    fillRect(c.dc, {b.rect.right - c.s(1), b.rect.top, b.rect.right, b.rect.bottom}, color::kHairline);
}

void paintBrand(const PaintContext& c, const Block& b) {
    const Rect logo{b.rect.left, b.rect.top, b.rect.left + c.s(34), b.rect.top + c.s(34)};
    fillRoundRect(c.dc, logo, float(c.s(9)), color::kAccent);
    drawIcon(c.dc, centredSquare(logo, c.s(20)), Icon::Package, color::kWhite, 1.8f);
    const int textLeft = logo.right + c.s(10);
    const int nameHeight = c.fonts.textHeight(kFontBrand);
    const int subHeight = c.fonts.textHeight(kFontTiny);
    const int top = logo.top + (logo.height() - nameHeight - subHeight) / 2;
    drawText(c.dc, b.text, {textLeft, top, b.rect.right, top + nameHeight}, c.font(kFontBrand), color::kText,
             kLine);
    drawText(c.dc, b.text2, {textLeft, top + nameHeight, b.rect.right, top + nameHeight + subHeight},
             c.font(kFontTiny), color::kMuted, kLine);
}

void paintNavEntry(const PaintContext& c, const Block& b) {
    if (b.on)
        fillRoundRect(c.dc, b.rect, float(c.s(8)), color::kAccentSoft);
    else if (c.hovered(b))
        fillRoundRect(c.dc, b.rect, float(c.s(8)), blend(color::kChip, color::kWhite, 40));
    const Rect badge = {b.rect.left + c.s(10), b.rect.top + (b.rect.height() - c.s(22)) / 2,
                        b.rect.left + c.s(32), b.rect.top + (b.rect.height() - c.s(22)) / 2 + c.s(22)};
    const bool done = b.sub < c.model.section;
    fillRoundRect(c.dc, badge, float(c.s(6)),
                  b.on   ? color::kAccent
                  : done ? color::kAccentTint
                         : color::kChip);
    drawText(c.dc, std::to_wstring(b.sub + 1), badge, c.font(kFontSmallBold),
             b.on   ? color::kWhite
             : done ? color::kAccent
                    : color::kSecondary,
             DT_CENTER | DT_VCENTER | DT_SINGLELINE);
    const int left = badge.right + c.s(10);
    const int titleHeight = c.fonts.textHeight(kFontBodyBold), subHeight = c.fonts.textHeight(kFontTiny);
    const int top = b.rect.top + (b.rect.height() - titleHeight - subHeight) / 2;
    drawText(c.dc, b.text, {left, top, b.rect.right - c.s(6), top + titleHeight}, c.font(kFontBodyBold),
             b.on ? color::kAccent : color::kText, kLine);
    drawText(c.dc, b.text2, {left, top + titleHeight, b.rect.right - c.s(6), top + titleHeight + subHeight},
             c.font(kFontTiny), color::kMuted, kLine);
}

void paintSkinCard(const PaintContext& c, const Block& b) {
    fillRoundRect(c.dc, b.rect, float(c.s(10)), color::kPage);
    strokeRoundRect(c.dc, b.rect, float(c.s(10)), color::kHairline, float(c.s(1)));
    const int left = b.rect.left + c.s(12), right = b.rect.right - c.s(12);
    const int nameHeight = c.fonts.textHeight(kFontBodyBold);
    const int top = b.rect.top + c.s(10);
    drawText(c.dc, b.text, {left, top, right, top + nameHeight}, c.font(kFontBodyBold), color::kText, kLine);
    drawText(c.dc, b.text2, {left, top + nameHeight + c.s(2), right, b.rect.bottom - c.s(8)},
             c.font(kFontTiny), color::kMuted, DT_END_ELLIPSIS);
}

void paintFooterBar(const PaintContext& c, const Block& b) {
    fillRect(c.dc, b.rect, color::kWhite);
    fillRect(c.dc, {b.rect.left, b.rect.top, b.rect.right, b.rect.top + c.s(1)}, color::kHairline);
}

void paintStatusDot(const PaintContext& c, const Block& b) {
    fillEllipse(c.dc, b.rect, b.color);
}

} // namespace nv::ui::win
