#include "ui/win32/build_runner.h"

#include "core/files.h"
#include "core/format.h"
#include "core/paths.h"
#include "packager/build_start.h"
#include "recipe/addresses.h"
#include "ui/win32/app.h"

#include <new>

namespace nv::ui::win {
namespace {

// Each progress line travels to the window as an object of its own, in order.
void postFromJob(void* job, const std::wstring& line) {
    static_cast<JobContext*>(job)->post(kMsgLogLine, line);
}

// The synchronous build posts its lines too, so that they reach the log by the same way.
void postToWindow(void* window, const std::wstring& line) {
    postOwned(static_cast<HWND>(window), kMsgLogLine, std::make_unique<std::wstring>(line));
}

} // namespace

void BuildRunner::setBuilding(bool on) {
    building_.exchange(on);
    app_.fields().enable(on, app_.recipe().signing.enabled);
    if (on) {
        tick_ = 0;
        SetTimer(app_.hwnd(), kBusyTimer, kBusyTimerMs, nullptr);
    } else {
        KillTimer(app_.hwnd(), kBusyTimer);
    }
    InvalidateRect(app_.hwnd(), nullptr, FALSE);
}

std::wstring BuildRunner::startProblem() const {
    if (!app_.skinLoaded()) return L"Önce bir skin yükleyin.";
    const std::wstring& templatePath = app_.templatePath();
    if (!fileExists(templatePath))
        return L"Patcher şablonu bulunamadı: " + templatePath + L" — build.bat ile derleyin.";
    if (app_.recipe().outPath.empty()) return {};
    std::wstring error;
    checkBuildStart(app_.buildInputs(), error);
    return error;
}

bool BuildRunner::stale() const {
    return finished_ && !building() && app_.settingsFingerprint() != builtFrom_;
}

void BuildRunner::start() {
    if (building()) return;
    if (!app_.skinLoaded()) {
        app_.setStatus(L"Önce bir skin yükleyin.", true, StatusCause::StartCheck);
        app_.showSection(kKaynak);
        return;
    }
    finished_ = false;
    if (fileExists(app_.templatePath()) && app_.recipe().outPath.empty()) {
        if (!app_.chooseOutputFile()) return; // cancelled: no message, no log line
        if (app_.recipe().outPath.empty()) return;
    }
    const std::wstring error = startProblem();
    if (!error.empty()) {
        finished_ = true;
        succeeded_ = false;
        lastResult_ = BuildResult{};
        lastResult_.message = error;
        app_.appendLog(error, 3);
        app_.setStatus(error, true, StatusCause::StartCheck);
        app_.showSection(kDerleme);
        builtFrom_ = app_.settingsFingerprint();
        return;
    }

    app_.session().save();
    app_.showSection(kDerleme);
    // The job works on copies: the working skin (whose file bytes the copy shares) and the inputs.
    SkinWorkspace workspace = app_.workingSkin();
    BuildInputs inputs = app_.buildInputs();
    begin(inputs.outputPath);
    app_.setStatus(L"Oluşturuluyor…", false);
    setBuilding(true);
    std::wstring message;
    const bool started = job_.start(
        app_.hwnd(),
        [workspace = std::move(workspace), inputs = std::move(inputs)](JobContext& job) {
            BuildResult result = runBuild(workspace, inputs, postFromJob, &job);
            job.post(kMsgBuildDone, std::move(result));
        },
        &message);
    if (!started) {
        setBuilding(false);
        app_.appendLog(message, 3);
    }
}

void BuildRunner::begin(const std::wstring& output) {
    app_.appendLog(L"Oluşturma başladı → " + output, 1);
    builtFrom_ = app_.settingsFingerprint();
    addressWarnings_ = addressWarnings(app_.recipe());
    startTick_ = GetTickCount();
    lastOutput_ = output;
}

void BuildRunner::runNow() {
    const BuildInputs inputs = app_.buildInputs();
    const SkinWorkspace workspace = app_.workingSkin();
    begin(inputs.outputPath);
    auto result = std::make_unique<BuildResult>(runBuild(workspace, inputs, postToWindow, app_.hwnd()));
    complete(std::move(result));
}

void BuildRunner::complete(std::unique_ptr<BuildResult> result) {
    // The job posted its result as the last thing it did; the wait only bounds its return.
    job_.join(2000);
    // Every progress line still queued goes into the log before the outcome.
    MSG pending{};
    while (PeekMessageW(&pending, app_.hwnd(), kMsgLogLine, kMsgLogLine, PM_REMOVE))
        if (auto line = takePosted<std::wstring>(pending.lParam)) app_.appendLog(*line, 0);
    setBuilding(false);
    elapsedMs_ = GetTickCount() - startTick_;
    finished_ = true;
    succeeded_ = result && result->ok;
    if (result) {
        lastResult_ = *result;
        if (!result->ok) {
            app_.appendLog(L"Oluşturulamadı: " + result->message, 3);
            app_.setStatus(L"Oluşturulamadı: " + result->message, true, StatusCause::BuildOutcome);
        } else {
            app_.appendLog(L"Tamamlandı → " + lastOutput_, 1);
            wchar_t line[128];
            wsprintfW(line, L"CRC32: %08X    Boyut: %s", static_cast<unsigned>(result->crc32),
                      sizeText(result->size).c_str());
            app_.appendLog(line, 1);
            if (result->wasSigned) {
                app_.appendLog(L"Dijital imza eklendi.", 1);
                for (const std::wstring& signer : signatureLines(result->signature))
                    app_.appendLog(signer, 0);
            }
            // A patcher that cannot update, or a button that opens nothing, is never a quiet success.
            for (const std::wstring& warning : addressWarnings_)
                app_.appendLog(warning, 2);
            if (addressWarnings_.empty())
                app_.setStatus(L"Patcher hazır: " + pathFileName(lastOutput_), false,
                               StatusCause::BuildOutcome);
            else
                app_.setStatus(L"Patcher hazır: " + pathFileName(lastOutput_) + L" — uyarılar günlükte", true,
                               StatusCause::BuildOutcome);
        }
    }
    app_.session().save();
    InvalidateRect(app_.hwnd(), nullptr, FALSE);
}

void BuildRunner::shutdown() {
    job_.cancel();
    job_.join();
    dropPosted<std::wstring>(app_.hwnd(), kMsgLogLine);
    dropPosted<BuildResult>(app_.hwnd(), kMsgBuildDone);
}

} // namespace nv::ui::win
