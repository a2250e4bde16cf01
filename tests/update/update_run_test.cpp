// The whole update run against the scripted server and real files in a scratch folder: what the player's
// folder holds afterwards, what was asked of the server, and what a failure says.

#include "core/crc32.h"
#include "core/text.h"
#include "tests/support/test_support.h"
#include "tests/update/fake_server.h"
#include "update/bookkeeping.h"
#include "update/failure_text.h"
#include "update/file_list.h"
#include "update/folder_files.h"
#include "update/local_state.h"
#include "update/remote_config.h"
#include "update/update_run.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

namespace nv::update {
namespace {

using test::FakeServer;
using test::Fault;
using test::FaultRule;

constexpr const char* kConfigUrl = "http://patch.test/launcher/config.xml";
constexpr uint64_t kMiB = 1 << 20;

// Whole files read in one go (the shared helper reads byte by byte, slow under the sanitizers).
Bytes slurp(const std::wstring& path) {
    Bytes bytes;
    EXPECT_TRUE(readFileBytes(path, bytes, uint64_t(1) << 30)) << wideToUtf8(path);
    return bytes;
}

// A path's UTF-8 form with "/" separators, whatever the platform's own encoding of names.
std::string utf8Of(const std::filesystem::path& path) {
    const std::u8string text = path.generic_u8string();
    return std::string(text.begin(), text.end());
}

std::string url(const std::string& path) {
    return FakeServer::kBase + path;
}

// The server's client: files by game path, published with their list and a configuration.
struct Client {
    std::map<std::string, Bytes> files;

    void publish(FakeServer& server, const std::string& extraConfig = "") const {
        FileList list;
        for (const auto& [path, bytes] : files) {
            list.files.push_back({path, bytes.size(), Crc32::of(bytes.data(), bytes.size())});
            server.put(FakeServer::kBase + percentPath(path), bytes);
        }
        const std::string text = writeFileList(list);
        server.putText(url("crclist.txt"), text);
        server.putText(kConfigUrl, "<config>\ncrcpatch_url=" + std::string(FakeServer::kBase) + "\n" +
                                       extraConfig + "</config>\n");
    }
    static std::string percentPath(const std::string& path) {
        std::string out;
        for (unsigned char c : path)
            out += (std::isalnum(c) || c == '/' || c == '.' || c == '_' || c == '-') ? std::string(1, char(c))
                                                                                     : percent(c);
        return out;
    }
    static std::string percent(unsigned char c) {
        char text[4];
        std::snprintf(text, sizeof text, "%%%02X", c);
        return text;
    }
};

constexpr int kBigSegments = 6; // the large file's, at 1 MiB a segment

Client sampleClient() {
    static const Client client = [] {
        Client c;
        c.files["KaldraOyun.exe"] = test::noiseBytes(300000, 1);
        c.files["data/harita 1/şehir.pak"] = test::noiseBytes((kBigSegments - 1) * kMiB + 123, 2);
        c.files["data/empty.txt"] = {};
        c.files["readme.txt"] = Bytes{'h', 'i'};
        return c;
    }();
    return client;
}

// Records what the run tells the player.
class Recorder : public UpdateObserver {
public:
    std::vector<Step> steps;
    std::vector<std::string> finished;
    std::vector<std::vector<std::wstring>> inUseQuestions;
    int retryAnswers = 0; // how many in-use questions are answered "try again"
    std::vector<std::string> notices;
    bool acceptNotices = false;

    void step(Step s) override { steps.push_back(s); }
    void fileFinished(const std::string& path, uint64_t) override { finished.push_back(path); }
    bool retryInUse(const std::vector<std::wstring>& paths) override {
        inUseQuestions.push_back(paths);
        return retryAnswers-- > 0;
    }
    bool acceptNotice(const std::string& text) override {
        notices.push_back(text);
        return acceptNotices;
    }
};

// The real folder with faults on request, and a count of the files read whole.
class FaultyFiles : public GameFiles {
public:
    explicit FaultyFiles(const std::wstring& folder) : real_(openGameFolder(folder)) {}

