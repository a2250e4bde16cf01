#include "ui/layout.h"

#include "core/text.h"
#include "tests/ui/layout_measure.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace nv::ui {
namespace {

PageModel loadedModel(int section) {
    PageModel m;
    m.section = section;
    m.skinLoaded = true;
    m.skinSource = L"C:\\skins\\gece-mavisi";
    m.summary = {true, 920, 580, true, 8, 5, 9, {}, {L"NEWS  •  556 × 198 px"}};
    for (int i = 0; i < 5; ++i)
        m.links.push_back({kFieldLinkFirst + i, L"URL_" + std::to_wstring(i), L"btn.png  •  skin.xml'den"});
    m.configOrigin = L"skin.xml'den";
    m.buildState = BuildPageState::Done;
    m.hasResult = true;
    m.crc = 0x9C41A07E;
    // Signed, so that the result card shows its signer lines.
    m.signedResult = true;
    m.signature = {L"Kaldra Yazılım ve Oyun Hizmetleri Ltd", L"3A7F0C1122334455667788990AABBCCDDEEFF0012",
                   TimestampKind::Rfc3161, 1772720521};
    m.recipe.outPath = L"C:\\Oyunlar\\Kaldra\\Kaldra.exe";
    m.readiness = readinessRows({});
    m.preview = PreviewState::Waiting;
    m.recipe.icon = L"C:\\icons\\kaldra.png";
    return m;
}

TEST(Layout, FrameColumns) {
    // The form and the right column share the page's top and bottom and split its width; the footer runs from
    // the sidebar to the window's edges.
    struct Case {
        int w, h, dpi;
        bool compact;
        Rect page;
        int formRight, rightLeft, footerTop;
    } cases[] = {
        {1320, 820, 96, false, {260, 86, 1292, 772}, 839, 859, 790},
        // Below 780 px the compact variant; the right column keeps its 360 px minimum.
        {1100, 700, 96, true, {260, 86, 1072, 652}, 692, 712, 670},
        {1980, 1230, 144, false, {390, 129, 1938, 1158}, 1258, 1288, 1185},
        {1650, 1050, 144, true, {390, 129, 1608, 978}, 1038, 1068, 1005},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.w) + "x" + std::to_string(c.h) + "@" + std::to_string(c.dpi));
        const FrameLayout f = layoutFrame(c.w, c.h, c.dpi);
        const int sidebar = scaleLength(232, c.dpi);
        EXPECT_EQ(f.compact, c.compact);
        EXPECT_EQ(f.sidebar.right, sidebar);
        EXPECT_EQ(f.page, c.page);
        EXPECT_EQ(f.form, (Rect{c.page.left, c.page.top, c.formRight, c.page.bottom}));
        EXPECT_EQ(f.right, (Rect{c.rightLeft, c.page.top, c.page.right, c.page.bottom}));
        EXPECT_EQ(f.footer, (Rect{sidebar, c.footerTop, c.w, c.h}));
    }
    // A window shrunk below anything sensible still gives ordered rectangles.
    const FrameLayout tiny = layoutFrame(100, 50, 96);
    EXPECT_LE(tiny.page.left, tiny.page.right);
    EXPECT_LE(tiny.page.top, tiny.page.bottom);
}

// Every section, loaded or not (the Derleme page in each of its states), at the normal and the minimum size
// and at 144 DPI: blocks stay inside the window, page content inside the page area, cards do not overlap,
// field boxes neither, the edit controls fit their rows, and the page's own words are never cut off (only
// paths are shortened).
struct ClientSize {
    int w, h, dpi;
};

// The clients the window's sizing can give: the design's two sizes, and on laptop and desktop screens the
// wanted 1320 × 820 and the 1100 × 700 minimum (both scaled) clamped to the work area (the screen less a
// taskbar 40 px high) less the frame (8 px each side and a 31 px caption at 96 DPI; all scaled).
std::vector<ClientSize> clientSizes() {
    std::vector<ClientSize> sizes = {{1320, 820, 96}, {1100, 700, 96}, {1980, 1230, 144}, {1650, 1050, 144}};
    const ClientSize screens[] = {{1366, 768, 96},   {1366, 768, 120}, {1280, 720, 120},
                                  {1280, 800, 120},  {1536, 864, 120}, {1920, 1080, 120},
                                  {1920, 1080, 144}, {1600, 900, 144}, {2560, 1440, 168}};
    for (const ClientSize& screen : screens) {
        const int sx = scaleLength(16, screen.dpi), sy = scaleLength(39, screen.dpi);
        const int workW = screen.w, workH = screen.h - scaleLength(40, screen.dpi);
        for (auto [w, h] : {std::pair{1320, 820}, std::pair{1100, 700}}) {
            const int clientW = std::min(scaleLength(w, screen.dpi) + sx, workW) - sx;
            const int clientH = std::min(scaleLength(h, screen.dpi) + sy, workH) - sy;
            sizes.push_back({clientW, clientH, screen.dpi});
        }
    }
    return sizes;
}

