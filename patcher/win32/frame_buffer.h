#pragma once
// The window's picture: a top-down 32-bit DIB section selected into a memory DC. The renderer draws straight
// into its bits (premultiplied BGRA in memory, the layout UpdateLayeredWindow and AlphaBlend expect), and the
// window shows it with UpdateLayeredWindow or BitBlt.

#include <windows.h>

#include <cstdint>

namespace nv::win {

class FrameBuffer {
public:
    FrameBuffer() = default;
    ~FrameBuffer() { reset(); }
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
        dc_ = CreateCompatibleDC(nullptr);
        if (!dc_) return false;
        void* bits = nullptr;
        bitmap_ = CreateDIBSection(dc_, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
        if (!bitmap_ || !bits) {
            reset();
            return false;
        }
        previous_ = SelectObject(dc_, bitmap_);
        bits_ = static_cast<uint32_t*>(bits);
        width_ = width;
        height_ = height;
        return true;
    }

    void reset() {
        if (dc_ && previous_) SelectObject(dc_, previous_);
        if (bitmap_) DeleteObject(bitmap_);
        if (dc_) DeleteDC(dc_);
        dc_ = nullptr;
        bitmap_ = nullptr;
        previous_ = nullptr;
        bits_ = nullptr;
        width_ = height_ = 0;
    }

    HDC dc() const { return dc_; }
    uint32_t* bits() const { return bits_; }
    int width() const { return width_; }
    int height() const { return height_; }

private:
    HDC dc_ = nullptr;
    HBITMAP bitmap_ = nullptr;
    HGDIOBJ previous_ = nullptr;
    uint32_t* bits_ = nullptr;
    int width_ = 0, height_ = 0;
};

} // namespace nv::win
