// The session file: its exact text, the restore rules and their order, and every saved key back as written.

#include "core/files.h"
#include "core/paths.h"
#include "core/text.h"
#include "recipe/session_file.h"
#include "tests/support/image_files.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

// A skin folder with two buttons, an address file and settings of its own.
std::wstring writeSkin(const test::TempDir& dir, bool ownValues) {
    const std::wstring folder = dir.file(L"gece");
    test::writeFile(pathJoin(folder, L"skin.xml"), "<skin background_image=\"main\">"
                                                   "<control type=\"button\" id=\"URL_SITE\"/>"
                                                   "<control type=\"button\" id=\"URL_NEW\"/></skin>");
    test::writeFile(pathJoin(folder, L"main.png"), test::makePng(8, 8, 0xFF000000));
    if (ownValues) {
        test::writeFile(pathJoin(folder, L"Fernwick.url.xml"),
                        "<urls remoteConfigPath=\"https://skin.example/c.xml\"/>");
        test::writeFile(pathJoin(folder, L"norvane.ini"),
                        "[patcher]\r\ntitle=Skin\r\nconnections=2\r\nsegment_mb=8\r\n");
    }
    return folder;
}

// Every saved key whose text differs from a fresh window's, and every link with an address, in the file's
// order: what a restore changed.
std::string changes(const Recipe& recipe) {
    const Recipe fresh;
    std::string out;
    auto add = [&](const std::string& line) { out += (out.empty() ? "" : " | ") + line; };
    for (const RecipeKey& key : kRecipeKeys)
        if (key.saved() && key.type != KeyType::Links && keyText(key, recipe) != keyText(key, fresh))
            add(std::string(key.name) + "=" + wideToUtf8(keyText(key, recipe)));
    for (const RecipeLink& link : recipe.links)
        if (!link.address.empty()) add(sessionLinkKey(link.number, link.id) + "=" + wideToUtf8(link.address));
    return out;
}

TEST(SessionFile, TextHasTheFixedOrderAndNoPassword) {
    Recipe r;
    r.skin = L"C:\\skins\\gece.zip";
    r.configUrl = L"https://a.example/c.xml";
    r.settings.title = L"Kaldra Çevrimiçi";
    r.outPath = L"D:\\oyun\\Kaldra.exe";
    r.settings.connections = 6;
    r.settings.segmentMb = 16;
    r.settings.closeOnStart = false;
    r.settings.autoStart = true;
    r.settings.runArgs = L"--lang tr";
    r.signing.enabled = true;
    r.signing.pfxPath = L"C:\\cert.pfx";
    r.signing.source = SigningSource::Store;
    r.signing.thumbprint = L"3a 7f";
    r.signing.machineStore = true;
    r.signing.command = L"jsign --storepass %PIN% {file}";
    r.signing.moreTimestampUrls = {L"http://ts2.example", L"http://ts3.example"};
    // Never written: the password, and what only the command line sets.
    r.signing.pfxPassword = L"gizli";
    r.signing.signtoolPath = L"C:\\sdk\\signtool.exe";
    r.version.fileDescription = L"açıklama";
    r.templatePath = L"C:\\t.exe";
    r.links = {{3, "site", L"https://kaldra.example/"},
               {4, "empty", L""},
               {-1, "URL_X", L"http://x\r\nsign=1"},
               {5, "a=b", L"cut"}};
    EXPECT_EQ(sessionText(r), "; Norvane Olusturucu - son oturum (parola kaydedilmez)\r\n"
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
                              "sign_source=store\r\nsign_thumbprint=3a 7f\r\nsign_machine_store=1\r\n"
                              "sign_dlib=\r\nsign_dmdf=\r\nsign_command=jsign --storepass %PIN% {file}\r\n"
                              "sign_ts_more=http://ts2.example http://ts3.example\r\n"
                              "link.3.site=https://kaldra.example/\r\n"
                              "link.-1.URL_X=http://x\r\n");
}

TEST(SessionFile, RestoreRules) {
    test::TempDir dir;
    const std::wstring skin = writeSkin(dir, false);
    const std::wstring icon = dir.file(L"simge.png");
    test::writeFile(icon, test::makePng(4, 4, 0xFF00FF00));
    const std::string skinLine = "skin=" + wideToUtf8(skin) + "\n";
    const std::string loaded = "skin=" + wideToUtf8(skin);

    const struct {
        const char* what;
        std::string file;
        std::string changes;
        bool skinApplied;
    } cases[] = {
        {"only the comment line", "; Norvane Olusturucu - son oturum (parola kaydedilmez)\r\n", "", false},
        {"whatever the file's order",
         "sign=1\nout_path=D:\\k.exe\nconn=8\n" + skinLine + "icon=" + wideToUtf8(icon) +
             "\nv_version=2.0\nout_name=K.exe\n",
         loaded + " | out_name=K.exe | out_path=D:\\k.exe | icon=" + wideToUtf8(icon) +
             " | conn=8 | v_version=2.0 | sign=1",
         true},
        {"a vanished skin drops what depends on it, not identity, output or signing",
         "skin=" + wideToUtf8(dir.file(L"gone.zip")) +
             "\nconfig_url=x\ntitle=t\nconn=5\nseg=9\nauto_start=1\nrun_args=-a\nlink.0.URL_SITE=s\n"
             "v_company=Ac\nout_path=o\nsign=1\n",
         "out_path=o | v_company=Ac | sign=1", false},
        {"connections 1..8 only; toggles on for exactly 1; sign never switches off",
         skinLine + "conn=12\nclose_on_start=true\nauto_start=1\nallow_error=0\nsign=0\n",
         loaded + " | close_on_start=0 | auto_start=1", true},
        {"a later key wins, a count that is no number leaves the count", skinLine + "conn=8\nconn=x\n",
         loaded, true},
        {"the segment kept to its range; links by number and id",
         skinLine +
             "seg=100\nlink.1.URL_NEW=https://n.example/\nlink.0.URL_NEW=wrong\nlink.1.URL_SITE=wrong\n",
         loaded + " | seg=64 | link.1.URL_NEW=https://n.example/", true},
        {"a segment that is no number is the default", skinLine + "seg=abc\n", loaded, true},
        {"empty or missing icon, empty skin", "icon=\nskin=\nconfig_url=x\n", "", false},
        {"missing icon file", "icon=" + wideToUtf8(dir.file(L"yok.png")) + "\n", "", false},
        {"keys trimmed; values kept with '=' and blanks",
         "\xEF\xBB\xBFv_product=A\n  v_product =B=C \nnonsense\n=x\n", "v_product=B=C ", false},
    };
    for (const auto& c : cases) {
        Recipe recipe;
        SkinWorkspace ws;
        RecipeSessionTarget target(recipe, ws);
        EXPECT_EQ(applySession(parseSessionText(c.file), target), c.skinApplied) << c.what;
        EXPECT_EQ(changes(recipe), c.changes) << c.what;
    }
}