std::string kindName(const Block& b) {
    return std::to_string(static_cast<int>(b.kind)) + " '" + wideToUtf8(b.text) + "'";
}

// Every page in every state on every client the sizing can give: nothing leaves its column or overlaps, the
// form column scrolls to its last card, the sidebar keeps its entries apart, and no button touches its card's
// edge.
TEST(Layout, EveryPageFitsEveryClient) {
    for (const ClientSize& size : clientSizes()) {
        const FakeMeasure measure(size.dpi);
        for (int section = 0; section < kSectionCount; ++section) {
            // Nothing loaded, then a loaded skin in every state of the Derleme page.
            // On the Çıktı ve İmza page each certificate source has fields of its own: one state each.
            const int states = section == kCikti ? static_cast<int>(SigningSource::Command)
                                                 : static_cast<int>(BuildPageState::Failed);
            for (int state = -1; state <= states; ++state) {
                const bool loaded = state >= 0;
                if (loaded && state != static_cast<int>(BuildPageState::Done) && section != kDerleme &&
                    section != kCikti)
                    continue;
                SCOPED_TRACE(std::to_string(size.w) + "x" + std::to_string(size.h) + "@" +
                             std::to_string(size.dpi) + " section " + std::to_string(section) + " state " +
                             std::to_string(state));
                PageModel model = loaded ? loadedModel(section) : PageModel{};
                model.section = section;
                if (loaded && section == kCikti) {
                    model.recipe.signing.enabled = true;
                    model.recipe.signing.source = static_cast<SigningSource>(state);
                } else if (loaded) {
                    model.buildState = static_cast<BuildPageState>(state);
                }
                model.hasResult = model.buildState == BuildPageState::Done; // a finished build's numbers
                if (model.buildState == BuildPageState::Ready) model.recipe.outPath.clear();
                if (model.buildState == BuildPageState::Building) model.building = true;
                if (model.buildState == BuildPageState::Failed)
                    model.lastMessage =
                        L"Çıktı dosyası kullanımda (patcher açık olabilir): C:\\Oyunlar\\Kaldra.exe";
                const WindowLayout top = layoutWindow(size.w, size.h, size.dpi, model, measure);
                model.pageScroll = 1 << 20; // kept to the end
                const WindowLayout end = layoutWindow(size.w, size.h, size.dpi, model, measure);
                const FrameLayout& f = top.frame;
                const int pad = scaleLength(12, size.dpi);

                EXPECT_EQ(top.pageScroll, 0);
                EXPECT_EQ(end.pageScroll, end.maxPageScroll());
                EXPECT_EQ(end.pageBar.visible, end.maxPageScroll() > 0);
                std::vector<Rect> cards, boxes, sidebar;
                int pageBottom = f.form.top;
                for (const Block& b : end.blocks) {
                    // A scrolled block may lie above the client; what is seen of it is in the view.
                    if (b.scrolls) {
                        pageBottom = std::max(pageBottom, b.rect.bottom);
                        EXPECT_GE(b.rect.left, f.form.left) << kindName(b);
                        EXPECT_LE(b.rect.right, f.form.right) << kindName(b);
                    } else {
                        EXPECT_TRUE(f.client.contains(b.rect)) << kindName(b);
                    }
                    if (!b.scrolls && b.rect.left >= f.page.left && b.rect.top >= f.page.top) {
                        // Below the header the rest is the right column or the footer.
                        const Rect& area = b.rect.top >= f.footer.top ? f.footer : f.right;
                        EXPECT_TRUE(area.contains(b.rect)) << kindName(b);
                    }
                    if (b.kind == BlockKind::NavEntry || b.kind == BlockKind::SkinCard ||
                        b.kind == BlockKind::SidebarBuild)
                        sidebar.push_back(b.rect);
                    if (b.kind == BlockKind::Card && b.scrolls) cards.push_back(b.rect);
                    if (b.kind == BlockKind::FieldBox) {
                        boxes.push_back(b.rect);
                        const Rect edit = editRect(b.rect, measure.lineHeight(kFontMono), size.dpi);
                        EXPECT_TRUE(b.rect.contains(edit));
                    }
                    if (b.kind == BlockKind::Text) {
                        EXPECT_GT(b.rect.width(), 0);
                        const int overflow =
                            b.path   ? 0
                            : b.wrap ? measure.wrappedHeight(b.text, b.font, b.rect.width()) - b.rect.height()
                                     : measure.width(b.text, b.font) - b.rect.width();
                        EXPECT_LE(overflow, 0) << wideToUtf8(b.text);
                    }
                    if (b.kind == BlockKind::PreviewArea) {
                        EXPECT_GT(b.rect.height(), scaleLength(60, size.dpi));
                    }
                }
                // The last card ends inside the view once scrolled to the end.
                EXPECT_LE(pageBottom, f.form.bottom);
                // The six sections and the build button always; the skin card gives way only below the
                // design's minimum height.
                EXPECT_GE(sidebar.size(), kSectionCount + 1u);
                if (f.client.height() >= scaleLength(700, size.dpi)) {
                    EXPECT_EQ(sidebar.size(), kSectionCount + 2u);
                }
                // Buttons, cells and rows keep clear of their card's edge.
                for (const Block& b : end.blocks) {
                    if (!b.scrolls || b.kind == BlockKind::Card || b.kind == BlockKind::Text) continue;
                    const auto card = std::find_if(cards.begin(), cards.end(),
                                                   [&](const Rect& c) { return c.contains(b.rect); });
                    ASSERT_NE(card, cards.end()) << kindName(b);
                    EXPECT_GE(b.rect.left - card->left, pad) << kindName(b);
                    EXPECT_GE(card->right - b.rect.right, pad) << kindName(b);
                }
                for (const std::vector<Rect>* apart : {&cards, &boxes, &sidebar})
                    for (size_t i = 0; i < apart->size(); ++i)
                        for (size_t j = i + 1; j < apart->size(); ++j)
                            EXPECT_FALSE((*apart)[i].intersects((*apart)[j]));
                // Edit controls are shown only where the view shows their whole box.
                for (const WindowLayout* layout : {&top, &end})
                    for (const auto& [id, rect] : fieldRows(*layout))
                        EXPECT_TRUE(layout->pageView.contains(rect)) << id;
                EXPECT_EQ(top.logView.empty(), section != kDerleme);
            }
        }
    }
}

