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

// The same values shifted once, to take two steps at a time:
//   ((h << 1) + g[a] << 1) + g[b] == (h << 2) + g2[a] + g[b]
// so the chain of operations that each step waits on is half as long, and the hash runs twice as fast.
constexpr std::array<uint64_t, 256> makeGearShifted() {
    std::array<uint64_t, 256> table{};
    for (size_t i = 0; i < table.size(); ++i)
        table[i] = kGear[i] << 1;
    return table;
}
constexpr std::array<uint64_t, 256> kGear2 = makeGearShifted();

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
    // In stretches that need no test per byte but the mask's: below min (no cut), below avg (the hard mask),
    // below max (the easy one), then the cut at max. The next byte makes the chunk length_ + 1 long.
    uint64_t hash = hash_;
    while (i < size) {
        const uint32_t next = length_ + 1;
        const uint64_t mask = next < params_.avg ? hardMask_ : easyMask_;
        const uint32_t bound = next < params_.min   ? params_.min - 1
                               : next < params_.avg ? params_.avg - 1
                                                    : params_.max - 1;
        const size_t n = std::min<size_t>(size - i, bound >= length_ ? bound - length_ : 0);
        const uint8_t* p = data + i;
        size_t k = 0;
        if (next < params_.min) {
            for (; k + 2 <= n; k += 2)
                hash = (hash << 2) + (kGear2[p[k]] + kGear[p[k + 1]]);
            for (; k < n; ++k)
                hash = (hash << 1) + kGear[p[k]];
        } else {
            size_t end = 0; // the stretch's bytes up to and including the cut; 0: no cut in it
            for (; k + 2 <= n && end == 0; k += 2) {
                const uint64_t first = (hash << 1) + kGear[p[k]];
                hash = (hash << 2) + (kGear2[p[k]] + kGear[p[k + 1]]);
                if ((first & mask) == 0)
                    end = k + 1;
                else if ((hash & mask) == 0)
                    end = k + 2;
            }
            if (end == 0 && k < n) {
                hash = (hash << 1) + kGear[p[k]];
                if ((hash & mask) == 0) end = k + 1;
            }
            if (end != 0) {
                length_ = 0;
                hash_ = 0;
                cut = true;
                return i + end;
            }
        }
        i += n;
        length_ += uint32_t(n);
        if (n == 0 && length_ + 1 >= params_.max) {
            // The byte that makes the chunk max long ends it, whatever the hash.
            length_ = 0;
            hash_ = 0;
            cut = true;
            return i + 1;
        }
    }
    hash_ = hash;
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
