// Content-defined chunks and their index: cuts that follow the content, sizes within their bounds, and an
// index reader that refuses every lie a hostile server could tell.

#include "update/chunk_index.h"
#include "update/chunker.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace nv::update {
namespace {

std::vector<uint8_t> randomBytes(size_t size, uint32_t seed) {
    std::mt19937_64 rng(seed);
    std::vector<uint8_t> bytes(size);
    for (size_t i = 0; i < size; i += 8) {
        const uint64_t v = rng();
        for (size_t k = 0; k < 8 && i + k < size; ++k)
            bytes[i + k] = uint8_t(v >> (8 * k));
    }
    return bytes;
}

std::vector<Chunk> chunksOf(const std::vector<uint8_t>& data, ChunkParams params = kChunkParams,
                            size_t piece = 1u << 20) {
    std::vector<Chunk> chunks;
    ChunkHasher hasher(params, [&](const Chunk& c) { chunks.push_back(c); });
    for (size_t at = 0; at < data.size(); at += piece)
        hasher.update(data.data() + at, std::min(piece, data.size() - at));
    hasher.finish();
    return chunks;
}

TEST(Chunker, CutsDoNotDependOnHowTheBytesArrive) {
    const auto data = randomBytes(3u << 20, 1);
    const auto whole = chunksOf(data, kChunkParams, data.size());
    ASSERT_GT(whole.size(), 20u);
    for (size_t piece : {size_t(1), size_t(63), size_t(4096), size_t(65537), size_t(1) << 20}) {
        if (piece == 1) {
            // Byte by byte over a shorter stretch: the same cuts as the whole buffer's first ones.
            const std::vector<uint8_t> head(data.begin(), data.begin() + (512 << 10));
            EXPECT_EQ(chunkLengths(head.data(), head.size()).size(), chunksOf(head, kChunkParams, 1).size());
            continue;
        }
        const auto pieces = chunksOf(data, kChunkParams, piece);
        ASSERT_EQ(pieces.size(), whole.size()) << piece;
        for (size_t i = 0; i < whole.size(); ++i) {
            EXPECT_EQ(pieces[i].offset, whole[i].offset) << piece;
            EXPECT_EQ(pieces[i].hash, whole[i].hash) << piece;
        }
    }
}

TEST(Chunker, ChunkHashIsTheHashOfTheChunksBytes) {
    const auto data = randomBytes(1u << 20, 2);
    uint64_t offset = 0;
    for (const Chunk& c : chunksOf(data, kChunkParams, 10000)) {
        EXPECT_EQ(c.offset, offset);
        EXPECT_EQ(c.hash, hash128(data.data() + c.offset, c.length));
        offset += c.length;
    }
    EXPECT_EQ(offset, data.size());
}

TEST(Chunker, SizesStayWithinTheirBoundsAndNearTheAverage) {
    struct Case {
        const char* name;
        std::vector<uint8_t> data;
        ChunkParams params;
    };
    const Case cases[] = {
        {"random, default sizes", randomBytes(16u << 20, 3), kChunkParams},
        {"zeros: no content cut, every chunk max", std::vector<uint8_t>(3u << 20, 0), kChunkParams},
        {"small sizes", randomBytes(1u << 20, 4), ChunkParams{256, 1024, 4096}},
        {"min below the hash window", randomBytes(1u << 20, 5), ChunkParams{8, 256, 1024}},
    };
    for (const Case& c : cases) {
        const auto lengths = chunkLengths(c.data.data(), c.data.size(), c.params);
        uint64_t sum = 0;
        for (size_t i = 0; i < lengths.size(); ++i) {
            sum += lengths[i];
            EXPECT_LE(lengths[i], c.params.max) << c.name;
            if (i + 1 < lengths.size()) {
                EXPECT_GE(lengths[i], c.params.min) << c.name;
            }
        }
        EXPECT_EQ(sum, c.data.size()) << c.name;
        const double average = double(sum) / double(lengths.size());
        if (c.data[0] == 0 && c.data[1] == 0) {
            EXPECT_EQ(lengths.front(), c.params.max) << c.name;
        } else {
            EXPECT_GT(average, 0.7 * c.params.avg) << c.name;
            EXPECT_LT(average, 1.5 * c.params.avg) << c.name;
        }
    }
}

TEST(Chunker, EmptyAndTinyInputs) {
    const uint8_t byte = 7;
    EXPECT_TRUE(chunkLengths(&byte, 0).empty());
    EXPECT_EQ(chunkLengths(&byte, 1), std::vector<uint32_t>{1});
    const auto belowMin = randomBytes(kChunkParams.min - 1, 6);
    EXPECT_EQ(chunkLengths(belowMin.data(), belowMin.size()), std::vector<uint32_t>{kChunkParams.min - 1});
    EXPECT_TRUE(chunksOf({}).empty());
}

// Inserting, deleting or overwriting bytes changes only the chunks around the change: every chunk that lies
// wholly before it or wholly after the next cut is found again with its hash.
TEST(Chunker, AnEditChangesOnlyTheChunksAroundIt) {
    const auto original = randomBytes(8u << 20, 7);
    std::set<Hash128> before;
    for (const Chunk& c : chunksOf(original))
        before.insert(c.hash);
    struct Edit {
        const char* name;
        size_t at, remove;
        size_t insert;
    };
    const Edit edits[] = {
        {"insert 1000 bytes", 3u << 20, 0, 1000},
        {"insert one byte at the start", 0, 0, 1},
        {"delete 10 bytes", 5u << 20, 10, 0},
        {"overwrite 100 KiB", 2u << 20, 100u << 10, 100u << 10},
        {"append at the end", original.size(), 0, 5000},
    };
    for (const Edit& e : edits) {
        std::vector<uint8_t> edited(original.begin(), original.begin() + e.at);
        const auto inserted = randomBytes(e.insert, 99);
        edited.insert(edited.end(), inserted.begin(), inserted.end());
        edited.insert(edited.end(), original.begin() + e.at + e.remove, original.end());
        uint64_t newBytes = 0;
        size_t newChunks = 0;
        for (const Chunk& c : chunksOf(edited))
            if (!before.count(c.hash)) newBytes += c.length, ++newChunks;
        // The edit itself, plus at most a chunk or two either side of it.
        EXPECT_LE(newChunks, 4u + e.insert / kChunkParams.avg) << e.name;
        EXPECT_LE(newBytes, e.insert + 3 * uint64_t(kChunkParams.max)) << e.name;
    }
}

ChunkIndex sampleIndex() {
    const auto data = randomBytes(2u << 20, 8);
    ChunkIndex index;
    index.fileSize = data.size();
    index.fileCrc = 0x12345678;
    index.chunks = chunksOf(data);
    return index;
}

TEST(ChunkIndex, ReadsBackWhatItWrites) {
    const ChunkIndex index = sampleIndex();
    const std::string bytes = writeChunkIndex(index);
    EXPECT_EQ(bytes.size(), 36 + 20 * index.chunks.size() + 16);
    ChunkIndex back;
    std::string error;
    ASSERT_TRUE(parseChunkIndex(bytes, back, error)) << error;
    EXPECT_EQ(back.params, index.params);
    EXPECT_EQ(back.fileSize, index.fileSize);
    EXPECT_EQ(back.fileCrc, index.fileCrc);
    ASSERT_EQ(back.chunks.size(), index.chunks.size());
    for (size_t i = 0; i < index.chunks.size(); ++i) {
        EXPECT_EQ(back.chunks[i].offset, index.chunks[i].offset);
        EXPECT_EQ(back.chunks[i].length, index.chunks[i].length);
        EXPECT_EQ(back.chunks[i].hash, index.chunks[i].hash);
    }
    // An empty file has an index with no chunks.
    ChunkIndex empty;
    ASSERT_TRUE(parseChunkIndex(writeChunkIndex(empty), back, error)) << error;
    EXPECT_TRUE(back.chunks.empty());
}

TEST(ChunkIndex, RefusesHostileBytes) {
    const ChunkIndex good = sampleIndex();
    const std::string bytes = writeChunkIndex(good);
    // Lies written with a correct trailing hash: only the numbers' agreement can catch them.
    auto lying = [&](auto change) {
        ChunkIndex index = good;
        change(index);
        return writeChunkIndex(index);
    };
    std::string flipped = bytes;
    flipped[100] ^= 1;
    std::string countTooHigh = bytes;
    countTooHigh[32] = char(countTooHigh[32] + 1);
    const struct Case {
        const char* name;
        std::string bytes;
    } cases[] = {
        {"empty", ""},
        {"header only", bytes.substr(0, 36)},
        {"cut inside a chunk entry", bytes.substr(0, 36 + 30)},
        {"cut before the trailer", bytes.substr(0, bytes.size() - 1)},
        {"another format", "NVCHIDX2" + bytes.substr(8)},
        {"one byte changed", flipped},
        {"more chunks than entries", countTooHigh},
        {"a chunk of length zero", lying([](ChunkIndex& i) { i.chunks[3].length = 0; })},
        {"a chunk longer than max", lying([](ChunkIndex& i) { i.chunks[0].length = i.params.max + 1; })},
        {"a chunk shorter than min", lying([](ChunkIndex& i) { i.chunks[1].length = i.params.min - 1; })},
        {"chunks past the file's end", lying([](ChunkIndex& i) { i.fileSize -= 1; })},
        {"chunks short of the file's end", lying([](ChunkIndex& i) { i.fileSize += 1; })},
        {"a file of 2^63 bytes", lying([](ChunkIndex& i) { i.fileSize = uint64_t(1) << 63; })},
        {"no chunks for a file with bytes", lying([](ChunkIndex& i) { i.chunks.clear(); })},
        {"avg not a power of two", lying([](ChunkIndex& i) { i.params.avg = 60000; })},
        {"min above avg", lying([](ChunkIndex& i) { i.params.min = i.params.avg * 2; })},
        {"max beyond the limit", lying([](ChunkIndex& i) { i.params.max = kMaxChunkBytes + 1; })},
    };
    for (const Case& c : cases) {
        ChunkIndex index;
        std::string error;
        EXPECT_FALSE(parseChunkIndex(c.bytes, index, error)) << c.name;
        EXPECT_FALSE(error.empty()) << c.name;
        EXPECT_TRUE(index.chunks.empty()) << c.name;
    }
}

TEST(ChunkIndex, NamesForPathsAreShortSafeAndDistinct) {
    const std::string a = indexPathFor("data/pack01.pak");
    EXPECT_TRUE(a.starts_with(".nvindex/")) << a;
    EXPECT_TRUE(a.ends_with(".nvx")) << a;
    EXPECT_EQ(a.size(), 9 + 32 + 4);
    EXPECT_EQ(a, indexPathFor("data/pack01.pak"));
    EXPECT_NE(a, indexPathFor("data/Pack01.pak"));
    EXPECT_NE(a, indexPathFor("data/şehir çok uzun bir ad/../pack01.pak"));
}

TEST(ChunkIndex, TheListNamesIndexesOnCommentLines) {
    FileList list;
    list.files = {{"a.pak", 5u << 20, 1}, {"b.pak", 5u << 20, 2}, {"c.pak", 5u << 20, 3}};
    const std::string hash(32, 'a');
    list.comments = {
        indexRefLine("a.pak", {1234, Hash128{1, 2, 3}}),
        "#nvindex\tb.pak\t99\t" + hash,
        "#nvindex\tb.pak\t98\t" + hash, // b.pak twice: neither is trusted
        "#nvindex\tc.pak\t0\t" + hash,  // empty
        "#nvindex\tc.pak\t" + std::to_string(kMaxIndexBytes + 1) + "\t" + hash,
        "#nvindex\tc.pak\t12\t" + hash.substr(1),
        "#nvindex\tc.pak\t012\t" + hash,
        "#nvindex\tc.pak\t12",
        "#nvindex\tz.pak\t12\t" + hash, // not a listed file
        "# a signature or anything else",
    };
    const auto refs = indexRefs(list);
    ASSERT_EQ(refs.size(), 1u);
    ASSERT_TRUE(refs.count("a.pak"));
    EXPECT_EQ(refs.at("a.pak").size, 1234u);
    EXPECT_EQ(refs.at("a.pak").hash, (Hash128{1, 2, 3}));
    // The line survives the list's own writer and reader.
    FileList back;
    std::string error;
    ASSERT_TRUE(parseFileList(writeFileList(list), "crclist.txt", back, error)) << error;
    EXPECT_EQ(indexRefs(back).size(), 1u);
}

} // namespace
} // namespace nv::update
