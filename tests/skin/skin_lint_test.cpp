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

std::string describe(const LintReport& report) {
    std::string out;
    for (const LintFinding& f : report.findings)
        out += f.file + ":" + std::to_string(f.line) + " " + f.code + " " + test::fsPath(f.message).string() +
               "\n";
    return out;
}

// An unknown type, a colour that does not parse and a file nothing uses are the command line's end-to-end
// case; the other mistakes are here.
TEST(SkinLint, EachMistakeGivesOneFindingWithItsPlaceOnASkinTheLoaderCallsSound) {
    const Bytes icon = test::makePng(4, 4, 0xFFFFFFFF), junk = test::bytesOf("II* not a picture");
    const auto ini = [](const char* text) { return with("norvane.ini", test::bytesOf(text)); };
    const Bytes noStrings = test::bytesOf("<torrent_locale/>");
    const std::string sharpS = "\xC5\x9E", smallS = "\xC5\x9F", dugme = "d\xC3\xBC\xC4\x9Fme", // Ş ş düğme
        bigDugme = "D\xC3\x9C\xC4\x9EME";
    struct Case {
        std::string controls;
        const char* place; // file:line code; the message is checked for the name it carries
        const char* mentions;
        Files extra = {};
    } cases[] = {
        {"<control type='image' id='LOGO' image='logo.png'/>", "skin.xml:2 missing-image", "logo.png"},
        {"<control type='image' id='LOGO'/>", "skin.xml:2 missing-image", "LOGO"},
        {"<control type='image' image='logo.png'/>", "skin.xml:2 missing-image", "logo.png",
         with("logo.png", junk)},
        {"<control type='button' image='btn.png'/>", "skin.xml:2 unreadable-image",
         "btn_dn.png (Gorsel cozulemedi", with("btn_up.png", icon, "btn_dn.png", junk)},
        {"<control type='gauge' image_full='full'\n image_empty='bos'/>", "skin.xml:3 missing-image", "bos",
         with("full.png", icon)},
        {"<control type='image' image='" + sharpS + "erit.png'/>", "skin.xml:2 image-case", "erit.png",
         with(smallS + "erit.png", icon)},
        {"<control type='button' image='" + dugme + ".png'/>", "skin.xml:2 image-case", "me_on.png",
         with(dugme + "_up.png", icon, bigDugme + "_on.png", icon)},
        {"<control type='image' id='LOGO' x='38' y='2' image='i.png'/>", "skin.xml:2 outside-window",
         "taşıyor: LOGO", with("i.png", icon)},
        {"<control type='text' id='T' x='-90' y='5' width='50'/>", "skin.xml:2 outside-window", "tamamen"},
        {"<control id='S'/>", "skin.xml:2 unknown-type", "type"},
        {"<control type='text' id='T' width='9'/>\n<control type='text' id='t' width='9'/>",
         "skin.xml:3 duplicate-id", "2"},
        {"<control type='button' image='b.png' link_url='URL_FORUM'/>", "skin.xml:2 missing-locale-key",
         "URL_FORUM", with("b.png", icon)},
        {"<control type='text' id='TEXT_MAIN'/>", "skin.xml:2 no-size", "TEXT_MAIN"},
        {"<control type='iframe' id='NEWS' width='20'/>", "skin.xml:2 no-size", "NEWS"},
        {"<control type='text' width='9' colour='#FFFFFF'/>", "skin.xml:2 unknown-attribute", "colour"},
        {"<Control type='text'/>", "skin.xml:2 unknown-element", "Control"},
        {"", "norvane.ini:3 setting-clamped", "8", ini("; x\r\n[patcher]\r\nconnections=20\r\n")},
        {"", "norvane.ini:2 setting-default", "segment_mb=8MB", ini("[Patcher]\nsegment_mb = 8MB\n")},
        {"", "norvane.ini:2 setting-default", "maybe", ini("[patcher]\rauto_start=maybe\r")},
        {"", "norvane.ini:3 unknown-setting", "patcher.conections", ini("[patcher]\n\nconections=6\n")},
        // The lamp's pictures for the other statuses are used and checked; feed_message is known.
        {"<control type='image' id='FEED_LAMP' image='lamp_online.png'/>"
         "<control type='text' id='FEED_STATUS' width='9' feed_message='1'/>",
         "skin.xml:2 unreadable-image", "lamp_offline.png",
         Files{{"lamp_online.png", icon}, {"lamp_maintenance.png", icon}, {"lamp_offline.png", junk}}},
        {"", "english.locale.xml:0 unused-file", "english",
         with("fernwick.locale.xml", noStrings, "english.locale.xml", noStrings)},
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
        EXPECT_EQ(f.file + ":" + std::to_string(f.line) + " " + f.code, c.place) << c.place;
        EXPECT_NE(wideToUtf8(f.message).find(c.mentions), std::string::npos)
            << c.place << ": " << describe(report);
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
