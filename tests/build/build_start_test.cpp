#include "build/build_start.h"

#include "core/paths.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

TEST(BuildStart, ChecksInOrderFirstFailureWins) {
    test::TempDir dir;
    const std::wstring templ = dir.file(L"Norvane.Template.exe"), pfx = dir.file(L"imza.pfx");
    test::writeFile(templ, "MZ");
    test::writeFile(pfx, "pfx");
    const std::wstring out = dir.file(L"Kaldra.exe"), missingFolder = dir.file(L"yok");
    const struct {
        std::wstring templatePath, outputPath;
        bool sign;
        std::wstring pfxPath, message; // message empty: the checks pass
    } cases[] = {
        {templ, out, false, L"", L""},
        {templ, dir.file(L"KALDRA.EXE"), false, L"", L""},
        {dir.file(L"yok.exe"), L"", false, L"",
         L"Patcher şablonu bulunamadı: " + dir.file(L"yok.exe") + L" — build.bat ile derleyin."},
        {templ, dir.file(L"Kaldra.exe.bak"), false, L"", L"Çıktı dosyası .exe ile bitmeli."},
        {templ, L"", false, L"", L"Çıktı dosyası .exe ile bitmeli."},
        {templ, pathJoin(missingFolder, L"Kaldra.exe"), true, L"",
         L"Çıktı klasörü bulunamadı: " + missingFolder},
        {templ, L"Kaldra.exe", false, L"", L"Çıktı klasörü bulunamadı: "},
        {templ, out, true, L" \t", L"İmza açık ama sertifika (.pfx) seçilmedi."},
        {templ, out, true, L" " + dir.file(L"yok.pfx"),
         L"Sertifika dosyası bulunamadı:  " + dir.file(L"yok.pfx")},
        {templ, out, true, L"  " + pfx + L" ", L""},
        {templ, out, false, L"yok.pfx", L""},
    };
    for (const auto& c : cases) {
        BuildInputs inputs;
        inputs.templatePath = c.templatePath;
        inputs.outputPath = c.outputPath;
        inputs.signing.enabled = c.sign;
        inputs.signing.pfxPath = c.pfxPath;
        std::wstring message;
        EXPECT_EQ(checkBuildStart(inputs, message), c.message.empty()) << test::fsPath(c.outputPath).string();
        EXPECT_EQ(message, c.message);
    }
}

TEST(BuildStart, RequestDefaultsFromTheTitleAndTheOutputName) {
    BuildInputs inputs;
    inputs.templatePath = L"C:\\araç\\Norvane.Template.exe";
    inputs.outputPath = L"C:\\oyun\\Kaldra Yama.exe";
    inputs.iconBytes = {0, 0, 1, 0};
    inputs.version.versionText = L"2.0";
    inputs.signing = {true, L"a.pfx", L"gizli", L"http://ts", L""};
    const Bytes package = test::bytesOf("NVSK");

    BuildRequest r = makeBuildRequest(inputs, L"  Kaldra Online \r\n", package);
    EXPECT_EQ(r.templatePath, inputs.templatePath);
    EXPECT_EQ(r.outputPath, inputs.outputPath);
    EXPECT_EQ(r.iconBytes, inputs.iconBytes);
    EXPECT_EQ(r.packageBytes, package);
    EXPECT_EQ(r.version.productName, L"Kaldra Online");
    EXPECT_EQ(r.version.originalFilename, L"Kaldra Yama.exe");
    EXPECT_EQ(r.version.versionText, L"2.0");
    EXPECT_EQ(r.signing.pfxPassword, L"gizli");

    inputs.version.productName = L"Ürün";
    inputs.version.originalFilename = L"Başka.exe";
    r = makeBuildRequest(inputs, L"Kaldra Online", package);
    EXPECT_EQ(r.version.productName, L"Ürün");
    EXPECT_EQ(r.version.originalFilename, L"Başka.exe");
}

} // namespace
} // namespace nv
