// runBuild before the executable: a skin that cannot be composed or validated stops the build with the
// composition's own message and nothing on disk.

#include "build/build_job.h"
#include "skin/workspace.h"
#include "tests/support/image_files.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

TEST(RunBuild, CompositionFailuresTouchNothing) {
    test::TempDir dir;
    SkinFileSet withoutAddressFile;
    withoutAddressFile.putFile("skin.xml", test::bytesOf("<skin background_image=\"main\"/>"));
    withoutAddressFile.putFile("main.png", test::makePng(8, 8, 0xFF000000));
    SkinWorkspace incomplete;
    std::wstring message;
    ASSERT_TRUE(incomplete.loadSkinSet(withoutAddressFile, L"test", message));

    BuildInputs inputs;
    inputs.templatePath = dir.file(L"Norvane.Template.exe");
    inputs.outputPath = dir.file(L"Kaldra.exe");
    test::writeFile(inputs.templatePath, "MZ");
    const struct {
        const SkinWorkspace& ws;
        std::wstring message;
    } cases[] = {
        {SkinWorkspace(), L"Önce bir skin yükleyin."},
        {incomplete, L"Skin içinde Fernwick.url.xml yok."},
    };
    for (const auto& c : cases) {
        std::vector<std::wstring> log;
        const BuildResult result = runBuild(
            c.ws, inputs,
            [](void* lines, const std::wstring& line) {
                static_cast<std::vector<std::wstring>*>(lines)->push_back(line);
            },
            &log);
        EXPECT_FALSE(result.ok);
        EXPECT_EQ(result.message, c.message);
        EXPECT_TRUE(log.empty());
        EXPECT_FALSE(fileExists(inputs.outputPath));
        EXPECT_FALSE(fileExists(inputs.outputPath + L".building"));
    }
}

} // namespace
} // namespace nv
