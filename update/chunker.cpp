#include "update/chunker.h"

#include <algorithm>
#include <array>

namespace nv::update {
namespace {

// One random 64-bit value per byte value. Fixed for ever: the server's index and the player's patcher must
// find the same cuts, so changing the table (or its seed) would need a new index format.
constexpr std::array<uint64_t, 256> makeGear() {
    std::array<uint64_t, 256> table{};
    uint64_t x = 0x4e4f5256414e4544ull; // splitmix64 from a fixed seed
    for (uint64_t& v : table) {
        x += 0x9e3779b97f4a7c15ull;
        uint64_t z = x;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
        v = z ^ (z >> 31);
    }
    return table;
}
constexpr std::array<uint64_t, 256> kGear = makeGear();

// The hash's window: each step shifts it one bit left, so a byte leaves it after 64 steps.
constexpr uint32_t kWindow = 64;

int log2Of(uint32_t v) {
    int n = 0;
    while (v > 1)
        v >>= 1, ++n;
    return n;
}

// The top bits of the gear hash depend on the whole window, the low ones only on the last few bytes.
uint64_t topBits(int n) {
    return n <= 0 ? 0 : n >= 64 ? ~0ull : ~0ull << (64 - n);
}

} // namespace

bool isValidChunkParams(const ChunkParams& p) {
    return p.avg >= 256 && (p.avg & (p.avg - 1)) == 0 && p.min >= 1 && p.min <= p.avg && p.avg <= p.max &&
           p.max <= kMaxChunkBytes;
}

Chunker::Chunker(ChunkParams params)
    : params_(params), warmUp_(params.min > kWindow ? params.min - kWindow : 0) {
    // Two bits either side of avg's: chunks shorter than avg are four times rarer, longer ones four times
    // likelier to end, which narrows the spread of sizes around avg.
    const int bits = log2Of(params.avg);
    hardMask_ = topBits(bits + 2);
    easyMask_ = topBits(bits - 2);
}

size_t Chunker::scan(const uint8_t* data, size_t size, bool& cut) {
    cut = false;
    size_t i = 0;
    if (length_ < warmUp_) {
        const size_t skip = std::min<size_t>(size, warmUp_ - length_);
        i += skip;
        length_ += uint32_t(skip);
    }
    for (; i < size; ++i) {
        hash_ = (hash_ << 1) + kGear[data[i]];
        ++length_;
        if (length_ < params_.min) continue;
        const uint64_t mask = length_ < params_.avg ? hardMask_ : easyMask_;
        if ((hash_ & mask) == 0 || length_ >= params_.max) {
            cut = true;
            length_ = 0;
            hash_ = 0;
            return i + 1;
        }
    }
    return size;
}

std::vector<uint32_t> chunkLengths(const uint8_t* data, size_t size, ChunkParams params) {
    std::vector<uint32_t> lengths;
    Chunker chunker(params);
    uint32_t current = 0;
    while (size > 0) {
        bool cut;
        const size_t n = chunker.scan(data, size, cut);
        current += uint32_t(n);
        data += n, size -= n;
        if (cut) lengths.push_back(current), current = 0;
    }
    if (current > 0) lengths.push_back(current);
    return lengths;
}

ChunkHasher::ChunkHasher(ChunkParams params, Emit emit) : chunker_(params), emit_(std::move(emit)) {}

void ChunkHasher::update(const uint8_t* data, size_t size) {
    while (size > 0) {
        bool cut;
        const size_t n = chunker_.scan(data, size, cut);
        hasher_.update(data, n);
        pending_ += uint32_t(n);
        data += n, size -= n;
        if (cut) {
            emit_(Chunk{offset_, pending_, hasher_.digest()});
            offset_ += pending_;
            pending_ = 0;
            hasher_.reset();
        }
    }
}

void ChunkHasher::finish() {
    if (pending_ == 0) return;
    emit_(Chunk{offset_, pending_, hasher_.digest()});
    offset_ += pending_;
    pending_ = 0;
    hasher_.reset();
}

} // namespace nv::update
