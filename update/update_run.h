#pragma once
// One update run of the patcher: configuration -> self-update -> file list -> check -> download -> replace ->
// done. The run is portable: it talks to the server through an HttpTransport, to the game folder through
// GameFiles, and to the player through an UpdateObserver, so the whole of it is tested natively with a
// scripted transport and real files. It never leaves a game file half written: every file is downloaded to
// "<file>.nvpart", checked (size, CRC-32) and only then moved over the old one.

#include "update/crypto.h"
#include "update/game_files.h"
#include "update/http.h"
#include "update/retry.h"
#include "update/run_log.h"

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nv::update {

struct UpdateRequest {
    std::string configUrl; // the address file's remoteConfigPath
    std::string
        localConfigName; // the address file's localConfigPath: the fetched configuration is kept there
    int connections = 4; // parallel transfers, kMinConnections..kMaxConnections
    int segmentMb = 4;   // the range size of large files, in MiB
    bool repair = false; // read every file again, whatever the state file says
    // The patcher's own file in the game folder ("Kaldra.exe") and its CRC-32: it is updated by the
    // self-update alone, never as a listed file. Empty / none: no self-update.
    std::string selfPath;
    std::optional<uint32_t> selfCrc;
    // Update keys: with requireSigned the list must be signed by one of updateKeys (an empty set refuses
    // every list), unexpired at `now` and not older than one accepted before; every downloaded file and the
    // new patcher must then have the SHA-256 the list names, and the configuration only says where things
    // lie.
    bool requireSigned = false;
    std::vector<PublicKey> updateKeys;
    Crypto* crypto = nullptr; // required with requireSigned
    int64_t now = 0;          // seconds since 1970 UTC, the player's clock
    std::optional<Sha256Digest> selfSha256;
    uint64_t cacheToken = 0; // makes the configuration's and the list's addresses new to every cache
    RetryPolicy retry;
    int checkThreads = 0; // files read at once by the check; 0: as many as the machine has, at most 4
};

enum class Step { Config, SelfUpdate, List, Check, Download, Done };

// A snapshot of the run for the window's texts and gauges (sent a few times a second, and at each step).
struct Progress {
    Step step = Step::Config;
    uint64_t filesDone = 0, filesTotal = 0; // Check: files checked; Download: files finished
    uint64_t bytesDone = 0, bytesTotal = 0; // Download: bytes to fetch (a delta's changed chunks only)
    std::string currentFile;                // Download: the file most recently started that is not done
    uint64_t currentDone = 0, currentSize = 0;
    double bytesPerSecond = 0; // over the last few seconds; 0 while unknown
    int64_t secondsLeft = -1;  // -1 while unknown
};

enum class FailureKind {
    None,
    ConfigUnreachable, // REMOTE_CONFIG_OPEN_ERROR: the configuration could not be fetched
    ConfigInvalid,     // NV_INVALID_CONFIG
    NoDownloadUrl,     // NV_NO_DOWNLOAD_URL
    ListInvalid,       // INVALID_CRC_TABLE
    HttpStatus,        // NV_HTTP_ERROR: the server refused or failed (after the retries)
    Network,           // NV_NET_ERROR: the connection failed (after the retries)
    DownloadFailed,    // FAILED_DOWNLOAD_FILE: the server's answers never fitted the request
    CrcMismatch,       // NV_CRC_MISMATCH: the bytes are not the listed ones
    DiskFull,          // NV_DISK_FULL
    FileInUse,         // NV_FILE_IN_USE
    AccessDenied,      // NV_ADMIN_QUESTION: writing needs elevation
    CreateFailed,      // FAILED_CREATE_FILE
    WriteFailed,       // FAILED_WRITE_FILE
    ListUnsigned,      // NV_LIST_UNSIGNED: a patcher with update keys got a list without a signature
    ListForged,        // NV_LIST_FORGED: the signature verifies under none of its keys
    ListExpired,       // NV_LIST_EXPIRED: subject is the expiry, as "YYYY-MM-DDTHH:MM:SSZ"
    ListRollback,      // NV_LIST_ROLLBACK: subject is the list's version, lower than one accepted before
    HashMismatch,      // NV_HASH_MISMATCH: a file's SHA-256 is not the signed list's
};

struct Failure {
    FailureKind kind = FailureKind::None;
    std::string subject;      // the file (game path) or address concerned
    int httpStatus = 0;       // HttpStatus
    TransferResult transfer;  // Network, ConfigUnreachable: what the transport said
    FileError file;           // the file faults
    uint64_t bytesNeeded = 0; // DiskFull: what the download still needed
    std::string detail;       // one line for the log
};

// Refused: the player did not accept the operator's notice; the run touched no game file.
enum class Outcome { UpToDate, SelfUpdate, Failed, Cancelled, Refused };

struct UpdateResult {
    Outcome outcome = Outcome::Failed;
    Failure failure;           // Failed
    std::string newPatcher;    // SelfUpdate: the verified new patcher, beside the running one (a ".nvpart")
    size_t filesFetched = 0;   // files replaced by this run
    uint64_t bytesFetched = 0; // body bytes taken by this run
    size_t deltaFiles = 0;     // files of those brought up to date by fetching only their changed chunks
    uint64_t bytesSaved = 0;   // what those did not have to fetch (their sizes less what they fetched)
};

// The player's side of the run. Every call comes from one of the run's threads, one call at a time.
class UpdateObserver {
public:
    virtual ~UpdateObserver() = default;
    virtual void step(Step) {}
    virtual void progress(const Progress&) {}
    // A file was verified and put in place.
    virtual void fileFinished(const std::string& /*path*/, uint64_t /*size*/) {}
    // Said just before fileFinished for a file that came as a delta: fetched of its size came from the server
    // (its index included), the rest from the player's own files.
    virtual void deltaApplied(const std::string& /*path*/, uint64_t /*size*/, uint64_t /*fetched*/) {}
    // Downloaded files wait because other programs hold the files they replace (full paths given). True: try
    // again (the observer may first have closed those programs); false: give up (NV_FILE_IN_USE).
    virtual bool retryInUse(const std::vector<std::wstring>& /*paths*/) { return false; }
    // The configuration carries a notice (UTF-8, "\n" between lines) that the player has not accepted yet.
    // True: accepted, the run goes on and remembers it; false: refused, the run ends (Refused) before it
    // writes anything. A notice nobody was shown is not accepted.
    virtual bool acceptNotice(const std::string& /*text*/) { return false; }
};

// cancel: set by the owner to stop the run; it returns Cancelled within the transport's receive timeout,
// leaving no half-written game file (a large file's finished segments are kept for the next run).
UpdateResult runUpdate(const UpdateRequest& request, HttpTransport& transport, GameFiles& files,
                       UpdateObserver& observer, RunLog& log, const std::atomic<bool>& cancel);

} // namespace nv::update
