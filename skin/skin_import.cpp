#include "skin/skin_import.h"

#include "core/text.h"
#include "core/values.h"

#include <algorithm>

namespace nv {
namespace {

std::string_view textOf(const Bytes& bytes) {
    return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

int clampInt(int value, int low, int high) {
    return std::min(std::max(value, low), high);
}

} // namespace

void readSkinTexts(const SkinFileSet& files, SkinTexts& texts) {
    texts = SkinTexts{};
    loadLocaleDefaults(texts.strings);
    if (const Bytes* ini = files.findFile("norvane.ini")) texts.settings = readPatcherSettingsFile(*ini);

    // The address file says where the patcher reads its configuration and which locale file it uses.
    texts.addressFile = findAddressFile(files);
    XmlDocument address;
    if (!texts.addressFile.empty() &&
        parseXml(textOf(*files.findFile(texts.addressFile)), address, &texts.addressError)) {
        texts.addressRead = true;
        const XmlElement& root = address.root;
        texts.remoteConfigPath = utf8ToWide(root.attribute("remoteConfigPath"));
        const std::string localConfig = root.attribute("localConfigPath");
        if (!localConfig.empty()) texts.localConfigPath = utf8ToWide(localConfig);
        texts.languagePath = root.attribute("languagePath", texts.languagePath);
    }

    // The locale file only overrides the built-in texts; one that does not parse leaves them as they are.
    texts.localeFile = findLocaleFile(files, texts.languagePath);
    if (!texts.localeFile.empty())
        parseLocale(textOf(*files.findFile(texts.localeFile)), texts.strings, &texts.localeError);

    if (const Bytes* skin = files.findFile("skin.xml")) {
        texts.skinPresent = true;
        texts.skinRead = parseXml(textOf(*skin), texts.skin, &texts.skinError);
    }
}

std::vector<const XmlElement*> controlElements(const XmlDocument& skin) {
    std::vector<const XmlElement*> controls;
    for (const XmlElement& child : skin.root.children)
        if (child.name == "control") controls.push_back(&child);
    return controls;
}

int sizeAttribute(const XmlElement& e, std::string_view name, std::string_view alias) {
    return e.hasAttribute(name) ? e.intAttribute(name, 0) : e.intAttribute(alias, 0);
}

SkinControl readControl(const XmlElement& e, uint32_t index, const LocaleTable& strings) {
    SkinControl c;
    c.index = index;
    c.id = asciiUpper(e.attribute("id"));
    c.x = e.intAttribute("x", 0);
    c.y = e.intAttribute("y", 0);
    c.image = e.attribute("image");
    c.linkUrl = e.attribute("link_url");
    c.link = resolveLink(strings, c.linkUrl);
    c.execPath = utf8ToWide(e.attribute("exec_path"));
    c.enableOnComplete = parseYesNo(e.attribute("enable_on_complete"), false);
    c.text = utf8ToWide(e.attribute("text"));
    if (const XmlAttribute* color = e.findAttribute("color")) parseColor(color->value, c.color);
    if (const XmlAttribute* shadow = e.findAttribute("shadow"))
        c.shadow = parseColor(shadow->value, c.shadowColor);
    c.bold = parseYesNo(e.attribute("bold"), false);
    c.size = clampInt(e.intAttribute("size", 12), 6, 96);
    c.font = utf8ToWide(e.attribute("font", "Tahoma"));
    const std::string align = asciiLower(e.attribute("align"));
    c.align = align == "center" ? 1 : align == "right" ? 2 : 0;
    c.width = sizeAttribute(e, "width", "w");
    c.feedMessage = parseYesNo(e.attribute("feed_message"), false);

    const std::string type = asciiLower(e.attribute("type"));
    if (type == "button") {
        c.kind = ControlKind::Button;
        if (c.link.empty() && c.id == "URL_NEW") c.link = resolveLink(strings, "LAUNCHER_NEW_URL");
    } else if (type == "gauge") {
        c.kind = ControlKind::Gauge;
    } else if (type == "text") {
        c.kind = ControlKind::Text;
        c.height = c.size + 6;
    } else if (type == "iframe") {
        c.kind = ControlKind::Iframe;
        c.height = sizeAttribute(e, "height", "h");
    } else if (type == "image") {
        c.kind = ControlKind::Image;
    }
    return c;
}

bool isFeedControl(const SkinControl& control) {
    return control.id.starts_with("FEED_"); // the id is upper-cased, so any spelling counts
}

} // namespace nv
