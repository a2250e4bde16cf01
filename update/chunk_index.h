#pragma once
// The chunk index of a game file, published beside the list so that the patcher fetches only the chunks of a
// changed file that the player does not already have.
//
// `nvbuild crclist` writes one index for every listed file of at least kIndexThreshold bytes, at
// ".nvindex/<name>.nvx" in the client folder, where <name> is the XXH3-128 of the file's path as the list
// writes it (32 hex digits): any path maps to one short, safe file name. The list names each index on a
// comment line, which list readers that know nothing of indexes skip:
//
//   #nvindex<TAB>path<TAB>index size<TAB>index XXH3-128 (32 hex digits)
//
// An index file (all numbers little-endian):
//
//   "NVCHIDX1"                         8 bytes
//   min, avg, max chunk size           3 x u32: the chunker's sizes the file was cut with
//   file size                          u64
//   file CRC-32                        u32: the file the index describes, as the list names it
//   chunk count                        u32
//   per chunk: length, XXH3-128        u32 + 16 bytes; offsets follow from the lengths
//   XXH3-128 of every byte before      16 bytes
//
// The bytes depend only on the file's content, so an unchanged file keeps its index byte for byte.

#include "core/files.h"
#include "update/chunker.h"
#include "update/file_list.h"
#include "update/game_files.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace nv::update {

inline constexpr uint64_t kIndexThreshold = 1u << 20; // smaller files come whole: an index would not pay
inline constexpr size_t kMaxIndexBytes = 32u << 20;   // ~1.6 million chunks: files of ~100 GB
inline constexpr std::string_view kIndexRefPrefix = "#nvindex\t";

struct ChunkIndex {
    ChunkParams params;
    uint64_t fileSize = 0;
    uint32_t fileCrc = 0;
    std::vector<Chunk> chunks;
};

std::string writeChunkIndex(const ChunkIndex& index);
// Every number is checked against the others: lengths within the sizes named, their sum the file's size, no
// more chunks than the bytes allow, the trailing hash over the rest. error: why not, for the log.
bool parseChunkIndex(std::string_view bytes, ChunkIndex& index, std::string& error);

// ".nvindex/<32 hex digits>.nvx" for a listed path.
std::string indexPathFor(std::string_view listPath);

// How the list names a file's index.
struct IndexRef {
    uint64_t size = 0;
    Hash128 hash{};
};

std::string indexRefLine(std::string_view path, const IndexRef& ref); // without its line end
// The indexes the list names for its files (by path). Lines that do not parse, name a file the list does not
// hold, name it twice or an index larger than kMaxIndexBytes are left out: the file then comes whole.
std::map<std::string, IndexRef> indexRefs(const FileList& list);

// Reads a file once: its CRC-32, size and chunks cut with params. Stops (false, fault Other, code 0) once
// cancel is set.
bool chunkFile(GameFiles& files, const std::string& path, ChunkParams params, const std::atomic<bool>& cancel,
               ChunkIndex& index, FileError& error);

} // namespace nv::update
