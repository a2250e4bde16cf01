// The live preview's states without a picture. That the picture is nvbuild render's, stand-in download and
// all, is the session's end-to-end case.

#include "core/text.h"
#include "tests/support/image_files.h"
#include "tests/support/test_support.h"
#include "ui/live_preview.h"

#include <gtest/gtest.h>

namespace nv::ui {
namespace {

TEST(LivePreview, StatesWithoutAPicture) {
    PreviewPicture picture;
    std::wstring logLine;
    EXPECT_EQ(renderLivePreview(SkinWorkspace(), picture, logLine), PreviewOutcome::NoSkin);
    EXPECT_TRUE(logLine.empty());

    // Without its address file a skin loads but does not validate.
    SkinFileSet noAddressFile;
    noAddressFile.putFile("skin.xml", test::bytesOf("<skin/>"));
    noAddressFile.putFile("main.png", test::makePng(10, 10, 0xFF000000));
    SkinWorkspace broken;
    std::wstring message;
    ASSERT_TRUE(broken.loadSkinSet(noAddressFile, L"test", message));
    EXPECT_EQ(renderLivePreview(broken, picture, logLine), PreviewOutcome::Failed);
    EXPECT_EQ(logLine, L"Önizleme hazırlanamadı: Skin içinde Fernwick.url.xml yok.");
    EXPECT_TRUE(picture.pixels.empty());

    // A window without size leaves nothing to draw.
    EXPECT_FALSE(drawPicture(PatcherScene{}, {}, true, picture));
    EXPECT_TRUE(picture.pixels.empty());
    EXPECT_EQ(picture.width, 0);
}

} // namespace
} // namespace nv::ui
