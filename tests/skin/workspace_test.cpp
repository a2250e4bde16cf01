#include "core/paths.h"
#include "core/text.h"
#include "readers/zip_reader.h"
#include "skin/workspace.h"
#include "tests/support/image_files.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

// Comments, odd spacing, attribute order and CRLF line ends: composition must keep every byte it does not
// edit.
const char* kSkinXml =
    "<?xml version=\"1.0\"?>\r\n"
    "<!-- Gece Mavisi -->\r\n"
    "<skin   background_image = 'main' feed_refresh=\"30\">\r\n"
    "  <control type=\"button\" id=\"BTN_START\" image=\"start.png\" exec_path=\"Kaldra.exe\"/>\r\n"
    "  <control id=\"URL_SITE\"  type=\"button\" link_url=\"https://kaldra.example/\" "
    "image=\"site.png\"/>\r\n"
    "  <control type=\"button\" id=\"URL_NEW\" link_url=\"LAUNCHER_NEW_URL\" image=\"new.png\"/>\r\n"
    "  <control type=\"button\" id=\"URL_SUPPORT\" link_url=\"url_support\" image=\"help.png\"/>\r\n"
    "  <control type=\"iframe\" id=\"NEWS\" w=\"10\" h=\"10\"/>\r\n"
    "  <control type=\"text\" id=\"FEED_STATUS\" text=\"?\"/>\r\n"
    "</skin>\r\n";

const char* kAddressXml =
    "<?xml version=\"1.0\"?>\r\n<urls languagePath=\"Fernwick.locale.xml\"\r\n"
    "      remoteConfigPath=\"https://old.example/cfg.xml\"  localConfigPath=\"k.xml\"/>\r\n";

const char* kLocaleXml = "<torrent_locale>\r\n"
                         "\t<!-- addresses -->\r\n"
                         "\t<string key=\"launcher_iframe\">https://old.example/news</string>\r\n"
                         "\t<string key=\"URL_SUPPORT\">https://old.example/help</string>\r\n"
                         "</torrent_locale>\r\n";

SkinFileSet sampleFiles() {
    SkinFileSet set;
    set.putFile("skin.xml", test::bytesOf(kSkinXml));
    set.putFile("Fernwick.url.xml", test::bytesOf(kAddressXml));
    set.putFile("Fernwick.locale.xml", test::bytesOf(kLocaleXml));
    set.putFile("main.png", test::makePng(64, 48, 0xFF203040));
    for (const char* button : {"start_up.png", "site_up.png", "new_up.png", "help_up.png"})
        set.putFile(button, test::makePng(20, 10, 0xFF808080));
    set.putFile("norvane.ini", test::bytesOf("[patcher]\r\ntitle=Kaldra\r\nconnections=6\r\n"));
    return set;
}

SkinWorkspace loadedWorkspace(const SkinFileSet& files = sampleFiles()) {
    SkinWorkspace ws;
    std::wstring message;
    EXPECT_TRUE(ws.loadSkinSet(files, L"test", message)) << test::fsPath(message).string();
    return ws;
}

SkinFileSet compose(const SkinWorkspace& ws) {
    SkinFileSet out;
    std::wstring message;
    EXPECT_TRUE(ws.composeSkinFiles(out, message));
    return out;
}

std::string fileText(const SkinFileSet& set, const char* name) {
    const Bytes* bytes = set.findFile(name);
    return bytes ? test::textOf(*bytes) : "<missing>";
}

const ButtonLink* linkOf(const SkinWorkspace& ws, std::string_view id) {
    for (const ButtonLink& link : ws.buttonLinks)
        if (link.id == id) return &link;
    return nullptr;
}

// text with one occurrence of from replaced by to (which must exist).
std::string replaced(std::string text, std::string_view from, std::string_view to) {
    size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    if (at != std::string::npos) text.replace(at, from.size(), to);
    return text;
}