    std::string inUsePath;      // replace() onto it fails as held by another program
    int inUseTimes = 0;         // that many times (-1: always)
    uint64_t diskFullAfter = 0; // part writes fail as the disk fills after this many bytes (0: never)
    std::string deniedPath;     // open() of it is refused as needing elevation
    std::atomic<int> checksums{0};

    std::wstring displayPath(const std::string& path) const override { return real_->displayPath(path); }
    bool info(const std::string& path, FileInfo& info) override { return real_->info(path, info); }
    bool checksum(const std::string& path, uint32_t& crc, uint64_t& size, const std::atomic<bool>& cancel,
                  FileError& error) override {
        ++checksums;
        return real_->checksum(path, crc, size, cancel, error);
    }
    std::unique_ptr<PartFile> open(const std::string& path, bool keep, FileError& error) override {
        if (path == deniedPath) {
            error = {FileFault::AccessDenied, 5, path};
            return nullptr;
        }
        auto file = real_->open(path, keep, error);
        if (!file || diskFullAfter == 0 || !path.ends_with(kPartSuffix)) return file;
        return std::make_unique<FillingPart>(std::move(file), *this, path);
    }
    std::unique_ptr<PartFile> openRead(const std::string& path, FileError& error) override {
        return real_->openRead(path, error);
    }
    bool replace(const std::string& from, const std::string& to, FileError& error) override {
        if (to == inUsePath && inUseTimes != 0) {
            if (inUseTimes > 0) --inUseTimes;
            error = {FileFault::InUse, 32, to};
            return false;
        }
        return real_->replace(from, to, error);
    }
    bool remove(const std::string& path, FileError& error) override { return real_->remove(path, error); }
    bool readSmall(const std::string& path, Bytes& bytes, uint64_t maxSize) override {
        return real_->readSmall(path, bytes, maxSize);
    }
    bool writeSmall(const std::string& path, const Bytes& bytes, FileError& error) override {
        return real_->writeSmall(path, bytes, error);
    }

private:
    class FillingPart : public PartFile {
    public:
        FillingPart(std::unique_ptr<PartFile> real, FaultyFiles& owner, std::string path)
            : real_(std::move(real)), owner_(owner), path_(std::move(path)) {}
        bool write(uint64_t offset, const uint8_t* data, size_t size, FileError& error) override {
            if ((owner_.written_ += size) > owner_.diskFullAfter) {
                error = {FileFault::DiskFull, 112, path_};
                return false;
            }
            return real_->write(offset, data, size, error);
        }
        bool read(uint64_t offset, uint8_t* data, size_t size, FileError& error) override {
            return real_->read(offset, data, size, error);
        }
        bool flush(FileError& error) override { return real_->flush(error); }

    private:
        std::unique_ptr<PartFile> real_;
        FaultyFiles& owner_;
        std::string path_;
    };

    std::unique_ptr<GameFiles> real_;
    std::atomic<uint64_t> written_{0};
};

class UpdateRunTest : public ::testing::Test {
protected:
    test::TempDir dir;
    FakeServer server;
    Recorder recorder;
    FaultyFiles files{dir.path()};
    UpdateRequest request = [] {
        UpdateRequest r;
        r.configUrl = kConfigUrl;
        r.localConfigName = "kaldratorrent.config.xml";
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
        log.open(files, "test");
        return runUpdate(request, server, files, recorder, log, cancel);
    }
    std::wstring at(const std::string& path) const { return dir.file(utf8ToWide(path)); }
    void place(const std::string& path, const Bytes& bytes) const { test::writeFile(at(path), bytes); }
    Bytes local(const std::string& path) const { return slurp(at(path)); }

