// What the player reads while the patcher updates: the three texts and two gauges of each step, and the
// command line that asks for a headless run or a repair.

#include "patcher/patcher_logic.h"
#include "patcher/update_texts.h"
#include "tests/renderer/skin_builder.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

using update::Progress;
using update::Step;

LocaleTable defaults() {
    LocaleTable strings;
    loadLocaleDefaults(strings);
    return strings;
}

TEST(UpdateTexts, EachStepShowsItsStateFileAndSpeed) {
    const LocaleTable strings = defaults();
    Progress check;
    check.step = Step::Check;
    check.filesDone = 3;
    check.filesTotal = 12;
    UpdateDisplay d = updateDisplay(check, strings);
    EXPECT_EQ(d.main, L"Dosyalar denetleniyor...");
    EXPECT_EQ(d.sub, L"3 / 12 dosya");
    EXPECT_FLOAT_EQ(d.mainGauge, 0.25f);

    Progress download;
    download.step = Step::Download;
    download.bytesDone = 450;
    download.bytesTotal = 1000;
    download.currentFile = "data/şehir.pak";
    download.currentDone = 1;
    download.currentSize = 3;
    download.bytesPerSecond = 1536 * 1024;
    download.secondsLeft = 3725;
    d = updateDisplay(download, strings);
    EXPECT_EQ(d.main, L"İndiriliyor...  %45");
    EXPECT_EQ(d.sub, L"data/şehir.pak (%33)");
    EXPECT_EQ(d.torrent, L"İndirme hızı: 1,5 MB/sn  Kalan süre: 1 sa 02 dk");
    EXPECT_FLOAT_EQ(d.mainGauge, 0.45f);

    download.bytesPerSecond = 0; // not known yet: no speed rather than a made-up one
    download.bytesDone = 5000;   // more than announced (a resumed file): the gauge stays full
    d = updateDisplay(download, strings);
    EXPECT_EQ(d.torrent, L"");
    EXPECT_FLOAT_EQ(d.mainGauge, 1.f);

    Progress done;
    done.step = Step::Done;
    d = updateDisplay(done, strings);
    EXPECT_EQ(d.main, L"Oyun güncel.");
    EXPECT_FLOAT_EQ(d.subGauge, 1.f);

    EXPECT_EQ(durationText(42), L"42 sn");
    EXPECT_EQ(durationText(185), L"3 dk 05 sn");
    EXPECT_EQ(durationText(-1), L"0 sn");
}

TEST(UpdateTexts, AFailureSaysWhereTheLogIs) {
    update::Failure failure;
    failure.kind = update::FailureKind::FileInUse;
    failure.subject = "KaldraOyun.exe";
    EXPECT_EQ(
        failureMessage(failure, defaults(), L"C:\\Oyun\\norvane.log"),
        L"Dosya başka bir program tarafından kullanılıyor: KaldraOyun.exe\n\nGünlük: C:\\Oyun\\norvane.log");
}

TEST(PatcherLogic, HeadlessAndRepairArgumentsAndTheStatesOfAnUpdatingWindow) {
    const PatcherOptions options = parsePatcherArgs({L"--HEADLESS", L"repair"});
    EXPECT_TRUE(options.headless);
    EXPECT_TRUE(options.repair);
    EXPECT_FALSE(options.preview);
    EXPECT_TRUE(parsePatcherArgs({L"--repair"}).repair);

    const PatcherScene scene =
        test::TestSkin(10, 10, 0xFF000000)
            .controls(
                "<control type=\"text\" id=\"TEXT_MAIN\"/>"
                "<control type=\"button\" id=\"BTN_START\" exec_path=\"a.exe\" enable_on_complete=\"1\"/>"
                "<control type=\"button\" id=\"BTN_REPAIR\"/>")
            .scene();
    const std::vector<ControlState> updating = startStates(scene, false, true);
    EXPECT_EQ(updating[0].text, L"Yapılandırma yükleniyor...");
    EXPECT_FALSE(updating[1].enabled); // waits for the update
    EXPECT_TRUE(updating[2].enabled);
    EXPECT_EQ(buttonAction(scene.controls[2]), ButtonAction::Repair);
}

} // namespace
} // namespace nv
