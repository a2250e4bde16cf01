#include "update/update_run.h"

#include "core/crc32.h"
#include "core/text.h"
#include "skin/settings.h"
#include "update/bookkeeping.h"
#include "update/checked_sink.h"
#include "update/chunk_index.h"
#include "update/delta_plan.h"
#include "update/file_list.h"
#include "update/local_state.h"
#include "update/remote_config.h"
#include "update/segments.h"
#include "update/signed_list.h"
#include "update/url.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <set>
#include <mutex>
#include <thread>

namespace nv::update {
namespace {

using Clock = std::chrono::steady_clock;

constexpr uint64_t kMaxPatcherBytes = 512u << 20;
constexpr size_t kWriteBuffer = 256u << 10; // bytes gathered before a write: fewer system calls per body
constexpr auto kTick = std::chrono::milliseconds(100);

Failure fileFailure(const FileError& error, FailureKind otherwise) {
    Failure failure;
    failure.kind = error.fault == FileFault::DiskFull       ? FailureKind::DiskFull
                   : error.fault == FileFault::InUse        ? FailureKind::FileInUse
                   : error.fault == FileFault::AccessDenied ? FailureKind::AccessDenied
                                                            : otherwise;
    failure.subject = error.path;
    failure.file = error;
    failure.detail = describe(error);
    return failure;
}

Failure fetchFailure(const FetchOutcome& outcome, const std::string& subject) {
    Failure failure;
    failure.subject = subject;
    failure.transfer = outcome.transfer;
    failure.detail = subject + ": " + outcome.detail;
    switch (outcome.fault) {
    case FetchFault::Status:
        failure.kind = FailureKind::HttpStatus;
        failure.httpStatus = outcome.transfer.head.status;
        break;
    case FetchFault::Network:
        failure.kind = FailureKind::Network;
        break;
    case FetchFault::ShortBody:
        failure.kind = outcome.transfer.error == TransferError::None ? FailureKind::DownloadFailed
                                                                     : FailureKind::Network;
        break;
    default:
        failure.kind = FailureKind::DownloadFailed;
        break;
    }
    return failure;
}

// One file to fetch, shared by the tasks that fetch its pieces.
struct FileJob {
    std::string path; // where it goes
    std::string part; // where it is written
    std::string record;
    std::optional<uint64_t> size; // unknown only for the new patcher
    uint32_t crc = 0;
    std::optional<Sha256Digest> sha256; // from the signed list, when the patcher has update keys
    bool replaceWhenDone = true;

    uint64_t segmentBytes = 0;
    std::vector<char> segmentDone;
    std::vector<uint32_t> segmentCrc;
    size_t segmentsLeft = 0;

    std::mutex mutex;
    std::condition_variable idle;
    int inflight = 0;       // segment tasks running
    bool oneStream = false; // the server would not serve ranges: fetched whole instead
    bool done = false;      // verified (and replaced, or waiting for its target to be free)
    bool inUse = false;     // verified, its target held by another program
    int crcFailures = 0;
    std::unique_ptr<PartFile> file;
    std::unique_ptr<PartFile> recordFile;
    uint64_t recordEnd = 0;
    std::atomic<bool> abandon{false};
    std::atomic<uint64_t> received{0}; // bytes of this file taken so far (resumed segments included)
    std::atomic<uint64_t> fetchTotal{
        0}; // what this file needs from the server: its size, or a delta's chunks

    // A delta: the new file's index and its pieces in order, which then take the place of the segments
    // (segmentDone, segmentCrc and segmentsLeft count pieces).
    std::shared_ptr<const ChunkIndex> index;
    uint64_t indexBytes = 0;
    std::vector<DeltaPiece> pieces;

    bool segmented() const { return !segmentDone.empty() && !oneStream; }
    ByteRange pieceRange(size_t i) const {
        return pieces.empty() ? segmentRange(*size, segmentBytes, i) : pieces[i].target;
    }
};

// Follows a fetched range chunk by chunk: each chunk's bytes must have the hash the index gives it.
class ChunkCheck {
public:
    ChunkCheck(const ChunkIndex& index, size_t firstChunk) : index_(index), chunk_(firstChunk) {}

    bool take(const uint8_t* data, size_t size) {
        while (size > 0) {
            if (chunk_ >= index_.chunks.size()) return false;
            const Chunk& chunk = index_.chunks[chunk_];
            const size_t n = size_t(std::min<uint64_t>(size, chunk.length - filled_));
            hasher_.update(data, n);
            filled_ += n;
            data += n, size -= n;
            if (filled_ == chunk.length) {
                if (hasher_.digest() != chunk.hash) return false;
                hasher_.reset();
                filled_ = 0;
                ++chunk_;
            }
        }
        return true;
    }

private:
    const ChunkIndex& index_;
    size_t chunk_;
    uint64_t filled_ = 0;
    Hasher128 hasher_;
};

struct Task {
    FileJob* job;
    long segment; // -1: the whole file
};

// Gathers a body's bytes and writes them at their place in the part, summing them as they go.
class PartWriter {
public:
    PartWriter(PartFile& file, uint64_t offset) : file_(file), offset_(offset) {
        buffer_.reserve(kWriteBuffer);
    }

    bool take(const uint8_t* data, size_t size) {
        crc_.update(data, size);
        while (size > 0) {
            const size_t n = std::min(size, kWriteBuffer - buffer_.size());
            buffer_.insert(buffer_.end(), data, data + n);
            data += n, size -= n;
            if (buffer_.size() == kWriteBuffer && !drain()) return false;
        }
        return true;
    }
    bool drain() {
        if (buffer_.empty()) return true;
        if (!file_.write(offset_, buffer_.data(), buffer_.size(), error_)) return false;
        offset_ += buffer_.size();
        buffer_.clear();
        return true;
    }
    uint32_t crc() const { return crc_.value(); }
    const FileError& error() const { return error_; }

private:
    PartFile& file_;
    uint64_t offset_;
    std::vector<uint8_t> buffer_;
    Crc32 crc_;
    FileError error_;
};

class Run {
public:
    Run(const UpdateRequest& request, HttpTransport& transport, GameFiles& files, UpdateObserver& observer,
        RunLog& log, const std::atomic<bool>& cancel)
        : request_(request), transport_(transport), files_(files), observer_(observer), log_(log),
          cancel_(cancel) {}

    UpdateResult execute();

private:
    // The run's own stop flag, given to every transfer: set when the owner cancels (the watch thread copies
    // it) and when one part of the run fails, so that the others end too.
    bool stopping() const { return stop_.load(std::memory_order_relaxed); }
    void fail(Failure failure);
    void setStep(Step step);
    void watch();
    Progress snapshot();