    // Every file of the game folder apart from the patcher's own bookkeeping, with its bytes.
    std::map<std::string, Bytes> gameFolder() const {
        std::map<std::string, Bytes> out;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(test::fsPath(dir.path()))) {
            if (!entry.is_regular_file()) continue;
            const std::string relative =
                utf8Of(std::filesystem::relative(entry.path(), test::fsPath(dir.path())));
            if (relative == kStateFileName || relative.ends_with(".log") ||
                relative == request.localConfigName)
                continue;
            out[relative] = slurp(test::widePath(entry.path()));
        }
        return out;
    }
    // The ".nvpart" files and resume records in the folder.
    std::set<std::string> leftovers() const {
        std::set<std::string> out;
        for (const auto& [path, bytes] : gameFolder())
            if (path.ends_with(kPartSuffix) || path.ends_with(kResumeSuffix)) out.insert(path);
        return out;
    }
};

TEST_F(UpdateRunTest, BringsAnEmptyFolderToTheServersFilesThenFetchesNothing) {
    const Client client = sampleClient();
    client.publish(server);
    UpdateResult result = run();
    ASSERT_EQ(result.outcome, Outcome::UpToDate) << result.failure.detail;
    EXPECT_EQ(gameFolder(), client.files);
    EXPECT_EQ(result.filesFetched, client.files.size());
    EXPECT_EQ(recorder.steps,
              (std::vector<Step>{Step::Config, Step::List, Step::Check, Step::Download, Step::Done}));
    // The large file came in ranges of the segment size, the small ones whole.
    EXPECT_EQ(server.rangeRequests(url("data/harita%201/%C5%9Fehir.pak")), kBigSegments);
    EXPECT_EQ(server.rangeRequests(url("KaldraOyun.exe")), 0);
    // The empty file needed no request.
    EXPECT_EQ(server.requests(url("data/empty.txt")), 0);
    // The configuration and the list were asked past any cache; the files plainly, for the CDN to keep.
    for (const HttpRequest& r : server.log())
        EXPECT_EQ(r.noCache, r.url.find("?nvt=") != std::string::npos) << r.url;
    EXPECT_TRUE(slurp(at(request.localConfigName)).size() > 0);

    // Second start: nothing fetched, nothing read (the state file vouches for every file).
    const int before = server.totalRequests();
    files.checksums = 0;
    result = run();
    ASSERT_EQ(result.outcome, Outcome::UpToDate);
    EXPECT_EQ(server.totalRequests() - before, 2); // configuration and list
    EXPECT_EQ(files.checksums, 0);
    EXPECT_EQ(result.filesFetched, 0u);
}

TEST_F(UpdateRunTest, FetchesOnlyTheFileThatChanged) {
    Client client = sampleClient();
    client.publish(server);
    ASSERT_EQ(run().outcome, Outcome::UpToDate);
    client.files["readme.txt"] = Bytes{'h', 'e', 'y'};
    client.publish(server);
    const int bigBefore = server.requests(url("data/harita%201/%C5%9Fehir.pak"));
    const UpdateResult result = run();
    ASSERT_EQ(result.outcome, Outcome::UpToDate);
    EXPECT_EQ(result.filesFetched, 1u);
    EXPECT_EQ(recorder.finished.back(), "readme.txt");
    EXPECT_EQ(server.requests(url("data/harita%201/%C5%9Fehir.pak")), bigBefore);
    EXPECT_EQ(gameFolder(), client.files);
}

// A file changed in place that the state file still vouches for (as when its write time was kept) passes
// the check; repair reads it.
TEST_F(UpdateRunTest, RepairReadsEveryFileWhateverTheStateFileSays) {
    const Client client = sampleClient();
    client.publish(server);
    ASSERT_EQ(run().outcome, Outcome::UpToDate);
    Bytes damaged = client.files.at("KaldraOyun.exe");
    damaged[1000] ^= 1;
    place("KaldraOyun.exe", damaged);
    Bytes stateText;
    ASSERT_TRUE(files.readSmall(std::string(kStateFileName), stateText, kMaxStateBytes));
    LocalState state = parseLocalState(test::textOf(stateText));
    FileInfo info;
    ASSERT_TRUE(files.info("KaldraOyun.exe", info));
    state["KaldraOyun.exe"].writeTime = info.writeTime;
    const std::string written = writeLocalState(state);
    FileError error;
    ASSERT_TRUE(files.writeSmall(std::string(kStateFileName), Bytes(written.begin(), written.end()), error));

    ASSERT_EQ(run().outcome, Outcome::UpToDate);
    EXPECT_EQ(local("KaldraOyun.exe"), damaged);
    request.repair = true;
    const UpdateResult repaired = run();
    ASSERT_EQ(repaired.outcome, Outcome::UpToDate);
    EXPECT_EQ(repaired.filesFetched, 1u);
    EXPECT_EQ(gameFolder(), client.files);
}

// Every fault ends in its message, the player's old files as they were and no part left behind.
TEST_F(UpdateRunTest, EveryFaultEndsInItsMessageWithTheOldFilesKept) {
    struct Case {
        const char* name;
        std::string target; // the address that misbehaves
        FaultRule rule;
        FailureKind expected;
        int requestsOfTarget; // -1: not checked
    };
    const std::string big = url("data/harita%201/%C5%9Fehir.pak");
    const std::string small = url("KaldraOyun.exe");
    const Case cases[] = {
        {"config missing", kConfigUrl, {Fault::Status, 404}, FailureKind::ConfigUnreachable, 1},
        {"config server down", kConfigUrl, {Fault::Status, 503}, FailureKind::ConfigUnreachable, 3},
        {"config refused", kConfigUrl, {Fault::Refused}, FailureKind::ConfigUnreachable, 3},
        {"list missing", url("crclist.txt"), {Fault::Status, 404}, FailureKind::HttpStatus, 1},
        {"file missing", small, {Fault::Status, 404}, FailureKind::HttpStatus, 1},
        {"file forbidden", small, {Fault::Status, 403}, FailureKind::HttpStatus, 1},
        {"server error", small, {Fault::Status, 500}, FailureKind::HttpStatus, 3},
        {"unavailable", big, {Fault::Status, 503}, FailureKind::HttpStatus, -1},
        {"cut short", small, {Fault::CutShort, 0, 1000}, FailureKind::Network, 3},
        {"wrong bytes", small, {Fault::WrongBytes}, FailureKind::CrcMismatch, 2},
        {"wrong bytes in a segment", big, {Fault::WrongBytes}, FailureKind::CrcMismatch, -1},
        {"wrong content range", big, {Fault::WrongRange}, FailureKind::DownloadFailed, -1},
        {"stall", small, {Fault::Stall, 0, 20}, FailureKind::Network, 3},
        {"endless body", small, {Fault::Endless}, FailureKind::DownloadFailed, 3},
        {"huge length", small, {Fault::HugeLength}, FailureKind::DownloadFailed, 3},
        {"redirect loop", small, {Fault::RedirectLoop}, FailureKind::Network, 1},
        {"refused", big, {Fault::Refused}, FailureKind::Network, -1},
    };
    const Client client = sampleClient();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        test::TempDir folder;
        FaultyFiles faulty(folder.path());
        FakeServer fresh;
        client.publish(fresh);
        // An older client is in place: every file differs from the server's.
        std::map<std::string, Bytes> old;
        for (const auto& [path, bytes] : client.files) {
            old[path] = test::noiseBytes(bytes.size() + 7, 99);
            test::writeFile(folder.file(utf8ToWide(path)), old[path]);
        }
        fresh.fault(c.target, c.rule);
        std::atomic<bool> cancel{false};
        RunLog log;
        Recorder quiet;
        const UpdateResult result = runUpdate(request, fresh, faulty, quiet, log, cancel);
        ASSERT_EQ(result.outcome, Outcome::Failed);
        EXPECT_EQ(result.failure.kind, c.expected) << result.failure.detail;
        if (c.requestsOfTarget >= 0) {
            EXPECT_EQ(fresh.requests(c.target), c.requestsOfTarget);
        }
        for (const auto& [path, bytes] : client.files) {
            const Bytes now = slurp(folder.file(utf8ToWide(path)));
            // A file either is the server's, fetched before the failure stopped the run, or the old one.
            EXPECT_TRUE(now == bytes || now == old[path]) << path;
            if (c.target == url(Client::percentPath(path))) {
                EXPECT_EQ(now, old[path]) << path;
            }
        }
        // Only a large file's finished segments stay, with their record, for the next run to resume.
        for (const auto& entry : std::filesystem::recursive_directory_iterator(test::fsPath(folder.path()))) {
            const std::string name = utf8Of(entry.path().filename());
            if (name.find(".nvpart") == std::string::npos) continue;
            EXPECT_TRUE(name.starts_with("şehir.pak.nvpart")) << name;
            EXPECT_TRUE(std::filesystem::exists(entry.path().parent_path() / u8"şehir.pak.nvpart.seg"))
                << name;
        }
    }
}

