#include "core/win32/child_process.h"

#include "core/text.h"
#include "core/win32/scoped_win.h"

#include <windows.h>

#include <string>
#include <vector>

namespace nv {
namespace {

// Console tools print in the ANSI code page, whatever the console's own code page is set to.
std::wstring ansiToWide(const std::string& bytes) {
    if (bytes.empty()) return {};
    int n = MultiByteToWideChar(CP_ACP, 0, bytes.data(), int(bytes.size()), nullptr, 0);
    if (n <= 0) return {};
    std::wstring out(size_t(n), L'\0');
    MultiByteToWideChar(CP_ACP, 0, bytes.data(), int(bytes.size()), out.data(), n);
    return out;
}

} // namespace

bool runCapture(const std::wstring& commandLine, std::wstring& output, uint32_t& exitCode,
                uint32_t timeoutMs) {
    output.clear();
    exitCode = 1;
    SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
    HANDLE readEnd = nullptr, writeEnd = nullptr;
    if (!CreatePipe(&readEnd, &writeEnd, &inherit, 0)) return false;
    win::ScopedHandle reader(readEnd), writer(writeEnd);
    SetHandleInformation(reader.get(), HANDLE_FLAG_INHERIT, 0);

    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES | STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_HIDE;
    startup.hStdInput = nullptr;
    startup.hStdOutput = writer.get();
    startup.hStdError = writer.get();
    // CreateProcessW may write into the command line, so it gets a copy of its own.
    std::vector<wchar_t> line(commandLine.begin(), commandLine.end());
    line.push_back(L'\0');
    PROCESS_INFORMATION process{};
    BOOL started = CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                                  nullptr, &startup, &process);
    // Our copy of the write end goes at once, so that the pipe ends when the child (and its children) close
    // it.
    writer.close();
    if (!started) return false;
    win::ScopedHandle processHandle(process.hProcess), threadHandle(process.hThread);

    std::string bytes;
    char chunk[4096];
    DWORD got = 0;
    while (ReadFile(reader.get(), chunk, sizeof chunk, &got, nullptr) && got > 0)
        bytes.append(chunk, got);

    WaitForSingleObject(processHandle.get(), timeoutMs);
    DWORD code = 1;
    if (GetExitCodeProcess(processHandle.get(), &code)) exitCode = code;
    output = trim(ansiToWide(bytes));
    return true;
}

} // namespace nv
