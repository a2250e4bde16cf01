#include "update/chunk_hash.h"

// The library is used header-only, so both the Windows and the native build compile the same code.
#define XXH_INLINE_ALL
#include <xxhash.h>

namespace nv::update {
namespace {

Hash128 canonical(XXH128_hash_t value) {
    XXH128_canonical_t c;
    XXH128_canonicalFromHash(&c, value);
    Hash128 out;
    for (size_t i = 0; i < out.size(); ++i)
        out[i] = c.digest[i];
    return out;
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

} // namespace

struct Hasher128::State {
    XXH3_state_t xxh;
};

Hash128 hash128(const void* data, size_t size) {
    return canonical(XXH3_128bits(data, size));
}

std::string hashHex(const Hash128& hash) {
    static const char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(32);
    for (uint8_t b : hash) {
        text += digits[b >> 4];
        text += digits[b & 15];
    }
    return text;
}

bool parseHashHex(std::string_view text, Hash128& hash) {
    if (text.size() != 32) return false;
    for (size_t i = 0; i < 16; ++i) {
        const int hi = hexValue(text[2 * i]), lo = hexValue(text[2 * i + 1]);
        if (hi < 0 || lo < 0) return false;
        hash[i] = uint8_t(hi << 4 | lo);
    }
    return true;
}

Hasher128::Hasher128() : state_(std::make_unique<State>()) {
    reset();
}

Hasher128::~Hasher128() = default;

void Hasher128::reset() {
    XXH3_128bits_reset(&state_->xxh);
}

void Hasher128::update(const void* data, size_t size) {
    XXH3_128bits_update(&state_->xxh, data, size);
}

Hash128 Hasher128::digest() const {
    return canonical(XXH3_128bits_digest(&state_->xxh));
}

} // namespace nv::update