TEST_F(UpdateRunTest, TransientFaultsAreRetriedAndARangelessServerGetsOneStream) {
    const Client client = sampleClient();
    client.publish(server);
    const std::string big = url("data/harita%201/%C5%9Fehir.pak");
    server.fault(url("KaldraOyun.exe"), {Fault::CutShort, 0, 5000, 1});
    server.fault(url("readme.txt"), {Fault::Status, 503, 0, 2});
    server.fault(big, {Fault::IgnoreRange});
    const UpdateResult result = run();
    ASSERT_EQ(result.outcome, Outcome::UpToDate) << result.failure.detail;
    EXPECT_EQ(gameFolder(), client.files);
    EXPECT_EQ(server.requests(url("readme.txt")), 3);
    // The big file ended as one plain request after its ranges were answered whole.
    const auto log = server.log();
    EXPECT_TRUE(
        std::any_of(log.begin(), log.end(), [&](const HttpRequest& r) { return r.url == big && !r.range; }));
}

TEST_F(UpdateRunTest, AnInterruptedLargeFileResumesFromItsFinishedSegments) {
    const Client client = sampleClient();
    client.publish(server);
    const std::string big = url("data/harita%201/%C5%9Fehir.pak");
    request.connections = 1; // segments in order: the first four arrive, then the server refuses
    server.fault(big, {Fault::Status, 404, 0, -1, 4});
    UpdateResult result = run();
    ASSERT_EQ(result.outcome, Outcome::Failed);
    EXPECT_EQ(leftovers(), (std::set<std::string>{"data/harita 1/şehir.pak.nvpart",
                                                  "data/harita 1/şehir.pak.nvpart.seg"}));

    server.clearFaults();
    const int before = server.rangeRequests(big);
    result = run();
    ASSERT_EQ(result.outcome, Outcome::UpToDate) << result.failure.detail;
    EXPECT_EQ(server.rangeRequests(big) - before, kBigSegments - 4);
    EXPECT_EQ(gameFolder(), client.files);
    EXPECT_TRUE(leftovers().empty());
}

