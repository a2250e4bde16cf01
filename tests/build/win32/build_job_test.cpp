// The build job black-box: a template made by the tests' build (foreign_template.rc) is built into a patcher
// and the result read back with the system's own resource and version readers.

#include "build/build_job.h"
#include "build/icon.h"
#include "build/pe_image.h"
#include "build/resources.h"
#include "build/version_resource.h"
#include "core/crc32.h"
#include "core/format.h"
#include "core/paths.h"
#include "core/win32/scoped_win.h"
#include "skin/package.h"
#include "tests/build/win32/build_fixtures.h"
#include "tests/support/image_files.h"
#include "tests/support/test_support.h"

#include <windows.h>

#include <imagehlp.h>

#include <gtest/gtest.h>

#include <functional>

namespace nv {
namespace {

using test::narrow;

const std::wstring kForeign = test::buildFixture(L"foreign_template.exe");

std::string key(uint16_t type, uint16_t name, uint16_t language) {
    return std::to_string(type) + "/" + std::to_string(name) + "/" + std::to_string(language);
}

struct Built {
    BuildResult result;
    std::vector<std::wstring> log;
};

Built build(const BuildRequest& request) {
    Built built;
    built.result = writePatcherExecutable(request, test::collectLine, &built.log);
    return built;
}

std::wstring versionString(const std::vector<uint8_t>& info, const wchar_t* name) {
    wchar_t* value = nullptr;
    UINT length = 0;
    std::wstring query = std::wstring(L"\\StringFileInfo\\040904b0\\") + name;
    if (!VerQueryValueW(info.data(), query.c_str(), reinterpret_cast<void**>(&value), &length))
        return L"<none>";
    return std::wstring(value, length ? length - 1 : 0);
}

// The resources of the output are exactly those of the template that a build does not replace, byte for byte,
// and the new ones; the version information reads back through the system's own reader.
TEST(BuildJob, ForeignTemplateEndState) {
    test::TempDir dir;
    const std::wstring out = dir.file(L"Kaldra.exe");
    const test::ResourceMap before = test::resourcesOf(kForeign);
    ASSERT_EQ(before.count(key(kResourceRcdata, SKIN_RESOURCE_ID, 0x409)), 1u)
        << "the fixture is not as expected";

    const Bytes ico = [] {
        Bytes bytes;
        std::wstring message;
        Bytes png = test::makePng(40, 30, 0xFF804020);
        EXPECT_TRUE(imageToIco(png.data(), png.size(), bytes, message));
        return bytes;
    }();
    std::vector<IcoEntry> entries;
    std::wstring message;
    ASSERT_TRUE(readIcoDirectory(ico, entries, message));

    for (bool withIcon : {true, false}) {
        BuildRequest request = test::requestFor(kForeign, out);
        if (withIcon) request.iconBytes = ico;
        request.version = {L"Kaldra Online", L"Kaldra Oyun", L"", L"3.2.1", L"", L"Kaldra.exe"};
        const Built built = build(request);
        ASSERT_TRUE(built.result.ok) << narrow(built.result.message);

        test::ResourceMap expected = before;
        for (auto it = expected.begin(); it != expected.end();) {
            const bool version = it->first.rfind("16/", 0) == 0;
            const bool package = it->first.rfind("10/900/", 0) == 0;
            const bool icon = it->first.rfind("3/", 0) == 0 || it->first.rfind("14/", 0) == 0;
            it = version || package || (withIcon && icon) ? expected.erase(it) : std::next(it);
        }
        if (withIcon)
            for (const ResourceItem& item : iconResources(ico, entries))
                expected[test::resourceKey(item)] = item.data;
        expected[key(kResourceVersion, 1, 0)] = buildVersionResource(request.version);
        expected[key(kResourceRcdata, SKIN_RESOURCE_ID, 0)] = request.packageBytes;

        const test::ResourceMap after = test::resourcesOf(out);
        EXPECT_EQ(after.size(), expected.size()) << "with icon: " << withIcon;
        for (const auto& [k, data] : expected) {
            auto found = after.find(k);
            ASSERT_NE(found, after.end()) << "missing " << k;
            EXPECT_TRUE(found->second == data) << "changed " << k;
        }
        for (const auto& [k, data] : after)
            EXPECT_EQ(expected.count(k), 1u) << "unexpected " << k;

        // Named resources and types by name, seen by the system's loader as well.
        EXPECT_EQ(after.count("10/\"KEEPME\"/0"), 1u);
        EXPECT_EQ(after.count("\"NVBLOB\"/1/0"), 1u);
        EXPECT_EQ(after.count("24/1/0"), 1u);

        std::vector<std::wstring> log = {L"Şablon kopyalandı."};
        if (withIcon) log.push_back(L"İkon yazıldı (6 boyut).");
        log.push_back(L"Sürüm bilgisi yazıldı.");
        log.push_back(L"Skin paketi gömüldü (" + sizeText(request.packageBytes.size()) + L").");
        log.push_back(L"Doğrulama tamam.");
        EXPECT_EQ(built.log, log);

        const Bytes file = test::readFile(out);
        EXPECT_EQ(built.result.size, file.size());
        EXPECT_EQ(built.result.crc32, Crc32::of(file.data(), file.size()));
        EXPECT_FALSE(built.result.wasSigned);
        EXPECT_FALSE(fileExists(out + L".building"));

        DWORD handle = 0;
        std::vector<uint8_t> info(GetFileVersionInfoSizeW(out.c_str(), &handle));
        ASSERT_FALSE(info.empty());
        ASSERT_TRUE(GetFileVersionInfoW(out.c_str(), 0, DWORD(info.size()), info.data()));
        EXPECT_EQ(versionString(info, L"ProductName"), L"Kaldra Online");
        EXPECT_EQ(versionString(info, L"CompanyName"), L"Kaldra Oyun");
        EXPECT_EQ(versionString(info, L"FileDescription"), L"Kaldra Online");
        EXPECT_EQ(versionString(info, L"FileVersion"), L"3.2.1.0");
        EXPECT_EQ(versionString(info, L"InternalName"), L"Kaldra");
        EXPECT_EQ(versionString(info, L"LegalCopyright"), L"(C) Kaldra Online");
        VS_FIXEDFILEINFO* fixed = nullptr;
        UINT length = 0;
        ASSERT_TRUE(VerQueryValueW(info.data(), L"\\", reinterpret_cast<void**>(&fixed), &length));
        EXPECT_EQ(fixed->dwFileVersionMS, 0x00030002u);
        EXPECT_EQ(fixed->dwFileVersionLS, 0x00010000u);
        EXPECT_EQ(fixed->dwProductVersionMS, 0x00030002u);
    }
}

// Every failure names its cause, leaves the previous output byte for byte and no temporary file.
TEST(BuildJob, FailuresLeaveThePreviousOutput) {
    test::TempDir dir;
    const std::wstring out = dir.file(L"Kaldra.exe");
    const Bytes previous = test::noiseBytes(3000, 1);
    const Bytes foreign = test::readFile(kForeign);
    auto templateOf = [&](const wchar_t* name, Bytes bytes) {
        test::writeFile(dir.file(name), bytes);
        return dir.file(name);
    };
    Bytes shortExe(foreign.begin(), foreign.begin() + 511);
    Bytes zm = foreign;
    std::swap(zm[0], zm[1]);
    Bytes mzJunk = test::noiseBytes(4096, 2);
    mzJunk[0] = 'M';
    mzJunk[1] = 'Z';
    test::writeFile(dir.file(L"in-the-way"), "a file where the output folder should be");

    const struct {
        const char* what;
        std::function<void(BuildRequest&)> change;
        std::wstring message;
        bool prefixOnly;
    } cases[] = {
        {"no template", [&](BuildRequest& r) { r.templatePath = dir.file(L"yok.exe"); },
         L"Şablon exe bulunamadı: " + dir.file(L"yok.exe") +
             L"\n(Norvane.Template.exe oluşturucunun yanında olmalı)",
         false},
        {"no output", [](BuildRequest& r) { r.outputPath.clear(); }, L"Çıktı dosyası seçilmedi.", false},
        {"no package", [](BuildRequest& r) { r.packageBytes.clear(); }, L"Skin paketi boş.", false},
        {"511 bytes", [&](BuildRequest& r) { r.templatePath = templateOf(L"short.exe", shortExe); },
         L"Şablon geçerli bir exe değil.", false},
        {"ZM", [&](BuildRequest& r) { r.templatePath = templateOf(L"zm.exe", zm); },
         L"Şablon geçerli bir exe değil.", false},
        {"MZ and noise", [&](BuildRequest& r) { r.templatePath = templateOf(L"junk.exe", mzJunk); },
         L"Kaynak güncelleme başlatılamadı: ", true},
        {"folder under a file",
         [&](BuildRequest& r) { r.outputPath = dir.file(L"in-the-way\\sub\\Kaldra.exe"); },
         L"Çıktı klasörü oluşturulamadı: " + dir.file(L"in-the-way\\sub"), false},
        {"ICO too short", [](BuildRequest& r) { r.iconBytes = {0, 0, 1, 0, 1, 0}; },
         L"İkon dosyası geçersiz.", false},
        {"ICO directory cut",
         [](BuildRequest& r) { r.iconBytes = Bytes{0, 0, 1, 0, 9, 0}, r.iconBytes.resize(40); },
         L"İkon dosyası bozuk.", false},
        {"ICO of 22 bytes pointing past the end",
         [](BuildRequest& r) {
             r.iconBytes = {0, 0, 1, 0, 1, 0, 16, 16, 0, 0, 1, 0, 32, 0, 8, 0, 0, 0, 22, 0, 0, 0};
         },
         L"İkon dosyası bozuk.", false},
    };
    for (const auto& c : cases) {
        test::writeFile(out, previous);
        BuildRequest request = test::requestFor(kForeign, out);
        c.change(request);
        const BuildResult result = writePatcherExecutable(request, nullptr, nullptr);
        EXPECT_FALSE(result.ok) << c.what;
        EXPECT_EQ(c.prefixOnly ? result.message.substr(0, c.message.size()) : result.message, c.message)
            << c.what;
        EXPECT_EQ(test::readFile(out), previous) << c.what;
        EXPECT_FALSE(fileExists(out + L".building")) << c.what;
        EXPECT_FALSE(!request.outputPath.empty() && fileExists(request.outputPath + L".building")) << c.what;
    }
}

// A process holding the output open (a running patcher): the in-use message, nothing lost.
TEST(BuildJob, OutputHeldOpenByAnotherProcess) {
    test::TempDir dir;
    const std::wstring out = dir.file(L"Açık Patcher.exe");
    const Bytes previous = test::noiseBytes(2000, 3);
    test::writeFile(out, previous);

    SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
    HANDLE inRead, inWrite, outRead, outWrite;
    ASSERT_TRUE(CreatePipe(&inRead, &inWrite, &inherit, 0));
    ASSERT_TRUE(CreatePipe(&outRead, &outWrite, &inherit, 0));
    win::ScopedHandle childIn(inRead), feed(inWrite), childOut(outWrite), answer(outRead);
    SetHandleInformation(feed.get(), HANDLE_FLAG_INHERIT, 0);
    SetHandleInformation(answer.get(), HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = childIn.get();
    startup.hStdOutput = childOut.get();
    startup.hStdError = childOut.get();
    std::wstring line = L"\"" + test::buildFixture(L"hold_file.exe") + L"\" \"" + out + L"\"";
    PROCESS_INFORMATION process{};
    ASSERT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                               &process));
    win::ScopedHandle holder(process.hProcess), thread(process.hThread);
    childIn.close();
    childOut.close();
    char said[8] = {};
    DWORD got = 0;
    ASSERT_TRUE(ReadFile(answer.get(), said, 4, &got, nullptr));
    ASSERT_EQ(std::string(said, got), "held");

