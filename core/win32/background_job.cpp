#include "core/win32/background_job.h"

#include <process.h>

#include <exception>
#include <new>

namespace nv {

struct BackgroundJob::Launch {
    BackgroundJob* job;
    HWND window;
    Work work;
};

BackgroundJob::~BackgroundJob() {
    cancel();
    join();
}

bool BackgroundJob::start(HWND window, Work work, std::wstring* message) {
    if (thread_) {
        if (message) *message = L"Bir iş zaten sürüyor.";
        return false;
    }
    cancel_.store(false, std::memory_order_relaxed);
    failure_.clear();
    auto* launch = new (std::nothrow) Launch{this, window, std::move(work)};
    // _beginthreadex rather than CreateThread: the work uses the C runtime.
    const uintptr_t thread = launch ? _beginthreadex(nullptr, 0, threadMain, launch, 0, nullptr) : 0;
    if (thread == 0) {
        delete launch;
        if (message) *message = L"İş parçacığı başlatılamadı.";
        return false;
    }
    thread_ = reinterpret_cast<HANDLE>(thread);
    return true;
}

bool BackgroundJob::join(DWORD timeoutMs) {
    if (!thread_) return true;
    if (WaitForSingleObject(thread_, timeoutMs) != WAIT_OBJECT_0) return false;
    CloseHandle(thread_);
    thread_ = nullptr;
    return true;
}

unsigned __stdcall BackgroundJob::threadMain(void* argument) {
    Launch* launch = static_cast<Launch*>(argument);
    JobContext context(launch->window, launch->job->cancel_);
    try {
        launch->work(context);
    } catch (const std::bad_alloc&) {
        launch->job->failure_ = L"Bellek yetersiz.";
    } catch (...) {
        launch->job->failure_ = L"Beklenmeyen hata.";
    }
    delete launch;
    return 0;
}

} // namespace nv