TEST_F(UpdateRunTest, ADamagedResumedSegmentIsFetchedAgain) {
    const Client client = sampleClient();
    client.publish(server);
    const std::string big = url("data/harita%201/%C5%9Fehir.pak");
    request.connections = 1;
    server.fault(big, {Fault::Status, 404, 0, -1, 3});
    ASSERT_EQ(run().outcome, Outcome::Failed);
    // The part's second segment is damaged on disk between the runs.
    Bytes part = local("data/harita 1/şehir.pak.nvpart");
    part[kMiB + 5] ^= 0xFF;
    place("data/harita 1/şehir.pak.nvpart", part);
    server.clearFaults();
    const int before = server.rangeRequests(big);
    ASSERT_EQ(run().outcome, Outcome::UpToDate);
    EXPECT_EQ(server.rangeRequests(big) - before, kBigSegments - 2);
    EXPECT_EQ(gameFolder(), client.files);
}

TEST_F(UpdateRunTest, CancellingEndsTheRunWithoutAHalfWrittenFile) {
    const Client client = sampleClient();
    client.publish(server);
    place("readme.txt", Bytes{'o', 'l', 'd'});
    server.fault(url("readme.txt"), {Fault::Stall});
    std::atomic<bool> cancel{false};
    std::thread canceller([&] {
        while (server.requests(url("readme.txt")) == 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        cancel = true;
    });
    RunLog log;
    const auto started = std::chrono::steady_clock::now();
    const UpdateResult result = runUpdate(request, server, files, recorder, log, cancel);
    canceller.join();
    EXPECT_EQ(result.outcome, Outcome::Cancelled);
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(10));
    EXPECT_EQ(local("readme.txt"), (Bytes{'o', 'l', 'd'}));
    for (const std::string& left : leftovers())
        EXPECT_TRUE(left.starts_with("data/harita 1/")) << left; // only a large file's finished segments
}