    const BuildResult result = writePatcherExecutable(test::requestFor(kForeign, out), nullptr, nullptr);
    feed.close(); // lets the holder go
    WaitForSingleObject(holder.get(), 10000);

    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.message, L"Çıktı dosyası kullanımda (patcher açık olabilir): " + out);
    EXPECT_EQ(test::readFile(out), previous);
    EXPECT_FALSE(fileExists(out + L".building"));
}

TEST(BuildJob, ReadOnlyOutputIsReplaced) {
    test::TempDir dir;
    const std::wstring out = dir.file(L"Kaldra.exe");
    test::writeFile(out, "old");
    ASSERT_TRUE(SetFileAttributesW(out.c_str(), FILE_ATTRIBUTE_READONLY));
    // A read-only template must not make the copy read-only either.
    const std::wstring templ = dir.file(L"template.exe");
    ASSERT_TRUE(CopyFileW(kForeign.c_str(), templ.c_str(), FALSE));
    ASSERT_TRUE(SetFileAttributesW(templ.c_str(), FILE_ATTRIBUTE_READONLY));

    const BuildResult result = writePatcherExecutable(test::requestFor(templ, out), nullptr, nullptr);
    ASSERT_TRUE(result.ok) << narrow(result.message);
    EXPECT_EQ(GetFileAttributesW(out.c_str()) & FILE_ATTRIBUTE_READONLY, 0u);
    EXPECT_EQ(result.size, test::readFile(out).size());
    SetFileAttributesW(templ.c_str(), FILE_ATTRIBUTE_NORMAL);
}

