// The live preview's picture: the stand-in download values reach the renderer, and the states without a
// picture.

#include "core/text.h"
#include "tests/support/image_files.h"
#include "tests/support/test_support.h"
#include "ui/live_preview.h"

#include <gtest/gtest.h>

namespace nv::ui {
namespace {

// A 100 x 20 window with three full-width gauges: red, green and blue.
SkinFileSet gaugeSkin(bool withAddressFile) {
    SkinFileSet set;
    set.putFile("skin.xml",
                test::bytesOf("<skin>"
                              "<control type=\"gauge\" id=\"PROGRESS_MAIN\" y=\"0\" image=\"red\"/>"
                              "<control type=\"gauge\" id=\"progress_sub\" y=\"8\" image=\"green\"/>"
                              "<control type=\"gauge\" id=\"OTHER\" y=\"16\" image=\"blue\"/>"
                              "</skin>"));
    if (withAddressFile) set.putFile("Fernwick.url.xml", test::bytesOf("<urls/>"));
    set.putFile("main.png", test::makePng(100, 20, 0xFF000000));
    set.putFile("red.png", test::makePng(100, 4, 0xFFFF0000));
    set.putFile("green.png", test::makePng(100, 4, 0xFF00FF00));
    set.putFile("blue.png", test::makePng(100, 4, 0xFF0000FF));
    return set;
}

int columnsOf(const PreviewPicture& picture, int row, uint32_t colour) {
    int count = 0;
    for (int x = 0; x < picture.width; ++x)
        count += picture.pixels[size_t(row) * size_t(picture.width) + size_t(x)] == colour;
    return count;
}

TEST(LivePreview, GaugesShowTheStandInDownload) {
    SkinWorkspace ws;
    std::wstring message;
    ASSERT_TRUE(ws.loadSkinSet(gaugeSkin(true), L"test", message));
    PreviewPicture picture;
    std::wstring logLine;
    ASSERT_EQ(renderLivePreview(ws, picture, logLine), PreviewOutcome::Drawn);
    EXPECT_TRUE(logLine.empty());
    ASSERT_EQ(picture.width, 100);
    ASSERT_EQ(picture.height, 20);
    EXPECT_EQ(columnsOf(picture, 1, 0xFFFF0000), 70);
    EXPECT_EQ(columnsOf(picture, 9, 0xFF00FF00), 45);
    EXPECT_EQ(columnsOf(picture, 17, 0xFF0000FF), 70);
    EXPECT_EQ(columnsOf(picture, 5, 0xFF000000), 100) << "the background between them";
}

TEST(LivePreview, StatesWithoutAPicture) {
    PreviewPicture picture;
    std::wstring logLine;
    EXPECT_EQ(renderLivePreview(SkinWorkspace(), picture, logLine), PreviewOutcome::NoSkin);
    EXPECT_TRUE(logLine.empty());

    SkinWorkspace broken;
    std::wstring message;
    ASSERT_TRUE(broken.loadSkinSet(gaugeSkin(false), L"test", message));
    EXPECT_EQ(renderLivePreview(broken, picture, logLine), PreviewOutcome::Failed);
    EXPECT_EQ(logLine, L"Önizleme hazırlanamadı: Skin içinde Fernwick.url.xml yok.");
    EXPECT_TRUE(picture.pixels.empty());

    // A window without size leaves nothing to draw and nothing to log.
    SkinModel empty;
    EXPECT_EQ(drawPreviewModel(empty, PatcherSettings{}, picture), PreviewOutcome::Empty);
    EXPECT_TRUE(picture.pixels.empty());
    EXPECT_EQ(picture.width, 0);
}

} // namespace
} // namespace nv::ui
