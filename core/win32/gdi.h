#pragma once
// Owners for GDI and GDI+ objects, so that every pen, brush, font, bitmap and device context is released on
// every path out of the scope that made it. The builder's window and the patcher's both draw with them.

#include "core/win32/gdiplus_include.h"

#include <memory>

namespace nv::win {

// A GDI object (HFONT, HBRUSH, HBITMAP, HPEN) deleted with DeleteObject.
template <typename T> class GdiObject {
public:
    explicit GdiObject(T handle = nullptr) : handle_(handle) {}
    ~GdiObject() { reset(); }
    GdiObject(GdiObject&& other) noexcept : handle_(other.handle_) { other.handle_ = nullptr; }
    GdiObject& operator=(GdiObject&& other) noexcept {
        if (this != &other) {
            reset(other.handle_);
            other.handle_ = nullptr;
        }
        return *this;
    }
    GdiObject(const GdiObject&) = delete;
    GdiObject& operator=(const GdiObject&) = delete;
    T get() const { return handle_; }
    void reset(T handle = nullptr) {
        if (handle_) DeleteObject(handle_);
        handle_ = handle;
    }

private:
    T handle_;
};

// An object selected into a DC for one scope; the previous object comes back at the end.
class SelectIn {
public:
    SelectIn(HDC dc, HGDIOBJ object) : dc_(dc), previous_(object ? SelectObject(dc, object) : nullptr) {}
    ~SelectIn() {
        if (previous_) SelectObject(dc_, previous_);
    }
    SelectIn(const SelectIn&) = delete;
    SelectIn& operator=(const SelectIn&) = delete;

private:
    HDC dc_;
    HGDIOBJ previous_;
};

// A memory DC from CreateCompatibleDC.
class MemoryDC {
public:
    explicit MemoryDC(HDC compatibleWith) : dc_(CreateCompatibleDC(compatibleWith)) {}
    ~MemoryDC() {
        if (dc_) DeleteDC(dc_);
    }
    MemoryDC(const MemoryDC&) = delete;
    MemoryDC& operator=(const MemoryDC&) = delete;
    HDC get() const { return dc_; }

private:
    HDC dc_;
};

// GetDC / ReleaseDC.
class WindowDC {
public:
    explicit WindowDC(HWND hwnd) : hwnd_(hwnd), dc_(GetDC(hwnd)) {}
    ~WindowDC() {
        if (dc_) ReleaseDC(hwnd_, dc_);
    }
    WindowDC(const WindowDC&) = delete;
    WindowDC& operator=(const WindowDC&) = delete;
    HDC get() const { return dc_; }

private:
    HWND hwnd_;
    HDC dc_;
};

// BeginPaint / EndPaint.
class PaintScope {
public:
    explicit PaintScope(HWND hwnd) : hwnd_(hwnd) { dc_ = BeginPaint(hwnd, &ps_); }
    ~PaintScope() { EndPaint(hwnd_, &ps_); }
    PaintScope(const PaintScope&) = delete;
    PaintScope& operator=(const PaintScope&) = delete;
    HDC dc() const { return dc_; }

private:
    HWND hwnd_;
    PAINTSTRUCT ps_{};
    HDC dc_;
};

// WM_PAINT drawn double-buffered: paint(HDC) draws the whole client area into a memory bitmap, which reaches
// the screen in one copy, so nothing flickers while the window is drawn piece by piece.
template <typename Paint> void paintBuffered(HWND hwnd, Paint&& paint) {
    PaintScope ps(hwnd);
    RECT client{};
    GetClientRect(hwnd, &client);
    MemoryDC memory(ps.dc());
    GdiObject<HBITMAP> bitmap(CreateCompatibleBitmap(ps.dc(), client.right, client.bottom));
    if (!memory.get() || !bitmap.get()) return;
    SelectIn select(memory.get(), bitmap.get());
    paint(memory.get());
    BitBlt(ps.dc(), 0, 0, client.right, client.bottom, memory.get(), 0, 0, SRCCOPY);
}

// SaveDC / RestoreDC.
class SavedDC {
public:
    explicit SavedDC(HDC dc) : dc_(dc), saved_(SaveDC(dc)) {}
    ~SavedDC() {
        if (saved_) RestoreDC(dc_, saved_);
    }
    SavedDC(const SavedDC&) = delete;
    SavedDC& operator=(const SavedDC&) = delete;

private:
    HDC dc_;
    int saved_;
};

// GDI+ flat-API objects.
namespace gp = Gdiplus::DllExports;
struct GraphicsDelete {
    void operator()(Gdiplus::GpGraphics* g) const { gp::GdipDeleteGraphics(g); }
};
struct PathDelete {
    void operator()(Gdiplus::GpPath* p) const { gp::GdipDeletePath(p); }
};
struct PenDelete {
    void operator()(Gdiplus::GpPen* p) const { gp::GdipDeletePen(p); }
};
struct BrushDelete {
    void operator()(Gdiplus::GpBrush* b) const { gp::GdipDeleteBrush(b); }
};
struct ImageDelete {
    void operator()(Gdiplus::GpImage* i) const { gp::GdipDisposeImage(i); }
};
using GraphicsPtr = std::unique_ptr<Gdiplus::GpGraphics, GraphicsDelete>;
using PathPtr = std::unique_ptr<Gdiplus::GpPath, PathDelete>;
using PenPtr = std::unique_ptr<Gdiplus::GpPen, PenDelete>;
using BrushPtr = std::unique_ptr<Gdiplus::GpBrush, BrushDelete>;
using ImagePtr = std::unique_ptr<Gdiplus::GpImage, ImageDelete>;

} // namespace nv::win
