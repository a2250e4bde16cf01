#include "skin/skin_model.h"

#include "core/memory_guard.h"
#include "core/text.h"
#include "skin/skin_images.h"
#include "skin/skin_import.h"

namespace nv {
namespace {

void loadButtonImages(SkinImages& images, const XmlElement& e, SkinControl& c,
                      std::vector<std::wstring>* warnings) {
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
        if (warnings) warnings->push_back(L"Buton görseli yok: " + utf8ToWide(names.base + "_up"));
        c.height = sizeAttribute(e, "height", "h");
    } else {
        c.width = c.imageUp.width;
        c.height = c.imageUp.height;
    }
}

void loadGaugeImages(SkinImages& images, const XmlElement& e, SkinControl& c,
                     std::vector<std::wstring>* warnings) {
    std::string fullName = e.hasAttribute("image_full") ? e.attribute("image_full") : c.image;
    c.imageFull = images.completed(fullName);
    c.imageEmpty = images.completed(e.attribute("image_empty"));
    if (c.imageFull.empty() && warnings) warnings->push_back(L"Gauge görseli yok: " + utf8ToWide(fullName));
    if (!e.hasAttribute("width") && !e.hasAttribute("w")) c.width = c.imageFull.width;
    c.height = (e.hasAttribute("height") || e.hasAttribute("h")) ? sizeAttribute(e, "height", "h")
                                                                 : c.imageFull.height;
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

PictureName splitPictureName(std::string_view name) {
    for (std::string_view ext : kSkinImageExtensions)
        if (endsWithIgnoreCase(name, ext))
            return {std::string(name.substr(0, name.size() - ext.size())),
                    std::string(name.substr(name.size() - ext.size()))};
    return {std::string(name), {}};
}

ButtonImageNames buttonImageNames(std::string_view image) {
    auto [base, ext] = splitPictureName(image);
    if (endsWithIgnoreCase(base, "_up")) base.resize(base.size() - 3);
    return {base, base + "_up" + ext, base + "_on" + ext, base + "_dn" + ext, base + "_ds" + ext};
}

bool parseColor(std::string_view text, uint32_t& argb) {
    if (!text.empty() && text[0] == '#') text.remove_prefix(1);
    if (text.size() != 6 && text.size() != 8) return false;
    uint32_t value = 0;
    for (char c : text) {
        int digit = hexDigitValue(c);
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

namespace {

// Without messages no warning is even put into words: a skin of many thousands of controls may lack a picture
// for each.
bool loadModel(const SkinFileSet& files, SkinModel& model, LoadMessages* messages) {
    std::vector<std::wstring>* warnings = messages ? &messages->warnings : nullptr;
    auto warn = [&](std::wstring line) {
        if (warnings) warnings->push_back(std::move(line));
    };
    auto fail = [&](std::wstring reason) {
        if (messages) messages->error = std::move(reason);
        return false;
    };
    model = SkinModel{};
    SkinTexts texts;
    readSkinTexts(files, texts);
    model.strings = std::move(texts.strings);
    model.settings = texts.settings;
    model.addressFile = texts.addressFile;

    if (texts.addressFile.empty()) return fail(L"Skin içinde Fernwick.url.xml yok.");
    if (!texts.addressRead) return fail(utf8ToWide(texts.addressFile) + L" okunamadı: " + texts.addressError);
    model.remoteConfigPath = texts.remoteConfigPath;
    model.localConfigPath = texts.localConfigPath;
    model.languagePath = utf8ToWide(texts.languagePath);
    model.localeFile = texts.localeFile;
    if (!texts.localeError.empty()) warn(utf8ToWide(texts.localeFile) + L" okunamadı: " + texts.localeError);

    if (!texts.skinPresent) return fail(localeText(model, "ERROR_NO_SKIN") + L" (skin.xml yok)");
    if (!texts.skinRead) return fail(L"skin.xml okunamadı: " + texts.skinError);
    model.skinFile = "skin.xml";

    const XmlElement& root = texts.skin.root;
    SkinImages images(files, warnings);
    const std::string background = root.attribute("background_image", "main");
    model.background = images.completed(background);
    if (model.background.empty())
        return fail(localeText(model, "ERROR_NO_SKIN") + L" (arka plan görseli yok: " +
                    utf8ToWide(background) + L")");
    model.width = model.background.width;
    model.height = model.background.height;
    model.feedUrl = utf8ToWide(root.attribute("feed_url"));
    model.feedRefresh = root.intAttribute("feed_refresh", 60);

    uint32_t index = 0;
    for (const XmlElement* element : controlElements(texts.skin)) {
        SkinControl c = readControl(*element, index++, model.strings);
        if (c.kind == ControlKind::Button) {
            loadButtonImages(images, *element, c, warnings);
        } else if (c.kind == ControlKind::Gauge) {
            loadGaugeImages(images, *element, c, warnings);
        } else if (c.kind == ControlKind::Image) {
            c.imageUp = images.named(c.image);
            c.width = c.imageUp.width;
            c.height = c.imageUp.height;
            if (c.id == "FEED_LAMP") {
                const auto names = lampPictureNames(c.image);
                for (size_t i = 0; i < kFeedStatusCount; ++i)
                    c.imageLamp[i] = images.named(names[i]);
            }
        }
        model.controls.push_back(std::move(c));
    }
    return true;
}

} // namespace

std::vector<std::wstring> LoadMessages::lines() const {
    std::vector<std::wstring> all = warnings;
    if (!error.empty()) all.push_back(error);
    return all;
}

bool loadSkinModel(const SkinFileSet& files, SkinModel& model, LoadMessages* messages) {
    try {
        return loadModel(files, model, messages);
    } catch (const std::bad_alloc&) {
        model = SkinModel{};
        if (messages) messages->error = kOutOfMemory;
        return false;
    }
}

} // namespace nv
