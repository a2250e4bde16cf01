#include "core/crc32.h"

namespace nv {
namespace {

// Table 0 is the classic byte table of the reflected polynomial; table k gives the effect of a byte
// followed by k zero bytes, so eight bytes fold into the state in one step.
struct CrcTables {
    uint32_t t[8][256];

    CrcTables() {
        for (uint32_t n = 0; n < 256; ++n) {
            uint32_t c = n;
            for (int k = 0; k < 8; ++k)
                c = (c & 1) ? (c >> 1) ^ 0xEDB88320u : c >> 1;
            t[0][n] = c;
        }
        for (uint32_t n = 0; n < 256; ++n)
            for (int k = 1; k < 8; ++k)
                t[k][n] = (t[k - 1][n] >> 8) ^ t[0][t[k - 1][n] & 0xFF];
    }
};

// Built during static initialisation, before main and before any other thread; read-only afterwards.
const CrcTables kTables;

inline uint32_t load32(const uint8_t* p) {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

} // namespace

void Crc32::update(const void* data, size_t size) {
    const auto& t = kTables.t;
    const uint8_t* p = static_cast<const uint8_t*>(data);
    uint32_t c = state;
    while (size >= 8) {
        uint32_t lo = c ^ load32(p);
        uint32_t hi = load32(p + 4);
        c = t[7][lo & 0xFF] ^ t[6][(lo >> 8) & 0xFF] ^ t[5][(lo >> 16) & 0xFF] ^ t[4][lo >> 24] ^
            t[3][hi & 0xFF] ^ t[2][(hi >> 8) & 0xFF] ^ t[1][(hi >> 16) & 0xFF] ^ t[0][hi >> 24];
        p += 8;
        size -= 8;
    }
    while (size-- > 0)
        c = t[0][(c ^ *p++) & 0xFF] ^ (c >> 8);
    state = c;
}

} // namespace nv
