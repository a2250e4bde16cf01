#pragma once
// How a changed file is brought to its new content from what the player already has: every chunk of the new
// file (its index) is taken from a local file that holds a chunk with the same hash, kept where an earlier,
// interrupted run already put it, or fetched; neighbouring chunks fetched are asked for in one Range request,
// and no request is larger than the segment size, so that the connections share a large change.

#include "update/chunk_index.h"
#include "update/http.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace nv::update {

// The chunks of the local files a delta may copy from, by hash (the first file named keeps a hash).
class LocalChunks {
public:
    struct Place {
        uint32_t source = 0; // the caller's number for the file
        uint64_t offset = 0;
    };

    void add(uint32_t source, const std::vector<Chunk>& chunks);
    const Place* find(const Hash128& hash) const;
    size_t size() const { return places_.size(); }

private:
    std::unordered_map<Hash128, Place, Hash128Hasher> places_;
};

enum class PieceKind {
    Keep,  // already in the part file at its place (an earlier run's)
    Copy,  // from a local file
    Fetch, // from the server
};

struct DeltaPiece {
    PieceKind kind = PieceKind::Fetch;
    ByteRange target;      // bytes of the new file
    size_t firstChunk = 0; // the index's chunks it covers
    size_t chunkCount = 0;
    uint32_t source = 0; // Copy: the file and the offset its bytes start at
    uint64_t sourceOffset = 0;
};

struct DeltaPlan {
    std::vector<DeltaPiece> pieces; // in the file's order, covering it exactly
    uint64_t keepBytes = 0, copyBytes = 0, fetchBytes = 0;
    size_t fetchRequests = 0;
};

// present: per chunk of the index, whether the part file already holds it (empty: nothing there).
// maxRequest: the most bytes one fetch may span (a single chunk larger than that stays whole).
DeltaPlan planDelta(const ChunkIndex& index, const LocalChunks& local, const std::vector<char>& present,
                    uint64_t maxRequest);

// Whether a delta is worth its index and its reading: it must save a tenth of the file at least, else the
// file comes whole in the engine's large segments.
bool deltaPays(const DeltaPlan& plan, uint64_t fileSize, uint64_t indexSize);

} // namespace nv::update
