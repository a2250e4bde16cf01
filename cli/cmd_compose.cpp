// nvbuild compose: the skin package a build would embed, with the operator's edits given as flags.

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

std::optional<int> rangedInt(const std::wstring& text, int low, int high) {
    int v = parseInt(wideToUtf8(text), low - 1);
    if (v < low || v > high) return std::nullopt;
    return v;
}

std::optional<bool> switchValue(const std::wstring& text) {
    if (text == L"1") return true;
    if (text == L"0") return false;
    return std::nullopt;
}

// Reads the flags after SOURCE and OUT. On a bad flag or value, error says which.
bool parseEdits(const std::vector<std::wstring>& args, Edits& edits, std::wstring& error) {
    for (size_t i = 2; i < args.size(); ++i) {
        const std::wstring& flag = args[i];
        if (i + 1 >= args.size()) {
            error = L"Değer eksik: " + flag;
            return false;
        }
        const std::wstring& v = args[++i];
        auto setSwitch = [&](std::optional<bool>& target) {
            target = switchValue(v);
            if (!target) error = flag + L" 0 ya da 1 olmalı.";
            return bool(target);
        };
        if (flag == L"--config-url") edits.configUrl = v;
        else if (flag == L"--news-url") edits.newsUrl = v;
        else if (flag == L"--feed-url") edits.feedUrl = v;
        else if (flag == L"--title") edits.title = v;
        else if (flag == L"--run-args") edits.runArgs = v;
        else if (flag == L"--conn") {
            if (!(edits.connections = rangedInt(v, 1, 8))) {
                error = L"--conn 1 ile 8 arasında olmalı.";
                return false;
            }
        } else if (flag == L"--seg") {
            if (!(edits.segmentMb = rangedInt(v, 1, 64))) {
                error = L"--seg 1 ile 64 arasında olmalı.";
                return false;
            }
        } else if (flag == L"--close-on-start") {
            if (!setSwitch(edits.closeOnStart)) return false;
        } else if (flag == L"--auto-start") {
            if (!setSwitch(edits.autoStart)) return false;
        } else if (flag == L"--allow-error") {
            if (!setSwitch(edits.allowError)) return false;
        } else if (flag == L"--browser-emu") {
            if (!setSwitch(edits.browserEmulation)) return false;
        } else if (flag == L"--link") {
            size_t eq = v.find(L'=');
            if (eq == 0 || eq == std::wstring::npos) {
                error = L"--link KIMLIK=ADRES biçiminde olmalı.";
                return false;
            }
            edits.links.push_back({wideToUtf8(v.substr(0, eq)), v.substr(eq + 1)});
        } else {
            error = L"Bilinmeyen seçenek: " + flag;
            return false;
        }
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

} // namespace

int commandCompose(const std::vector<std::wstring>& args, Console& console) {
    if (args.size() < 2) return usage(console);
    Edits edits;
    std::wstring error;
    if (!parseEdits(args, edits, error)) {
        console.errLine(error);
        return usage(console);
    }

    SkinWorkspace workspace;
    std::wstring message, note;
    if (!loadSkinInput(args[0], workspace, message, note)) {
        console.errLine(message);
        return kExitFailed;
    }
    if (!note.empty()) console.errLine(L"Not: " + note);
    if (!applyEdits(edits, workspace, error)) {
        console.errLine(error);
        return kExitFailed;
    }

    Bytes package;
    std::vector<std::wstring> messages;
    bool ok = workspace.buildSkinPackage(package, messages);
    for (const std::wstring& m : messages) console.errLine(m);
    if (!ok) return kExitFailed;
    if (!writeFileAtomic(args[1], package)) {
        console.errLine(L"Yazılamadı: " + args[1] + L" — " + systemErrorText(lastSystemError()));
        return kExitFailed;
    }
    return kExitOk;
}

} // namespace nv
