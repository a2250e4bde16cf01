#include "skin/skin_images.h"

#include "core/paths.h"
#include "core/text.h"
#include "skin/picture_cache.h"
#include "skin/skin_model.h"

#include <algorithm>

namespace nv {

std::wstring pictureFailure(const Bytes& bytes) {
    const ImageSignature signature = sniffImage(bytes.data(), bytes.size());
    if (signature.tooLarge())
        return std::to_wstring(signature.width) + L"x" + std::to_wstring(signature.height) +
               L" piksel; görseller en çok " + std::to_wstring(kMaxImageSide) + L"x" +
               std::to_wstring(kMaxImageSide) + L" olabilir";
    DecodedImage image;
    std::wstring error;
    if (PictureCache::shared().decode(bytes.data(), bytes.size(), image, &error)) return {};
    return error.empty() ? L"çözülemedi" : error;
}

SkinImages::SkinImages(const SkinFileSet& files, std::vector<std::wstring>* warnings, uint64_t pixelBudget)
    : files_(files), warnings_(warnings), budget_(pixelBudget) {}

// Skin sets hold bare file names, so a path written in skin.xml ("./img/btn.png", "img\\btn.png") is looked
// up by its last part; the set's lookup folds ASCII case.
const Bytes* SkinImages::find(std::string_view name) const {
    return name.empty() ? nullptr : files_.findFile(bareFileName(name));
}

bool SkinImages::withinBudget(std::string_view name, uint64_t pixels) {
    if (pixels <= budget_ - used_) return true;
    if (warnings_)
        warnings_->push_back(L"Görseller bellek sınırını aşıyor, yüklenmedi: " +
                             utf8ToWide(bareFileName(name)));
    return false;
}

DecodedImage SkinImages::named(std::string_view name) {
    const Bytes* bytes = find(name);
    if (!bytes) return {};
    auto [it, added] = decoded_.try_emplace(bytes);
    if (!added) return it->second; // decoded before, or refused before (then empty, and warned once)

    // A size stated in the header is believed for refusing, so that a skin of many large pictures is not
    // decoded picture by picture only to be thrown away; the decoded size is what is counted.
    const ImageSignature signature = sniffImage(bytes->data(), bytes->size());
    if (signature.sizeKnown() && !signature.tooLarge() &&
        !withinBudget(name, uint64_t(signature.width) * uint64_t(signature.height)))
        return {};
    DecodedImage image;
    if (!PictureCache::shared().decode(bytes->data(), bytes->size(), image)) return {};
    const uint64_t pixels = uint64_t(image.width) * uint64_t(image.height);
    if (!withinBudget(name, pixels)) return {};
    used_ += pixels;
    it->second = image;
    return image;
}

DecodedImage SkinImages::completed(std::string_view name) {
    if (name.empty()) return {};
    const bool hasExtension =
        std::any_of(std::begin(kSkinImageExtensions), std::end(kSkinImageExtensions),
                    [&](std::string_view ext) { return endsWithIgnoreCase(name, ext); });
    if (hasExtension && find(name)) return named(name);
    for (std::string_view ext : kSkinImageExtensions) {
        std::string candidate = std::string(name) + std::string(ext);
        if (find(candidate)) return named(candidate);
    }
    return {};
}

} // namespace nv