TEST_F(UpdateRunTest, FilesHeldByAnotherProgramWaitForThePlayersAnswer) {
    const Client client = sampleClient();
    client.publish(server);
    place("KaldraOyun.exe", Bytes{'r', 'u', 'n', 's'});
    files.inUsePath = "KaldraOyun.exe";
    files.inUseTimes = 2; // the download's own try and the first after it fail
    recorder.retryAnswers = 1;
    UpdateResult result = run();
    ASSERT_EQ(result.outcome, Outcome::UpToDate) << result.failure.detail;
    ASSERT_EQ(recorder.inUseQuestions.size(), 1u);
    EXPECT_EQ(recorder.inUseQuestions[0], std::vector<std::wstring>{files.displayPath("KaldraOyun.exe")});
    EXPECT_EQ(gameFolder(), client.files);

    // Given up: the file stays as the program holds it, its download is not left behind.
    place("KaldraOyun.exe", Bytes{'r', 'u', 'n', 's'});
    files.inUseTimes = -1;
    recorder.retryAnswers = 0;
    request.repair = true;
    result = run();
    ASSERT_EQ(result.outcome, Outcome::Failed);
    EXPECT_EQ(result.failure.kind, FailureKind::FileInUse);
    EXPECT_EQ(local("KaldraOyun.exe"), (Bytes{'r', 'u', 'n', 's'}));
    EXPECT_TRUE(leftovers().empty());
}

TEST_F(UpdateRunTest, AFullDiskAndAProtectedFolderAreNamed) {
    const Client client = sampleClient();
    client.publish(server);
    files.diskFullAfter = 2 * kMiB;
    UpdateResult result = run();
    ASSERT_EQ(result.outcome, Outcome::Failed);
    EXPECT_EQ(result.failure.kind, FailureKind::DiskFull);
    EXPECT_GT(result.failure.bytesNeeded, 0u);
    EXPECT_TRUE(leftovers().empty());

    files.diskFullAfter = 0;
    files.deniedPath = "readme.txt.nvpart";
    result = run();
    ASSERT_EQ(result.outcome, Outcome::Failed);
    EXPECT_EQ(result.failure.kind, FailureKind::AccessDenied);
}

TEST_F(UpdateRunTest, SelfUpdateFetchesTheNewPatcherAndStopsOnAWrongOne) {
    Client client = sampleClient();
    const Bytes newPatcher = test::noiseBytes(200000, 7);
    client.files["Kaldra.exe"] = test::noiseBytes(10, 8); // the list's own copy is never fetched as a file
    server.put("http://patch.test/Kaldra.exe", newPatcher);
    const uint32_t newCrc = Crc32::of(newPatcher.data(), newPatcher.size());
    client.publish(server, "nv_patcher_url=/Kaldra.exe\nnv_patcher_crc32=" + crcText(newCrc) + "\n");
    request.selfPath = "Kaldra.exe";
    request.selfCrc = 0x12345678;
    UpdateResult result = run();
    ASSERT_EQ(result.outcome, Outcome::SelfUpdate) << result.failure.detail;
    EXPECT_EQ(result.newPatcher, "Kaldra.exe.nvpart");
    EXPECT_EQ(local("Kaldra.exe.nvpart"), newPatcher);
    EXPECT_EQ(server.requests(url("crclist.txt")), 0); // the new patcher makes the rest of the run

    // Started anew, the patcher is the server's: the run goes on and leaves its own file alone.
    std::filesystem::remove(test::fsPath(at("Kaldra.exe.nvpart")));
    request.selfCrc = newCrc;
    result = run();
    ASSERT_EQ(result.outcome, Outcome::UpToDate);
    EXPECT_EQ(server.requests(url("Kaldra.exe")), 0);
    EXPECT_FALSE(fileExists(at("Kaldra.exe")));

    // A patcher whose bytes are not the announced ones stops the run instead of restarting it forever.
    request.selfCrc = 0x12345678;
    server.fault("http://patch.test/Kaldra.exe", {Fault::WrongBytes});
    result = run();
    ASSERT_EQ(result.outcome, Outcome::Failed);
    EXPECT_EQ(result.failure.kind, FailureKind::CrcMismatch);
    EXPECT_FALSE(fileExists(at("Kaldra.exe.nvpart")));
}