std::set<int> placedFields(const WindowLayout& layout) {
    std::set<int> ids;
    for (const auto& [id, rect] : fieldRows(layout))
        ids.insert(id);
    return ids;
}

// Each section lays out exactly the fixed fields that belong to it; on the Çıktı ve İmza page the signing
// fields are those of the chosen certificate source.
TEST(Layout, EachSectionPlacesItsOwnFields) {
    const FakeMeasure measure(96);
    for (int section = 0; section < kSectionCount; ++section) {
        std::set<int> own;
        for (const FieldSpec& f : fixedFields())
            if (f.section == section && !isSigningField(f.id)) own.insert(f.id);
        PageModel model;
        model.section = section;
        if (section != kCikti) {
            EXPECT_EQ(placedFields(layoutWindow(1320, 820, 96, model, measure)), own) << section;
            continue;
        }
        const std::pair<SigningSource, std::set<int>> sources[] = {
            {SigningSource::PfxFile, {kFieldPfx, kFieldPassword, kFieldTimestamp, kFieldTimestampMore}},
            {SigningSource::Store, {kFieldThumbprint, kFieldTimestamp, kFieldTimestampMore}},
            {SigningSource::Automatic, {kFieldTimestamp, kFieldTimestampMore}},
            {SigningSource::Plugin,
             {kFieldPlugin, kFieldPluginMetadata, kFieldTimestamp, kFieldTimestampMore}},
            {SigningSource::Command, {kFieldSignCommand}},
        };
        std::set<int> seen;
        for (const auto& [source, fields] : sources) {
            model.recipe.signing.source = source;
            std::set<int> expected = own;
            expected.insert(fields.begin(), fields.end());
            seen.insert(fields.begin(), fields.end());
            EXPECT_EQ(placedFields(layoutWindow(1320, 820, 96, model, measure)), expected)
                << static_cast<int>(source);
        }
        for (const FieldSpec& f : fixedFields())
            if (isSigningField(f.id)) {
                EXPECT_TRUE(seen.count(f.id)) << f.id << " is never shown";
            }
    }
}

