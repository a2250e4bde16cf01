#include "skin/skin_lint.h"
#include "core/text.h"
#include "skin/skin_model.h"
#include "tests/support/image_files.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

using Files = std::vector<std::pair<std::string, Bytes>>;

// A 40 x 30 skin with nothing to find: an address file, a background and the given skin.xml lines between
// "<skin>" (line 1) and "</skin>", plus the extra files.
SkinFileSet skinWith(std::string_view controls, Files extra = {}) {
    SkinFileSet set;
    set.putFile("fernwick.url.xml",
                test::bytesOf("<urls remoteConfigPath=\"https://patch.example/c.xml\"/>"));
    set.putFile("main.png", test::makePng(40, 30, 0xFF102030));
    set.putFile("skin.xml", test::bytesOf("<skin>\n" + std::string(controls) + "\n</skin>\n"));
    for (auto& [name, bytes] : extra)
        set.putFile(name, std::move(bytes));
    return set;
}

// One or two extra files.
Files with(std::string name, Bytes bytes, std::string other = {}, Bytes otherBytes = {}) {
    Files files{{std::move(name), std::move(bytes)}};
    if (!other.empty()) files.emplace_back(std::move(other), std::move(otherBytes));
    return files;
}

// "file:line:column code [control]" of a finding.
std::string placeOf(const LintFinding& f) {
    return f.file + ":" + std::to_string(f.line) + ":" + std::to_string(f.column) + " " + f.code +
           (f.control.empty() ? "" : " [" + wideToUtf8(f.control) + "]");
}

std::string describe(const LintReport& report) {
    std::string out;
    for (const LintFinding& f : report.findings)
        out += placeOf(f) + " " + test::fsPath(f.message).string() + "\n";
    return out;
}

