#include "skin/locale.h"

#include "core/paths.h"
#include "core/text.h"
#include "readers/xml.h"
#include "skin/text_edits.h"

#include <algorithm>
#include <vector>

namespace nv {
namespace {

constexpr std::string_view kLocaleClose = "</torrent_locale>";

// Every element named "string" with a "key", in document order. The reader bounds the depth, so recursion is
// safe.
void collectStrings(const XmlElement& element, std::vector<const XmlElement*>& out) {
    if (element.name == "string" && element.hasAttribute("key")) out.push_back(&element);
    for (const XmlElement& child : element.children)
        collectStrings(child, out);
}

// The earliest position at which a <torrent_locale> element is closed by a closing tag.
void findLocaleClose(const XmlElement& element, size_t& close) {
    if (element.name == "torrent_locale" && !element.selfClosing) close = std::min(close, element.contentEnd);
    for (const XmlElement& child : element.children)
        findLocaleClose(child, close);
}

} // namespace

void loadLocaleDefaults(LocaleTable& table) {
    table.clear();
    for (const LocaleDefault* row = kLocaleDefaults; row->key; ++row)
        table[row->key] = row->text;
}

std::wstring fillPlaceholder(std::wstring text, const std::wstring& value) {
    size_t at = text.find(L"%d");
    if (at == std::wstring::npos) at = text.find(L"%s");
    if (at != std::wstring::npos) text.replace(at, 2, value);
    return text;
}

bool parseLocale(std::string_view text, LocaleTable& table, std::wstring* error) {
    XmlDocument document;
    if (!parseXml(text, document, error)) return false;
    std::vector<const XmlElement*> strings;
    collectStrings(document.root, strings);
    for (const XmlElement* element : strings)
        table[asciiUpper(element->attribute("key"))] = utf8ToWide(element->text);
    return true;
}

std::string findAddressFile(const SkinFileSet& files) {
    if (files.hasFile("fernwick.url.xml")) return "fernwick.url.xml";
    for (const SkinEntry& entry : files.entries)
        if (endsWithIgnoreCase(entry.name, "url.xml")) return entry.name;
    return {};
}

// Set names are bare file names, so a preferred name written with folders ("lang/english.locale.xml") is
// looked up by its last part, as the skin's files were when they were collected.
std::string findLocaleFile(const SkinFileSet& files, std::string_view preferred) {
    const std::string name = asciiLower(bareFileName(preferred));
    if (!name.empty() && files.hasFile(name)) return name;
    if (files.hasFile("fernwick.locale.xml")) return "fernwick.locale.xml";
    for (const SkinEntry& entry : files.entries)
        if (endsWithIgnoreCase(entry.name, ".locale.xml")) return entry.name;
    return {};
}

std::string writeAddressFile(std::string_view text, std::wstring_view configUrl,
                             std::wstring_view importedAddress) {
    if (configUrl.empty() || configUrl == importedAddress) return std::string(text);
    XmlDocument document;
    if (!parseXml(text, document)) return std::string(text);
    const XmlAttribute* attribute = document.root.findAttribute("remoteConfigPath");
    if (!attribute) return std::string(text);
    return applyTextEdits(
        text, {{attribute->valueBegin, attribute->valueEnd, xmlEscapeAttribute(wideToUtf8(configUrl))}});
}

std::string writeLocaleFile(std::string_view text, const LocaleTable& overrides) {
    if (overrides.empty()) return std::string(text);
    LocaleTable pending;
    for (const auto& [key, value] : overrides)
        pending[asciiUpper(key)] = value;

    XmlDocument document;
    if (!parseXml(text, document)) return std::string(text);
    std::vector<const XmlElement*> strings;
    collectStrings(document.root, strings);

    std::vector<TextEdit> edits;
    LocaleTable unwritten = pending;
    for (const XmlElement* element : strings) {
        auto it = pending.find(asciiUpper(element->attribute("key")));
        if (it == pending.end()) continue;
        const std::string value = xmlEscapeText(wideToUtf8(it->second));
        if (element->selfClosing) {
            // <string key="K"/> has no content to replace: its "/>" becomes ">value</string>".
            const size_t end = element->contentBegin;
            if (end < 2 || text.substr(end - 2, 2) != "/>") continue;
            edits.push_back({end - 2, end, ">" + value + "</" + element->name + ">"});
        } else {
            edits.push_back({element->contentBegin, element->contentEnd, value});
        }
        unwritten.erase(it->first);
    }
    // Keys the file lacks get a line each, in key order, just before the first "</torrent_locale>" closing
    // tag. Only a real closing tag counts (not one quoted in a comment). A file without one gets no lines:
    // there is no safe place to put them.
    std::string lines;
    for (const auto& [key, value] : unwritten)
        lines += "\t<string key=\"" + xmlEscapeAttribute(key) + "\">" + xmlEscapeText(wideToUtf8(value)) +
                 "</string>\r\n";
    size_t close = std::string::npos;
    findLocaleClose(document.root, close);
    if (!lines.empty() && text.size() >= kLocaleClose.size() && close != std::string::npos)
        edits.push_back({close, close, std::move(lines)});
    return applyTextEdits(text, std::move(edits));
}

} // namespace nv
