// nvbuild inspect: what a skin holds, loaded as the builder's preview loads it.

#include "cli/json_writer.h"
#include "cli/nvbuild.h"
#include "cli/skin_input.h"
#include "cli/text_columns.h"
#include "core/text.h"

#include <cstdio>

namespace nv {
namespace {

std::wstring colorText(uint32_t argb) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "#%08X", argb);
    return widenAscii(buf);
}

const char* alignName(int align) {
    return align == 1 ? "center" : align == 2 ? "right" : "left";
}

const wchar_t* alignLabel(int align) {
    return align == 1 ? L"ortalı" : align == 2 ? L"sağa yaslı" : L"sola yaslı";
}

const wchar_t* kindLabel(ControlKind kind) {
    switch (kind) {
    case ControlKind::Button:
        return L"buton";
    case ControlKind::Text:
        return L"metin";
    case ControlKind::Gauge:
        return L"ilerleme";
    case ControlKind::Iframe:
        return L"haber alanı";
    case ControlKind::Image:
        return L"görsel";
    case ControlKind::Unknown:
        break;
    }
    return L"bilinmeyen";
}

std::wstring number(int64_t v) {
    return std::to_wstring(v);
}

std::wstring orDash(const std::wstring& text) {
    return text.empty() ? L"—" : text;
}

void writeImageSize(JsonWriter& json, const char* name, const DecodedImage& image) {
    json.key(name);
    if (image.empty()) {
        json.null();
        return;
    }
    json.beginArray().value(image.width).value(image.height).endArray();
}

std::string jsonReport(bool ok, const SkinModel& m, const std::vector<std::wstring>& warnings) {
    JsonWriter json;
    json.beginObject();
    json.key("ok").value(ok);
    json.key("width").value(m.width);
    json.key("height").value(m.height);
    json.key("transparent").value(m.background.hasTransparency);
    json.key("skinFile").value(m.skinFile);
    json.key("addressFile").value(m.addressFile);
    json.key("localeFile").value(m.localeFile);
    json.key("remoteConfigPath").value(m.remoteConfigPath);
    json.key("localConfigPath").value(m.localConfigPath);
    json.key("languagePath").value(m.languagePath);
    json.key("newsUrl").value(ok ? localeText(m, "LAUNCHER_IFRAME") : std::wstring());
    json.key("newUrl").value(ok ? localeText(m, "LAUNCHER_NEW_URL") : std::wstring());
    json.key("feedUrl").value(m.feedUrl);
    json.key("feedRefresh").value(m.feedRefresh);

    const PatcherSettings& s = m.settings;
    json.key("settings").beginObject();
    json.key("title").value(s.title);
    json.key("connections").value(s.connections);
    json.key("segmentMb").value(s.segmentMb);
    json.key("closeOnStart").value(s.closeOnStart);
    json.key("autoStart").value(s.autoStart);
    json.key("allowStartOnError").value(s.allowError);
    json.key("browserEmulation").value(s.browserEmu);
    json.key("runArgs").value(s.runArgs);
    json.endObject();

    json.key("controls").beginArray();
    for (const SkinControl& c : m.controls) {
        json.beginObject();
        json.key("index").value(c.index);
        json.key("kind").value(controlKindName(c.kind));
        json.key("id").value(c.id);
        json.key("x").value(c.x);
        json.key("y").value(c.y);
        json.key("width").value(c.width);
        json.key("height").value(c.height);
        json.key("image").value(c.image);
        json.key("linkUrl").value(c.linkUrl);
        json.key("link").value(c.link);
        json.key("execPath").value(c.execPath);
        json.key("enableOnComplete").value(c.enableOnComplete);
        json.key("text").value(c.text);
        json.key("color").value(colorText(c.color));
        json.key("shadowColor").value(colorText(c.shadowColor));
        json.key("shadow").value(c.shadow);
        json.key("bold").value(c.bold);
        json.key("size").value(c.size);
        json.key("font").value(c.font);
        json.key("align").value(alignName(c.align));
        json.key("images").beginObject();
        writeImageSize(json, "up", c.imageUp);
        writeImageSize(json, "on", c.imageOn);
        writeImageSize(json, "down", c.imageDown);
        writeImageSize(json, "disabled", c.imageDisabled);
        writeImageSize(json, "full", c.imageFull);
        writeImageSize(json, "empty", c.imageEmpty);
        json.endObject();
        json.endObject();
    }
    json.endArray();

    json.key("warnings").beginArray();
    for (const std::wstring& w : warnings)
        json.value(w);
    json.endArray();
    json.endObject();
    return json.text();
}

