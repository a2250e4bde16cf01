#pragma once
// The window's picture: a top-down 32-bit DIB section selected into a memory DC. The renderer draws straight
// into its bits (premultiplied BGRA in memory, the layout UpdateLayeredWindow and AlphaBlend expect), and the
// window shows it with UpdateLayeredWindow or BitBlt.

#include "core/win32/gdi.h"

#include <windows.h>

#include <cstdint>
#include <optional>

namespace nv::win {

class FrameBuffer {
public:
    FrameBuffer() = default;
    FrameBuffer(const FrameBuffer&) = delete;
    FrameBuffer& operator=(const FrameBuffer&) = delete;

    bool create(int width, int height) {
        reset();
        BITMAPINFO info{};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = width;
        info.bmiHeader.biHeight = -height; // top-down, like the renderer's rows
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        info.bmiHeader.biCompression = BI_RGB;
        dc_.emplace(nullptr);
        void* bits = nullptr;
        if (dc_->get()) bitmap_.reset(CreateDIBSection(dc_->get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
        if (!bitmap_.get() || !bits) {
            reset();
            return false;
        }
        selected_.emplace(dc_->get(), bitmap_.get());
        bits_ = static_cast<uint32_t*>(bits);
        width_ = width;
        height_ = height;
        return true;
    }

    // The bitmap leaves the DC before either goes.
    void reset() {
        selected_.reset();
        bitmap_.reset();
        dc_.reset();
        bits_ = nullptr;
        width_ = height_ = 0;
    }

    HDC dc() const { return dc_ ? dc_->get() : nullptr; }
    uint32_t* bits() const { return bits_; }
    int width() const { return width_; }
    int height() const { return height_; }

private:
    // In this order, so that they are released in the reverse one.
    std::optional<MemoryDC> dc_;
    GdiObject<HBITMAP> bitmap_;
    std::optional<SelectIn> selected_;
    uint32_t* bits_ = nullptr;
    int width_ = 0, height_ = 0;
};

} // namespace nv::win
