#pragma once
// Pictures that recent skin loads decoded, kept by their file's bytes. The live preview loads the composed
// skin again on every edit and the build loads it once more to validate it, yet the pictures seldom change
// between two loads; decoding them again is most of a load's time (GDI+ decodes PNG far slower than we
// compose and render). A file whose exact bytes were decoded before is taken from here instead.
//
// Bounded by the pixels it keeps; the least recently used pictures go first, and a picture too large for the
// bound is never kept (a skin's bomb does not stay in memory after its load). Failed decodes are not kept.
// Safe to use from several threads at once: the build's worker loads while the window refreshes its preview.

#include "readers/image.h"

#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace nv {

class PictureCache {
public:
    static constexpr uint64_t kDefaultPixelLimit = 24ull << 20; // 96 MB of pixels: several skins' worth

    explicit PictureCache(uint64_t pixelLimit = kDefaultPixelLimit) : limit_(pixelLimit) {}

    // The one the skin loader uses.
    static PictureCache& shared();

    // decodeImage, or the picture decoded before from the same bytes.
    bool decode(const uint8_t* data, size_t size, DecodedImage& image, std::wstring* error = nullptr);

    void clear();
    uint64_t pixelsKept() const;

private:
    struct Entry {
        uint32_t crc = 0;
        std::shared_ptr<const std::vector<uint8_t>> bytes; // compared in full: a checksum match is not proof
        DecodedImage image;
    };

    bool lookup(uint32_t crc, const uint8_t* data, size_t size, DecodedImage& image);
    void keep(uint32_t crc, const uint8_t* data, size_t size, const DecodedImage& image);

    const uint64_t limit_;
    mutable std::mutex mutex_;
    std::list<Entry> entries_; // most recently used first
    uint64_t pixels_ = 0;
};

} // namespace nv
