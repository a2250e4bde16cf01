// The built patcher template, run as a program under test: a skin written into a copy of it with the plain
// resource-update calls, then its snapshot compared with nvbuild render of the same skin.

#include "core/files.h"
#include "core/paths.h"
#include "core/text.h"
#include "core/win32/scoped_win.h"
#include "readers/image.h"
#include "readers/skin_files.h"
#include "skin/package.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace nv {
namespace {

// The template and nvbuild are copied beside this test program when it is built.
std::wstring besideTests(const wchar_t* name) {
    return pathJoin(exeFolder(), name);
}

std::wstring sampleSkin() {
    return pathJoin(test::testDataDir(), L"gece-mavisi");
}

SkinFileSet sampleFiles() {
    SkinFileSet files;
    EXPECT_TRUE(addSkinFolder(files, sampleSkin()));
    return files;
}

// A copy of the template carrying the package as RT_RCDATA 900, language 0 (as a build stores it).
std::wstring templateWith(const test::TempDir& dir, const Bytes& package) {
    const std::wstring copy = dir.file(L"Kaldra.exe");
    EXPECT_TRUE(CopyFileW(besideTests(L"Norvane.Template.exe").c_str(), copy.c_str(), FALSE));
    HANDLE update = BeginUpdateResourceW(copy.c_str(), FALSE);
    EXPECT_NE(update, nullptr);
    EXPECT_TRUE(UpdateResourceW(update, RT_RCDATA, MAKEINTRESOURCEW(SKIN_RESOURCE_ID), 0,
                                const_cast<uint8_t*>(package.data()), DWORD(package.size())));
    EXPECT_TRUE(EndUpdateResourceW(update, FALSE));
    return copy;
}

// A started program, ended (if still running) when the scope ends.
class Running {
public:
    Running(const std::wstring& program, const std::wstring& arguments) {
        std::wstring commandLine = L"\"" + program + L"\" " + arguments;
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION process{};
        if (CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                           &startup, &process)) {
            CloseHandle(process.hThread);
            handle_.reset(process.hProcess);
            id_ = process.dwProcessId;
        }
    }
    ~Running() {
        if (handle_.valid() && WaitForSingleObject(handle_.get(), 0) == WAIT_TIMEOUT)
            TerminateProcess(handle_.get(), 99);
    }
    // The exit code, or -1 when it did not start or end in time.
    int wait(DWORD milliseconds = 60000) {
        if (!handle_.valid() || WaitForSingleObject(handle_.get(), milliseconds) != WAIT_OBJECT_0) return -1;
        DWORD code = 0;
        GetExitCodeProcess(handle_.get(), &code);
        return int(code);
    }
    DWORD id() const { return id_; }
    // Its visible top-level window of the given class, once it shows one.
    HWND window(const wchar_t* windowClass) {
        for (int i = 0; i < 300; ++i) {
            for (HWND w = FindWindowExW(nullptr, nullptr, windowClass, nullptr); w;
                 w = FindWindowExW(nullptr, w, windowClass, nullptr)) {
                DWORD owner = 0;
                GetWindowThreadProcessId(w, &owner);
                if (owner == id_ && IsWindowVisible(w)) return w;
            }
            Sleep(50);
        }
        return nullptr;
    }

private:
    win::ScopedHandle handle_;
    DWORD id_ = 0;
};

// The caption and the texts of a message box that the process shows, joined by line breaks; the box is then
// dismissed. Empty when none appears.
std::wstring dismissMessageBox(Running& process) {
    HWND box = process.window(L"#32770");
    if (!box) return {};
    wchar_t text[1024] = {};
    GetWindowTextW(box, text, 1024);
    std::wstring all = text;
    for (HWND child = FindWindowExW(box, nullptr, L"Static", nullptr); child;
         child = FindWindowExW(box, child, L"Static", nullptr)) {
        text[0] = 0;
        GetWindowTextW(child, text, 1024);
        if (text[0]) all += L"\n" + std::wstring(text);
    }
    PostMessageW(box, WM_COMMAND, IDOK, 0);
    return all;
}

int run(const std::wstring& program, const std::wstring& arguments) {
    return Running(program, arguments).wait();
}

// A left click at a window point, as the mouse would deliver it.
void click(HWND window, int x, int y) {
    const LPARAM at = MAKELPARAM(x, y);
    PostMessageW(window, WM_MOUSEMOVE, 0, at);
    PostMessageW(window, WM_LBUTTONDOWN, MK_LBUTTON, at);
    PostMessageW(window, WM_LBUTTONUP, 0, at);
}

std::wstring quoted(const std::wstring& s) {
    return L"\"" + s + L"\"";
}

DecodedImage decodedFile(const std::wstring& path) {
    const Bytes bytes = test::readFile(path);
    DecodedImage image;
    EXPECT_TRUE(decodeImage(bytes.data(), bytes.size(), image));
    return image;
}

