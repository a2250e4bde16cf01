// Skin loading: the sample skin read from its folder and loaded as the preview loads it, and the image bomb
// (one 8192 x 8192 all-zero PNG of about 260 KB used as the background and by six buttons) next to a single
// decode of that picture. The bomb must cost about what the single decode costs, in time and in memory. And
// an archive of as many tiny entries as a zip holds, which must read in about the time of its few megabytes,
// and the composition of a skin with a hundred thousand buttons.

#include "bench/bench_harness.h"
#include "core/crc32.h"
#include "core/files.h"
#include "core/paths.h"
#include "readers/image.h"
#include "readers/zip_reader.h"
#include "skin/picture_cache.h"
#include "skin/skin_model.h"
#include "skin/skin_source.h"
#include "skin/workspace.h"

#ifdef _WIN32
#include "core/win32/gdiplus_session.h"
#endif

#include <initializer_list>
#include <string>

namespace {

using nv::Bytes;

// Writes Deflate bits: fields least significant bit first, Huffman codes most significant bit first.
class BitWriter {
public:
    BitWriter& bits(uint32_t value, int count) {
        for (int i = 0; i < count; ++i)
            put(value >> i & 1);
        return *this;
    }
    BitWriter& code(uint32_t value, int length) {
        for (int i = length; i-- > 0;)
            put(value >> i & 1);
        return *this;
    }
    Bytes take() { return std::move(out_); }

private:
    void put(uint32_t bit) {
        if (used_ % 8 == 0) out_.push_back(0);
        out_.back() |= uint8_t(bit << (used_ % 8));
        ++used_;
    }
    Bytes out_;
    size_t used_ = 0;
};

// A zlib stream of `size` zero bytes in one dynamic block whose codes make each 258-byte copy two bits long,
// Deflate's best ratio, as a good encoder writes it. Literal/length code: 285 (length 258) -> "0", literal 0
// -> "10", end of block -> "11"; one distance code (distance 1) -> "0".
Bytes zeroZlibStream(uint64_t size) {
    BitWriter w;
    w.bits(1, 1).bits(2, 2); // final block, dynamic codes
    w.bits(286 - 257, 5);    // literal/length codes up to 285
    w.bits(0, 5);            // one distance code
    w.bits(18 - 4, 4);       // code-length code lengths up to the one of symbol 1
    const int order[] = {16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1};
    for (int symbol : order) // code-length code: 18 -> "0", 1 -> "10", 2 -> "11"
        w.bits(symbol == 18 ? 1 : symbol == 1 || symbol == 2 ? 2 : 0, 3);
    auto zeros = [&](int count) { // runs of 11..138 zero lengths
        while (count > 0) {
            const int run = std::min(count, 138);
            w.code(0, 1).bits(uint32_t(run - 11), 7);
            count -= run;
        }
    };
    w.code(3, 2); // literal 0: length 2
    zeros(255);   // 1..255
    w.code(3, 2); // 256: length 2
    zeros(28);    // 257..284
    w.code(2, 2); // 285: length 1
    w.code(2, 2); // distance 0: length 1
    w.code(2, 2); // the first zero as a literal
    uint64_t left = size - 1;
    for (; left >= 258; left -= 258)
        w.code(0, 1).code(0, 1);
    for (; left > 0; --left)
        w.code(2, 2);
    w.code(3, 2); // end of block

    Bytes stream = {0x78, 0x01};
    const Bytes deflate = w.take();
    stream.insert(stream.end(), deflate.begin(), deflate.end());
    const uint32_t adler = uint32_t(size % 65521) << 16 | 1; // Adler-32 of zeros
    for (int shift = 24; shift >= 0; shift -= 8)
        stream.push_back(uint8_t(adler >> shift));
    return stream;
}

void chunk(Bytes& png, const char* type, const Bytes& body) {
    for (int shift = 24; shift >= 0; shift -= 8)
        png.push_back(uint8_t(body.size() >> shift));
    const size_t start = png.size();
    png.insert(png.end(), type, type + 4);
    png.insert(png.end(), body.begin(), body.end());
    const uint32_t crc = nv::Crc32::of(png.data() + start, png.size() - start);
    for (int shift = 24; shift >= 0; shift -= 8)
        png.push_back(uint8_t(crc >> shift));
}

// A side x side RGBA picture, every pixel transparent black.
Bytes zeroPng(uint32_t side) {
    Bytes png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    Bytes header;
    for (int i = 0; i < 2; ++i)
        for (int shift = 24; shift >= 0; shift -= 8)
            header.push_back(uint8_t(side >> shift));
    header.insert(header.end(), {8, 6, 0, 0, 0});
    chunk(png, "IHDR", header);
    chunk(png, "IDAT", zeroZlibStream(uint64_t(side) * (1 + 4ull * side)));
    chunk(png, "IEND", {});
    return png;
}

Bytes bytesOf(std::string_view text) {
    return Bytes(text.begin(), text.end());
}

nv::SkinFileSet imageBomb() {
    nv::SkinFileSet set;
    set.putFile("fernwick.url.xml", bytesOf("<urls remoteConfigPath=\"https://patch.example/cfg.xml\"/>"));
    std::string skin = "<skin background_image=\"bomb\">";
    for (int i = 0; i < 6; ++i)
        skin += "<control type=\"button\" id=\"B" + std::to_string(i) + "\" image=\"bomb.png\"/>";
    set.putFile("skin.xml", bytesOf(skin + "</skin>"));
    set.putFile("bomb.png", zeroPng(nv::kMaxImageSide));
    return set;
}

void loadOrFail(const nv::SkinFileSet& files, size_t expectedControls) {
    nv::SkinModel model;
    nv::LoadMessages messages;
    if (!nv::loadSkinModel(files, model, &messages) || model.controls.size() != expectedControls ||
        !messages.warnings.empty())
        nv::bench::fail("the skin did not load cleanly");
    nv::bench::keep(&model);
}

void sampleSkin() {
    const std::wstring folder = nv::pathJoin(nv::exeFolder(), L"sample-skin");
    nv::bench::measure("load/sample", 20, [&] {
        nv::PictureCache::shared().clear(); // a skin opened for the first time: every picture decoded
        nv::SkinFileSet files;
        std::wstring message;
        if (!nv::readSkinSource(folder, files, message))
            nv::bench::fail("sample skin not found beside the program");
        nv::SkinModel model;
        if (!nv::loadSkinModel(files, model)) nv::bench::fail("the sample skin did not load");
        nv::bench::keep(&model);
    });
}

void singleDecode() {
    const Bytes png = zeroPng(nv::kMaxImageSide);
    nv::bench::measure("decode/bomb-picture", 3, [&] {
        nv::DecodedImage image;
        if (!nv::decodeImage(png.data(), png.size(), image)) nv::bench::fail("the picture did not decode");
        nv::bench::keep(&image);
    });
}

void imageBombSkin() {
    const nv::SkinFileSet files = imageBomb();
    nv::bench::measure("load/image-bomb", 3, [&] { loadOrFail(files, 6); });
}

struct Field {
    uint32_t value;
    int width; // bytes, little-endian
};
void put(Bytes& out, std::initializer_list<Field> fields) {
    for (const Field& f : fields)
        for (int i = 0; i < f.width; ++i)
            out.push_back(uint8_t(f.value >> (8 * i)));
}

// Flags, method, time, date, CRC, sizes, name and extra lengths of an empty stored entry: the run of fields
// that a local header and its directory entry hold alike.
void putSharedFields(Bytes& out, uint32_t nameLength) {
    put(out, {{0, 2}, {0, 2}, {0, 2}, {0, 2}, {0, 4}, {0, 4}, {0, 4}, {nameLength, 2}, {0, 2}});
}

// A stored zip of `count` empty, distinct .txt entries: about 6 MB for the most entries a zip without zip64
// holds, the size of a small skin, so that the reader must not cost more per entry as the set grows.
Bytes crowdedZip(uint32_t count) {
    Bytes zip, directory;
    for (uint32_t i = 0; i < count; ++i) {
        const std::string name = "f" + std::to_string(i) + ".txt";
        const uint32_t nameLength = uint32_t(name.size()), offset = uint32_t(zip.size());
        // signature and version, then the fields both headers share
        put(zip, {{0x04034b50, 4}, {10, 2}});
        putSharedFields(zip, nameLength);
        zip.insert(zip.end(), name.begin(), name.end());
        // ... and in the directory: made by, then the shared fields, then comment length, disk, attributes
        // and the local header's offset
        put(directory, {{0x02014b50, 4}, {20, 2}, {10, 2}});
        putSharedFields(directory, nameLength);
        put(directory, {{0, 2}, {0, 2}, {0, 2}, {0, 4}, {offset, 4}});
        directory.insert(directory.end(), name.begin(), name.end());
    }
    const uint32_t directoryOffset = uint32_t(zip.size());
    zip.insert(zip.end(), directory.begin(), directory.end());
    put(zip, {{0x06054b50, 4},
              {0, 2},
              {0, 2},
              {count, 2},
              {count, 2},
              {uint32_t(directory.size()), 4},
              {directoryOffset, 4},
              {0, 2}});
    return zip;
}

void crowdedArchive() {
    const Bytes zip = crowdedZip(0xFFFE);
    nv::bench::measure("read/zip-65534-entries", 3, [&] {
        nv::SkinFileSet files;
        std::wstring message;
        if (!nv::readZipSkinBytes(files, zip.data(), zip.size(), nullptr, &message) ||
            files.entries.size() != 0xFFFE)
            nv::bench::fail("the crowded archive did not read");
        nv::bench::keep(&files);
    });
}

// A skin of as many buttons as a document may hold elements, each with its link, and one link edited: the
// composition must cost a lookup per control, not a search of every link for every control.
void manyButtons() {
    nv::SkinFileSet set;
    set.putFile("fernwick.url.xml", bytesOf("<urls remoteConfigPath=\"https://patch.example/cfg.xml\"/>"));
    std::string skin = "<skin>";
    for (int i = 0; i < 99990; ++i)
        skin +=
            "<control type=\"button\" id=\"B" + std::to_string(i) + "\" link_url=\"https://x.example/\"/>";
    set.putFile("skin.xml", bytesOf(skin + "</skin>"));
    nv::SkinWorkspace workspace;
    std::wstring message;
    if (!workspace.loadSkinSet(std::move(set), L"bench", message) ||
        !workspace.setButtonLink("B5", L"https://y/"))
        nv::bench::fail("the many-button skin did not load");
    nv::bench::measure("compose/100k-buttons", 3, [&] {
        nv::SkinFileSet composed;
        if (!workspace.composeSkinFiles(composed, message)) nv::bench::fail("the composition failed");
        nv::bench::keep(&composed);
    });
}

} // namespace

int main(int argc, char** argv) {
#ifdef _WIN32
    nv::GdiplusSession gdiplus;
#endif
    return nv::bench::runCases(argc, argv,
                               {
                                   {"load/sample", sampleSkin},
                                   {"decode/bomb-picture", singleDecode},
                                   {"load/image-bomb", imageBombSkin},
                                   {"read/zip-65534-entries", crowdedArchive},
                                   {"compose/100k-buttons", manyButtons},
                               });
}
