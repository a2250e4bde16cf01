// nvbuild compose: the skin package a build would embed, with the operator's edits given as options.

#include "cli/nvbuild.h"
#include "cli/skin_input.h"
#include "core/files.h"
#include "core/text.h"
#include "core/values.h"

#include <optional>

namespace nv {
namespace {

struct LinkEdit {
    std::string id;
    std::wstring url;
};

// The editable values a build takes from the builder's fields; what is not given stays as imported.
struct Edits {
    std::optional<std::wstring> configUrl, newsUrl, feedUrl, title, runArgs;
    std::optional<int> connections, segmentMb;
    std::optional<bool> closeOnStart, autoStart, allowError, browserEmulation;
    std::vector<LinkEdit> links;
};

std::optional<std::wstring> textOption(const Invocation& invocation, std::wstring_view name) {
    const std::wstring* value = invocation.value(name);
    return value ? std::optional<std::wstring>(*value) : std::nullopt;
}

// Reads the options into edits. On a value out of its range or form, error says which and why.
bool readEdits(const Invocation& invocation, Edits& edits, std::wstring& error) {
    edits.configUrl = textOption(invocation, L"--config-url");
    edits.newsUrl = textOption(invocation, L"--news-url");
    edits.feedUrl = textOption(invocation, L"--feed-url");
    edits.title = textOption(invocation, L"--title");
    edits.runArgs = textOption(invocation, L"--run-args");

    auto ranged = [&](std::wstring_view name, int low, int high, std::optional<int>& target) {
        const std::wstring* text = invocation.value(name);
        if (!text) return true;
        const int v = parseInt(wideToUtf8(*text), low - 1);
        if (v >= low && v <= high) {
            target = v;
            return true;
        }
        error = std::wstring(name) + L" " + std::to_wstring(low) + L" ile " + std::to_wstring(high) +
                L" arasında bir tam sayı olmalı: " + *text;
        return false;
    };
    auto onOff = [&](std::wstring_view name, std::optional<bool>& target) {
        const std::wstring* text = invocation.value(name);
        if (!text) return true;
        if (*text == L"1" || *text == L"0") {
            target = *text == L"1";
            return true;
        }
        error = std::wstring(name) + L" 0 ya da 1 olmalı: " + *text;
        return false;
    };
    if (!ranged(L"--conn", 1, 8, edits.connections) || !ranged(L"--seg", 1, 64, edits.segmentMb) ||
        !onOff(L"--close-on-start", edits.closeOnStart) || !onOff(L"--auto-start", edits.autoStart) ||
        !onOff(L"--allow-error", edits.allowError) || !onOff(L"--browser-emu", edits.browserEmulation))
        return false;

    for (const std::wstring& link : invocation.values(L"--link")) {
        const size_t eq = link.find(L'=');
        if (eq == 0 || eq == std::wstring::npos) {
            error = L"--link ID=URL biçiminde olmalı: " + link;
            return false;
        }
        edits.links.push_back({wideToUtf8(link.substr(0, eq)), link.substr(eq + 1)});
    }
    return true;
}

// The edits land where the builder's fields would put them; a link for an id without a button is refused.
bool applyEdits(const Edits& edits, SkinWorkspace& ws, std::wstring& error) {
    if (edits.configUrl) ws.serverAddress = *edits.configUrl;
    if (edits.newsUrl) ws.newsAddress = *edits.newsUrl;
    if (edits.feedUrl) ws.feedUrl = *edits.feedUrl;
    PatcherSettings& s = ws.settings;
    if (edits.title) s.title = *edits.title;
    if (edits.runArgs) s.runArgs = *edits.runArgs;
    if (edits.connections) s.connections = *edits.connections;
    if (edits.segmentMb) s.segmentMb = *edits.segmentMb;
    if (edits.closeOnStart) s.closeOnStart = *edits.closeOnStart;
    if (edits.autoStart) s.autoStart = *edits.autoStart;
    if (edits.allowError) s.allowStartOnError = *edits.allowError;
    if (edits.browserEmulation) s.browserEmulation = *edits.browserEmulation;
    for (const LinkEdit& link : edits.links) {
        if (!ws.setButtonLink(link.id, link.url)) {
            error = L"Skin'de bu kimlikte buton yok: " + utf8ToWide(link.id);
            return false;
        }
    }
    return true;
}

int commandCompose(const Invocation& invocation, Console& console) {
    Edits edits;
    std::wstring error;
    if (!readEdits(invocation, edits, error)) return invocation.usageError(console, error);

    const std::wstring& source = invocation.arguments[0];
    const std::wstring& out = invocation.arguments[1];
    SkinWorkspace workspace;
    std::wstring message, note;
    if (!loadSkinInput(source, workspace, message, note)) return failed(console, message);
    if (!note.empty()) console.errLine(L"Not: " + note);
    if (!applyEdits(edits, workspace, error)) return failed(console, error);

    Bytes package;
    std::vector<std::wstring> messages;
    bool ok = workspace.buildSkinPackage(package, messages);
    for (const std::wstring& m : messages)
        console.errLine(m);
    if (!ok) return kExitFailed;
    if (!writeFileAtomic(out, package))
        return failed(console, L"Yazılamadı: " + out + L" — " + systemErrorText(lastSystemError()));
    return kExitOk;
}

constexpr std::wstring_view kComposeArguments[] = {L"SOURCE", L"OUT"};
constexpr OptionSpec kComposeOptions[] = {
    {L"--config-url", L"URL"},     {L"--news-url", L"URL"},   {L"--feed-url", L"URL"},
    {L"--title", L"TEXT"},         {L"--conn", L"N"},         {L"--seg", L"N"},
    {L"--close-on-start", L"0|1"}, {L"--auto-start", L"0|1"}, {L"--allow-error", L"0|1"},
    {L"--browser-emu", L"0|1"},    {L"--run-args", L"TEXT"},  {L"--link", L"ID=URL", true},
};

} // namespace

const Command kComposeCommand{
    L"compose",
    L"Oluşturmanın patcher'a gömeceği skin paketini operatörün düzenlemeleriyle yazar.",
    L"compose SOURCE OUT [düzenlemeler]",
    L"Argümanlar:\n"
    L"  SOURCE  skin: klasör, .zip, skin paketi ya da (Windows'ta) skin taşıyan patcher .exe\n"
    L"  OUT     yazılacak skin paketi (.nvsk); yalnızca skin doğrulanırsa yazılır, varsa yerine geçer\n"
    L"\n"
    L"Düzenlemeler (verilmeyen değer skinden okunduğu gibi kalır; değerler satır sonu içeremez):\n"
    L"  --config-url URL      sunucu yapılandırmasının adresi (adres dosyasında remoteConfigPath)\n"
    L"  --news-url URL        haber sayfasının adresi (dil dosyasında LAUNCHER_IFRAME ve LAUNCHER_NEW_URL)\n"
    L"  --feed-url URL        sunucu durumu beslemesi (skin.xml'de feed_url); yalnızca kimliği FEED_ ile\n"
    L"                        başlayan kontrolleri olan skinlerde yazılır\n"
    L"  --title TEXT          patcher penceresinin başlığı\n"
    L"  --conn N              eşzamanlı indirme bağlantısı sayısı, 1..8\n"
    L"  --seg N               büyük dosyaların parça boyutu, MB cinsinden, 1..64\n"
    L"  --close-on-start 0|1  oyun açılınca patcher kapansın\n"
    L"  --auto-start 0|1      güncelleme bitince oyun kendiliğinden başlasın\n"
    L"  --allow-error 0|1     güncelleme başarısızsa da oyun başlatılabilsin\n"
    L"  --browser-emu 0|1     haber sayfası IE11 kipinde açılsın\n"
    L"  --run-args TEXT       oyunun exe'sine verilecek argümanlar\n"
    L"  --link ID=URL         kimliği ID olan butonun açacağı adres (kimlikte büyük/küçük harf fark etmez);\n"
    L"                        tekrarlanabilir. Butonun link_url'ü bir dil anahtarıysa adres dil dosyasına o\n"
    L"                        anahtarla yazılır, değilse skin.xml'e. Skinde o kimlikte buton yoksa çıkış 1.\n"
    L"\n"
    L"norvane.ini her zaman bu değerlerle baştan yazılır; skin.xml, adres ve dil dosyalarında yalnızca\n"
    L"değişen değerler yerinde düzenlenir. Yükleyicinin uyarıları standart hataya yazılır.\n",
    kComposeArguments,
    kComposeOptions,
    commandCompose,
};

} // namespace nv