// Signed templates lose their stale signature; data appended after the sections comes through byte for byte
// (with the signer's padding before the certificate table, which belongs to no certificate either); the
// checksum is right (as the system computes it); the same inputs give the same bytes, whenever built.
TEST(BuildJob, SignatureOverlayChecksumAndReproducibility) {
    test::TempDir dir;
    const Bytes foreign = test::readFile(kForeign);
    const Bytes overlay = test::noiseBytes(12345, 6);
    const struct {
        const char* what;
        Bytes overlay;
        bool certificate;
    } cases[] = {
        {"plain", {}, false},
        {"signed", {}, true},
        {"overlay", overlay, false},
        {"overlay and signature", overlay, true},
    };
    Bytes png = test::makePng(16, 16, 0xFF00AA00);
    Bytes ico;
    std::wstring message;
    ASSERT_TRUE(imageToIco(png.data(), png.size(), ico, message));

    // Every case is built twice, the second round a second later: a clock written anywhere would then differ.
    std::vector<Bytes> rounds[2];
    for (int round = 0; round < 2; ++round) {
        if (round == 1) Sleep(1100);
        for (const auto& c : cases) {
            const std::wstring templ = dir.file(L"template.exe");
            test::writeFile(templ, test::withOverlayAndCertificate(foreign, c.overlay, c.certificate));
            const std::wstring out = pathJoin(dir.file(round == 0 ? L"first" : L"second"), L"Kaldra.exe");
            BuildRequest request = test::requestFor(templ, out);
            request.iconBytes = ico;
            const BuildResult result = writePatcherExecutable(request, nullptr, nullptr);
            ASSERT_TRUE(result.ok) << c.what << ": " << narrow(result.message);
            rounds[round].push_back(test::readFile(out));

            DWORD headerSum = 0, computed = 0;
            ASSERT_EQ(MapFileAndCheckSumW(out.c_str(), &headerSum, &computed), DWORD(CHECKSUM_SUCCESS));
            EXPECT_EQ(headerSum, computed) << c.what;
            EXPECT_NE(headerSum, 0u) << c.what;
        }
    }

    PeLayout original;
    ASSERT_TRUE(readPeLayout(foreign, original));
    for (size_t i = 0; i < std::size(cases); ++i) {
        const auto& c = cases[i];
        const Bytes& built = rounds[0][i];
        EXPECT_TRUE(built == rounds[1][i]) << c.what << ": two builds differ";
        Bytes tail = c.overlay;
        if (c.certificate && !tail.empty())
            tail.resize((foreign.size() + tail.size() + 7) / 8 * 8 - foreign.size());
        PeLayout layout;
        ASSERT_TRUE(readPeLayout(built, layout));
        EXPECT_EQ(layout.certOffset, 0u) << c.what;
        EXPECT_EQ(layout.certSize, 0u) << c.what;
        EXPECT_EQ(built.size(), layout.sectionsEnd + tail.size()) << c.what;
        EXPECT_TRUE(std::equal(tail.begin(), tail.end(), built.end() - tail.size())) << c.what;
        EXPECT_TRUE(std::equal(built.begin() + layout.timeStampField,
                               built.begin() + layout.timeStampField + 4,
                               foreign.begin() + original.timeStampField))
            << c.what << ": the template's time stamp is kept";
    }
}

} // namespace
} // namespace nv
