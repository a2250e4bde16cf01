// Chunking a large game file for a delta update against reading it: the patcher chunks the player's old copy
// of every changed large file, and crclist every large file it lists, so chunking must keep up with the read.
// Over one 256 MiB file (in the system's cache after the first pass): a plain read, the check's read with its
// CRC-32, and the chunker's read (CRC-32, cuts and XXH3-128 of every chunk), printed as ratios.

#include "bench/bench_harness.h"
#include "core/files.h"
#include "core/text.h"
#include "update/chunk_index.h"
#include "update/folder_files.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>

namespace {

constexpr uint64_t kFileBytes = 256u << 20;

void chunking() {
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / "nv-bench-chunking";
    std::filesystem::create_directories(folder);
    {
        std::vector<uint8_t> block(4u << 20);
        std::mt19937_64 rng(5);
        FILE* f = std::fopen((folder / "pack.pak").string().c_str(), "wb");
        if (!f) nv::bench::fail("cannot write the test file");
        for (uint64_t left = kFileBytes; left > 0; left -= block.size()) {
            for (size_t i = 0; i < block.size(); i += 8) {
                const uint64_t v = rng();
                std::memcpy(&block[i], &v, 8);
            }
            std::fwrite(block.data(), 1, block.size(), f);
        }
        std::fclose(f);
    }
    auto files = nv::update::openGameFolder(folder.wstring());
    const std::atomic<bool> never{false};
    nv::update::FileError error;

    const auto read = nv::bench::measure("read/256MiB", 5, [&] {
        auto file = files->openRead("pack.pak", error);
        std::vector<uint8_t> buffer(1u << 20);
        for (uint64_t at = 0; file && at < kFileBytes; at += buffer.size())
            file->read(at, buffer.data(), buffer.size(), error);
        nv::bench::keep(buffer.data());
    });
    const auto check = nv::bench::measure("check-crc32/256MiB", 5, [&] {
        uint32_t crc = 0;
        uint64_t size = 0;
        files->checksum("pack.pak", crc, size, never, error);
        nv::bench::keep(&crc);
    });
    size_t chunks = 0;
    const auto chunk = nv::bench::measure("chunk/256MiB", 5, [&] {
        nv::update::ChunkIndex index;
        if (!nv::update::chunkFile(*files, "pack.pak", nv::update::kChunkParams, never, index, error))
            nv::bench::fail("chunkFile failed: " + nv::update::describe(error));
        chunks = index.chunks.size();
    });
    std::filesystem::remove_all(folder);
    const double mib = double(kFileBytes) / (1 << 20);
    std::printf("chunks: %zu, average %.1f KiB\n", chunks, double(kFileBytes) / double(chunks) / 1024);
    std::printf("chunking %.0f MiB/s, check (CRC-32) %.0f MiB/s, plain read %.0f MiB/s\n",
                mib / (chunk.bestMs / 1e3), mib / (check.bestMs / 1e3), mib / (read.bestMs / 1e3));
    std::printf("ratio chunking / plain read (time): %.2f, chunking / check: %.2f\n",
                chunk.bestMs / read.bestMs, chunk.bestMs / check.bestMs);
}

} // namespace

int main(int argc, char** argv) {
    return nv::bench::runCases(argc, argv, {{"chunking", chunking}});
}
