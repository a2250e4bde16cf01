#include "skin/skin_images.h"
#include "skin/skin_model.h"
#include "tests/support/image_files.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <functional>

namespace nv {
namespace {

// A skin set with an address file and a 40 x 30 main.png, plus the given skin.xml.
SkinFileSet skinWith(std::string_view skinXml) {
    SkinFileSet set;
    set.putFile("Fernwick.url.xml",
                test::bytesOf("<urls remoteConfigPath=\"https://patch.example/cfg.xml\"/>"));
    set.putFile("main.png", test::makePng(40, 30, 0xFF102030));
    set.putFile("skin.xml", test::bytesOf(skinXml));
    return set;
}

struct Loaded {
    bool ok = false;
    SkinModel model;
    std::vector<std::wstring> warnings;
    std::wstring error;
};

Loaded load(const SkinFileSet& set) {
    Loaded r;
    LoadMessages messages;
    r.ok = loadSkinModel(set, r.model, &messages);
    r.warnings = std::move(messages.warnings);
    r.error = std::move(messages.error);
    return r;
}

std::string narrow(const std::vector<std::wstring>& lines) {
    std::string out;
    for (const auto& l : lines)
        out += test::fsPath(l).string() + "\n";
    return out;
}

// A skin without its address file or its background, or with a skin.xml that does not parse, is the command
// line's end-to-end case. The reason is the load's error, whatever warnings came before it.
TEST(SkinModel, FatalProblemsFailWithTheirReason) {
    auto put = [](const char* name, std::string_view text) {
        return [=](SkinFileSet& s) { s.putFile(name, test::bytesOf(text)); };
    };
    struct Case {
        std::function<void(SkinFileSet&)> change;
        std::wstring error;
    } cases[] = {
        {put("fernwick.url.xml", "<urls"), L"fernwick.url.xml okunamadı: Etiket kapanmadi (satir 1)"},
        {[](SkinFileSet& s) { s.entries.pop_back(); }, L"Düzenleme mevcut değil. (skin.xml yok)"},
        {put("main.png", "not a picture"), L"Düzenleme mevcut değil. (arka plan görseli yok: main)"},
        // The text of ERROR_NO_SKIN comes from the skin's own locale file when it has one.
        {[&](SkinFileSet& s) {
             put("fernwick.locale.xml",
                 "<torrent_locale><string key=\"error_no_skin\">Yok!</string></torrent_locale>")(s);
             put("skin.xml", "<skin background_image=\"x\"/>")(s);
         },
         L"Yok! (arka plan görseli yok: x)"},
        // A warning found before the reason stays a warning.
        {[&](SkinFileSet& s) {
             put("fernwick.locale.xml", "<torrent_locale")(s);
             put("skin.xml", "<skin background_image=\"x\"/>")(s);
         },
         L"Düzenleme mevcut değil. (arka plan görseli yok: x)"},
    };
    for (const Case& c : cases) {
        SkinFileSet set = skinWith("<skin/>");
        c.change(set);
        Loaded r = load(set);
        EXPECT_FALSE(r.ok);
        EXPECT_EQ(r.error, c.error) << narrow(r.warnings);
    }
}

TEST(SkinModel, CompanionFilesAreFoundByTheirNameRules) {
    SkinFileSet set = skinWith("<skin/>");
    set.entries.erase(set.entries.begin());
    set.putFile("custom_url.xml", test::bytesOf("<u remoteConfigPath=\"r\" localConfigPath=\"\"/>"));
    set.putFile("english.locale.xml", test::bytesOf("<torrent_locale><string key=\"A\">x</torrent_locale>"));
    Loaded r = load(set);
    ASSERT_TRUE(r.ok) << narrow(r.warnings);
    EXPECT_EQ(r.model.addressFile, "custom_url.xml");
    EXPECT_EQ(r.model.localConfigPath, L"kaldratorrent.config.xml") << "an empty value falls back too";
    // A broken locale file is only a warning; the built-in texts stay.
    EXPECT_EQ(r.model.localeFile, "english.locale.xml");
    ASSERT_EQ(r.warnings.size(), 1u);
    EXPECT_EQ(r.warnings[0].rfind(L"english.locale.xml okunamadı: ", 0), 0u);
    EXPECT_EQ(localeText(r.model, "NOTICE"), L"Hata");
}

TEST(SkinModel, BackgroundNamesAreCompletedInExtensionOrder) {
    struct Case {
        const char* attribute;
        std::vector<std::pair<const char*, int>> files; // name, width
        int expectedWidth;
    } cases[] = {
        {"bg", {{"bg.bmp", 3}, {"bg.png", 5}}, 5},
        {"bg.png", {{"bg.png", 7}, {"bg.png.png", 9}}, 7},
        {"bg.png", {{"bg.png.bmp", 9}}, 9},
        {"./art/BG", {{"bg.png", 4}}, 4},
    };
    for (const Case& c : cases) {
        SkinFileSet set = skinWith("<skin background_image=\"" + std::string(c.attribute) + "\"/>");
        for (auto& [name, width] : c.files)
            set.putFile(name, std::string_view(name).ends_with(".bmp") ? test::makeBmp(width, 2, 0xFF0000FF)
                                                                       : test::makePng(width, 2, 0xFF00FF00));
        Loaded r = load(set);
        ASSERT_TRUE(r.ok) << c.attribute;
        EXPECT_EQ(r.model.width, c.expectedWidth) << c.attribute;
    }
}

TEST(SkinModel, ButtonStateImagesFillTheirGaps) {
    struct Case {
        const char* image;
        std::vector<std::pair<const char*, int>> files; // name, width (tells the images apart)
        int up, on, down, disabled;
    } cases[] = {
        {"btn.png", {{"btn_up.png", 10}, {"btn_dn.png", 12}}, 10, 10, 12, 10},
        {"btn_up.png", {{"btn_up.png", 10}, {"btn_on.png", 11}, {"btn_ds.png", 13}}, 10, 11, 11, 13},
        {"plain.png", {{"plain.png", 8}}, 8, 8, 8, 8},
        {"BTN.BMP", {{"btn_up.bmp", 6}}, 6, 6, 6, 6},
    };
    for (const Case& c : cases) {
        SkinFileSet set =
            skinWith("<skin><control type=\"Button\" image=\"" + std::string(c.image) + "\"/></skin>");
        for (auto& [name, width] : c.files)
            set.putFile(name, std::string_view(name).ends_with(".bmp") ? test::makeBmp(width, 4, 0xFF112233)
                                                                       : test::makePng(width, 4, 0xFF112233));
        Loaded r = load(set);
        ASSERT_TRUE(r.ok && r.warnings.empty()) << c.image << narrow(r.warnings);
        const SkinControl& b = r.model.controls.at(0);
        EXPECT_EQ(b.kind, ControlKind::Button);
        EXPECT_EQ(
            std::vector<int>({b.imageUp.width, b.imageOn.width, b.imageDown.width, b.imageDisabled.width}),
            std::vector<int>({c.up, c.on, c.down, c.disabled}))
            << c.image;
        EXPECT_EQ(b.width, c.up);
        EXPECT_EQ(b.height, 4);
    }

    Loaded none =
        load(skinWith("<skin><control type=\"button\" image=\"img/go.png\" w=\"90\" height=\"30\" h=\"5\"/>"
                      "</skin>"));
    ASSERT_TRUE(none.ok);
    EXPECT_EQ(none.warnings, std::vector<std::wstring>{L"Buton görseli yok: img/go_up"});
    EXPECT_EQ(none.model.controls[0].width, 90);
    EXPECT_EQ(none.model.controls[0].height, 30) << "h is an alias only where height is absent";
}

TEST(SkinModel, LinksNameLocaleKeysOrHoldAddresses) {
    SkinFileSet set = skinWith("<skin>"
                               "<control type=\"button\" id=\"url_new\"/>"
                               "<control type=\"button\" link_url=\"https://kaldra.example/\"/>"
                               "<control type=\"button\" link_url=\"url_support\"/>"
                               "</skin>");
    set.putFile("fernwick.locale.xml",
                test::bytesOf("<torrent_locale>\r\n"
                              "\t<string key=\"LAUNCHER_NEW_URL\">https://new/</string>\r\n"
                              "\t<string key=\"URL_SUPPORT\">https://help/</string>\r\n"
                              "</torrent_locale>\r\n"));
    Loaded r = load(set);
    ASSERT_TRUE(r.ok);
    EXPECT_EQ(r.model.controls[0].id, "URL_NEW");
    EXPECT_EQ(r.model.controls[0].link, L"https://new/") << "URL_NEW falls back to LAUNCHER_NEW_URL";
    EXPECT_EQ(r.model.controls[1].link, L"https://kaldra.example/");
    EXPECT_EQ(r.model.controls[2].link, L"https://help/");
    EXPECT_EQ(resolveLink(r.model, "nv_news"), L"Haberler");
    EXPECT_EQ(localeText(r.model, "NO_SUCH_KEY"), L"NO_SUCH_KEY");
}

TEST(SkinModel, TextAttributesDefaultsClampsAndColours) {
    Loaded r = load(
        skinWith("<skin>"
                 "<control type=\"text\"/>"
                 "<control type=\"text\" size=\"200\" color=\"#80FF0000\" shadow=\"#00ff00\" bold=\"evet\""
                 " align=\"CENTER\" font=\"Segoe UI\" width=\"120\" w=\"5\"/>"
                 "<control type=\"text\" size=\"2\" color=\"FF0000\" shadow=\"red\" align=\"right\" w=\"7\"/>"
                 "</skin>"));
    ASSERT_TRUE(r.ok);
    struct Expect {
        int size, height, width, align;
        uint32_t color;
        bool shadow, bold;
        const wchar_t* font;
    } expected[] = {
        {12, 18, 0, 0, 0xFFFFFFFF, false, false, L"Tahoma"},
        {96, 102, 120, 1, 0x80FF0000, true, true, L"Segoe UI"},
        {6, 12, 7, 2, 0xFFFF0000, false, false, L"Tahoma"}, // a shadow that is not a colour counts as absent
    };
    for (size_t i = 0; i < 3; ++i) {
        const SkinControl& c = r.model.controls.at(i);
        const Expect& e = expected[i];
        EXPECT_EQ(std::make_tuple(c.size, c.height, c.width, c.align, c.color, c.shadow, c.bold, c.font),
                  std::make_tuple(e.size, e.height, e.width, e.align, e.color, e.shadow, e.bold,
                                  std::wstring(e.font)))
            << "control " << i;
    }
    EXPECT_EQ(r.model.controls[1].shadowColor, 0xFF00FF00u);
}

TEST(SkinModel, GaugesFramesImagesAndUnknownControls) {
    SkinFileSet set = skinWith("<skin>"
                               "<control type=\"gauge\" image_full=\"bar_full\" image_empty=\"bar_empty\"/>"
                               "<control type=\"gauge\" image=\"bar_full.png\" width=\"50\" h=\"3\"/>"
                               "<control type=\"gauge\" image_full=\"nothing\" image=\"bar_full\"/>"
                               "<control type=\"iframe\" w=\"300\" h=\"200\"/>"
                               "<control type=\"image\" image=\"Crest.png\" width=\"999\"/>"
                               "<notcontrol type=\"button\"/>"
                               "<control type=\"slider\" width=\"40\"/>"
                               "</skin>");
    set.putFile("bar_full.png", test::makePng(100, 8, 0xFF00FF00));
    set.putFile("bar_empty.bmp", test::makeBmp(100, 8, 0xFF333333));
    set.putFile("crest.png", test::makePng(16, 17, 0x80FFFFFF));
    Loaded r = load(set);
    ASSERT_TRUE(r.ok);
    EXPECT_EQ(r.warnings, std::vector<std::wstring>{L"Gauge görseli yok: nothing"});
    const auto& c = r.model.controls;
    ASSERT_EQ(c.size(), 6u);
    std::vector<std::tuple<ControlKind, int, int>> kindsAndSizes;
    for (const SkinControl& control : c)
        kindsAndSizes.emplace_back(control.kind, control.width, control.height);
    EXPECT_EQ(kindsAndSizes,
              (std::vector<std::tuple<ControlKind, int, int>>{
                  {ControlKind::Gauge, 100, 8},
                  {ControlKind::Gauge, 50, 3},
                  {ControlKind::Gauge, 0, 0}, // image_full is present, so image is not consulted
                  {ControlKind::Iframe, 300, 200},
                  {ControlKind::Image, 16, 17},
                  {ControlKind::Unknown, 40, 0},
              }));
    EXPECT_EQ(c[0].imageEmpty.width, 100);
    EXPECT_TRUE(c[1].imageEmpty.empty());
    EXPECT_EQ(c[5].index, 5u);
}

TEST(SkinModel, ControlsAndButtonStatesShareOneDecodeOfAFile) {
    Loaded r = load(skinWith("<skin><control type=\"button\" image=\"main.png\"/>"
                             "<control type=\"image\" image=\"./art/MAIN.PNG\"/></skin>"));
    ASSERT_TRUE(r.ok) << narrow(r.warnings);
    const SkinControl &button = r.model.controls.at(0), &image = r.model.controls.at(1);
    for (const DecodedImage* picture :
         {&button.imageUp, &button.imageOn, &button.imageDown, &button.imageDisabled, &image.imageUp})
        EXPECT_EQ(picture->pixels.get(), r.model.background.pixels.get());
}

TEST(SkinImages, TheBudgetCountsEachFileOnceAndNamesTheFileThatPassesIt) {
    SkinFileSet set;
    set.putFile("a.png", test::makePng(8, 8, 0xFF0000FF)); // 64 pixels
    set.putFile("b.bmp", test::makeBmp(4, 4, 0xFF00FF00)); // 16
    set.putFile("c.png", test::makePng(2, 2, 0xFFFF0000)); // 4
    // A header that states 100 x 100 over data that would never decode: refused on its word, undecoded.
    Bytes stated = test::makePng(100, 100, 0xFF000000);
    stated[43] = 0x07; // the first Deflate block of the data: a block type that does not exist
    set.putFile("stated.png", stated);
    std::vector<std::wstring> warnings;
    SkinImages images(set, &warnings, 80);

    const DecodedImage a = images.named("a.png");
    EXPECT_EQ(images.named("img/A.PNG").pixels.get(), a.pixels.get()) << "one decode for every spelling";
    EXPECT_EQ(images.completed("b").width, 4) << "64 + 16 fills the budget exactly";
    EXPECT_TRUE(images.named("c.png").empty());
    EXPECT_TRUE(images.named("c.png").empty());
    EXPECT_TRUE(images.named("stated.png").empty());
    EXPECT_EQ(images.named("a.png").pixels.get(), a.pixels.get()) << "what was decoded stays";
    EXPECT_EQ(warnings,
              (std::vector<std::wstring>{L"Görseller bellek sınırını aşıyor, yüklenmedi: c.png",
                                         L"Görseller bellek sınırını aşıyor, yüklenmedi: stated.png"}));
}

} // namespace
} // namespace nv
