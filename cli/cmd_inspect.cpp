// nvbuild inspect: what a skin holds, loaded as the builder's preview loads it.

#include "cli/json_writer.h"
#include "cli/nvbuild.h"
#include "cli/skin_input.h"
#include "core/text.h"

#include <cstdio>

namespace nv {
namespace {

std::wstring colorText(uint32_t argb) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "#%08X", argb);
    return widenAscii(buf);
}

const char* alignName(int align) { return align == 1 ? "center" : align == 2 ? "right" : "left"; }

std::wstring number(int64_t v) { return std::to_wstring(v); }

std::wstring orDash(const std::wstring& text) { return text.empty() ? L"—" : text; }

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
    json.key("feedUrl").value(m.feedUrl);
    json.key("feedRefresh").value(m.feedRefresh);

    const PatcherSettings& s = m.settings;
    json.key("settings").beginObject();
    json.key("title").value(s.title);
    json.key("connections").value(s.connections);
    json.key("segmentMb").value(s.segmentMb);
    json.key("closeOnStart").value(s.closeOnStart);
    json.key("autoStart").value(s.autoStart);
    json.key("allowStartOnError").value(s.allowStartOnError);
    json.key("browserEmulation").value(s.browserEmulation);
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
    for (const std::wstring& w : warnings) json.value(w);
    json.endArray();
    json.endObject();
    return json.text();
}

std::wstring controlLine(const SkinControl& c) {
    std::wstring line = L"  #" + number(c.index) + L" " + widenAscii(controlKindName(c.kind)) + L" " +
                        orDash(utf8ToWide(c.id)) + L"  " + number(c.x) + L"," + number(c.y) + L"  " +
                        number(c.width) + L"x" + number(c.height);
    if (!c.image.empty()) line += L"  görsel=" + utf8ToWide(c.image);
    if (!c.link.empty() || !c.linkUrl.empty()) {
        line += L"  bağlantı=" + orDash(c.link);
        // A link_url that names a locale key says which key the address came from.
        if (!c.linkUrl.empty() && utf8ToWide(c.linkUrl) != c.link) line += L" (" + utf8ToWide(c.linkUrl) + L")";
    }
    if (!c.execPath.empty()) line += L"  çalıştır=" + c.execPath;
    if (c.kind == ControlKind::Text) {
        line += L"  " + colorText(c.color) + L" " + number(c.size) + L"pt " + c.font;
        if (c.bold) line += L" kalın";
        if (c.shadow) line += L" gölge=" + colorText(c.shadowColor);
        line += L" " + widenAscii(alignName(c.align));
        if (!c.text.empty()) line += L"  \"" + c.text + L"\"";
    }
    return line;
}

void textReport(Console& console, const std::wstring& source, bool ok, const SkinModel& m,
                const std::vector<std::wstring>& warnings) {
    auto yesNo = [](bool b) { return std::wstring(b ? L"evet" : L"hayır"); };
    console.outLine(L"Kaynak: " + source);
    console.outLine(ok ? L"Durum: skin yüklendi" : L"Durum: skin çözülemedi");
    if (ok) {
        console.outLine(L"BOYUT: " + number(m.width) + L" x " + number(m.height) + L" px");
        console.outLine(std::wstring(L"PENCERE: ") + (m.background.hasTransparency ? L"Saydam" : L"Opak"));
    }
    console.outLine(L"Dosyalar: skin=" + orDash(utf8ToWide(m.skinFile)) + L"  adres=" +
                    orDash(utf8ToWide(m.addressFile)) + L"  dil=" + orDash(utf8ToWide(m.localeFile)));
    console.outLine(L"Adresler:");
    console.outLine(L"  remoteConfigPath: " + orDash(m.remoteConfigPath));
    console.outLine(L"  localConfigPath:  " + orDash(m.localConfigPath));
    console.outLine(L"  languagePath:     " + orDash(m.languagePath));
    console.outLine(L"  feed_url:         " + orDash(m.feedUrl) + L"  (yenileme " + number(m.feedRefresh) +
                    L" sn)");
    const PatcherSettings& s = m.settings;
    console.outLine(L"Ayarlar:");
    console.outLine(L"  başlık: " + orDash(s.title) + L"  bağlantı: " + number(s.connections) + L"  parça: " +
                    number(s.segmentMb) + L" MB");
    console.outLine(L"  oyun açılınca kapan: " + yesNo(s.closeOnStart) + L"  otomatik başlat: " +
                    yesNo(s.autoStart) + L"  hatada başlat: " + yesNo(s.allowStartOnError) +
                    L"  IE11 kipi: " + yesNo(s.browserEmulation));
    console.outLine(L"  oyun argümanları: " + orDash(s.runArgs));

    int buttons = 0, links = 0, texts = 0;
    for (const SkinControl& c : m.controls) {
        buttons += c.kind == ControlKind::Button;
        links += !c.link.empty();
        texts += c.kind == ControlKind::Text;
    }
    console.outLine(L"Kontroller: " + number(int64_t(m.controls.size())) + L"  (BUTON " + number(buttons) +
                    L", BAĞLANTI " + number(links) + L", METİN ALANI " + number(texts) + L")");
    for (const SkinControl& c : m.controls) console.outLine(controlLine(c));

    console.outLine(L"UYARI: " + number(int64_t(warnings.size())));
    if (warnings.empty() && ok) console.outLine(L"  Tüm görseller bulundu; skin sorunsuz.");
    for (const std::wstring& w : warnings) console.outLine(L"  " + w);
}

} // namespace

int commandInspect(const std::vector<std::wstring>& args, Console& console) {
    bool json = false;
    std::vector<std::wstring> positional;
    for (const std::wstring& a : args) {
        if (a == L"--json") json = true;
        else positional.push_back(a);
    }
    if (positional.size() != 1) return usage(console);

    SkinWorkspace workspace;
    std::wstring message, note;
    if (!loadSkinInput(positional[0], workspace, message, note)) {
        console.errLine(message);
        return kExitFailed;
    }
    std::vector<std::wstring> warnings;
    if (!note.empty()) warnings.push_back(L"Not: " + note);
    SkinModel model;
    bool ok = workspace.loadPreviewModel(model, warnings);
    if (json)
        console.outLine(utf8ToWide(jsonReport(ok, model, warnings)));
    else
        textReport(console, positional[0], ok, model, warnings);
    return ok ? kExitOk : kExitFailed;
}

} // namespace nv
