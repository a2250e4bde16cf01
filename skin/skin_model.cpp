#include "skin/skin_model.h"

#include "core/paths.h"
#include "core/text.h"
#include "core/values.h"
#include "readers/xml.h"

#include <algorithm>
#include <map>

namespace nv {
namespace {

// Collects warnings only when the caller asked for them.
class Warnings {
public:
    explicit Warnings(std::vector<std::wstring>* list) : list_(list) {}
    void add(std::wstring line) {
        if (list_) list_->push_back(std::move(line));
    }

private:
    std::vector<std::wstring>* list_;
};

std::string_view textOf(const Bytes& bytes) {
    return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

bool hasImageExtension(std::string_view name) {
    return std::any_of(std::begin(kSkinImageExtensions), std::end(kSkinImageExtensions),
                       [&](std::string_view ext) { return endsWithIgnoreCase(name, ext); });
}

// Decodes the pictures of one load. Every file is decoded at most once and its pixels are shared by every
// control and button state that names it, so a skin that uses one large picture many times costs one decode.
// The distinct decoded pixels of a skin have a budget of their own (room for two 8192 x 8192 pictures, far
// above any real skin): a picture past it counts as missing.
class SkinImages {
public:
    static constexpr uint64_t kPixelBudget = 2ull * kMaxImageSide * kMaxImageSide;

    SkinImages(const SkinFileSet& files, Warnings& warnings) : files_(files), warnings_(warnings) {}

    // The file of exactly this name; an absent or undecodable file gives an empty image.
    DecodedImage named(std::string_view name) {
        const Bytes* bytes = find(name);
        if (!bytes) return {};
        auto [it, added] = decoded_.try_emplace(bytes);
        if (!added) return it->second;
        DecodedImage image;
        if (!decodeImage(bytes->data(), bytes->size(), image)) return {};
        const uint64_t pixels = uint64_t(image.width) * uint64_t(image.height);
        if (pixels > kPixelBudget - used_) {
            warnings_.add(L"Görseller bellek sınırını aşıyor, yüklenmedi: " + utf8ToWide(bareFileName(name)));
            return {};
        }
        used_ += pixels;
        it->second = image;
        return image;
    }

    // Background and gauge images may leave the extension out: a name that already has one and is present is
    // taken as it is, otherwise each extension is tried in turn.
    DecodedImage completed(std::string_view name) {
        if (name.empty()) return {};
        if (hasImageExtension(name) && find(name)) return named(name);
        for (std::string_view ext : kSkinImageExtensions) {
            std::string candidate = std::string(name) + std::string(ext);
            if (find(candidate)) return named(candidate);
        }
        return {};
    }

private:
    // Skin sets hold bare file names, so a path written in skin.xml ("./img/btn.png", "img\\btn.png") is
    // looked up by its last part; the set's lookup folds ASCII case.
    const Bytes* find(std::string_view name) const {
        return name.empty() ? nullptr : files_.findFile(bareFileName(name));
    }

    const SkinFileSet& files_;
    Warnings& warnings_;
    std::map<const Bytes*, DecodedImage> decoded_; // by the entry's data, so two spellings share one decode
    uint64_t used_ = 0;
};

int clampInt(int value, int low, int high) {
    return std::min(std::max(value, low), high);
}

// "width" (or "w" only when "width" is absent), likewise "height" / "h".
int sizeAttribute(const XmlElement& e, std::string_view name, std::string_view alias) {
    return e.hasAttribute(name) ? e.intAttribute(name, 0) : e.intAttribute(alias, 0);
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

void loadButtonImages(SkinImages& images, const XmlElement& e, SkinControl& c, Warnings& warnings) {
    const ButtonImageNames names = buttonImageNames(c.image);
    c.imageUp = images.named(names.up);
    c.imageOn = images.named(names.on);
    c.imageDown = images.named(names.down);
    c.imageDisabled = images.named(names.disabled);
    if (c.imageUp.empty()) c.imageUp = images.named(c.image);
    // Missing states borrow from their neighbours: hover from up, pressed from hover, disabled from up.
    if (c.imageOn.empty()) c.imageOn = c.imageUp;
    if (c.imageDown.empty()) c.imageDown = c.imageOn;
    if (c.imageDisabled.empty()) c.imageDisabled = c.imageUp;

    if (c.imageUp.empty()) {
        warnings.add(L"Buton görseli yok: " + utf8ToWide(names.base + "_up"));
        c.width = sizeAttribute(e, "width", "w");
        c.height = sizeAttribute(e, "height", "h");
    } else {
        c.width = c.imageUp.width;
        c.height = c.imageUp.height;
    }
}

void loadGaugeImages(SkinImages& images, const XmlElement& e, SkinControl& c, Warnings& warnings) {
    std::string fullName = e.hasAttribute("image_full") ? e.attribute("image_full") : c.image;
    c.imageFull = images.completed(fullName);
    c.imageEmpty = images.completed(e.attribute("image_empty"));
    if (c.imageFull.empty()) warnings.add(L"Gauge görseli yok: " + utf8ToWide(fullName));
    c.width =
        (e.hasAttribute("width") || e.hasAttribute("w")) ? sizeAttribute(e, "width", "w") : c.imageFull.width;
    c.height = (e.hasAttribute("height") || e.hasAttribute("h")) ? sizeAttribute(e, "height", "h")
                                                                 : c.imageFull.height;
}

SkinControl readControl(SkinImages& images, const XmlElement& e, uint32_t index, const LocaleTable& strings,
                        Warnings& warnings) {
    SkinControl c;
    c.index = index;
    const std::string type = asciiLower(e.attribute("type"));
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

    if (type == "button") {
        c.kind = ControlKind::Button;
        loadButtonImages(images, e, c, warnings);
        if (c.link.empty() && c.id == "URL_NEW") c.link = resolveLink(strings, "LAUNCHER_NEW_URL");
    } else if (type == "gauge") {
        c.kind = ControlKind::Gauge;
        loadGaugeImages(images, e, c, warnings);
    } else if (type == "text") {
        c.kind = ControlKind::Text;
        c.height = c.size + 6;
    } else if (type == "iframe") {
        c.kind = ControlKind::Iframe;
        c.height = sizeAttribute(e, "height", "h");
    } else if (type == "image") {
        c.kind = ControlKind::Image;
        c.imageUp = images.named(c.image);
        c.width = c.imageUp.width;
        c.height = c.imageUp.height;
    }
    return c;
}

} // namespace

const char* controlKindName(ControlKind kind) {
    switch (kind) {
    case ControlKind::Button:
        return "button";
    case ControlKind::Text:
        return "text";
    case ControlKind::Gauge:
        return "gauge";
    case ControlKind::Iframe:
        return "iframe";
    case ControlKind::Image:
        return "image";
    case ControlKind::Unknown:
        break;
    }
    return "unknown";
}

ButtonImageNames buttonImageNames(std::string_view image) {
    std::string base(image);
    std::string ext;
    for (std::string_view candidate : kSkinImageExtensions) {
        if (endsWithIgnoreCase(base, candidate)) {
            ext = base.substr(base.size() - candidate.size());
            base.resize(base.size() - candidate.size());
            break;
        }
    }
    if (endsWithIgnoreCase(base, "_up")) base.resize(base.size() - 3);
    return {base, base + "_up" + ext, base + "_on" + ext, base + "_dn" + ext, base + "_ds" + ext};
}

bool parseColor(std::string_view text, uint32_t& argb) {
    if (!text.empty() && text[0] == '#') text.remove_prefix(1);
    if (text.size() != 6 && text.size() != 8) return false;
    uint32_t value = 0;
    for (char c : text) {
        int digit = hexValue(c);
        if (digit < 0) return false;
        value = value << 4 | uint32_t(digit);
    }
    argb = text.size() == 6 ? 0xFF000000u | value : value;
    return true;
}

std::wstring localeText(const LocaleTable& strings, std::string_view key) {
    auto it = strings.find(asciiUpper(key));
    return it != strings.end() ? it->second : utf8ToWide(key);
}

std::wstring localeText(const SkinModel& model, std::string_view key) {
    return localeText(model.strings, key);
}

std::wstring resolveLink(const LocaleTable& strings, std::string_view linkUrl) {
    if (linkUrl.empty()) return {};
    auto it = strings.find(asciiUpper(linkUrl));
    return it != strings.end() ? it->second : utf8ToWide(linkUrl);
}

std::wstring resolveLink(const SkinModel& model, std::string_view linkUrl) {
    return resolveLink(model.strings, linkUrl);
}

bool loadSkinModel(const SkinFileSet& files, SkinModel& model, std::vector<std::wstring>* warningList) {
    Warnings warnings(warningList);
    model = SkinModel{};
    loadLocaleDefaults(model.strings);
    if (const Bytes* ini = files.findFile("norvane.ini")) model.settings = readPatcherSettingsFile(*ini);

    // The address file: where the patcher reads its configuration and which locale file it uses.
    model.addressFile = findAddressFile(files);
    if (model.addressFile.empty()) {
        warnings.add(L"Skin içinde Fernwick.url.xml yok.");
        return false;
    }
    XmlDocument address;
    std::wstring error;
    if (!parseXml(textOf(*files.findFile(model.addressFile)), address, &error)) {
        warnings.add(utf8ToWide(model.addressFile) + L" okunamadı: " + error);
        return false;
    }
    model.remoteConfigPath = utf8ToWide(address.root.attribute("remoteConfigPath"));
    std::string localConfig = address.root.attribute("localConfigPath");
    if (!localConfig.empty()) model.localConfigPath = utf8ToWide(localConfig);
    const std::string languagePath = address.root.attribute("languagePath", "Fernwick.locale.xml");
    model.languagePath = utf8ToWide(languagePath);

    // The locale file only overrides defaults, so a broken one is a warning.
    model.localeFile = findLocaleFile(files, languagePath);
    if (!model.localeFile.empty() &&
        !parseLocale(textOf(*files.findFile(model.localeFile)), model.strings, &error))
        warnings.add(utf8ToWide(model.localeFile) + L" okunamadı: " + error);

    const Bytes* skinXml = files.findFile("skin.xml");
    if (!skinXml) {
        warnings.add(localeText(model, "ERROR_NO_SKIN") + L" (skin.xml yok)");
        return false;
    }
    XmlDocument skin;
    if (!parseXml(textOf(*skinXml), skin, &error)) {
        warnings.add(L"skin.xml okunamadı: " + error);
        return false;
    }
    model.skinFile = "skin.xml";

    const XmlElement& root = skin.root;
    SkinImages images(files, warnings);
    const std::string background = root.attribute("background_image", "main");
    model.background = images.completed(background);
    if (model.background.empty()) {
        warnings.add(localeText(model, "ERROR_NO_SKIN") + L" (arka plan görseli yok: " +
                     utf8ToWide(background) + L")");
        return false;
    }
    model.width = model.background.width;
    model.height = model.background.height;
    model.feedUrl = utf8ToWide(root.attribute("feed_url"));
    model.feedRefresh = root.intAttribute("feed_refresh", 60);

    uint32_t index = 0;
    for (const XmlElement& child : root.children)
        if (child.name == "control")
            model.controls.push_back(readControl(images, child, index++, model.strings, warnings));
    return true;
}

} // namespace nv
