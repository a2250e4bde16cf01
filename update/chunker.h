#pragma once
// Content-defined chunking: a file is cut where the bytes just before the cut look a certain way (a rolling
// "gear" hash over the last 64 bytes has its top bits zero), not at fixed offsets, so inserting or removing
// bytes moves only the cuts next to the change and every chunk after it keeps its bytes and its hash. The
// index of a file on the server and the player's old copy are chunked alike; the chunks the player already
// has are not downloaded again.
//
// Sizes are bounded: no cut before `min` bytes (the hash is not even looked at there, which is where the
// speed comes from), always a cut at `max`, and the cut is harder to take before `avg` and easier after it,
// which keeps most chunks close to `avg`.

#include "update/chunk_hash.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace nv::update {

struct ChunkParams {
    uint32_t min = 16u << 10;
    uint32_t avg = 64u << 10; // a power of two
    uint32_t max = 256u << 10;
    bool operator==(const ChunkParams&) const = default;
};

inline constexpr ChunkParams kChunkParams{};
inline constexpr uint32_t kMaxChunkBytes = 16u << 20; // the largest `max` an index may name

// Sizes a chunker may be asked to cut with (an index names its own): min <= avg <= max, avg a power of two
// from 256 bytes, max at most kMaxChunkBytes.
bool isValidChunkParams(const ChunkParams& params);

// Finds the cuts in a stream given in pieces of any size.
class Chunker {
public:
    explicit Chunker(ChunkParams params = kChunkParams);

    // How many of the bytes belong to the current chunk; cut is set when the chunk ends after them (the rest
    // of the bytes then start the next one).
    size_t scan(const uint8_t* data, size_t size, bool& cut);

private:
    ChunkParams params_;
    uint32_t warmUp_;
    uint64_t hardMask_, easyMask_;
    uint32_t length_ = 0;
    uint64_t hash_ = 0;
};

// The lengths of the chunks of a buffer (the last one may be shorter than min; none for an empty buffer).
std::vector<uint32_t> chunkLengths(const uint8_t* data, size_t size, ChunkParams params = kChunkParams);

struct Chunk {
    uint64_t offset = 0;
    uint32_t length = 0;
    Hash128 hash{};
};

// Cuts and hashes a stream in one pass: every finished chunk goes to the callback.
class ChunkHasher {
public:
    using Emit = std::function<void(const Chunk&)>;
    ChunkHasher(ChunkParams params, Emit emit);
    void update(const uint8_t* data, size_t size);
    void finish(); // the last chunk, if any bytes are left
    uint64_t size() const { return offset_ + pending_; }

private:
    Chunker chunker_;
    Hasher128 hasher_;
    Emit emit_;
    uint64_t offset_ = 0;  // where the current chunk starts
    uint32_t pending_ = 0; // its bytes so far
};

} // namespace nv::update
