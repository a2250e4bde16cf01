#pragma once
// The pictures of one skin load. Every file is decoded at most once and its pixels are shared by every
// control and button state that names it, so a skin that uses one large picture many times costs one decode.
// The distinct decoded pixels of a load have a budget of their own, room for two pictures of the largest size
// and far above any real skin: a picture past it counts as missing, with a warning that names its file.
// Decoding goes through the shared PictureCache, so a load of a skin whose pictures an earlier load already
// decoded (the preview after an edit, the build's validation) costs no decode at all.

#include "readers/image.h"
#include "readers/skin_files.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace nv {

// Why a picture's bytes do not decode, as a skin author needs to hear it: a size beyond the decoders' limit
// when its header states one (the decoder only says that it cannot decode), else the decoder's own message.
// Empty when they decode.
std::wstring pictureFailure(const Bytes& bytes);

class SkinImages {
public:
    static constexpr uint64_t kPixelBudget = 2ull * kMaxImageSide * kMaxImageSide;

    // Warnings are appended to the list when one is given.
    SkinImages(const SkinFileSet& files, std::vector<std::wstring>* warnings,
               uint64_t pixelBudget = kPixelBudget);

    // The file of exactly this name; an absent, undecodable or over-budget file gives an empty image.
    DecodedImage named(std::string_view name);

    // For background and gauge images, which may leave the extension out: a name that already has one and is
    // present is taken as it is, otherwise each extension is tried in turn.
    DecodedImage completed(std::string_view name);

private:
    const Bytes* find(std::string_view name) const;
    bool withinBudget(std::string_view name, uint64_t pixels);

    const SkinFileSet& files_;
    std::vector<std::wstring>* warnings_;
    const uint64_t budget_;
    uint64_t used_ = 0;
    std::map<const Bytes*, DecodedImage> decoded_; // by the entry's data, so two spellings share one decode
};

} // namespace nv