// What a control shows or does, in the last column of its row.
std::wstring controlDetail(const SkinControl& c) {
    std::vector<std::wstring> parts;
    if (c.kind == ControlKind::Text) {
        if (!c.text.empty()) parts.push_back(L"\"" + c.text + L"\"");
        std::wstring style = number(c.size) + L" pt " + c.font + L", " + colorText(c.color);
        if (c.bold) style += L", kalın";
        if (c.shadow) style += L", gölge " + colorText(c.shadowColor);
        parts.push_back(style + L", " + alignLabel(c.align));
    }
    if (!c.image.empty()) parts.push_back(L"görsel " + utf8ToWide(c.image));
    if (!c.link.empty() || !c.linkUrl.empty()) {
        std::wstring link = L"açar " + orDash(c.link);
        // A link_url that names a locale key says which key the address came from.
        if (!c.linkUrl.empty() && utf8ToWide(c.linkUrl) != c.link)
            link += L" (" + utf8ToWide(c.linkUrl) + L")";
        parts.push_back(link);
    }
    if (!c.execPath.empty()) parts.push_back(L"çalıştırır " + c.execPath);
    if (c.enableOnComplete) parts.push_back(L"güncelleme bitince etkin");
    std::wstring out;
    for (const std::wstring& part : parts)
        out += (out.empty() ? L"" : L"; ") + part;
    return out;
}

void textReport(Console& console, const std::wstring& source, const SkinWorkspace& workspace,
                const SkinModel& m, const std::vector<std::wstring>& warnings) {
    auto yesNo = [](bool b) { return std::wstring(b ? L"evet" : L"hayır"); };
    int buttons = 0, links = 0, texts = 0;
    for (const SkinControl& c : m.controls) {
        buttons += c.kind == ControlKind::Button;
        links += !c.link.empty();
        texts += c.kind == ControlKind::Text;
    }
    TextColumns head;
    head.row({L"Kaynak:", source});
    head.row({L"Durum:", L"skin yüklendi"});
    head.row({L"BOYUT:", number(m.width) + L" x " + number(m.height) + L" px"});
    head.row({L"PENCERE:", m.background.hasTransparency ? L"Saydam" : L"Opak"});
    head.row({L"BUTON:", number(buttons) + L" buton"});
    head.row({L"BAĞLANTI:", number(links) + L" adres açan kontrol"});
    head.row({L"METİN ALANI:", number(texts) + L" metin alanı"});
    head.row({L"UYARI:", number(int64_t(warnings.size())) + L" uyarı"});
    head.print(console);

    console.outLine(L"");
    console.outLine(L"Dosyalar (kaynakta " + number(int64_t(workspace.files.entries.size())) + L" dosya):");
    TextColumns files;
    files.row({L"  skin:", utf8ToWide(m.skinFile)});
    files.row({L"  adres:", orDash(utf8ToWide(m.addressFile))});
    files.row({L"  dil:", m.localeFile.empty() ? L"— (yerleşik metinler)" : utf8ToWide(m.localeFile)});
    files.row(
        {L"  ayarlar:", workspace.files.hasFile("norvane.ini") ? L"norvane.ini" : L"— (varsayılanlar)"});
    files.print(console);

    console.outLine(L"");
    console.outLine(L"Adresler:");
    TextColumns addresses;
    addresses.row({L"  Sunucu yapılandırması (remoteConfigPath):", orDash(m.remoteConfigPath)});
    addresses.row({L"  Yerel yapılandırma (localConfigPath):", orDash(m.localConfigPath)});
    addresses.row({L"  Dil dosyası (languagePath):", orDash(m.languagePath)});
    addresses.row({L"  Haber sayfası (LAUNCHER_IFRAME):", orDash(localeText(m, "LAUNCHER_IFRAME"))});
    addresses.row({L"  \"Yeni\" sayfası (LAUNCHER_NEW_URL):", orDash(localeText(m, "LAUNCHER_NEW_URL"))});
    addresses.row({L"  Sunucu durumu (feed_url):",
                   m.feedUrl.empty() ? L"—" : m.feedUrl + L"  (" + number(m.feedRefresh) + L" sn'de bir)"});
    addresses.print(console);

    const PatcherSettings& s = m.settings;
    console.outLine(L"");
    console.outLine(L"Ayarlar:");
    TextColumns settings;
    settings.row({L"  Başlık:", orDash(s.title)});
    settings.row({L"  Eşzamanlı bağlantı:", number(s.connections)});
    settings.row({L"  Parça boyutu:", number(s.segmentMb) + L" MB"});
    settings.row({L"  Oyun açılınca kapansın:", yesNo(s.closeOnStart)});
    settings.row({L"  Bitince oyunu başlat:", yesNo(s.autoStart)});
    settings.row({L"  Hatada da başlatılabilsin:", yesNo(s.allowError)});
    settings.row({L"  IE11 kipi:", yesNo(s.browserEmu)});
    settings.row({L"  Oyun argümanları:", orDash(s.runArgs)});
    settings.print(console);

    console.outLine(L"");
    console.outLine(L"Kontroller (" + number(int64_t(m.controls.size())) + L" kontrol):");
    TextColumns controls;
    controls.row({L"  #", L"TÜR", L"KİMLİK", L"KONUM", L"BOYUT", L"AYRINTI"});
    for (const SkinControl& c : m.controls)
        controls.row({L"  " + number(c.index), kindLabel(c.kind), orDash(utf8ToWide(c.id)),
                      number(c.x) + L"," + number(c.y), number(c.width) + L"x" + number(c.height),
                      controlDetail(c)});
    controls.print(console);

    console.outLine(L"");
    console.outLine(L"Uyarılar (" + number(int64_t(warnings.size())) + L" uyarı):");
    if (warnings.empty()) console.outLine(L"  Tüm görseller bulundu; skin sorunsuz.");
    for (const std::wstring& w : warnings)
        console.outLine(L"  " + printable(w));
}

