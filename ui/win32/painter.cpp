// Painting the window: the page model gathered from the application, the layout computed from it, and each
// block of the layout drawn with the toolkit.

#include "ui/win32/app.h"

#include "core/files.h"
#include "core/paths.h"
#include "core/text.h"

#include <cmath>

namespace nv::ui::win {

PageModel BuilderApp::pageModel() const {
    PageModel m;
    m.section = section_;
    m.hoverItem = hoverItem_;
    m.hoverSub = hoverSub_;
    m.pressedItem = pressedItem_;
    m.pressedSub = pressedSub_;
    m.tick = tick_;
    HWND focus = GetFocus();
    for (const FieldRecord& field : fields_)
        if (field.hwnd == focus) m.focusField = field.id;

    m.skinLoaded = skinLoaded_;
    m.skinLoadFailed = skinLoadFailed_;
    m.skinSource = skinSource_;
    m.summary = summary_;
    for (size_t i = 0; i < linkButtons_.size(); ++i) {
        const ButtonLink& button = workspace_.buttonLinks[linkButtons_[i]];
        std::wstring note = utf8ToWide(button.image);
        if (!note.empty()) note += L"  •  ";
        note += button.localeKey.empty() ? L"skin.xml'den" : L"dil dosyasından";
        m.links.push_back({kFieldLinkFirst + static_cast<int>(i), utf8ToWide(button.id), note});
    }
    m.linkPage = linkPage_;
    if (skinLoaded_) {
        if (!workspace_.importedServerAddress.empty()) m.configOrigin = L"skin.xml'den";
        if (!workspace_.importedNewsAddress.empty()) m.newsOrigin = L"dil dosyasından";
        if (!workspace_.importedFeedUrl.empty()) m.feedOrigin = L"skin.xml'den";
    }

    m.connections = connections_;
    m.toggles = toggles_;
    m.signing = signing_;
    m.signtoolFound = signtoolFound_;
    m.signtoolPath = signtoolPath_;
    m.iconPath = iconPath_;
    m.iconPreview = !iconPreview_.empty();

    m.building = building();
    m.buildState = buildPageState(skinLoaded_, m.building, lastFinished_, lastSucceeded_);
    m.outputPath = fieldText(kFieldOutPath);
    m.lastMessage = lastResult_.message;
    m.hasResult = lastFinished_ && lastSucceeded_ && !m.building;
    m.crc = lastResult_.crc32;
    m.signedResult = lastResult_.wasSigned;
    m.elapsedMs = elapsed_;

    ReadinessInputs in;
    in.skinLoaded = skinLoaded_;
    in.skinSource = skinSource_;
    in.skinWidth = summary_.resolved ? summary_.width : 0;
    in.skinHeight = summary_.resolved ? summary_.height : 0;
    in.configUrl = fieldText(kFieldConfigUrl);
    in.outputPath = m.outputPath;
    const std::wstring folder = pathParent(trim(m.outputPath));
    in.outputFolderExists = !folder.empty() && folderExists(folder);
    in.iconPath = iconPath_;
    in.signing = signing_;
    in.certificatePath = fieldText(kFieldPfx);
    in.templateExists = fileExists(templatePath_);
    m.readiness = readinessRows(in);

    m.status = status_;
    m.statusWarning = statusFlag_ != 0;
    if (!skinLoaded_)
        m.preview = PreviewState::NoSkin;
    else if (!summary_.resolved)
        m.preview = PreviewState::Unresolved;
    else
        m.preview = previewRendered_ ? PreviewState::Pixels : PreviewState::Waiting;
    m.previewWidth = previewWidth_;
    m.previewHeight = previewHeight_;
    return m;
}

WindowLayout BuilderApp::computeLayout() {
    RECT client{};
    GetClientRect(hwnd_, &client);
    WindowDC screen(hwnd_);
    GdiMeasure measure(screen.get(), fonts_);
    return layoutWindow(client.right, client.bottom, dpi_, pageModel(), measure);
}

void BuilderApp::paint(HDC dc) {
    layout_ = computeLayout();
    const PageModel model = pageModel();
    fillRect(dc, layout_.frame.client, color::kPage);
    for (const Block& block : layout_.blocks)
        paintBlock(dc, block, model);
}

namespace {

constexpr UINT kLine = DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS;

Rect centredSquare(const Rect& r, int side) {
    const int x = r.left + (r.width() - side) / 2, y = r.top + (r.height() - side) / 2;
    return {x, y, x + side, y + side};
}

} // namespace

void BuilderApp::paintBlock(HDC dc, const Block& b, const PageModel& m) {
    auto s = [this](int v) { return scaleLength(v, dpi_); };
    auto font = [this](int f) { return fonts_.get(f); };
    const bool hovered = b.item != kItemNone && !b.disabled && m.hoverItem == b.item && m.hoverSub == b.sub;
    const bool pressed = hovered && m.pressedItem == b.item && m.pressedSub == b.sub;
    const float radius8 = float(s(8));

    switch (b.kind) {
    case BlockKind::SidebarBackground:
        fillRect(dc, b.rect, color::kWhite);
        fillRect(dc, {b.rect.right - s(1), b.rect.top, b.rect.right, b.rect.bottom}, color::kHairline);
        break;
    case BlockKind::Brand: {
        const Rect logo{b.rect.left, b.rect.top, b.rect.left + s(34), b.rect.top + s(34)};
        fillRoundRect(dc, logo, float(s(9)), color::kAccent);
        drawIcon(dc, centredSquare(logo, s(20)), Icon::Package, color::kWhite, 1.8f);
        const int textLeft = logo.right + s(10);
        const int nameHeight = fonts_.textHeight(kFontBrand);
        const int subHeight = fonts_.textHeight(kFontTiny);
        const int top = logo.top + (logo.height() - nameHeight - subHeight) / 2;
        drawText(dc, b.text, {textLeft, top, b.rect.right, top + nameHeight}, font(kFontBrand), color::kText,
                 kLine);
        drawText(dc, b.text2, {textLeft, top + nameHeight, b.rect.right, top + nameHeight + subHeight},
                 font(kFontTiny), color::kMuted, kLine);
        break;
    }
    case BlockKind::NavEntry: {
        if (b.on)
            fillRoundRect(dc, b.rect, radius8, color::kAccentSoft);
        else if (hovered)
            fillRoundRect(dc, b.rect, radius8, blend(color::kChip, color::kWhite, 40));
        const Rect badge = {b.rect.left + s(10), b.rect.top + (b.rect.height() - s(22)) / 2,
                            b.rect.left + s(32), b.rect.top + (b.rect.height() - s(22)) / 2 + s(22)};
        const bool done = b.sub < m.section;
        fillRoundRect(dc, badge, float(s(6)),
                      b.on   ? color::kAccent
                      : done ? color::kAccentTint
                             : color::kChip);
        drawText(dc, std::to_wstring(b.sub + 1), badge, font(kFontSmallBold),
                 b.on   ? color::kWhite
                 : done ? color::kAccent
                        : color::kSecondary,
                 DT_CENTER | DT_VCENTER | DT_SINGLELINE);
        const int left = badge.right + s(10);
        const int titleHeight = fonts_.textHeight(kFontBodyBold), subHeight = fonts_.textHeight(kFontTiny);
        const int top = b.rect.top + (b.rect.height() - titleHeight - subHeight) / 2;
        drawText(dc, b.text, {left, top, b.rect.right - s(6), top + titleHeight}, font(kFontBodyBold),
                 b.on ? color::kAccent : color::kText, kLine);
        drawText(dc, b.text2, {left, top + titleHeight, b.rect.right - s(6), top + titleHeight + subHeight},
                 font(kFontTiny), color::kMuted, kLine);
        break;
    }
    case BlockKind::SkinCard: {
        fillRoundRect(dc, b.rect, float(s(10)), color::kPage);
        strokeRoundRect(dc, b.rect, float(s(10)), color::kHairline, float(s(1)));
        const int left = b.rect.left + s(12), right = b.rect.right - s(12);
        const int nameHeight = fonts_.textHeight(kFontBodyBold);
        const int top = b.rect.top + s(10);
        drawText(dc, b.text, {left, top, right, top + nameHeight}, font(kFontBodyBold), color::kText, kLine);
        drawText(dc, b.text2, {left, top + nameHeight + s(2), right, b.rect.bottom - s(8)}, font(kFontTiny),
                 color::kMuted, DT_END_ELLIPSIS);
        break;
    }
    case BlockKind::SidebarBuild:
    case BlockKind::PrimaryButton: {
        Rgb fill = color::kAccent;
        if (b.on)
            fill = blend(color::kAccent, color::kWhite, 25);
        else if (pressed)
            fill = blend(color::kAccent, color::kText, 30);
        else if (hovered)
            fill = blend(color::kAccent, color::kThumbActive, 45);
        fillRoundRect(dc, b.rect, float(s(b.kind == BlockKind::SidebarBuild ? 10 : 9)), fill);
        const int textFont = b.kind == BlockKind::SidebarBuild ? kFontCardTitle : kFontBodyBold;
        const SIZE size = measureText(dc, b.text, font(textFont), DT_SINGLELINE);
        const int iconSide = s(16);
        const bool withIcon = b.hasIcon || b.on;
        const int total = size.cx + (withIcon ? iconSide + s(8) : 0);
        int x = b.rect.left + (b.rect.width() - total) / 2;
        if (withIcon) {
            const Rect iconRect{x, b.rect.top + (b.rect.height() - iconSide) / 2, x + iconSide,
                                b.rect.top + (b.rect.height() - iconSide) / 2 + iconSide};
            if (b.on)
                strokeArc(dc, iconRect.inset(s(1), s(1)), float((m.tick * 30) % 360), 270, color::kWhite,
                          float(s(2)));
            else
                drawIcon(dc, iconRect, b.icon, color::kWhite, 2.0f);
            x += iconSide + s(8);
        }
        drawText(dc, b.text, {x, b.rect.top, b.rect.right, b.rect.bottom}, font(textFont), color::kWhite,
                 kLine);
        break;
    }
    case BlockKind::FooterBar:
        fillRect(dc, b.rect, color::kWhite);
        fillRect(dc, {b.rect.left, b.rect.top, b.rect.right, b.rect.top + s(1)}, color::kHairline);
        break;
    case BlockKind::StatusDot:
        fillEllipse(dc, b.rect, b.color);
        break;
    case BlockKind::Card:
        fillRoundRect(dc, b.rect, float(s(12)), color::kWhite);
        strokeRoundRect(dc, b.rect, float(s(12)), color::kHairline, float(s(1)));
        break;
    case BlockKind::Text: {
        UINT flags = 0;
        if (b.wrap)
            flags = DT_WORDBREAK;
        else
            flags = kLine;
        if (b.align == Align::Center) flags |= DT_CENTER;
        if (b.align == Align::Right) flags |= DT_RIGHT;
        if (b.wrap) {
            drawText(dc, b.text, b.rect, font(b.font), b.color, flags);
            break;
        }
        // A message of several lines (a build error, say) reads as one line here.
        std::wstring line = b.text;
        for (wchar_t& c : line)
            if (c == L'\n' || c == L'\r') c = L' ';
        if (b.path) flags = (flags & ~UINT(DT_END_ELLIPSIS)) | DT_PATH_ELLIPSIS;
        drawText(dc, line, b.rect, font(b.font), b.color, flags);
        break;
    }
    case BlockKind::FieldBox: {
        const float r = float(s(8));
        if (b.on) {
            // The focus ring: a soft halo outside the box and a green edge.
            const Rect halo{b.rect.left - s(3), b.rect.top - s(3), b.rect.right + s(3), b.rect.bottom + s(3)};
            fillRoundRect(dc, halo, r + float(s(3)), color::kAccentTint);
        }
        fillRoundRect(dc, b.rect, r, b.disabled ? color::kPage : color::kWhite);
        strokeRoundRect(dc, b.rect, r, b.on ? color::kThumbActive : color::kHairline, float(s(1)));
        break;
    }
    case BlockKind::Button:
    case BlockKind::IconButton: {
        const float r = float(s(b.rect.height() <= s(26) ? 6 : 8));
        Rgb fill = color::kWhite;
        if (pressed)
            fill = color::kChip;
        else if (hovered)
            fill = blend(color::kChip, color::kWhite, 50);
        fillRoundRect(dc, b.rect, r, b.disabled ? color::kPage : fill);
        strokeRoundRect(dc, b.rect, r, color::kHairline, float(s(1)));
        const Rgb ink = b.disabled ? color::kMuted : (b.color == color::kText ? color::kText : b.color);
        if (b.kind == BlockKind::IconButton) {
            drawIcon(dc, centredSquare(b.rect, std::min(s(16), b.rect.height() - s(8))), b.icon,
                     b.disabled ? color::kThumb : color::kSecondary, 2.0f);
            break;
        }
        const SIZE size = measureText(dc, b.text, font(b.font), DT_SINGLELINE);
        const int iconSide = s(14);
        const int total = size.cx + (b.hasIcon ? iconSide + s(8) : 0);
        int x = b.rect.left + std::max(s(8), (b.rect.width() - total) / 2);
        if (b.hasIcon) {
            drawIcon(dc,
                     {x, b.rect.top + (b.rect.height() - iconSide) / 2, x + iconSide,
                      b.rect.top + (b.rect.height() - iconSide) / 2 + iconSide},
                     b.icon, b.disabled ? color::kMuted : (ink == color::kText ? color::kSecondary : ink),
                     2.0f);
            x += iconSide + s(8);
        }
        drawText(dc, b.text, {x, b.rect.top, b.rect.right - s(6), b.rect.bottom}, font(b.font), ink, kLine);
        break;
    }
    case BlockKind::DropZone: {
        fillRoundRect(dc, b.rect, float(s(12)), color::kDropFill);
        strokeDashedRoundRect(dc, b.rect, float(s(12)), color::kDropEdge, float(s(3)) / 2);
        const Rect inner = b.rect.inset(s(16), 0);
        const int iconSide = s(28);
        const int titleHeight = fonts_.textHeight(kFontCardTitle);
        // The note wraps where the area is narrow (the compact window).
        const int noteHeight =
            measureText(dc, b.text2, font(kFontSmall), DT_WORDBREAK | DT_CENTER, inner.width()).cy;
        const int total = iconSide + s(8) + titleHeight + s(4) + noteHeight;
        int y = b.rect.top + (b.rect.height() - total) / 2;
        drawIcon(dc,
                 {b.rect.left + (b.rect.width() - iconSide) / 2, y,
                  b.rect.left + (b.rect.width() + iconSide) / 2, y + iconSide},
                 b.icon, color::kAccent, 1.6f);
        y += iconSide + s(8);
        drawText(dc, b.text, {inner.left, y, inner.right, y + titleHeight}, font(kFontCardTitle),
                 color::kText, kLine | DT_CENTER);
        y += titleHeight + s(4);
        drawText(dc, b.text2, {inner.left, y, inner.right, y + noteHeight}, font(kFontSmall), color::kMuted,
                 DT_WORDBREAK | DT_CENTER);
        break;
    }
    case BlockKind::StatCell: {
        fillRoundRect(dc, b.rect, radius8, color::kPage);
        const Rect inner = b.rect.inset(s(10), 0);
        const int keyHeight = fonts_.textHeight(kFontTiny);
        const int valueFont = b.font == kFontBody ? kFontStateTitle : b.font;
        const int valueHeight = fonts_.textHeight(valueFont);
        const int top = b.rect.top + (b.rect.height() - keyHeight - valueHeight - s(1)) / 2;
        drawText(dc, b.text, {inner.left, top, inner.right, top + keyHeight}, font(kFontTiny), color::kMuted,
                 kLine);
        drawText(dc, b.text2,
                 {inner.left, top + keyHeight + s(1), inner.right, top + keyHeight + s(1) + valueHeight},
                 font(valueFont), b.color, kLine);
        break;
    }
    case BlockKind::Chip: {
        const ChipLook look = chipLook(b.sub, m.connections, hovered);
        fillRoundRect(dc, b.rect, radius8, b.disabled && !look.border ? color::kPage : look.fill);
        if (look.border) strokeRoundRect(dc, b.rect, radius8, color::kHairline, float(s(1)));
        drawText(dc, b.text, b.rect, font(look.bold ? kFontSmallBold : kFontSmall), look.text,
                 DT_CENTER | DT_VCENTER | DT_SINGLELINE);
        break;
    }
    case BlockKind::Toggle: {
        if (hovered)
            fillRoundRect(dc, b.rect.inset(-s(8), 0), radius8, blend(color::kChip, color::kWhite, 60));
        const int trackWidth = s(36), trackHeight = s(20);
        const Rect track{b.rect.left, b.rect.top + (b.rect.height() - trackHeight) / 2,
                         b.rect.left + trackWidth,
                         b.rect.top + (b.rect.height() - trackHeight) / 2 + trackHeight};
        const Rgb trackColor =
            b.on ? (b.disabled ? blend(color::kAccent, color::kWhite, 50) : color::kAccent) : color::kThumb;
        fillRoundRect(dc, track, float(trackHeight) / 2, trackColor);
        const int knob = trackHeight - s(4);
        const int knobLeft = b.on ? track.right - s(2) - knob : track.left + s(2);
        fillEllipse(dc, {knobLeft, track.top + s(2), knobLeft + knob, track.top + s(2) + knob},
                    color::kWhite);
        const int left = track.right + s(12);
        const int titleHeight = fonts_.textHeight(kFontBodyBold), lineHeight = fonts_.textHeight(kFontTiny);
        const int top = b.rect.top + (b.rect.height() - titleHeight - lineHeight) / 2;
        drawText(dc, b.text, {left, top, b.rect.right, top + titleHeight}, font(kFontBodyBold), color::kText,
                 kLine);
        drawText(dc, b.text2, {left, top + titleHeight, b.rect.right, top + titleHeight + lineHeight},
                 font(kFontTiny), color::kMuted, kLine);
        break;
    }
    case BlockKind::CheckRow: {
        fillRect(dc, {b.rect.left, b.rect.top, b.rect.right, b.rect.top + s(1)}, color::kHairline);
        const int dot = s(18);
        const Rect dotRect{b.rect.left, b.rect.top + (b.rect.height() - dot) / 2, b.rect.left + dot,
                           b.rect.top + (b.rect.height() - dot) / 2 + dot};
        fillEllipse(dc, dotRect, b.on ? color::kAccentTint : color::kErrorTint);
        drawIcon(dc, dotRect.inset(s(4), s(4)), b.on ? Icon::Check : Icon::Minus,
                 b.on ? color::kAccent : color::kError, 2.6f);
        const int labelLeft = dotRect.right + s(10);
        const int valueLeft = labelLeft + s(110);
        drawText(dc, b.text, {labelLeft, b.rect.top, valueLeft - s(6), b.rect.bottom}, font(kFontSmallBold),
                 color::kText, kLine);
        drawText(dc, b.text2, {valueLeft, b.rect.top, b.rect.right, b.rect.bottom}, font(kFontSmall),
                 b.on ? color::kSecondary : color::kError, kLine | DT_PATH_ELLIPSIS);
        break;
    }
    case BlockKind::StateTile: {
        if (b.field == 1) {
            // The icon tile of the Kimlik page: the chosen icon's pixels on a checkerboard, or a placeholder.
            fillRoundRect(dc, b.rect, radius8, color::kPage);
            strokeRoundRect(dc, b.rect, radius8, color::kHairline, float(s(1)));
            if (!iconPreview_.empty())
                drawPixels(dc, b.rect.inset(s(6), s(6)), iconPreview_.width, iconPreview_.height,
                           iconPreview_.data());
            else
                drawIcon(dc, centredSquare(b.rect, s(24)), Icon::Image, color::kMuted, 1.6f);
            break;
        }
        const BuildPageState state = static_cast<BuildPageState>(b.sub);
        const Rgb fill = state == BuildPageState::Failed   ? color::kErrorTint
                         : state == BuildPageState::NoSkin ? color::kChip
                                                           : color::kAccentTint;
        fillRoundRect(dc, b.rect, float(s(12)), fill);
        const Rgb ink = state == BuildPageState::NoSkin ? color::kSecondary : b.color;
        if (state == BuildPageState::Building)
            strokeArc(dc, centredSquare(b.rect, s(22)), float((m.tick * 30) % 360), 270, ink,
                      float(s(2)) + 0.5f);
        else
            drawIcon(dc, centredSquare(b.rect, s(24)), b.icon, ink, 2.2f);
        break;
    }
    case BlockKind::Pill:
        fillRoundRect(dc, b.rect, float(b.rect.height()) / 2, color::kAccentTint);
        drawText(dc, b.text, b.rect, font(kFontTiny), color::kAccent, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
        break;
    case BlockKind::PreviewArea: {
        // A checkerboard shows where the patcher window is transparent.
        fillRoundRect(dc, b.rect, radius8, color::kWhite);
        {
            SavedDC saved(dc);
            IntersectClipRect(dc, b.rect.left + s(1), b.rect.top + s(1), b.rect.right - s(1),
                              b.rect.bottom - s(1));
            const int cell = s(8);
            for (int y = b.rect.top; y < b.rect.bottom; y += cell)
                for (int x = b.rect.left + (((y - b.rect.top) / cell) % 2) * cell; x < b.rect.right;
                     x += 2 * cell)
                    fillRect(dc, {x, y, x + cell, y + cell}, color::kChip);
        }
        strokeRoundRect(dc, b.rect, radius8, color::kHairline, float(s(1)));
        if (b.on && !previewPixels_.empty()) {
            drawPixels(dc, b.rect.inset(s(10), s(10)), previewWidth_, previewHeight_, previewPixels_.data());
            break;
        }
        // The empty states, on a quiet plate in the middle.
        const Rect inner = b.rect.inset(s(24), 0);
        const SIZE size = measureText(dc, b.text, font(kFontSmall), DT_WORDBREAK | DT_CENTER, inner.width());
        const int iconSide = s(28);
        const int plateHeight = iconSide + s(10) + size.cy + s(36);
        const int plateWidth = std::min(inner.width(), int(size.cx) + s(56));
        const Rect plate{b.rect.left + (b.rect.width() - plateWidth) / 2,
                         b.rect.top + (b.rect.height() - plateHeight) / 2,
                         b.rect.left + (b.rect.width() + plateWidth) / 2,
                         b.rect.top + (b.rect.height() - plateHeight) / 2 + plateHeight};
        fillRoundRect(dc, plate, float(s(12)), color::kWhite, 235);
        strokeRoundRect(dc, plate, float(s(12)), color::kHairline, float(s(1)));
        const int top = plate.top + s(18);
        const bool unresolved = m.preview == PreviewState::Unresolved;
        drawIcon(dc,
                 {plate.left + (plate.width() - iconSide) / 2, top,
                  plate.left + (plate.width() + iconSide) / 2, top + iconSide},
                 unresolved ? Icon::Warning : Icon::Image, unresolved ? color::kError : color::kMuted, 1.6f);
        drawText(dc, b.text, {plate.left + s(12), top + iconSide + s(10), plate.right - s(12), plate.bottom},
                 font(kFontSmall), unresolved ? color::kError : color::kSecondary, DT_WORDBREAK | DT_CENTER);
        break;
    }
    case BlockKind::PagerText:
        drawText(dc, b.text, b.rect, font(kFontTiny), color::kMuted, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
        break;
    case BlockKind::Separator:
        fillRect(dc, b.rect, color::kHairline);
        break;
    }
}

} // namespace nv::ui::win
