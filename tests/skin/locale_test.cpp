#include "skin/locale.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <sstream>

namespace nv {
namespace {

// The original with the first occurrence of `from` replaced.
std::string replacedOnce(std::string text, std::string_view from, std::string_view to) {
    const size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

TEST(ParseLocale, OverridesByUpperCasedKeyAndKeepsTheTableOnFailure) {
    LocaleTable table;
    loadLocaleDefaults(table);
    ASSERT_TRUE(parseLocale(
        "<torrent_locale><string key=\"notice\"> Uyar\xC4\xB1 &amp; &lt;hata&gt;</string>"
        "<string>x</string><other key=\"OTHER\">x</other><string key=\"Nv_News\">D</string>"
        "<g><string key=\"btn_site\">x</string></g><string key=\"NV_NEWS\">Son</string></torrent_locale>",
        table));
    EXPECT_EQ(table["NOTICE"], L" Uyar\u0131 & <hata>");
    EXPECT_EQ(table["NV_NEWS"], L"Son");              // a later entry replaces an earlier one
    EXPECT_EQ(table["BTN_SITE"], L"x");               // nested elements count too
    EXPECT_EQ(table.size(), kLocaleDefaultCount + 1); // nothing else was added

    std::wstring error;
    EXPECT_FALSE(parseLocale("<torrent_locale><string key=\"NOTICE\">x</string>", table, &error));
    EXPECT_EQ(error, L"Eleman kapanmadi (satir 1)");
    EXPECT_EQ(table["NOTICE"], L" Uyar\u0131 & <hata>"); // a file that does not parse changes nothing
}

TEST(CompanionFiles, AreFoundByTheirNamingRules) {
    // The set's names in its order, the preferred locale name, then the address and locale files found.
    const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
        {"a_url.xml fernwick.url.xml tr.locale.xml fernwick.locale.xml", "", "fernwick.url.xml",
         "fernwick.locale.xml"},
        {"url.xml.png locale.xml c_url.xml b.locale.xml a.locale.xml", "Fernwick.locale.xml", "c_url.xml",
         "b.locale.xml"},
        {"fernwick.locale.xml tr.locale.xml", "lang\\TR.Locale.xml", "", "tr.locale.xml"},
    };
    for (const auto& [names, preferred, address, locale] : cases) {
        SkinFileSet set;
        std::istringstream in(names);
        for (std::string name; in >> name;)
            set.putFile(name, {});
        EXPECT_EQ(findAddressFile(set), address) << names;
        EXPECT_EQ(findLocaleFile(set, preferred), locale) << names;
    }
}

// Comments, a declaration, odd spacing, attribute order and CR LF line ends that must all survive an edit.
const std::string kLocaleFile =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
    "<!-- Kaldra: <string key=\"LAUNCHER_IFRAME\">yorum</string> -->\r\n"
    "<torrent_locale  lang = 'tr' >\r\n\t<string key=\"NOTICE\">Hata</string>\r\n"
    "  <string  note='haber'   key = 'launcher_iframe' >http://eski/</string >\r\n"
    "\t<string key=\"BTN_SITE\"/>\r\n\t<!-- </torrent_locale> yorumda degil -->\r\n"
    "</torrent_locale>\r\n";

TEST(WriteLocaleFile, ChangesOnlyTheConcernedBytes) {
    const std::wstring wide = L"http://yeni/?a=1&b=<2>\"'\u015f";
    const std::string escaped = "http://yeni/?a=1&amp;b=&lt;2&gt;\"'\xC5\x9F";
    const LocaleTable overrides{
        {"LAUNCHER_NEW_URL", wide}, {"LAUNCHER_IFRAME", wide}, {"BTN_SITE", L"x"}, {"A", L"a"}};
    // Missing keys get one line each, in key order, before the real closing tag.
    const std::string lines =
        "\t<string key=\"A\">a</string>\r\n\t<string key=\"LAUNCHER_NEW_URL\">" + escaped + "</string>\r\n";
    std::string edited = replacedOnce(kLocaleFile, "http://eski/", escaped);
    edited = replacedOnce(edited, "\"BTN_SITE\"/>", "\"BTN_SITE\">x</string>");
    EXPECT_EQ(writeLocaleFile(kLocaleFile, overrides),
              edited.insert(edited.rfind("</torrent_locale>"), lines));
    EXPECT_EQ(writeLocaleFile(kLocaleFile, {}), kLocaleFile);
    // Without a closing tag the present key is still rewritten, the missing one has nowhere to go.
    EXPECT_EQ(writeLocaleFile("<locale><string key=\"btn_site\">Hata</string></locale>", overrides),
              "<locale><string key=\"btn_site\">x</string></locale>");
    const std::string broken = "<torrent_locale><string key=\"NOTICE\">x</torrent_locale>";
    EXPECT_EQ(writeLocaleFile(broken, {{"NOTICE", L"y"}}), broken);
}

TEST(WriteAddressFile, ReplacesOnlyTheFirstRemoteConfigPathValueOfTheRoot) {
    const std::string file =
        "<?xml version=\"1.0\"?>\r\n<!-- adres -->\r\n<config  languagePath=\"a.xml\"\r\n"
        "\tremoteConfigPath = 'http://eski/config&#46;xml' remoteConfigPath=\"ikinci\" />\r\n";
    const std::wstring old = L"http://eski/config.xml", server = L"http://yeni/?a=1&b=<2>\"'\u00e7";
    EXPECT_EQ(writeAddressFile(file, server, old),
              replacedOnce(file, "http://eski/config&#46;xml",
                           "http://yeni/?a=1&amp;b=&lt;2&gt;&quot;&apos;\xC3\xA7"));
    EXPECT_EQ(writeAddressFile(file, old, old), file); // kept as written, even where it could be respelt
    EXPECT_EQ(writeAddressFile(file, L"", old), file);
    for (const char* unchanged :
         {"<config><x remoteConfigPath=\"a\"/></config>", "<config remoteConfigPath=\"a\">"})
        EXPECT_EQ(writeAddressFile(unchanged, server, L""), unchanged);
}

} // namespace
} // namespace nv
