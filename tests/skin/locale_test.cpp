#include "skin/locale.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace nv {
namespace {

// The original with the first occurrence of `from` replaced.
std::string replacedOnce(std::string text, std::string_view from, std::string_view to) {
    const size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

TEST(LocaleDefaults, HoldTheSeventyOneKeysInOrderWithTheirTurkishTexts) {
    // The fixed order, space-separated.
    std::istringstream order(
        "CONFIG_LOADING CONFIG_APPYING TORRENT_PATCH TORRENT_MAIN TORRENT_SUB TORRENT_PATCH_INIT "
        "TORRENT_START TORRENT_STATE_CHECKING TORRENT_STATE_DOWNLOADING TORRENT_STATE_FINISHED "
        "TORRENT_DOWNLOAD_SPEED TORRENT_TOTAL_PROGRESS TORRENT_FOREGROUND_PATCH_RUN_GAME "
        "TORRENT_NOTICE_TITLE TORRENT_NOTICE_ACCEPT TORRENT_NOTICE_REFUSE NOTICE INVALID_CRC_TABLE "
        "REMOTE_CONFIG_OPEN_ERROR FAILED_DOWNLOAD_FILE FAILED_WRITE_FILE FAILED_CREATE_FILE "
        "ERROR_LZO_DECOMPRESS ERROR_NO_SKIN CREATE_PROCESS_ERROR_2 ERROR_EXECUTE_PROCESS RUN_PATH_EMPTY "
        "LAUNCH_ERROR_WITH_ADMIN_PRIVILEGES INTERNET_OPEN_ERROR NEW_PATCHER_START LAUNCHER_IFRAME "
        "LAUNCHER_NEW_URL NV_RETRY NV_GAME_RUNNING NV_FILE_IN_USE NV_DISK_FULL NV_WRITING NV_REMAINING "
        "NV_SELF_UPDATE NV_ADMIN_QUESTION NV_CHECK_DETAIL NV_UP_TO_DATE NV_PREVIEW NV_CRC_MISMATCH "
        "NV_HTTP_ERROR NV_NET_ERROR NV_INVALID_CONFIG NV_NO_DOWNLOAD_URL NV_WAIT_GAME NV_NEWS "
        "NV_INUSE_TITLE NV_INUSE_HEAD NV_INUSE_FILES NV_INUSE_PROGRAMS NV_INUSE_QUESTION NV_INUSE_SYSTEM "
        "NV_INUSE_SYSTEM_TAG NV_INUSE_UNKNOWN NV_INUSE_MORE NV_INUSE_BTN_CLOSE NV_INUSE_BTN_RETRY "
        "NV_INUSE_BTN_CANCEL NV_INUSE_CLOSING NV_INUSE_CLOSE_FAILED NV_INUSE_NEED_ADMIN NV_INUSE_STOPPED "
        "NV_FEED_ONLINE NV_FEED_MAINTENANCE NV_FEED_OFFLINE NV_FEED_NO_DATA NV_FEED_PLAYERS");
    std::string key;
    size_t row = 0;
    for (; order >> key; ++row) {
        ASSERT_LT(row, kLocaleDefaultCount) << key;
        ASSERT_NE(kLocaleDefaults[row].key, nullptr) << row;
        EXPECT_EQ(kLocaleDefaults[row].key, key);
        ASSERT_NE(kLocaleDefaults[row].text, nullptr) << key;
    }
    EXPECT_EQ(row, kLocaleDefaultCount);
    EXPECT_EQ(kLocaleDefaults[kLocaleDefaultCount].key, nullptr);

    LocaleTable table{{"LEFTOVER", L"x"}};
    loadLocaleDefaults(table);
    EXPECT_EQ(table.size(), kLocaleDefaultCount); // keys are unique and the old content is gone

    // Fixed texts, written with escapes here so that a wrongly decoded source file shows up.
    const std::pair<const char*, const wchar_t*> fixed[] = {
        {"CONFIG_LOADING", L"Yap\u0131land\u0131rma y\u00fckleniyor..."},
        {"TORRENT_SUB", L""},
        {"ERROR_NO_SKIN", L"D\u00fczenleme mevcut de\u011fil."},
        {"INTERNET_OPEN_ERROR", L"\u0130nternet ba\u011flant\u0131s\u0131 yok (ErrorCode %d)"},
        {"LAUNCHER_NEW_URL", L""},
        {"NV_RETRY", L"G\u00fcncelleme tamamlanamad\u0131.\n\n%s\n\nTekrar denemek ister misiniz?"},
        {"NV_FEED_ONLINE", L"Sunucu \u00c7evrimi\u00e7i"},
    };
    for (const auto& [key, text] : fixed)
        EXPECT_EQ(table[key], text) << key;
    // Texts that the patcher fills in must carry a placeholder for it.
    for (const char* key : {"NV_INUSE_FILES", "NV_REMAINING", "FAILED_DOWNLOAD_FILE", "NV_FILE_IN_USE",
                            "ERROR_EXECUTE_PROCESS", "TORRENT_DOWNLOAD_SPEED", "NV_INUSE_CLOSE_FAILED"})
        EXPECT_TRUE(table[key].find(L"%s") != std::wstring::npos ||
                    table[key].find(L"%d") != std::wstring::npos)
            << key;
}

TEST(ParseLocale, OverridesByUpperCasedKeyAndKeepsTheTableOnFailure) {
    LocaleTable table;
    loadLocaleDefaults(table);
    const std::string file = "<?xml version=\"1.0\"?>\r\n<torrent_locale>\r\n"
                             "\t<string key=\"notice\">Uyar\xC4\xB1 &amp; &lt;hata&gt;</string>\r\n"
                             "\t<string key=\"NEW_KEY\"> bo\xC5\x9Fluk </string>\r\n"
                             "\t<string>anahtars\xC4\xB1z</string>\r\n<other key=\"NV_NEWS\">x</other>\r\n"
                             "\t<group><string key=\"Nv_News\">Duyurular</string></group>\r\n"
                             "\t<string key=\"NV_NEWS\">Son</string>\r\n</torrent_locale>\r\n";
    ASSERT_TRUE(parseLocale(file, table));
    EXPECT_EQ(table["NOTICE"], L"Uyar\u0131 & <hata>");
    EXPECT_EQ(table["NEW_KEY"], L" bo\u015fluk ");
    EXPECT_EQ(table["NV_NEWS"], L"Son"); // a later entry replaces an earlier one
    EXPECT_EQ(table["TORRENT_PATCH"], L"Kaldra");
    EXPECT_EQ(table.size(), kLocaleDefaultCount + 1);

    const LocaleTable before = table;
    std::wstring error;
    EXPECT_FALSE(parseLocale("<torrent_locale><string key=\"NOTICE\">x</string>", table, &error));
    EXPECT_NE(error.find(L" (satir "), std::wstring::npos) << error;
    EXPECT_EQ(table, before);
}

TEST(CompanionFiles, AreFoundByTheirNamingRules) {
    struct Case {
        std::vector<std::wstring> paths; // collected as a skin folder or archive would file them
        const char* preferred;
        const char* address;
        const char* locale;
    } cases[] = {
        {{L"skin.xml", L"main.png"}, "Fernwick.locale.xml", "", ""},
        {{L"skin.xml", L"Custom_URL.xml"}, "", "custom_url.xml", ""},
        {{L"a_url.xml", L"Fernwick.url.xml", L"myurl.xml"}, "", "fernwick.url.xml", ""},
        {{L"url.xml.png", L"lang/English.locale.xml"}, "Fernwick.locale.xml", "", "english.locale.xml"},
        {{L"tr.locale.xml", L"fernwick.locale.xml"}, "", "", "fernwick.locale.xml"},
        {{L"fernwick.locale.xml", L"tr.locale.xml"}, "TR.Locale.xml", "", "tr.locale.xml"},
        {{L"fernwick.locale.xml", L"english.locale.xml"},
         "lang\\English.locale.xml",
         "",
         "english.locale.xml"},
        {{L"b.locale.xml", L"a.locale.xml"}, "missing.locale.xml", "", "b.locale.xml"},
        {{L"locale.xml", L"strings.xml"}, "strings.xml", "", "strings.xml"},
        {{L"locale.xml"}, "", "", ""},
    };
    for (const Case& c : cases) {
        SkinFileSet set;
        for (const std::wstring& path : c.paths)
            set.putFile(skinFileName(path), test::bytesOf("<x/>"));
        EXPECT_EQ(findAddressFile(set), c.address) << set.entries.front().name;
        EXPECT_EQ(findLocaleFile(set, c.preferred), c.locale)
            << set.entries.front().name << " " << c.preferred;
    }
}

// Comments, a declaration, odd spacing, attribute order and CR LF line ends that must all survive an edit.
const std::string kLocaleFile =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
    "<!-- Kaldra metinleri: <string key=\"LAUNCHER_IFRAME\">yorum</string> -->\r\n"
    "<torrent_locale  lang = 'tr' >\r\n"
    "\t<string key=\"NOTICE\">Hata</string>\r\n"
    "  <string  note='haber'   key = 'launcher_iframe' >http://eski/</string >\r\n"
    "\t<string key=\"BTN_SITE\"/>\r\n"
    "\t<!-- </torrent_locale> yorumda degil -->\r\n"
    "</torrent_locale>\r\n";

TEST(WriteLocaleFile, ChangesOnlyTheConcernedBytes) {
    const std::string newLine =
        "\t<string key=\"LAUNCHER_NEW_URL\">http://yeni/?a=1&amp;b=&lt;2&gt;\"'</string>\r\n";
    const std::string closing = "</torrent_locale>\r\n";
    std::string withLines = replacedOnce(kLocaleFile, "http://eski/", "http://yeni/?a=1&amp;b=&lt;2&gt;\"'");
    withLines.insert(withLines.size() - closing.size(), newLine);
    struct Case {
        const char* name;
        std::string text;
        LocaleTable overrides;
        std::string expected;
    } cases[] = {
        {"nothing to write", kLocaleFile, {}, kLocaleFile},
        {"one content span",
         kLocaleFile,
         {{"LAUNCHER_IFRAME", L"http://haber/\u015f"}},
         replacedOnce(kLocaleFile, "http://eski/", "http://haber/\xC5\x9F")},
        {"escaped value and a new line before the closing tag",
         kLocaleFile,
         {{"LAUNCHER_IFRAME", L"http://yeni/?a=1&b=<2>\"'"},
          {"LAUNCHER_NEW_URL", L"http://yeni/?a=1&b=<2>\"'"}},
         withLines},
        {"new lines in key order",
         "<torrent_locale></torrent_locale>",
         {{"ZED", L"z"}, {"ALPHA", L"a"}},
         "<torrent_locale>\t<string key=\"ALPHA\">a</string>\r\n\t<string key=\"ZED\">z</string>\r\n"
         "</torrent_locale>"},
        {"an empty element gains content",
         kLocaleFile,
         {{"BTN_SITE", L"http://site/"}},
         replacedOnce(kLocaleFile, "\"BTN_SITE\"/>", "\"BTN_SITE\">http://site/</string>")},
        {"no closing tag: no new lines",
         "<locale>\r\n\t<string key=\"NOTICE\">Hata</string>\r\n</locale>\r\n",
         {{"NOTICE", L"Uyar\u0131"}, {"LAUNCHER_NEW_URL", L"x"}},
         "<locale>\r\n\t<string key=\"NOTICE\">Uyar\xC4\xB1</string>\r\n</locale>\r\n"},
        {"a file that does not parse stays",
         "<torrent_locale><string key=\"NOTICE\">x</torrent_locale>",
         {{"NOTICE", L"y"}},
         "<torrent_locale><string key=\"NOTICE\">x</torrent_locale>"},
    };
    for (const Case& c : cases) {
        const std::string written = writeLocaleFile(c.text, c.overrides);
        EXPECT_EQ(written, c.expected) << c.name;
        // Whatever was written reads back as the overrides say.
        LocaleTable read;
        if (parseLocale(written, read) && c.expected.find("</torrent_locale>") != std::string::npos) {
            for (const auto& [key, value] : c.overrides)
                EXPECT_EQ(read[key], value) << c.name << " " << key;
        }
    }
}

TEST(WriteAddressFile, ReplacesOnlyTheRemoteConfigPathValue) {
    const std::string file =
        "<?xml version=\"1.0\"?>\r\n<!-- adres -->\r\n"
        "<config  languagePath=\"Fernwick.locale.xml\"\r\n"
        "\tremoteConfigPath = 'http://eski/config.xml' remoteConfigPath=\"ikinci\" />\r\n";
    const std::string noAttribute = "<config languagePath=\"a.xml\"><x remoteConfigPath=\"a\"/></config>";
    const std::wstring old = L"http://eski/config.xml";
    struct Case {
        std::string text;
        std::wstring server;
        std::wstring imported;
        std::string expected;
    } cases[] = {
        {file, L"http://yeni/?a=1&b=<2>\"'\u00e7", old,
         replacedOnce(file, "http://eski/config.xml",
                      "http://yeni/?a=1&amp;b=&lt;2&gt;&quot;&apos;\xC3\xA7")},
        {file, L"http://yeni/", L"", replacedOnce(file, "http://eski/config.xml", "http://yeni/")},
        {file, old, old, file},
        {file, L"http://yeni/", L"http://yeni/", file},
        {file, L"", old, file},
        {noAttribute, L"http://yeni/", L"", noAttribute},
        {"<config remoteConfigPath=\"a\">", L"http://yeni/", L"", "<config remoteConfigPath=\"a\">"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(writeAddressFile(c.text, c.server, c.imported), c.expected) << c.text;
}

} // namespace
} // namespace nv
