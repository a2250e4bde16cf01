// Delta updates through the whole run, against the scripted server and real files: a changed large file is
// brought to its new bytes by fetching only the chunks the player lacks, verified whole, and every doubt (no
// index, a damaged or stale one, a server without ranges, bytes the index does not know) ends in the whole
// file instead.

#include "core/crc32.h"
#include "core/text.h"
#include "tests/support/test_support.h"
#include "tests/update/fake_server.h"
#include "update/bookkeeping.h"
#include "update/chunk_index.h"
#include "update/delta_plan.h"
#include "update/file_list.h"
#include "update/folder_files.h"
#include "update/update_run.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace nv::update {
namespace {

using test::FakeServer;
using test::Fault;
using test::FaultRule;

constexpr const char* kConfigUrl = "http://patch.test/launcher/config.xml";
constexpr uint64_t kKiB = 1 << 10, kMiB = 1 << 20;

std::string url(const std::string& path) {
    return FakeServer::kBase + path;
}

std::string indexBytesOf(const Bytes& file) {
    ChunkIndex index;
    index.fileSize = file.size();
    index.fileCrc = Crc32::of(file.data(), file.size());
    ChunkHasher hasher(kChunkParams, [&](const Chunk& c) { index.chunks.push_back(c); });
    hasher.update(file.data(), file.size());
    hasher.finish();
    return writeChunkIndex(index);
}

// The server's client as crclist publishes it: the files, an index for each large one, the list naming them.
struct Client {
    std::map<std::string, Bytes> files;

    void publish(FakeServer& server) const {
        FileList list;
        for (const auto& [path, bytes] : files) {
            list.files.push_back({path, bytes.size(), Crc32::of(bytes.data(), bytes.size())});
            server.put(url(path), bytes);
            if (bytes.size() < kIndexThreshold) continue;
            const std::string index = indexBytesOf(bytes);
            server.putText(url(indexPathFor(path)), index);
            list.comments.push_back(indexRefLine(path, {index.size(), hash128(index.data(), index.size())}));
        }
        server.putText(url("crclist.txt"), writeFileList(list));
        server.putText(kConfigUrl,
                       "<config>\ncrcpatch_url=" + std::string(FakeServer::kBase) + "\n</config>\n");
    }
};

// The body bytes the server sent for one address so far (ranges as asked, whole requests the file's size).
uint64_t servedBytes(const FakeServer& server, const std::string& address, uint64_t wholeSize) {
    uint64_t total = 0;
    for (const HttpRequest& r : server.log())
        if (r.url == address) total += r.range ? r.range->length() : wholeSize;
    return total;
}

Bytes edited(const Bytes& original, size_t at, size_t remove, const Bytes& insert) {
    Bytes out(original.begin(), original.begin() + at);
    out.insert(out.end(), insert.begin(), insert.end());
    out.insert(out.end(), original.begin() + at + remove, original.end());
    return out;
}

class Recorder : public UpdateObserver {
public:
    struct Delta {
        std::string path;
        uint64_t size, fetched;
    };
    std::vector<Delta> deltas;
    uint64_t lastTotal = 0;
    void deltaApplied(const std::string& path, uint64_t size, uint64_t fetched) override {
        deltas.push_back({path, size, fetched});
    }
    void progress(const Progress& p) override {
        if (p.step == Step::Download) lastTotal = p.bytesTotal;
    }
};

class DeltaRunTest : public ::testing::Test {
protected:
    const std::string pack = "data/pack01.pak";
    const Bytes v1 = test::noiseBytes(5 * kMiB, 11);
    // 1,000 bytes inserted at 2 MiB and 100 KiB overwritten at 4 MiB.
    const Bytes v2 = [this] {
        Bytes b = edited(v1, 2 * kMiB, 0, test::noiseBytes(1000, 12));
        const Bytes patch = test::noiseBytes(100 * kKiB, 13);
        std::copy(patch.begin(), patch.end(), b.begin() + 4 * kMiB);
        return b;
    }();

    test::TempDir dir;
    FakeServer server;
    Recorder recorder;
    std::unique_ptr<GameFiles> files = openGameFolder(dir.path());
    UpdateRequest request = [] {
        UpdateRequest r;
        r.configUrl = kConfigUrl;
        r.connections = 3;
        r.segmentMb = 1;
        r.retry.attempts = 3;
        r.retry.firstDelay = std::chrono::milliseconds(1);
        r.retry.maxDelay = std::chrono::milliseconds(4);
        return r;
    }();

