// decodeImage through GDI+: the formats only GDI+ reads (JPEG, GIF, ICO), the size limit on one of them, and
// the behaviour without a GDI+ session. The fixtures come from scripts/make-image-fixtures.py.

#include "readers/image.h"
#include "core/win32/gdiplus_session.h"
#include "tests/readers/image_samples.h"
#include "tests/support/image_files.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cwchar>
#include <process.h>

namespace nv {
namespace {

// GDI+ runs for the whole test program (the test support's environment starts it once, as the programs do).
// Started with kNoSessionFlag, the program decodes one small BMP during static initialisation, that is before
// main and so before any GDI+ session exists, and reports the outcome as its exit code.
constexpr wchar_t kNoSessionFlag[] = L"--nv-decode-without-gdiplus";
constexpr int kFailedCleanly = 42;

const int noSessionChild = [] {
    if (!std::wcsstr(GetCommandLineW(), kNoSessionFlag)) return 0;
    const Bytes bmp = test::makeBmp(1, 1, 0xFFFF0000);
    DecodedImage image;
    std::wstring error;
    const bool ok = decodeImage(bmp.data(), bmp.size(), image, &error);
    ExitProcess(ok ? 1 : error != test::kUndecodable ? 2 : !image.empty() ? 3 : kFailedCleanly);
    return 0;
}();

TEST(DecodeImageGdiplus, FailsCleanlyInAProcessWithoutGdiplus) {
    const std::wstring exe = exePath();
    EXPECT_EQ(_wspawnl(_P_WAIT, exe.c_str(), exe.c_str(), kNoSessionFlag, nullptr), kFailedCleanly)
        << "1: decoded anyway, 2: other message, 3: image left filled, else: crashed";
}

TEST(DecodeImageGdiplus, EndingANestedSessionKeepsGdiplusUsable) {
    {
        GdiplusSession second;
        EXPECT_TRUE(second.started());
    }
    EXPECT_TRUE(GdiplusSession::active());
    test::expectPixels("after the nested session", test::makeBmp(1, 1, 0xFFFF0000), 1, {0xFFFF0000});
}

TEST(DecodeImageGdiplus, JpegGifAndIcon) {
    test::expectFixture( // lossy: each colour channel within a few steps
        "quadrants.jpg", 16, 16,
        [](uint32_t x, uint32_t y) {
            const uint32_t colours[4] = {0xFFC81E1E, 0xFF1EC81E, 0xFF1E1EC8, 0xFFF0F0F0};
            return colours[x / 8 + 2 * (y / 8)];
        },
        6);
    test::expectFixture("transparent.gif", 5, 3, [](uint32_t x, uint32_t y) {
        const uint32_t palette[4] = {0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0}; // the last one is transparent
        return palette[(x + 2 * y) % 4];
    });
    test::expectFixture("icon_rgba.ico", 16, 16, [](uint32_t x, uint32_t y) { // straight alpha in the file
        if ((x < 2 && y < 2) || (x > 13 && y > 13)) return 0u;
        return y == 7 ? 0x80800000u : 0xFF000000u | 200u << 16 | y * 16 << 8 | x * 16;
    });
}

TEST(DecodeImageGdiplus, A9000PixelWideJpegIsRefused) {
    test::expectRefused("wide_9000.jpg", test::imageFixture("wide_9000.jpg"));
}

} // namespace
} // namespace nv