int commandInspect(const Invocation& invocation, Console& console) {
    const bool json = invocation.has(L"--json");
    const std::wstring& source = invocation.arguments[0];

    SkinWorkspace workspace;
    std::wstring message, note;
    if (!loadSkinInput(source, workspace, message, note)) {
        // A script that asked for JSON gets an object in every case; the reason goes to standard error too.
        if (json) console.outLine(utf8ToWide(jsonReport(false, SkinModel{}, {message})));
        return failed(console, message);
    }
    LoadMessages messages;
    if (!note.empty()) messages.warnings.push_back(L"Not: " + note);
    SkinModel model;
    const bool ok = workspace.loadPreviewModel(model, messages);
    const std::vector<std::wstring> warnings = messages.lines();
    if (json)
        console.outLine(utf8ToWide(jsonReport(ok, model, warnings)));
    else if (ok)
        textReport(console, source, workspace, model, warnings);
    else
        console.outLine(L"Kaynak: " + source + L"\nDurum: skin çözülemedi");
    if (ok) return kExitOk;
    for (const std::wstring& w : warnings)
        console.errLine(w);
    return kExitFailed;
}

constexpr std::wstring_view kInspectArguments[] = {L"SOURCE"};
constexpr OptionSpec kInspectOptions[] = {{L"--json", L""}};

} // namespace

const Command kInspectCommand{
    L"inspect",
    L"Skinin içeriğini ve uyarılarını, oluşturucunun önizlemesinin yüklediği gibi gösterir.",
    L"inspect SOURCE [--json]",
    L"Argümanlar:\n"
    L"  SOURCE  skin: klasör, .zip, skin paketi ya da (Windows'ta) skin taşıyan patcher .exe\n"
    L"Seçenekler:\n"
    L"  --json  özeti tek bir JSON nesnesi olarak yazar (yüklenemeyen skinde de: ok false ve uyarılar)\n"
    L"\n"
    L"Özet: pencere boyutu ve türü, eşlik eden dosyalar, adresler (haber sayfası dahil), norvane.ini\n"
    L"ayarları, her kontrol (tür, kimlik, konum, boyut, görsel, bağlantı) ve yükleyicinin uyarıları.\n"
    L"Skin yüklenemezse çıkış 1; nedeni standart hataya yazılır.\n",
    kInspectArguments,
    kInspectOptions,
    commandInspect,
};

} // namespace nv
