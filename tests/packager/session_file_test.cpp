// The session file: its exact text, and the restore rules in their order.

#include "packager/session_file.h"
#include "core/files.h"
#include "core/paths.h"
#include "core/text.h"
#include "tests/support/image_files.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

// Writes down every call in the order it came, so that the tests see the rules and their order.
class RecordingTarget : public SessionTarget {
public:
    std::vector<std::string> calls;

    void setText(std::string_view key, const std::wstring& text) override {
        calls.push_back(std::string(key) + "=" + wideToUtf8(text));
    }
    void setIcon(const std::wstring&) override { calls.push_back("icon"); }
    void loadSkin(const std::wstring&) override {
        calls.push_back("skin");
        buttons_.resize(2);
        buttons_[0].id = "URL_SITE";
        buttons_[1].id = "URL_NEW";
    }
    const std::vector<ButtonLink>& buttons() const override { return buttons_; }
    void setLink(size_t index, const std::wstring& address) override {
        calls.push_back("link " + std::to_string(index) + "=" + wideToUtf8(address));
    }
    void setConnections(int count) override { calls.push_back("conn " + std::to_string(count)); }
    void setToggle(std::string_view key, bool on) override {
        calls.push_back(std::string(key) + (on ? " on" : " off"));
    }
    void switchSigningOn() override { calls.push_back("sign on"); }

private:
    std::vector<ButtonLink> buttons_;
};

std::string joined(const std::vector<std::string>& calls) {
    std::string out;
    for (const std::string& call : calls)
        out += (out.empty() ? "" : " | ") + call;
    return out;
}

TEST(SessionFile, TextHasTheFixedOrderAndNoPassword) {
    SessionValues v;
    v.skin = L"C:\\skins\\gece.zip";
    v.configUrl = L"https://a.example/c.xml";
    v.title = L"Kaldra Çevrimiçi";
    v.outPath = L"D:\\oyun\\Kaldra.exe";
    v.connections = 6;
    v.segmentMb = 16;
    v.closeOnStart = false;
    v.autoStart = true;
    v.runArgs = L"--lang tr";
    v.sign = true;
    v.signPfx = L"C:\\cert.pfx";
    v.links = {{3, "site", L"https://kaldra.example/"}, {-1, "URL_X", L"http://x\r\nsign=1"}};
    EXPECT_EQ(sessionText(v), "; Norvane Olusturucu - son oturum (parola kaydedilmez)\r\n"
                              "skin=C:\\skins\\gece.zip\r\n"
                              "config_url=https://a.example/c.xml\r\n"
                              "iframe_url=\r\nfeed_url=\r\n"
                              "title=Kaldra \xC3\x87"
                              "evrimi\xC3\xA7i\r\n"
                              "out_name=Kaldra.exe\r\n"
                              "out_path=D:\\oyun\\Kaldra.exe\r\n"
                              "icon=\r\nconn=6\r\nseg=16\r\n"
                              "close_on_start=0\r\nauto_start=1\r\nallow_error=0\r\nbrowser_emu=1\r\n"
                              "run_args=--lang tr\r\n"
                              "v_product=\r\nv_company=\r\nv_version=1.0.0.0\r\nv_copyright=\r\n"
                              "sign=1\r\nsign_pfx=C:\\cert.pfx\r\nsign_ts=http://timestamp.digicert.com\r\n"
                              "link.3.site=https://kaldra.example/\r\n"
                              "link.-1.URL_X=http://x\r\n");
}

