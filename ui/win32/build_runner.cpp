// Building from the window: the checks before a build, the worker thread, its log lines and its result.

#include "ui/win32/app.h"

#include "packager/build_start.h"
#include "core/files.h"
#include "core/format.h"
#include "core/paths.h"
#include "core/text.h"

#include <process.h>

#include <cwchar>
#include <new>

namespace nv::ui::win {
namespace {

// The window that receives the worker's log lines. Written on the UI thread before a worker starts.
std::atomic<HWND> logWindow{nullptr};

// Runs on the worker: each line travels to the UI thread as its own heap string.
void postLogLine(void*, const std::wstring& line) {
    HWND target = logWindow.load();
    if (!target) return;
    auto* copy = new (std::nothrow) std::wstring(line);
    if (!copy) return;
    if (!PostMessageW(target, kMsgLogLine, 0, reinterpret_cast<LPARAM>(copy))) delete copy;
}

struct WorkerJob {
    HWND window;
    const SkinWorkspace* workspace;
    BuildInputs inputs;
};

unsigned __stdcall buildWorker(void* argument) {
    WorkerJob* job = static_cast<WorkerJob*>(argument);
    auto* result = new (std::nothrow) BuildResult;
    if (result) {
        try {
            *result = runBuild(*job->workspace, job->inputs, postLogLine, nullptr);
        } catch (const std::bad_alloc&) {
            result->ok = false;
            result->message = L"Bellek yetersiz.";
        }
    }
    if (!PostMessageW(job->window, kMsgBuildDone, 0, reinterpret_cast<LPARAM>(result))) delete result;
    delete job;
    return 0;
}

} // namespace

void BuilderApp::startBuild() {
    if (building()) return;
    copyFieldsToSettings();
    if (!skinLoaded_) {
        setStatus(L"Önce bir skin yükleyin.", true);
        showSection(kKaynak);
        return;
    }
    lastFinished_ = false;
    std::wstring error;
    if (!fileExists(templatePath_)) {
        error = L"Patcher şablonu bulunamadı: " + templatePath_ + L" — build.bat ile derleyin.";
    } else {
        if (fieldText(kFieldOutPath).empty()) {
            if (!chooseOutputFile()) return; // cancelled: no message, no log line
            copyFieldsToSettings();
            if (fieldText(kFieldOutPath).empty()) return;
        }
        checkBuildStart(buildInputs(), error);
    }
    if (!error.empty()) {
        lastFinished_ = true;
        lastSucceeded_ = false;
        lastResult_ = BuildResult{};
        lastResult_.message = error;
        appendLog(error, 3);
        setStatus(error, true);
        showSection(kDerleme);
        return;
    }

    saveSession();
    logWindow.store(hwnd_);
    const std::wstring output = fieldText(kFieldOutPath);
    showSection(kDerleme);
    appendLog(L"Oluşturma başladı → " + output, 1);
    setStatus(L"Oluşturuluyor…", false);
    buildStart_ = GetTickCount();
    lastOutput_ = output;
    setBuilding(true);
    auto* job = new (std::nothrow) WorkerJob{hwnd_, &workspace_, buildInputs()};
    const uintptr_t thread = job ? _beginthreadex(nullptr, 0, buildWorker, job, 0, nullptr) : 0;
    if (thread == 0) {
        delete job;
        setBuilding(false);
        appendLog(L"İş parçacığı başlatılamadı.", 3);
        return;
    }
    worker_ = reinterpret_cast<HANDLE>(thread);
}

void BuilderApp::completeBuild(BuildResult* result) {
    if (worker_) {
        WaitForSingleObject(worker_, 2000);
        CloseHandle(worker_);
        worker_ = nullptr;
    }
    // Every progress line still queued goes into the log before the outcome.
    MSG pending{};
    while (PeekMessageW(&pending, hwnd_, kMsgLogLine, kMsgLogLine, PM_REMOVE)) {
        auto* line = reinterpret_cast<std::wstring*>(pending.lParam);
        if (!line) continue;
        appendLog(*line, 0);
        delete line;
    }
    setBuilding(false);
    elapsed_ = GetTickCount() - buildStart_;
    lastFinished_ = true;
    if (result) {
        lastResult_ = *result;
        lastSucceeded_ = result->ok;
        const std::wstring output = lastOutput_;
        if (!result->ok) {
            appendLog(L"Oluşturulamadı: " + result->message, 3);
            setStatus(L"Oluşturulamadı: " + result->message, true);
        } else {
            appendLog(L"Tamamlandı → " + output, 1);
            wchar_t line[128];
            wsprintfW(line, L"CRC32: %08X    Boyut: %s", static_cast<unsigned>(result->crc32),
                      sizeText(result->size).c_str());
            appendLog(line, 1);
            if (result->wasSigned) appendLog(L"Dijital imza eklendi.", 1);
            setStatus(L"Patcher hazır: " + pathFileName(output), false);
        }
        delete result;
    } else {
        lastSucceeded_ = false;
    }
    saveSession();
    InvalidateRect(hwnd_, nullptr, FALSE);
}

void BuilderApp::buildNow() {
    copyFieldsToSettings();
    const std::wstring output = fieldText(kFieldOutPath);
    appendLog(L"Oluşturma başladı → " + output, 1);
    buildStart_ = GetTickCount();
    lastOutput_ = output;
    logWindow.store(hwnd_);
    auto* result = new (std::nothrow) BuildResult;
    if (result) *result = runBuild(workspace_, buildInputs(), postLogLine, nullptr);
    completeBuild(result);
}

} // namespace nv::ui::win