TEST_F(UpdateRunTest, BadConfigurationsAndListsAreRefusedWhole) {
    struct Case {
        const char* name;
        std::string config;
        std::string list;
        FailureKind expected;
    };
    const std::string base = std::string("crcpatch_url=") + FakeServer::kBase + "\n";
    const Case cases[] = {
        {"not XML", "crcpatch_url=x", "", FailureKind::ConfigInvalid},
        {"no download address", "<c>crclist=a.txt</c>", "", FailureKind::NoDownloadUrl},
        {"address not http", "<c>crcpatch_url=ftp://x/</c>", "", FailureKind::ConfigInvalid},
        {"escaping path", "<c>" + base + "</c>", "../evil.dll\t1\t00000000\n", FailureKind::ListInvalid},
        {"list names itself", "<c>" + base + "</c>", "crclist.txt\t1\t00000000\n", FailureKind::ListInvalid},
        {"stale list", "<c>" + base + "crclist_crc32=00000000\n</c>", "a.txt\t1\t00000000\n",
         FailureKind::CrcMismatch},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        FakeServer fresh;
        fresh.putText(kConfigUrl, c.config);
        fresh.putText(url("crclist.txt"), c.list);
        std::atomic<bool> cancel{false};
        RunLog log;
        const UpdateResult result = runUpdate(request, fresh, files, recorder, log, cancel);
        ASSERT_EQ(result.outcome, Outcome::Failed);
        EXPECT_EQ(result.failure.kind, c.expected) << result.failure.detail;
        EXPECT_FALSE(fileExists(at("evil.dll")));
    }
}

TEST_F(UpdateRunTest, TheNoticeIsAskedUntilAcceptedAndAgainWhenItChanges) {
    const Client client = sampleClient();
    client.publish(server, "notice=Kurallar\\nOkuyun\n");

    // Refused: nothing of the game's is written, not even the kept configuration.
    UpdateResult result = run();
    EXPECT_EQ(result.outcome, Outcome::Refused);
    EXPECT_EQ(recorder.notices, std::vector<std::string>{"Kurallar\nOkuyun"});
    EXPECT_TRUE(gameFolder().empty());
    EXPECT_FALSE(std::filesystem::exists(test::fsPath(at(request.localConfigName))));
    EXPECT_EQ(server.requests(url("crclist.txt")), 0);

    recorder.acceptNotices = true;
    result = run();
    ASSERT_EQ(result.outcome, Outcome::UpToDate) << result.failure.detail;
    EXPECT_EQ(recorder.notices.size(), 2u);
    std::map<std::string, Bytes> folder = gameFolder();
    EXPECT_EQ(folder.erase(std::string(kNoticeFileName)), 1u);
    EXPECT_EQ(folder, client.files);

    // Remembered: the same text is not asked again, whatever the player would answer now.
    recorder.acceptNotices = false;
    EXPECT_EQ(run().outcome, Outcome::UpToDate);
    EXPECT_EQ(recorder.notices.size(), 2u);

    client.publish(server, "notice=Kurallar değişti\n");
    EXPECT_EQ(run().outcome, Outcome::Refused);
    EXPECT_EQ(recorder.notices.back(), "Kurallar değişti");
}

TEST(FailureText, FillsTheLocaleTextsPlaceholders) {
    LocaleTable strings;
    loadLocaleDefaults(strings);
    Failure http;
    http.kind = FailureKind::HttpStatus;
    http.httpStatus = 404;
    http.subject = "data/a.pak";
    EXPECT_EQ(failureText(http, strings), L"Sunucu hatası (HTTP 404): data/a.pak");
    Failure net;
    net.kind = FailureKind::Network;
    net.transfer.error = TransferError::Connect;
    net.transfer.systemCode = 12029;
    EXPECT_EQ(failureText(net, strings), L"Bağlantı hatası: sunucuya bağlanılamadı (12029)");
    Failure disk;
    disk.kind = FailureKind::DiskFull;
    disk.bytesNeeded = 3 << 20;
    EXPECT_EQ(failureText(disk, strings), L"Diskte yeterli boş alan yok (gereken: 3,0 MB).");
    strings["NV_CRC_MISMATCH"] = L"100% bozuk: %s";
    Failure crc;
    crc.kind = FailureKind::CrcMismatch;
    crc.subject = "ş.pak";
    EXPECT_EQ(failureText(crc, strings), L"100% bozuk: ş.pak");
}

} // namespace
} // namespace nv::update
