// The signing command lines and checks, decided without running anything.

#include "packager/signing_commands.h"

#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <map>

namespace nv {
namespace {

const std::wstring kTool = L"C:\\Program Files (x86)\\Windows Kits\\10\\bin\\10.0.22621.0\\x86\\signtool.exe";
const std::wstring kFile = L"C:\\Oyun\\Kaldra.exe.building";
const std::wstring kThumbprint = L"C10DF4E98CEBB0F2A430F461D394FE635438C268";

SigningOptions withSource(SigningSource source) {
    SigningOptions options;
    options.enabled = true;
    options.source = source;
    return options;
}

TEST(SigningCommands, EachSourceSignsWithItsOwnSwitches) {
    const std::wstring tool = L"\"" + kTool + L"\" sign /fd SHA256";
    const std::wstring end = L" \"" + kFile + L"\"";
    struct Case {
        const char* name;
        void (*fill)(SigningOptions&);
        std::wstring product, sourceArguments;
    } cases[] = {
        {"pfx", [](SigningOptions& o) { o.pfxPath = L"C:\\imza\\kaldra.pfx"; }, L"Kaldra",
         L" /f \"C:\\imza\\kaldra.pfx\" /d \"Kaldra\""},
        {"pfx, password",
         [](SigningOptions& o) { o.pfxPath = L"C:\\imza\\kaldra.pfx", o.pfxPassword = L"gizli"; }, L"",
         L" /f \"C:\\imza\\kaldra.pfx\" /p \"gizli\""},
        {"store, pasted thumbprint",
         [](SigningOptions& o) {
             o.source = SigningSource::Store, o.thumbprint =
                                                  L"\u200Ec1 0d f4 e9 8c eb b0 f2 a4 30 f4 61 d3 94 "
                                                  L"fe 63 54 38 c2 68";
         },
         L"Kaldra", L" /sha1 \"" + kThumbprint + L"\" /d \"Kaldra\""},
        {"machine store",
         [](SigningOptions& o) {
             o.source = SigningSource::Store, o.thumbprint = kThumbprint, o.machineStore = true;
         },
         L"", L" /sha1 \"" + kThumbprint + L"\" /sm"},
        {"automatic", [](SigningOptions& o) { o.source = SigningSource::Automatic; }, L"", L" /a"},
        {"automatic, machine store",
         [](SigningOptions& o) { o.source = SigningSource::Automatic, o.machineStore = true; }, L"Kaldra",
         L" /a /sm /d \"Kaldra\""},
        {"plug-in",
         [](SigningOptions& o) {
             o.source = SigningSource::Plugin, o.pluginPath = L"C:\\Azure\\Azure.CodeSigning.Dlib.dll",
             o.pluginMetadataPath = L"C:\\Azure\\metadata.json";
         },
         L"", L" /dlib \"C:\\Azure\\Azure.CodeSigning.Dlib.dll\" /dmdf \"C:\\Azure\\metadata.json\""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        for (bool stamped : {false, true}) {
            SigningOptions options = withSource(SigningSource::PfxFile);
            c.fill(options);
            options.timestampUrl = stamped ? L"http://ts.example" : L"";
            const SignCommands commands = signCommands(kTool, options, kFile, c.product);
            EXPECT_EQ(commands.plain, tool + c.sourceArguments + end);
            const std::vector<std::wstring> timestamped =
                stamped ? std::vector<std::wstring>{tool + c.sourceArguments +
                                                    L" /tr \"http://ts.example\" /td SHA256" + end}
                        : std::vector<std::wstring>{};
            EXPECT_EQ(commands.timestamped, timestamped);
        }
    }
}

TEST(SigningCommands, TimestampServersInOrderWithoutBlanksOrRepeats) {
    SigningOptions options;
    options.timestampUrl = L" http://a.example ";
    options.moreTimestampUrls = {L"", L"http://b.example", L"http://a.example", L"  ", L"http://c.example"};
    const std::vector<std::wstring> servers = {L"http://a.example", L"http://b.example", L"http://c.example"};
    EXPECT_EQ(timestampServers(options), servers);
    const SignCommands commands = signCommands(kTool, options, kFile, L"");
    ASSERT_EQ(commands.timestamped.size(), 3u);
    for (size_t i = 0; i < servers.size(); ++i)
        EXPECT_NE(commands.timestamped[i].find(L"/tr \"" + servers[i] + L"\" /td SHA256"),
                  std::wstring::npos);

    options.timestampUrl.clear();
    options.moreTimestampUrls = {L"http://b.example"};
    EXPECT_EQ(timestampServers(options), std::vector<std::wstring>{L"http://b.example"});
    options.moreTimestampUrls.clear();
    EXPECT_TRUE(signCommands(kTool, options, kFile, L"").timestamped.empty());
}

TEST(SigningCommands, ThumbprintsAsPastedFromTheCertificateDialog) {
    const std::wstring& digits = kThumbprint;
    const std::pair<std::wstring, bool> cases[] = {
        {digits, true},
        {L"c10df4e98cebb0f2a430f461d394fe635438c268", true},
        {L"\u200Ec1 0d f4 e9 8c eb b0 f2 a4 30 f4 61 d3 94 fe 63 54 38 c2 68", true},
        {L"C1:0D:F4:E9:8C:EB:B0:F2:A4:30:F4:61:D3:94:FE:63:54:38:C2:68\u00A0", true},
        {digits.substr(1), false},
        {digits + L"0", false},
        {L"G10DF4E98CEBB0F2A430F461D394FE635438C268", false},
        {L"", false},
    };
    for (const auto& [text, valid] : cases) {
        std::wstring thumbprint = L"unchanged";
        EXPECT_EQ(normalizeThumbprint(text, thumbprint), valid) << text;
        EXPECT_EQ(thumbprint, valid ? digits : L"unchanged") << text;
    }
}

TEST(SigningCommands, StartChecksAskWhatTheChosenSourceNeeds) {
    test::TempDir dir;
    const std::wstring pfx = dir.file(L"imza.pfx"), dll = dir.file(L"Dlib.dll"),
                       json = dir.file(L"metadata.json");
    for (const std::wstring& path : {pfx, dll, json})
        test::writeFile(path, "x");
    const std::wstring missing = dir.file(L"yok");
    struct Case {
        SigningSource source;
        std::wstring first, second; // pfx / thumbprint / plug-in and metadata / command
        std::wstring message;
    } cases[] = {
        {SigningSource::PfxFile, L"  ", L"", L"İmza açık ama sertifika (.pfx) seçilmedi."},
        {SigningSource::PfxFile, L" " + missing, L"", L"Sertifika dosyası bulunamadı:  " + missing},
        {SigningSource::PfxFile, L" " + pfx + L" ", L"", L""},
        {SigningSource::Store, L"", L"", L"İmza açık ama sertifika parmak izi girilmedi."},
        {SigningSource::Store, L"abc", L"", L"Sertifika parmak izi 40 onaltılık rakam olmalı: abc"},
        {SigningSource::Store, L"c10df4e98cebb0f2a430f461d394fe635438c268", L"", L""},
        {SigningSource::Automatic, L"", L"", L""},
        {SigningSource::Plugin, L"", json, L"İmza açık ama imza eklentisi (.dll) seçilmedi."},
        {SigningSource::Plugin, missing, json, L"İmza eklentisi bulunamadı: " + missing},
        {SigningSource::Plugin, dll, L"", L"İmza açık ama eklentinin ayar dosyası seçilmedi."},
        {SigningSource::Plugin, dll, missing, L"Eklentinin ayar dosyası bulunamadı: " + missing},
        {SigningSource::Plugin, dll, json, L""},
        {SigningSource::Command, L" ", L"", L"İmza açık ama imza komutu girilmedi."},
        {SigningSource::Command, L"jsign --storetype AZUREKEYVAULT Kaldra.exe", L"",
         L"İmza komutunda {file} yer tutucusu yok."},
        {SigningSource::Command, L"jsign {file}", L"", L""},
    };
    for (const Case& c : cases) {
        SigningOptions options = withSource(c.source);
        options.pfxPath = options.thumbprint = options.pluginPath = options.command = c.first;
        options.pluginMetadataPath = c.second;
        std::wstring message;
        EXPECT_EQ(checkSigningInputs(options, message), c.message.empty()) << c.first;
        EXPECT_EQ(message, c.message);
    }
}

TEST(SigningCommands, TheOperatorsCommandGetsTheFileAndTheEnvironment) {
    const std::map<std::wstring, std::wstring> environment = {
        {L"SIGN_PIN", L"12\"34\\"},
        {L"ProgramFiles(x86)", L"C:\\Program Files (x86)"},
        {L"EMPTY", L""},
        {L"AB", L"xy"}};
    const EnvironmentLookup lookup = [&](const std::wstring& name, std::wstring& value) {
        auto found = environment.find(name);
        if (found == environment.end()) return false;
        value = found->second;
        return true;
    };
    const std::wstring file = L"C:\\Oyun Klasörü\\Kaldra.exe.building", quotedFile = L"\"" + file + L"\"";
    struct Case {
        std::wstring pattern, line;
        std::vector<std::wstring> secrets;
        std::wstring message;
    } cases[] = {
        {L"jsign {file}", L"jsign " + quotedFile, {}, L""},
        {L"jsign \"{file}\" --out {file}.imzali",
         L"jsign " + quotedFile + L" --out " + quotedFile + L".imzali",
         {},
         L""},
        // A variable inside a word is put in as it is; one in quotes becomes one quoted argument.
        {L"tool --pin=%SIGN_PIN% {file}", L"tool --pin=12\"34\\ " + quotedFile, {L"12\"34\\"}, L""},
        {L"tool --pin \"%SIGN_PIN%\" {file}",
         L"tool --pin \"12\\\"34\\\\\" " + quotedFile,
         {L"12\"34\\"},
         L""},
        {L"\"%ProgramFiles(x86)%\\Araç\\sign.exe\" {file}",
         L"\"C:\\Program Files (x86)\\Araç\\sign.exe\" " + quotedFile,
         {L"C:\\Program Files (x86)"},
         L""},
        // Short values are no secrets worth masking; empty ones none at all.
        {L"tool %AB% %EMPTY% {file}", L"tool xy  " + quotedFile, {}, L""},
        // Percent signs that name no variable are text.
        {L"tool http://x.example/a%20b%20c 100% {file}",
         L"tool http://x.example/a%20b%20c 100% " + quotedFile,
         {},
         L""},
        {L"tool \"{file\" {file}", L"tool \"{file\" " + quotedFile, {}, L""},
        {L"tool %SIGN_TOKEN% {file}", L"", {}, L"İmza komutundaki ortam değişkeni tanımlı değil: SIGN_TOKEN"},
        {L"tool %SIGN_PIN%", L"", {}, L"İmza komutunda {file} yer tutucusu yok."},
    };
    for (const Case& c : cases) {
        OperatorCommand command;
        std::wstring message;
        EXPECT_EQ(makeOperatorCommand(c.pattern, file, lookup, command, message), c.message.empty())
            << c.pattern;
        EXPECT_EQ(message, c.message);
        EXPECT_EQ(command.commandLine, c.line) << c.pattern;
        EXPECT_EQ(command.secrets, c.secrets) << c.pattern;
    }
}

TEST(SigningCommands, SecretsAreMaskedWholeInToolOutput) {
    EXPECT_EQ(maskSecrets(L"pin 1234 ve 123456 reddedildi: 123456", {L"1234", L"123456", L""}),
              L"pin *** ve *** reddedildi: ***");
    EXPECT_EQ(maskSecrets(L"bad password x", {L"x"}), L"bad password ***");
}

} // namespace
} // namespace nv