    bool fetchConfig(RemoteConfig& config);
    bool noticeAccepted(const std::string& notice);
    bool fetchSmall(const std::string& url, uint64_t limit, Bytes& body, FetchOutcome& outcome,
                    bool noCache = true);
    bool selfUpdate(const RemoteConfig& config, UpdateResult& result, const FileList* signedList);
    bool signedPatcher(const RemoteConfig& config, const FileList& list, FileJob& job);
    bool fetchList(const RemoteConfig& config, FileList& list);
    bool acceptSigned(std::string_view bytes, const std::string& listName, FileList& list);
    bool matchesSignedHash(FileJob& job);
    bool skipped(const ListEntry& entry) const;
    void check(const FileList& list, std::vector<const ListEntry*>& toFetch);
    void download(const std::vector<const ListEntry*>& toFetch, const std::string& base,
                  const std::map<std::string, IndexRef>& indexes);
    std::unique_ptr<FileJob> makeJob(const ListEntry& entry);
    void inParallel(size_t count, int threads, const std::function<void(size_t)>& work);
    void prepareDeltas(const std::map<std::string, IndexRef>& indexes);
    std::shared_ptr<const ChunkIndex> fetchIndex(const FileJob& job, const IndexRef& ref);
    void planJob(FileJob& job, const LocalChunks& local, const std::vector<std::string>& sources);
    void resume(FileJob& job);
    void worker();
    void runTask(const Task& task);
    void fetchSegment(FileJob& job, size_t index);
    void fetchWhole(FileJob& job);
    void switchToOneStream(FileJob& job);
    void wholeFromNowOn(FileJob& job);
    void finishJob(FileJob& job, uint32_t crc);
    void putInPlace(FileJob& job);
    void settleInUse();
    void cleanUp();
    void remember(const std::string& path, uint32_t crc);
    void saveState();
    void push(Task task, bool front = false);

    const UpdateRequest& request_;
    HttpTransport& transport_;
    GameFiles& files_;
    UpdateObserver& observer_;
    RunLog& log_;
    const std::atomic<bool>& cancel_;

    std::atomic<bool> stop_{false};
    bool refused_ = false; // the player did not accept the notice
    std::mutex failMutex_;
    Failure failure_;

    std::mutex observerMutex_;
    std::atomic<Step> step_{Step::Config};
    std::atomic<uint64_t> filesChecked_{0}, checkTotal_{0}, filesDone_{0};
    std::deque<std::pair<Clock::time_point, uint64_t>> samples_;

    std::mutex stateMutex_;
    LocalState state_;

    std::string base_;
    std::string patcherUrl_;
    SignedList signed_; // the accepted signed list's fields, with update keys
    uint64_t segmentBytes_ = 0;
    std::vector<std::unique_ptr<FileJob>> jobs_;
    std::atomic<uint64_t> bytesTotal_{0};
    std::atomic<FileJob*> current_{nullptr};
    std::atomic<uint64_t> bytesTaken_{0};
    std::atomic<size_t> filesFetched_{0};
    std::atomic<size_t> deltaFiles_{0};
    std::vector<std::string> unlisted_;
    std::atomic<uint64_t> bytesSaved_{0};

