#include "core/paths.h"
#include "readers/zip_reader.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <tuple>
#include <vector>

namespace nv {
namespace {

// One skin packed by real archivers at build time (make_zip_fixtures.sh); damage starts from a Python one.
std::wstring fixture(const wchar_t* name) {
    return pathJoin(pathJoin(test::testDataDir(), L"zips"), name);
}

// Little-endian fields: read one, or write some into a copy.
uint32_t get(const Bytes& b, size_t at, int width) {
    return width ? b[at] | get(b, at + 1, width - 1) << 8 : 0;
}
using Field = std::tuple<size_t, uint32_t, int>; // offset, value, width in bytes
Bytes damaged(Bytes zip, const std::vector<Field>& fields) {
    for (auto [at, value, width] : fields)
        for (int i = 0; i < width; ++i)
            zip[at + i] = uint8_t(value >> (8 * i));
    return zip;
}

// The entry's central directory header: the directory is last, and no later name contains this one.
size_t central(const Bytes& zip, std::string_view name) {
    return std::string_view(reinterpret_cast<const char*>(zip.data()), zip.size()).rfind(name) - 46;
}

struct Read {
    bool ok = false;
    std::wstring error;
    int added = -1;
    SkinFileSet set;
};

Read readZip(const Bytes& zip, size_t fill = 0) {
    Read r;
    if (fill) r.set.putFile("fill.bmp", Bytes(fill));
    r.ok = readZipSkinBytes(r.set, zip.data(), zip.size(), &r.added, &r.error);
    return r;
}

TEST(ZipReader, ReadsTheSkinFromEveryArchiver) {
    // Set name and the packed file it must equal; folders, resource forks and unused files are left out. Only
    // the Python archives carry the last two: a UTF-8 flagged name and a code page 437 one (byte 0x9A).
    const std::map<std::string, std::wstring> expected = {{"skin.xml", L"skin.xml"},
                                                          {"main.png", L"Main.PNG"},
                                                          {"logo.png", L"img/Logo.png"},
                                                          {"empty.txt", L"empty.txt"},
                                                          {"fernwick.locale.xml", L"Fernwick.locale.xml"},
                                                          {"\u015Eerit.png", L"../extra/serit.png"},
                                                          {"\u00DCber.png", L"../extra/uber.png"}};
    for (const wchar_t* archive :
         {L"infozip_deflate.zip", L"infozip_stored.zip", L"7z_deflate.zip", L"7z_copy.zip", L"bsdtar.zip",
          L"python_stored.zip", L"python_deflated.zip"}) {
        SCOPED_TRACE(test::fsPath(archive).string());
        const bool python = std::wstring_view(archive).starts_with(L"python");
        Read r = readZip(test::readFile(fixture(archive)));
        ASSERT_TRUE(r.ok) << test::fsPath(r.error);
        EXPECT_EQ(r.set.entries.size(), python ? 7u : 5u);
        for (const auto& [name, file] : expected) {
            if (!python && file.starts_with(L"..")) continue;
            const Bytes* data = r.set.findFile(name);
            EXPECT_TRUE(data && *data == test::readFile(pathJoin(fixture(L"source/MySkin"), file))) << name;
        }
    }
}

TEST(ZipReader, TheArchiveMustFitTheCapAndHoldAnEndRecord) {
    test::TempDir dir;
    const std::wstring big = dir.file(L"big.zip");
    test::writeFile(big, Bytes{});
    std::filesystem::resize_file(test::fsPath(big), 0x10000001); // sparse, one byte over the 256 MiB cap
    Read r;
    EXPECT_FALSE(readZipSkin(r.set, big, &r.error));
    EXPECT_EQ(r.error, L"Zip okunamadi: " + big);

    EXPECT_EQ(readZip(Bytes(21)).error, L"Gecersiz zip dosyasi.");
    EXPECT_EQ(readZip(Bytes(22)).error, L"Gecersiz zip dosyasi (dizin sonu yok).");
    const Bytes good = test::readFile(fixture(L"python_stored.zip"));
    auto withComment = [&](const std::string& comment) {
        Bytes zip = damaged(good, {{good.size() - 2, uint32_t(comment.size()), 2}});
        zip.insert(zip.end(), comment.begin(), comment.end());
        return readZip(zip);
    };
    // The longest comment still lets the record be found; one more trailing byte hides it.
    EXPECT_EQ(withComment(std::string(0xFFFF, 'c')).set.entries.size(), 7u);
    EXPECT_EQ(withComment(std::string(0x10000, 'c')).error, L"Gecersiz zip dosyasi (dizin sonu yok).");
    // The match closest to the end wins: here an empty record inside the comment.
    r = withComment(std::string("PK\x05\x06", 4) + std::string(18, '\0'));
    EXPECT_TRUE(r.ok && r.set.entries.empty()) << test::fsPath(r.error);
}

TEST(ZipReader, DamageIsReportedAndEarlierEntriesStay) {
    // Set order: fernwick.locale.xml, main.png, empty.txt, skin.xml, logo.png, Serit.png, Uber.png.
    const Bytes good = test::readFile(fixture(L"python_deflated.zip"));
    const size_t e = good.size() - 22, c = central(good, "MySkin/skin.xml"), l = get(good, c + 42, 4);
    const size_t m = central(good, "MySkin/Main.PNG"), u = central(good, "MySkin/\232ber.png");
    const size_t data = l + 30 + get(good, l + 26, 2) + get(good, l + 28, 2);
    const size_t fit = SkinFileSet::kMaxTotalBytes - readZip(good).set.totalBytes();
    const uint32_t directoryEnd = uint32_t(good.size()) - get(good, e + 16, 4);
    const std::wstring xml = L"MySkin/skin.xml", dir = L"Zip dizini bozuk.";
    // Main.PNG encrypted, bzip2, far over the size limit and its local header far away: an entry that never
    // enters the set must be skipped before any of these is judged.
    const std::vector<Field> skip = {{m + 8, 1, 2}, {m + 10, 12, 2}, {m + 24, ~0u, 4}, {m + 42, ~0u, 4}};
    const struct {
        const char* what;
        std::vector<Field> damage;
        std::wstring error;
        size_t kept;
        std::string rename = {}; // Main.PNG's name in the directory, same length
        size_t fill = 0;         // bytes of one file that the set holds before the read
    } cases[] = {
        {"resource fork anywhere in the name", skip, L"", 6, "My__MACOSX1.png"},
        {"name the filter refuses", skip, L"", 6, "MySkin/Main.psd"},
        {"lower-case __macosx is a folder like any other", {}, L"", 7, "__macosx/Ma.png"},
        {"zip64 count", {{e + 10, 0xFFFF, 2}}, L"Zip64 desteklenmiyor.", 0},
        {"zip64 offset", {{e + 16, 0xFFFFFFFF, 4}}, L"Zip64 desteklenmiyor.", 0},
        {"directory up to the end", {{e + 12, directoryEnd, 4}}, L"", 7},
        {"directory one byte past the end", {{e + 12, directoryEnd + 1, 4}}, dir, 0},
        {"offset + size wraps", {{e + 10, 0, 2}, {e + 12, 0x20, 4}, {e + 16, 0xFFFFFFF0, 4}}, dir, 0},
        {"count larger than the directory", {{e + 10, 50, 2}}, dir, 7},
        {"central signature", {{c, 'X', 1}}, dir, 3},
        {"name past the end", {{c + 28, 0xFFFF, 2}}, dir, 3},
        {"encrypted first", {{c + 8, 1, 2}, {c + 24, 0x2000001, 4}}, L"Sifreli zip desteklenmiyor.", 3},
        {"too big first", {{c + 24, 0x2000001, 4}, {l, 'X', 1}}, L"Zip icinde cok buyuk dosya: " + xml, 3},
        {"32 MiB is not too big", {{c + 24, 0x2000000, 4}}, xml + L": Deflate cikti boyutu uyusmuyor.", 3},
        {"local signature", {{l, 'X', 1}}, L"Zip yerel basligi bozuk.", 3},
        {"local extra pushes the data out", {{l + 28, 0xFFFF, 2}}, L"Zip verisi bozuk.", 3},
        {"data past the end, method 12", {{c + 20, 0xFFFFFFFF, 4}, {c + 10, 12, 2}}, L"Zip verisi bozuk.", 3},
        {"stored sizes differ", {{c + 10, 0, 2}}, L"Zip verisi bozuk.", 3},
        {"method 12", {{c + 10, 12, 2}}, L"Desteklenmeyen zip sikistirma yontemi: " + xml, 3},
        {"deflate block type 3", {{data, 0x07, 1}}, xml + L": Gecersiz deflate blok turu.", 3},
        {"deflated CRC", {{c + 16, get(good, c + 16, 4) ^ 1, 4}}, L"Zip CRC hatasi: " + xml, 3},
        // Marked stored, skin.xml's deflated bytes are taken as its content; they fail the CRC.
        {"stored CRC", {{c + 10, 0, 2}, {c + 24, get(good, c + 20, 4), 4}}, L"Zip CRC hatasi: " + xml, 3},
        {"converted name", {{u + 24, 0x2000001, 4}}, L"Zip icinde cok buyuk dosya: MySkin/\u00DCber.png", 6},
        // The set may reach 64 MiB, not pass it; the one file it held before stays.
        {"set reaches 64 MiB", {}, L"", 8, "", fit},
        {"set passes 64 MiB by a byte", {}, L"Skin paketi 64 MB sinirini asiyor.", 7, "", fit + 1},
    };
    for (const auto& c : cases) {
        Bytes zip = damaged(good, c.damage);
        std::copy(c.rename.begin(), c.rename.end(), zip.begin() + m + 46);
        Read r = readZip(zip, c.fill);
        EXPECT_EQ(r.ok, c.error.empty()) << c.what;
        EXPECT_EQ(r.error, c.error) << c.what;
        EXPECT_EQ(r.set.entries.size(), c.kept) << c.what;
        EXPECT_EQ(r.added, int(c.kept) - (c.fill ? 1 : 0)) << c.what;
    }
}

} // namespace
} // namespace nv
