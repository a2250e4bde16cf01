#include "packager/pe_image.h"

#include "core/byte_order.h"
#include <algorithm>
#include <cstring>
#include <set>

namespace nv {
namespace {

constexpr uint32_t kCertificateEntry = 4;
constexpr uint32_t kResourceEntry = 2;

// The certificate table, when its entry points at bytes after the sections that the file really holds.
bool hasCertificateTable(const PeLayout& layout, size_t size) {
    return layout.certSize != 0 && layout.certOffset >= layout.sectionsEnd &&
           uint64_t(layout.certOffset) + layout.certSize <= size;
}

// Resource directories carry a time stamp that some writers fill with the clock; a build clears them so that
// the same inputs give the same bytes. The walk stays inside the section that holds the resources and visits
// each directory once, whatever the offsets say.
void clearResourceTimeStamps(uint8_t* image, const PeLayout& layout) {
    if (layout.resourceRva == 0) return;
    const PeSection* home = nullptr;
    for (const PeSection& s : layout.sections)
        if (layout.resourceRva >= s.virtualAddress && layout.resourceRva - s.virtualAddress < s.rawSize)
            home = &s;
    if (!home) return;
    const size_t base = home->rawOffset + (layout.resourceRva - home->virtualAddress);
    const size_t end = size_t(home->rawOffset) + home->rawSize;

    std::set<size_t> seen;
    std::vector<std::pair<size_t, int>> pending{{base, 0}};
    while (!pending.empty() && seen.size() < 0x10000) {
        auto [at, depth] = pending.back();
        pending.pop_back();
        if (at + 16 > end || !seen.insert(at).second) continue;
        writeLe32(&image[at + 4], 0);
        if (depth == 2) continue; // type, name, language: the third level holds data entries
        size_t count = size_t(readLe16(&image[at + 12])) + readLe16(&image[at + 14]);
        for (size_t i = 0; i < count && at + 16 + 8 * (i + 1) <= end; ++i) {
            uint32_t target = readLe32(&image[at + 16 + 8 * i + 4]);
            if (target & 0x80000000u) pending.push_back({base + (target & 0x7FFFFFFFu), depth + 1});
        }
    }
}

} // namespace

bool readPeLayout(const uint8_t* data, size_t size, PeLayout& layout) {
    layout = PeLayout();
    if (size < 0x40 || data[0] != 'M' || data[1] != 'Z') return false;
    const uint64_t pe = readLe32(data + 0x3C);
    if (pe + 24 > size || std::memcmp(data + pe, "PE\0\0", 4) != 0) return false;

    const uint8_t* coff = data + pe + 4;
    const unsigned sectionCount = readLe16(coff + 2);
    const unsigned optionalSize = readLe16(coff + 16);
    const uint64_t optional = pe + 24;
    if (optional + optionalSize > size || optionalSize < 2) return false;

    const uint16_t magic = readLe16(data + optional);
    uint64_t countField, directories;
    if (magic == 0x10B) {
        countField = 92;
        directories = 96;
    } else if (magic == 0x20B) {
        countField = 108;
        directories = 112;
    } else {
        return false;
    }
    if (countField + 4 > optionalSize) return false;
    const uint32_t headersSize = readLe32(data + optional + 60);
    const uint64_t entryCount =
        std::min<uint64_t>(readLe32(data + optional + countField), (optionalSize - directories) / 8);

    layout.timeStampField = size_t(pe + 8);
    layout.symbolPointerField = size_t(pe + 12);
    layout.checksumField = size_t(optional + 64);
    if (entryCount > kResourceEntry)
        layout.resourceRva = readLe32(data + optional + directories + 8 * kResourceEntry);
    if (entryCount > kCertificateEntry) {
        layout.certDirectoryField = size_t(optional + directories + 8 * kCertificateEntry);
        layout.certOffset = readLe32(data + layout.certDirectoryField);
        layout.certSize = readLe32(data + layout.certDirectoryField + 4);
    }

    const uint64_t table = optional + optionalSize;
    if (table + 40ull * sectionCount > size || headersSize > size) return false;
    layout.sectionsEnd = std::max<uint64_t>(headersSize, table + 40ull * sectionCount);
    for (unsigned i = 0; i < sectionCount; ++i) {
        const uint8_t* s = data + table + 40 * i;
        PeSection section{readLe32(s + 12), readLe32(s + 8), readLe32(s + 20), readLe32(s + 16)};
        if (section.rawSize != 0) {
            uint64_t rawEnd = uint64_t(section.rawOffset) + section.rawSize;
            if (rawEnd > size) return false;
            layout.sectionsEnd = std::max(layout.sectionsEnd, rawEnd);
        }
        layout.sections.push_back(section);
    }
    return true;
}

size_t peRvaToOffset(const PeLayout& layout, uint32_t rva) {
    for (const PeSection& s : layout.sections)
        if (rva >= s.virtualAddress && rva - s.virtualAddress < s.rawSize)
            return size_t(s.rawOffset) + (rva - s.virtualAddress);
    return SIZE_MAX;
}

uint32_t peChecksum(const uint8_t* data, size_t size, size_t checksumField) {
    // The running end-around-carry sum of 16-bit words is the sum modulo 0xFFFF. Since 2^16 is 1 modulo
    // 0xFFFF, a plain sum of 32-bit words folded once at the end gives the same value at twice the pace, and
    // lets the checksum field be taken out again afterwards. 64 bits hold the sum of any file under 2^34
    // bytes.
    uint64_t sum = 0;
    size_t i = 0;
    for (; i + 4 <= size; i += 4)
        sum += readLe32(data + i);
    for (; i < size; ++i)
        sum += uint64_t(data[i]) << (8 * (i & 3));
    for (size_t at = checksumField; at < checksumField + 4 && at < size; ++at)
        sum -= uint64_t(data[at]) << (8 * (at & 3));
    while (sum >> 16)
        sum = (sum & 0xFFFF) + (sum >> 16);
    return uint32_t(sum + size);
}

PeTail readPeTail(const Bytes& image, const PeLayout& layout) {
    PeTail tail;
    tail.known = true;
    tail.timeStamp = readLe32(&image[layout.timeStampField]);
    const size_t start = size_t(layout.sectionsEnd);
    size_t certStart = image.size(), certEnd = image.size();
    if (hasCertificateTable(layout, image.size())) {
        tail.hadCertificate = true;
        certStart = layout.certOffset;
        certEnd = size_t(layout.certOffset) + layout.certSize;
        // A signer pads the file to eight bytes before the table; that padding alone is no overlay.
        bool onlyPadding =
            certStart - start < 8 &&
            std::all_of(image.begin() + start, image.begin() + certStart, [](uint8_t b) { return b == 0; });
        if (onlyPadding) certStart = start;
    }
    tail.overlay.assign(image.begin() + start, image.begin() + certStart);
    tail.overlay.insert(tail.overlay.end(), image.begin() + certEnd, image.end());

    const uint32_t symbols = readLe32(&image[layout.symbolPointerField]);
    if (symbols >= start && symbols < certStart) {
        tail.hasSymbols = true;
        tail.symbolsAt = uint32_t(symbols - start);
    }
    return tail;
}

bool cutPeTail(const Bytes& image, const PeLayout& layout, Bytes& out) {
    const bool certEntry = layout.certDirectoryField != 0 && (layout.certOffset != 0 || layout.certSize != 0);
    if (image.size() == layout.sectionsEnd && !certEntry) return false;
    out.assign(image.begin(), image.begin() + size_t(layout.sectionsEnd));
    if (layout.certDirectoryField) std::memset(&out[layout.certDirectoryField], 0, 8);
    if (readLe32(&out[layout.symbolPointerField]) >= layout.sectionsEnd)
        writeLe32(&out[layout.symbolPointerField], 0);
    return true;
}

bool finishPeImage(Bytes& image, const PeTail& tail) {
    PeLayout layout;
    if (!readPeLayout(image, layout)) return false;
    image.resize(size_t(layout.sectionsEnd));
    image.insert(image.end(), tail.overlay.begin(), tail.overlay.end());
    return fixFinishedPeImage(image.data(), image.size(), tail);
}

bool fixFinishedPeImage(uint8_t* image, size_t size, const PeTail& tail) {
    PeLayout layout;
    if (!readPeLayout(image, size, layout) || size - layout.sectionsEnd != tail.overlay.size()) return false;
    const size_t end = size_t(layout.sectionsEnd);
    if (layout.certDirectoryField) std::memset(&image[layout.certDirectoryField], 0, 8);
    if (tail.known) writeLe32(&image[layout.timeStampField], tail.timeStamp);
    if (tail.hasSymbols)
        writeLe32(&image[layout.symbolPointerField], uint32_t(end + tail.symbolsAt));
    else if (readLe32(&image[layout.symbolPointerField]) >= end)
        writeLe32(&image[layout.symbolPointerField], 0);
    clearResourceTimeStamps(image, layout);
    writeLe32(&image[layout.checksumField], peChecksum(image, size, layout.checksumField));
    return true;
}

} // namespace nv
