// The painters of what the operator clicks or types into: buttons, field boxes, chips and switches.

#include "ui/win32/block_painters.h"

#include <algorithm>

namespace nv::ui::win {

// The sidebar's build button and the Derleme page's: filled with the accent, a spinner beside the text while
// the build runs.
void paintPrimaryButton(const PaintContext& c, const Block& b) {
    Rgb fill = color::kAccent;
    if (b.on)
        fill = blend(color::kAccent, color::kWhite, 25);
    else if (c.pressed(b))
        fill = blend(color::kAccent, color::kText, 30);
    else if (c.hovered(b))
        fill = blend(color::kAccent, color::kThumbActive, 45);
    fillRoundRect(c.dc, b.rect, float(c.s(b.kind == BlockKind::SidebarBuild ? 10 : 9)), fill);
    const int textFont = b.kind == BlockKind::SidebarBuild ? kFontCardTitle : kFontBodyBold;
    const SIZE size = measureText(c.dc, b.text, c.font(textFont), DT_SINGLELINE);
    const int iconSide = c.s(16);
    const bool withIcon = b.hasIcon || b.on;
    const int total = size.cx + (withIcon ? iconSide + c.s(8) : 0);
    int x = b.rect.left + (b.rect.width() - total) / 2;
    if (withIcon) {
        const Rect iconRect{x, b.rect.top + (b.rect.height() - iconSide) / 2, x + iconSide,
                            b.rect.top + (b.rect.height() - iconSide) / 2 + iconSide};
        if (b.on)
            strokeArc(c.dc, iconRect.inset(c.s(1), c.s(1)), float((c.model.tick * 30) % 360), 270,
                      color::kWhite, float(c.s(2)));
        else
            drawIcon(c.dc, iconRect, b.icon, color::kWhite, 2.0f);
        x += iconSide + c.s(8);
    }
    drawText(c.dc, b.text, {x, b.rect.top, b.rect.right, b.rect.bottom}, c.font(textFont), color::kWhite,
             kLine);
}

// A secondary button: white with a hairline edge, its text after an optional icon, or only an icon.
void paintButton(const PaintContext& c, const Block& b) {
    const float r = float(c.s(b.rect.height() <= c.s(26) ? 6 : 8));
    Rgb fill = color::kWhite;
    if (c.pressed(b))
        fill = color::kChip;
    else if (c.hovered(b))
        fill = blend(color::kChip, color::kWhite, 50);
    fillRoundRect(c.dc, b.rect, r, b.disabled ? color::kPage : fill);
    strokeRoundRect(c.dc, b.rect, r, color::kHairline, float(c.s(1)));
    const Rgb ink = b.disabled ? color::kMuted : (b.color == color::kText ? color::kText : b.color);
    if (b.kind == BlockKind::IconButton) {
        drawIcon(c.dc, centredSquare(b.rect, std::min(c.s(16), b.rect.height() - c.s(8))), b.icon,
                 b.disabled ? color::kThumb : color::kSecondary, 2.0f);
        return;
    }
    const SIZE size = measureText(c.dc, b.text, c.font(b.font), DT_SINGLELINE);
    const int iconSide = c.s(14);
    const int total = size.cx + (b.hasIcon ? iconSide + c.s(8) : 0);
    int x = b.rect.left + std::max(c.s(8), (b.rect.width() - total) / 2);
    if (b.hasIcon) {
        drawIcon(c.dc,
                 {x, b.rect.top + (b.rect.height() - iconSide) / 2, x + iconSide,
                  b.rect.top + (b.rect.height() - iconSide) / 2 + iconSide},
                 b.icon, b.disabled ? color::kMuted : (ink == color::kText ? color::kSecondary : ink), 2.0f);
        x += iconSide + c.s(8);
    }
    drawText(c.dc, b.text, {x, b.rect.top, b.rect.right - c.s(6), b.rect.bottom}, c.font(b.font), ink, kLine);
}

// The box an edit control sits in; the control draws the text itself.
void paintFieldBox(const PaintContext& c, const Block& b) {
    const float r = float(c.s(8));
    if (b.on) {
        // The focus ring: a soft halo outside the box and a green edge.
        const Rect halo{b.rect.left - c.s(3), b.rect.top - c.s(3), b.rect.right + c.s(3),
                        b.rect.bottom + c.s(3)};
        fillRoundRect(c.dc, halo, r + float(c.s(3)), color::kAccentTint);
    }
    fillRoundRect(c.dc, b.rect, r, b.disabled ? color::kPage : color::kWhite);
    strokeRoundRect(c.dc, b.rect, r, b.on ? color::kThumbActive : color::kHairline, float(c.s(1)));
}

// One connection count; the current one stands out.
void paintChip(const PaintContext& c, const Block& b) {
    // The layout marks the chip that stands for the current value (a connection count, a signing source).
    const ChipLook look = chipLook(b.on ? b.sub : -1, b.sub, c.hovered(b));
    fillRoundRect(c.dc, b.rect, float(c.s(8)), b.disabled && !look.border ? color::kPage : look.fill);
    if (look.border) strokeRoundRect(c.dc, b.rect, float(c.s(8)), color::kHairline, float(c.s(1)));
    drawText(c.dc, b.text, b.rect, c.font(look.bold ? kFontSmallBold : kFontSmall), look.text,
             DT_CENTER | DT_VCENTER | DT_SINGLELINE);
}

// A switch with its title and its line beside it.
void paintToggle(const PaintContext& c, const Block& b) {
    if (c.hovered(b))
        fillRoundRect(c.dc, b.rect.inset(-c.s(8), 0), float(c.s(8)), blend(color::kChip, color::kWhite, 60));
    const int trackWidth = c.s(36), trackHeight = c.s(20);
    const Rect track{b.rect.left, b.rect.top + (b.rect.height() - trackHeight) / 2, b.rect.left + trackWidth,
                     b.rect.top + (b.rect.height() - trackHeight) / 2 + trackHeight};
    const Rgb trackColor =
        b.on ? (b.disabled ? blend(color::kAccent, color::kWhite, 50) : color::kAccent) : color::kThumb;
    fillRoundRect(c.dc, track, float(trackHeight) / 2, trackColor);
    const int knob = trackHeight - c.s(4);
    const int knobLeft = b.on ? track.right - c.s(2) - knob : track.left + c.s(2);
    fillEllipse(c.dc, {knobLeft, track.top + c.s(2), knobLeft + knob, track.top + c.s(2) + knob},
                color::kWhite);
    const int left = track.right + c.s(12);
    const int titleHeight = c.fonts.textHeight(kFontBodyBold), lineHeight = c.fonts.textHeight(kFontTiny);
    const int top = b.rect.top + (b.rect.height() - titleHeight - lineHeight) / 2;
    drawText(c.dc, b.text, {left, top, b.rect.right, top + titleHeight}, c.font(kFontBodyBold), color::kText,
             kLine);
    drawText(c.dc, b.text2, {left, top + titleHeight, b.rect.right, top + titleHeight + lineHeight},
             c.font(kFontTiny), color::kMuted, kLine);
}

void paintFocusRing(const PaintContext& c, const Block& b) {
    if (c.model.focusItem == kItemNone || b.item != c.model.focusItem || b.disabled) return;
    // The chips are one stop: the ring is on the chosen one.
    if (b.sub != c.model.focusSub) return;
    const int out = c.s(b.kind == BlockKind::Toggle ? 4 : 2);
    const float radius = float(c.s(b.kind == BlockKind::NavEntry || b.kind == BlockKind::Chip ? 10 : 11));
    strokeRoundRect(c.dc, b.rect.inset(-out, -out), radius, color::kThumbActive, float(c.s(2)));
}

void paintThinScrollBar(HDC dc, const Rect& track, const ThinScrollBar& bar, Rgb thumb, int dpi) {
    const float radius = float(scaleLength(3, dpi)) / 2;
    const Rect rail{track.left, bar.trackTop, track.right, bar.trackBottom};
    fillRoundRect(dc, rail, radius, blend(color::kHairline, color::kWhite, 40));
    fillRoundRect(dc, {track.left, bar.thumbTop, track.right, bar.thumbBottom}, radius, thumb);
}

} // namespace nv::ui::win