TEST(SkinWorkspace, ImportFillsTheEditableValues) {
    SkinWorkspace ws = loadedWorkspace();
    EXPECT_EQ(ws.configUrl, L"https://old.example/cfg.xml");
    EXPECT_EQ(ws.iframeUrl, L"https://old.example/news") << "under a key in another case";
    EXPECT_EQ(ws.settings.title, L"Kaldra");

    ASSERT_EQ(ws.buttonLinks.size(), 4u) << "buttons only; the iframe is the news frame";
    const ButtonLink* support = linkOf(ws, "URL_SUPPORT");
    ASSERT_NE(support, nullptr);
    EXPECT_EQ(support->importedLink, L"https://old.example/help");
    EXPECT_EQ(support->localeKey, "URL_SUPPORT");
    const ButtonLink* newPage = linkOf(ws, "URL_NEW");
    ASSERT_NE(newPage, nullptr);
    EXPECT_EQ(newPage->localeKey, "LAUNCHER_NEW_URL") << "a built-in key counts as a key";
    EXPECT_EQ(newPage->importedLink, L"");
}

TEST(SkinWorkspace, EditsChangeOnlyTheValuesConcerned) {
    SkinWorkspace ws = loadedWorkspace();
    ws.configUrl = L"https://new.example/cfg?a=1&b=\"2\"";
    ws.iframeUrl = L"https://new.example/news";
    ws.feedUrl = L"https://new.example/feed";
    ASSERT_TRUE(ws.setButtonLink("url_site", L"https://site.example/?x=1&y=\"2\""));
    ASSERT_TRUE(ws.setButtonLink("URL_SUPPORT", L"https://new.example/help"));
    ASSERT_TRUE(ws.setButtonLink("BTN_START", L"https://start.example/"));
    EXPECT_FALSE(ws.setButtonLink("NOPE", L"x"));
    const SkinFileSet before = ws.files;
    SkinFileSet out = compose(ws);

    std::string skin = replaced(kSkinXml, "<skin   background_image",
                                "<skin feed_url=\"https://new.example/feed\"   background_image");
    skin = replaced(skin, "https://kaldra.example/", "https://site.example/?x=1&amp;y=&quot;2&quot;");
    skin = replaced(skin, "link_url=\"url_support\"", "link_url=\"https://new.example/help\"");
    // A control without link_url gains one, like feed_url, right behind the element's name.
    skin = replaced(skin, "<control type=\"button\" id=\"BTN_START\"",
                    "<control link_url=\"https://start.example/\" type=\"button\" id=\"BTN_START\"");
    EXPECT_EQ(fileText(out, "skin.xml"), skin);

    EXPECT_EQ(fileText(out, "fernwick.url.xml"), replaced(kAddressXml, "https://old.example/cfg.xml",
                                                          "https://new.example/cfg?a=1&amp;b=&quot;2&quot;"));

    std::string locale = replaced(kLocaleXml, "https://old.example/news", "https://new.example/news");
    locale = replaced(locale, "https://old.example/help", "https://new.example/help");
    locale =
        replaced(locale, "</torrent_locale>",
                 "\t<string key=\"LAUNCHER_NEW_URL\">https://new.example/news</string>\r\n</torrent_locale>");
    EXPECT_EQ(fileText(out, "fernwick.locale.xml"), locale);

    // The working set itself is never changed, so the next build starts from the same files.
    ASSERT_EQ(ws.files.entries.size(), before.entries.size());
    for (size_t i = 0; i < before.entries.size(); ++i)
        EXPECT_EQ(ws.files.entries[i].data, before.entries[i].data);
}

