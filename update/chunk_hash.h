#pragma once
// The hash that names a chunk of a game file in the chunk indexes of delta updates: XXH3-128. It only has to
// tell chunks apart by accident — whether a chunk the player already has is the one the index describes, and
// whether a fetched range holds the bytes the index promised — since every assembled file is still verified
// whole against the list before it replaces the old one. 128 bits make an accidental collision between the
// few million chunks of a client unthinkable, and the hash runs many times faster than the disk, so
// chunking a file costs no more than reading it.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace nv::update {

// The hash in its canonical byte order (high half first, each half big-endian): the bytes the index stores.
using Hash128 = std::array<uint8_t, 16>;

Hash128 hash128(const void* data, size_t size);
std::string hashHex(const Hash128& hash); // 32 lower-case hex digits
bool parseHashHex(std::string_view text, Hash128& hash);

// A running hash over bytes given in pieces: the same result as hash128 of their concatenation.
class Hasher128 {
public:
    Hasher128();
    ~Hasher128();
    Hasher128(const Hasher128&) = delete;
    Hasher128& operator=(const Hasher128&) = delete;

    void reset();
    void update(const void* data, size_t size);
    Hash128 digest() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

struct Hash128Less {
    bool operator()(const Hash128& a, const Hash128& b) const { return a < b; }
};

// For hash maps keyed by a chunk hash: its first eight bytes are already uniformly spread.
struct Hash128Hasher {
    size_t operator()(const Hash128& h) const {
        uint64_t v = 0;
        for (int i = 0; i < 8; ++i)
            v = v << 8 | h[size_t(i)];
        return size_t(v);
    }
};

} // namespace nv::update
