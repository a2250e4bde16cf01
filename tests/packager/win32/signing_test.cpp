// Signing through a stand-in signtool.exe (fixtures/fake_signtool.cpp) that records its command line and the
// arguments it received, and exits with the codes the test asks for; the certificate store under Wine's
// crypt32; the search for signtool.exe over made-up SDK folders.

#include "packager/signing.h"
#include "core/text.h"
#include "tests/packager/win32/build_fixtures.h"
#include "tests/support/test_support.h"

#include <windows.h>
#include <wincrypt.h>

#include <gtest/gtest.h>

namespace nv {
namespace {

const std::wstring kTool = test::FakeSigntool::path();
const std::wstring kNoTimestampWarning =
    L"UYARI: zaman damgası eklenemedi; imza sertifika süresi bitince geçersiz sayılır.";

// Children inherit the variable; an empty value removes it.
void setVariable(const wchar_t* name, const std::wstring& value) {
    SetEnvironmentVariableW(name, value.empty() ? nullptr : value.c_str());
}

struct Outcome {
    bool ok = false;
    std::wstring message;
    std::vector<std::wstring> log;
};

Outcome sign(SigningOptions options, const std::wstring& file, const std::wstring& product = L"") {
    VersionInfoFields version;
    version.productName = product;
    options.enabled = true;
    Outcome outcome;
    outcome.ok = signExecutable(options, file, version, test::collectLine, &outcome.log, outcome.message);
    return outcome;
}

SigningOptions pfxOptions(const std::wstring& pfx, const std::wstring& password, const std::wstring& server,
                          const std::wstring& tool) {
    SigningOptions options;
    options.pfxPath = pfx;
    options.pfxPassword = password;
    options.timestampUrl = server;
    options.signtoolPath = tool;
    return options;
}

TEST(Signing, CommandLinesFallbackWarningAndFailures) {
    test::TempDir dir;
    test::FakeSigntool stand;
    const std::wstring pfx = dir.file(L"imza sertifikası.pfx"), file = dir.file(L"Kaldra.exe.building");
    test::writeFile(pfx, "pfx");
    const std::wstring base = L"\"" + kTool + L"\" sign /fd SHA256 /f \"" + pfx + L"\"",
                       end = L" \"" + file + L"\"";
    const std::wstring ts = L" /tr \"http://ts.example\" /td SHA256" + end;
    const std::wstring plain = L"İmzalanıyor...", stamped = L"İmzalanıyor (zaman damgalı)...";
    const std::wstring fallback = L"Zaman damgalı imza başarısız, damgasız deneniyor: ";
    const std::wstring noTool =
        L"signtool.exe bulunamadı. Windows SDK'nın \"Signing Tools for Desktop Apps\" bileşenini kurun.";
    const std::wstring tsUrl = L"http://ts.example", quoted = base + L" /d \"Kaldra 'Online'\"";
    struct Case {
        SigningOptions options;
        std::wstring product, tsExit, exit, say;
        std::vector<std::wstring> commands, lines;
        std::wstring failure; // empty: signed
    } cases[] = {
        {pfxOptions(pfx, L"gizli", L"", kTool),
         L"Kaldra",
         L"9",
         L"0",
         L"",
         {base + L" /p \"gizli\" /d \"Kaldra\"" + end},
         {plain},
         L""},
        {pfxOptions(pfx, L"", tsUrl, kTool),
         L"Kaldra \"Online\"",
         L"3",
         L"0",
         L"ulasilamadi",
         {quoted + ts, quoted + end},
         {stamped, fallback + L"ulasilamadi", plain, kNoTimestampWarning},
         L""},
        {pfxOptions(pfx, L"", tsUrl, kTool), L"", L"0", L"5", L"", {base + ts}, {stamped}, L""},
        {pfxOptions(pfx, L"p@ss", L"", kTool),
         L"",
         L"0",
         L"1",
         L"bad password p@ss",
         {base + L" /p \"p@ss\"" + end},
         {plain},
         L"İmzalama başarısız: bad password ***"},
        {pfxOptions(pfx, L"", L"", kTool),
         L"",
         L"0",
         L"1",
         L"",
         {base + end},
         {plain},
         L"İmzalama başarısız: "},
        {pfxOptions(pfx, L"", L"", dir.file(L"yok\\signtool.exe")), L"", L"0", L"0", L"", {}, {}, noTool},
        {pfxOptions(dir.file(L"yok.pfx"), L"", L"", kTool),
         L"",
         L"0",
         L"0",
         L"",
         {},
         {},
         L"Sertifika dosyası (.pfx) bulunamadı: " + dir.file(L"yok.pfx")},
    };
    for (const Case& c : cases) {
        stand.set(L"TS_EXIT", c.tsExit);
        stand.set(L"EXIT", c.exit);
        stand.set(L"SAY", c.say);
        const Outcome outcome = sign(c.options, file, c.product);
        EXPECT_EQ(outcome.ok, c.failure.empty());
        EXPECT_EQ(outcome.message, c.failure);
        EXPECT_EQ(outcome.log, c.lines);
        EXPECT_EQ(stand.takeCommandLines(), c.commands);
        stand.takeArguments();
    }
}

// The servers are tried in their order until one answers; after the last one fails, once without a stamp.
TEST(Signing, TimestampServersAreTriedInOrder) {
    test::TempDir dir;
    test::FakeSigntool stand;
    const std::wstring pfx = dir.file(L"imza.pfx"), file = dir.file(L"Kaldra.exe.building");
    test::writeFile(pfx, "pfx");
    SigningOptions options = pfxOptions(pfx, L"", L"http://a.example", kTool);
    options.moreTimestampUrls = {L"http://b.example", L"http://c.example"};
    stand.set(L"TS_EXIT", L"7");
    stand.set(L"SAY", L"sunucu yanit vermedi");
    const std::wstring next =
        L"Zaman damgalı imza başarısız, sıradaki sunucu deneniyor: sunucu yanit vermedi";
    const struct {
        std::wstring good;
        std::vector<std::wstring> servers; // what each run asked for, "" = no stamp
        std::vector<std::wstring> lines;
    } cases[] = {
        {L"http://a.example", {L"http://a.example"}, {L"İmzalanıyor (zaman damgalı)..."}},
        {L"http://c.example",
         {L"http://a.example", L"http://b.example", L"http://c.example"},
         {L"İmzalanıyor (zaman damgalı)...", next, L"İmzalanıyor (zaman damgalı: http://b.example)...", next,
          L"İmzalanıyor (zaman damgalı: http://c.example)..."}},
        {L"",
         {L"http://a.example", L"http://b.example", L"http://c.example", L""},
         {L"İmzalanıyor (zaman damgalı)...", next, L"İmzalanıyor (zaman damgalı: http://b.example)...", next,
          L"İmzalanıyor (zaman damgalı: http://c.example)...",
          L"Zaman damgalı imza başarısız, damgasız deneniyor: sunucu yanit vermedi", L"İmzalanıyor...",
          kNoTimestampWarning}},
    };
    for (const auto& c : cases) {
        stand.set(L"TS_GOOD", c.good);
        const Outcome outcome = sign(options, file);
        EXPECT_TRUE(outcome.ok) << wideToUtf8(outcome.message);
        EXPECT_EQ(outcome.log, c.lines);
        std::vector<std::wstring> servers;
        for (const std::vector<std::wstring>& run : stand.takeArguments()) {
            auto tr = std::find(run.begin(), run.end(), L"/tr");
            servers.push_back(tr != run.end() && tr + 1 != run.end() ? *(tr + 1) : L"");
        }
        EXPECT_EQ(servers, c.servers);
        stand.takeCommandLines();
    }
}

// What the tool receives, split by its own C runtime, is what the operator typed, whatever it holds.
TEST(Signing, EverySourceReachesTheToolIntact) {
    test::TempDir dir;
    test::FakeSigntool stand;
    const std::wstring folder = dir.file(L"Yeni klasör\\"),
                       file = dir.file(L"Çıktı\\Kaldra \"son\".exe.building");
    const std::wstring pfx = folder + L"imza.pfx", dll = folder + L"Azure.CodeSigning.Dlib.dll",
                       json = folder + L"meta data.json";
    for (const std::wstring& path : {pfx, dll, json})
        test::writeFile(path, "x");
    const std::wstring password = L"a\"b\\\" c\\", product = L"Kaldra \"Online\" \\";
    const std::vector<std::wstring> tail = {L"/d", L"Kaldra 'Online' \\", file};
    auto with = [&](std::vector<std::wstring> head) {
        head.insert(head.end(), tail.begin(), tail.end());
        return head;
    };
    SigningOptions pfxSource = pfxOptions(pfx, password, L"", kTool), automatic = pfxSource,
                   plugin = pfxSource;
    automatic.source = SigningSource::Automatic;
    automatic.machineStore = true;
    plugin.source = SigningSource::Plugin;
    plugin.pluginPath = dll;
    plugin.pluginMetadataPath = json;
    const std::pair<SigningOptions, std::vector<std::wstring>> cases[] = {
        {pfxSource, with({L"sign", L"/fd", L"SHA256", L"/f", pfx, L"/p", password})},
        {automatic, with({L"sign", L"/fd", L"SHA256", L"/a", L"/sm"})},
        {plugin, with({L"sign", L"/fd", L"SHA256", L"/dlib", dll, L"/dmdf", json})},
    };
    for (const auto& [options, arguments] : cases) {
        const Outcome outcome = sign(options, file, product);
        EXPECT_TRUE(outcome.ok) << wideToUtf8(outcome.message);
        EXPECT_EQ(stand.takeArguments(), std::vector<std::vector<std::wstring>>{arguments});
    }
}

// The operator's own tool: {file} and the environment put in, its output in the log with the secret masked,
// its exit code deciding.
TEST(Signing, TheOperatorsOwnCommand) {
    test::TempDir dir;
    test::FakeSigntool stand;
    const std::wstring file = dir.file(L"Oyun Klasörü\\Kaldra.exe.building");
    setVariable(L"NV_TEST_SIGN_PIN", L"12\"34 gizli");
    SigningOptions options;
    options.source = SigningSource::Command;
    options.timestampUrl = L"http://ts.example"; // the operator's tool stamps on its own
    options.command = L"\"" + kTool + L"\" imzala --pin \"%NV_TEST_SIGN_PIN%\" --in {file}";
    const std::vector<std::wstring> arguments = {L"imzala", L"--pin", L"12\"34 gizli", L"--in", file};
    const struct {
        std::wstring command, exit, say;
        bool ran;
        std::vector<std::wstring> lines;
        std::wstring failure;
    } cases[] = {
        {options.command,
         L"0",
         L"imzalandi: 12\"34 gizli\r\n\r\nbitti",
         true,
         {L"İmzalanıyor (kendi komutunuzla)...", L"imzalandi: ***", L"bitti"},
         L""},
        {options.command,
         L"3",
         L"",
         true,
         {L"İmzalanıyor (kendi komutunuzla)..."},
         L"İmza komutu başarısız oldu (çıkış kodu 3)."},
        {L"\"" + kTool + L"\" --pin %NV_TEST_SIGN_TOKEN% {file}",
         L"0",
         L"",
         false,
         {},
         L"İmza komutundaki ortam değişkeni tanımlı değil: NV_TEST_SIGN_TOKEN"},
        {L"\"" + dir.file(L"yok\\imzalayici.exe") + L"\" {file}",
         L"0",
         L"",
         false,
         {L"İmzalanıyor (kendi komutunuzla)..."},
         L"İmza komutu çalıştırılamadı: " + dir.file(L"yok\\imzalayici.exe")},
    };
    for (const auto& c : cases) {
        options.command = c.command;
        stand.set(L"EXIT", c.exit);
        stand.set(L"SAY", c.say);
        const Outcome outcome = sign(options, file);
        EXPECT_EQ(outcome.message, c.failure);
        EXPECT_EQ(outcome.ok, c.failure.empty());
        EXPECT_EQ(outcome.log, c.lines);
        EXPECT_EQ(stand.takeArguments(), c.ran ? std::vector<std::vector<std::wstring>>{arguments}
                                               : std::vector<std::vector<std::wstring>>{});
        stand.takeCommandLines();
    }
    setVariable(L"NV_TEST_SIGN_PIN", L"");
}

// A test certificate with its key, imported from a PFX into the user's "My" store of the test prefix, is
// found by its thumbprint (as the certificate dialog shows it), signs through /sha1, and leaves again.
TEST(Signing, CertificateStoreByThumbprint) {
    const test::SignedFixtures fixtures = test::signedFixtures();
    const Bytes pfxBytes = test::readFile(test::buildFixture(L"signed\\signer.pfx"));
    CRYPT_DATA_BLOB pfx{DWORD(pfxBytes.size()), const_cast<BYTE*>(pfxBytes.data())};
    HCERTSTORE imported = PFXImportCertStore(&pfx, L"test-parola", CRYPT_USER_KEYSET);
    ASSERT_NE(imported, nullptr) << GetLastError();
    PCCERT_CONTEXT certificate = CertEnumCertificatesInStore(imported, nullptr);
    ASSERT_NE(certificate, nullptr);
    HCERTSTORE my = CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER, L"My");
    ASSERT_NE(my, nullptr);
    PCCERT_CONTEXT added = nullptr;
    ASSERT_TRUE(CertAddCertificateContextToStore(my, certificate, CERT_STORE_ADD_REPLACE_EXISTING, &added));
    // Windows writes a system store at once; Wine's keeps changes until they are committed.
    EXPECT_TRUE(CertControlStore(my, 0, CERT_STORE_CTRL_COMMIT, nullptr));

