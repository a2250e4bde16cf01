#include "readers/image.h"

#include "core/win32/gdiplus_include.h"
#include "core/win32/gdiplus_session.h"

#include <cstring>
#include <memory>
#include <new>

namespace nv {
namespace {

namespace gp = Gdiplus::DllExports;

constexpr const wchar_t* kUndecodable = L"Gorsel cozulemedi (desteklenen: PNG, JPG, BMP, GIF).";

bool fail(std::wstring* error, const wchar_t* message) {
    if (error) *error = message;
    return false;
}

// A movable global memory block, freed unless a stream has taken it over.
class ScopedGlobal {
public:
    explicit ScopedGlobal(HGLOBAL h) : h_(h) {}
    ~ScopedGlobal() {
        if (h_) GlobalFree(h_);
    }
    ScopedGlobal(const ScopedGlobal&) = delete;
    ScopedGlobal& operator=(const ScopedGlobal&) = delete;
    HGLOBAL get() const { return h_; }
    void release() { h_ = nullptr; }

private:
    HGLOBAL h_;
};

struct StreamRelease {
    void operator()(IStream* stream) const { stream->Release(); }
};
using StreamPtr = std::unique_ptr<IStream, StreamRelease>;

struct BitmapDispose {
    void operator()(Gdiplus::GpBitmap* bitmap) const { gp::GdipDisposeImage(bitmap); }
};
using BitmapPtr = std::unique_ptr<Gdiplus::GpBitmap, BitmapDispose>;

StreamPtr streamOverCopy(const uint8_t* data, size_t size, std::wstring* error) {
    ScopedGlobal memory(GlobalAlloc(GMEM_MOVEABLE, size));
    if (!memory.get()) {
        fail(error, L"Bellek yetersiz.");
        return nullptr;
    }
    void* target = GlobalLock(memory.get());
    if (!target) {
        fail(error, L"Bellek yetersiz.");
        return nullptr;
    }
    std::memcpy(target, data, size);
    GlobalUnlock(memory.get());

    IStream* stream = nullptr;
    if (FAILED(CreateStreamOnHGlobal(memory.get(), TRUE, &stream)) || !stream) {
        fail(error, L"Akis olusturulamadi.");
        return nullptr;
    }
    memory.release(); // the stream frees the block when it is released
    return StreamPtr(stream);
}

// GDI+ converts the picture straight into our own buffer (a caller-supplied lock buffer), so a decode holds
// the pixels once more than GDI+'s own copy, not twice.
bool copyPixels(Gdiplus::GpBitmap* bitmap, int width, int height, DecodedImage& image) {
    std::vector<uint32_t> pixels;
    try {
        pixels.resize(size_t(width) * size_t(height));
    } catch (const std::bad_alloc&) {
        return false;
    }
    Gdiplus::BitmapData data{};
    data.Width = UINT(width);
    data.Height = UINT(height);
    data.Stride = width * 4;
    data.PixelFormat = PixelFormat32bppPARGB;
    data.Scan0 = pixels.data();
    Gdiplus::GpRect rect(0, 0, width, height);
    if (gp::GdipBitmapLockBits(bitmap, &rect, Gdiplus::ImageLockModeRead | Gdiplus::ImageLockModeUserInputBuf,
                               PixelFormat32bppPARGB, &data) != Gdiplus::Ok)
        return false;
    if (gp::GdipBitmapUnlockBits(bitmap, &data) != Gdiplus::Ok) return false;
    image = DecodedImage::fromPixels(width, height, std::move(pixels));
    return true;
}

} // namespace

bool decodeImage(const uint8_t* data, size_t size, DecodedImage& image, std::wstring* error) {
    image = DecodedImage();
    if (data == nullptr || size == 0) return fail(error, L"Bos gorsel.");
    // GDI+ picks its codec from the content, metafiles and TIFF included: only the formats we name reach it,
    // and none whose header already states a size past the limit.
    const ImageSignature signature = sniffImage(data, size);
    if (signature.format == ImageFormat::Unknown || signature.tooLarge()) return fail(error, kUndecodable);

    StreamPtr stream = streamOverCopy(data, size, error);
    if (!stream) return false;

    if (!GdiplusSession::active()) return fail(error, kUndecodable);
    Gdiplus::GpBitmap* created = nullptr;
    if (gp::GdipCreateBitmapFromStream(stream.get(), &created) != Gdiplus::Ok || !created)
        return fail(error, kUndecodable);
    BitmapPtr bitmap(created);

    UINT width = 0;
    UINT height = 0;
    if (gp::GdipGetImageWidth(bitmap.get(), &width) != Gdiplus::Ok ||
        gp::GdipGetImageHeight(bitmap.get(), &height) != Gdiplus::Ok)
        return fail(error, kUndecodable);
    // GDI+ itself decodes far larger pictures; the limit keeps every later buffer reasonable.
    if (width < 1 || width > UINT(kMaxImageSide) || height < 1 || height > UINT(kMaxImageSide))
        return fail(error, kUndecodable);

    if (!copyPixels(bitmap.get(), int(width), int(height), image)) return fail(error, kUndecodable);
    return true;
}

} // namespace nv
