#include "skin/workspace.h"

#include "core/files.h"
#include "core/memory_guard.h"
#include "core/text.h"
#include "readers/xml.h"
#include "readers/zip_reader.h"
#include "skin/package.h"
#include "skin/skin_import.h"
#include "skin/skin_source.h"
#include "skin/text_edits.h"

#include <unordered_map>

namespace nv {
namespace {

std::string_view textOf(const Bytes& bytes) {
    return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

Bytes bytesOf(std::string_view text) {
    return Bytes(text.begin(), text.end());
}

bool parseFile(const SkinFileSet& files, std::string_view name, XmlDocument& document) {
    const Bytes* bytes = name.empty() ? nullptr : files.findFile(name);
    return bytes && parseXml(textOf(*bytes), document);
}

// Sets an attribute of an element in place: its value when present, else a new first attribute right behind
// the element's name.
void setAttribute(std::vector<TextEdit>& edits, const XmlElement& element, std::string_view name,
                  const std::wstring& value) {
    std::string escaped = xmlEscapeAttribute(wideToUtf8(value));
    if (const XmlAttribute* attribute = element.findAttribute(name))
        edits.push_back({attribute->valueBegin, attribute->valueEnd, escaped});
    else
        edits.push_back({element.nameEnd, element.nameEnd, " " + std::string(name) + "=\"" + escaped + "\""});
}

// The working set with the edits written in; see composeSkinFiles.
void composeInto(const SkinWorkspace& ws, SkinFileSet& out) {
    out = ws.files;

    if (const Bytes* address = ws.addressFile.empty() ? nullptr : out.findFile(ws.addressFile))
        out.putFile(ws.addressFile,
                    bytesOf(writeAddressFile(textOf(*address), ws.configUrl, ws.importedConfigUrl)));

    // skin.xml: edited button links and the feed address, each value replaced in place. A file that does not
    // parse stays as it is; the validation that follows reports it.
    XmlDocument skin;
    if (parseFile(out, "skin.xml", skin)) {
        std::vector<TextEdit> edits;
        // Edited links by their id, so that a skin of many thousands of buttons costs one lookup per control.
        std::unordered_map<std::string, std::vector<const ButtonLink*>> edited;
        for (const ButtonLink& link : ws.buttonLinks)
            if (link.edited) edited[asciiLower(link.id)].push_back(&link);
        if (!edited.empty()) {
            for (const XmlElement* control : controlElements(skin)) {
                const auto found = edited.find(asciiLower(control->attribute("id")));
                if (found == edited.end()) continue;
                for (const ButtonLink* link : found->second)
                    setAttribute(edits, *control, "link_url", link->link);
            }
        }
        if (ws.hasFeed && ws.feedUrl != ws.importedFeedUrl)
            setAttribute(edits, skin.root, "feed_url", ws.feedUrl);
        if (!edits.empty())
            out.putFile("skin.xml",
                        bytesOf(applyTextEdits(textOf(*out.findFile("skin.xml")), std::move(edits))));
    }

    if (const Bytes* locale = ws.localeFile.empty() ? nullptr : out.findFile(ws.localeFile)) {
        LocaleTable overrides;
        if (!ws.iframeUrl.empty() && ws.iframeUrl != ws.importedIframeUrl) {
            overrides["LAUNCHER_IFRAME"] = ws.iframeUrl;
            overrides["LAUNCHER_NEW_URL"] = ws.iframeUrl;
        }
        // A link that named a locale key lives under that key. Only a changed link is written back: an
        // unchanged one would rewrite the value the file already holds, and could undo a new news address
        // under the same key.
        for (const ButtonLink& link : ws.buttonLinks)
            if (!link.localeKey.empty() && !link.link.empty() && link.link != link.importedLink)
                overrides[link.localeKey] = link.link;
        if (!overrides.empty())
            out.putFile(ws.localeFile, bytesOf(writeLocaleFile(textOf(*locale), overrides)));
    }

    out.putFile("norvane.ini", bytesOf(writePatcherSettings(ws.settings)));
}

} // namespace

bool SkinWorkspace::loadSkinSource(const std::wstring& path, std::wstring& message) {
    SkinFileSet set;
    std::wstring note;
    if (!readSkinSource(path, set, message, nullptr, &note)) {
        files.clear();
        buttonLinks.clear();
        loaded = false;
        return false;
    }
    if (!loadSkinSet(std::move(set), path, message)) return false;
    // A file of the folder that could not be read does not stop the load, but the operator hears of it.
    message = note;
    return true;
}

bool SkinWorkspace::loadSkinSet(SkinFileSet set, const std::wstring& label, std::wstring& message) {
    files.clear();
    buttonLinks.clear();
    loaded = false;
    message.clear();
    if (!set.hasFile("skin.xml")) {
        message = L"skin.xml bulunamadı (geçerli bir patcher skini değil).";
        return false;
    }
    files = std::move(set);
    loaded = true;
    sourceLabel = label;
    importSkinValues();
    return true;
}

void SkinWorkspace::addDroppedFiles(const std::vector<std::wstring>& paths, int& count, std::wstring& note) {
    for (const std::wstring& path : paths) {
        std::wstring message;
        int added = 0;
        bool ok;
        if (folderExists(path)) {
            ok = addSkinFolder(files, path, &added, &message) && message.empty();
        } else if (endsWithIgnoreCase(std::wstring_view(path), std::wstring_view(L".zip"))) {
            ok = readZipSkin(files, path, &message, &added);
        } else {
            ok = addSkinFile(files, path, &message);
            added = ok ? 1 : 0;
        }
        count += added;
        if (!ok && note.empty()) note = message;
    }
    if (files.hasFile("skin.xml")) {
        loaded = true;
        if (sourceLabel.empty()) sourceLabel = kDroppedFilesLabel;
        importSkinValues();
    }
}

void SkinWorkspace::importSkinValues() {
    SkinTexts texts;
    readSkinTexts(files, texts);
    addressFile = texts.addressFile;
    configUrl = texts.addressRead ? texts.remoteConfigPath : std::wstring();
    localeFile = texts.localeFile;
    // The news page shows the frame's address, or else the "new" page's when only that one is set (the
    // built-in texts of both are empty, so only the skin's own locale file can fill them).
    iframeUrl.clear();
    for (const char* key : {"LAUNCHER_IFRAME", "LAUNCHER_NEW_URL"}) {
        const std::wstring& text = texts.strings[key];
        if (!text.empty()) {
            iframeUrl = text;
            break;
        }
    }
    settings = texts.settings;

    feedUrl.clear();
    buttonLinks.clear();
    hasFeed = false;
    if (texts.skinRead) {
        feedUrl = utf8ToWide(texts.skin.root.attribute("feed_url"));
        uint32_t index = 0;
        for (const XmlElement* element : controlElements(texts.skin)) {
            const SkinControl control = readControl(*element, index++, texts.strings);
            hasFeed = hasFeed || isFeedControl(control);
            // Iframes are the news frame, fed from the news address; only buttons are offered as links.
            if (control.kind != ControlKind::Button) continue;
            ButtonLink link;
            link.id = element->attribute("id");
            link.type = "button";
            link.image = control.image;
            link.importedLink = resolveLink(texts.strings, control.linkUrl);
            link.link = link.importedLink;
            if (!control.linkUrl.empty() && texts.strings.count(asciiUpper(control.linkUrl)))
                link.localeKey = asciiUpper(control.linkUrl);
            buttonLinks.push_back(std::move(link));
        }
    }

    importedConfigUrl = configUrl;
    importedIframeUrl = iframeUrl;
    importedFeedUrl = feedUrl;
}

bool SkinWorkspace::setButtonLink(std::string_view id, const std::wstring& link) {
    bool found = false;
    for (size_t i = 0; i < buttonLinks.size(); ++i) {
        if (!equalsIgnoreCase(buttonLinks[i].id, id)) continue;
        setButtonLinkAt(i, link);
        found = true;
    }
    return found;
}

void SkinWorkspace::setButtonLinkAt(size_t index, const std::wstring& link) {
    if (index >= buttonLinks.size()) return;
    ButtonLink& button = buttonLinks[index];
    button.link = link;
    button.edited = link != button.importedLink;
}

bool SkinWorkspace::composeSkinFiles(SkinFileSet& out, std::wstring& message) const {
    if (!loaded) {
        message = L"Önce bir skin yükleyin.";
        return false;
    }
    // The copy of a set of up to 64 MiB is the allocation that can fail here.
    return failOnBadAlloc(&message, [&] {
        composeInto(*this, out);
        return true;
    });
}

bool SkinWorkspace::buildSkinPackage(Bytes& out, LoadMessages& messages) const {
    SkinFileSet composed;
    if (!composeSkinFiles(composed, messages.error)) return false;
    // The package is never written from a set that the patcher could not show.
    SkinModel model;
    if (!loadSkinModel(composed, model, &messages)) return false;
    // The edits can grow a set that was within the limit when it was read.
    if (composed.totalBytes() > SkinFileSet::kMaxTotalBytes) {
        messages.error = L"Skin paketi 64 MB sinirini asiyor.";
        return false;
    }
    return packSkinFiles(composed, out, &messages.error);
}

bool SkinWorkspace::loadPreviewModel(SkinModel& model, LoadMessages& messages) const {
    if (!loaded) {
        messages.error = L"Önce bir skin yükleyin.";
        return false;
    }
    SkinFileSet composed;
    std::wstring message;
    if (!composeSkinFiles(composed, message)) messages.warnings.push_back(message);
    return loadSkinModel(composed, model, &messages);
}

} // namespace nv
