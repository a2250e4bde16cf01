// Layout of the last three sections: Kimlik, Çıktı ve İmza, Derleme.

#include "ui/layout_cards.h"

#include "core/paths.h"

#include <algorithm>

namespace nv::ui::detail {

namespace {

// The certificate sources, as the signing card's chips name them, and the line that says what each one is.
struct SourceChoice {
    SigningSource source;
    const wchar_t* chip;
    const wchar_t* line;
};
constexpr SourceChoice kSourceChoices[] = {
    {SigningSource::PfxFile, L"PFX", L"Parola korumalı .pfx / .p12 dosyası (signtool /f)."},
    {SigningSource::Store, L"Depo",
     L"Windows sertifika deposundaki sertifika; anahtarı token'da olabilir (signtool /sha1)."},
    {SigningSource::Automatic, L"Otomatik",
     L"signtool depodaki imza sertifikalarından en uygununu kendisi seçer (signtool /a)."},
    {SigningSource::Plugin, L"Eklenti", L"Bulut imza hizmetinin signtool eklentisi ve ayar dosyası (/dlib)."},
    {SigningSource::Command, L"Komut",
     L"signtool yerine kendi aracınız (osslsigncode, jsign, hizmetin istemcisi); çıkış kodu 0 başarıdır."},
};

// The certificate source: one chip per source, the chosen one standing out, and the chosen one's line under
// them (which is what names the row: a label above would push the card out of the compact window).
void sourceChips(Card& card, SigningSource chosen, bool building) {
    Ctx& ctx = card.ctx();
    const Spacing sp = spacing(ctx);
    int x = card.left();
    for (const SourceChoice& choice : kSourceChoices) {
        const int width = ctx.textWidth(choice.chip, kFontSmallBold) + ctx.s(24);
        if (x + width > card.right() && x > card.left()) {
            x = card.left();
            card.gap(sp.box + ctx.s(6));
        }
        Block chip{.kind = BlockKind::Chip,
                   .rect = {x, card.y, x + width, card.y + sp.box},
                   .item = kItemSigningSource,
                   .sub = static_cast<int>(choice.source)};
        chip.text = choice.chip;
        chip.on = choice.source == chosen;
        chip.disabled = building;
        ctx.add(std::move(chip));
        x += width + ctx.s(6);
    }
    card.gap(sp.box + sp.hintGap);
    for (const SourceChoice& choice : kSourceChoices)
        if (choice.source == chosen) card.note(choice.line, kFontTiny, color::kMuted);
    card.gap(sp.fieldGap);
}

// A field of the table with its label and hint.
Rect specField(Card& card, int id, int boxRight = 0) {
    const FieldSpec* spec = findField(id);
    return card.field(id, spec->label, L"", spec->hint, boxRight);
}

// A path field with its "Seç" button on the right.
void pickedField(Card& card, int id, int item) {
    Ctx& ctx = card.ctx();
    const std::wstring choose = L"Seç";
    const int chooseWidth = buttonWidth(ctx, choose, false);
    const FieldSpec* spec = findField(id);
    const Rect box = card.field(id, spec->label, L"", L"", card.right() - chooseWidth - ctx.s(8));
    card.button(card.right() - chooseWidth, box.top + (box.height() - spacing(ctx).button) / 2, choose, item);
    if (*spec->hint) {
        card.gap(spacing(ctx).hintGap);
        card.note(spec->hint, kFontTiny, color::kMuted);
    }
}

// A field beside another on one row, between left and right; the caller moves the card past the row.
void sideField(Card& card, int id, int left, int right) {
    Ctx& ctx = card.ctx();
    const Spacing sp = spacing(ctx);
    const FieldSpec* spec = findField(id);
    const int labelHeight = ctx.line(kFontSmallBold);
    ctx.text({left, card.y, left + std::min(right - left, ctx.textWidth(spec->label, kFontSmallBold)),
              card.y + labelHeight},
             spec->label, kFontSmallBold, color::kText);
    Block box{.kind = BlockKind::FieldBox,
              .rect = {left, card.y + labelHeight + sp.labelGap, right,
                       card.y + labelHeight + sp.labelGap + sp.box},
              .field = id};
    box.on = ctx.model.focusField == id;
    ctx.add(std::move(box));
}

// The store sources: the user's "My" store, or the computer's on request.
void machineStoreToggle(Card& card, bool on, bool building) {
    Ctx& ctx = card.ctx();
    const int height = ctx.line(kFontBodyBold) + ctx.line(kFontTiny) + ctx.s(ctx.compact() ? 2 : 12);
    Block toggle{.kind = BlockKind::Toggle,
                 .rect = {card.left(), card.y, card.right(), card.y + height},
                 .item = kItemToggleMachineStore};
    toggle.text = L"Bilgisayarın deposu";
    toggle.text2 = L"Kullanıcınınki yerine bu bilgisayarın deposu (signtool /sm).";
    toggle.on = on;
    toggle.disabled = building;
    ctx.add(std::move(toggle));
    card.gap(height);
}

} // namespace

void layoutKimlik(Ctx& ctx) {
    const FrameLayout& f = ctx.frame;
    const PageModel& m = ctx.model;
    const Spacing sp = spacing(ctx);

    Card icon(ctx, f.form.left, f.form.right, f.form.top);
    icon.title(L"Simge");
    icon.note(L"Patcher exe'sinin Gezgin'de ve görev çubuğunda görünen simgesi.");
    icon.gap(sp.noteGap);

    const int tile = ctx.s(48);
    const int rowTop = icon.y;
    Block preview{.kind = BlockKind::StateTile,
                  .rect = {icon.left(), rowTop, icon.left() + tile, rowTop + tile}};
    preview.on = m.iconPreview;
    preview.hasIcon = true;
    preview.icon = Icon::Image;
    preview.field = 1; // the icon tile: draws the chosen icon's pixels when there are any
    ctx.add(std::move(preview));

    const std::wstring& iconFile = m.recipe.icon;
    const bool hasIcon = !iconFile.empty();
    const std::wstring choose = L"Simge seç";
    const std::wstring name = hasIcon ? pathFileName(iconFile) : L"Varsayılan simge";
    const std::wstring where = hasIcon ? pathParent(iconFile) : L"Şablonun simgesi kullanılacak";
    const int textLeft = icon.left() + tile + ctx.s(14);
    int buttonsLeft = icon.right() - buttonWidth(ctx, choose, true);
    if (hasIcon) buttonsLeft -= sp.button + ctx.s(8);
    // A narrow column (a laptop at 125 %) puts the buttons under the tile rather than over the texts.
    const int wanted = std::max(ctx.textWidth(name, kFontBodyBold), ctx.textWidth(where, kFontTiny));
    const bool below = !hasIcon && buttonsLeft - ctx.s(12) - textLeft < wanted;
    int buttonTop = rowTop + (tile - sp.button) / 2;
    if (below) {
        buttonsLeft = icon.left();
        buttonTop = rowTop + tile + ctx.s(10);
    }
    const Rect chooseRect = icon.button(buttonsLeft, buttonTop, choose, kItemChooseIcon, 0, Icon::Image);
    if (hasIcon) {
        Block remove{.kind = BlockKind::IconButton,
                     .rect = {chooseRect.right + ctx.s(8), buttonTop, chooseRect.right + ctx.s(8) + sp.button,
                              buttonTop + sp.button},
                     .item = kItemRemoveIcon};
        remove.hasIcon = true;
        remove.icon = Icon::Trash;
        ctx.add(std::move(remove));
    }
    const int textRight = below ? icon.right() : buttonsLeft - ctx.s(12);
    const int nameHeight = ctx.line(kFontBodyBold);
    const int lineHeight = ctx.line(kFontTiny);
    const int textTop = rowTop + (tile - nameHeight - lineHeight - ctx.s(2)) / 2;
    ctx.text({textLeft, textTop, textRight, textTop + nameHeight}, name, kFontBodyBold, color::kText).path =
        hasIcon;
    ctx.text({textLeft, textTop + nameHeight + ctx.s(2), textRight,
              textTop + nameHeight + ctx.s(2) + lineHeight},
             where, kFontTiny, color::kMuted)
        .path = hasIcon;
    icon.y = (below ? buttonTop + sp.button : rowTop + tile) + ctx.s(10);
    icon.note(L".ico önerilir; PNG/JPG otomatik çok boyutlu simgeye çevrilir.", kFontTiny, color::kMuted);
    const int iconBottom = icon.finish();

    Card info(ctx, f.form.left, f.form.right, iconBottom + sp.cardGap);
    info.title(L"Dosya bilgileri");
    info.gap(sp.noteGap);
    bool first = true;
    for (int id : {kFieldOutName, kFieldProduct, kFieldCompany, kFieldVersion, kFieldCopyright}) {
        const FieldSpec* spec = findField(id);
        if (!first) info.gap(sp.fieldGap);
        first = false;
        info.field(id, spec->label, L"", spec->hint);
    }
    info.finish();
}

void layoutCikti(Ctx& ctx) {
    const FrameLayout& f = ctx.frame;
    const PageModel& m = ctx.model;
    const Spacing sp = spacing(ctx);

    Card output(ctx, f.form.left, f.form.right, f.form.top);
    output.title(L"Çıktı");
    output.note(L"Oluşturulan patcher exe'sinin kaydedileceği yer.");
    output.gap(sp.noteGap);
    const FieldSpec* path = findField(kFieldOutPath);
    const int pickerLeft = output.right() - sp.box;
    // The label is the page's word for the place; the hint sits under the row.
    const Rect box = output.field(path->id, L"Konum", L"", L"", pickerLeft - ctx.s(8));
    Block picker{.kind = BlockKind::IconButton,
                 .rect = {pickerLeft, box.top, output.right(), box.bottom},
                 .item = kItemChooseOutput};
    picker.hasIcon = true;
    picker.icon = Icon::FolderOpen;
    ctx.add(std::move(picker));
    output.gap(sp.hintGap);
    output.note(path->hint, kFontTiny, color::kMuted);
    const int outputBottom = output.finish();

    Card sign(ctx, f.form.left, f.form.right, outputBottom + sp.cardGap);
    sign.title(L"Kod imzalama (isteğe bağlı)");
    sign.note(L"İmzalı exe yayıncı adıyla açılır; uyarı ve yanlış alarm riski azalır.");
    sign.note(L"Windows SDK'daki signtool.exe ile, SHA-256.", kFontTiny, color::kMuted);
    sign.gap(sp.noteGap - ctx.s(4));
    const int toggleHeight = ctx.line(kFontBodyBold) + ctx.line(kFontTiny) + ctx.s(ctx.compact() ? 8 : 14);
    Block toggle{.kind = BlockKind::Toggle,
                 .rect = {sign.left(), sign.y, sign.right(), sign.y + toggleHeight},
                 .item = kItemToggleSigning};
    toggle.text = L"Exe'yi imzala";
    const std::wstring& signtool = m.recipe.signing.signtoolPath;
    toggle.text2 = !signtool.empty() ? L"signtool: " + signtool
                                     : L"signtool.exe bulunamadı — imza için Windows SDK gerekir.";
    toggle.on = m.recipe.signing.enabled;
    ctx.add(std::move(toggle));
    sign.gap(toggleHeight + sp.fieldGap);

    const SigningOptions& signing = m.recipe.signing;
    sourceChips(sign, signing.source, m.building);
    switch (signing.source) {
    case SigningSource::PfxFile:
        pickedField(sign, kFieldPfx, kItemChooseCertificate);
        sign.gap(sp.fieldGap);
        specField(sign, kFieldPassword);
        break;
    case SigningSource::Store:
        specField(sign, kFieldThumbprint);
        sign.gap(sp.fieldGap);
        machineStoreToggle(sign, signing.machineStore, m.building);
        break;
    case SigningSource::Automatic:
        machineStoreToggle(sign, signing.machineStore, m.building);
        break;
    case SigningSource::Plugin:
        pickedField(sign, kFieldPlugin, kItemChoosePlugin);
        sign.gap(sp.fieldGap);
        pickedField(sign, kFieldPluginMetadata, kItemChoosePluginMetadata);
        break;
    case SigningSource::Command:
        specField(sign, kFieldSignCommand);
        break;
    }
    // The operator's own tool time-stamps as it is told to; signtool takes the servers in order.
    if (signing.source != SigningSource::Command) {
        sign.gap(sp.fieldGap);
        const int half = (sign.width() - ctx.s(12)) / 2;
        sideField(sign, kFieldTimestamp, sign.left(), sign.left() + half);
        sideField(sign, kFieldTimestampMore, sign.right() - half, sign.right());
        sign.gap(ctx.line(kFontSmallBold) + sp.labelGap + sp.box + sp.hintGap);
        sign.note(L"Sırayla denenir; hiçbiri yanıt vermezse damgasız imzalanır ve uyarılır.", kFontTiny,
                  color::kMuted);
    }
    sign.finish();
    // Signing fields look as their edit controls are: switched off while signing is off or a build runs.
    for (Block& block : ctx.out.blocks)
        if (block.kind == BlockKind::FieldBox && isSigningField(block.field))
            block.disabled = !signing.enabled || m.building;
}

void layoutDerleme(Ctx& ctx) {
    const FrameLayout& f = ctx.frame;
    const PageModel& m = ctx.model;
    const Spacing sp = spacing(ctx);

    // State card: a tile, the state's title and lines, the build button.
    Card state(ctx, f.form.left, f.form.right, f.form.top);
    const int tile = ctx.s(ctx.compact() ? 42 : 46);
    std::wstring title, line, line2, pill, cta = L"EXE Oluştur";
    Icon icon = Icon::Bolt;
    Rgb lineColor = color::kSecondary;
    switch (m.buildState) {
    case BuildPageState::NoSkin:
        title = L"Önce bir skin yükleyin";
        line = L"Kaynak bölümünden skin .zip dosyasını ya da klasörünü seçin.";
        icon = Icon::Info;
        break;
    case BuildPageState::Ready:
        title = L"Derlemeye hazır";
        pill = L"Hazır";
        line = trimmedEmpty(m.recipe.outPath) ? L"Çıktı yeri Çıktı ve İmza bölümünden seçilir."
                                              : L"Hedef: " + m.recipe.outPath;
        break;
    case BuildPageState::Building:
        title = L"Patcher oluşturuluyor…";
        line = L"Skin paketleniyor ve şablona yazılıyor.";
        cta = L"Lütfen bekleyin…";
        icon = Icon::Refresh;
        break;
    case BuildPageState::Done:
        title = L"Patcher hazır";
        pill = L"Tamamlandı";
        line = L"Hedef: " + m.recipe.outPath;
        line2 = L"Exe'yi oyun klasörüne koyup oyunculara dağıtın.";
        cta = L"Yeniden oluştur";
        icon = Icon::Check;
        break;
    case BuildPageState::Failed:
        title = L"Oluşturulamadı";
        line = m.lastMessage;
        line2 = L"Ayrıntılar günlükte.";
        lineColor = color::kError;
        icon = Icon::Warning;
        break;
    }
    const int ctaWidth = std::max(ctx.s(150), ctx.textWidth(cta, kFontBodyBold) + ctx.s(40));
    const int textLeft = state.left() + tile + ctx.s(14);
    // On a narrow column the button goes under the words rather than squeeze them.
    const bool stacked = state.right() - ctaWidth - ctx.s(14) - textLeft < ctx.s(240);
    const int textRight = stacked ? state.right() : state.right() - ctaWidth - ctx.s(14);
    const int columnWidth = std::max(1, textRight - textLeft);
    // Where the column is narrow (the compact window, a long error) the state's words wrap rather than lose
    // their end; a target path stays on one line and is shortened in its middle.
    const bool linePath = line.rfind(L"Hedef: ", 0) == 0;
    auto wrapped = [&](const std::wstring& text, int font, int maxLines) {
        return std::min(ctx.measure.wrappedHeight(text, font, columnWidth), maxLines * ctx.line(font));
    };
    const bool titleWraps = ctx.textWidth(title, kFontStateTitle) > columnWidth;
    const int titleHeight = titleWraps ? wrapped(title, kFontStateTitle, 2) : ctx.line(kFontStateTitle);
    // The page scrolls, so a long failure keeps more of its words; a hostile one stays bounded.
    const int lineHeight = linePath ? ctx.line(kFontSmall) : wrapped(line, kFontSmall, 8);
    const int line2Height = line2.empty() ? 0 : wrapped(line2, kFontTiny, 2) + ctx.s(2);
    const int textHeight = titleHeight + ctx.s(2) + lineHeight + line2Height;
    const int contentHeight = std::max(tile, textHeight);
    const int top = state.y;
    Block tileBlock{.kind = BlockKind::StateTile,
                    .rect = {state.left(), top + (contentHeight - tile) / 2, state.left() + tile,
                             top + (contentHeight - tile) / 2 + tile}};
    tileBlock.hasIcon = true;
    tileBlock.icon = icon;
    tileBlock.on = m.buildState != BuildPageState::NoSkin;
    tileBlock.color = m.buildState == BuildPageState::Failed ? color::kError : color::kAccent;
    tileBlock.sub = static_cast<int>(m.buildState);
    ctx.add(std::move(tileBlock));

    const int ctaHeight = ctx.s(ctx.compact() ? 36 : 40);
    const Rect ctaRect = stacked ? Rect{textLeft, top + contentHeight + ctx.s(12),
                                        std::min(state.right(), textLeft + ctaWidth),
                                        top + contentHeight + ctx.s(12) + ctaHeight}
                                 : Rect{state.right() - ctaWidth, top + (contentHeight - ctaHeight) / 2,
                                        state.right(), top + (contentHeight - ctaHeight) / 2 + ctaHeight};
    Block button{.kind = BlockKind::PrimaryButton, .rect = ctaRect, .item = kItemBuildPage};
    button.text = cta;
    button.font = kFontBodyBold;
    // While the build runs the button shows it and takes no second click.
    button.disabled = m.building;
    button.on = m.building;
    ctx.add(std::move(button));

    int y = top + (contentHeight - textHeight) / 2;
    const int titleWidth = std::min(columnWidth, ctx.textWidth(title, kFontStateTitle));
    ctx.text({textLeft, y, textLeft + titleWidth, y + titleHeight}, title, kFontStateTitle, color::kText,
             Align::Left, titleWraps);
    if (!pill.empty() && !titleWraps) {
        const int pillWidth = ctx.textWidth(pill, kFontTiny) + ctx.s(16);
        const int pillHeight = ctx.s(20);
        const int pillLeft = textLeft + titleWidth + ctx.s(10);
        if (pillLeft + pillWidth <= textRight) {
            Block p{.kind = BlockKind::Pill,
                    .rect = {pillLeft, y + (titleHeight - pillHeight) / 2, pillLeft + pillWidth,
                             y + (titleHeight - pillHeight) / 2 + pillHeight}};
            p.text = pill;
            ctx.add(std::move(p));
        }
    }
    y += titleHeight + ctx.s(2);
    ctx.text({textLeft, y, textRight, y + lineHeight}, line, kFontSmall, lineColor, Align::Left, !linePath)
        .path = linePath;
    y += lineHeight;
    if (!line2.empty())
        ctx.text({textLeft, y + ctx.s(2), textRight, y + line2Height}, line2, kFontTiny, color::kMuted,
                 Align::Left, true);
    state.y = stacked ? ctaRect.bottom : top + contentHeight;
    const int stateBottom = state.finish();

    // Readiness checklist.
    Card ready(ctx, f.form.left, f.form.right, stateBottom + sp.cardGap);
    const Rect readyTitle = ready.title(L"Hazırlık");
    const std::wstring header = readinessHeader(m.readiness);
    const bool allReady =
        std::all_of(m.readiness.begin(), m.readiness.end(), [](const ReadinessRow& r) { return r.ready; });
    ctx.text(readyTitle, header, kFontSmallBold, allReady ? color::kAccent : color::kSecondary, Align::Right);
    ready.gap(ctx.s(6));
    const int rowHeight = ctx.s(ctx.compact() ? 25 : 29);
    for (size_t i = 0; i < m.readiness.size(); ++i) {
        const ReadinessRow& row = m.readiness[i];
        Block check{.kind = BlockKind::CheckRow,
                    .rect = {ready.left(), ready.y, ready.right(), ready.y + rowHeight}};
        check.text = row.label;
        check.text2 = row.value;
        check.on = row.ready;
        check.warning = !row.ready && row.warning;
        // A row that is not ready takes the operator to what fixes it.
        if (!row.ready && row.fixSection >= 0) {
            check.item = kItemReadinessRow;
            check.sub = static_cast<int>(i);
        }
        ctx.add(std::move(check));
        ready.gap(rowHeight);
    }
    ready.gap(-ctx.s(4));
    const int readyBottom = ready.finish();

    // Result of the last build.
    Card result(ctx, f.form.left, f.form.right, readyBottom + sp.cardGap);
    result.title(L"Sonuç");
    if (!m.hasResult) {
        result.gap(ctx.s(4));
        result.note(L"Derleme bittiğinde ayrıntılar burada görünür.", kFontSmall, color::kMuted);
        result.finish();
        return;
    }
    if (m.resultStale) {
        // The numbers below still describe the file on disk, but not the settings as they are now.
        result.gap(ctx.s(4));
        result.note(L"Ayarlar bu derlemeden sonra değişti: diskteki exe ve CRC32 bu derlemenin, yeni ayarlar "
                    L"için yeniden oluşturun.",
                    kFontSmall, color::kWarning);
    }
    result.gap(ctx.s(10));
    const int gap = ctx.s(10);
    const int cellWidth = (result.width() - 2 * gap) / 3;
    const int cellHeight = ctx.s(ctx.compact() ? 46 : 52);
    const std::wstring values[3][2] = {{L"CRC32", crcText(m.crc)},
                                       {L"İMZA", m.signedResult ? L"İmzalı" : L"İmzasız"},
                                       {L"SÜRE", durationText(m.elapsedMs)}};
    for (int i = 0; i < 3; ++i) {
        const int x = result.left() + i * (cellWidth + gap);
        Block cell{.kind = BlockKind::StatCell, .rect = {x, result.y, x + cellWidth, result.y + cellHeight}};
        cell.text = values[i][0];
        cell.text2 = values[i][1];
        cell.font = kFontStateTitle;
        ctx.add(std::move(cell));
    }
    result.gap(cellHeight + ctx.s(10));
    if (m.signedResult && !ctx.compact()) {
        // Who signed the patcher and whether it is time-stamped, as read back from the written file. The
        // compact window has no room for them under the cells; the log beside the card holds the same lines.
        const int lineHeight = ctx.line(kFontTiny);
        for (const std::wstring& line : signatureLines(m.signature)) {
            ctx.text({result.left(), result.y, result.right(), result.y + lineHeight}, line, kFontTiny,
                     color::kSecondary);
            result.gap(lineHeight + ctx.s(2));
        }
        result.gap(ctx.s(6));
    } else {
        result.gap(ctx.s(2));
    }
    // The buttons flow onto a second row where the column is narrow.
    int x = result.left();
    const struct {
        const wchar_t* text;
        int item;
        Icon icon;
    } buttons[] = {{L"Klasörde göster", kItemShowInFolder, Icon::Folder},
                   {L"Patcher'ı önizle", kItemPreviewResult, Icon::Play},
                   {L"CRC kopyala", kItemCopyCrc, Icon::Copy}};
    for (const auto& b : buttons) {
        if (x > result.left() && x + buttonWidth(ctx, b.text, true) > result.right()) {
            x = result.left();
            result.gap(sp.button + ctx.s(8));
        }
        x = result.button(x, result.y, b.text, b.item, 0, b.icon).right + ctx.s(8);
    }
    result.gap(sp.button);
    const int resultBottom = result.finish();

    // The self-update line.
    Card update(ctx, f.form.left, f.form.right, resultBottom + sp.cardGap);
    const std::wstring copyText = L"Kopyala";
    const int copyWidth = buttonWidth(ctx, copyText, false);
    const std::wstring updateTitle = L"Patcher kendini de güncelleyebilir";
    // The button goes under the words where the title would not fit beside it.
    const bool stackedCopy =
        ctx.textWidth(updateTitle, kFontCardTitle) > update.width() - copyWidth - ctx.s(14);
    const int textWidth = stackedCopy ? update.width() : update.width() - copyWidth - ctx.s(14);
    const int updateTop = update.y;
    const std::wstring updateText =
        L"Exe'yi crclist'e ekleyin; config'e nv_patcher_url ve nv_patcher_crc32=" + crcText(m.crc) +
        L" yazın.";
    const int th = std::max(ctx.line(kFontCardTitle), ctx.s(20));
    const int bodyHeight = ctx.measure.wrappedHeight(updateText, kFontSmall, textWidth);
    ctx.text({update.left(), updateTop, update.left() + textWidth, updateTop + th}, updateTitle,
             kFontCardTitle, color::kText);
    ctx.text({update.left(), updateTop + th + ctx.s(3), update.left() + textWidth,
              updateTop + th + ctx.s(3) + bodyHeight},
             updateText, kFontSmall, color::kSecondary, Align::Left, true);
    const int contentBottom = updateTop + th + ctx.s(3) + bodyHeight;
    if (stackedCopy) {
        update.button(update.left(), contentBottom + ctx.s(10), copyText, kItemCopySelfUpdate);
        update.y = contentBottom + ctx.s(10) + sp.button;
    } else {
        update.button(update.right() - copyWidth, (updateTop + contentBottom - sp.button) / 2, copyText,
                      kItemCopySelfUpdate);
        update.y = contentBottom;
    }
    update.finish();
}

} // namespace nv::ui::detail