// An unknown type, a colour that does not parse and a file nothing uses are the command line's end-to-end
// case; the other mistakes are here. Each finding about a control names it (its id, or its place among the
// controls), and the column tells findings of a one-line skin.xml apart.
TEST(SkinLint, EachMistakeGivesOneFindingWithItsPlaceOnASkinTheLoaderCallsSound) {
    const Bytes icon = test::makePng(4, 4, 0xFFFFFFFF), junk = test::bytesOf("II* not a picture");
    const auto ini = [](const char* text) { return with("norvane.ini", test::bytesOf(text)); };
    const Bytes noStrings = test::bytesOf("<torrent_locale/>");
    const std::string sharpS = "\xC5\x9E", smallS = "\xC5\x9F", dugme = "d\xC3\xBC\xC4\x9Fme", // Ş ş düğme
        bigDugme = "D\xC3\x9C\xC4\x9EME";
    struct Case {
        std::string controls;
        const char* place; // file:line:column code [control]; the message is checked for the name it carries
        const char* mentions;
        Files extra = {};
    } cases[] = {
        {"<control type='image' id='LOGO' image='logo.png'/>", "skin.xml:2:1 missing-image [LOGO]",
         "logo.png"},
        {"<control type='image' id='LOGO'/>", "skin.xml:2:1 missing-image [LOGO]", "(image) yok"},
        {"<control type='image' image='logo.png'/>", "skin.xml:2:1 missing-image [kontrol #1]", "logo.png",
         with("logo.png", junk)},
        {"<control type='button' image='btn.png'/>", "skin.xml:2:1 unreadable-image [kontrol #1]",
         "btn_dn.png (Gorsel cozulemedi", with("btn_up.png", icon, "btn_dn.png", junk)},
        {"<control type='gauge' image_full='full'\n image_empty='bos'/>",
         "skin.xml:3:15 missing-image [kontrol #1]", "bos", with("full.png", icon)},
        {"<control type='image' image='" + sharpS + "erit.png'/>", "skin.xml:2:1 image-case [kontrol #1]",
         "erit.png", with(smallS + "erit.png", icon)},
        {"<control type='button' image='" + dugme + ".png'/>", "skin.xml:2:1 image-case [kontrol #1]",
         "me_on.png", with(dugme + "_up.png", icon, bigDugme + "_on.png", icon)},
        {"<control type='image' id='LOGO' x='38' y='2' image='i.png'/>", "skin.xml:2:1 outside-window [LOGO]",
         "taşıyor (38,2", with("i.png", icon)},
        {"<control type='text' id='T' x='-90' y='5' width='50'/>", "skin.xml:2:1 outside-window [T]",
         "tamamen"},
        {"<control id='S'/>", "skin.xml:2:1 unknown-type [S]", "type"},
        {"<control type='text' id='T' width='9'/>\n<control type='text' id='t' width='9'/>",
         "skin.xml:3:1 duplicate-id [T]", "2"},
        {"<control type='button' image='b.png' link_url='URL_FORUM'/>",
         "skin.xml:2:48 missing-locale-key [kontrol #1]", "URL_FORUM", with("b.png", icon)},
        {"<control type='text' id='TEXT_MAIN'/>", "skin.xml:2:1 no-size [TEXT_MAIN]", "width"},
        {"<control type='iframe' id='NEWS' width='20'/>", "skin.xml:2:1 no-size [NEWS]", "height"},
        // Columns count characters: the Turkish letters before the attribute are one column each.
        {"<control type='text' id='ŞÖĞÜ' width='9' colour='#FFFFFF'/>",
         "skin.xml:2:50 unknown-attribute [ŞÖĞÜ]", "colour"},
        {"<Control type='text'/>", "skin.xml:2:1 unknown-element", "Control"},
        // An id the patcher acts on, on a control of another kind: the patcher passes it by.
        {"<control type='text' id='progress_main' width='9'/>", "skin.xml:2:1 wrong-kind [PROGRESS_MAIN]",
         "gauge"},
        {"<control type='image' id='URL_SITE' image='i.png'/>", "skin.xml:2:1 wrong-kind [URL_SITE]",
         "button", with("i.png", icon)},
        {"", "norvane.ini:3:0 setting-clamped", "8", ini("; x\r\n[patcher]\r\nconnections=20\r\n")},
        {"", "norvane.ini:2:0 setting-default", "segment_mb=8MB", ini("[Patcher]\nsegment_mb = 8MB\n")},
        {"", "norvane.ini:2:0 setting-default", "maybe", ini("[patcher]\rauto_start=maybe\r")},
        {"", "norvane.ini:3:0 unknown-setting", "patcher.conections", ini("[patcher]\n\nconections=6\n")},
        // The lamp's pictures for the other statuses are used and checked; feed_message is known.
        {"<control type='image' id='FEED_LAMP' image='lamp_online.png'/>"
         "<control type='text' id='FEED_STATUS' width='9' feed_message='1'/>",
         "skin.xml:2:1 unreadable-image [FEED_LAMP]", "lamp_offline.png",
         Files{{"lamp_online.png", icon}, {"lamp_maintenance.png", icon}, {"lamp_offline.png", junk}}},
        {"", "english.locale.xml:0:0 unused-file", "english",
         with("fernwick.locale.xml", noStrings, "english.locale.xml", noStrings)},
        // Info-ZIP's "Işık.png" stored without the UTF-8 flag, read as code page 437.
        {"", "i\xE2\x94\xBC\xC6\x92\xE2\x94\x80\xE2\x96\x92k.png:0:0 zip-name-encoding",
         "Asıl adı: işık.png.", with("i\xE2\x94\xBC\xC6\x92\xE2\x94\x80\xE2\x96\x92k.png", icon)},
    };
    for (const Case& c : cases) {
        SkinFileSet set = skinWith(c.controls, c.extra);
        SkinModel model;
        LoadMessages messages;
        ASSERT_TRUE(loadSkinModel(set, model, &messages)) << c.place;
        EXPECT_TRUE(messages.warnings.empty())
            << c.place << ": the loader itself should call this skin sound";

        const LintReport report = lintSkin(set);
        EXPECT_TRUE(report.loaded) << c.place;
        ASSERT_EQ(report.findings.size(), 1u) << c.place << "\n" << describe(report);
        const LintFinding& f = report.findings[0];
        EXPECT_EQ(placeOf(f), c.place) << c.place;
        EXPECT_NE(wideToUtf8(f.message).find(c.mentions), std::string::npos)
            << c.place << ": " << describe(report);
    }
}

// What the loader says is kept in its words, but given the place it concerns: the control whose picture is
// missing, and for a file that does not parse the place where the reader stopped (the reader's words after
// it). A languagePath that names no file of the skin is a finding in the address file.
TEST(SkinLint, LoaderWarningsAndParseErrorsGetTheirPlace) {
    const Bytes icon = test::makePng(4, 4, 0xFFFFFFFF);
    struct Case {
        const char* file;
        std::string text;
        std::vector<std::string> places;
        const char* message; // of the first finding
    } cases[] = {
        {"skin.xml",
         "<skin><control type='button' id='GO' image='go.png'/><control type='gauge' image='g'/></skin>",
         {"skin.xml:1:7 loader [GO]", "skin.xml:1:54 loader [kontrol #2]"},
         "Buton görseli yok: go_up"},
        {"skin.xml",
         "<skin>\n  <control type='text'></contrl>\n</skin>",
         {"skin.xml:2:26 parse-error"},
         "okunamadı: Kapanis etiketi uyusmuyor (satir 2)"},
        {"fernwick.locale.xml",
         "<torrent_locale>\n<string key='A'>x</strng>",
         {"fernwick.locale.xml:2:20 parse-error"},
         "okunamadı: Kapanis etiketi uyusmuyor (satir 2)"},
        {"fernwick.url.xml",
         "<urls remoteConfigPath='x'\n languagePath='lang/English.locale.xml'/>",
         {"fernwick.url.xml:2:16 missing-locale-file"},
         "languagePath skinde olmayan bir dosyayı adlandırıyor: lang/English.locale.xml; yerleşik metinler "
         "kullanılıyor"},
    };
    for (const Case& c : cases) {
        SkinFileSet set = skinWith("");
        set.putFile(c.file, test::bytesOf(c.text));
        const LintReport report = lintSkin(set);
        std::vector<std::string> places;
        for (const LintFinding& f : report.findings)
            places.push_back(placeOf(f));
        EXPECT_EQ(places, c.places) << describe(report);
        ASSERT_FALSE(report.findings.empty());
        EXPECT_EQ(wideToUtf8(report.findings[0].message), c.message);
    }
}

