#include "skin/skin_model.h"
#include "tests/support/image_files.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <functional>

namespace nv {
namespace {

const char* kAddress =
    "<urls remoteConfigPath=\"https://patch.example/cfg.xml\" languagePath=\"Fernwick.locale.xml\"/>";

// A skin set with an address file and a 40 x 30 main.png, plus whatever the test adds.
SkinFileSet skinWith(std::string_view skinXml) {
    SkinFileSet set;
    set.putFile("Fernwick.url.xml", test::bytesOf(kAddress));
    set.putFile("main.png", test::makePng(40, 30, 0xFF102030));
    set.putFile("skin.xml", test::bytesOf(skinXml));
    return set;
}

struct Loaded {
    bool ok = false;
    SkinModel model;
    std::vector<std::wstring> warnings;
};

Loaded load(const SkinFileSet& set) {
    Loaded r;
    r.ok = loadSkinModel(set, r.model, &r.warnings);
    return r;
}

std::string narrow(const std::vector<std::wstring>& lines) {
    std::string out;
    for (const auto& l : lines)
        out += test::fsPath(l).string() + "\n";
    return out;
}

TEST(SkinModel, AMinimalSkinTakesItsSizeFromTheBackgroundAndKeepsDefaults) {
    Loaded r = load(skinWith("<skin/>"));
    ASSERT_TRUE(r.ok) << narrow(r.warnings);
    EXPECT_TRUE(r.warnings.empty());
    EXPECT_EQ(r.model.width, 40);
    EXPECT_EQ(r.model.height, 30);
    EXPECT_FALSE(r.model.background.hasTransparency);
    EXPECT_EQ(r.model.remoteConfigPath, L"https://patch.example/cfg.xml");
    EXPECT_EQ(r.model.localConfigPath, L"kaldratorrent.config.xml");
    EXPECT_EQ(r.model.languagePath, L"Fernwick.locale.xml");
    EXPECT_EQ(r.model.feedRefresh, 60);
    EXPECT_EQ(r.model.skinFile, "skin.xml");
    EXPECT_EQ(r.model.addressFile, "fernwick.url.xml");
    EXPECT_EQ(r.model.localeFile, "");
    EXPECT_EQ(r.model.strings.size(), kLocaleDefaultCount);
    EXPECT_EQ(r.model.settings, PatcherSettings{});
}

TEST(SkinModel, FatalProblemsFailWithOneWarningEach) {
    struct Case {
        const char* what;
        std::function<void(SkinFileSet&)> change;
        std::wstring warning;
    } cases[] = {
        {"no address file", [](SkinFileSet& s) { s.entries.erase(s.entries.begin()); },
         L"Skin içinde Fernwick.url.xml yok."},
        {"no skin.xml", [](SkinFileSet& s) { s.entries.pop_back(); },
         L"Düzenleme mevcut değil. (skin.xml yok)"},
        {"no background", [](SkinFileSet& s) { s.entries.erase(s.entries.begin() + 1); },
         L"Düzenleme mevcut değil. (arka plan görseli yok: main)"},
        {"named background missing",
         [](SkinFileSet& s) { s.putFile("skin.xml", test::bytesOf("<skin background_image=\"bg\"/>")); },
         L"Düzenleme mevcut değil. (arka plan görseli yok: bg)"},
        {"background not a picture",
         [](SkinFileSet& s) { s.putFile("main.png", test::bytesOf("not a picture")); },
         L"Düzenleme mevcut değil. (arka plan görseli yok: main)"},
    };
    for (const Case& c : cases) {
        SkinFileSet set = skinWith("<skin/>");
        c.change(set);
        Loaded r = load(set);
        EXPECT_FALSE(r.ok) << c.what;
        EXPECT_EQ(r.warnings, std::vector<std::wstring>{c.warning}) << c.what << "\n" << narrow(r.warnings);
    }
}

TEST(SkinModel, UnreadableXmlNamesTheFileAndTheParserMessage) {
    SkinFileSet brokenAddress = skinWith("<skin/>");
    brokenAddress.putFile("fernwick.url.xml", test::bytesOf("<urls"));
    Loaded r = load(brokenAddress);
    EXPECT_FALSE(r.ok);
    ASSERT_EQ(r.warnings.size(), 1u);
    EXPECT_EQ(r.warnings[0].rfind(L"fernwick.url.xml okunamadı: ", 0), 0u) << narrow(r.warnings);
    EXPECT_NE(r.warnings[0].find(L" (satir 1)"), std::wstring::npos);

    Loaded bad = load(skinWith("<skin>\n<control>\n</skin>"));
    EXPECT_FALSE(bad.ok);
    ASSERT_EQ(bad.warnings.size(), 1u);
    EXPECT_EQ(bad.warnings[0], L"skin.xml okunamadı: Kapanis etiketi uyusmuyor (satir 3)");
}

TEST(SkinModel, TheSkinsLocaleFileChangesTheNoSkinText) {
    SkinFileSet set = skinWith("<skin background_image=\"nothing\"/>");
    set.putFile(
        "fernwick.locale.xml",
        test::bytesOf(
            "<torrent_locale>\n\t<string key=\"error_no_skin\">Skin yok!</string>\n</torrent_locale>"));
    Loaded r = load(set);
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(r.warnings, std::vector<std::wstring>{L"Skin yok! (arka plan görseli yok: nothing)"});
}

TEST(SkinModel, ABrokenLocaleFileIsOnlyAWarning) {
    SkinFileSet set = skinWith("<skin/>");
    set.putFile("fernwick.locale.xml", test::bytesOf("<torrent_locale><string key=\"A\">x</torrent_locale>"));
    Loaded r = load(set);
    ASSERT_TRUE(r.ok);
    ASSERT_EQ(r.warnings.size(), 1u);
    EXPECT_EQ(r.warnings[0].rfind(L"fernwick.locale.xml okunamadı: ", 0), 0u);
    EXPECT_EQ(r.model.localeFile, "fernwick.locale.xml");
    EXPECT_EQ(localeText(r.model, "NOTICE"), L"Hata");
}

TEST(SkinModel, AnyAddressFileEndingInUrlXmlServesAndEmptyLocalConfigFallsBack) {
    SkinFileSet set = skinWith("<skin/>");
    set.entries.erase(set.entries.begin());
    set.putFile("custom_url.xml", test::bytesOf("<u remoteConfigPath=\"r\" localConfigPath=\"\"/>"));
    Loaded r = load(set);
    ASSERT_TRUE(r.ok) << narrow(r.warnings);
    EXPECT_EQ(r.model.addressFile, "custom_url.xml");
    EXPECT_EQ(r.model.remoteConfigPath, L"r");
    EXPECT_EQ(r.model.localConfigPath, L"kaldratorrent.config.xml");
}

TEST(SkinModel, BackgroundNamesAreCompletedInExtensionOrder) {
    struct Case {
        const char* attribute;
        std::vector<std::pair<const char*, int>> files; // name, width
        int expectedWidth;
    } cases[] = {
        {"bg", {{"bg.bmp", 3}, {"bg.png", 5}}, 5},
        {"bg", {{"bg.bmp", 3}}, 3},
        {"bg.png", {{"bg.png", 7}, {"bg.png.png", 9}}, 7},
        {"bg.png", {{"bg.png.bmp", 9}}, 9},
        {"./art/BG", {{"bg.png", 4}}, 4},
    };
    for (const Case& c : cases) {
        SkinFileSet set = skinWith("<skin background_image=\"" + std::string(c.attribute) + "\"/>");
        for (auto& [name, width] : c.files)
            set.putFile(name, std::string(name).find(".bmp") != std::string::npos
                                  ? test::makeBmp(width, 2, 0xFF0000FF)
                                  : test::makePng(width, 2, 0xFF00FF00));
        Loaded r = load(set);
        ASSERT_TRUE(r.ok) << c.attribute << "\n" << narrow(r.warnings);
        EXPECT_EQ(r.model.width, c.expectedWidth) << c.attribute;
    }
}

TEST(SkinModel, ATransparentBackgroundMakesATransparentWindow) {
    SkinFileSet set = skinWith("<skin/>");
    std::vector<uint32_t> pixels(4, 0xFF000000);
    pixels[3] = 0x00000000;
    set.putFile("main.png", test::makePng(2, 2, pixels));
    Loaded r = load(set);
    ASSERT_TRUE(r.ok);
    EXPECT_TRUE(r.model.background.hasTransparency);
}

TEST(SkinModel, ButtonStateImagesFillTheirGaps) {
    struct Case {
        const char* image;
        std::vector<std::pair<const char*, int>> files; // name, width (tells the images apart)
        int up, on, down, disabled;
    } cases[] = {
        {"btn.png", {{"btn_up.png", 10}, {"btn_dn.png", 12}}, 10, 10, 12, 10},
        {"btn_up.png", {{"btn_up.png", 10}, {"btn_dn.png", 12}}, 10, 10, 12, 10},
        {"btn.png",
         {{"btn_up.png", 10}, {"btn_on.png", 11}, {"btn_dn.png", 12}, {"btn_ds.png", 13}},
         10,
         11,
         12,
         13},
        {"btn.png", {{"btn_up.png", 10}, {"btn_on.png", 11}}, 10, 11, 11, 10},
        {"plain.png", {{"plain.png", 8}}, 8, 8, 8, 8},
        {"BTN.BMP", {{"btn_up.bmp", 6}}, 6, 6, 6, 6},
    };
    for (const Case& c : cases) {
        SkinFileSet set = skinWith("<skin><control type=\"Button\" id=\"b\" image=\"" + std::string(c.image) +
                                   "\"/></skin>");
        for (auto& [name, width] : c.files)
            set.putFile(name, std::string_view(name).ends_with(".bmp") ? test::makeBmp(width, 4, 0xFF112233)
                                                                       : test::makePng(width, 4, 0xFF112233));
        Loaded r = load(set);
        ASSERT_TRUE(r.ok);
        ASSERT_EQ(r.model.controls.size(), 1u);
        const SkinControl& b = r.model.controls[0];
        EXPECT_EQ(b.kind, ControlKind::Button);
        EXPECT_EQ(b.id, "B");
        EXPECT_EQ(b.imageUp.width, c.up) << c.image;
        EXPECT_EQ(b.imageOn.width, c.on) << c.image;
        EXPECT_EQ(b.imageDown.width, c.down) << c.image;
        EXPECT_EQ(b.imageDisabled.width, c.disabled) << c.image;
        EXPECT_EQ(b.width, c.up);
        EXPECT_EQ(b.height, 4);
        EXPECT_TRUE(r.warnings.empty()) << narrow(r.warnings);
    }
}

TEST(SkinModel, AButtonWithoutPicturesWarnsAndTakesItsSizeFromAttributes) {
    Loaded r =
        load(skinWith("<skin><control type=\"button\" image=\"img/go.png\" w=\"90\" height=\"30\" h=\"5\"/>"
                      "</skin>"));
    ASSERT_TRUE(r.ok);
    EXPECT_EQ(r.warnings, std::vector<std::wstring>{L"Buton görseli yok: img/go_up"});
    EXPECT_EQ(r.model.controls[0].width, 90);
    EXPECT_EQ(r.model.controls[0].height, 30);
}

TEST(SkinModel, LinksNameLocaleKeysOrHoldAddresses) {
    SkinFileSet set = skinWith("<skin>"
                               "<control type=\"button\" id=\"url_new\"/>"
                               "<control type=\"button\" id=\"site\" link_url=\"https://kaldra.example/\"/>"
                               "<control type=\"button\" id=\"sup\" link_url=\"url_support\"/>"
                               "<control type=\"button\" id=\"other\"/>"
                               "</skin>");
    set.putFile("fernwick.locale.xml",
                test::bytesOf("<torrent_locale>\r\n"
                              "\t<string key=\"LAUNCHER_NEW_URL\">https://new/</string>\r\n"
                              "\t<string key=\"URL_SUPPORT\">https://help/</string>\r\n"
                              "</torrent_locale>\r\n"));
    Loaded r = load(set);
    ASSERT_TRUE(r.ok);
    ASSERT_EQ(r.model.controls.size(), 4u);
    EXPECT_EQ(r.model.controls[0].link, L"https://new/") << "URL_NEW falls back to LAUNCHER_NEW_URL";
    EXPECT_EQ(r.model.controls[1].link, L"https://kaldra.example/");
    EXPECT_EQ(r.model.controls[2].link, L"https://help/");
    EXPECT_EQ(r.model.controls[2].linkUrl, "url_support");
    EXPECT_EQ(r.model.controls[3].link, L"");
    EXPECT_EQ(resolveLink(r.model, ""), L"");
    EXPECT_EQ(resolveLink(r.model, "nv_news"), L"Haberler");
    EXPECT_EQ(localeText(r.model, "NO_SUCH_KEY"), L"NO_SUCH_KEY");
}

TEST(SkinModel, TextAttributesDefaultsClampsAndColours) {
    Loaded r = load(
        skinWith("<skin>"
                 "<control type=\"text\" id=\"t0\"/>"
                 "<control type=\"text\" size=\"200\" color=\"#80FF0000\" shadow=\"#00ff00\" bold=\"evet\""
                 " align=\"CENTER\" font=\"Segoe UI\" width=\"120\" w=\"5\" text=\"\xC4\x9F" "a\"/>"
                 "<control type=\"text\" size=\"2\" color=\"FF0000\" shadow=\"red\" align=\"right\" w=\"7\"/>"
                 "<control type=\"text\" size=\"x\" color=\"red\" align=\"middle\"/>"
                 "</skin>"));
    ASSERT_TRUE(r.ok);
    const auto& c = r.model.controls;
    ASSERT_EQ(c.size(), 4u);
    EXPECT_EQ(c[0].size, 12);
    EXPECT_EQ(c[0].height, 18);
    EXPECT_EQ(c[0].color, 0xFFFFFFFFu);
    EXPECT_FALSE(c[0].shadow);
    EXPECT_EQ(c[0].shadowColor, 0xFF000000u);
    EXPECT_EQ(c[0].font, L"Tahoma");
    EXPECT_EQ(c[0].align, 0);

    EXPECT_EQ(c[1].size, 96);
    EXPECT_EQ(c[1].height, 102);
    EXPECT_EQ(c[1].color, 0x80FF0000u);
    EXPECT_TRUE(c[1].shadow);
    EXPECT_EQ(c[1].shadowColor, 0xFF00FF00u);
    EXPECT_TRUE(c[1].bold);
    EXPECT_EQ(c[1].align, 1);
    EXPECT_EQ(c[1].font, L"Segoe UI");
    EXPECT_EQ(c[1].width, 120) << "w is an alias only where width is absent";
    EXPECT_EQ(c[1].text, L"\u011Fa");

    EXPECT_EQ(c[2].size, 6);
    EXPECT_EQ(c[2].color, 0xFFFF0000u);
    EXPECT_FALSE(c[2].shadow) << "a shadow that is not a colour counts as absent";
    EXPECT_EQ(c[2].align, 2);
    EXPECT_EQ(c[2].width, 7);

    EXPECT_EQ(c[3].size, 12);
    EXPECT_EQ(c[3].color, 0xFFFFFFFFu);
    EXPECT_EQ(c[3].align, 0);
}

TEST(SkinModel, GaugesFramesImagesAndUnknownControls) {
    SkinFileSet set = skinWith(
        "<skin>"
        "<control type=\"gauge\" id=\"PROGRESS_MAIN\" image_full=\"bar_full\" image_empty=\"bar_empty\"/>"
        "<control type=\"gauge\" image=\"bar_full.png\" width=\"50\" h=\"3\"/>"
        "<control type=\"gauge\" image_full=\"nothing\" image=\"bar_full\"/>"
        "<control type=\"iframe\" id=\"news\" x=\"5\" y=\"-6\" w=\"300\" h=\"200\"/>"
        "<control type=\"image\" image=\"Crest.png\" width=\"999\"/>"
        "<control type=\"image\" image=\"missing.png\"/>"
        "<notcontrol type=\"button\"/>"
        "<control type=\"slider\" id=\"s\" width=\"40\" height=\"9\"/>"
        "</skin>");
    set.putFile("bar_full.png", test::makePng(100, 8, 0xFF00FF00));
    set.putFile("bar_empty.bmp", test::makeBmp(100, 8, 0xFF333333));
    set.putFile("crest.png", test::makePng(16, 17, 0x80FFFFFF));
    Loaded r = load(set);
    ASSERT_TRUE(r.ok);
    EXPECT_EQ(r.warnings, std::vector<std::wstring>{L"Gauge görseli yok: nothing"});
    const auto& c = r.model.controls;
    ASSERT_EQ(c.size(), 7u);
    EXPECT_EQ(c[0].kind, ControlKind::Gauge);
    EXPECT_EQ(c[0].imageFull.width, 100);
    EXPECT_EQ(c[0].imageEmpty.width, 100);
    EXPECT_EQ(c[0].width, 100);
    EXPECT_EQ(c[0].height, 8);
    EXPECT_EQ(c[1].imageFull.width, 100) << "image stands in for a missing image_full";
    EXPECT_TRUE(c[1].imageEmpty.empty());
    EXPECT_EQ(c[1].width, 50);
    EXPECT_EQ(c[1].height, 3);
    EXPECT_TRUE(c[2].imageFull.empty()) << "image_full is present, so image is not consulted";
    EXPECT_EQ(c[3].kind, ControlKind::Iframe);
    EXPECT_EQ(c[3].x, 5);
    EXPECT_EQ(c[3].y, -6);
    EXPECT_EQ(c[3].width, 300);
    EXPECT_EQ(c[3].height, 200);
    EXPECT_EQ(c[4].kind, ControlKind::Image);
    EXPECT_EQ(c[4].width, 16);
    EXPECT_EQ(c[4].height, 17);
    EXPECT_TRUE(c[4].imageUp.hasTransparency);
    EXPECT_EQ(c[5].width, 0);
    EXPECT_EQ(c[6].kind, ControlKind::Unknown);
    EXPECT_EQ(c[6].index, 6u);
    EXPECT_EQ(c[6].width, 40);
    EXPECT_STREQ(controlKindName(c[6].kind), "unknown");
}

TEST(SkinModel, SettingsComeFromNorvaneIni) {
    SkinFileSet set = skinWith("<skin feed_url=\"https://feed/\" feed_refresh=\"15\"/>");
    set.putFile("norvane.ini", test::bytesOf("[patcher]\r\ntitle=Kaldra\r\nconnections=20\r\n"));
    Loaded r = load(set);
    ASSERT_TRUE(r.ok);
    EXPECT_EQ(r.model.settings.title, L"Kaldra");
    EXPECT_EQ(r.model.settings.connections, 8);
    EXPECT_EQ(r.model.feedUrl, L"https://feed/");
    EXPECT_EQ(r.model.feedRefresh, 15);
}

TEST(ParseColor, SixOrEightHexDigitsWithAnOptionalHash) {
    struct Case {
        const char* text;
        bool ok;
        uint32_t argb;
    } cases[] = {
        {"#80FF0000", true, 0x80FF0000},
        {"FF0000", true, 0xFFFF0000},
        {"#00ff7f", true, 0xFF00FF7F},
        {"red", false, 0},
        {"#12345", false, 0},
        {"#1234567", false, 0},
        {"##123456", false, 0},
        {"", false, 0},
        {"12345G", false, 0},
        {"#123456789", false, 0},
    };
    for (const Case& c : cases) {
        uint32_t argb = 0xDEADBEEF;
        EXPECT_EQ(parseColor(c.text, argb), c.ok) << c.text;
        EXPECT_EQ(argb, c.ok ? c.argb : 0xDEADBEEF) << c.text;
    }
}

} // namespace
} // namespace nv
