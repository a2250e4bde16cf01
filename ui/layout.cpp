#include "ui/layout.h"

#include "ui/layout_cards.h"

#include <algorithm>

namespace nv::ui {
namespace detail {

Block& Ctx::text(Rect rect, std::wstring content, int font, Rgb color, Align align, bool wrap) {
    Block block;
    block.kind = BlockKind::Text;
    block.rect = rect;
    block.font = font;
    block.color = color;
    block.align = align;
    block.wrap = wrap;
    block.text = std::move(content);
    return add(std::move(block));
}

bool trimmedEmpty(const std::wstring& text) {
    return text.find_first_not_of(L" \t\r\n") == std::wstring::npos;
}

Spacing spacing(const Ctx& ctx) {
    if (ctx.compact())
        return {ctx.s(16), ctx.s(12), ctx.s(10), ctx.s(8), ctx.s(3),
                ctx.s(30), ctx.s(2),  ctx.s(7),  ctx.s(30)};
    return {ctx.s(18), ctx.s(16), ctx.s(14), ctx.s(12), ctx.s(5), ctx.s(32), ctx.s(4), ctx.s(10), ctx.s(32)};
}

Card::Card(Ctx& ctx, int left, int right, int top) : ctx_(ctx) {
    const Spacing sp = spacing(ctx);
    Block card;
    card.kind = BlockKind::Card;
    card.rect = {left, top, right, top};
    index_ = ctx.out.blocks.size();
    ctx.add(std::move(card));
    left_ = left + sp.padX;
    right_ = right - sp.padX;
    y = top + sp.padY;
}

Rect Card::title(const std::wstring& text) {
    const int h = std::max(ctx_.line(kFontCardTitle), ctx_.s(20));
    Rect rect{left_, y, right_, y + h};
    ctx_.text(rect, text, kFontCardTitle, color::kText);
    y += h;
    return rect;
}

Rect Card::note(const std::wstring& text, int font, Rgb color) {
    const int h = ctx_.measure.wrappedHeight(text, font, width());
    Rect rect{left_, y, right_, y + h};
    ctx_.text(rect, text, font, color, Align::Left, true);
    y += h;
    return rect;
}

Rect Card::field(int id, const std::wstring& label, const std::wstring& labelNote, const std::wstring& hint,
                 int boxRight) {
    const Spacing sp = spacing(ctx_);
    if (!label.empty()) {
        // A label wider than a narrow card wraps rather than lose its end.
        const bool wraps = ctx_.textWidth(label, kFontSmallBold) > width();
        const int h =
            wraps ? ctx_.measure.wrappedHeight(label, kFontSmallBold, width()) : ctx_.line(kFontSmallBold);
        const int labelWidth = std::min(width(), ctx_.textWidth(label, kFontSmallBold));
        ctx_.text({left_, y, left_ + labelWidth, y + h}, label, kFontSmallBold, color::kText, Align::Left,
                  wraps);
        if (!labelNote.empty()) {
            const int noteLeft = left_ + labelWidth + ctx_.s(6);
            if (noteLeft < right_)
                ctx_.text({noteLeft, y, right_, y + h}, labelNote, kFontTiny, color::kMuted);
        }
        y += h + sp.labelGap;
    }
    Block box;
    box.kind = BlockKind::FieldBox;
    box.rect = {left_, y, boxRight ? boxRight : right_, y + sp.box};
    box.field = id;
    box.on = ctx_.model.focusField == id;
    ctx_.add(std::move(box));
    const Rect boxRect{left_, y, boxRight ? boxRight : right_, y + sp.box};
    y += sp.box;
    if (!hint.empty()) {
        y += sp.hintGap;
        note(hint, kFontTiny, color::kMuted);
    }
    return boxRect;
}

int buttonWidth(const Ctx& ctx, const std::wstring& text, bool withIcon) {
    int width = ctx.textWidth(text, kFontSmallBold) + ctx.s(28);
    if (withIcon) width += ctx.s(22);
    return width;
}

Rect Card::button(int x, int top, const std::wstring& text, int item, int sub, Icon icon) {
    const Spacing sp = spacing(ctx_);
    Block b;
    b.kind = BlockKind::Button;
    b.rect = {x, top, x + buttonWidth(ctx_, text, icon != Icon::Count), top + sp.button};
    b.item = item;
    b.sub = sub;
    b.text = text;
    b.font = kFontSmallBold;
    b.hasIcon = icon != Icon::Count;
    if (b.hasIcon) b.icon = icon;
    const Rect rect = b.rect;
    ctx_.add(std::move(b));
    return rect;
}

int Card::finish() {
    return finishAt(y + spacing(ctx_).padY);
}

int Card::finishAt(int bottom) {
    ctx_.out.blocks[index_].rect.bottom = bottom;
    return bottom;
}

namespace {

void layoutSidebar(Ctx& ctx) {
    const FrameLayout& f = ctx.frame;
    const PageModel& m = ctx.model;
    ctx.add({.kind = BlockKind::SidebarBackground, .rect = f.sidebar});

    Block brand{.kind = BlockKind::Brand, .rect = {f.s(18), f.s(20), f.sidebar.right - f.s(14), f.s(54)}};
    brand.text = L"Norvane";
    brand.text2 = L"Patcher Oluşturucu";
    ctx.add(std::move(brand));

    const int headingTop = f.s(86);
    ctx.text({f.s(20), headingTop, f.sidebar.right - f.s(14), headingTop + ctx.line(kFontTiny)}, L"BÖLÜMLER",
             kFontTiny, color::kMuted);

    const int buildBottom = f.client.bottom - f.s(24);
    const int buildTop = buildBottom - f.s(44);
    Block skin{.kind = BlockKind::SkinCard};
    if (!m.skinLoaded) {
        skin.text = L"Skin yok";
        skin.text2 = L".zip ya da klasörü\npencereye bırakın";
    } else {
        skin.text = sourceName(m.skinSource);
        if (!m.summary.resolved) {
            skin.text2 = L"çözülemedi";
            skin.on = false;
        } else {
            skin.text2 = std::to_wstring(m.summary.width) + L" × " + std::to_wstring(m.summary.height) +
                         L" px  •  " + std::to_wstring(m.summary.links) + L" bağlantı";
            skin.on = true;
        }
    }
    const int lines = 1 + static_cast<int>(std::count(skin.text2.begin(), skin.text2.end(), L'\n'));
    const int skinHeight = f.s(20) + ctx.line(kFontBodyBold) + f.s(2) + lines * ctx.line(kFontTiny);
    skin.rect = {f.s(14), buildTop - f.s(16) - skinHeight, f.sidebar.right - f.s(14), buildTop - f.s(16)};

    // The sections keep their place above the skin card. On a short window (a laptop at 125 %) the skin
    // card gives way first, then the entries shrink, last of all losing their subtitles.
    const int entriesTop = headingTop + ctx.line(kFontTiny) + f.s(8);
    int entryHeight = f.s(f.compact ? 46 : 50);
    int period = entryHeight + f.s(f.compact ? 2 : 4);
    const bool skinFits = entriesTop + kSectionCount * period <= skin.rect.top - f.s(8);
    const int limit = skinFits ? skin.rect.top - f.s(8) : buildTop - f.s(12);
    if (entriesTop + kSectionCount * period > limit) {
        period = std::max(f.s(28), (limit - entriesTop) / kSectionCount);
        entryHeight = period - f.s(2);
    }
    const bool subtitles = entryHeight >= ctx.line(kFontBodyBold) + ctx.line(kFontTiny) + f.s(8);
    int top = entriesTop;
    for (int i = 0; i < kSectionCount; ++i) {
        Block entry{.kind = BlockKind::NavEntry,
                    .rect = {f.s(14), top, f.sidebar.right - f.s(14), top + entryHeight}};
        entry.item = kItemSection;
        entry.sub = i;
        entry.on = m.section == i;
        entry.text = sectionInfo(i).title;
        if (subtitles) entry.text2 = sectionInfo(i).subtitle;
        ctx.add(std::move(entry));
        top += period;
    }
    if (skinFits) ctx.add(std::move(skin));

    Block build{.kind = BlockKind::SidebarBuild,
                .rect = {f.s(14), buildTop, f.sidebar.right - f.s(14), buildBottom}};
    build.item = kItemBuildSidebar;
    build.text = m.building ? L"Oluşturuluyor…" : L"EXE Oluştur";
    build.on = m.building;
    build.hasIcon = true;
    build.icon = Icon::Bolt;
    ctx.add(std::move(build));
    if (trimmedEmpty(m.recipe.outPath) && !m.building)
        ctx.text({f.s(14), buildBottom + f.s(4), f.sidebar.right - f.s(14), f.client.bottom - f.s(2)},
                 L"Çıktı yeri seçilmedi", kFontTiny, color::kMuted, Align::Center);
}

void layoutHeaderAndFooter(Ctx& ctx) {
    const FrameLayout& f = ctx.frame;
    const SectionInfo& info = sectionInfo(ctx.model.section);
    const int titleHeight = ctx.line(kFontPageTitle);
    ctx.text({f.header.left, f.header.top, f.header.right, f.header.top + titleHeight}, info.title,
             kFontPageTitle, color::kText);
    const int descTop = f.header.top + titleHeight + f.s(4);
    ctx.text({f.header.left, descTop, f.header.right, descTop + ctx.line(kFontBody)}, info.description,
             kFontBody, color::kSecondary);

    ctx.add({.kind = BlockKind::FooterBar, .rect = f.footer});
    const bool hasStatus = !ctx.model.status.empty();
    const Rgb statusColor = ctx.model.statusWarning ? color::kError : color::kSecondary;
    const int dot = f.s(7);
    const int mid = (f.footer.top + f.footer.bottom) / 2;
    Block dotBlock{.kind = BlockKind::StatusDot,
                   .rect = {f.page.left, mid - dot / 2, f.page.left + dot, mid - dot / 2 + dot}};
    dotBlock.color = ctx.model.statusWarning ? color::kError : color::kThumbActive;
    ctx.add(std::move(dotBlock));
    const std::wstring right = L"Ayarlar otomatik hatırlanır";
    const int rightWidth = ctx.textWidth(right, kFontSmall);
    ctx.text({f.footer.right - f.s(28) - rightWidth, f.footer.top, f.footer.right - f.s(28), f.footer.bottom},
             right, kFontSmall, color::kSecondary, Align::Right);
    ctx.text(
        {f.page.left + dot + f.s(8), f.footer.top, f.footer.right - f.s(48) - rightWidth, f.footer.bottom},
        hasStatus ? ctx.model.status : L"Hazır", kFontSmall, statusColor);
}

void layoutPreviewCard(Ctx& ctx) {
    const FrameLayout& f = ctx.frame;
    const PageModel& m = ctx.model;
    const Spacing sp = spacing(ctx);
    Card card(ctx, f.right.left, f.right.right, f.right.top);
    card.title(L"Canlı önizleme");
    card.note(L"Patcher ile aynı çizici", kFontTiny, color::kMuted);
    card.gap(sp.noteGap);

    const int buttonHeight = ctx.s(34);
    const int captionHeight = ctx.line(kFontTiny);
    const int bottom = f.right.bottom - sp.padY;
    const int buttonTop = bottom - buttonHeight;
    const int captionTop = buttonTop - ctx.s(10) - captionHeight;
    Block area{.kind = BlockKind::PreviewArea,
               .rect = {card.left(), card.y, card.right(), captionTop - ctx.s(10)}};
    switch (m.preview) {
    case PreviewState::NoSkin:
        area.text = L"Skin yüklenince patcher burada,\ngerçekteki gibi görünür.";
        break;
    case PreviewState::Unresolved:
        area.text = L"Skin çözülemedi — Kaynak bölümündeki uyarılara bakın.";
        break;
    case PreviewState::Waiting:
        area.text = L"Önizleme bekliyor";
        break;
    case PreviewState::Pixels:
        area.on = true;
        break;
    }
    ctx.add(std::move(area));
    if (m.skinLoaded && m.summary.resolved) {
        std::wstring caption = std::to_wstring(m.summary.width) + L" × " + std::to_wstring(m.summary.height) +
                               L" px  •  " + (m.summary.transparent ? L"Saydam pencere" : L"Opak pencere") +
                               L"  •  " + std::to_wstring(m.summary.links) + L" bağlantı";
        ctx.text({card.left(), captionTop, card.right(), captionTop + captionHeight}, caption, kFontTiny,
                 color::kSecondary, Align::Center);
    }
    Block button{.kind = BlockKind::Button, .rect = {card.left(), buttonTop, card.right(), bottom}};
    button.item = kItemPreviewPanel;
    button.text = L"Patcher'ı önizle";
    button.font = kFontBodyBold;
    button.color = color::kAccent;
    button.hasIcon = true;
    button.icon = Icon::Play;
    button.disabled = !m.skinLoaded;
    ctx.add(std::move(button));
    card.finishAt(f.right.bottom); // the card fills the column whatever its content
}

void layoutLogCard(Ctx& ctx) {
    const FrameLayout& f = ctx.frame;
    Block card{.kind = BlockKind::Card, .rect = f.right};
    ctx.add(std::move(card));
    const Spacing sp = spacing(ctx);
    const int titleHeight = std::max(ctx.line(kFontCardTitle), ctx.s(20));
    const int top = f.right.top + sp.padY + ctx.s(2);
    ctx.text({f.right.left + sp.padX, top, f.right.right - sp.padX, top + titleHeight}, L"Günlük",
             kFontCardTitle, color::kText);
    const std::wstring copy = L"Kopyala";
    const int w = ctx.textWidth(copy, kFontTiny) + ctx.s(18);
    const int h = ctx.s(24);
    const int bTop = top + (titleHeight - h) / 2;
    Block button{.kind = BlockKind::Button,
                 .rect = {f.right.right - sp.padX - w, bTop, f.right.right - sp.padX, bTop + h}};
    button.item = kItemCopyLog;
    button.text = copy;
    button.font = kFontTiny;
    ctx.add(std::move(button));
    ctx.out.logView = {f.right.left + ctx.s(8), f.right.top + ctx.s(58), f.right.right - ctx.s(8),
                       f.right.bottom - ctx.s(8)};
}

} // namespace

} // namespace detail

FrameLayout layoutFrame(int clientWidth, int clientHeight, int dpi) {
    FrameLayout f;
    f.dpi = dpi > 0 ? dpi : 96;
    const int width = std::max(0, clientWidth);
    const int height = std::max(0, clientHeight);
    f.compact = height < f.s(780);
    f.client = {0, 0, width, height};
    f.sidebar = {0, 0, std::min(width, f.s(232)), height};
    f.page = {f.sidebar.right + f.s(28), f.s(64 + 22), width - f.s(28), height - f.s(18 + 30)};
    if (f.page.right < f.page.left) f.page.right = f.page.left;
    if (f.page.bottom < f.page.top) f.page.bottom = f.page.top;
    f.header = {f.page.left, f.s(22), f.page.right, f.page.top - f.s(8)};
    f.footer = {f.sidebar.right, height - f.s(30), width, height};
    const int rightWidth = std::max(f.page.width() * 42 / 100, f.s(360));
    f.right = {std::max(f.page.left, f.page.right - rightWidth), f.page.top, f.page.right, f.page.bottom};
    f.form = {f.page.left, f.page.top, std::max(f.page.left, f.right.left - f.s(20)), f.page.bottom};
    return f;
}

namespace {

// The section's cards are laid out from the column's top whatever their height; where they run past the
// column's bottom the column scrolls: its blocks move up by the offset and are seen only inside the view.
void scrollPage(WindowLayout& layout, size_t first, int scroll) {
    const FrameLayout& f = layout.frame;
    layout.pageView = f.form;
    int bottom = f.form.top;
    for (size_t i = first; i < layout.blocks.size(); ++i)
        bottom = std::max(bottom, layout.blocks[i].rect.bottom);
    // A little room under the last card, so that its edge is not on the view's.
    layout.pageContent = bottom - f.form.top + (bottom > f.form.bottom ? f.s(2) : 0);
    layout.pageScroll = std::clamp(scroll, 0, layout.maxPageScroll());
    for (size_t i = first; i < layout.blocks.size(); ++i) {
        Block& b = layout.blocks[i];
        b.scrolls = true;
        b.rect.top -= layout.pageScroll;
        b.rect.bottom -= layout.pageScroll;
    }
    layout.pageBar = thinScrollBar(f.form.top, f.form.bottom, f.form.height(), layout.pageContent,
                                   layout.pageScroll, f.s(24));
    if (layout.pageBar.visible)
        layout.pageTrack = {f.form.right + f.s(7), f.form.top, f.form.right + f.s(10), f.form.bottom};
}

} // namespace

WindowLayout layoutWindow(int clientWidth, int clientHeight, int dpi, const PageModel& model,
                          const TextMeasure& measure) {
    WindowLayout layout;
    layout.frame = layoutFrame(clientWidth, clientHeight, dpi);
    detail::Ctx ctx{layout.frame, model, measure, layout};
    detail::layoutSidebar(ctx);
    detail::layoutHeaderAndFooter(ctx);
    const size_t pageFirst = layout.blocks.size();
    switch (model.section) {
    case kKaynak:
        detail::layoutKaynak(ctx);
        break;
    case kBaglantilar:
        detail::layoutBaglantilar(ctx);
        break;
    case kDavranis:
        detail::layoutDavranis(ctx);
        break;
    case kKimlik:
        detail::layoutKimlik(ctx);
        break;
    case kCikti:
        detail::layoutCikti(ctx);
        break;
    default:
        detail::layoutDerleme(ctx);
        break;
    }
    scrollPage(layout, pageFirst, model.pageScroll);
    if (model.section == kDerleme)
        detail::layoutLogCard(ctx);
    else
        detail::layoutPreviewCard(ctx);
    return layout;
}

std::vector<std::pair<int, Rect>> fieldRows(const WindowLayout& layout) {
    std::vector<std::pair<int, Rect>> rows;
    for (const Block& block : layout.blocks)
        if (block.kind == BlockKind::FieldBox && (!block.scrolls || layout.pageView.contains(block.rect)))
            rows.emplace_back(block.field, block.rect);
    return rows;
}

int scrollToShow(const WindowLayout& layout, const Rect& rect, int margin) {
    const Rect& view = layout.pageView;
    int scroll = layout.pageScroll;
    if (rect.top - margin < view.top || rect.height() + 2 * margin > view.height())
        scroll -= view.top - (rect.top - margin);
    else if (rect.bottom + margin > view.bottom)
        scroll += rect.bottom + margin - view.bottom;
    return std::clamp(scroll, 0, layout.maxPageScroll());
}

Rect editRect(const Rect& row, int textHeight, int dpi) {
    const int height = textHeight + 2;
    const int top = row.top + (row.height() - height) / 2;
    const int left = row.left + scaleLength(12, dpi);
    return {left, top, left + row.width() - scaleLength(24, dpi), top + height};
}

bool blockHit(const Block& block, int x, int y) {
    if (block.item == kItemNone || block.disabled) return false;
    switch (block.kind) {
    default:
        return block.rect.contains(x, y);
    }
}

Hit hitTest(const WindowLayout& layout, int x, int y) {
    for (auto it = layout.blocks.rbegin(); it != layout.blocks.rend(); ++it) {
        // What the form column's view cuts off cannot be clicked.
        if (it->scrolls && !layout.pageView.contains(x, y)) continue;
        if (blockHit(*it, x, y)) return {it->item, it->sub};
    }
    return {};
}

int linkPageCount(size_t linkCount, int pageSize) {
    if (pageSize < 1) pageSize = 1;
    if (linkCount == 0) return 1;
    return static_cast<int>((linkCount + static_cast<size_t>(pageSize) - 1) / static_cast<size_t>(pageSize));
}

} // namespace nv::ui