    UpdateResult run() {
        std::atomic<bool> cancel{false};
        RunLog log;
        log.open(*files, "test");
        return runUpdate(request, server, *files, recorder, log, cancel);
    }
    std::wstring at(const std::string& path) const { return dir.file(utf8ToWide(path)); }
    Bytes local(const std::string& path) const {
        Bytes bytes;
        readFileBytes(at(path), bytes, uint64_t(1) << 30);
        return bytes;
    }
    // The player has v1 (fetched by an earlier run), the server now publishes `now`.
    void startFrom(const Client& now) {
        Client before;
        before.files[pack] = v1;
        before.publish(server);
        ASSERT_EQ(run().outcome, Outcome::UpToDate);
        ASSERT_EQ(local(pack), v1);
        now.publish(server);
        recorder.deltas.clear();
    }
    std::vector<std::string> parts() const {
        std::vector<std::string> out;
        for (const auto& e : std::filesystem::recursive_directory_iterator(test::fsPath(dir.path())))
            if (e.path().string().find(".nvpart") != std::string::npos) out.push_back(e.path().string());
        return out;
    }
};

TEST_F(DeltaRunTest, AnInsertionAndAnOverwriteFetchOnlyTheChangedChunks) {
    Client client;
    client.files[pack] = v2;
    startFrom(client);
    const uint64_t before = servedBytes(server, url(pack), v2.size());
    const UpdateResult result = run();
    ASSERT_EQ(result.outcome, Outcome::UpToDate) << result.failure.detail;
    EXPECT_EQ(local(pack), v2);
    const uint64_t fetched = servedBytes(server, url(pack), v2.size()) - before;
    // The 101 KiB changed, rounded out to whole chunks at both edits: well under a megabyte of five.
    EXPECT_GT(fetched, 100 * kKiB);
    EXPECT_LT(fetched, 900 * kKiB);
    ASSERT_EQ(recorder.deltas.size(), 1u);
    EXPECT_EQ(recorder.deltas[0].size, v2.size());
    EXPECT_EQ(recorder.deltas[0].fetched, fetched + indexBytesOf(v2).size());
    EXPECT_EQ(result.deltaFiles, 1u);
    EXPECT_EQ(result.bytesSaved, v2.size() - recorder.deltas[0].fetched);
    // Progress counted what was fetched, not the file's size.
    EXPECT_EQ(recorder.lastTotal, fetched);
    EXPECT_TRUE(parts().empty());
}

// A pack renamed on the server (and changed a little) is assembled from the old name's chunks.
TEST_F(DeltaRunTest, ChunksComeFromTheOtherFilesOfTheRunToo) {
    Client client;
    Bytes changedOld = v1;
    changedOld[100] ^= 1;
    client.files[pack] = changedOld;
    client.files["data/pack02.pak"] = edited(v1, 4 * kMiB, 0, test::noiseBytes(10, 14));
    startFrom(client);
    const UpdateResult result = run();
    ASSERT_EQ(result.outcome, Outcome::UpToDate) << result.failure.detail;
    EXPECT_EQ(local("data/pack02.pak"), client.files["data/pack02.pak"]);
    EXPECT_EQ(local(pack), changedOld);
    EXPECT_LT(servedBytes(server, url("data/pack02.pak"), v1.size()), 600 * kKiB);
    EXPECT_EQ(result.deltaFiles, 2u);
}

// A pack the server renamed is assembled from the old name's chunks, which the last run verified.
TEST_F(DeltaRunTest, ARenamedPackCostsOnlyItsIndex) {
    Client client;
    client.files["data/renamed.pak"] = v1;
    startFrom(client);
    const UpdateResult result = run();
    ASSERT_EQ(result.outcome, Outcome::UpToDate) << result.failure.detail;
    EXPECT_EQ(local("data/renamed.pak"), v1);
    EXPECT_EQ(servedBytes(server, url("data/renamed.pak"), v1.size()), 0u);
    EXPECT_EQ(result.bytesSaved, v1.size() - indexBytesOf(v1).size());
}

// Whatever goes wrong with the delta, the file comes whole and verified, and the player's old copy is
// untouched until then.
TEST_F(DeltaRunTest, EveryDoubtFallsBackToTheWholeFile) {
    struct Case {
        const char* name;
        std::function<void(FakeServer&, const std::string& indexUrl)> spoil;
    };
    const Case cases[] = {
        {"no index on the server",
         [](FakeServer& s, const std::string& i) {
             s.fault(i, {Fault::Status, 404});
         }},
        {"an index that is not the list's",
         [](FakeServer& s, const std::string& i) {
             s.putText(i, indexBytesOf(test::noiseBytes(2 * kMiB, 1)));
         }},
        {"a server that ignores ranges",
         [this](FakeServer& s, const std::string&) { s.fault(url(pack), {Fault::IgnoreRange}); }},
        {"a range whose bytes the index does not know",
         [this](FakeServer& s, const std::string&) {
             s.fault(url(pack), {Fault::WrongBytes, 0, 0, 1});
         }},
        {"a server error on the index, then nothing",
         [](FakeServer& s, const std::string& i) {
             s.fault(i, {Fault::Status, 503});
         }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        server.clearFaults();
        std::filesystem::remove_all(test::fsPath(dir.path()));
        std::filesystem::create_directories(test::fsPath(dir.path()));
        Client client;
        client.files[pack] = v2;
        startFrom(client);
        c.spoil(server, url(indexPathFor(pack)));
        const uint64_t before = servedBytes(server, url(pack), v2.size());
        const UpdateResult result = run();
        ASSERT_EQ(result.outcome, Outcome::UpToDate) << result.failure.detail;
        EXPECT_EQ(local(pack), v2);
        EXPECT_EQ(result.deltaFiles, 0u);
        EXPECT_GE(servedBytes(server, url(pack), v2.size()) - before, v2.size());
        EXPECT_TRUE(parts().empty());
    }
}

TEST_F(DeltaRunTest, BytesTheListDoesNotNameAreRefusedAndTheOldFileKept) {
    Client client;
    client.files[pack] = v2;
    startFrom(client);
    server.fault(url(pack), {Fault::WrongBytes});
    const UpdateResult result = run();
    EXPECT_EQ(result.outcome, Outcome::Failed);
    EXPECT_EQ(result.failure.kind, FailureKind::CrcMismatch);
    EXPECT_EQ(local(pack), v1);
    EXPECT_TRUE(parts().empty());
}

TEST_F(DeltaRunTest, AnInterruptedDeltaResumesWithWhatItFetched) {
    Client client;
    client.files[pack] = edited(v1, 1 * kMiB, 3 * kMiB, test::noiseBytes(3 * kMiB, 15));
    startFrom(client);
    const uint64_t base = servedBytes(server, url(pack), 0);
    request.connections = 1;
    // The first three ranges arrive, then the server refuses.
    server.fault(url(pack), {Fault::Status, 404, 0, -1, 3});
    ASSERT_EQ(run().outcome, Outcome::Failed);
    EXPECT_EQ(local(pack), v1);
    ASSERT_EQ(parts().size(), 1u);
    const uint64_t first = servedBytes(server, url(pack), 0) - base;
    server.clearFaults();
    const UpdateResult result = run();
    ASSERT_EQ(result.outcome, Outcome::UpToDate) << result.failure.detail;
    EXPECT_EQ(local(pack), client.files[pack]);
    // The second run fetched only what the first had not: about three megabytes in all, not six.
    const uint64_t total = servedBytes(server, url(pack), 0) - base;
    EXPECT_LT(total, 3 * kMiB + 900 * kKiB);
    EXPECT_GT(first, 2 * kMiB);
    EXPECT_TRUE(parts().empty());
}

// The plan on its own: what is kept, copied and fetched, and how fetches are joined into requests.
TEST(DeltaPlan, JoinsNeighboursAndBoundsRequests) {
    ChunkIndex index;
    for (uint32_t i = 0; i < 10; ++i)
        index.chunks.push_back({uint64_t(i) * 100, 100, Hash128{uint8_t(i + 1)}});
    index.fileSize = 1000;
    LocalChunks local;
    // Chunks 0-2 in source 0 in order, chunk 3 in source 1, chunk 7 in source 0 out of place.
    local.add(0,
              {{0, 100, Hash128{1}}, {100, 100, Hash128{2}}, {200, 100, Hash128{3}}, {900, 100, Hash128{8}}});
    local.add(1, {{5000, 100, Hash128{4}}, {0, 100, Hash128{1}}});
    struct Case {
        const char* name;
        std::vector<char> present;
        uint64_t maxRequest;
        std::string kinds; // K keep, C copy, F fetch: one letter per piece
        size_t requests;
    };
    const Case cases[] = {
        {"copies joined while contiguous; fetches joined", {}, 1000, "CCFCF", 2},
        {"fetches split at the request size", {}, 200, "CCFFCF", 3},
        {"an earlier run's chunks kept in place", {0, 0, 0, 0, 1, 1, 0, 0, 0, 1}, 1000, "CCKFCFK", 2},
    };
    for (const Case& c : cases) {
        const DeltaPlan plan = planDelta(index, local, c.present, c.maxRequest);
        std::string kinds;
        uint64_t next = 0;
        for (const DeltaPiece& p : plan.pieces) {
            kinds += p.kind == PieceKind::Keep ? 'K' : p.kind == PieceKind::Copy ? 'C' : 'F';
            EXPECT_EQ(p.target.first, next) << c.name;
            EXPECT_EQ(p.target.length(), p.chunkCount * 100) << c.name;
            EXPECT_LE(p.kind == PieceKind::Fetch ? p.target.length() : 0, c.maxRequest) << c.name;
            next = p.target.last + 1;
        }
        EXPECT_EQ(next, 1000u) << c.name;
        EXPECT_EQ(kinds, c.kinds) << c.name;
        EXPECT_EQ(plan.fetchRequests, c.requests) << c.name;
        EXPECT_EQ(plan.keepBytes + plan.copyBytes + plan.fetchBytes, 1000u) << c.name;
    }
    // The copy of chunk 3 comes from source 1 at its own offset; chunk 8 from source 0's end.
    const DeltaPlan plan = planDelta(index, local, {}, 1000);
    EXPECT_EQ(plan.pieces[1].source, 1u);
    EXPECT_EQ(plan.pieces[1].sourceOffset, 5000u);
    EXPECT_EQ(plan.pieces[3].sourceOffset, 900u);
    EXPECT_TRUE(deltaPays(plan, 1000, 0));
    EXPECT_FALSE(deltaPays(planDelta(index, LocalChunks(), {}, 1000), 1000, 0));
}

} // namespace
} // namespace nv::update