// The source chips switch the source and show which one is chosen; while a build runs they take no click.
TEST(Layout, SigningSourceChips) {
    const FakeMeasure measure(96);
    PageModel model = loadedModel(kCikti);
    model.recipe.signing.source = SigningSource::Plugin;
    for (bool building : {false, true}) {
        model.building = building;
        const WindowLayout layout = layoutWindow(1100, 700, 96, model, measure);
        int chips = 0;
        for (const Block& b : layout.blocks) {
            if (b.kind != BlockKind::Chip) continue;
            ++chips;
            EXPECT_EQ(b.item, kItemSigningSource);
            EXPECT_EQ(b.on, b.sub == static_cast<int>(SigningSource::Plugin));
            const Hit hit =
                hitTest(layout, (b.rect.left + b.rect.right) / 2, (b.rect.top + b.rect.bottom) / 2);
            EXPECT_EQ(hit.item, building ? kItemNone : kItemSigningSource);
            EXPECT_EQ(hit.sub, building ? 0 : b.sub);
        }
        EXPECT_EQ(chips, 5);
    }
}

TEST(Layout, LinkFieldsArePagedWithoutLosingAny) {
    for (auto [w, h] : {std::pair{1320, 820}, std::pair{1100, 700}}) {
        const FakeMeasure measure(96);
        PageModel model = loadedModel(kBaglantilar);
        const WindowLayout first = layoutWindow(w, h, 96, model, measure);
        ASSERT_GE(first.linkPageSize, 1);
        EXPECT_EQ(first.linkPages, linkPageCount(5, first.linkPageSize));
        std::set<int> seen;
        for (int page = 0; page < first.linkPages; ++page) {
            model.linkPage = page;
            for (int id : placedFields(layoutWindow(w, h, 96, model, measure)))
                if (isLinkField(id)) {
                    EXPECT_TRUE(seen.insert(id).second) << id << " shown twice";
                }
        }
        EXPECT_EQ(seen.size(), 5u);
        // A page beyond the last shows the last page.
        model.linkPage = 99;
        const auto last = placedFields(layoutWindow(w, h, 96, model, measure));
        EXPECT_TRUE(last.count(kFieldLinkFirst + 4));
    }
    EXPECT_EQ(linkPageCount(0, 3), 1);
    EXPECT_EQ(linkPageCount(6, 3), 2);
    EXPECT_EQ(linkPageCount(7, 3), 3);
    EXPECT_EQ(linkPageCount(7, 0), 7);
}

TEST(Layout, HitTestingFindsItemsAndSkipsDisabledOnes) {
    const FakeMeasure measure(96);
    PageModel model = loadedModel(kDavranis);
    model.recipe.settings.connections = 6;
    const WindowLayout layout = layoutWindow(1320, 820, 96, model, measure);
    int chips = 0;
    for (const Block& b : layout.blocks) {
        if (b.kind == BlockKind::NavEntry || b.kind == BlockKind::Chip) {
            const Hit hit =
                hitTest(layout, (b.rect.left + b.rect.right) / 2, (b.rect.top + b.rect.bottom) / 2);
            EXPECT_EQ(hit.item, b.item);
            EXPECT_EQ(hit.sub, b.sub);
        }
        if (b.kind == BlockKind::Chip) {
            ++chips;
            EXPECT_EQ(b.on, b.sub == 6);
        }
    }
    EXPECT_EQ(chips, 8);
    EXPECT_EQ(hitTest(layout, 5, 5).item, kItemNone);

    // While building, the build buttons take no second click; everything else goes on answering (the build
    // works on its own copy of the decisions).
    model.building = true;
    for (int section : {kDavranis, kDerleme}) {
        model.section = section;
        const WindowLayout busy = layoutWindow(1320, 820, 96, model, measure);
        for (const Block& b : busy.blocks) {
            const Hit hit = hitTest(busy, (b.rect.left + b.rect.right) / 2, (b.rect.top + b.rect.bottom) / 2);
            if (b.kind == BlockKind::Chip || b.kind == BlockKind::Toggle || b.kind == BlockKind::NavEntry) {
                EXPECT_EQ(hit.item, b.item);
            }
            if (b.item == kItemBuildPage) {
                EXPECT_EQ(hit.item, kItemNone);
            }
        }
    }
}

} // namespace
} // namespace nv::ui
