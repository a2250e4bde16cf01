#include "renderer/text_painter.h"

namespace nv {

bool TextCache::find(const std::wstring& key, std::shared_ptr<const Layer>& layer) const {
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = layers_.find(key);
    if (it == layers_.end()) return false;
    layer = it->second;
    return true;
}

void TextCache::put(const std::wstring& key, std::shared_ptr<const Layer> layer) {
    const size_t bytes = layer->pixels.size() * sizeof(uint32_t) + key.size() * sizeof(wchar_t);
    if (bytes > kMaxBytes) return;
    std::lock_guard<std::mutex> lock(mutex_);
    // Starting over is crude but enough: a patcher's texts are few, and only changing ones come back here.
    if (bytes_ + bytes > kMaxBytes) {
        layers_.clear();
        bytes_ = 0;
    }
    if (layers_.emplace(key, std::move(layer)).second) bytes_ += bytes;
}

} // namespace nv
