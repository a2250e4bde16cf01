#include "update/delta_plan.h"

namespace nv::update {

void LocalChunks::add(uint32_t source, const std::vector<Chunk>& chunks) {
    for (const Chunk& chunk : chunks)
        places_.emplace(chunk.hash, Place{source, chunk.offset});
}

const LocalChunks::Place* LocalChunks::find(const Hash128& hash) const {
    const auto it = places_.find(hash);
    return it == places_.end() ? nullptr : &it->second;
}

DeltaPlan planDelta(const ChunkIndex& index, const LocalChunks& local, const std::vector<char>& present,
                    uint64_t maxRequest) {
    DeltaPlan plan;
    for (size_t i = 0; i < index.chunks.size(); ++i) {
        const Chunk& chunk = index.chunks[i];
        DeltaPiece next;
        next.target = {chunk.offset, chunk.offset + chunk.length - 1};
        next.firstChunk = i;
        next.chunkCount = 1;
        const LocalChunks::Place* place = nullptr;
        if (i < present.size() && present[i]) {
            next.kind = PieceKind::Keep;
        } else if ((place = local.find(chunk.hash)) != nullptr) {
            next.kind = PieceKind::Copy;
            next.source = place->source;
            next.sourceOffset = place->offset;
        } else {
            next.kind = PieceKind::Fetch;
        }
        (next.kind == PieceKind::Keep   ? plan.keepBytes
         : next.kind == PieceKind::Copy ? plan.copyBytes
                                        : plan.fetchBytes) += chunk.length;

        // Joined to the piece before when it continues it: the same kind, a copy from the very next bytes of
        // the same file, a fetch that stays within one request's size.
        if (!plan.pieces.empty()) {
            DeltaPiece& last = plan.pieces.back();
            const bool joins =
                last.kind == next.kind &&
                (next.kind == PieceKind::Keep ||
                 (next.kind == PieceKind::Copy && last.source == next.source &&
                  last.sourceOffset + last.target.length() == next.sourceOffset) ||
                 (next.kind == PieceKind::Fetch && last.target.length() + chunk.length <= maxRequest));
            if (joins) {
                last.target.last = next.target.last;
                ++last.chunkCount;
                continue;
            }
        }
        if (next.kind == PieceKind::Fetch) ++plan.fetchRequests;
        plan.pieces.push_back(next);
    }
    return plan;
}

bool deltaPays(const DeltaPlan& plan, uint64_t fileSize, uint64_t indexSize) {
    return plan.fetchBytes + indexSize < fileSize - fileSize / 10;
}

} // namespace nv::update
