#include "ui/readiness.h"

#include <gtest/gtest.h>

namespace nv::ui {
namespace {

ReadinessInputs allReady() {
    ReadinessInputs in;
    in.skinLoaded = true;
    in.skinSource = L"C:\\skins\\gece-mavisi\\";
    in.skinWidth = 920;
    in.skinHeight = 580;
    in.configUrl = L"  https://patch.example/config.xml ";
    in.outputPath = L"C:\\Oyunlar\\Kaldra\\Kaldra.exe";
    in.outputFolderExists = true;
    in.templateExists = true;
    return in;
}

TEST(Readiness, RowsFollowTheSession) {
    struct Case {
        const char* name;
        void (*change)(ReadinessInputs&);
        size_t row;
        const wchar_t* value;
        bool ready;
    } cases[] = {
        {"skin", [](ReadinessInputs&) {}, 0, L"gece-mavisi  •  920×580", true},
        {"skin without size", [](ReadinessInputs& in) { in.skinWidth = 0; }, 0, L"gece-mavisi", true},
        {"no skin", [](ReadinessInputs& in) { in.skinLoaded = false; }, 0,
         L"Yüklenmedi — .zip ya da klasör bırakın", false},
        {"config trimmed", [](ReadinessInputs&) {}, 1, L"https://patch.example/config.xml", true},
        {"config blank", [](ReadinessInputs& in) { in.configUrl = L"  "; }, 1,
         L"Boş — patcher güncelleme alamaz", false},
        {"output", [](ReadinessInputs&) {}, 2, L"Kaldra.exe  •  C:\\Oyunlar\\Kaldra", true},
        {"output upper case", [](ReadinessInputs& in) { in.outputPath = L"D:\\x\\K.EXE"; }, 2,
         L"K.EXE  •  D:\\x", true},
        {"output not exe", [](ReadinessInputs& in) { in.outputPath = L"D:\\x\\K.exe.bak"; }, 2,
         L"K.exe.bak  •  D:\\x", false},
        {"output empty", [](ReadinessInputs& in) { in.outputPath.clear(); }, 2, L"Seçilmedi", false},
        {"output folder missing", [](ReadinessInputs& in) { in.outputFolderExists = false; }, 2,
         L"Klasör bulunamadı", false},
        {"template icon", [](ReadinessInputs&) {}, 3, L"Şablonun simgesi kullanılacak", true},
        {"chosen icon", [](ReadinessInputs& in) { in.iconPath = L"C:\\i\\kaldra.png"; }, 3, L"kaldra.png",
         true},
        {"signing off", [](ReadinessInputs&) {}, 4, L"Kapalı — isteğe bağlı", true},
        {"signing without pfx", [](ReadinessInputs& in) { in.signing = true; }, 4, L"Sertifika seçilmedi",
         false},
        {"signing with pfx",
         [](ReadinessInputs& in) {
             in.signing = true;
             in.certificatePath = L"C:\\c\\imza.pfx";
         },
         4, L"imza.pfx", true},
        {"template", [](ReadinessInputs&) {}, 5, L"Norvane.Template.exe", true},
        {"template missing", [](ReadinessInputs& in) { in.templateExists = false; }, 5,
         L"Norvane.Template.exe yok — build.bat", false},
    };
    const wchar_t* labels[] = {L"Skin", L"Yama adresi", L"Çıktı yeri", L"Simge", L"İmza", L"Şablon"};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ReadinessInputs in = allReady();
        c.change(in);
        const auto rows = readinessRows(in);
        ASSERT_EQ(rows.size(), 6u);
        EXPECT_STREQ(rows[c.row].label, labels[c.row]);
        EXPECT_EQ(rows[c.row].value, c.value);
        EXPECT_EQ(rows[c.row].ready, c.ready);
    }
}

TEST(Readiness, HeaderCountsReadyRows) {
    EXPECT_EQ(readinessHeader(readinessRows(allReady())), L"6 / 6 hazır");
    ReadinessInputs in = allReady();
    in.skinLoaded = false;
    in.configUrl.clear();
    EXPECT_EQ(readinessHeader(readinessRows(in)), L"4 / 6 hazır");
}

TEST(Readiness, SegmentStepper) {
    struct Case {
        const wchar_t* text;
        int delta, expected;
    } cases[] = {{L"abc", -1, 3}, {L"abc", 1, 5}, {L"0", -1, 1},   {L"64", 1, 64},        {L" 12 ", 1, 13},
                 {L"", 1, 5},     {L"-5", 1, 1},  {L"99", -1, 64}, {L"2147483647", 1, 64}};
    for (const Case& c : cases)
        EXPECT_EQ(stepSegment(c.text, c.delta), c.expected) << c.text << " " << c.delta;
}

TEST(Readiness, PageStateAndResultTexts) {
    // A start check that failed before any skin was loaded still shows as a failure.
    EXPECT_EQ(buildPageState(false, false, true, false), BuildPageState::Failed);

    EXPECT_EQ(durationText(0), L"< 1 sn");
    EXPECT_EQ(durationText(999), L"< 1 sn");
    EXPECT_EQ(durationText(1000), L"1 sn");
    EXPECT_EQ(durationText(61500), L"61 sn");
    EXPECT_EQ(crcText(0x9C41A07E), L"9C41A07E");
    EXPECT_EQ(crcText(0xAB), L"000000AB");
    EXPECT_EQ(sourceName(L"C:\\skins\\kaldra.zip"), L"kaldra.zip");
    EXPECT_EQ(sourceName(L"/tmp/skin/"), L"skin");
}

} // namespace
} // namespace nv::ui