// The skin is loaded before the values that override it, and the output and signing come last.
TEST(SessionFile, RestoresInTheStepsOrder) {
    struct Recording : SessionTarget {
        std::string calls;
        std::vector<ButtonLink> links;
        void note(std::string_view call) { calls += (calls.empty() ? "" : " ") + std::string(call); }
        void restore(const RecipeKey& key, const std::wstring&) override { note(key.name); }
        void setIcon(const std::wstring&) override { note("icon"); }
        void loadSkin(const std::wstring&) override {
            note("skin");
            links.resize(1);
            links[0].id = "B";
        }
        const std::vector<ButtonLink>& buttons() const override { return links; }
        void restoreLink(size_t index, const std::wstring&) override { note("link" + std::to_string(index)); }
    };
    test::TempDir dir;
    const std::wstring picture = dir.file(L"i.png");
    test::writeFile(picture, test::makePng(2, 2, 0xFF000000));
    std::string file = "link.0.B=x\nicon=" + wideToUtf8(picture) + "\nskin=" + wideToUtf8(dir.path()) + "\n";
    for (const RecipeKey& key : kRecipeKeys)
        if (key.saved() && key.name != "icon" && key.name != "skin") file += std::string(key.name) + "=1\n";
    Recording target;
    applySession(parseSessionText(file), target);
    EXPECT_EQ(target.calls, "out_name v_product v_company v_version v_copyright sign_pfx sign_ts sign_source "
                            "sign_thumbprint sign_machine_store sign_dlib sign_dmdf sign_command "
                            "sign_ts_more icon skin "
                            "config_url iframe_url feed_url title conn seg close_on_start auto_start "
                            "allow_error browser_emu run_args link0 out_path sign");
}

// Every saved key, set to something a fresh window does not hold, comes back from the file as it was written.
TEST(SessionFile, EveryKeyComesBackAsWritten) {
    test::TempDir dir;
    Recipe written;
    for (const RecipeKey& key : kRecipeKeys) {
        if (!key.saved()) continue;
        switch (key.type) {
        case KeyType::Text:
            key.text(written) = L"değer " + utf8ToWide(key.name);
            break;
        case KeyType::Count:
            key.count(written) = key.high;
            break;
        case KeyType::Flag:
            key.flag(written) = !key.flag(written);
            break;
        case KeyType::Choice:
            key.setChoice(written, static_cast<int>(key.choices.size()) - 1);
            break;
        case KeyType::List:
            key.list(written) = {L"http://bir.example/", L"http://iki.example/"};
            break;
        case KeyType::Links:
            written.links = {{0, "URL_SITE", L"https://site.example/"},
                             {1, "URL_NEW", L"https://new.example/"}};
            break;
        }
    }
    written.skin = writeSkin(dir, true);
    written.icon = dir.file(L"simge.png");
    test::writeFile(written.icon, test::makePng(4, 4, 0xFF00FF00));

    const std::wstring file = sessionFilePath(dir.file(L"AppData"));
    ASSERT_TRUE(writeSessionFile(file, written));
    SessionMap map;
    ASSERT_TRUE(readSessionFile(file, map));
    Recipe read;
    SkinWorkspace ws;
    RecipeSessionTarget target(read, ws);
    EXPECT_TRUE(applySession(map, target));
    EXPECT_EQ(changes(read), changes(written));
    EXPECT_TRUE(read == written);
    EXPECT_FALSE(writeSessionFile(sessionFilePath(L""), written)) << "no application-data folder, no file";
}

// What the skin supplies stands where the file is silent.
TEST(SessionFile, SkinValuesStandWhenTheSessionLeavesThemOut) {
    test::TempDir dir;
    Recipe recipe;
    SkinWorkspace ws;
    RecipeSessionTarget target(recipe, ws);
    applySession(parseSessionText("skin=" + wideToUtf8(writeSkin(dir, true)) + "\r\n"), target);
    EXPECT_EQ(recipe.configUrl, L"https://skin.example/c.xml");
    EXPECT_EQ(recipe.settings.title, L"Skin");
    EXPECT_EQ(recipe.settings.connections, 2);
    EXPECT_EQ(recipe.settings.segmentMb, 8);
    ASSERT_EQ(recipe.links.size(), 2u);
    EXPECT_EQ(recipe.links[1], (RecipeLink{1, "URL_NEW", L""}));
}

} // namespace
} // namespace nv