// The package that a build embeds is the command line's compose case; the preview is read the same way.
TEST(SkinWorkspace, ThePreviewCarriesTheEdits) {
    SkinWorkspace ws = loadedWorkspace();
    ws.setButtonLink("URL_SITE", L"https://edited.example/");
    ws.settings.title = L"Yeni Ba\u015Fl\u0131k";
    LoadMessages messages;
    SkinModel model;
    ASSERT_TRUE(ws.loadPreviewModel(model, messages));
    EXPECT_EQ(model.settings.title, L"Yeni Ba\u015Fl\u0131k");
    ASSERT_EQ(model.controls.size(), 6u);
    EXPECT_EQ(model.controls[1].link, L"https://edited.example/");

    EXPECT_TRUE(messages.lines().empty());
    EXPECT_FALSE(SkinWorkspace().loadPreviewModel(model, messages));
    EXPECT_EQ(messages.error, L"Önce bir skin yükleyin.");
}

// A folder, a .zip in any case and a folder without skin.xml are the command line's end-to-end cases (pack).
TEST(SkinWorkspace, SourcesAreFoldersOrZipsHoldingSkinXml) {
    test::TempDir dir;
    for (const SkinEntry& e :
         sampleFiles().entries) // a folder whose name ends in .zip is a folder all the same
        test::writeFile(pathJoin(dir.file(L"named.zip"), utf8ToWide(e.name)), e.data);
    test::writeFile(dir.file(L"readme.txt"), "x");
    struct Case {
        std::wstring path;
        std::wstring message; // empty: loads
    } cases[] = {
        {dir.file(L"named.zip"), L""},
        {dir.file(L"missing.zip"), L"Zip okunamadi: " + dir.file(L"missing.zip")},
        {dir.file(L"readme.txt"), L"Zip dosyası ya da klasör bırakın."},
    };
    for (const Case& c : cases) {
        SkinWorkspace ws;
        std::wstring message;
        EXPECT_EQ(ws.loadSkinSource(c.path, message), c.message.empty()) << test::fsPath(c.path).string();
        EXPECT_EQ(message, c.message);
        EXPECT_EQ(ws.loaded, c.message.empty());
        EXPECT_EQ(ws.sourceLabel, c.message.empty() ? c.path : L"");
        EXPECT_EQ(ws.files.entries.empty(), !c.message.empty());
    }
}

TEST(SkinWorkspace, DroppedFilesJoinTheWorkingSet) {
    test::TempDir dir;
    const std::wstring skin = dir.file(L"skin");
    for (const SkinEntry& e : sampleFiles().entries)
        test::writeFile(pathJoin(skin, utf8ToWide(e.name)), e.data);
    test::writeFile(dir.file(L"start_up.png"), test::makePng(33, 10, 0xFFFF0000));
    test::writeFile(dir.file(L"extra.png"), test::makePng(1, 1, 0xFFFF0000));
    test::writeFile(dir.file(L"notes.md"), "x");

    // A folder and two files at once: the folder's files plus two; the unsupported file is the note.
    SkinWorkspace ws;
    int count = 0;
    std::wstring note;
    ws.addDroppedFiles({skin, dir.file(L"notes.md"), dir.file(L"start_up.png")}, count, note);
    EXPECT_EQ(count, int(sampleFiles().entries.size()) + 1);
    EXPECT_EQ(note, L"Desteklenmeyen dosya: notes.md");
    EXPECT_TRUE(ws.loaded);
    EXPECT_EQ(ws.sourceLabel, L"(bırakılan dosyalar)");
    EXPECT_EQ(ws.configUrl, L"https://old.example/cfg.xml");

    // The dropped button picture replaced the skin's own.
    SkinModel model;
    LoadMessages messages;
    ASSERT_TRUE(ws.loadPreviewModel(model, messages));
    EXPECT_EQ(model.controls[0].width, 33);

    // A zip and two pictures at once count the zip's files plus two.
    const std::wstring zip = pathJoin(pathJoin(test::testDataDir(), L"zips"), L"python_deflated.zip");
    SkinFileSet fromZip;
    int inZip = 0;
    ASSERT_TRUE(readZipSkin(fromZip, zip, nullptr, &inZip));
    count = 0;
    ws.addDroppedFiles({zip, dir.file(L"extra.png"), dir.file(L"start_up.png")}, count, note);
    EXPECT_EQ(count, inZip + 2);
}

} // namespace
} // namespace nv
