// The patcher's check of an unchanged client and nvbuild crclist over the same folder, against reading the
// files once with cat: a client of ~5,000 files and ~2 GB. Printed as ratios measured in the same run:
//   first check (no state file)   / cat   goal <= 1.2
//   second start (state file)     absolute, goal < 1 s
//   nvbuild crclist               / cat   goal <= 1.2
// The files are freshly written, so every reader finds them in the page cache alike; the ratios compare the
// readers' own costs (threads, checksums, system calls), not the disk.
//
//   bench_update_check [FOLDER] [FILES] [TOTAL_MB]   (nvbuild: the native one, path from the build)

#include "core/crc32.h"
#include "core/text.h"
#include "update/file_list.h"
#include "update/folder_files.h"
#include "update/remote_config.h"
#include "update/update_run.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

// Serves the configuration and the list from memory; a check of an unchanged client asks for nothing else.
class ListServer : public nv::update::HttpTransport {
public:
    std::string config, list;
    nv::update::TransferResult get(const nv::update::HttpRequest& request, nv::update::HttpBodySink& sink,
                                   const std::atomic<bool>&) override {
        const std::string& body = request.url.find("config.xml") != std::string::npos ? config : list;
        nv::update::TransferResult result;
        result.head.status = 200;
        result.head.contentLength = body.size();
        if (!sink.onHead(result.head) ||
            !sink.onData(reinterpret_cast<const uint8_t*>(body.data()), body.size()))
            result.error = nv::update::TransferError::Stopped;
        return result;
    }
};

double seconds(Clock::time_point since) {
    return std::chrono::duration<double>(Clock::now() - since).count();
}

} // namespace

int main(int argc, char** argv) {
    const fs::path folder = argc > 1 ? fs::path(argv[1]) : fs::temp_directory_path() / "nv-bench-check";
    const int count = argc > 2 ? std::atoi(argv[2]) : 5000;
    const uint64_t total = uint64_t(argc > 3 ? std::atoi(argv[3]) : 2048) << 20;

    // A client like a game's: most files small, a few hundred large ones carrying most of the bytes.
    fs::remove_all(folder);
    nv::update::FileList list;
    std::vector<uint8_t> block(4 << 20);
    uint32_t x = 2463534242u;
    for (auto& b : block) {
        x ^= x << 13, x ^= x >> 17, x ^= x << 5;
        b = uint8_t(x);
    }
    const int large = count / 25;
    const uint64_t smallSize = 64 << 10;
    const uint64_t largeSize = (total - uint64_t(count - large) * smallSize) / uint64_t(large);
    for (int i = 0; i < count; ++i) {
        const std::string path = "data/" + std::to_string(i % 50) + "/f" + std::to_string(i) + ".pak";
        const uint64_t size = i % 25 == 0 ? largeSize : smallSize;
        fs::create_directories((folder / path).parent_path());
        std::ofstream out(folder / path, std::ios::binary);
        nv::Crc32 crc;
        for (uint64_t left = size; left > 0;) {
            const size_t n = size_t(std::min<uint64_t>(left, block.size()));
            block[0] = uint8_t(i); // no two files alike
            out.write(reinterpret_cast<const char*>(block.data()), std::streamsize(n));
            crc.update(block.data(), n);
            left -= n;
        }
        list.files.push_back({path, size, crc.value()});
    }
    std::printf("client: %d files, %.0f MB in %s\n", count, double(total) / 1e6, folder.string().c_str());

    ListServer server;
    server.list = nv::update::writeFileList(list);
    server.config = "<c>crcpatch_url=http://bench/client/</c>";
    nv::update::UpdateRequest request;
    request.configUrl = "http://bench/config.xml";
    const auto files = nv::update::openGameFolder(nv::utf8ToWide(folder.string()));
    nv::update::UpdateObserver quiet;
    std::atomic<bool> cancel{false};
    auto check = [&] {
        nv::update::RunLog log;
        const auto begin = Clock::now();
        const auto result = nv::update::runUpdate(request, server, *files, quiet, log, cancel);
        if (result.outcome != nv::update::Outcome::UpToDate) {
            std::fprintf(stderr, "check failed: %s\n", result.failure.detail.c_str());
            std::exit(1);
        }
        return seconds(begin);
    };
    const std::string catAll = "find '" + folder.string() + "' -type f -exec cat {} + > /dev/null";
    const std::string crclist = std::string(NV_BENCH_NVBUILD) + " crclist '" + folder.string() + "' --out '" +
                                (folder.parent_path() / "bench-crclist.txt").string() + "' >/dev/null";
    auto timed = [](const std::string& command) {
        const auto begin = Clock::now();
        if (std::system(command.c_str()) != 0) std::exit(1);
        return seconds(begin);
    };
    // Each reader twice, in turns, the faster run counting: whichever runs first after the writes would
    // otherwise pay for them, and the page cache favours whichever read last.
    double cat = 1e9, first = 1e9, crclistTime = 1e9;
    for (int round = 0; round < 2; ++round) {
        cat = std::min(cat, timed(catAll));
        fs::remove(folder / "norvane.state");
        first = std::min(first, check());
        crclistTime = std::min(crclistTime, timed(crclist));
    }
    const double second = check();

    std::printf("cat > /dev/null          %7.3f s\n", cat);
    std::printf("first check (no state)   %7.3f s   / cat: %.2f  (goal <= 1.2)\n", first, first / cat);
    std::printf("second start (state)     %7.3f s              (goal < 1 s)\n", second);
    std::printf("nvbuild crclist          %7.3f s   / cat: %.2f  (goal <= 1.2)\n", crclistTime,
                crclistTime / cat);
    fs::remove_all(folder);
    fs::remove(folder.parent_path() / "bench-crclist.txt");
    return 0;
}
