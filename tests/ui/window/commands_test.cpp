// The window's commands in this process, under Wine's display: the file dialogs, the preview patcher started
// with "--preview", icon and certificate, the live preview's refresh events and the session file written and
// restored.

#include "cli/build_plan.h"
#include "core/text.h"
#include "recipe/recipe_keys.h"
#include "tests/support/image_files.h"
#include "tests/ui/window/builder_window.h"

#include <algorithm>
#include <cwchar>

namespace nv::ui::win {
namespace {

std::wstring tempFolderFile(const wchar_t* name) {
    wchar_t temp[MAX_PATH + 1] = {};
    GetTempPathW(MAX_PATH + 1, temp);
    return pathJoin(temp, name);
}

class BuilderCommands : public BuilderWindowTest {};

// What the dialog-closing timer saw of the dialog it cancelled.
struct SeenDialog {
    HWND owner = nullptr;
    std::wstring title;
    std::vector<std::wstring> choices; // the items of its combo boxes (the file types among them)
    bool seen = false;
};
SeenDialog seenDialog;

BOOL CALLBACK collectComboItems(HWND child, LPARAM) {
    wchar_t className[32] = {};
    GetClassNameW(child, className, 32);
    if (lstrcmpiW(className, L"ComboBox") != 0) return TRUE;
    const LRESULT count = SendMessageW(child, CB_GETCOUNT, 0, 0);
    for (LRESULT i = 0; i < count; ++i) {
        std::wstring text(static_cast<size_t>(SendMessageW(child, CB_GETLBTEXTLEN, i, 0)) + 1, L'\0');
        SendMessageW(child, CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(text.data()));
        seenDialog.choices.push_back(text.c_str());
    }
    return TRUE;
}

BOOL CALLBACK cancelDialog(HWND window, LPARAM) {
    wchar_t className[16] = {};
    GetClassNameW(window, className, 16);
    if (!IsWindowVisible(window) || std::wcscmp(className, L"#32770") != 0) return TRUE;
    seenDialog.seen = true;
    seenDialog.owner = GetWindow(window, GW_OWNER);
    wchar_t title[256] = {};
    GetWindowTextW(window, title, 256);
    seenDialog.title = title;
    EnumChildWindows(window, collectComboItems, 0);
    PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
    return FALSE;
}

// Runs on the dialog's own message loop: the first visible dialog of this thread is looked at and cancelled.
void CALLBACK closeDialogTimer(HWND, UINT, UINT_PTR id, DWORD) {
    EnumThreadWindows(GetCurrentThreadId(), cancelDialog, 0);
    if (seenDialog.seen) KillTimer(nullptr, id);
}

TEST_F(BuilderCommands, DialogsAreModalTitledAndCancellingChangesNothing) {
    loadSample();
    app_->fields().setText(kFieldOutPath, L"C:\\oyun\\Kaldra.exe");
    const struct {
        int item;
        const wchar_t* title;
        const wchar_t* type; // offered with "Tüm dosyalar (*.*)"; none for the folder dialog
    } cases[] = {
        {kItemChooseZip, L"Skin .zip dosyası seçin", L"Skin paketi (*.zip)"},
        {kItemChooseFolder, L"Skin klasörünü seçin", nullptr},
        {kItemChooseIcon, L"Simge seçin", L"Simge ve görsel (*.ico;*.png;*.jpg;*.bmp)"},
        {kItemChooseCertificate, L"Kod imzalama sertifikası", L"Sertifika (*.pfx;*.p12)"},
    };
    for (const auto& c : cases) {
        const std::wstring status = app_->status();
        seenDialog = SeenDialog{};
        const UINT_PTR timer = SetTimer(nullptr, 0, 100, closeDialogTimer);
        app_->runCommand(c.item, 0);
        KillTimer(nullptr, timer);
        ASSERT_TRUE(seenDialog.seen) << c.item;
        EXPECT_EQ(seenDialog.title, c.title);
        EXPECT_EQ(seenDialog.owner, app_->hwnd()) << "modal to the main window";
        for (const wchar_t* type : {c.type, L"Tüm dosyalar (*.*)"})
            EXPECT_TRUE(!c.type || std::count(seenDialog.choices.begin(), seenDialog.choices.end(), type))
                << test::fsPath(type);
        EXPECT_EQ(app_->status(), status) << c.item;
        EXPECT_TRUE(app_->skinLoaded());
        EXPECT_EQ(app_->fields().text(kFieldOutPath), L"C:\\oyun\\Kaldra.exe");
        EXPECT_TRUE(app_->fields().text(kFieldPfx).empty());
        EXPECT_FALSE(app_->recipe().signing.enabled);
        EXPECT_FALSE(app_->hasIcon());
    }
}

TEST_F(BuilderCommands, PreviewPatcherStartsWithPreviewAndPutsEverythingBack) {
    const std::wstring preview = tempFolderFile(L"NorvanePreview.exe");
    const std::wstring started = preview + L".args";
    DeleteFileW(preview.c_str());
    DeleteFileW(started.c_str());

    app_->loadSkin(L"Z:\\yok\\skin.zip", false);
    app_->runCommand(kItemPreviewPanel, 0);
    EXPECT_EQ(app_->status(), L"Önce bir skin yükleyin.");
    EXPECT_TRUE(app_->statusWarning());
    loadSample();
    app_->runCommand(kItemPreviewPanel, 0);
    EXPECT_EQ(app_->status(), L"Patcher şablonu yok — build.bat ile derleyin.");
    EXPECT_TRUE(app_->statusWarning());

    ASSERT_TRUE(
        CopyFileW(pathJoin(exeFolder(), L"preview_probe.exe").c_str(), templatePath().c_str(), FALSE));
    setSigning(true); // no certificate: a signed build would fail, the preview is built unsigned
    app_->fields().setText(kFieldOutPath, L"C:\\oyun\\Kaldra.exe");
    const size_t logLines = app_->buildLog().size();
    app_->runCommand(kItemPreviewResult, 0);
    EXPECT_EQ(app_->status(), L"Patcher önizlemesi açıldı (ağ ve disk işlemi yapılmaz).");
    EXPECT_FALSE(app_->statusWarning());
    EXPECT_TRUE(app_->recipe().signing.enabled);
    EXPECT_EQ(app_->fields().text(kFieldOutPath), L"C:\\oyun\\Kaldra.exe");
    EXPECT_EQ(app_->buildLog().size(), logLines) << "a preview logs only its failure";

    // The started process wrote down how it was started.
    Bytes note;
    for (int i = 0; i < 500 && !readFileBytes(started, note, 4096); ++i)
        Sleep(20);
    const std::wstring text(reinterpret_cast<const wchar_t*>(note.data()), note.size() / sizeof(wchar_t));
    const size_t lineEnd = text.find(L'\n');
    ASSERT_NE(lineEnd, std::wstring::npos) << "the preview patcher did not start";
    EXPECT_EQ(text.substr(lineEnd + 1), L"--preview\n");
    const DWORD pid = static_cast<DWORD>(std::stoul(text.substr(0, lineEnd)));

    // It is still open, holding its file: the next preview cannot replace it.
    app_->runCommand(kItemPreviewPanel, 0);
    EXPECT_EQ(app_->status().rfind(L"Önizleme açılamadı: Çıktı dosyası kullanımda", 0), 0u)
        << test::fsPath(app_->status());
    EXPECT_TRUE(app_->statusWarning());
    ASSERT_EQ(app_->buildLog().size(), logLines + 1);
    EXPECT_EQ(app_->buildLog().lines().back().text.rfind(L"Önizleme hatası: ", 0), 0u);
    EXPECT_EQ(app_->buildLog().lines().back().level, 3);

    if (HANDLE process = OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, pid)) {
        TerminateProcess(process, 0);
        WaitForSingleObject(process, 5000);
        CloseHandle(process);
    }
    DeleteFileW(started.c_str());
    DeleteFileW(preview.c_str());
}

TEST_F(BuilderCommands, IconAndCertificate) {
    test::TempDir dir;
    const std::wstring picture = dir.file(L"simge.png");
    const std::wstring broken = dir.file(L"bozuk.png");
    test::writeFile(picture, test::makePng(40, 20, 0xFF2080C0));
    test::writeFile(broken, "PNG değil");

    app_->setIcon(picture, false);
    EXPECT_EQ(app_->status(), L"Simge ayarlandı: simge.png");
    EXPECT_TRUE(app_->hasIcon());
    app_->setIcon(broken, false);
    EXPECT_EQ(app_->status().rfind(L"Simge dönüştürülemedi: ", 0), 0u);
    EXPECT_TRUE(app_->statusWarning());
    EXPECT_TRUE(app_->hasIcon()) << "a failed choice keeps the icon";
    app_->runCommand(kItemRemoveIcon, 0);
    EXPECT_EQ(app_->status(), L"Simge kaldırıldı — şablonun simgesi kullanılacak.");
    EXPECT_FALSE(app_->hasIcon());

    // A certificate chosen with signing off switches signing on and opens its fields.
    app_->useCertificate(L"C:\\sertifika.pfx");
    EXPECT_TRUE(app_->recipe().signing.enabled);
    EXPECT_EQ(app_->fields().text(kFieldPfx), L"C:\\sertifika.pfx");
    EXPECT_TRUE(IsWindowEnabled(app_->fields().window(kFieldPassword)));
    app_->useCertificate(L"C:\\ikinci.pfx");
    EXPECT_TRUE(app_->recipe().signing.enabled) << "a second certificate does not flip signing off";
}

TEST_F(BuilderCommands, ThePreviewFollowsTheFieldsThatShapeIt) {
    loadSample();
    EXPECT_TRUE(app_->preview().shown());
    for (int field : {kFieldRunArgs, kFieldConfigUrl, kFieldLinkFirst}) {
        app_->preview().setPixels(0, 0, {});
        leaveField(field);
        EXPECT_EQ(app_->preview().shown(), refreshesPreview(field)) << field;
    }
}

// Every saved key set the way the operator sets it in the window, the session written, and
// `nvbuild build --session` reading it back: the same build inputs and the same package, byte for byte.
TEST_F(BuilderCommands, TheWindowsSessionBuildsTheSameWithNvbuild) {
    test::TempDir dir;
    const std::wstring file = dir.file(L"olusturucu.ini");
    const std::wstring picture = dir.file(L"simge.png");
    test::writeFile(picture, test::makePng(24, 24, 0xFF3060A0));
    app_->session().setPath(L"");
    loadSample();
    for (const RecipeKey& key : kRecipeKeys) {
        if (!key.saved()) continue;
        const std::string name(key.name);
        if (key.field != 0) {
            app_->fields().setText(key.field, key.name == "seg"        ? L"17"
                                              : key.name == "out_path" ? dir.file(L"Oturum.exe")
                                                                       : L"pencere " + utf8ToWide(name));
        } else if (key.name == "conn") {
            app_->runCommand(kItemConnectionChip, 7);
        } else if (const auto toggle = std::find_if(behaviourToggles().begin(), behaviourToggles().end(),
                                                    [&](const ToggleSpec& t) { return t.key == key.name; });
                   toggle != behaviourToggles().end()) {
            app_->runCommand(toggle->item, 0);
        } else if (key.name == "sign") {
            setSigning(true);
        } else if (key.name == "sign_source") {
            app_->runCommand(kItemSigningSource, static_cast<int>(SigningSource::Command));
        } else if (key.name == "sign_machine_store") {
            app_->runCommand(kItemToggleMachineStore, 0);
        } else if (key.name == "icon") {
            app_->setIcon(picture, true);
        } else if (key.name == "link") {
            app_->fields().setText(kFieldLinkFirst + 2, L"https://pencere.example/" + utf8ToWide(name));
        } else {
            EXPECT_EQ(key.name, "skin") << "no way to set " << name << " in the window";
        }
    }
    const Recipe set = app_->recipe();
    EXPECT_EQ(set.settings.connections, 7);
    EXPECT_EQ(set.settings.segmentMb, 17);
    EXPECT_EQ(set.signing.source, SigningSource::Command);
    EXPECT_TRUE(set.signing.machineStore);
    EXPECT_EQ(set.signing.moreTimestampUrls, (std::vector<std::wstring>{L"pencere", L"sign_ts_more"}));
    app_->session().setPath(file);
    app_->session().save();
    app_->session().setPath(L"");

    Invocation invocation(kBuildCommand);
    invocation.options = {{L"--session", file, L""}};
    struct : Console {
        std::wstring text;
        void out(std::wstring_view t) override { text += t; }
        void err(std::wstring_view t) override { text += t; }
    } console;
    BuildPlan plan;
    ASSERT_EQ(planBuild(invocation, console, plan), kExitOk) << test::fsPath(console.text);

    const BuildInputs window = app_->buildInputs();
    EXPECT_EQ(plan.inputs.outputPath, window.outputPath);
    EXPECT_EQ(plan.inputs.iconBytes, window.iconBytes);
    EXPECT_EQ(plan.inputs.version, window.version);
    SigningOptions signing = window.signing;
    signing.pfxPassword.clear();  // never written
    signing.signtoolPath.clear(); // both look for it when they sign
    EXPECT_EQ(plan.inputs.signing, signing);
    Bytes fromWindow, fromFile;
    LoadMessages messages;
    ASSERT_TRUE(app_->workingSkin().buildSkinPackage(fromWindow, messages)) << test::fsPath(messages.error);
    ASSERT_TRUE(plan.workspace.buildSkinPackage(fromFile, messages)) << test::fsPath(messages.error);
    EXPECT_EQ(fromFile, fromWindow);
    setSigning(false);
    app_->runCommand(kItemSigningSource, static_cast<int>(SigningSource::PfxFile));
    app_->runCommand(kItemToggleMachineStore, 0);
}

TEST_F(BuilderCommands, SessionWrittenWithoutThePasswordAndRestored) {
    test::TempDir dir;
    const std::wstring file = dir.file(L"Norvane\\olusturucu.ini");
    app_->session().setPath(file);
    loadSample();
    app_->fields().setText(kFieldPassword, L"gizli-parola-42");
    app_->fields().setText(kFieldProduct, L"Ürün A");
    leaveField(kFieldProduct);
    std::string text = test::textOf(test::readFile(file));
    EXPECT_EQ(text.rfind("; Norvane Olusturucu - son oturum (parola kaydedilmez)\r\nskin=", 0), 0u);
    EXPECT_NE(text.find("\r\nv_product=\xC3\x9Cr\xC3\xBCn A\r\n"), std::string::npos);
    EXPECT_NE(text.find("\r\nlink.3.URL_SITE=https://www.kaldra.example/\r\n"), std::string::npos);
    EXPECT_EQ(text.find("gizli-parola-42"), std::string::npos);
    app_->runCommand(kItemConnectionChip, 5);
    EXPECT_NE(test::textOf(test::readFile(file)).find("\r\nconn=5\r\n"), std::string::npos);

    const std::string session =
        "; Norvane Olusturucu - son oturum (parola kaydedilmez)\r\nskin=" + wideToUtf8(samplePath()) +
        "\r\nconfig_url=https://oturum.example/config.xml\r\n" +
        "link.3.URL_SITE=https://site.oturum.example/\r\nsign=1\r\n";
    // Every value's way into the fields is the session's end-to-end case; here what the window adds.
    test::writeFile(file, session);
    app_->session().restore();
    EXPECT_EQ(app_->fields().text(kFieldConfigUrl), L"https://oturum.example/config.xml");
    EXPECT_EQ(app_->fields().text(kFieldLinkFirst + 1), L"https://site.oturum.example/");
    EXPECT_TRUE(app_->recipe().signing.enabled);
    EXPECT_TRUE(IsWindowEnabled(app_->fields().window(kFieldPassword)));
    EXPECT_EQ(app_->status(), L"Son oturum geri yüklendi — gece-mavisi");
    EXPECT_TRUE(app_->preview().shown());
    EXPECT_EQ(test::textOf(test::readFile(file)), session) << "restoring writes nothing";

    // The window's accepted close writes the session, as the last thing this window does; the field that has
    // the focus then goes down with the window and must not empty the file.
    DeleteFileW(file.c_str());
    app_->runCommand(kItemSection, kBaglantilar);
    SetFocus(app_->fields().window(kFieldConfigUrl));
    ASSERT_EQ(GetFocus(), app_->fields().window(kFieldConfigUrl));
    SendMessageW(app_->hwnd(), WM_CLOSE, 0, 0);
    EXPECT_FALSE(IsWindow(app_->hwnd()));
    text = test::textOf(test::readFile(file));
    EXPECT_NE(text.find("\r\nconfig_url=https://oturum.example/config.xml\r\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\r\nlink.3.URL_SITE=https://site.oturum.example/\r\n"), std::string::npos);
}

} // namespace
} // namespace nv::ui::win
