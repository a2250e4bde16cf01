#include "cli/skin_edits.h"

#include "core/text.h"
#include "core/values.h"
#include "readers/xml.h"

namespace nv {
namespace {

std::optional<std::wstring> textOption(const Invocation& invocation, std::wstring_view name) {
    const std::wstring* value = invocation.value(name);
    return value ? std::optional<std::wstring>(*value) : std::nullopt;
}

} // namespace

bool readSkinEdits(const Invocation& invocation, SkinEdits& edits, std::wstring& error) {
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

bool applySkinEdits(const SkinEdits& edits, SkinWorkspace& ws, std::wstring& error) {
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

std::vector<std::wstring> editsWithoutPlace(const SkinEdits& edits, const SkinWorkspace& workspace) {
    std::vector<std::wstring> notes;
    const auto present = [&](const std::string& name) {
        return name.empty() ? nullptr : workspace.files.findFile(name);
    };
    if (edits.newsUrl && !edits.newsUrl->empty() && !present(workspace.localeFile))
        notes.push_back(L"--news-url yazılmadı: skinde dil dosyası yok");
    if (edits.configUrl && !edits.configUrl->empty()) {
        const Bytes* address = present(workspace.addressFile);
        XmlDocument document;
        if (!address)
            notes.push_back(L"--config-url yazılmadı: skinde adres dosyası yok");
        else if (parseXml(std::string_view(reinterpret_cast<const char*>(address->data()), address->size()),
                          document) &&
                 !document.root.hasAttribute("remoteConfigPath"))
            notes.push_back(L"--config-url yazılmadı: " + utf8ToWide(workspace.addressFile) +
                            L" remoteConfigPath taşımıyor");
    }
    if (edits.feedUrl && !workspace.hasFeed)
        notes.push_back(L"--feed-url yazılmadı: skinde kimliği FEED_ ile başlayan kontrol yok");
    return notes;
}

} // namespace nv
