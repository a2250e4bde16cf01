// Layout of the first three sections: Kaynak, Bağlantılar, Davranış.

#include "recipe/recipe_keys.h"
#include "ui/layout_cards.h"

#include <algorithm>

namespace nv::ui::detail {
namespace {

Block iconButton(Rect rect, Icon icon, int item, int sub = 0) {
    Block b{.kind = BlockKind::IconButton, .rect = rect, .item = item, .sub = sub};
    b.hasIcon = true;
    b.icon = icon;
    return b;
}

std::wstring statValue(const SkinSummary& summary, int value) {
    return summary.resolved ? std::to_wstring(value) : L"—";
}

} // namespace

void layoutKaynak(Ctx& ctx) {
    const FrameLayout& f = ctx.frame;
    const PageModel& m = ctx.model;
    const Spacing sp = spacing(ctx);

    Card source(ctx, f.form.left, f.form.right, f.form.top);
    source.title(L"Skin paketi");
    if (m.skinLoaded)
        source.note(sourceName(m.skinSource) + L" yüklendi");
    else if (m.skinLoadFailed)
        source.note(L"Skin yüklenemedi", kFontSmall, color::kError);
    source.gap(sp.noteGap);

    const int dropHeight = ctx.s(ctx.compact() ? 116 : 150);
    Block drop{.kind = BlockKind::DropZone,
               .rect = {source.left(), source.y, source.right(), source.y + dropHeight}};
    drop.text = L"Skin .zip dosyasını ya da klasörünü buraya sürükleyin";
    drop.text2 = L"Tek tek görsel bırakırsanız pakete eklenir ya da aynı adlı görselin yerine geçer.";
    drop.hasIcon = true;
    drop.icon = Icon::Upload;
    ctx.add(std::move(drop));
    source.gap(dropHeight + ctx.s(12));

    const int rowTop = source.y;
    const Rect zip = source.button(source.left(), rowTop, m.skinLoaded ? L"Başka zip" : L"Zip seç",
                                   kItemChooseZip, 0, Icon::Package);
    const Rect folder =
        source.button(zip.right + ctx.s(8), rowTop, L"Klasör seç", kItemChooseFolder, 0, Icon::Folder);
    const std::wstring format = L"Fernwick biçimindeki skin: skin.xml, görseller, url ve dil dosyaları.";
    const int noteLeft = folder.right + ctx.s(12);
    const int besideWidth = source.right() - noteLeft;
    const int besideHeight =
        besideWidth > ctx.s(120) ? ctx.measure.wrappedHeight(format, kFontTiny, besideWidth) : 0;
    if (besideHeight > 0 && besideHeight <= sp.button) {
        const int top = rowTop + (sp.button - besideHeight) / 2;
        ctx.text({noteLeft, top, source.right(), top + besideHeight}, format, kFontTiny, color::kMuted,
                 Align::Left, true);
        source.y = rowTop + sp.button;
    } else {
        source.y = rowTop + sp.button + ctx.s(8);
        source.note(format, kFontTiny, color::kMuted);
    }
    const int sourceBottom = source.finish();

    Card summary(ctx, f.form.left, f.form.right, sourceBottom + sp.cardGap);
    summary.title(L"Paket içeriği");
    if (!m.skinLoaded) {
        summary.note(L"Skin yüklenince özet burada görünür.", kFontSmall, color::kMuted);
        summary.finish();
        return;
    }
    const SkinSummary& s = m.summary;
    summary.note(L"Skinden okunan bilgiler ve uyarılar.");
    summary.gap(sp.noteGap);

    const int gap = ctx.s(10);
    const int cellWidth = (summary.width() - 2 * gap) / 3;
    const int cellHeight = ctx.s(ctx.compact() ? 46 : 52);
    const int warnings = static_cast<int>(s.warnings.size());
    struct Stat {
        const wchar_t* key;
        std::wstring value;
        Rgb color;
    };
    const Stat stats[6] = {
        {L"BOYUT", s.resolved ? std::to_wstring(s.width) + L" × " + std::to_wstring(s.height) : L"—",
         color::kText},
        {L"PENCERE", s.resolved ? (s.transparent ? L"Saydam" : L"Opak") : L"—", color::kText},
        {L"BUTON", statValue(s, s.buttons), color::kText},
        {L"BAĞLANTI", statValue(s, s.links), color::kText},
        {L"METİN ALANI", statValue(s, s.textAreas), color::kText},
        {L"UYARI", std::to_wstring(warnings), warnings == 0 ? color::kAccent : color::kError},
    };
    for (int i = 0; i < 6; ++i) {
        const int x = summary.left() + (i % 3) * (cellWidth + gap);
        const int y = summary.y + (i / 3) * (cellHeight + gap);
        Block cell{.kind = BlockKind::StatCell, .rect = {x, y, x + cellWidth, y + cellHeight}};
        cell.text = stats[i].key;
        cell.text2 = stats[i].value;
        cell.color = stats[i].color;
        ctx.add(std::move(cell));
    }
    summary.gap(2 * cellHeight + gap + ctx.s(12));

    if (s.warnings.empty() && s.resolved) {
        summary.note(L"Tüm görseller bulundu; skin sorunsuz.", kFontTiny, color::kAccent);
    } else {
        // As many warnings as the page has room for, one line each.
        const int line = ctx.line(kFontTiny);
        const int limit = f.form.bottom - sp.padY;
        for (const std::wstring& warning : s.warnings) {
            if (summary.y + line > limit) break;
            ctx.text({summary.left(), summary.y, summary.right(), summary.y + line}, warning, kFontTiny,
                     color::kError);
            summary.y += line;
        }
    }
    summary.finish();
}

void layoutBaglantilar(Ctx& ctx) {
    const FrameLayout& f = ctx.frame;
    const PageModel& m = ctx.model;
    const Spacing sp = spacing(ctx);

    Card server(ctx, f.form.left, f.form.right, f.form.top);
    server.title(L"Sunucu");
    server.note(L"Skinden okunan değerler doldurulur; değiştirdiğiniz alan exe'ye yazılır.");
    server.gap(sp.noteGap);
    const int ids[4] = {kFieldConfigUrl, kFieldNewsUrl, kFieldFeedUrl, kFieldTitle};
    const std::wstring origins[4] = {m.configOrigin, m.newsOrigin, m.feedOrigin, L""};
    for (int i = 0; i < 4; ++i) {
        const FieldSpec* spec = findField(ids[i]);
        if (i > 0) server.gap(sp.fieldGap);
        server.field(spec->id, spec->label, origins[i], spec->hint);
    }
    const int serverBottom = server.finish();

    // The link list takes the room that is left; the news-area card follows it when there is room for both.
    const int titleHeight = std::max(ctx.line(kFontCardTitle), ctx.s(20));
    const std::wstring linksNote =
        m.links.empty() ? L"Bu skinde bağlantı açan buton yok." : L"Her butonun tıklandığında açacağı adres.";
    const int noteHeight = ctx.measure.wrappedHeight(linksNote, kFontSmall, f.form.width() - 2 * sp.padX);
    const int rowHeight = ctx.line(kFontSmallBold) + sp.labelGap + sp.box + sp.fieldGap;
    const std::vector<std::wstring>& areas = m.summary.newsAreas;
    const int newsLines = std::max<int>(1, static_cast<int>(areas.size()));
    const int newsHeight = 2 * sp.padY + titleHeight + ctx.s(6) + newsLines * ctx.line(kFontSmall);
    const int linksTop = serverBottom + sp.cardGap;
    const int linksFixed = 2 * sp.padY + titleHeight + noteHeight + sp.noteGap - sp.fieldGap;
    int room = f.form.bottom - linksTop - linksFixed;
    bool showNews = room - newsHeight - sp.cardGap >= rowHeight;
    if (showNews) room -= newsHeight + sp.cardGap;
    const int pageSize = std::max(1, room / rowHeight);
    const int pages = linkPageCount(m.links.size(), pageSize);
    const int page = std::clamp(m.linkPage, 0, pages - 1);
    ctx.out.linkPageSize = pageSize;
    ctx.out.linkPages = pages;

    Card links(ctx, f.form.left, f.form.right, linksTop);
    const Rect title = links.title(L"Buton bağlantıları");
    if (pages > 1) {
        const int b = ctx.s(24);
        const int top = title.top + (title.height() - b) / 2;
        const std::wstring pageText = std::to_wstring(page + 1) + L" / " + std::to_wstring(pages);
        const int textWidth = ctx.textWidth(pageText, kFontTiny) + ctx.s(12);
        const int nextLeft = links.right() - b;
        const int textLeft = nextLeft - textWidth;
        Block prev = iconButton({textLeft - b, top, textLeft, top + b}, Icon::ChevronLeft, kItemLinkPagePrev);
        prev.disabled = page == 0;
        Block next =
            iconButton({nextLeft, top, nextLeft + b, top + b}, Icon::ChevronRight, kItemLinkPageNext);
        next.disabled = page + 1 >= pages;
        ctx.add(std::move(prev));
        ctx.add(std::move(next));
        Block text{.kind = BlockKind::PagerText, .rect = {textLeft, top, nextLeft, top + b}};
        text.text = pageText;
        ctx.add(std::move(text));
    }
    links.note(linksNote);
    links.gap(sp.noteGap);
    const size_t first = static_cast<size_t>(page) * static_cast<size_t>(pageSize);
    for (size_t i = first; i < m.links.size() && i < first + static_cast<size_t>(pageSize); ++i) {
        if (i > first) links.gap(sp.fieldGap);
        links.field(m.links[i].fieldId, m.links[i].label, m.links[i].note, L"");
    }
    const int linksBottom = links.finish();

    if (!showNews) return;
    Card news(ctx, f.form.left, f.form.right, linksBottom + sp.cardGap);
    news.title(L"Haber alanı");
    news.gap(ctx.s(6));
    if (areas.empty()) {
        news.note(L"—", kFontSmall, color::kMuted);
    } else {
        for (const std::wstring& area : areas) {
            const int line = ctx.line(kFontSmall);
            ctx.text({news.left(), news.y, news.right(), news.y + line}, area, kFontSmall, color::kSecondary);
            news.y += line;
        }
    }
    news.finish();
}

void layoutDavranis(Ctx& ctx) {
    const FrameLayout& f = ctx.frame;
    const PageModel& m = ctx.model;
    const Spacing sp = spacing(ctx);

    Card download(ctx, f.form.left, f.form.right, f.form.top);
    download.title(L"İndirme");
    download.note(L"Dosyalar parçalı ve paralel indirilir; Cloudflare önbelleğiyle uyumludur.");
    download.gap(sp.noteGap);

    auto label = [&](Card& card, const std::wstring& text) {
        const int h = ctx.line(kFontSmallBold);
        ctx.text({card.left(), card.y, card.right(), card.y + h}, text, kFontSmallBold, color::kText);
        card.gap(h + sp.labelGap);
    };
    label(download, L"Eşzamanlı bağlantı");
    // The eight chips narrow on a narrow column rather than run past the card.
    const int chipGap = ctx.s(6);
    const int chipWidth = std::min(ctx.s(36), (download.width() - 7 * chipGap) / 8);
    for (int n = kMinConnections; n <= kMaxConnections; ++n) {
        const int x = download.left() + (n - 1) * (chipWidth + chipGap);
        Block chip{.kind = BlockKind::Chip,
                   .rect = {x, download.y, x + chipWidth, download.y + sp.box},
                   .item = kItemConnectionChip,
                   .sub = n};
        chip.text = std::to_wstring(n);
        chip.on = m.recipe.settings.connections == n;
        ctx.add(std::move(chip));
    }
    download.gap(sp.box + sp.hintGap);
    download.note(L"Cloudflare için 4–6 önerilir.", kFontTiny, color::kMuted);
    download.gap(sp.fieldGap);

    label(download, L"Büyük dosya parça boyutu");
    const int rowTop = download.y;
    const int b = sp.box;
    ctx.add(iconButton({download.left(), rowTop, download.left() + b, rowTop + b}, Icon::Minus,
                       kItemSegmentMinus));
    const int boxLeft = download.left() + b + ctx.s(6);
    const int boxRight = boxLeft + ctx.s(64);
    Block box{
        .kind = BlockKind::FieldBox, .rect = {boxLeft, rowTop, boxRight, rowTop + b}, .field = kFieldSegment};
    box.on = m.focusField == kFieldSegment;
    ctx.add(std::move(box));
    const int plusLeft = boxRight + ctx.s(6);
    ctx.add(iconButton({plusLeft, rowTop, plusLeft + b, rowTop + b}, Icon::Plus, kItemSegmentPlus));
    const std::wstring unit = L"MB  •  Dosyalar bu boyutta parçalara bölünerek indirilir.";
    const int textLeft = plusLeft + b + ctx.s(10);
    const int textHeight = ctx.measure.wrappedHeight(unit, kFontSmall, download.right() - textLeft);
    const int rowHeight = std::max(b, textHeight);
    const int textTop = rowTop + (rowHeight - textHeight) / 2;
    ctx.text({textLeft, textTop, download.right(), textTop + textHeight}, unit, kFontSmall, color::kSecondary,
             Align::Left, true);
    download.y = rowTop + rowHeight + sp.hintGap;
    // The field shows the value that will be used once it loses the focus; the range says why.
    const RecipeKey& segment = *findKeyByField(kFieldSegment);
    download.note(L"İzin verilen: " + std::to_wstring(segment.low) + L"–" + std::to_wstring(segment.high) +
                      L" MB; dışındaki bir değer en yakın sınıra çekilir.",
                  kFontTiny, color::kMuted);
    const int downloadBottom = download.finish();

    Card launch(ctx, f.form.left, f.form.right, downloadBottom + sp.cardGap);
    launch.title(L"Başlatma");
    launch.note(L"Güncelleme bittikten sonra oyunun nasıl açılacağı.");
    launch.gap(sp.noteGap - ctx.s(4));
    const int toggleHeight = ctx.line(kFontBodyBold) + ctx.line(kFontTiny) + ctx.s(ctx.compact() ? 8 : 14);
    for (const ToggleSpec& spec : behaviourToggles()) {
        Block toggle{.kind = BlockKind::Toggle,
                     .rect = {launch.left(), launch.y, launch.right(), launch.y + toggleHeight},
                     .item = spec.item};
        toggle.text = spec.title;
        toggle.text2 = spec.line;
        toggle.on = keyOn(*findKey(spec.key), m.recipe);
        ctx.add(std::move(toggle));
        launch.gap(toggleHeight);
    }
    launch.gap(sp.fieldGap);
    const FieldSpec* args = findField(kFieldRunArgs);
    launch.field(args->id, args->label, L"", args->hint);
    launch.finish();
}

} // namespace nv::ui::detail
