#pragma once
// Building from the window: the checks before a build, the build itself on a job of its own, its progress
// lines and its result, and what the Derleme page shows of the last build. The job gets a copy of the working
// skin and of the build's inputs, so the window stays free to change while it runs; it talks back only with
// WM_APP+1 (each progress line) and WM_APP+2 (the result), both owned by the window once posted.

#include "core/win32/background_job.h"
#include "packager/build_job.h"

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace nv::ui::win {

class BuilderApp;

constexpr UINT kMsgLogLine = WM_APP + 1;   // lParam: a posted std::wstring, wParam its level
constexpr UINT kMsgBuildDone = WM_APP + 2; // lParam: a posted BuildResult
constexpr UINT_PTR kBusyTimer = 1;
constexpr UINT kBusyTimerMs = 40;

class BuildRunner {
public:
    explicit BuildRunner(BuilderApp& app) : app_(app) {}
    BuildRunner(const BuildRunner&) = delete;
    BuildRunner& operator=(const BuildRunner&) = delete;

    // The build button: the start checks, then the job. A second start while one runs is ignored.
    void start();
    // What the start checks would say now (empty when a build could start, or would first ask for an output
    // place), so that a status line they set can follow the operator's fixes.
    std::wstring startProblem() const;
    // WM_APP+2: joins the job, takes the progress lines still queued, then logs and shows the outcome.
    void complete(std::unique_ptr<BuildResult> result);
    // The same build on the calling thread (snapshot mode), its outcome handled by complete.
    void runNow();
    // Before the window goes: the job is joined and whatever it posted is freed.
    void shutdown();

    // While a build runs the fields are locked and timer 1 animates the busy state.
    void setBuilding(bool on);
    bool building() const { return building_.load(); }
    int tick() const { return tick_; }
    void nextTick() { ++tick_; }

    bool finished() const { return finished_; }
    bool succeeded() const { return finished_ && succeeded_; }
    const BuildResult& lastResult() const { return lastResult_; }
    const std::wstring& lastOutput() const { return lastOutput_; }
    uint32_t elapsedMs() const { return elapsedMs_; }
    // A finished build whose settings the operator has changed since: its file and CRC are still true, but
    // they are not what a build would make now.
    bool stale() const;

private:
    // The start's log line, the time and the output remembered before a build of this output begins.
    void begin(const std::wstring& output);

    BuilderApp& app_;
    BackgroundJob job_;
    std::atomic<bool> building_{false};
    int tick_ = 0;
    uint32_t startTick_ = 0;
    uint32_t elapsedMs_ = 0;
    bool finished_ = false;
    bool succeeded_ = false;
    BuildResult lastResult_;
    std::wstring lastOutput_;
    std::string builtFrom_; // the settings' fingerprint the last build started from
    // The addresses that the patcher will not be able to use, said at the end of a successful build.
    std::vector<std::wstring> addressWarnings_;
};

} // namespace nv::ui::win
