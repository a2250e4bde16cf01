// From the builder's inputs to a build, before any executable is written.

#include "packager/build_start.h"
#include "skin/workspace.h"
#include "tests/support/image_files.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

TEST(RunBuild, RequestDefaultsFromTheTitleAndTheOutputName) {
    BuildInputs inputs;
    inputs.outputPath = L"C:\\oyun\\Kaldra Yama.exe";
    BuildRequest r = makeBuildRequest(inputs, L"  Kaldra Online \r\n", test::bytesOf("NVSK"));
    EXPECT_EQ(r.version.productName, L"Kaldra Online");
    EXPECT_EQ(r.version.originalFilename, L"Kaldra Yama.exe");
    EXPECT_EQ(r.packageBytes, test::bytesOf("NVSK"));
    inputs.version.productName = L"Ürün";
    inputs.version.originalFilename = L"Başka.exe";
    r = makeBuildRequest(inputs, L"Kaldra Online", {});
    EXPECT_EQ(r.version.productName, L"Ürün");
    EXPECT_EQ(r.version.originalFilename, L"Başka.exe");
}

// A skin that does not compose or validate stops the build with the composition's own message, before the
// disk.
TEST(RunBuild, CompositionFailuresTouchNothing) {
    test::TempDir dir;
    SkinFileSet noAddressFile;
    noAddressFile.putFile("skin.xml", test::bytesOf("<skin background_image=\"main\"/>"));
    noAddressFile.putFile("main.png", test::makePng(8, 8, 0xFF000000));
    SkinWorkspace incomplete;
    std::wstring message;
    ASSERT_TRUE(incomplete.loadSkinSet(noAddressFile, L"test", message));
    const BuildInputs inputs{dir.file(L"Norvane.Template.exe"), dir.file(L"Kaldra.exe"), {}, {}, {}, {}};
    test::writeFile(inputs.templatePath, "MZ");
    const SkinWorkspace empty;
    const std::pair<const SkinWorkspace*, std::wstring> cases[] = {
        {&incomplete, L"Skin içinde Fernwick.url.xml yok."},
        {&empty, L"Önce bir skin yükleyin."},
    };
    for (const auto& [ws, expected] : cases) {
        int lines = 0;
        const BuildResult result = runBuild(
            *ws, inputs, [](void* n, const std::wstring&) { ++*static_cast<int*>(n); }, &lines);
        EXPECT_EQ(result.message, expected);
        EXPECT_FALSE(result.ok || lines || fileExists(inputs.outputPath) ||
                     fileExists(inputs.outputPath + L".building"));
    }
}

} // namespace
} // namespace nv
