// Signing through a stand-in signtool.exe (fixtures/fake_signtool.cpp) that records its command line and
// exits with the code the test asks for; the search for signtool.exe over made-up SDK folders.

#include "build/build_job.h"
#include "build/signing.h"
#include "core/paths.h"
#include "core/text.h"
#include "tests/build/win32/build_fixtures.h"
#include "tests/support/test_support.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <map>
#include <optional>

namespace nv {
namespace {

using test::narrow;

const std::wstring kTool = test::buildFixture(L"fake-sdk\\signtool.exe");

// Sets environment variables for one scope and puts the old values back.
class Environment {
public:
    void set(const wchar_t* name, const std::optional<std::wstring>& value) {
        if (!saved_.count(name)) {
            wchar_t buffer[1024];
            DWORD n = GetEnvironmentVariableW(name, buffer, 1024);
            saved_[name] =
                n > 0 && n < 1024 ? std::optional<std::wstring>(std::wstring(buffer, n)) : std::nullopt;
        }
        SetEnvironmentVariableW(name, value ? value->c_str() : nullptr);
    }
    ~Environment() {
        for (const auto& [name, value] : saved_)
            SetEnvironmentVariableW(name.c_str(), value ? value->c_str() : nullptr);
    }

private:
    std::map<std::wstring, std::optional<std::wstring>> saved_;
};

// The command lines the stand-in recorded, one per run.
std::vector<std::wstring> recorded(const std::wstring& logFile) {
    std::vector<std::wstring> lines;
    if (!fileExists(logFile)) return lines;
    std::string text = test::textOf(test::readFile(logFile));
    for (size_t start = 0, end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
        lines.push_back(utf8ToWide(text.substr(start, end - start)));
    return lines;
}

struct SignRun {
    bool ok;
    std::wstring message;
    std::vector<std::wstring> log, commands;
};

SignRun sign(const SigningOptions& options, const std::wstring& productName, const std::wstring& file,
             const std::wstring& logFile) {
    SignRun run;
    VersionInfoFields version;
    version.productName = productName;
    run.ok = signExecutable(options, file, version, test::collectLine, &run.log, run.message);
    run.commands = recorded(logFile);
    return run;
}

TEST(Signing, CommandLinesFallbackAndWarning) {
    test::TempDir dir;
    const std::wstring pfx = dir.file(L"imza sertifikası.pfx"), file = dir.file(L"Kaldra.exe.building");
    const std::wstring logFile = dir.file(L"signtool.log");
    test::writeFile(pfx, "pfx");
    const std::wstring base = L"\"" + kTool + L"\" sign /fd SHA256 /f \"" + pfx + L"\"";
    const std::wstring ts = L" /tr \"http://ts.example\" /td SHA256";
    const std::wstring signing = L"İmzalanıyor...", signingTs = L"İmzalanıyor (zaman damgalı)...";
    const std::wstring warning =
        L"UYARI: zaman damgası eklenemedi; imza sertifika süresi bitince geçersiz sayılır.";

    const struct {
        const char* what;
        std::wstring password, timestampUrl, product;
        const wchar_t *tsExit, *exit, *say;
        bool ok;
        std::vector<std::wstring> commands, log;
        std::wstring message;
    } cases[] = {
        {"no time stamp: one run",
         L"gizli",
         L"",
         L"Kaldra",
         L"9",
         L"0",
         L"",
         true,
         {base + L" /p \"gizli\" /d \"Kaldra\" \"" + file + L"\""},
         {signing},
         L""},
        {"time stamped",
         L"",
         L"http://ts.example",
         L"",
         L"0",
         L"9",
         L"",
         true,
         {base + ts + L" \"" + file + L"\""},
         {signingTs},
         L""},
        {"time stamp server unreachable",
         L"",
         L"http://ts.example",
         L"Kaldra \"Online\"",
         L"3",
         L"0",
         L"SignTool Error: sunucuya ulasilamadi",
         true,
         {base + L" /d \"Kaldra 'Online'\"" + ts + L" \"" + file + L"\"",
          base + L" /d \"Kaldra 'Online'\" \"" + file + L"\""},
         {signingTs,
          L"Zaman damgalı imza başarısız, damgasız deneniyor: SignTool Error: sunucuya ulasilamadi", signing,
          warning},
         L""},
        {"both fail",
         L"",
         L"http://ts.example",
         L"",
         L"3",
         L"2",
         L"SignTool Error: bozuk",
         false,
         {base + ts + L" \"" + file + L"\"", base + L" \"" + file + L"\""},
         {signingTs, L"Zaman damgalı imza başarısız, damgasız deneniyor: SignTool Error: bozuk", signing},
         L"İmzalama başarısız: SignTool Error: bozuk"},
        {"a tool that echoes the password",
         L"p@ss",
         L"",
         L"",
         L"0",
         L"1",
         L"bad password p@ss",
         false,
         {base + L" /p \"p@ss\" \"" + file + L"\""},
         {signing},
         L"İmzalama başarısız: bad password ***"},
        {"silent failure",
         L"",
         L"",
         L"",
         L"0",
         L"1",
         L"",
         false,
         {base + L" \"" + file + L"\""},
         {signing},
         L"İmzalama başarısız: "},
    };
    for (const auto& c : cases) {
        DeleteFileW(logFile.c_str());
        Environment env;
        env.set(L"NV_FAKE_SIGNTOOL_LOG", logFile);
        env.set(L"NV_FAKE_SIGNTOOL_TS_EXIT", std::wstring(c.tsExit));
        env.set(L"NV_FAKE_SIGNTOOL_EXIT", std::wstring(c.exit));
        env.set(L"NV_FAKE_SIGNTOOL_SAY", *c.say ? std::optional<std::wstring>(c.say) : std::nullopt);
        SigningOptions options{true, pfx, c.password, c.timestampUrl, kTool};
        const SignRun run = sign(options, c.product, file, logFile);
        EXPECT_EQ(run.ok, c.ok) << c.what;
        EXPECT_EQ(run.message, c.message) << c.what;
        EXPECT_EQ(run.commands, c.commands) << c.what;
        EXPECT_EQ(run.log, c.log) << c.what;
        for (const std::wstring& line : run.log)
            EXPECT_EQ(c.password.empty() ? std::wstring::npos : line.find(c.password), std::wstring::npos)
                << c.what;
    }
}

TEST(Signing, MissingToolOrCertificateRunsNothing) {
    test::TempDir dir;
    const std::wstring pfx = dir.file(L"a.pfx"), logFile = dir.file(L"signtool.log");
    test::writeFile(pfx, "pfx");
    Environment env;
    env.set(L"NV_FAKE_SIGNTOOL_LOG", logFile);
    const std::wstring noTool =
        L"signtool.exe bulunamadı. Windows SDK'nın \"Signing Tools for Desktop Apps\" bileşenini kurun.";
    const struct {
        SigningOptions options;
        std::wstring message;
    } cases[] = {
        {{true, pfx, L"", L"", dir.file(L"yok\\signtool.exe")}, noTool},
        {{true, dir.file(L"yok.pfx"), L"", L"", kTool},
         L"Sertifika dosyası (.pfx) bulunamadı: " + dir.file(L"yok.pfx")},
    };
    for (const auto& c : cases) {
        const SignRun run = sign(c.options, L"", dir.file(L"x.exe"), logFile);
        EXPECT_FALSE(run.ok);
        EXPECT_EQ(run.message, c.message);
        EXPECT_TRUE(run.commands.empty());
        EXPECT_TRUE(run.log.empty());
    }
}

TEST(Signing, TheNewestSdkWinsX86BeforeX64) {
    test::TempDir dir;
    const std::wstring first = dir.file(L"Program Files (x86)"), second = dir.file(L"Program Files");
    auto tool = [](const std::wstring& root, const wchar_t* rest) {
        return root + L"\\Windows Kits\\" + rest + L"\\signtool.exe";
    };
    const struct {
        const char* what;
        std::vector<std::wstring> present;
        std::wstring found;
    } cases[] = {
        {"nothing", {}, L""},
        {"two versions",
         {tool(first, L"10\\bin\\10.0.19041.0\\x86"), tool(first, L"10\\bin\\10.0.22621.0\\x86")},
         tool(first, L"10\\bin\\10.0.22621.0\\x86")},
        {"x86 before x64",
         {tool(first, L"10\\bin\\10.0.22621.0\\x64"), tool(first, L"10\\bin\\10.0.22621.0\\x86")},
         tool(first, L"10\\bin\\10.0.22621.0\\x86")},
        {"only x64",
         {tool(first, L"10\\bin\\10.0.22621.0\\x64")},
         tool(first, L"10\\bin\\10.0.22621.0\\x64")},
        {"a longer version name wins over its prefix",
         {tool(first, L"10\\bin\\10.0.2\\x86"), tool(first, L"10\\bin\\10.0.22\\x86")},
         tool(first, L"10\\bin\\10.0.22\\x86")},
        {"a versioned tool under the second root beats a fixed place under the first",
         {tool(first, L"10\\bin\\x86"), tool(second, L"10\\bin\\10.0.17763.0\\x86")},
         tool(second, L"10\\bin\\10.0.17763.0\\x86")},
        {"an older version under the second root does not",
         {tool(first, L"10\\bin\\10.0.22621.0\\x86"), tool(second, L"10\\bin\\10.0.17763.0\\x86")},
         tool(first, L"10\\bin\\10.0.22621.0\\x86")},
        {"the fixed places in order",
         {tool(first, L"8.1\\bin\\x86"), tool(first, L"10\\App Certification Kit")},
         tool(first, L"10\\App Certification Kit")},
        {"Windows 8.1", {tool(second, L"8.1\\bin\\x86")}, tool(second, L"8.1\\bin\\x86")},
    };
    for (const auto& c : cases) {
        test::TempDir roots;
        auto moved = [&](const std::wstring& path) { return roots.path() + path.substr(dir.path().size()); };
        for (const std::wstring& path : c.present)
            test::writeFile(moved(path), "tool");
        // A file named like a version folder is no SDK.
        test::writeFile(moved(first) + L"\\Windows Kits\\10\\bin\\10.9.9.9", "not a folder");
        Environment env;
        env.set(L"ProgramFiles(x86)", moved(first));
        env.set(L"ProgramFiles", moved(second));
        EXPECT_EQ(findSigntool(), c.found.empty() ? L"" : moved(c.found)) << c.what;
    }
}

TEST(Signing, RunCaptureReportsOutputAndExitCode) {
    Environment env;
    env.set(L"NV_FAKE_SIGNTOOL_SAY", std::wstring(L"  sonuç: hata \t")); // ç is in every Latin code page
    env.set(L"NV_FAKE_SIGNTOOL_EXIT", std::wstring(L"42"));
    std::wstring output;
    uint32_t code = 0;
    ASSERT_TRUE(runCapture(L"\"" + kTool + L"\" sign", output, code, 10000));
    EXPECT_EQ(code, 42u);
    EXPECT_EQ(output, L"sonuç: hata");
    EXPECT_FALSE(runCapture(L"\"C:\\yok\\signtool.exe\" sign", output, code, 10000));
}

// Signing inside a build: the temporary file is what gets signed; a failure keeps the previous output.
TEST(Signing, WithinTheBuild) {
    test::TempDir dir;
    const std::wstring out = dir.file(L"Kaldra.exe"), pfx = dir.file(L"a.pfx"),
                       logFile = dir.file(L"signtool.log");
    test::writeFile(pfx, "pfx");
    const Bytes previous = test::noiseBytes(1000, 9);
    for (const wchar_t* exitCode : {L"0", L"5"}) {
        test::writeFile(out, previous);
        DeleteFileW(logFile.c_str());
        Environment env;
        env.set(L"NV_FAKE_SIGNTOOL_LOG", logFile);
        env.set(L"NV_FAKE_SIGNTOOL_EXIT", std::wstring(exitCode));
        env.set(L"NV_FAKE_SIGNTOOL_SAY", std::wstring(L"imzalayici ciktisi"));
        BuildRequest request = test::requestFor(test::buildFixture(L"foreign_template.exe"), out);
        request.signing = {true, pfx, L"", L"", kTool};
        std::vector<std::wstring> log;
        const BuildResult result = writePatcherExecutable(request, test::collectLine, &log);
        const bool signs = exitCode == std::wstring(L"0");
        ASSERT_EQ(result.ok, signs) << narrow(result.message);
        EXPECT_EQ(result.wasSigned, signs);
        EXPECT_EQ(recorded(logFile), std::vector<std::wstring>{L"\"" + kTool + L"\" sign /fd SHA256 /f \"" +
                                                               pfx + L"\" \"" + out + L".building\""});
        EXPECT_FALSE(fileExists(out + L".building"));
        if (signs) {
            EXPECT_EQ(log.back(), L"İmza eklendi.");
            EXPECT_EQ(log[log.size() - 2], L"İmzalanıyor...");
        } else {
            EXPECT_EQ(result.message, L"İmzalama başarısız: imzalayici ciktisi");
            EXPECT_EQ(test::readFile(out), previous);
        }
    }
}

} // namespace
} // namespace nv
