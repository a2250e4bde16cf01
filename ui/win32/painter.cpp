// Painting the window: the page model gathered from the parts, the layout computed from it, and each block of
// the layout handed to the painter of its kind.

#include "ui/win32/app.h"

#include "core/files.h"
#include "core/paths.h"
#include "core/text.h"
#include "ui/win32/block_painters.h"

namespace nv::ui::win {

Rect centredSquare(const Rect& r, int side) {
    const int x = r.left + (r.width() - side) / 2, y = r.top + (r.height() - side) / 2;
    return {x, y, x + side, y + side};
}

bool PaintContext::hovered(const Block& b) const {
    return b.item != kItemNone && !b.disabled && model.hoverItem == b.item && model.hoverSub == b.sub;
}

bool PaintContext::pressed(const Block& b) const {
    return hovered(b) && model.pressedItem == b.item && model.pressedSub == b.sub;
}

void paintBlock(const PaintContext& context, const Block& block) {
    using Painter = void (*)(const PaintContext&, const Block&);
    // By kind, in BlockKind's order.
    static constexpr Painter kPainters[] = {
        paintSidebarBackground, // SidebarBackground
        paintBrand,             // Brand
        paintNavEntry,          // NavEntry
        paintSkinCard,          // SkinCard
        paintPrimaryButton,     // SidebarBuild
        paintFooterBar,         // FooterBar
        paintCard,              // Card
        paintText,              // Text
        paintFieldBox,          // FieldBox
        paintButton,            // Button
        paintButton,            // IconButton
        paintPrimaryButton,     // PrimaryButton
        paintDropZone,          // DropZone
        paintStatCell,          // StatCell
        paintChip,              // Chip
        paintToggle,            // Toggle
        paintCheckRow,          // CheckRow
        paintStateTile,         // StateTile
        paintPill,              // Pill
        paintPreviewArea,       // PreviewArea
        paintPagerText,         // PagerText
        paintStatusDot,         // StatusDot
        paintSeparator,         // Separator
    };
    static_assert(std::size(kPainters) == size_t(BlockKind::Separator) + 1, "a painter for every kind");
    kPainters[size_t(block.kind)](context, block);
}

PageModel BuilderApp::pageModel() const {
    PageModel m;
    m.section = section_;
    m.hoverItem = hoverItem_;
    m.hoverSub = hoverSub_;
    m.pressedItem = pressedItem_;
    m.pressedSub = pressedSub_;
    m.tick = build_.tick();
    m.focusField = fields_.focused();
    if (GetFocus() == hwnd_) {
        m.focusItem = focusItem_;
        m.focusSub = focusSub_;
    }
    m.pageScroll = pageScroll_;

    m.skinLoaded = skinLoaded_;
    m.skinLoadFailed = skinLoadFailed_;
    m.skinSource = skinSource_;
    m.summary = summary_;
    for (size_t i = 0; i < fields_.linkCount(); ++i) {
        const ButtonLink& button = workspace_.buttonLinks[fields_.linkButton(i)];
        std::wstring note = utf8ToWide(button.image);
        if (!note.empty()) note += L"  •  ";
        note += button.localeKey.empty() ? L"skin.xml'den" : L"dil dosyasından";
        m.links.push_back({kFieldLinkFirst + static_cast<int>(i), utf8ToWide(button.id), note});
    }
    m.linkPage = linkPage_;
    if (skinLoaded_) {
        if (!workspace_.importedConfigUrl.empty()) m.configOrigin = L"skin.xml'den";
        if (!workspace_.importedIframeUrl.empty()) m.newsOrigin = L"dil dosyasından";
        if (!workspace_.importedFeedUrl.empty()) m.feedOrigin = L"skin.xml'den";
    }

    m.recipe = recipe();
    m.iconPreview = !iconPreview_.empty();

    m.building = build_.building();
    // A result the settings have moved on from: the page is ready for the next build, and the result card
    // says what its numbers still describe.
    m.resultStale = build_.stale();
    m.buildState =
        buildPageState(skinLoaded_, m.building, build_.finished() && !m.resultStale, build_.succeeded());
    m.lastMessage = build_.lastResult().message;
    m.hasResult = build_.succeeded() && !m.building;
    m.crc = build_.lastResult().crc32;
    m.signedResult = build_.lastResult().wasSigned;
    m.signature = build_.lastResult().signature;
    m.elapsedMs = build_.elapsedMs();
    m.readiness = readinessRows(readinessInputs(m.recipe));

    m.status = status_;
    m.statusWarning = statusWarning_;
    if (!skinLoaded_)
        m.preview = PreviewState::NoSkin;
    else if (!summary_.resolved)
        m.preview = PreviewState::Unresolved;
    else
        m.preview = preview_.shown() ? PreviewState::Pixels : PreviewState::Waiting;
    m.previewWidth = preview_.width();
    m.previewHeight = preview_.height();
    return m;
}

ReadinessInputs BuilderApp::readinessInputs(const Recipe& recipe) const {
    ReadinessInputs in;
    in.skinLoaded = skinLoaded_;
    in.skinSource = skinSource_;
    in.skinWidth = summary_.resolved ? summary_.width : 0;
    in.skinHeight = summary_.resolved ? summary_.height : 0;
    in.configUrl = recipe.configUrl;
    in.outputPath = recipe.outPath;
    const std::wstring folder = pathParent(trim(in.outputPath));
    in.outputFolderExists = !folder.empty() && folderExists(folder);
    in.iconPath = recipe.icon;
    in.signing = recipe.signing;
    in.signingFacts = signingProbe_.facts(recipe.signing);
    in.templateExists = fileExists(templatePath_);
    if (skinLoaded_) {
        in.addresses.push_back({L"haber sayfası", recipe.iframeUrl, kFieldNewsUrl});
        in.addresses.push_back({L"duyuru adresi", recipe.feedUrl, kFieldFeedUrl});
        for (size_t i = 0; i < fields_.linkCount(); ++i) {
            const int id = kFieldLinkFirst + static_cast<int>(i);
            in.addresses.push_back(
                {utf8ToWide(workspace_.buttonLinks[fields_.linkButton(i)].id), fields_.text(id), id});
        }
    }
    return in;
}

WindowLayout BuilderApp::computeLayout() {
    RECT client{};
    GetClientRect(hwnd_, &client);
    WindowDC screen(hwnd_);
    GdiMeasure measure(screen.get(), fonts_);
    return layoutWindow(client.right, client.bottom, dpi_, pageModel(), measure);
}

void BuilderApp::paint(HDC dc) {
    followState();
    layout_ = computeLayout();
    const PageModel model = pageModel();
    fillRect(dc, layout_.frame.client, color::kPage);
    const PaintContext context{
        dc, fonts_, dpi_, model, iconPreview_, preview_.width(), preview_.height(), preview_.pixels()};
    const Rect& view = layout_.pageView;
    for (const Block& block : layout_.blocks) {
        if (block.scrolls) {
            // The form column's blocks are seen only inside its view.
            if (!block.rect.intersects(view)) continue;
            SavedDC saved(dc);
            IntersectClipRect(dc, view.left, view.top, view.right, view.bottom);
            paintBlock(context, block);
            paintFocusRing(context, block);
            continue;
        }
        paintBlock(context, block);
        paintFocusRing(context, block);
    }
    if (layout_.pageBar.visible)
        paintThinScrollBar(dc, layout_.pageTrack, layout_.pageBar,
                           barDragging_ ? color::kThumbActive : color::kThumb, dpi_);
    // The log view is a stop of its own: its card shows the ring while it has the focus.
    if (log_.hwnd() && GetFocus() == log_.hwnd() && !layout_.logView.empty())
        strokeRoundRect(dc, layout_.logView.inset(-scaleLength(2, dpi_), -scaleLength(2, dpi_)),
                        float(scaleLength(8, dpi_)), color::kThumbActive, float(scaleLength(2, dpi_)));
}

} // namespace nv::ui::win