TEST(SkinLint, ALoaderFailureIsReportedInTheLoadersWordsAndExplainedWhenACaseIsToBlame) {
    SkinFileSet set = skinWith("");
    set.putFile("skin.xml", test::bytesOf("<skin background_image=\"\xC3\x96n\"/>")); // Ön
    set.putFile("\xC3\xB6n.png", test::makePng(8, 8, 0xFF000000));                    // ön.png
    const LintReport report = lintSkin(set);
    EXPECT_FALSE(report.loaded);
    ASSERT_EQ(report.findings.size(), 2u) << describe(report);
    EXPECT_EQ(report.findings[0].code, "loader");
    EXPECT_EQ(report.findings[0].message, L"Düzenleme mevcut değil. (arka plan görseli yok: \u00D6n)");
    EXPECT_EQ(report.findings[1].code, "image-case");
    EXPECT_EQ(report.findings[1].line, 1);
}

TEST(SkinLint, SaysWhyABackgroundThatIsThereFailsAndWhenNoPackageCanHoldTheSet) {
    SkinFileSet undecodable = skinWith("");
    undecodable.putFile("main.png", test::bytesOf("II*\0 a TIFF named .png"));
    const LintReport failed = lintSkin(undecodable);
    EXPECT_FALSE(failed.loaded);
    ASSERT_EQ(failed.findings.size(), 2u) << describe(failed);
    EXPECT_EQ(failed.findings[1].code, "unreadable-image");
    EXPECT_EQ(failed.findings[1].message,
              L"Görsel açılamadı: main.png (Gorsel cozulemedi (desteklenen: PNG, JPG, BMP, GIF).)");
    // A picture larger than any decoder takes: the loader calls it missing, the decoder "not decodable"; the
    // author hears its size and the limit.
    Bytes huge = test::bytesOf(std::string("\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR", 16));
    for (uint32_t side : {12000u, 12000u})
        for (int shift : {24, 16, 8, 0})
            huge.push_back(uint8_t(side >> shift));
    huge.resize(64);
    undecodable.putFile("main.png", huge);
    const LintReport tooLarge = lintSkin(undecodable);
    ASSERT_EQ(tooLarge.findings.size(), 2u) << describe(tooLarge);
    EXPECT_EQ(tooLarge.findings[1].message,
              L"Görsel açılamadı: main.png (12000x12000 piksel; görseller en çok 8192x8192 olabilir)");

    SkinFileSet crowded = skinWith("");
    for (int i = 0; i < 4094; ++i) // with the three files of the skin, one more than a package holds
        crowded.putFile("f" + std::to_string(i) + ".txt", {});
    const LintReport report = lintSkin(crowded);
    EXPECT_TRUE(report.loaded);
    ASSERT_FALSE(report.findings.empty());
    EXPECT_EQ(report.findings[0].code, "too-many-files");
    EXPECT_NE(report.findings[0].message.find(L"4097"), std::wstring::npos);
}

TEST(SkinLint, NameCaseFoldingCoversTurkishAndOtherLetters) {
    EXPECT_EQ(foldNameCase(L"\u015E\u011E\u00DC\u00D6\u00C7\u0130I"),
              foldNameCase(L"\u015F\u011F\u00FC\u00F6\u00E7i\u0131"));
    EXPECT_EQ(foldNameCase(L"\u0141\u017D\u0394\u0416\u0401"),
              foldNameCase(L"\u0142\u017E\u03B4\u0436\u0451"));
    EXPECT_NE(foldNameCase(L"\u00D7"), foldNameCase(L"\u00F7")) << "the multiplication sign is no letter";
}

} // namespace
} // namespace nv