TEST(SessionFile, RestoreRules) {
    test::TempDir dir;
    const std::wstring skin = dir.file(L"skin");
    const std::wstring icon = dir.file(L"simge.png");
    ASSERT_TRUE(createFolders(skin));
    test::writeFile(icon, test::makePng(4, 4, 0xFF00FF00));
    const std::string skinLine = "skin=" + wideToUtf8(skin) + "\n";
    const std::string iconLine = "icon=" + wideToUtf8(icon) + "\n";

    const struct {
        const char* what;
        std::string file;
        std::string calls;
        bool skinApplied;
    } cases[] = {
        {"only the comment line", "; Norvane Olusturucu - son oturum (parola kaydedilmez)\r\n", "", false},
        {"restored in the fixed order, whatever the file's order",
         "sign=1\nout_path=D:\\k.exe\nconn=8\n" + skinLine + iconLine + "v_version=2.0\nout_name=K.exe\n",
         "out_name=K.exe | v_version=2.0 | icon | skin | conn 8 | out_path=D:\\k.exe | sign on", true},
        {"a vanished skin drops what depends on it, not identity, output or signing",
         "skin=" + wideToUtf8(dir.file(L"gone.zip")) +
             "\nconfig_url=x\ntitle=t\nconn=5\nseg=9\nauto_start=1\nrun_args=-a\nlink.0.URL_SITE=s\n"
             "v_company=Ac\nout_path=o\nsign=1\n",
         "v_company=Ac | out_path=o | sign on", false},
        {"connections 1..8 only; toggles on for exactly 1; sign never switches off",
         skinLine + "conn=12\nclose_on_start=true\nauto_start=1\nallow_error=0\nsign=0\n",
         "skin | close_on_start off | auto_start on | allow_error off", true},
        {"a count that is no number leaves the count", skinLine + "conn=8\nconn=x\n", "skin", true},
        {"segment text as written; links by number and name",
         skinLine +
             "seg=abc\nlink.1.URL_NEW=https://n.example/\nlink.0.URL_NEW=wrong\nlink.1.URL_SITE=wrong\n",
         "skin | seg=abc | link 1=https://n.example/", true},
        {"empty or missing icon, empty skin", "icon=\nskin=\nconfig_url=x\n", "", false},
        {"missing icon file", "icon=" + wideToUtf8(dir.file(L"yok.png")) + "\n", "", false},
        {"later keys win; keys trimmed; values kept with '=' and blanks",
         "\xEF\xBB\xBFv_product=A\n  v_product =B=C \nnonsense\n=x\n", "v_product=B=C ", false},
    };
    for (const auto& c : cases) {
        RecordingTarget target;
        EXPECT_EQ(applySession(parseSessionText(c.file), target), c.skinApplied) << c.what;
        EXPECT_EQ(joined(target.calls), c.calls) << c.what;
    }
}

// A skin folder with its own settings and an address file.
std::wstring writeSkin(const test::TempDir& dir) {
    const std::wstring folder = dir.file(L"gece");
    test::writeFile(pathJoin(folder, L"skin.xml"), "<skin/>");
    test::writeFile(pathJoin(folder, L"Fernwick.url.xml"),
                    "<urls remoteConfigPath=\"https://skin.example/c.xml\"/>");
    test::writeFile(pathJoin(folder, L"norvane.ini"),
                    "[patcher]\r\ntitle=Skin\r\nconnections=2\r\nsegment_mb=8\r\n");
    test::writeFile(pathJoin(folder, L"main.png"), test::makePng(8, 8, 0xFF000000));
    return folder;
}

// How a file's values come back through the builder's own target is the session's end-to-end case (the
// builder's patcher against nvbuild build --session); here what the skin supplies when the file is silent.
TEST(SessionFile, SkinValuesStandWhenTheSessionLeavesThemOut) {
    test::TempDir dir;
    SessionValues values;
    SkinWorkspace ws;
    SessionValuesTarget target(values, ws);
    applySession(parseSessionText("skin=" + wideToUtf8(writeSkin(dir)) + "\r\n"), target);
    EXPECT_EQ(values.configUrl, L"https://skin.example/c.xml");
    EXPECT_EQ(values.title, L"Skin");
    EXPECT_EQ(values.connections, 2);
    EXPECT_EQ(values.segmentMb, 8);
    EXPECT_FALSE(writeSessionFile(sessionFilePath(L""), values)) << "no application-data folder, no file";
}

} // namespace
} // namespace nv
