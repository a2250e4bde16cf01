#pragma once
// Little- and big-endian integers read from and written to byte buffers, for the file formats we read and
// write (zip, PNG, BMP, ICO, PE, the skin package). Callers check the bounds; these only assemble the bytes.

#include <cstdint>
#include <vector>

namespace nv {

inline uint16_t readLe16(const uint8_t* p) {
    return uint16_t(p[0] | p[1] << 8);
}
inline uint32_t readLe32(const uint8_t* p) {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}
inline uint16_t readBe16(const uint8_t* p) {
    return uint16_t(p[0] << 8 | p[1]);
}
inline uint32_t readBe32(const uint8_t* p) {
    return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | uint32_t(p[3]);
}

inline void writeLe32(uint8_t* p, uint32_t v) {
    p[0] = uint8_t(v);
    p[1] = uint8_t(v >> 8);
    p[2] = uint8_t(v >> 16);
    p[3] = uint8_t(v >> 24);
}

inline void appendLe16(std::vector<uint8_t>& out, uint32_t v) {
    out.push_back(uint8_t(v));
    out.push_back(uint8_t(v >> 8));
}
inline void appendLe32(std::vector<uint8_t>& out, uint32_t v) {
    appendLe16(out, v & 0xFFFF);
    appendLe16(out, v >> 16);
}

} // namespace nv
