// Signing through a stand-in signtool.exe (fixtures/fake_signtool.cpp) that records its command line and
// exits with the code the test asks for; the search for signtool.exe over made-up SDK folders.

#include "packager/signing.h"
#include "core/text.h"
#include "tests/packager/win32/build_fixtures.h"
#include "tests/support/test_support.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace nv {
namespace {

const std::wstring kTool = test::buildFixture(L"fake-sdk\\signtool.exe");

// Children inherit the variable; an empty value removes it.
void setVariable(const wchar_t* name, const std::wstring& value) {
    SetEnvironmentVariableW(name, value.empty() ? nullptr : value.c_str());
}

TEST(Signing, CommandLinesFallbackWarningAndFailures) {
    test::TempDir dir;
    const std::wstring pfx = dir.file(L"imza sertifikası.pfx"), file = dir.file(L"Kaldra.exe.building");
    const std::wstring record = dir.file(L"signtool.log");
    test::writeFile(pfx, "pfx");
    const std::wstring base = L"\"" + kTool + L"\" sign /fd SHA256 /f \"" + pfx + L"\"",
                       end = L" \"" + file + L"\"";
    const std::wstring ts = L" /tr \"http://ts.example\" /td SHA256" + end;
    const std::wstring plain = L"İmzalanıyor...", stamped = L"İmzalanıyor (zaman damgalı)...";
    const std::wstring fallback = L"Zaman damgalı imza başarısız, damgasız deneniyor: ";
    const std::wstring noTool =
        L"signtool.exe bulunamadı. Windows SDK'nın \"Signing Tools for Desktop Apps\" bileşenini kurun.";
    // tsExit, exit and say are what the stand-in does; message empty means signed.
    auto sign = [&](SigningOptions options, const std::wstring& product, const wchar_t* tsExit,
                    const wchar_t* exit, const wchar_t* say, const std::vector<std::wstring>& commands,
                    const std::vector<std::wstring>& lines, const std::wstring& failure) {
        DeleteFileW(record.c_str());
        setVariable(L"NV_FAKE_SIGNTOOL_LOG", record);
        setVariable(L"NV_FAKE_SIGNTOOL_TS_EXIT", tsExit);
        setVariable(L"NV_FAKE_SIGNTOOL_EXIT", exit);
        setVariable(L"NV_FAKE_SIGNTOOL_SAY", say);
        VersionInfoFields version;
        version.productName = product;
        std::vector<std::wstring> log, recorded;
        std::wstring message;
        options.enabled = true;
        EXPECT_EQ(signExecutable(options, file, version, test::collectLine, &log, message), failure.empty());
        EXPECT_EQ(message, failure);
        EXPECT_EQ(log, lines);
        std::string text = fileExists(record) ? test::textOf(test::readFile(record)) : "";
        for (size_t at = 0, next; (next = text.find('\n', at)) != std::string::npos; at = next + 1)
            recorded.push_back(utf8ToWide(text.substr(at, next - at)));
        EXPECT_EQ(recorded, commands);
    };
    const std::wstring tsUrl = L"http://ts.example", quoted = base + L" /d \"Kaldra 'Online'\"";
    sign({false, pfx, L"gizli", L"", kTool}, L"Kaldra", L"9", L"0", L"",
         {base + L" /p \"gizli\" /d \"Kaldra\"" + end}, {plain}, L"");
    sign({false, pfx, L"", tsUrl, kTool}, L"Kaldra \"Online\"", L"3", L"0", L"ulasilamadi",
         {quoted + ts, quoted + end},
         {stamped, fallback + L"ulasilamadi", plain,
          L"UYARI: zaman damgası eklenemedi; imza sertifika süresi bitince geçersiz sayılır."},
         L"");
    sign({false, pfx, L"p@ss", L"", kTool}, L"", L"0", L"1", L"bad password p@ss",
         {base + L" /p \"p@ss\"" + end}, {plain}, L"İmzalama başarısız: bad password ***");
    sign({false, pfx, L"", L"", kTool}, L"", L"0", L"1", L"", {base + end}, {plain}, L"İmzalama başarısız: ");
    sign({false, pfx, L"", L"", dir.file(L"yok\\signtool.exe")}, L"", L"0", L"0", L"", {}, {}, noTool);
    sign({false, dir.file(L"yok.pfx"), L"", L"", kTool}, L"", L"0", L"0", L"", {}, {},
         L"Sertifika dosyası (.pfx) bulunamadı: " + dir.file(L"yok.pfx"));
}

TEST(Signing, TheNewestSdkWinsX86BeforeX64) {
    test::TempDir dir;
    const std::wstring first = dir.file(L"x86 root\\Windows Kits\\"),
                       second = dir.file(L"root\\Windows Kits\\");
    const std::pair<std::vector<std::wstring>, std::wstring> cases[] = {
        {{}, L""},
        {{first + L"10\\bin\\10.0.19041.0\\x86", first + L"10\\bin\\10.0.22621.0\\x86"},
         first + L"10\\bin\\10.0.22621.0\\x86"},
        {{first + L"10\\bin\\10.0.22621.0\\x64", first + L"10\\bin\\10.0.22621.0\\x86"},
         first + L"10\\bin\\10.0.22621.0\\x86"},
        {{first + L"10\\bin\\10.0.2\\x64", first + L"10\\bin\\10.0.22\\x64"},
         first + L"10\\bin\\10.0.22\\x64"},
        {{first + L"10\\bin\\x86", second + L"10\\bin\\10.0.17763.0\\x86"},
         second + L"10\\bin\\10.0.17763.0\\x86"},
        {{first + L"10\\bin\\10.0.22621.0\\x86", second + L"10\\bin\\10.0.17763.0\\x86"},
         first + L"10\\bin\\10.0.22621.0\\x86"},
        {{first + L"8.1\\bin\\x86", first + L"10\\App Certification Kit"},
         first + L"10\\App Certification Kit"},
    };
    wchar_t saved[2][MAX_PATH] = {};
    GetEnvironmentVariableW(L"ProgramFiles(x86)", saved[0], MAX_PATH);
    GetEnvironmentVariableW(L"ProgramFiles", saved[1], MAX_PATH);
    setVariable(L"ProgramFiles(x86)", dir.file(L"x86 root"));
    setVariable(L"ProgramFiles", dir.file(L"root"));
    for (const auto& [present, found] : cases) {
        std::filesystem::remove_all(test::fsPath(dir.file(L"x86 root")));
        std::filesystem::remove_all(test::fsPath(dir.file(L"root")));
        for (const std::wstring& folder : present)
            test::writeFile(folder + L"\\signtool.exe", "tool");
        test::writeFile(first + L"10\\bin\\10.9.9.9", "a file named like a version folder");
        EXPECT_EQ(findSigntool(), found.empty() ? L"" : found + L"\\signtool.exe");
    }
    setVariable(L"ProgramFiles(x86)", saved[0]);
    setVariable(L"ProgramFiles", saved[1]);
}

} // namespace
} // namespace nv
