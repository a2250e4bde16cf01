#include "core/crc32.h"
#include "core/paths.h"
#include "core/text.h"
#include "readers/zip_reader.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <initializer_list>
#include <map>
#include <utility>

namespace nv {
namespace {

// ---- A tiny zip writer

// Overwrites (put) or appends (fields) little-endian values; fields takes {value, width in bytes} pairs.
void put(Bytes& b, size_t at, uint32_t v, int width) {
    for (int i = 0; i < width; ++i)
        b[at + i] = uint8_t(v >> (8 * i));
}
void put16(Bytes& b, size_t at, uint32_t v) {
    put(b, at, v, 2);
}
void put32(Bytes& b, size_t at, uint32_t v) {
    put(b, at, v, 4);
}
void fields(Bytes& b, std::initializer_list<std::pair<uint32_t, int>> list) {
    for (auto [value, width] : list) {
        b.resize(b.size() + width);
        put(b, b.size() - width, value, width);
    }
}

// One fixed-Huffman Deflate block of literals only: real compressed data, small enough to write by hand.
Bytes deflateLiterals(std::string_view text) {
    Bytes out;
    uint32_t buffer = 0;
    int count = 0;
    auto bits = [&](uint32_t value, int n) { // least significant bit first
        for (int i = 0; i < n; ++i) {
            buffer |= ((value >> i) & 1u) << count;
            if (++count == 8) {
                out.push_back(uint8_t(buffer));
                buffer = 0;
                count = 0;
            }
        }
    };
    auto code = [&](uint32_t value, int n) { // Huffman codes go most significant bit first
        for (int i = n - 1; i >= 0; --i)
            bits((value >> i) & 1u, 1);
    };
    bits(1, 1); // final block
    bits(1, 2); // fixed codes
    for (unsigned char c : text) {
        if (c < 144)
            code(0x30 + c, 8);
        else
            code(0x190 + (c - 144), 9);
    }
    code(0, 7); // end of block
    if (count) out.push_back(uint8_t(buffer));
    return out;
}

struct Entry {
    std::string name; // raw bytes as stored
    std::string data;
    uint16_t method = 0; // 0 stored, 8 deflate (written by deflateLiterals)
    uint16_t flags = 0;
};

// Where the writer put each part, for tests that damage one field.
struct Layout {
    std::vector<size_t> local, central, data;
    size_t end = 0;
};

Bytes writeZip(const std::vector<Entry>& entries, Layout* layout = nullptr, std::string_view comment = {}) {
    Bytes zip, directory;
    Layout where;
    for (const Entry& e : entries) {
        const Bytes packed = e.method == 8 ? deflateLiterals(e.data) : test::bytesOf(e.data);
        const uint32_t crc = Crc32::of(e.data.data(), e.data.size());
        const uint32_t name = uint32_t(e.name.size()), local = uint32_t(zip.size());
        // Version, flags, method, time and date, CRC, sizes, name length, extra length.
        fields(zip, {{0x04034b50, 4},
                     {20, 2},
                     {e.flags, 2},
                     {e.method, 2},
                     {0, 4},
                     {crc, 4},
                     {uint32_t(packed.size()), 4},
                     {uint32_t(e.data.size()), 4},
                     {name, 2},
                     {0, 2}});
        zip.insert(zip.end(), e.name.begin(), e.name.end());
        where.local.push_back(local);
        where.data.push_back(zip.size());
        zip.insert(zip.end(), packed.begin(), packed.end());
        // The same, with the version made by first, then comment length, disk, attributes, local offset.
        where.central.push_back(directory.size());
        fields(directory, {{0x02014b50, 4},
                           {20, 2},
                           {20, 2},
                           {e.flags, 2},
                           {e.method, 2},
                           {0, 4},
                           {crc, 4},
                           {uint32_t(packed.size()), 4},
                           {uint32_t(e.data.size()), 4},
                           {name, 2},
                           {0, 2},
                           {0, 2},
                           {0, 2},
                           {0, 2},
                           {0, 4},
                           {local, 4}});
        directory.insert(directory.end(), e.name.begin(), e.name.end());
    }
    const uint32_t directoryOffset = uint32_t(zip.size()), count = uint32_t(entries.size());
    for (size_t& at : where.central)
        at += directoryOffset;
    zip.insert(zip.end(), directory.begin(), directory.end());
    where.end = zip.size();
    fields(zip, {{0x06054b50, 4},
                 {0, 4},
                 {count, 2},
                 {count, 2},
                 {uint32_t(directory.size()), 4},
                 {directoryOffset, 4},
                 {uint32_t(comment.size()), 2}});
    zip.insert(zip.end(), comment.begin(), comment.end());
    if (layout) *layout = where;
    return zip;
}

struct ReadResult {
    bool ok = false;
    std::wstring error;
    int added = -1;
    std::map<std::string, std::string> files;
    std::vector<std::string> order;
};

ReadResult readZip(const Bytes& zip, SkinFileSet set = {}) {
    ReadResult r;
    r.ok = readZipSkinBytes(set, zip.data(), zip.size(), &r.added, &r.error);
    for (const SkinEntry& e : set.entries) {
        r.files[e.name] = test::textOf(e.data);
        r.order.push_back(e.name);
    }
    return r;
}

using Names = std::vector<std::string>;

// ---- Archives from real archivers

TEST(ZipReader, ReadsTheSkinFromEveryArchiver) {
    const std::wstring folder = pathJoin(test::testDataDir(), L"zips");
    const std::wstring source = pathJoin(pathJoin(folder, L"source"), L"MySkin");
    // Set name and the file it must equal, relative to the generated source folder.
    const std::map<std::string, std::wstring> common = {
        {"skin.xml", pathJoin(source, L"skin.xml")},
        {"main.png", pathJoin(source, L"Main.PNG")},
        {"logo.png", pathJoin(pathJoin(source, L"img"), L"Logo.png")},
        {"fernwick.locale.xml", pathJoin(source, L"Fernwick.locale.xml")},
        {"empty.txt", pathJoin(source, L"empty.txt")},
    };
    std::map<std::string, std::wstring> withNames = common;
    const std::wstring extra = pathJoin(pathJoin(folder, L"source"), L"extra");
    withNames["\xC5\x9E"
              "erit.png"] = pathJoin(extra, L"serit.png"); // UTF-8 name: the capital S stays
    withNames["\xC3\x9C"
              "ber.png"] = pathJoin(extra, L"uber.png"); // code page 437 byte 0x9A

    const struct {
        const wchar_t* archive;
        const std::map<std::string, std::wstring>* expected;
    } cases[] = {
        {L"infozip_deflate.zip", &common},
        {L"infozip_stored.zip", &common},
        {L"7z_deflate.zip", &common},
        {L"7z_copy.zip", &common},
        {L"bsdtar.zip", &common},
        {L"python_stored.zip", &withNames},
        {L"python_deflated.zip", &withNames},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(test::fsPath(c.archive).string());
        SkinFileSet set;
        std::wstring error;
        int added = -1;
        ASSERT_TRUE(readZipSkin(set, pathJoin(folder, c.archive), &error, &added)) << test::fsPath(error);
        EXPECT_EQ(error, L"");
        EXPECT_EQ(added, int(c.expected->size()));
        ASSERT_EQ(set.entries.size(), c.expected->size());
        for (const auto& [name, file] : *c.expected) {
            const Bytes* data = set.findFile(name);
            ASSERT_NE(data, nullptr) << name;
            EXPECT_TRUE(*data == test::readFile(file)) << name;
        }
    }
}

TEST(ZipReader, MissingOrOversizedArchiveIsNotRead) {
    test::TempDir dir;
    const std::wstring missing = dir.file(L"yok.zip");
    const std::wstring big = dir.file(L"big.zip");
    test::writeFile(big, Bytes{});
    std::filesystem::resize_file(test::fsPath(big), 0x10000001); // sparse, one byte over the cap
    for (const std::wstring& path : {missing, big}) {
        SkinFileSet set;
        std::wstring error;
        EXPECT_FALSE(readZipSkin(set, path, &error));
        EXPECT_EQ(error, L"Zip okunamadi: " + path);
    }
}

// ---- Names

TEST(ZipReader, EntriesThatAreNeverUsedAreSkippedBeforeAnyCheck) {
    // Every one of these would fail every later check, so a skip that comes too late shows as an error.
    const std::string skipped[] = {
        "MySkin/",
        "MySkin\\",
        "Folder.png/",
        "__MACOSX/MySkin/._skin.xml",
        "__MACOSX/notes.txt",
        "MySkin/__MACOSX.png",
        "readme.md",
        "MySkin/photo.psd",
        "MySkin/._skin.xml",
        "Thumbs.db",
        "MySkin/desktop.ini",
    };
    for (const std::string& name : skipped) {
        Layout at;
        Bytes zip = writeZip({{name, "data", 0, 0}}, &at);
        put16(zip, at.central[0] + 8, 0x0001);     // encrypted
        put16(zip, at.central[0] + 10, 12);        // bzip2
        put32(zip, at.central[0] + 24, 0xFFFFFFF); // far over the size limit
        put32(zip, at.central[0] + 42, 0x7FFFFFFF);
        ReadResult r = readZip(zip);
        EXPECT_TRUE(r.ok) << name << ": " << test::fsPath(r.error);
        EXPECT_EQ(r.added, 0) << name;
        EXPECT_TRUE(r.files.empty()) << name;
    }
}

TEST(ZipReader, NamesAreConvertedByTheirFlagAndFlattened) {
    const struct {
        std::string raw;
        uint16_t flags;
        std::string setName;
        std::wstring fullName; // as messages show it
    } cases[] = {
        {"MySkin/img/Logo.PNG", 0, "logo.png", L"MySkin/img/Logo.PNG"},
        {"MySkin\\Skin.XML", 0, "skin.xml", L"MySkin\\Skin.XML"},
        {"\xC5\x9E"
         "erit.png",
         0x800,
         "\xC5\x9E"
         "erit.png",
         L"\u015Eerit.png"},
        // The same bytes without the flag are two code page 437 characters.
        {"\xC5\x9E"
         "erit.png",
         0,
         "\xE2\x94\xBC\xE2\x82\xA7"
         "erit.png",
         L"\u253C\u20A7erit.png"},
        {"Dir/\x9A"
         "BER.PNG",
         0,
         "\xC3\x9C"
         "ber.png",
         L"Dir/\u00DCBER.PNG"},
        // Lower-case "__macosx" is an ordinary folder name.
        {"__macosx/A.png", 0, "a.png", L"__macosx/A.png"},
    };
    for (const auto& c : cases) {
        ReadResult r = readZip(writeZip({{c.raw, "x", 0, c.flags}}));
        EXPECT_TRUE(r.ok) << c.raw;
        EXPECT_EQ(r.order, Names{c.setName}) << c.raw;

        // The message names the entry by its full converted name, folders and case kept.
        Layout at;
        Bytes zip = writeZip({{c.raw, "x", 0, c.flags}}, &at);
        put32(zip, at.central[0] + 24, 0x2000001);
        EXPECT_EQ(readZip(zip).error, L"Zip icinde cok buyuk dosya: " + c.fullName) << c.raw;
    }
}

TEST(ZipReader, LaterEntriesReplaceEarlierOnesAndExistingEntriesStay) {
    SkinFileSet set;
    set.putFile("keep.txt", test::bytesOf("kept"));
    set.putFile("logo.png", test::bytesOf("old"));
    ReadResult r = readZip(writeZip({{"a/Logo.png", "first"}, {"b/LOGO.png", "second", 8}, {"c.gif", "c"}}),
                           std::move(set));
    EXPECT_TRUE(r.ok);
    EXPECT_EQ(r.added, 3); // every file put counts, replacements included
    EXPECT_EQ(r.order, (Names{"keep.txt", "logo.png", "c.gif"}));
    EXPECT_EQ(r.files["logo.png"], "second");
    EXPECT_EQ(r.files["keep.txt"], "kept");
}

// ---- The end record

TEST(ZipReader, FindsTheEndRecordBehindAComment) {
    const std::vector<Entry> entries = {{"skin.xml", "<skin/>"}};
    EXPECT_EQ(readZip(writeZip(entries, nullptr, "a comment")).order, Names{"skin.xml"});

    // The longest comment still lets the record be found; one more trailing byte hides it.
    Bytes longest = writeZip(entries, nullptr, std::string(0xFFFF, 'c'));
    EXPECT_EQ(readZip(longest).order, Names{"skin.xml"});
    longest.push_back('c');
    EXPECT_EQ(readZip(longest).error, L"Gecersiz zip dosyasi (dizin sonu yok).");

    // The match closest to the end wins: here an empty record inside the comment.
    std::string fake = std::string("PK\x05\x06", 4) + std::string(18, '\0');
    ReadResult r = readZip(writeZip(entries, nullptr, fake));
    EXPECT_TRUE(r.ok);
    EXPECT_TRUE(r.files.empty());
}

// ---- Damaged archives

TEST(ZipReader, DamageIsReportedAndEarlierEntriesStay) {
    // 0 a folder, 1 a stored picture, 2 a stored target, 3 a deflated target.
    const std::vector<Entry> entries = {
        {"MySkin/", ""},
        {"MySkin/a.png", "AAAA"},
        {"MySkin/skin.xml", "<skin background_image=\"main\"/>"},
        {"MySkin/logo.gif", "GIF89a logo logo logo logo", 8},
    };
    Layout at;
    const Bytes good = writeZip(entries, &at);
    const size_t c2 = at.central[2], c3 = at.central[3], end = at.end;
    const Names none, first{"a.png"}, two{"a.png", "skin.xml"}, all{"a.png", "skin.xml", "logo.gif"};
    const std::wstring xml = L"MySkin/skin.xml", gif = L"MySkin/logo.gif";
    ASSERT_EQ(readZip(good).order, all);

    const struct {
        const char* what;
        std::function<void(Bytes&)> damage;
        std::wstring error;
        Names kept;
    } cases[] = {
        {"21 bytes", [](Bytes& b) { b.assign(21, 0); }, L"Gecersiz zip dosyasi.", none},
        {"22 zero bytes", [](Bytes& b) { b.assign(22, 0); }, L"Gecersiz zip dosyasi (dizin sonu yok).", none},
        {"zip64 count", [&](Bytes& b) { put16(b, end + 10, 0xFFFF); }, L"Zip64 desteklenmiyor.", none},
        {"zip64 offset", [&](Bytes& b) { put32(b, end + 16, 0xFFFFFFFF); }, L"Zip64 desteklenmiyor.", none},
        {"directory one byte past the end",
         [&](Bytes& b) { put32(b, end + 12, uint32_t(b.size() - at.central[0] + 1)); }, L"Zip dizini bozuk.",
         none},
        {"directory up to the very end",
         [&](Bytes& b) { put32(b, end + 12, uint32_t(b.size() - at.central[0])); }, L"", all},
        {"offset + size wraps in 32 bits", // with no headers to walk, only the sum can refuse it
         [&](Bytes& b) {
             put16(b, end + 10, 0);
             put32(b, end + 16, 0xFFFFFFF0);
             put32(b, end + 12, 0x20);
         },
         L"Zip dizini bozuk.", none},
        {"fewer than 46 bytes for a header",
         [&](Bytes& b) {
             put32(b, end + 16, uint32_t(b.size() - 45));
             put32(b, end + 12, 0);
         },
         L"Zip dizini bozuk.", none},
        {"count larger than the directory", [&](Bytes& b) { put16(b, end + 10, 5); }, L"Zip dizini bozuk.",
         all},
        {"central signature", [&](Bytes& b) { b[c2] = 'X'; }, L"Zip dizini bozuk.", first},
        {"name past the end", [&](Bytes& b) { put16(b, c2 + 28, 0xFFFF); }, L"Zip dizini bozuk.", first},
        {"encrypted", [&](Bytes& b) { put16(b, c2 + 8, 0x0001); }, L"Sifreli zip desteklenmiyor.", first},
        {"encrypted and too big",
         [&](Bytes& b) {
             put16(b, c2 + 8, 1);
             put32(b, c2 + 24, 0x2000001);
         },
         L"Sifreli zip desteklenmiyor.", first},
        {"declared size over 32 MiB", [&](Bytes& b) { put32(b, c2 + 24, 0x2000001); },
         L"Zip icinde cok buyuk dosya: " + xml, first},
        {"too big with a bad local header",
         [&](Bytes& b) {
             put32(b, c2 + 24, 0x2000001);
             put32(b, c2 + 42, 0xFFFFFF);
         },
         L"Zip icinde cok buyuk dosya: " + xml, first},
        {"local signature", [&](Bytes& b) { b[at.local[2]] = 'X'; }, L"Zip yerel basligi bozuk.", first},
        {"local header past the end", [&](Bytes& b) { put32(b, c2 + 42, uint32_t(b.size() - 29)); },
         L"Zip yerel basligi bozuk.", first},
        {"local header offset at 4 GiB", [&](Bytes& b) { put32(b, c2 + 42, 0xFFFFFFF0); },
         L"Zip yerel basligi bozuk.", first},
        {"local extra pushes the data out", [&](Bytes& b) { put16(b, at.local[2] + 28, 0xFFFF); },
         L"Zip verisi bozuk.", first},
        {"compressed size past the end",
         [&](Bytes& b) {
             put32(b, c2 + 20, 0xFFFFFFFF);
             put32(b, c2 + 24, 0x100);
         },
         L"Zip verisi bozuk.", first},
        {"data past the end before the method",
         [&](Bytes& b) {
             put32(b, c2 + 20, 0x10000);
             put16(b, c2 + 10, 12);
         },
         L"Zip verisi bozuk.", first},
        {"stored sizes differ", [&](Bytes& b) { put32(b, c2 + 24, uint32_t(entries[2].data.size() + 1)); },
         L"Zip verisi bozuk.", first},
        {"method 12", [&](Bytes& b) { put16(b, c2 + 10, 12); },
         L"Desteklenmeyen zip sikistirma yontemi: " + xml, first},
        {"stored CRC", [&](Bytes& b) { b[c2 + 16] ^= 1; }, L"Zip CRC hatasi: " + xml, first},
        {"deflate block type", [&](Bytes& b) { b[at.data[3]] |= 0x07; },
         gif + L": Gecersiz deflate blok turu.", two},
        {"deflate shorter than declared", [&](Bytes& b) { put32(b, c3 + 24, 27); },
         gif + L": Deflate cikti boyutu uyusmuyor.", two},
        {"deflate CRC", [&](Bytes& b) { b[c3 + 19] ^= 0x80; }, L"Zip CRC hatasi: " + gif, two},
    };
    for (const auto& c : cases) {
        Bytes zip = good;
        c.damage(zip);
        ReadResult r = readZip(zip);
        EXPECT_EQ(r.ok, c.error.empty()) << c.what;
        EXPECT_EQ(r.error, c.error) << c.what;
        EXPECT_EQ(r.order, c.kept) << c.what;
        EXPECT_EQ(r.added, int(c.kept.size())) << c.what;
    }
}

TEST(ZipReader, AnyCorruptedDeflateBitIsCaught) {
    const std::string text = "<skin background_image=\"main\"><button id=\"start\"/></skin>\n";
    Layout at;
    const Bytes good = writeZip({{"Skin/skin.xml", text, 8}}, &at);
    // Header, one 8-bit code per ASCII literal, end of block; the bits after it are padding.
    const size_t usedBits = 3 + 8 * text.size() + 7;
    for (size_t bit = 0; bit < usedBits; ++bit) {
        Bytes zip = good;
        zip[at.data[0] + bit / 8] ^= uint8_t(1u << (bit % 8));
        ReadResult r = readZip(zip);
        EXPECT_FALSE(r.ok) << bit;
        const bool decoder = r.error.rfind(L"Skin/skin.xml: ", 0) == 0 && r.error.size() > 15;
        EXPECT_TRUE(decoder || r.error == L"Zip CRC hatasi: Skin/skin.xml")
            << bit << ": " << test::fsPath(r.error);
    }
}

TEST(ZipReader, SizeLimits) {
    // A file of exactly 32 MiB is accepted.
    const std::string exact(0x2000000, 'z');
    ReadResult r = readZip(writeZip({{"big.bmp", exact}}));
    EXPECT_TRUE(r.ok) << test::fsPath(r.error);
    EXPECT_EQ(r.files["big.bmp"].size(), exact.size());

    // The set may reach 64 MiB exactly; the next byte is refused and what came before stays.
    SkinFileSet set;
    set.putFile("fill.bmp", Bytes(0x4000000 - 5));
    r = readZip(writeZip({{"a.png", "12345"}, {"b.png", "6"}}), std::move(set));
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(r.error, L"Skin paketi 64 MB sinirini asiyor.");
    EXPECT_EQ(r.order, (Names{"fill.bmp", "a.png"}));
    EXPECT_EQ(r.added, 1);
}

} // namespace
} // namespace nv
