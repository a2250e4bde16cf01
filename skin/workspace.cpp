#include "skin/workspace.h"

#include "core/files.h"
#include "core/text.h"
#include "readers/xml.h"
#include "readers/zip_reader.h"
#include "skin/package.h"
#include "skin/skin_source.h"
#include "skin/text_edits.h"

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
        if (sourceLabel.empty()) sourceLabel = L"(bırakılan dosyalar)";
        importSkinValues();
    }
}

void SkinWorkspace::importSkinValues() {
    serverAddress.clear();
    newsAddress.clear();
    feedUrl.clear();
    buttonLinks.clear();
    hasFeed = false;

    std::string preferredLocale = "Fernwick.locale.xml";
    addressFile = findAddressFile(files);
    XmlDocument address;
    if (parseFile(files, addressFile, address)) {
        serverAddress = utf8ToWide(address.root.attribute("remoteConfigPath"));
        preferredLocale = address.root.attribute("languagePath", preferredLocale);
    }

    // Links are resolved as the patcher resolves them: built-in texts, overridden by the skin's locale file.
    LocaleTable strings;
    loadLocaleDefaults(strings);
    localeFile = findLocaleFile(files, preferredLocale);
    if (const Bytes* locale = localeFile.empty() ? nullptr : files.findFile(localeFile)) {
        LocaleTable fromFile;
        if (parseLocale(textOf(*locale), fromFile)) {
            // The news page shows the frame's address, or else the "new" page's when only that one is set.
            for (const char* key : {"LAUNCHER_IFRAME", "LAUNCHER_NEW_URL"}) {
                auto it = fromFile.find(key);
                if (it != fromFile.end() && !it->second.empty()) {
                    newsAddress = it->second;
                    break;
                }
            }
            for (auto& [key, text] : fromFile)
                strings[key] = text;
        }
    }

    const Bytes* ini = files.findFile("norvane.ini");
    settings = ini ? readPatcherSettingsFile(*ini) : PatcherSettings{};

    XmlDocument skin;
    if (parseFile(files, "skin.xml", skin)) {
        feedUrl = utf8ToWide(skin.root.attribute("feed_url"));
        for (const XmlElement& control : skin.root.children) {
            if (control.name != "control") continue;
            const std::string id = control.attribute("id");
            if (id.compare(0, 5, "FEED_") == 0) hasFeed = true;
            // Iframes are the news frame, fed from the news address; only buttons are offered as links.
            const std::string type = asciiLower(control.attribute("type"));
            if (type != "button") continue;
            ButtonLink link;
            link.id = id;
            link.type = type;
            link.image = control.attribute("image");
            const std::string linkUrl = control.attribute("link_url");
            link.importedLink = resolveLink(strings, linkUrl);
            link.link = link.importedLink;
            if (!linkUrl.empty() && strings.count(asciiUpper(linkUrl))) link.localeKey = asciiUpper(linkUrl);
            buttonLinks.push_back(std::move(link));
        }
    }

    importedServerAddress = serverAddress;
    importedNewsAddress = newsAddress;
    importedFeedUrl = feedUrl;
}

bool SkinWorkspace::setButtonLink(std::string_view id, const std::wstring& link) {
    bool found = false;
    for (ButtonLink& button : buttonLinks) {
        if (!equalsIgnoreCase(button.id, id)) continue;
        button.link = link;
        button.edited = link != button.importedLink;
        found = true;
    }
    return found;
}

bool SkinWorkspace::composeSkinFiles(SkinFileSet& out, std::wstring& message) const {
    if (!loaded) {
        message = L"Önce bir skin yükleyin.";
        return false;
    }
    out = files;

    if (const Bytes* address = addressFile.empty() ? nullptr : out.findFile(addressFile))
        out.putFile(addressFile,
                    bytesOf(writeAddressFile(textOf(*address), serverAddress, importedServerAddress)));

    // skin.xml: edited button links and the feed address, each value replaced in place. A file that does not
    // parse stays as it is; the validation that follows reports it.
    XmlDocument skin;
    if (parseFile(out, "skin.xml", skin)) {
        std::vector<TextEdit> edits;
        for (const XmlElement& control : skin.root.children) {
            if (control.name != "control") continue;
            const std::string id = control.attribute("id");
            for (const ButtonLink& link : buttonLinks)
                if (link.edited && equalsIgnoreCase(link.id, id))
                    setAttribute(edits, control, "link_url", link.link);
        }
        if (hasFeed && feedUrl != importedFeedUrl) setAttribute(edits, skin.root, "feed_url", feedUrl);
        if (!edits.empty())
            out.putFile("skin.xml",
                        bytesOf(applyTextEdits(textOf(*out.findFile("skin.xml")), std::move(edits))));
    }

    if (const Bytes* locale = localeFile.empty() ? nullptr : out.findFile(localeFile)) {
        LocaleTable overrides;
        if (!newsAddress.empty() && newsAddress != importedNewsAddress) {
            overrides["LAUNCHER_IFRAME"] = newsAddress;
            overrides["LAUNCHER_NEW_URL"] = newsAddress;
        }
        // A link that named a locale key lives under that key. Only a changed link is written back: an
        // unchanged one would rewrite the value the file already holds, and could undo a new news address
        // under the same key.
        for (const ButtonLink& link : buttonLinks)
            if (!link.localeKey.empty() && !link.link.empty() && link.link != link.importedLink)
                overrides[link.localeKey] = link.link;
        if (!overrides.empty()) out.putFile(localeFile, bytesOf(writeLocaleFile(textOf(*locale), overrides)));
    }

    out.putFile("norvane.ini", bytesOf(writePatcherSettings(settings)));
    return true;
}

bool SkinWorkspace::buildSkinPackage(Bytes& out, std::vector<std::wstring>& messages) const {
    if (!loaded) {
        messages.push_back(L"Önce bir skin yükleyin.");
        return false;
    }
    SkinFileSet composed;
    std::wstring message;
    if (!composeSkinFiles(composed, message)) {
        messages.push_back(message);
        return false;
    }
    // The package is never written from a set that the patcher could not show.
    SkinModel model;
    if (!loadSkinModel(composed, model, &messages)) return false;
    if (composed.totalBytes() > SkinFileSet::kMaxTotalBytes) {
        messages.push_back(L"Skin paketi 64 MB sinirini asiyor.");
        return false;
    }
    out = writeSkinPackage(composed);
    return true;
}

bool SkinWorkspace::loadPreviewModel(SkinModel& model, std::vector<std::wstring>& messages) const {
    if (!loaded) {
        messages.push_back(L"Önce bir skin yükleyin.");
        return false;
    }
    // Unlike a build, the preview shows whatever could be composed.
    SkinFileSet composed;
    std::wstring message;
    if (!composeSkinFiles(composed, message)) messages.push_back(message);
    return loadSkinModel(composed, model, &messages);
}

} // namespace nv
