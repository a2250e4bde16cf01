// decodeImage through GDI+: the formats only GDI+ reads (JPEG, GIF, ICO), the size limit on one of them, and
// the behaviour without a GDI+ session. The fixtures come from scripts/make-image-fixtures.py.

#include "build/image.h"
#include "build/win32/gdiplus_session.h"
#include "core/win32/scoped_win.h"
#include "tests/build/image_samples.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace nv {
namespace {

const std::wstring kUndecodable = L"Gorsel cozulemedi (desteklenen: PNG, JPG, BMP, GIF).";

// GDI+ runs for the whole test program (the test support's environment starts it once, as the programs do).
// Started with kNoSessionFlag, the program only decodes one small BMP during static initialisation, that is
// before main and so before any GDI+ session exists, and reports the outcome as its exit code.
constexpr wchar_t kNoSessionFlag[] = L"--nv-decode-without-gdiplus";
constexpr DWORD kFailedCleanly = 42;

const int noSessionChild = [] {
    if (!std::wcsstr(GetCommandLineW(), kNoSessionFlag)) return 0;
    const Bytes bmp = test::bmpFile(1, 1, 24, {0, 0, 255, 0});
    DecodedImage image;
    std::wstring error;
    const bool ok = decodeImage(bmp.data(), bmp.size(), image, &error);
    ExitProcess(ok ? 1 : error != kUndecodable ? 2 : !image.empty() ? 3 : kFailedCleanly);
    return 0;
}();

DecodedImage decodeFixture(const wchar_t* name, bool& ok, std::wstring& error) {
    const Bytes bytes = test::imageFixture(name);
    DecodedImage image;
    ok = decodeImage(bytes.data(), bytes.size(), image, &error);
    return image;
}

TEST(DecodeImageGdiplus, SessionsNest) {
    ASSERT_TRUE(GdiplusSession::active());
    {
        GdiplusSession second;
        EXPECT_TRUE(second.started());
    }
    // Ending a second session leaves GDI+ usable for the first one.
    EXPECT_TRUE(GdiplusSession::active());
    bool ok = false;
    std::wstring error;
    decodeFixture(L"opaque.gif", ok, error);
    EXPECT_TRUE(ok) << error;
}

TEST(DecodeImageGdiplus, JpegComesBackOpaqueAndCloseToItsColours) {
    bool ok = false;
    std::wstring error;
    const DecodedImage image = decodeFixture(L"quadrants.jpg", ok, error);
    ASSERT_TRUE(ok) << error;
    ASSERT_EQ(image.width, 16);
    ASSERT_EQ(image.height, 16);
    EXPECT_FALSE(image.hasTransparency);
    const uint32_t colours[4] = {0xC81E1E, 0x1EC81E, 0x1E1EC8, 0xF0F0F0};
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 16; ++x) {
            const uint32_t got = image.pixels[size_t(y * 16 + x)];
            const uint32_t want = colours[x / 8 + 2 * (y / 8)];
            ASSERT_EQ(got >> 24, 0xFFu);
            for (int shift = 0; shift < 24; shift += 8) // lossy: each channel within a few steps
                ASSERT_LE(std::abs(int(got >> shift & 0xFF) - int(want >> shift & 0xFF)), 6)
                    << "pixel " << x << ", " << y;
        }
    }
}

TEST(DecodeImageGdiplus, GifWithAndWithoutATransparentIndex) {
    const uint32_t palette[4] = {0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0xFFFFFFFF};
    for (bool transparent : {true, false}) {
        SCOPED_TRACE(transparent ? "transparent.gif" : "opaque.gif");
        bool ok = false;
        std::wstring error;
        const DecodedImage image = decodeFixture(transparent ? L"transparent.gif" : L"opaque.gif", ok, error);
        ASSERT_TRUE(ok) << error;
        ASSERT_EQ(image.width, 5);
        ASSERT_EQ(image.height, 3);
        EXPECT_EQ(image.hasTransparency, transparent);
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < 5; ++x) {
                const int index = (x + 2 * y) % 4;
                const uint32_t want = transparent && index == 3 ? 0 : palette[index];
                EXPECT_EQ(image.pixels[size_t(y * 5 + x)], want) << "pixel " << x << ", " << y;
            }
        }
    }
}

TEST(DecodeImageGdiplus, IconWithAlpha) {
    bool ok = false;
    std::wstring error;
    const DecodedImage image = decodeFixture(L"icon_rgba.ico", ok, error);
    ASSERT_TRUE(ok) << error;
    ASSERT_EQ(image.width, 16);
    ASSERT_EQ(image.height, 16);
    EXPECT_TRUE(image.hasTransparency);
    for (uint32_t y = 0; y < 16; ++y) {
        for (uint32_t x = 0; x < 16; ++x) {
            uint32_t want = 0xFF000000u | 200u << 16 | y * 16 << 8 | x * 16;
            if ((x < 2 && y < 2) || (x > 13 && y > 13)) want = 0;
            if (y == 7) want = 0x80800000; // stored as straight red 255 at alpha 128
            EXPECT_EQ(image.pixels[y * 16 + x], want) << "pixel " << x << ", " << y;
        }
    }
    // The same fact in memory order: blue, green, red, alpha.
    uint8_t bytes[4];
    std::memcpy(bytes, &image.pixels[7 * 16], 4);
    EXPECT_EQ(bytes[0], 0);
    EXPECT_EQ(bytes[1], 0);
    EXPECT_EQ(bytes[2], 128);
    EXPECT_EQ(bytes[3], 128);
}

TEST(DecodeImageGdiplus, IconWithoutAlpha) {
    bool ok = false;
    std::wstring error;
    const DecodedImage image = decodeFixture(L"icon_rgb.ico", ok, error);
    ASSERT_TRUE(ok) << error;
    ASSERT_EQ(image.width, 16);
    ASSERT_EQ(image.height, 16);
    EXPECT_FALSE(image.hasTransparency);
    for (uint32_t y = 0; y < 16; ++y)
        for (uint32_t x = 0; x < 16; ++x)
            EXPECT_EQ(image.pixels[y * 16 + x], 0xFF000000u | y * 16 << 16 | 100u << 8 | x * 16);
}

TEST(DecodeImageGdiplus, A9000PixelWideJpegIsRefused) {
    bool ok = true;
    std::wstring error;
    const DecodedImage image = decodeFixture(L"wide_9000.jpg", ok, error);
    EXPECT_FALSE(ok);
    EXPECT_EQ(error, kUndecodable);
    EXPECT_TRUE(image.empty());
}

TEST(DecodeImageGdiplus, FailsCleanlyInAProcessWithoutGdiplus) {
    const std::wstring exe = exePath();
    std::wstring commandLine = L"\"" + exe + L"\" " + kNoSessionFlag;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION info{};
    ASSERT_TRUE(CreateProcessW(exe.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                               &startup, &info));
    win::ScopedHandle process(info.hProcess);
    win::ScopedHandle thread(info.hThread);
    ASSERT_EQ(WaitForSingleObject(process.get(), 60000), WAIT_OBJECT_0);
    DWORD code = 0;
    ASSERT_TRUE(GetExitCodeProcess(process.get(), &code));
    EXPECT_EQ(code, kFailedCleanly)
        << "1: decoded anyway, 2: other message, 3: image left filled, else: crashed";
}

} // namespace
} // namespace nv