    std::mutex queueMutex_;
    std::condition_variable queueChanged_;
    std::deque<Task> queue_;
    int busy_ = 0;
};

void Run::fail(Failure failure) {
    if (failure.kind == FailureKind::DiskFull && failure.bytesNeeded == 0) {
        uint64_t received = 0;
        for (const auto& job : jobs_)
            received += job->received;
        failure.bytesNeeded = bytesTotal_ > received ? bytesTotal_ - received : 0;
    }
    {
        std::lock_guard lock(failMutex_);
        if (failure_.kind == FailureKind::None && !cancel_.load()) {
            failure_ = std::move(failure);
            log_.line("HATA: " + failure_.detail);
        }
    }
    stop_ = true;
    queueChanged_.notify_all();
}

void Run::setStep(Step step) {
    step_ = step;
    std::lock_guard lock(observerMutex_);
    observer_.step(step);
    observer_.progress(snapshot());
}

Progress Run::snapshot() {
    Progress p;
    p.step = step_;
    if (p.step == Step::Check) {
        p.filesDone = filesChecked_;
        p.filesTotal = checkTotal_;
        return p;
    }
    if (p.step != Step::Download && p.step != Step::Done) return p;
    p.filesDone = filesDone_;
    p.filesTotal = jobs_.size();
    p.bytesTotal = bytesTotal_;
    for (const auto& job : jobs_)
        p.bytesDone += job->received;
    if (FileJob* job = current_.load()) {
        p.currentFile = job->path;
        p.currentDone = job->received;
        p.currentSize = job->fetchTotal;
    }
    const Clock::time_point now = Clock::now();
    samples_.emplace_back(now, p.bytesDone);
    while (samples_.size() > 2 && now - samples_.front().first > std::chrono::seconds(4))
        samples_.pop_front();
    const double seconds = std::chrono::duration<double>(now - samples_.front().first).count();
    if (seconds >= 0.5 && p.bytesDone >= samples_.front().second) {
        p.bytesPerSecond = double(p.bytesDone - samples_.front().second) / seconds;
        if (p.bytesPerSecond > 0 && p.bytesTotal >= p.bytesDone)
            p.secondsLeft = int64_t(double(p.bytesTotal - p.bytesDone) / p.bytesPerSecond + 0.5);
    }
    return p;
}

std::string describeRequest(const UpdateRequest& r) {
    return "baglanti " + std::to_string(r.connections) + ", parca " + std::to_string(r.segmentMb) + " MB" +
           (r.repair ? ", onarim (durum dosyasi kullanilmiyor)" : "");
}

UpdateResult Run::execute() {
    UpdateResult result;
    bool finished = false;
    std::mutex watchMutex;
    std::condition_variable watchWake;
    std::thread watcher([&] {
        std::unique_lock lock(watchMutex);
        while (!watchWake.wait_for(lock, kTick, [&] { return finished; })) {
            if (cancel_.load()) {
                stop_ = true;
                queueChanged_.notify_all();
            }
            const Step step = step_;
            if (step == Step::Check || step == Step::Download) {
                std::lock_guard observerLock(observerMutex_);
                observer_.progress(snapshot());
            }
        }
    });
    log_.line("Guncelleme basliyor: " + describeRequest(request_));

    RemoteConfig config;
    FileList list;
    std::vector<const ListEntry*> toFetch;
    // With update keys the list comes before the self-update: it alone says which patcher may be installed,
    // the configuration only where it lies.
    bool ready = fetchConfig(config);
    if (ready && request_.requireSigned)
        ready = fetchList(config, list) && !selfUpdate(config, result, &list) && !stopping();
    else if (ready)
        ready = !selfUpdate(config, result, nullptr) && !stopping() && fetchList(config, list);
    if (ready) {
        check(list, toFetch);
        if (!stopping() && !toFetch.empty()) download(toFetch, config.crcpatchUrl, indexRefs(list));
    }

    {
        std::lock_guard lock(watchMutex);
        finished = true;
    }
    watchWake.notify_all();
    watcher.join();

    result.filesFetched = filesFetched_;
    result.bytesFetched = bytesTaken_;
    result.deltaFiles = deltaFiles_;
    result.bytesSaved = bytesSaved_;
    if (result.outcome == Outcome::SelfUpdate) return result;
    if (refused_ && !cancel_.load()) {
        result.outcome = Outcome::Refused;
    } else if (failure_.kind != FailureKind::None) {
        result.outcome = Outcome::Failed;
        result.failure = failure_;
    } else if (cancel_.load() || stopping()) {
        result.outcome = Outcome::Cancelled;
        log_.line("Durduruldu.");
    } else {
        result.outcome = Outcome::UpToDate;
        setStep(Step::Done);
        log_.line("Oyun guncel: " + std::to_string(result.filesFetched) + " dosya indirildi, " +
                  std::to_string(result.bytesFetched) + " bayt" +
                  (result.deltaFiles ? "; " + std::to_string(result.deltaFiles) + " dosya fark olarak, " +
                                           std::to_string(result.bytesSaved) + " bayt indirilmedi."
                                     : "."));
    }
    return result;
}

bool Run::fetchSmall(const std::string& url, uint64_t limit, Bytes& body, FetchOutcome& outcome,
                     bool noCache) {
    for (int attempt = 1;; ++attempt) {
        body.clear();
        CheckedSink sink({std::nullopt, std::nullopt, limit}, [&](const uint8_t* data, size_t size) {
            body.insert(body.end(), data, data + size);
            return true;
        });
        HttpRequest httpRequest{url, std::nullopt, noCache};
        outcome = sink.finish(transport_.get(httpRequest, sink, stop_));
        if (outcome.ok()) return true;
        if (outcome.fault == FetchFault::Cancelled || stopping()) return false;
        log_.line(url + ": " + outcome.detail + " (deneme " + std::to_string(attempt) + ")");
        if (!outcome.retriable() || attempt >= request_.retry.attempts ||
            !pause(request_.retry.delayBefore(attempt + 1), stop_))
            return false;
    }
}

bool Run::fetchConfig(RemoteConfig& config) {
    setStep(Step::Config);
    const std::string url = cacheBusted(request_.configUrl, request_.cacheToken);
    log_.line("Yapilandirma: " + request_.configUrl);
    Bytes body;
    FetchOutcome outcome;
    if (!isHttpUrl(request_.configUrl)) {
        Failure failure;
        failure.kind = FailureKind::ConfigUnreachable;
        failure.subject = request_.configUrl;
        failure.detail = "yapilandirma adresi http(s) degil: '" + request_.configUrl + "'";
        fail(failure);
        return false;
    }
    if (!fetchSmall(url, kMaxConfigBytes, body, outcome)) {
        if (outcome.fault == FetchFault::Cancelled || cancel_.load()) return false;
        Failure failure = fetchFailure(outcome, request_.configUrl);
        failure.kind = FailureKind::ConfigUnreachable;
        fail(failure);
        return false;
    }
    std::string detail;
    const ConfigError error = parseRemoteConfig(
        std::string_view(reinterpret_cast<const char*>(body.data()), body.size()), config, detail);
    if (error != ConfigError::None) {
        Failure failure;
        failure.kind =
            error == ConfigError::NoDownloadUrl ? FailureKind::NoDownloadUrl : FailureKind::ConfigInvalid;
        failure.subject = request_.configUrl;
        failure.detail = "yapilandirma: " + detail;
        fail(failure);
        return false;
    }
    log_.line("crcpatch_url=" + config.crcpatchUrl + ", crclist=" + config.crclist);
    // Before anything is written: a player who refuses the notice leaves the folder as it was.
    if (!config.notice.empty() && !noticeAccepted(config.notice)) return false;
    // Kept for the player and support: what the server said on the last run.
    std::string why;
    FileError error2;
    if (!request_.localConfigName.empty() && isValidListPath(request_.localConfigName, why) &&
        !files_.writeSmall(request_.localConfigName, body, error2))
        log_.line("yerel yapilandirma yazilamadi: " + describe(error2));
    return true;
}

bool Run::noticeAccepted(const std::string& notice) {
    Bytes seen;
    if (files_.readSmall(std::string(kNoticeFileName), seen, kMaxConfigBytes) &&
        std::string_view(reinterpret_cast<const char*>(seen.data()), seen.size()) == notice)
        return true;
    bool accepted = false;
    {
        std::lock_guard lock(observerMutex_);
        accepted = observer_.acceptNotice(notice);
    }
    if (!accepted || cancel_.load()) {
        refused_ = true;
        log_.line("Duyuru kabul edilmedi.");
        return false;
    }
    log_.line("Duyuru kabul edildi.");
    FileError error;
    if (!files_.writeSmall(std::string(kNoticeFileName), Bytes(notice.begin(), notice.end()), error))
        log_.line("kabul edilen duyuru yazilamadi: " + describe(error));
    return true;
}

// True when the run ends here: the new patcher is ready (or the attempt failed).
bool Run::selfUpdate(const RemoteConfig& config, UpdateResult& result, const FileList* signedList) {
    auto job = std::make_unique<FileJob>();
    job->path = request_.selfPath;
    job->part = request_.selfPath + std::string(kPartSuffix);
    job->replaceWhenDone = false;
    if (signedList) {
        if (!signedPatcher(config, *signedList, *job)) return false;
    } else {
        if (request_.selfPath.empty() || !request_.selfCrc || !config.patcherCrc32 ||
            config.patcherUrl.empty() || *config.patcherCrc32 == *request_.selfCrc)
            return false;
        job->crc = *config.patcherCrc32;
        patcherUrl_ = config.patcherUrl;
        log_.line("Patcher guncelleniyor: " + crcText(*request_.selfCrc) + " -> " +
                  crcText(*config.patcherCrc32) + " (" + config.patcherUrl + ")");
    }
    setStep(Step::SelfUpdate);
    FileJob& self = *job;
    base_.clear();
    jobs_.push_back(std::move(job));
    fetchWhole(self);
    const bool ready = self.done && !stopping();
    self.file.reset();
    if (!ready) {
        FileError error;
        files_.remove(self.part, error);
    }
    const std::string part = self.part;
    current_ = nullptr;
    jobs_.clear();
    if (ready) {
        result.outcome = Outcome::SelfUpdate;
        result.newPatcher = part;
        log_.line("Yeni patcher indirildi ve dogrulandi.");
    }
    return true;
}

// With update keys: the patcher to install is the signed list's entry of this patcher's own file name (its
// size, CRC-32 and SHA-256); it is due when that SHA-256 is not the running patcher's. The configuration's
// nv_patcher_crc32 is not believed either way; its nv_patcher_url only says where the file lies.
bool Run::signedPatcher(const RemoteConfig& config, const FileList& list, FileJob& job) {
    if (request_.selfPath.empty() || !request_.selfSha256) return false;
    const auto entry = std::find_if(list.files.begin(), list.files.end(), [&](const ListEntry& e) {
        return equalsIgnoreCase(e.path, request_.selfPath);
    });
    if (entry == list.files.end()) {
        log_.line("Imzali liste bu patcher'i (" + request_.selfPath +
                  ") adlandirmiyor: kendini guncelleme yok.");
        return false;
    }
    const Sha256Digest& wanted = signed_.sha256.at(entry->path);
    if (wanted == *request_.selfSha256) return false;
    job.size = entry->size;
    job.crc = entry->crc;
    job.sha256 = wanted;
    patcherUrl_ = config.patcherUrl.empty() ? fileUrl(config.crcpatchUrl, entry->path) : config.patcherUrl;
    log_.line("Patcher guncelleniyor (imzali listedeki SHA-256 farkli): " + patcherUrl_);
    return true;
}

// Believes nothing of the list before its signature verifies; then remembers its version, so that an older
// signed list is refused from now on.
bool Run::acceptSigned(std::string_view bytes, const std::string& listName, FileList& list) {
    if (!request_.crypto) {
        Failure failure;
        failure.kind = FailureKind::ListForged;
        failure.subject = listName;
        failure.detail = "imza dogrulanamiyor: sistemin sifreleme hizmeti yok";
        fail(failure);
        return false;
    }
    Bytes kept;
    const uint64_t highest =
        files_.readSmall(std::string(kAcceptedFileName), kept, 256)
            ? parseAcceptedVersion(std::string_view(reinterpret_cast<const char*>(kept.data()), kept.size()))
            : 0;
    std::string detail;
    const ListVerdict verdict = checkSignedList(bytes, listName, request_.updateKeys, *request_.crypto,
                                                request_.now, highest, list, signed_, detail);
    if (verdict == ListVerdict::Accepted) {
        log_.line(detail);
        FileError error;
        const std::string text = acceptedVersionText(signed_.version);
        if (signed_.version > highest &&
            !files_.writeSmall(std::string(kAcceptedFileName), Bytes(text.begin(), text.end()), error))
            log_.line("kabul edilen surum yazilamadi: " + describe(error));
        return true;
    }
    list = FileList();
    Failure failure;
    failure.subject = listName;
    failure.detail = detail;
    switch (verdict) {
    case ListVerdict::Unsigned:
        failure.kind = FailureKind::ListUnsigned;
        break;
    case ListVerdict::BadSignature:
        failure.kind = FailureKind::ListForged;
        break;
    case ListVerdict::Expired:
        failure.kind = FailureKind::ListExpired;
        failure.subject = utcTimeText(signed_.expires);
        break;
    case ListVerdict::Rollback:
        failure.kind = FailureKind::ListRollback;
        failure.subject = std::to_string(signed_.version);
        break;
    default:
        failure.kind = FailureKind::ListInvalid;
        break;
    }
    fail(failure);
    return false;
}

bool Run::fetchList(const RemoteConfig& config, FileList& list) {
    setStep(Step::List);
    const std::string address = fileUrl(config.crcpatchUrl, config.crclist);
    log_.line("Dosya listesi: " + address);
    Bytes body;
    FetchOutcome outcome;
    // A CDN may hold a stale list although asked not to: one more try with another query before giving up.
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (!fetchSmall(cacheBusted(address, request_.cacheToken + uint64_t(attempt)), kMaxListBytes, body,
                        outcome)) {
            if (outcome.fault != FetchFault::Cancelled && !cancel_.load())
                fail(fetchFailure(outcome, config.crclist));
            return false;
        }
        if (!config.crclistCrc32 || Crc32::of(body.data(), body.size()) == *config.crclistCrc32) break;
        log_.line("liste CRC'si yapilandirmadakiyle uyusmuyor: " +
                  crcText(Crc32::of(body.data(), body.size())) + " / " + crcText(*config.crclistCrc32));
        if (attempt == 1) {
            Failure failure;
            failure.kind = FailureKind::CrcMismatch;
            failure.subject = config.crclist;
            failure.detail = "dosya listesinin CRC'si crclist_crc32 ile uyusmuyor";
            fail(failure);
            return false;
        }
    }
    const std::string_view bytes(reinterpret_cast<const char*>(body.data()), body.size());
    if (request_.requireSigned) {
        if (!acceptSigned(bytes, config.crclist, list)) return false;
        log_.line("Listede " + std::to_string(list.files.size()) + " dosya.");
        return true;
    }
    std::string error;
    if (!parseFileList(bytes, config.crclist, list, error)) {
        Failure failure;
        failure.kind = FailureKind::ListInvalid;
        failure.subject = config.crclist;
        failure.detail = "dosya listesi gecersiz, " + error;
        fail(failure);
        return false;
    }
    log_.line("Listede " + std::to_string(list.files.size()) + " dosya.");
    return true;
}

// The patcher's own file is the self-update's, the kept configuration is the run's own.
bool Run::skipped(const ListEntry& entry) const {
    return equalsIgnoreCase(entry.path, request_.selfPath) ||
           equalsIgnoreCase(entry.path, request_.localConfigName);
}

void Run::check(const FileList& list, std::vector<const ListEntry*>& toFetch) {
    setStep(Step::Check);
    LocalState known;
    if (!request_.repair) {
        Bytes bytes;
        if (files_.readSmall(std::string(kStateFileName), bytes, kMaxStateBytes))
            known =
                parseLocalState(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    }
    const size_t count = list.files.size();
    checkTotal_ = count;
    // Large files the last run verified that the list no longer names (a pack renamed on the server): a delta
    // may take its chunks from them.
    std::set<std::string> listed;
    for (const ListEntry& entry : list.files)
        listed.insert(asciiLower(entry.path));
    for (const auto& [path, file] : known)
        if (file.size >= kIndexThreshold && !listed.count(asciiLower(path))) unlisted_.push_back(path);
    std::vector<char> fetch(count, 0);
    std::atomic<size_t> next{0};
    std::atomic<size_t> read{0};
    auto checkOne = [&](size_t i) {
        const ListEntry& entry = list.files[i];
        if (skipped(entry)) return;
        FileInfo info;
        files_.info(entry.path, info);
        if (!info.exists || info.isFolder || info.size != entry.size) {
            fetch[i] = 1;
            return;
        }
        const auto was = known.find(entry.path);
        if (was != known.end() && was->second.size == info.size && was->second.writeTime == info.writeTime) {
            if (was->second.crc == entry.crc) {
                std::lock_guard lock(stateMutex_);
                state_[entry.path] = was->second;
            } else {
                fetch[i] = 1;
            }
            return;
        }
        uint32_t crc = 0;
        uint64_t size = 0;
        FileError error;
        ++read;
        if (!files_.checksum(entry.path, crc, size, stop_, error)) {
            if (!stopping()) log_.line("okunamadi, yeniden indirilecek: " + describe(error));
            fetch[i] = 1;
            return;
        }
        if (crc != entry.crc || size != entry.size) {
            fetch[i] = 1;
            return;
        }
        std::lock_guard lock(stateMutex_);
        state_[entry.path] = KnownFile{info.size, info.writeTime, crc};
    };
    int threads = request_.checkThreads > 0 ? request_.checkThreads
                                            : int(std::clamp(std::thread::hardware_concurrency(), 1u, 4u));
    threads = int(std::min<size_t>(size_t(threads), std::max<size_t>(count, 1)));
    std::vector<std::thread> pool;
    for (int t = 0; t < threads; ++t)
        pool.emplace_back([&] {
            for (size_t i; !stopping() && (i = next++) < count; ++filesChecked_)
                checkOne(i);
        });
    for (std::thread& thread : pool)
        thread.join();
    if (stopping()) return;

    for (size_t i = 0; i < count; ++i)
        if (fetch[i]) toFetch.push_back(&list.files[i]);
    log_.line("Denetlendi: " + std::to_string(count) + " dosya, " + std::to_string(read.load()) +
              " tanesi okundu, " + std::to_string(toFetch.size()) + " tanesi indirilecek.");
    saveState();
}

void Run::remember(const std::string& path, uint32_t crc) {
    FileInfo info;
    if (!files_.info(path, info) || !info.exists) return;
    std::lock_guard lock(stateMutex_);
    state_[path] = KnownFile{info.size, info.writeTime, crc};
}

void Run::saveState() {
    std::string text;
    {
        std::lock_guard lock(stateMutex_);
        text = writeLocalState(state_);
    }
    FileError error;
    if (!files_.writeSmall(std::string(kStateFileName), Bytes(text.begin(), text.end()), error))
        log_.line("durum dosyasi yazilamadi: " + describe(error));
}

std::unique_ptr<FileJob> Run::makeJob(const ListEntry& entry) {
    auto job = std::make_unique<FileJob>();
    job->path = entry.path;
    job->part = entry.path + std::string(kPartSuffix);
    job->record = entry.path + std::string(kResumeSuffix);
    job->size = entry.size;
    job->crc = entry.crc;
    job->fetchTotal = entry.size;
    if (request_.requireSigned) job->sha256 = signed_.sha256.at(entry.path);
    if (isSegmented(entry.size, segmentBytes_)) {
        const size_t count = segmentCount(entry.size, segmentBytes_);
        job->segmentBytes = segmentBytes_;
        job->segmentDone.assign(count, 0);
        job->segmentCrc.assign(count, 0);
        job->segmentsLeft = count;
    }
    return job;
}

// A large file's part left by an earlier run: its recorded segments are read back and kept when their CRCs
// still match; the record is written anew with those alone.
void Run::resume(FileJob& job) {
    Bytes bytes;
    ResumeRecord record;
    FileError error;
    const bool usable =
        files_.readSmall(job.record, bytes, 16u << 20) &&
        parseResumeRecord(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()),
                          record) &&
        record.size == *job.size && record.crc == job.crc && record.segmentBytes == job.segmentBytes &&
        !record.done.empty();
    std::string text = resumeHeader(*job.size, job.crc, job.segmentBytes);
    if (usable) {
        job.file = files_.open(job.part, true, error);
        std::vector<uint8_t> buffer(1 << 20);
        uint64_t kept = 0;
        for (const auto& [index, crc] : record.done) {
            if (!job.file || stopping()) break;
            const ByteRange range = segmentRange(*job.size, job.segmentBytes, index);
            Crc32 sum;
            bool readable = true;
            for (uint64_t at = range.first; readable && at <= range.last;) {
                const size_t n = size_t(std::min<uint64_t>(buffer.size(), range.last + 1 - at));
                readable = job.file->read(at, buffer.data(), n, error);
                sum.update(buffer.data(), n);
                at += n;
            }
            if (!readable || sum.value() != crc) continue;
            job.segmentDone[index] = 1;
            job.segmentCrc[index] = crc;
            --job.segmentsLeft;
            job.received += range.length();
            kept += range.length();
            text += resumeLine(index, crc);
        }
        log_.line(job.path + ": onceki calismadan " + std::to_string(kept) + " bayt devam ediyor");
    }
    if (!job.file) job.file = files_.open(job.part, false, error);
    if (job.file && files_.writeSmall(job.record, Bytes(text.begin(), text.end()), error))
        job.recordFile = files_.open(job.record, true, error);
    job.recordEnd = text.size();
    if (!job.file) fail(fileFailure(error, FailureKind::CreateFailed));
}

void Run::inParallel(size_t count, int threads, const std::function<void(size_t)>& work) {
    std::atomic<size_t> next{0};
    const size_t n = std::min<size_t>(size_t(std::max(threads, 1)), count);
    std::vector<std::thread> pool;
    for (size_t t = 0; t < n; ++t)
        pool.emplace_back([&] {
            for (size_t i; !stopping() && (i = next++) < count;)
                work(i);
        });
    for (std::thread& thread : pool)
        thread.join();
}

// Files that changed and have an index on the server come as deltas when the player's files already hold
// enough of their chunks: the indexes are fetched, the old copies chunked, and what they share with the new
// files copied into the parts before any range is fetched (so no old file is replaced while it is read).
void Run::prepareDeltas(const std::map<std::string, IndexRef>& indexes) {
    std::vector<FileJob*> candidates;
    std::vector<std::string> sources;
    uint64_t orphanBytes = 0; // of the files that have no old copy of their own
    for (const auto& job : jobs_) {
        if (!indexes.count(job->path) || *job->size < kIndexThreshold) continue;
        candidates.push_back(job.get());
        FileInfo info;
        if (files_.info(job->path, info) && info.exists && !info.isFolder && info.size > 0)
            sources.push_back(job->path);
        else
            orphanBytes += *job->size;
    }
    // Files the list dropped are read only for files that lack an old copy, and never much more than those
    // files hold: reading must stay cheaper than what it can save.
    uint64_t unlistedBytes = 0;
    for (const std::string& path : unlisted_) {
        FileInfo info;
        if (orphanBytes == 0 || !files_.info(path, info) || !info.exists || info.isFolder ||
            unlistedBytes + info.size > 2 * orphanBytes)
            continue;
        unlistedBytes += info.size;
        sources.push_back(path);
    }
    // Without an old copy there is nothing to keep: the files come whole, and no index is fetched.
    if (candidates.empty() || sources.empty()) return;
    log_.line("Fark guncellemesi: " + std::to_string(candidates.size()) + " dosyanin parca dizini aliniyor");
    const int connections = std::clamp(request_.connections, kMinConnections, kMaxConnections);
    inParallel(candidates.size(), connections, [&](size_t i) {
        FileJob& job = *candidates[i];
        job.index = fetchIndex(job, indexes.at(job.path));
        job.indexBytes = indexes.at(job.path).size;
    });
    if (stopping()) return;
    ChunkParams params;
    bool any = false;
    for (FileJob* job : candidates)
        if (job->index && !any) params = job->index->params, any = true;
    if (!any) return;

    std::vector<std::vector<Chunk>> chunks(sources.size());
    const int readers = request_.checkThreads > 0
                            ? request_.checkThreads
                            : int(std::clamp(std::thread::hardware_concurrency(), 1u, 4u));
    inParallel(sources.size(), readers, [&](size_t i) {
        ChunkIndex local;
        FileError error;
        if (chunkFile(files_, sources[i], params, stop_, local, error))
            chunks[i] = std::move(local.chunks);
        else if (!stopping())
            log_.line(sources[i] + ": parcalanamadi (" + describe(error) + ")");
    });
    if (stopping()) return;
    LocalChunks local;
    for (size_t i = 0; i < sources.size(); ++i)
        local.add(uint32_t(i), chunks[i]);
    chunks.clear();
    inParallel(candidates.size(), readers, [&](size_t i) {
        FileJob& job = *candidates[i];
        if (!job.index) return;
        if (!(job.index->params == params)) {
            log_.line(job.path + ": parca dizini baska parca boyutlariyla yazilmis; dosya tam indirilecek");
            job.index.reset();
            return;
        }
        planJob(job, local, sources);
    });
}

// The index as the list names it (size and hash), describing the listed file; null (and the file comes whole)
// otherwise. Fetched plainly first, so that a CDN keeps it; past the caches once more when it is not the
// list's, as a CDN may still hold an older one.
std::shared_ptr<const ChunkIndex> Run::fetchIndex(const FileJob& job, const IndexRef& ref) {
    const std::string url = fileUrl(base_, indexPathFor(job.path));
    Bytes body;
    for (int attempt = 0; attempt < 2; ++attempt) {
        FetchOutcome outcome;
        const bool fetched = fetchSmall(attempt == 0 ? url : cacheBusted(url, request_.cacheToken), ref.size,
                                        body, outcome, attempt > 0);
        bytesTaken_ += body.size();
        if (!fetched) {
            if (!stopping()) log_.line(job.path + ": parca dizini alinamadi (" + outcome.detail + ")");
            return nullptr;
        }
        if (body.size() == ref.size && hash128(body.data(), body.size()) == ref.hash) break;
        log_.line(job.path + ": parca dizini listedekiyle uyusmuyor" + (attempt == 0 ? "; yeniden" : ""));
        if (attempt == 1) return nullptr;
    }
    // With update keys an index is trusted only with the SHA-256 the signed list gives it; without one the
    // file comes whole. (Its chunks are checked against it, and the assembled file against its own signed
    // hash.)
    if (request_.requireSigned) {
        const auto wanted = signed_.sha256.find(indexPathFor(job.path));
        std::unique_ptr<Sha256> hash = request_.crypto ? request_.crypto->sha256() : nullptr;
        if (hash) hash->update(body.data(), body.size());
        if (wanted == signed_.sha256.end() || !hash || hash->finish() != wanted->second) {
            log_.line(job.path + ": parca dizini imzali listede yok ya da ozeti uyusmuyor");
            return nullptr;
        }
    }
    auto index = std::make_shared<ChunkIndex>();
    std::string error;
    if (!parseChunkIndex(std::string_view(reinterpret_cast<const char*>(body.data()), body.size()), *index,
                         error)) {
        log_.line(job.path + ": parca dizini gecersiz (" + error + ")");
        return nullptr;
    }
    if (index->fileSize != *job.size || index->fileCrc != job.crc) {
        log_.line(job.path + ": parca dizini listedeki dosyayi anlatmiyor");
        return nullptr;
    }
    return index;
}

// One file's delta: what an interrupted run already left in its part is checked chunk by chunk and kept,
// the chunks found in the player's files are copied in, and the rest becomes ranges to fetch. A delta that
// would not save enough is dropped (the index stays unused) and the file comes in the usual way.
void Run::planJob(FileJob& job, const LocalChunks& local, const std::vector<std::string>& sources) {
    const ChunkIndex& index = *job.index;
    FileError error;
    FileInfo partInfo;
    files_.info(job.part, partInfo);
    const bool keepPart = partInfo.exists && !partInfo.isFolder && partInfo.size <= *job.size;
    std::unique_ptr<PartFile> part;
    std::vector<char> present;
    std::vector<uint32_t> chunkCrc(index.chunks.size(), 0);
    std::vector<uint8_t> buffer(1u << 20);
    if (keepPart && partInfo.size > 0 && (part = files_.open(job.part, true, error))) {
        present.assign(index.chunks.size(), 0);
        for (size_t i = 0; i < index.chunks.size() && !stopping(); ++i) {
            const Chunk& chunk = index.chunks[i];
            if (chunk.offset + chunk.length > partInfo.size || local.find(chunk.hash)) continue;
            if (!part->read(chunk.offset, buffer.data(), chunk.length, error)) break;
            if (hash128(buffer.data(), chunk.length) != chunk.hash) continue;
            present[i] = 1;
            chunkCrc[i] = Crc32::of(buffer.data(), chunk.length);
        }
    }
    const DeltaPlan plan = planDelta(index, local, present, segmentBytes_);
    if (stopping()) return;
    if (!deltaPays(plan, *job.size, job.indexBytes)) {
        log_.line(job.path + ": fark yetersiz (" + std::to_string(plan.fetchBytes) + " / " +
                  std::to_string(*job.size) + " bayt); dosya tam indirilecek");
        job.index.reset();
        return;
    }
    if (!part) part = files_.open(job.part, keepPart, error);
    if (!part) return fail(fileFailure(error, FailureKind::CreateFailed));

    std::vector<char> done(plan.pieces.size(), 0);
    std::vector<uint32_t> doneCrc(plan.pieces.size(), 0);
    size_t left = plan.pieces.size();
    std::map<uint32_t, std::unique_ptr<PartFile>> opened;
    for (size_t p = 0; p < plan.pieces.size() && !stopping(); ++p) {
        const DeltaPiece& piece = plan.pieces[p];
        uint32_t crc = 0;
        if (piece.kind == PieceKind::Fetch) continue;
        if (piece.kind == PieceKind::Keep) {
            crc = chunkCrc[piece.firstChunk];
            for (size_t c = piece.firstChunk + 1; c < piece.firstChunk + piece.chunkCount; ++c)
                crc = crc32Combine(crc, chunkCrc[c], index.chunks[c].length);
        } else {
            std::unique_ptr<PartFile>& source = opened[piece.source];
            if (!source) source = files_.openRead(sources[piece.source], error);
            PartWriter writer(*part, piece.target.first);
            bool read = source != nullptr;
            for (uint64_t at = 0; read && at < piece.target.length();) {
                const size_t n = size_t(std::min<uint64_t>(buffer.size(), piece.target.length() - at));
                read = source->read(piece.sourceOffset + at, buffer.data(), n, error);
                if (read && !writer.take(buffer.data(), n))
                    return fail(fileFailure(writer.error(), FailureKind::WriteFailed));
                at += n;
            }
            if (!read) {
                // The old file changed under us: the file comes the usual way instead.
                log_.line(job.path + ": yerel parca okunamadi (" + describe(error) +
                          "); dosya tam indirilecek");
                job.index.reset();
                return;
            }
            if (!writer.drain()) return fail(fileFailure(writer.error(), FailureKind::WriteFailed));
            crc = writer.crc();
        }
        done[p] = 1;
        doneCrc[p] = crc;
        --left;
    }
    if (stopping()) return;
    files_.remove(job.record, error); // the part is the delta's now: no segment record describes it
    job.pieces = plan.pieces;
    job.segmentDone = std::move(done);
    job.segmentCrc = std::move(doneCrc);
    job.segmentsLeft = left;
    job.fetchTotal = plan.fetchBytes;
    job.file = std::move(part);
    log_.line(job.path + ": fark guncellemesi, " + std::to_string(plan.copyBytes) +
              " bayt yerel dosyalardan, " + std::to_string(plan.keepBytes) + " bayt onceki calismadan, " +
              std::to_string(plan.fetchBytes) + " bayt " + std::to_string(plan.fetchRequests) +
              " istekle indirilecek");
}

void Run::push(Task task, bool front) {
    {
        std::lock_guard lock(queueMutex_);
        front ? queue_.push_front(task) : queue_.push_back(task);
    }
    queueChanged_.notify_one();
}

void Run::download(const std::vector<const ListEntry*>& toFetch, const std::string& base,
                   const std::map<std::string, IndexRef>& indexes) {
    base_ = base;
    segmentBytes_ = uint64_t(std::clamp(request_.segmentMb, kMinSegmentMb, kMaxSegmentMb)) << 20;
    for (const ListEntry* entry : toFetch)
        jobs_.push_back(makeJob(*entry));
    prepareDeltas(indexes);
    if (stopping()) return cleanUp();
    for (const auto& job : jobs_)
        bytesTotal_ += job->fetchTotal;
    setStep(Step::Download);
    log_.line("Indirilecek: " + std::to_string(jobs_.size()) + " dosya, " + std::to_string(bytesTotal_) +
              " bayt");
    for (const auto& job : jobs_) {
        if (stopping()) break;
        if (job->index) {
            for (size_t i = 0; i < job->segmentDone.size(); ++i)
                if (!job->segmentDone[i]) push({job.get(), long(i)});
            if (job->segmentsLeft == 0) push({job.get(), -2});
        } else if (job->segmented()) {
            resume(*job);
            for (size_t i = 0; i < job->segmentDone.size(); ++i)
                if (!job->segmentDone[i]) push({job.get(), long(i)});
            if (job->segmentsLeft == 0) push({job.get(), -2}); // every segment was already there
        } else {
            push({job.get(), -1});
        }
    }
    const int connections = std::clamp(request_.connections, kMinConnections, kMaxConnections);
    std::vector<std::thread> workers;
    for (int i = 0; i < connections; ++i)
        workers.emplace_back([this] { worker(); });
    for (std::thread& thread : workers)
        thread.join();
    if (!stopping()) settleInUse();
    cleanUp();
    saveState();
}

void Run::worker() {
    for (;;) {
        Task task;
        {
            std::unique_lock lock(queueMutex_);
            queueChanged_.wait(lock, [&] { return stopping() || !queue_.empty() || busy_ == 0; });
            if (stopping() || queue_.empty()) return; // nothing left that another task could add to
            task = queue_.front();
            queue_.pop_front();
            ++busy_;
        }
        runTask(task);
        {
            std::lock_guard lock(queueMutex_);
            --busy_;
        }
        queueChanged_.notify_all();
    }
}

void Run::runTask(const Task& task) {
    FileJob& job = *task.job;
    current_ = &job;
    if (task.segment == -2) {
        // Every segment is in: the file's checksum from theirs, without reading it again.
        uint32_t crc = job.segmentCrc[0];
        for (size_t i = 1; i < job.segmentCrc.size(); ++i)
            crc = crc32Combine(crc, job.segmentCrc[i], job.pieceRange(i).length());
        finishJob(job, crc);
    } else if (task.segment >= 0) {
        fetchSegment(job, size_t(task.segment));
    } else {
        fetchWhole(job);
    }
}

void Run::fetchSegment(FileJob& job, size_t index) {
    {
        std::lock_guard lock(job.mutex);
        if (job.oneStream || job.done) return;
        ++job.inflight;
    }
    const ByteRange range = job.pieceRange(index);
    const std::string url = fileUrl(base_, job.path);
    bool finished = false;
    uint32_t segmentCrc = 0;
    for (int attempt = 1; !stopping(); ++attempt) {
        PartWriter writer(*job.file, range.first);
        uint64_t taken = 0;
        std::optional<ChunkCheck> check;
        if (job.index) check.emplace(*job.index, job.pieces[index].firstChunk);
        bool corrupt = false;
        CheckedSink sink(
            {range, job.size, 0},
            [&](const uint8_t* data, size_t size) {
                taken += size;
                job.received += size;
                bytesTaken_ += size;
                if (check && !check->take(data, size)) {
                    corrupt = true;
                    return false;
                }
                return writer.take(data, size);
            },
            &job.abandon);
        HttpRequest httpRequest{url, range, false};
        FetchOutcome outcome = sink.finish(transport_.get(httpRequest, sink, stop_));
        if (outcome.ok() && !writer.drain()) outcome.fault = FetchFault::Consumer;
        if (outcome.ok()) {
            segmentCrc = writer.crc();
            finished = true;
            break;
        }
        job.received -= taken;
        if (corrupt) {
            // The server's bytes are not those of the index: a stale or damaged copy of the file or of its
            // index. The file comes whole, and is verified whole.
            log_.line(job.path + " [" + std::to_string(range.first) + "-" + std::to_string(range.last) +
                      "]: parca dizindekiyle uyusmuyor; dosya tam indirilecek");
            switchToOneStream(job);
            break;
        }
        if (outcome.fault == FetchFault::Consumer) {
            fail(fileFailure(writer.error(), FailureKind::WriteFailed));
            break;
        }
        if (outcome.fault == FetchFault::Cancelled || outcome.fault == FetchFault::Abandoned || stopping())
            break;
        if (outcome.fault == FetchFault::RangeIgnored) {
            log_.line(job.path + ": " + outcome.detail + "; tek akisla indirilecek");
            switchToOneStream(job);
            break;
        }
        log_.line(job.path + " [" + std::to_string(range.first) + "-" + std::to_string(range.last) +
                  "]: " + outcome.detail + " (deneme " + std::to_string(attempt) + ")");
        if (!outcome.retriable() || attempt >= request_.retry.attempts) {
            fail(fetchFailure(outcome, job.path));
            break;
        }
        if (!pause(request_.retry.delayBefore(attempt + 1), stop_)) break;
    }

    bool last = false;
    if (finished) {
        // The record is not flushed, nor the part: the next run reads every recorded segment back and keeps
        // only those whose CRC still matches, so a power cut costs segments, never correctness, and the
        // connections do not wait for the disk after each segment. The whole file is flushed before it
        // replaces the old one.
        FileError error;
        std::lock_guard lock(job.mutex);
        if (!job.oneStream) {
            job.segmentDone[index] = 1;
            job.segmentCrc[index] = segmentCrc;
            last = --job.segmentsLeft == 0;
            if (job.recordFile) {
                const std::string line = resumeLine(index, segmentCrc);
                if (job.recordFile->write(job.recordEnd, reinterpret_cast<const uint8_t*>(line.data()),
                                          line.size(), error))
                    job.recordEnd += line.size();
            }
        }
    }
    {
        std::lock_guard lock(job.mutex);
        --job.inflight;
    }
    job.idle.notify_all();
    if (last) runTask({&job, -2});
}

// The server answered a range with the whole file: the file's other segments stop, and it is fetched again
// as one stream once they have.
void Run::switchToOneStream(FileJob& job) {
    {
        std::lock_guard lock(job.mutex);
        if (job.oneStream) return;
        job.oneStream = true;
        job.abandon = true;
    }
    wholeFromNowOn(job);
    push({&job, -1}, true);
}

// A delta that falls back to the whole file: the progress's total grows by what it no longer saves.
void Run::wholeFromNowOn(FileJob& job) {
    if (!job.index || !job.size || job.fetchTotal >= *job.size) return;
    bytesTotal_ += *job.size - job.fetchTotal;
    job.fetchTotal = *job.size;
}

void Run::fetchWhole(FileJob& job) {
    {
        std::unique_lock lock(job.mutex);
        job.idle.wait(lock, [&] { return job.inflight == 0; });
        job.abandon = false;
        job.recordFile.reset();
        job.file.reset();
    }
    FileError error;
    if (!job.record.empty()) files_.remove(job.record, error);
    const std::string url = job.replaceWhenDone ? fileUrl(base_, job.path) : patcherUrl_;
    const Expected expected{std::nullopt, job.size, kMaxPatcherBytes};
    for (int attempt = 1; !stopping(); ++attempt) {
        job.received = 0;
        job.file.reset(); // the last try's handle, which would share the file with the new one
        job.file = files_.open(job.part, false, error);
        if (!job.file) {
            fail(fileFailure(error, FailureKind::CreateFailed));
            return;
        }
        PartWriter writer(*job.file, 0);
        uint64_t taken = 0;
        CheckedSink sink(expected, [&](const uint8_t* data, size_t size) {
            taken += size;
            job.received += size;
            bytesTaken_ += size;
            return writer.take(data, size);
        });
        FetchOutcome outcome;
        if (job.size && *job.size == 0) {
            outcome.fault = FetchFault::None; // nothing to fetch: an empty file is made here
        } else {
            HttpRequest httpRequest{url, std::nullopt, false};
            outcome = sink.finish(transport_.get(httpRequest, sink, stop_));
        }
        if (outcome.ok() && !writer.drain()) outcome.fault = FetchFault::Consumer;
        if (outcome.ok()) {
            finishJob(job, writer.crc());
            return;
        }
        job.received -= taken;
        if (outcome.fault == FetchFault::Consumer) {
            fail(fileFailure(writer.error(), FailureKind::WriteFailed));
            return;
        }
        if (outcome.fault == FetchFault::Cancelled || stopping()) return;
        log_.line(job.path + ": " + outcome.detail + " (deneme " + std::to_string(attempt) + ")");
        if (!outcome.retriable() || attempt >= request_.retry.attempts) {
            fail(fetchFailure(outcome, job.path));
            return;
        }
        if (!pause(request_.retry.delayBefore(attempt + 1), stop_)) return;
    }
}

void Run::finishJob(FileJob& job, uint32_t crc) {
    FileError error;
    if (crc != job.crc) {
        log_.line(job.path + ": CRC uyusmuyor (" + crcText(crc) + ", listede " + crcText(job.crc) + ")");
        job.file.reset();
        job.recordFile.reset();
        files_.remove(job.part, error);
        if (!job.record.empty()) files_.remove(job.record, error);
        job.received = 0;
        // Once more as one stream (a segment may have come from a stale cache), then give up: wrong bytes
        // again mean the server's file is not the listed one.
        if (++job.crcFailures < 2 && job.replaceWhenDone) {
            {
                std::lock_guard lock(job.mutex);
                job.oneStream = true;
            }
            wholeFromNowOn(job);
            push({&job, -1}, true);
            return;
        }
        Failure failure;
        failure.kind = FailureKind::CrcMismatch;
        failure.subject = job.path;
        failure.detail = job.path + ": indirilen dosyanin CRC'si listedekiyle uyusmuyor";
        fail(failure);
        return;
    }
    if (!job.file->flush(error)) {
        fail(fileFailure(error, FailureKind::WriteFailed));
        return;
    }
    if (job.sha256 && !matchesSignedHash(job)) return;
    job.file.reset();
    job.recordFile.reset();
    {
        std::lock_guard lock(job.mutex);
        job.done = true;
    }
    if (job.replaceWhenDone) putInPlace(job);
}

// Reads the finished part back for its SHA-256: segments arrive out of order, so the file is hashed whole
// once, from the cache the writes just filled. A CRC-32 an attacker computed for his own bytes ends here.
bool Run::matchesSignedHash(FileJob& job) {
    FileError error;
    std::unique_ptr<Sha256> hash = request_.crypto->sha256();
    bool readable = hash != nullptr;
    std::vector<uint8_t> buffer(1 << 20);
    for (uint64_t at = 0; readable && at < *job.size && !stopping();) {
        const size_t n = size_t(std::min<uint64_t>(buffer.size(), *job.size - at));
        readable = job.file->read(at, buffer.data(), n, error);
        if (readable) hash->update(buffer.data(), n);
        at += n;
    }
    if (stopping()) return false;
    if (readable && hash->finish() == *job.sha256) return true;
    job.file.reset();
    job.recordFile.reset();
    files_.remove(job.part, error);
    if (!job.record.empty()) files_.remove(job.record, error);
    job.received = 0;
    Failure failure;
    failure.kind = readable ? FailureKind::HashMismatch : FailureKind::WriteFailed;
    failure.subject = job.path;
    failure.detail = job.path + (readable ? ": indirilen dosyanin SHA-256'si imzali listedekiyle uyusmuyor"
                                          : ": indirilen dosya dogrulama icin okunamadi");
    fail(failure);
    return false;
}

void Run::putInPlace(FileJob& job) {
    FileError error;
    if (files_.replace(job.part, job.path, error)) {
        if (!job.record.empty()) files_.remove(job.record, error);
        remember(job.path, job.crc);
        ++filesDone_;
        ++filesFetched_;
        job.inUse = false;
        const uint64_t size = job.size.value_or(0);
        const bool delta = job.index && !job.oneStream;
        const uint64_t fetched = job.received + job.indexBytes;
        if (delta) {
            ++deltaFiles_;
            bytesSaved_ += size - std::min(size, fetched);
        }
        log_.line("Yenilendi: " + job.path + " (" + std::to_string(size) + " bayt" +
                  (delta ? ", fark: " + std::to_string(fetched) + " bayt indirildi)" : ")"));
        std::lock_guard lock(observerMutex_);
        if (delta) observer_.deltaApplied(job.path, size, fetched);
        observer_.fileFinished(job.path, size);
        return;
    }
    if (error.fault == FileFault::InUse) {
        if (!job.inUse) log_.line(job.path + ": " + describe(error) + "; indirme bitince yeniden denenecek");
        job.inUse = true;
        return;
    }
    fail(fileFailure(error, FailureKind::WriteFailed));
}

// Files whose targets other programs held: tried again, and the player asked while some still are.
void Run::settleInUse() {
    for (;;) {
        std::vector<FileJob*> held;
        for (const auto& job : jobs_)
            if (job->inUse) {
                putInPlace(*job);
                if (stopping()) return;
                if (job->inUse) held.push_back(job.get());
            }
        if (held.empty()) return;
        std::vector<std::wstring> paths;
        for (FileJob* job : held)
            paths.push_back(files_.displayPath(job->path));
        bool again;
        {
            std::lock_guard lock(observerMutex_);
            again = observer_.retryInUse(paths) && !cancel_.load();
        }
        if (!again) {
            if (cancel_.load()) {
                stop_ = true;
                return;
            }
            Failure failure;
            failure.kind = FailureKind::FileInUse;
            failure.subject = held.front()->path;
            failure.file.fault = FileFault::InUse;
            failure.file.path = held.front()->path;
            failure.detail = std::to_string(held.size()) + " dosya baska programlarca kullaniliyor, ilki " +
                             held.front()->path;
            fail(failure);
            return;
        }
        log_.line("Kullanimdaki dosyalar yeniden deneniyor.");
    }
}

// After a failure or a stop: no part stays but a large file's finished segments, which the next run resumes
// (unless the disk is full).
void Run::cleanUp() {
    FileError error;
    for (const auto& job : jobs_) {
        job->file.reset();
        job->recordFile.reset();
        const bool placed = job->done && !job->inUse;
        if (placed) continue;
        // A full disk needs its space back more than the next run needs the segments.
        // A delta's copied pieces are quickly copied again; only what came from the server (now or before)
        // is worth keeping.
        bool anyDone = false;
        for (size_t i = 0; i < job->segmentDone.size(); ++i)
            anyDone |= job->segmentDone[i] && (job->pieces.empty() || job->pieces[i].kind != PieceKind::Copy);
        const bool resumable =
            failure_.kind != FailureKind::DiskFull && !job->done && job->segmented() && anyDone;
        if (resumable) {
            log_.line(job->path + ": bitmis parcalar sonraki calismaya kaldi");
            continue;
        }
        files_.remove(job->part, error);
        files_.remove(job->record, error);
    }
}

} // namespace

UpdateResult runUpdate(const UpdateRequest& request, HttpTransport& transport, GameFiles& files,
                       UpdateObserver& observer, RunLog& log, const std::atomic<bool>& cancel) {
    Run run(request, transport, files, observer, log, cancel);
    return run.execute();
}

} // namespace nv::update
