#include "ui/readiness.h"

#include "tests/support/test_support.h"

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

// The "İmza" row for each certificate source: what it still needs, the fix in the same line, or its own
// words once it is ready. A PFX file reads as it always has.
TEST(Readiness, SigningRowSaysWhatTheChosenSourceLacks) {
    SigningFacts present;
    present.signtoolFound = present.pfxExists = present.pluginExists = present.metadataExists = true;
    present.store = {true, true, L"Kaldra Yazılım"};
    const std::wstring thumbprint = L"3a 7f 0c 11 22 33 44 55 66 77 88 99 aa bb cc dd ee ff 00 12";
    struct Case {
        SigningSource source;
        void (*change)(SigningOptions&, SigningFacts&);
        const wchar_t* value;
        bool ready;
    } cases[] = {
        {SigningSource::PfxFile, [](auto&, auto&) {}, L"imza.pfx", true},
        {SigningSource::PfxFile, [](auto& o, auto&) { o.pfxPath = L"  "; }, L"Sertifika seçilmedi", false},
        {SigningSource::PfxFile, [](auto&, auto& f) { f.pfxExists = false; },
         L"Sertifika dosyası bulunamadı — yeniden seçin", false},
        {SigningSource::PfxFile, [](auto&, auto& f) { f.signtoolFound = false; },
         L"signtool.exe yok — Windows SDK'nın imza araçlarını kurun", false},
        {SigningSource::Store, [](auto&, auto&) {}, L"Kaldra Yazılım  •  kullanıcı deposu", true},
        {SigningSource::Store, [](auto& o, auto&) { o.machineStore = true; },
         L"Kaldra Yazılım  •  bilgisayar deposu", true},
        {SigningSource::Store, [](auto& o, auto&) { o.thumbprint.clear(); },
         L"Parmak izi girilmedi — sertifikanınkini yapıştırın", false},
        {SigningSource::Store, [](auto& o, auto&) { o.thumbprint = L"3a7f"; },
         L"Parmak izi geçersiz — 40 onaltılık rakam olmalı", false},
        {SigningSource::Store, [](auto&, auto& f) { f.store = {}; },
         L"Depoda yok — token'ı takın ya da sertifikayı kullanıcı deposuna alın", false},
        {SigningSource::Store, [](auto&, auto& f) { f.store.hasKey = false; },
         L"Özel anahtarı yok — token'ı takın, sürücüsünü kurun", false},
        {SigningSource::Store, [](auto&, auto& f) { f.signtoolFound = false; },
         L"signtool.exe yok — Windows SDK'nın imza araçlarını kurun", false},
        {SigningSource::Automatic, [](auto&, auto&) {}, L"signtool depodan seçer  •  kullanıcı deposu", true},
        {SigningSource::Automatic, [](auto&, auto& f) { f.signtoolFound = false; },
         L"signtool.exe yok — Windows SDK'nın imza araçlarını kurun", false},
        {SigningSource::Plugin, [](auto&, auto&) {}, L"Dlib.dll  •  metadata.json", true},
        {SigningSource::Plugin, [](auto& o, auto&) { o.pluginPath.clear(); },
         L"Eklenti seçilmedi — hizmetin .dll dosyasını seçin", false},
        {SigningSource::Plugin, [](auto&, auto& f) { f.pluginExists = false; },
         L"Eklenti bulunamadı — yolunu düzeltin", false},
        {SigningSource::Plugin, [](auto& o, auto&) { o.pluginMetadataPath.clear(); },
         L"Eklenti ayar dosyası seçilmedi — hizmetin dosyasını seçin", false},
        {SigningSource::Plugin, [](auto&, auto& f) { f.metadataExists = false; },
         L"Eklenti ayar dosyası bulunamadı — yolunu düzeltin", false},
        // The operator's own tool needs no signtool.
        {SigningSource::Command, [](auto&, auto& f) { f.signtoolFound = false; },
         L"Kendi komutunuz: jsign.exe", true},
        {SigningSource::Command, [](auto& o, auto&) { o.command = L" "; },
         L"İmza komutu girilmedi — komutunuzu yazın", false},
        {SigningSource::Command, [](auto& o, auto&) { o.command = L"jsign.exe --storepass %PIN% file"; },
         L"Komutta {file} yok — imzalanacak exe'nin yerine yazın", false},
        {SigningSource::Command, [](auto&, auto& f) { f.unsetVariable = L"PIN"; },
         L"%PIN% tanımlı değil — tanımlayıp oluşturucuyu yeniden açın", false},
    };
    for (const Case& c : cases) {
        SigningOptions options;
        options.enabled = true;
        options.source = c.source;
        options.pfxPath = L" C:\\c\\imza.pfx ";
        options.thumbprint = thumbprint;
        options.pluginPath = L"C:\\Hizmet\\Dlib.dll";
        options.pluginMetadataPath = L"C:\\Hizmet\\metadata.json";
        options.command = L"\"C:\\Araçlar\\jsign.exe\" --storepass %PIN% {file}";
        SigningFacts facts = present;
        c.change(options, facts);
        const ReadinessRow row = signingRow(options, facts);
        EXPECT_STREQ(row.label, L"İmza");
        EXPECT_EQ(row.value, c.value) << static_cast<int>(c.source);
        EXPECT_EQ(row.ready, c.ready) << test::fsPath(c.value);
        // Switched off, no source is asked anything.
        options.enabled = false;
        EXPECT_EQ(signingRow(options, {}).value, L"Kapalı — isteğe bağlı");
        EXPECT_TRUE(signingRow(options, {}).ready);
    }
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
