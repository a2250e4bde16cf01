// The signing card in the window: each certificate source shows its own fields, the readiness checklist says
// what the chosen source still lacks, and a build signed by the operator's own command shows its signer in
// the result card and the log. Pictures of the card and the result go to ui_window\snap beside the tests, to
// be looked at.

#include "core/command_line.h"
#include "tests/packager/win32/build_fixtures.h"
#include "tests/ui/window/builder_window.h"

#include <algorithm>

namespace nv::ui::win {
namespace {

class BuilderSigning : public BuilderWindowTest {
protected:
    void TearDown() override {
        app_->runCommand(kItemSigningSource, static_cast<int>(SigningSource::PfxFile));
        setSigning(false);
    }
    // The Derleme page's "İmza" row as the window shows it now.
    std::pair<std::wstring, bool> signingRow() {
        app_->showSection(kDerleme);
        for (const Block& b : app_->layout().blocks)
            if (b.kind == BlockKind::CheckRow && b.text == L"İmza") return {b.text2, b.on};
        return {L"<yok>", false};
    }
    void snap(const wchar_t* name) {
        const std::wstring folder = pathJoin(exeFolder(), L"ui_window\\snap");
        createFolders(folder);
        UpdateWindow(app_->hwnd());
        EXPECT_TRUE(app_->capture(pathJoin(folder, name))) << test::fsPath(name);
    }
};

TEST_F(BuilderSigning, EachSourceShowsItsOwnFields) {
    loadSample();
    setSigning(true);
    const struct {
        SigningSource source;
        std::vector<int> shown;
        const wchar_t* picture;
    } cases[] = {
        {SigningSource::PfxFile,
         {kFieldPfx, kFieldPassword, kFieldTimestamp, kFieldTimestampMore},
         L"pfx.png"},
        {SigningSource::Store, {kFieldThumbprint, kFieldTimestamp, kFieldTimestampMore}, L"store.png"},
        {SigningSource::Automatic, {kFieldTimestamp, kFieldTimestampMore}, L"auto.png"},
        {SigningSource::Plugin,
         {kFieldPlugin, kFieldPluginMetadata, kFieldTimestamp, kFieldTimestampMore},
         L"plugin.png"},
        {SigningSource::Command, {kFieldSignCommand}, L"command.png"},
    };
    app_->showSection(kCikti);
    for (const auto& c : cases) {
        app_->runCommand(kItemSigningSource, static_cast<int>(c.source));
        EXPECT_EQ(app_->recipe().signing.source, c.source);
        for (const FieldSpec& f : fixedFields()) {
            if (!isSigningField(f.id)) continue;
            const bool shown = std::count(c.shown.begin(), c.shown.end(), f.id) != 0;
            EXPECT_EQ(visible(f.id), shown) << f.id << " for source " << static_cast<int>(c.source);
            EXPECT_TRUE(enabled(f.id)) << f.id;
        }
        snap((std::wstring(L"4_cikti_") + c.picture).c_str());
    }
    // The source with the tallest card, in the smallest window.
    app_->runCommand(kItemSigningSource, static_cast<int>(SigningSource::Store));
    RECT normal{};
    GetWindowRect(app_->hwnd(), &normal);
    RECT small{0, 0, kMinClientWidth, kMinClientHeight};
    AdjustWindowRectEx(&small, WS_OVERLAPPEDWINDOW, FALSE, WS_EX_ACCEPTFILES);
    SetWindowPos(app_->hwnd(), nullptr, 0, 0, small.right - small.left, small.bottom - small.top,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    snap(L"4_cikti_store_min.png");
    SetWindowPos(app_->hwnd(), nullptr, 0, 0, normal.right - normal.left, normal.bottom - normal.top,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    // Switching signing off locks every source's fields, whichever is shown.
    setSigning(false);
    for (const FieldSpec& f : fixedFields())
        if (isSigningField(f.id)) {
            EXPECT_FALSE(enabled(f.id)) << f.id;
        }
    // The machine store is the user's until asked for.
    EXPECT_FALSE(app_->recipe().signing.machineStore);
    app_->runCommand(kItemToggleMachineStore, 0);
    EXPECT_TRUE(app_->recipe().signing.machineStore);
    app_->runCommand(kItemToggleMachineStore, 0);
}

TEST_F(BuilderSigning, TheChecklistSaysWhatTheSourceLacks) {
    setSigning(true);
    app_->runCommand(kItemSigningSource, static_cast<int>(SigningSource::Store));
    app_->fields().setText(kFieldThumbprint, L"");
    EXPECT_EQ(signingRow(),
              std::make_pair(std::wstring(L"Parmak izi girilmedi — sertifikanınkini yapıştırın"), false));
    // Nobody's certificate has this thumbprint, in a real store or in Wine's.
    app_->fields().setText(kFieldThumbprint, std::wstring(40, L'0'));
    EXPECT_EQ(
        signingRow(),
        std::make_pair(std::wstring(L"Depoda yok — token'ı takın ya da sertifikayı kullanıcı deposuna alın"),
                       false));

    app_->runCommand(kItemSigningSource, static_cast<int>(SigningSource::Command));
    SetEnvironmentVariableW(L"NV_UI_IMZA_PIN", nullptr);
    app_->fields().setText(kFieldSignCommand, L"jsign.exe --storepass %NV_UI_IMZA_PIN% {file}");
    EXPECT_EQ(
        signingRow(),
        std::make_pair(std::wstring(L"%NV_UI_IMZA_PIN% tanımlı değil — tanımlayıp oluşturucuyu yeniden açın"),
                       false));
    SetEnvironmentVariableW(L"NV_UI_IMZA_PIN", L"1234");
    EXPECT_EQ(signingRow(), std::make_pair(std::wstring(L"Kendi komutunuz: jsign.exe"), true));
    SetEnvironmentVariableW(L"NV_UI_IMZA_PIN", nullptr);

    app_->runCommand(kItemSigningSource, static_cast<int>(SigningSource::Plugin));
    test::TempDir dir;
    const std::wstring dll = dir.file(L"Dlib.dll");
    test::writeFile(dll, "MZ");
    app_->fields().setText(kFieldPlugin, dll);
    app_->fields().setText(kFieldPluginMetadata, dir.file(L"yok.json"));
    EXPECT_EQ(signingRow(),
              std::make_pair(std::wstring(L"Eklenti ayar dosyası bulunamadı — yolunu düzeltin"), false));
}

// The operator's own command (the signtool stand-in, which puts a file osslsigncode signed in place of the
// one it gets) signs the build; the window shows who signed it, read back from the file.
TEST_F(BuilderSigning, ASignedBuildShowsItsSigner) {
    ASSERT_TRUE(CopyFileW(exePath().c_str(), templatePath().c_str(), FALSE));
    loadSample();
    test::TempDir dir;
    app_->fields().setText(kFieldOutPath, dir.file(L"Kaldra.exe"));
    setSigning(true);
    app_->runCommand(kItemSigningSource, static_cast<int>(SigningSource::Command));
    app_->fields().setText(kFieldSignCommand, quoteProgram(test::FakeSigntool::path()) + L" sign {file}");
    EXPECT_TRUE(signingRow().second);
    test::FakeSigntool stand;
    stand.set(L"COPY", test::buildFixture(L"signed\\signed-rfc3161.exe"));

    app_->build().runNow();
    ASSERT_TRUE(app_->build().succeeded()) << test::fsPath(app_->build().lastResult().message);
    const test::SignedFixtures fixtures = test::signedFixtures();
    const SignatureInfo& signature = app_->build().lastResult().signature;
    EXPECT_EQ(signature.subject, fixtures.subject);
    EXPECT_EQ(signature.thumbprint, fixtures.thumbprint);
    EXPECT_EQ(signature.timestamp, TimestampKind::Rfc3161);

    // The result card's lines and the log's last ones are the same three.
    const std::vector<std::wstring> expected = signatureLines(signature);
    app_->showSection(kDerleme);
    std::vector<std::wstring> shown;
    for (const Block& b : app_->layout().blocks)
        if (b.kind == BlockKind::Text &&
            std::find(expected.begin(), expected.end(), b.text) != expected.end())
            shown.push_back(b.text);
    EXPECT_EQ(shown, expected);
    const auto& log = app_->buildLog().lines();
    ASSERT_GE(log.size(), 4u);
    EXPECT_EQ(log[log.size() - 4].text, L"Dijital imza eklendi.");
    for (size_t i = 0; i < 3; ++i)
        EXPECT_EQ(log[log.size() - 3 + i].text, expected[i]);
    EXPECT_EQ(expected[0], L"İmzalayan: " + fixtures.subject);
    snap(L"5_derleme_imzali.png");
}

} // namespace
} // namespace nv::ui::win
