#include "bench/bench_harness.h"

#include "core/files.h"
#include "core/text.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#ifdef _WIN32
#include <windows.h>

#include <psapi.h>
#else
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

extern char** environ;
#endif

namespace nv::bench {
namespace {

// Runs this program again with "--case NAME" and waits for it; true when it exited with 0.
bool runInChild(const char* name) {
    const std::wstring exe = exePath();
    std::fflush(stdout);
#ifdef _WIN32
    std::wstring command = L"\"" + exe + L"\" --case " + utf8ToWide(name);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(exe.c_str(), command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                        &process))
        return false;
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD code = 1;
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return code == 0;
#else
    const std::string path = wideToUtf8(exe);
    std::string flag = "--case", caseName = name;
    char* args[] = {const_cast<char*>(path.c_str()), flag.data(), caseName.data(), nullptr};
    pid_t pid = 0;
    if (posix_spawn(&pid, path.c_str(), nullptr, nullptr, args, environ) != 0) return false;
    int status = 0;
    if (waitpid(pid, &status, 0) != pid) return false;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
#endif
}

} // namespace

uint64_t peakMemoryBytes() {
#ifdef _WIN32
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof counters;
    if (!GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters)) return 0;
    return counters.PeakWorkingSetSize;
#else
    struct rusage usage {};
    if (getrusage(RUSAGE_SELF, &usage) != 0) return 0;
    return uint64_t(usage.ru_maxrss) * 1024; // kilobytes on Linux
#endif
}

void report(const std::string& name, const Timing& timing) {
    std::printf("%-28s best %10.2f ms   median %10.2f ms   runs %3d   peak %8.1f MB\n", name.c_str(),
                timing.bestMs, timing.medianMs, timing.runs, double(peakMemoryBytes()) / (1024.0 * 1024.0));
    std::fflush(stdout);
}

// Written through a volatile pointer with external linkage, so no optimiser can prove it unread.
const void* volatile keptValue = nullptr;

void keep(const void* value) {
    keptValue = value;
}

void fail(const std::string& message) {
    std::fprintf(stderr, "benchmark failed: %s\n", message.c_str());
    std::fflush(nullptr);
    std::exit(1);
}

int runCases(int argc, char** argv, std::initializer_list<Case> cases) {
    if (argc == 3 && std::strcmp(argv[1], "--case") == 0) {
        for (const Case& c : cases) {
            if (std::strcmp(c.name, argv[2]) == 0) {
                c.run();
                return 0;
            }
        }
        fail(std::string("no case named ") + argv[2]);
    }
    const char* filter = argc > 1 ? argv[1] : "";
    int failures = 0;
    for (const Case& c : cases) {
        if (std::strstr(c.name, filter) == nullptr) continue;
        if (!runInChild(c.name)) {
            std::printf("%-28s FAILED\n", c.name);
            ++failures;
        }
    }
    return failures == 0 ? 0 : 1;
}

} // namespace nv::bench
