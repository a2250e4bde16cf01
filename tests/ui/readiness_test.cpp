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
    const auto ready = readinessRows(allReady());
    const std::pair<const wchar_t*, const wchar_t*> shown[] = {
        {L"Skin", L"gece-mavisi  •  920×580"},
        {L"Yama adresi", L"https://patch.example/config.xml"},
        {L"Çıktı yeri", L"Kaldra.exe  •  C:\\Oyunlar\\Kaldra"},
        {L"Simge", L"Şablonun simgesi kullanılacak"},
        {L"İmza", L"Kapalı — isteğe bağlı"},
        {L"Şablon", L"Norvane.Template.exe"}};
    ASSERT_EQ(ready.size(), 6u);
    for (size_t i = 0; i < 6; ++i) {
        EXPECT_STREQ(ready[i].label, shown[i].first);
        EXPECT_EQ(ready[i].value, shown[i].second);
        EXPECT_TRUE(ready[i].ready) << i;
    }
    EXPECT_EQ(readinessHeader(ready), L"6 / 6 hazır");

    // One change at a time, and the row it shows in.
    struct Case {
        void (*change)(ReadinessInputs&);
        size_t row;
        const wchar_t* value;
        bool ready;
    } cases[] = {
        {[](auto& in) { in.skinWidth = 0; }, 0, L"gece-mavisi", true},
        {[](auto& in) { in.skinLoaded = false; }, 0, L"Yüklenmedi — .zip ya da klasör bırakın", false},
        {[](auto& in) { in.configUrl = L"  "; }, 1, L"Boş — patcher güncelleme alamaz", false},
        {[](auto& in) { in.outputPath = L"D:\\x\\K.EXE"; }, 2, L"K.EXE  •  D:\\x", true},
        {[](auto& in) { in.outputPath = L"D:\\x\\K.exe.bak"; }, 2, L"K.exe.bak  •  D:\\x", false},
        {[](auto& in) { in.outputPath.clear(); }, 2, L"Seçilmedi", false},
        {[](auto& in) { in.outputFolderExists = false; }, 2, L"Klasör bulunamadı", false},
        {[](auto& in) { in.iconPath = L"C:\\i\\kaldra.png"; }, 3, L"kaldra.png", true},
        {[](auto& in) { in.signing = true; }, 4, L"Sertifika seçilmedi", false},
        {[](auto& in) { in.signing = true, in.certificatePath = L"C:\\c\\imza.pfx"; }, 4, L"imza.pfx", true},
        {[](auto& in) { in.templateExists = false; }, 5, L"Norvane.Template.exe yok — build.bat", false},
    };
    for (const Case& c : cases) {
        ReadinessInputs in = allReady();
        c.change(in);
        const auto rows = readinessRows(in);
        EXPECT_EQ(rows.at(c.row).value, c.value);
        EXPECT_EQ(rows.at(c.row).ready, c.ready) << c.value;
    }
    ReadinessInputs in = allReady();
    in.skinLoaded = false;
    in.configUrl.clear();
    EXPECT_EQ(readinessHeader(readinessRows(in)), L"4 / 6 hazır");
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
