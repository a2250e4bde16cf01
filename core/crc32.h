#pragma once
// CRC-32 of ISO-HDLC / IEEE 802.3 (the zip and PNG checksum): carry-less multiplication where the processor
// has it, slicing by eight otherwise and for short runs.

#include <cstddef>
#include <cstdint>
#include <string>

namespace nv {

// A running accumulator: starts at 0xFFFFFFFF, takes any number of byte ranges, and the result is the
// complement of the state. Feeding ranges one after another equals feeding their concatenation.
struct Crc32 {
    uint32_t state = 0xFFFFFFFFu;

    void update(const void* data, size_t size);
    uint32_t value() const { return ~state; }

    static uint32_t of(const void* data, size_t size) {
        Crc32 crc;
        crc.update(data, size);
        return crc.value();
    }
};

// The CRC-32 of A followed by B, from crc(A), crc(B) and B's length: pieces of one file checked apart (the
// segments of a download, each summed as it arrives) give the whole file's checksum without reading it again.
uint32_t crc32Combine(uint32_t crcA, uint32_t crcB, uint64_t lengthB);

// CRC-32 and byte size of a whole file (platform layer: a shared sequential read with one 64 KiB buffer).
// On a failed read returns false with the checksum of what was read.
bool fileCrc32(const std::wstring& path, uint32_t& crc, uint64_t& size);

} // namespace nv
