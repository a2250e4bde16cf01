#pragma once
// The log of each update run, in the game folder as plain text that a player can attach to a support request:
// what was checked, fetched, retried and replaced, and why a run failed. Each run starts a new "norvane.log";
// the two runs before it stay as "norvane.1.log" and "norvane.2.log". A run's log stops growing at kMaxBytes
// (with a line saying so), so a hostile list cannot fill the disk through it.

#include "update/game_files.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace nv::update {

class RunLog {
public:
    static constexpr uint64_t kMaxBytes = 1u << 20;

    // A log that writes nothing (until open succeeds).
    RunLog() = default;

    // Rotates the earlier runs' logs and starts this run's with a header line. False when the log cannot be
    // written; the run goes on without it.
    bool open(GameFiles& files, std::string_view header);

    // One line, prefixed with the seconds since open. Safe from any thread.
    void line(std::string_view text);

    // Where the log is, for the failure messages ("" when it is not written).
    const std::wstring& path() const { return path_; }

private:
    std::mutex mutex_;
    std::unique_ptr<PartFile> file_;
    uint64_t written_ = 0;
    bool full_ = false;
    std::wstring path_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

} // namespace nv::update