// Pixels that differ between two pictures of one size inside [x0, x1) x [y0, y1).
int differing(const DecodedImage& a, const DecodedImage& b, int x0, int y0, int x1, int y1) {
    int n = 0;
    for (int y = y0; y < y1; ++y)
        for (int x = x0; x < x1; ++x)
            n += a.at(x, y) != b.at(x, y);
    return n;
}

TEST(Template, PreviewSnapshotIsTheSamePictureAsNvbuildRender) {
    test::TempDir dir;
    const std::wstring patcher = templateWith(dir, writeSkinPackage(sampleFiles()));
    const std::wstring snap = dir.file(L"snap.png"), rendered = dir.file(L"render.png"),
                       live = dir.file(L"live.png");

    ASSERT_EQ(run(patcher, L"--preview --snap " + quoted(snap)), 0);
    ASSERT_EQ(run(besideTests(L"nvbuild.exe"), L"render " + quoted(sampleSkin()) + L" " + quoted(rendered)),
              0);
    EXPECT_EQ(test::readFile(snap), test::readFile(rendered)); // one renderer, one picture, one encoder

    // Outside preview nothing pretends to download: the gauges stay empty and the status says why.
    ASSERT_EQ(run(patcher, L"--snap " + quoted(live)), 0);
    const DecodedImage preview = decodedFile(snap), plain = decodedFile(live);
    ASSERT_TRUE(preview.width == 920 && preview.height == 580 && plain.width == 920 && plain.height == 580);
    EXPECT_GT(differing(preview, plain, 34, 496, 646, 510), 1000); // PROGRESS_MAIN
    EXPECT_GT(differing(preview, plain, 34, 474, 374, 492), 50);   // TEXT_MAIN
    // No feed has arrived: the lamp and the status say so, the news area has no headlines.
    EXPECT_GT(differing(preview, plain, 43, 237, 597, 433), 2000); // the sample's headlines, NV_NEWS
    EXPECT_GT(differing(preview, plain, 642, 246, 660, 264), 100); // the lamp: online, no data
    EXPECT_GT(differing(preview, plain, 666, 245, 874, 264), 100); // FEED_STATUS
    EXPECT_EQ(differing(preview, plain, 0, 0, 920, 200), 0);       // the header is the same
}

// The sample whose start button starts "oyun.exe" beside the patcher: a copy of nvbuild told by the run
// arguments to render the sample into its working folder, as started.png. Its site button's link is a script
// that leaves opened.txt.
// The sample without its server address: such a patcher updates nothing, so its start button is usable at
// once (the updating patcher is tested against real servers in tests/update/patcher_e2e.py).
SkinFileSet sampleWithoutUpdates() {
    SkinFileSet files = sampleFiles();
    std::string address = test::textOf(*files.findFile("fernwick.url.xml"));
    const std::string remote = "https://patch.kaldra.example/launcher/config.xml";
    address.replace(address.find(remote), remote.size(), "");
    files.putFile("fernwick.url.xml", test::bytesOf(address));
    return files;
}

Bytes gameSkin(const test::TempDir& dir) {
    SkinFileSet files = sampleWithoutUpdates();
    const std::string args = "render \"" + test::fsPath(sampleSkin()).string() + "\" started.png";
    files.putFile("norvane.ini",
                  test::bytesOf("[patcher]\r\ntitle=Kaldra Online\r\nclose_on_start=1\r\nrun_args=" + args));
    std::string skinXml = test::textOf(*files.findFile("skin.xml"));
    skinXml.replace(skinXml.find("KaldraOyun.exe"), 14, "oyun.exe");
    const std::string site = "https://www.kaldra.example/";
    skinXml.replace(skinXml.find(site), site.size(), test::fsPath(dir.file(L"site.bat")).string());
    test::writeFile(dir.file(L"site.bat"),
                    "@echo opened> \"" + test::fsPath(dir.file(L"opened.txt")).string() + "\"\r\n");
    files.putFile("skin.xml", test::bytesOf(skinXml));
    EXPECT_TRUE(CopyFileW(besideTests(L"nvbuild.exe").c_str(), dir.file(L"oyun.exe").c_str(), FALSE));
    return writeSkinPackage(files);
}