    const StoreCertificate user = findStoreCertificate(fixtures.thumbprint, false);
    EXPECT_TRUE(user.found && user.hasKey);
    EXPECT_EQ(user.subject, fixtures.subject);
    EXPECT_FALSE(findStoreCertificate(fixtures.thumbprint, true).found) << "only the user's store holds it";

    test::TempDir dir;
    test::FakeSigntool stand;
    const std::wstring file = dir.file(L"Kaldra.exe.building");
    SigningOptions options = pfxOptions(L"", L"", L"", kTool);
    options.source = SigningSource::Store;
    std::wstring pasted = L"\u200E";
    for (size_t i = 0; i < fixtures.thumbprint.size(); i += 2)
        pasted += lowerWide(fixtures.thumbprint.substr(i, 2)) + L" ";
    const std::wstring absent(40, L'0');
    const struct {
        std::wstring thumbprint;
        bool machine;
        std::wstring failure;
    } cases[] = {
        {pasted, false, L""},
        {pasted, true, L"Sertifika depoda bulunamadı (bilgisayarın Kişisel deposu): " + fixtures.thumbprint},
        {absent, false, L"Sertifika depoda bulunamadı (kullanıcının Kişisel deposu): " + absent},
    };
    for (const auto& c : cases) {
        options.thumbprint = c.thumbprint;
        options.machineStore = c.machine;
        const Outcome outcome = sign(options, file);
        EXPECT_EQ(outcome.message, c.failure);
        const std::vector<std::vector<std::wstring>> runs = stand.takeArguments();
        if (c.failure.empty())
            EXPECT_EQ(runs, (std::vector<std::vector<std::wstring>>{
                                {L"sign", L"/fd", L"SHA256", L"/sha1", fixtures.thumbprint, file}}));
        else
            EXPECT_TRUE(runs.empty());
    }

    EXPECT_TRUE(CertDeleteCertificateFromStore(added));
    EXPECT_TRUE(CertControlStore(my, 0, CERT_STORE_CTRL_COMMIT, nullptr));
    EXPECT_FALSE(findStoreCertificate(fixtures.thumbprint, false).found);
    CertCloseStore(my, 0);
    CertFreeCertificateContext(certificate);
    CertCloseStore(imported, 0);
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
