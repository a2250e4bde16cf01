// runBuild: the working skin composed, validated and written into the patcher as the builder's worker runs
// it.

#include "build/build_job.h"
#include "core/win32/scoped_win.h"
#include "skin/package.h"
#include "skin/win32/embedded_skin.h"
#include "skin/workspace.h"
#include "tests/build/win32/build_fixtures.h"
#include "tests/support/image_files.h"
#include "tests/support/test_support.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace nv {
namespace {

SkinFileSet skinFiles(bool withAddressFile) {
    SkinFileSet set;
    set.putFile("skin.xml",
                test::bytesOf("<skin background_image=\"main\">\r\n"
                              "  <control type=\"button\" id=\"URL_SITE\" link_url=\"https://a.example/\""
                              " image=\"site.png\"/>\r\n</skin>\r\n"));
    if (withAddressFile)
        set.putFile("Fernwick.url.xml",
                    test::bytesOf("<urls remoteConfigPath=\"https://old.example/c.xml\"/>"));
    set.putFile("main.png", test::makePng(64, 48, 0xFF203040));
    set.putFile("site_up.png", test::makePng(20, 10, 0xFF808080));
    return set;
}

SkinWorkspace workspaceOf(bool withAddressFile) {
    SkinWorkspace ws;
    std::wstring message;
    EXPECT_TRUE(ws.loadSkinSet(skinFiles(withAddressFile), L"test", message));
    return ws;
}

std::wstring versionString(const std::wstring& path, const wchar_t* name) {
    DWORD handle = 0;
    std::vector<uint8_t> info(GetFileVersionInfoSizeW(path.c_str(), &handle));
    if (info.empty() || !GetFileVersionInfoW(path.c_str(), 0, DWORD(info.size()), info.data()))
        return L"<none>";
    wchar_t* value = nullptr;
    UINT length = 0;
    std::wstring query = std::wstring(L"\\StringFileInfo\\040904b0\\") + name;
    if (!VerQueryValueW(info.data(), query.c_str(), reinterpret_cast<void**>(&value), &length))
        return L"<none>";
    return std::wstring(value, length ? length - 1 : 0);
}

TEST(RunBuild, EmbedsTheComposedSkinWithTheFieldsDefaults) {
    test::TempDir dir;
    SkinWorkspace ws = workspaceOf(true);
    ws.settings.title = L"  Kaldra Online \t";
    ws.serverAddress = L"https://patch.example/config.xml";
    BuildInputs inputs;
    inputs.templatePath = test::buildFixture(L"foreign_template.exe");
    inputs.outputPath = dir.file(L"Yama Kaldra.exe");

    std::vector<std::wstring> log;
    const BuildResult result = runBuild(ws, inputs, test::collectLine, &log);
    ASSERT_TRUE(result.ok) << test::narrow(result.message);
    EXPECT_EQ(log.back(), L"Doğrulama tamam.");

    Bytes expected;
    std::vector<std::wstring> messages;
    ASSERT_TRUE(ws.buildSkinPackage(expected, messages));
    win::ScopedModule module(LoadLibraryExW(inputs.outputPath.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
    ASSERT_NE(module.get(), nullptr);
    SkinFileSet embedded;
    ASSERT_TRUE(readEmbeddedSkin(module.get(), embedded));
    EXPECT_EQ(writeSkinPackage(embedded), expected);
    module.reset();

    EXPECT_EQ(versionString(inputs.outputPath, L"ProductName"), L"Kaldra Online");
    EXPECT_EQ(versionString(inputs.outputPath, L"OriginalFilename"), L"Yama Kaldra.exe");
    EXPECT_EQ(versionString(inputs.outputPath, L"InternalName"), L"Yama Kaldra");
}

} // namespace
} // namespace nv
