#pragma once
// The parts of a PE executable that a resource update disturbs and that the build puts right afterwards: the
// certificate table (a stale signature), an overlay (data appended after the last section, which resource
// writers drop), the optional header's checksum, and time stamps that would make two builds differ.

#include "core/files.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace nv {

struct PeSection {
    uint32_t virtualAddress = 0, virtualSize = 0, rawOffset = 0, rawSize = 0;
};

struct PeLayout {
    size_t timeStampField = 0;     // COFF header TimeDateStamp
    size_t symbolPointerField = 0; // COFF header PointerToSymbolTable
    size_t checksumField = 0;      // optional header CheckSum
    size_t certDirectoryField = 0; // data directory entry of the certificate table; 0 when there is none
    uint32_t resourceRva = 0;      // data directory entry of the resources (0 when there are none)
    uint32_t certOffset = 0, certSize = 0; // the certificate table (a file offset, unlike every other entry)
    uint64_t sectionsEnd = 0;              // end of the headers and of the last section's raw data
    std::vector<PeSection> sections;
};

// Reads the headers of a PE32 or PE32+ image held in memory. False when the bytes are not one (or its headers
// or sections point outside the bytes).
bool readPeLayout(const uint8_t* data, size_t size, PeLayout& layout);
inline bool readPeLayout(const Bytes& bytes, PeLayout& layout) {
    return readPeLayout(bytes.data(), bytes.size(), layout);
}

// The file offset of a relative virtual address, or SIZE_MAX when no section's raw data holds it.
size_t peRvaToOffset(const PeLayout& layout, uint32_t rva);

// The optional header's checksum of a whole file (the field itself counted as zero): 16-bit one's-complement
// style sum with the carries folded back, plus the file length.
uint32_t peChecksum(const uint8_t* data, size_t size, size_t checksumField);

// What lies after the sections that belongs to no section: an overlay, a COFF symbol table, a certificate
// table.
struct PeTail {
    bool known = false;      // read from a PE image; a default tail keeps the updated image's own time stamp
    Bytes overlay;           // every byte after the sections except the certificate table and its alignment
    bool hasSymbols = false; // PointerToSymbolTable pointed into the overlay, at this distance from its start
    uint32_t symbolsAt = 0;
    bool hadCertificate = false;
    uint32_t timeStamp = 0; // the COFF time stamp, which the build keeps
};

PeTail readPeTail(const Bytes& image, const PeLayout& layout);

// The image with its tail cut off (the certificate table's directory entry cleared): what a resource writer
// should be given. False when nothing needs cutting.
bool cutPeTail(const Bytes& image, const PeLayout& layout, Bytes& out);

// After a resource update: cuts whatever the writer left after the sections, appends the tail's overlay (and
// points the symbol table at its new place), clears any certificate entry, puts back the COFF time stamp,
// zeroes the resource directories' time stamps and writes the checksum. False when the image is no longer a
// PE image.
bool finishPeImage(Bytes& image, const PeTail& tail);

// The same fixes over an image whose length is already final: its sections followed by exactly the tail's
// overlay. Lets the build finish a large file where it lies instead of reading it into memory.
bool fixFinishedPeImage(uint8_t* image, size_t size, const PeTail& tail);

} // namespace nv
