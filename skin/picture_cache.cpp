#include "skin/picture_cache.h"

#include "core/crc32.h"

#include <cstring>
#include <new>

namespace nv {

namespace {

uint64_t pixelCount(const DecodedImage& image) {
    return uint64_t(image.width) * uint64_t(image.height);
}

} // namespace

PictureCache& PictureCache::shared() {
    static PictureCache cache;
    return cache;
}

bool PictureCache::decode(const uint8_t* data, size_t size, DecodedImage& image, std::wstring* error) {
    const uint32_t crc = Crc32::of(data, size);
    if (lookup(crc, data, size, image)) return true;
    // Decoded outside the lock: two threads asking for the same new picture both decode it, which is rarer
    // and cheaper than making every load wait for another's decode.
    if (!decodeImage(data, size, image, error)) return false;
    keep(crc, data, size, image);
    return true;
}

bool PictureCache::lookup(uint32_t crc, const uint8_t* data, size_t size, DecodedImage& image) {
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto it = entries_.begin(); it != entries_.end(); ++it) {
        if (it->crc != crc || it->bytes->size() != size || std::memcmp(it->bytes->data(), data, size) != 0)
            continue;
        entries_.splice(entries_.begin(), entries_, it);
        image = entries_.front().image;
        return true;
    }
    return false;
}

void PictureCache::keep(uint32_t crc, const uint8_t* data, size_t size, const DecodedImage& image) {
    const uint64_t pixels = pixelCount(image);
    if (pixels > limit_ / 2) return; // one picture may not push out everything else
    try {
        Entry entry{crc, std::make_shared<const std::vector<uint8_t>>(data, data + size), image};
        std::lock_guard<std::mutex> lock(mutex_);
        entries_.push_front(std::move(entry));
        pixels_ += pixels;
        while (pixels_ > limit_) {
            pixels_ -= pixelCount(entries_.back().image);
            entries_.pop_back();
        }
    } catch (const std::bad_alloc&) {
        // Keeping it is only a saving; the caller has its picture either way.
    }
}

void PictureCache::clear() {
    std::lock_guard<std::mutex> lock(mutex_);
    entries_.clear();
    pixels_ = 0;
}

uint64_t PictureCache::pixelsKept() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return pixels_;
}

} // namespace nv