TEST(Template, PreviewOpensABorderlessWindowOfTheSkinsSizeThatStartsNothingOpensLinksAndItsButtonsClose) {
    test::TempDir dir;
    Running patcher(templateWith(dir, gameSkin(dir)), L"--preview");
    HWND window = patcher.window(L"NV_Patcher");
    ASSERT_NE(window, nullptr);
    RECT r;
    GetWindowRect(window, &r);
    EXPECT_EQ(r.right - r.left, 920);
    EXPECT_EQ(r.bottom - r.top, 580);
    EXPECT_EQ(GetWindowLongW(window, GWL_STYLE) & (WS_CAPTION | WS_THICKFRAME), 0);
    EXPECT_NE(GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_LAYERED, 0); // the sample's margin is transparent
    wchar_t title[200] = {};
    GetWindowTextW(window, title, 200);
    EXPECT_STREQ(title, L"Kaldra Online — Önizleme");

    click(window, 700, 500); // BTN_START: a preview never starts anything
    click(window, 700, 311); // URL_SITE: but links open, the operator checks them there
    for (int i = 0; i < 200 && !fileExists(dir.file(L"opened.txt")); ++i)
        Sleep(50);
    EXPECT_TRUE(fileExists(dir.file(L"opened.txt")));
    EXPECT_FALSE(fileExists(dir.file(L"started.png")));
    click(window, 845, 28); // BTN_MINIMIZE
    for (int i = 0; i < 100 && !IsIconic(window); ++i)
        Sleep(20);
    EXPECT_TRUE(IsIconic(window));
    ShowWindow(window, SW_RESTORE);
    click(window, 600, 520); // not a control: nothing happens
    click(window, 878, 26);  // BTN_CLOSE
    EXPECT_EQ(patcher.wait(20000), 0);
}

TEST(Template, TheStartButtonStartsTheGameBesideThePatcherWithItsArguments) {
    test::TempDir dir;
    Running patcher(templateWith(dir, gameSkin(dir)), L"");
    HWND window = patcher.window(L"NV_Patcher");
    ASSERT_NE(window, nullptr);
    click(window, 700, 500);
    EXPECT_EQ(patcher.wait(20000), 0); // close_on_start: the patcher goes once the game runs
    for (int i = 0; i < 200 && !fileExists(dir.file(L"started.png")); ++i)
        Sleep(50);
    EXPECT_TRUE(fileExists(dir.file(L"started.png")));
}

// A package that does not read is the embedded skin reader's case; to the patcher it is no skin.
TEST(Template, WithoutASkinASnapshotExitsWithOneAndWritesNothing) {
    test::TempDir dir;
    const std::wstring snap = dir.file(L"snap.png");
    EXPECT_EQ(run(besideTests(L"Norvane.Template.exe"), L"--preview --snap " + quoted(snap)), 1);
    EXPECT_FALSE(fileExists(snap));
}

// Problems that stop the patcher are told in a message box: no skin (the program then exits with 1), and a
// game that does not start (the patcher stays open).
TEST(Template, ReportsWhatStopsItInAMessageBox) {
    test::TempDir dir;
    {
        Running bare(besideTests(L"Norvane.Template.exe"), L"");
        const std::wstring text = dismissMessageBox(bare);
        EXPECT_NE(text.find(L"Hata\nDüzenleme mevcut değil.\nGomulu skin yok."), std::wstring::npos)
            << wideToUtf8(text);
        EXPECT_EQ(bare.wait(20000), 1);
    }
    // The start button's game is not there.
    SkinFileSet files = sampleWithoutUpdates();
    std::string skinXml = test::textOf(*files.findFile("skin.xml"));
    skinXml.replace(skinXml.find("KaldraOyun.exe"), 14, "yok.exe");
    files.putFile("skin.xml", test::bytesOf(skinXml));
    Running patcher(templateWith(dir, writeSkinPackage(files)), L"");
    HWND window = patcher.window(L"NV_Patcher");
    ASSERT_NE(window, nullptr);
    click(window, 700, 500); // BTN_START
    const std::wstring text = dismissMessageBox(patcher);
    EXPECT_NE(text.find(L"Oyun dosyası bulunamadı: "), std::wstring::npos) << wideToUtf8(text);
    EXPECT_NE(text.find(dir.file(L"yok.exe")), std::wstring::npos) << wideToUtf8(text);
    EXPECT_EQ(patcher.wait(300), -1); // still open
}

TEST(Template, CarriesManifestAndVersionButNoSkin) {
    win::ScopedModule module(LoadLibraryExW(besideTests(L"Norvane.Template.exe").c_str(), nullptr,
                                            LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
    ASSERT_NE(module.get(), nullptr);
    EXPECT_EQ(FindResourceW(module.get(), MAKEINTRESOURCEW(SKIN_RESOURCE_ID), RT_RCDATA), nullptr);
    EXPECT_NE(FindResourceW(module.get(), MAKEINTRESOURCEW(1), RT_VERSION), nullptr);

    HRSRC manifest = FindResourceW(module.get(), MAKEINTRESOURCEW(1), RT_MANIFEST);
    ASSERT_NE(manifest, nullptr);
    const std::string text(static_cast<const char*>(LockResource(LoadResource(module.get(), manifest))),
                           SizeofResource(module.get(), manifest));
    for (const char* needed : {"asInvoker", "PerMonitorV2", "Microsoft.Windows.Common-Controls"})
        EXPECT_NE(text.find(needed), std::string::npos) << needed;
}

} // namespace
} // namespace nv
