// The build job black-box: a template made by the tests' build (fixtures/foreign_template.rc) is built into a
// patcher and read back with the system's own resource and version readers.

#include "packager/build_job.h"
#include "packager/icon.h"
#include "packager/pe_image.h"
#include "packager/resources.h"
#include "packager/version_resource.h"
#include "core/crc32.h"
#include "core/paths.h"
#include "core/text.h"
#include "core/win32/scoped_win.h"
#include "tests/packager/win32/build_fixtures.h"
#include "tests/support/image_files.h"
#include "tests/support/test_support.h"

#include <windows.h>

#include <imagehlp.h>

#include <gtest/gtest.h>

#include <functional>

namespace nv {
namespace {

const std::wstring kForeign = test::buildFixture(L"foreign_template.exe");

Bytes icoOf(const Bytes& png) {
    Bytes ico;
    std::wstring message;
    EXPECT_TRUE(imageToIco(png.data(), png.size(), ico, message));
    return ico;
}

std::wstring versionString(const std::wstring& path, const std::wstring& name) {
    DWORD handle = 0;
    std::vector<uint8_t> info(GetFileVersionInfoSizeW(path.c_str(), &handle) + 1);
    wchar_t* value = nullptr;
    UINT length = 0;
    if (!GetFileVersionInfoW(path.c_str(), 0, DWORD(info.size()), info.data()) ||
        !VerQueryValueW(info.data(), (L"\\StringFileInfo\\040904b0\\" + name).c_str(),
                        reinterpret_cast<void**>(&value), &length))
        return L"<none>";
    return std::wstring(value, length ? length - 1 : 0);
}

// Exactly the template's resources that a build does not replace, byte for byte, and the new ones: one skin
// package (language 0), one version block, and the icon's images and group when an icon is given. The
// template and the old output are read-only, which neither the copy nor the replacement may inherit or trip
// over.
TEST(BuildJob, ForeignTemplateEndState) {
    test::TempDir dir;
    const std::wstring templ = dir.file(L"template.exe"), out = dir.file(L"Kaldra.exe");
    ASSERT_TRUE(CopyFileW(kForeign.c_str(), templ.c_str(), FALSE));
    const test::ResourceMap before = test::resourcesOf(templ);
    ASSERT_EQ(before.count("10/900/1033") + before.count("16/1/1031") + before.count("10/\"KEEPME\"/0") +
                  before.count("\"NVBLOB\"/1/0") + before.count("24/1/0") + before.count("14/2/0"),
              6u);
    SetFileAttributesW(templ.c_str(), FILE_ATTRIBUTE_READONLY);
    const Bytes ico = icoOf(test::makePng(40, 30, 0xFF804020));
    std::vector<IcoEntry> entries;
    std::wstring message;
    ASSERT_TRUE(readIcoDirectory(ico, entries, message));

    for (bool withIcon : {true, false}) {
        test::writeFile(out, "old");
        SetFileAttributesW(out.c_str(), FILE_ATTRIBUTE_READONLY);
        BuildRequest request = test::requestFor(templ, out);
        if (withIcon) request.iconBytes = ico;
        request.version = {L"Kaldra Online", L"Kaldra Oyun", L"", L"3.2.1", L"", L"Kaldra.exe"};
        const BuildResult result = writePatcherExecutable(request, nullptr, nullptr);
        ASSERT_TRUE(result.ok) << wideToUtf8(result.message);

        test::ResourceMap expected;
        for (const auto& [key, data] : before) {
            const bool icon = key.starts_with("3/") || key.starts_with("14/");
            if (!key.starts_with("16/") && !key.starts_with("10/900/") && !(withIcon && icon))
                expected[key] = data;
        }
        for (const ResourceItem& item : withIcon ? iconResources(ico, entries) : std::vector<ResourceItem>())
            expected[std::to_string(item.type.id) + "/" + std::to_string(item.name.id) + "/0"] = item.data;
        expected["16/1/0"] = buildVersionResource(request.version);
        expected["10/900/0"] = request.packageBytes;
        const test::ResourceMap after = test::resourcesOf(out);
        for (const auto& [key, data] : expected)
            EXPECT_TRUE(after.count(key) && after.at(key) == data) << key;
        for (const auto& [key, data] : after)
            EXPECT_EQ(expected.count(key), 1u) << "unexpected " << key;

        const Bytes file = test::readFile(out);
        EXPECT_EQ(result.size, file.size());
        EXPECT_EQ(result.crc32, Crc32::of(file.data(), file.size()));
        EXPECT_FALSE(result.wasSigned || fileExists(out + L".building"));
        EXPECT_EQ(GetFileAttributesW(out.c_str()) & FILE_ATTRIBUTE_READONLY, 0u);
        const std::pair<const wchar_t*, const wchar_t*> strings[] = {{L"ProductName", L"Kaldra Online"},
                                                                     {L"CompanyName", L"Kaldra Oyun"},
                                                                     {L"FileDescription", L"Kaldra Online"},
                                                                     {L"FileVersion", L"3.2.1.0"},
                                                                     {L"InternalName", L"Kaldra"}};
        for (const auto& [name, value] : strings)
            EXPECT_EQ(versionString(out, name), value);
    }
    SetFileAttributesW(templ.c_str(), FILE_ATTRIBUTE_NORMAL);
}

// Every failure names its cause and leaves the previous output byte for byte and no temporary file, also when
// the output is held open (by a running patcher; sharing is decided per handle, so this process can hold it).
TEST(BuildJob, FailuresLeaveThePreviousOutput) {
    test::TempDir dir;
    const std::wstring out = dir.file(L"Kaldra.exe");
    const Bytes previous = test::noiseBytes(3000, 1), foreign = test::readFile(kForeign);
    auto templateOf = [&](const wchar_t* name, Bytes bytes) {
        test::writeFile(dir.file(name), bytes);
        return dir.file(name);
    };
    Bytes zm = foreign, mzNoise = test::noiseBytes(4096, 2);
    std::swap(zm[0], zm[1]);
    mzNoise[0] = 'M';
    mzNoise[1] = 'Z';
    test::writeFile(dir.file(L"in-the-way"), "a file where the output folder should be");
    const std::wstring held = L"Çıktı dosyası kullanımda (patcher açık olabilir): " + out;
    win::ScopedHandle holder;
    test::FakeSigntool signtool; // reports success and signs nothing
    test::writeFile(dir.file(L"imza.pfx"), "pfx");

    const std::pair<std::function<void(BuildRequest&)>, std::wstring> cases[] = {
        {[&](BuildRequest& r) { r.templatePath = dir.file(L"yok.exe"); },
         L"Şablon exe bulunamadı: " + dir.file(L"yok.exe") +
             L"\n(Norvane.Template.exe oluşturucunun yanında olmalı)"},
        {[](BuildRequest& r) { r.outputPath.clear(); }, L"Çıktı dosyası seçilmedi."},
        {[](BuildRequest& r) { r.packageBytes.clear(); }, L"Skin paketi boş."},
        {[&](BuildRequest& r) {
             r.templatePath = templateOf(L"511.exe", Bytes(foreign.begin(), foreign.begin() + 511));
         },
         L"Şablon geçerli bir exe değil."},
        {[&](BuildRequest& r) { r.templatePath = templateOf(L"zm.exe", zm); },
         L"Şablon geçerli bir exe değil."},
        {[&](BuildRequest& r) { r.templatePath = templateOf(L"noise.exe", mzNoise); },
         L"Kaynak güncelleme başlatılamadı: "},
        {[&](BuildRequest& r) { r.outputPath = dir.file(L"in-the-way\\sub\\Kaldra.exe"); },
         L"Çıktı klasörü oluşturulamadı: " + dir.file(L"in-the-way\\sub")},
        {[](BuildRequest& r) { r.iconBytes = {0, 0, 1, 0, 9, 0}, r.iconBytes.resize(40); },
         L"İkon dosyası bozuk."},
        {[&](BuildRequest&) {
             holder.reset(
                 CreateFileW(out.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
         },
         held},
        {[&](BuildRequest& r) {
             r.signing.enabled = true;
             r.signing.pfxPath = dir.file(L"imza.pfx");
             r.signing.signtoolPath = test::FakeSigntool::path();
         },
         L"İmzalama başarılı göründü ama dosyada imza yok."},
    };
    for (const auto& [change, message] : cases) {
        test::writeFile(out, previous);
        BuildRequest request = test::requestFor(kForeign, out);
        change(request);
        const BuildResult result = writePatcherExecutable(request, nullptr, nullptr);
        holder.close();
        EXPECT_FALSE(result.ok) << wideToUtf8(message);
        EXPECT_EQ(result.message.substr(0, message.size()), message);
        EXPECT_EQ(message.back() == L' ', result.message.size() > message.size())
            << "system text after the colon";
        EXPECT_EQ(test::readFile(out), previous) << wideToUtf8(message);
        EXPECT_FALSE(fileExists(out + L".building")) << wideToUtf8(message);
    }
}

// The signature that the result reports is the one read back from the finished file (the stand-in "signs" by
// putting a file that osslsigncode signed in place of the one it was given).
TEST(BuildJob, ASignedBuildReportsTheSignatureItReadBack) {
    test::TempDir dir;
    test::FakeSigntool signtool;
    const std::wstring out = dir.file(L"Kaldra.exe"),
                       signedFile = test::buildFixture(L"signed\\signed-rfc3161.exe");
    signtool.set(L"COPY", signedFile);
    BuildRequest request = test::requestFor(kForeign, out);
    request.signing.enabled = true;
    request.signing.source = SigningSource::Automatic;
    request.signing.signtoolPath = test::FakeSigntool::path();
    request.signing.timestampUrl = L"http://ts.example";
    std::vector<std::wstring> log;
    const BuildResult result = writePatcherExecutable(request, test::collectLine, &log);
    ASSERT_TRUE(result.ok) << wideToUtf8(result.message);
    EXPECT_TRUE(result.wasSigned);
    EXPECT_EQ(log.back(), L"İmza eklendi.");
    const test::SignedFixtures fixtures = test::signedFixtures();
    EXPECT_EQ(result.signature.subject, fixtures.subject);
    EXPECT_EQ(result.signature.thumbprint, fixtures.thumbprint);
    EXPECT_EQ(result.signature.timestamp, TimestampKind::Rfc3161);
    EXPECT_EQ(test::readFile(out), test::readFile(signedFile));
    EXPECT_FALSE(fileExists(out + L".building"));
}

// Signed templates lose their stale signature; what follows the sections and is no certificate comes through
// byte for byte (the signer's padding before the table included); the checksum is what the system computes;
// the template's time stamp stays; and the same inputs give the same bytes a second later.
TEST(BuildJob, SignatureOverlayChecksumAndReproducibility) {
    test::TempDir dir;
    const Bytes foreign = test::readFile(kForeign), overlay = test::noiseBytes(12345, 6);
    const Bytes ico = icoOf(test::makePng(16, 16, 0xFF00AA00));
    const std::pair<Bytes, bool> cases[] = {{{}, false}, {{}, true}, {overlay, false}, {overlay, true}};
    std::vector<Bytes> rounds[2];
    for (int round = 0; round < 2; ++round) {
        if (round == 1) Sleep(1100);
        for (const auto& [tail, certificate] : cases) {
            const std::wstring templ = dir.file(L"template.exe");
            test::writeFile(templ, test::withOverlayAndCertificate(foreign, tail, certificate));
            const std::wstring out = pathJoin(dir.file(round == 0 ? L"first" : L"second"), L"Kaldra.exe");
            BuildRequest request = test::requestFor(templ, out);
            request.iconBytes = ico;
            const BuildResult result = writePatcherExecutable(request, nullptr, nullptr);
            ASSERT_TRUE(result.ok) << wideToUtf8(result.message);
            rounds[round].push_back(test::readFile(out));
            DWORD headerSum = 0, computed = 0;
            ASSERT_EQ(MapFileAndCheckSumW(out.c_str(), &headerSum, &computed), DWORD(CHECKSUM_SUCCESS));
            EXPECT_TRUE(headerSum == computed && headerSum != 0);
        }
    }
    PeLayout original;
    ASSERT_TRUE(readPeLayout(foreign, original));
    for (size_t i = 0; i < std::size(cases); ++i) {
        const Bytes& built = rounds[0][i];
        EXPECT_TRUE(built == rounds[1][i]) << "case " << i << ": two builds differ";
        Bytes tail = cases[i].first;
        if (cases[i].second && !tail.empty())
            tail.resize((foreign.size() + tail.size() + 7) / 8 * 8 - foreign.size());
        PeLayout layout;
        ASSERT_TRUE(readPeLayout(built, layout));
        EXPECT_EQ(layout.certOffset | layout.certSize, 0u) << i;
        EXPECT_EQ(built.size(), layout.sectionsEnd + tail.size()) << i;
        EXPECT_TRUE(std::equal(tail.begin(), tail.end(), built.end() - tail.size())) << i;
        EXPECT_TRUE(std::equal(built.begin() + layout.timeStampField,
                               built.begin() + layout.timeStampField + 4,
                               foreign.begin() + original.timeStampField))
            << i;
    }
}

} // namespace
} // namespace nv
