// Finding signtool.exe and running a child process with its output captured.

#include "packager/signing.h"

#include "core/files.h"
#include "core/text.h"
#include "core/win32/scoped_win.h"

#include <windows.h>

#include <string>
#include <vector>

namespace nv {
namespace {

std::wstring environmentValue(const wchar_t* name) {
    wchar_t buffer[260];
    DWORD n = GetEnvironmentVariableW(name, buffer, 260);
    return n > 0 && n < 260 ? std::wstring(buffer, n) : std::wstring();
}

std::wstring ansiToWide(const std::string& bytes) {
    if (bytes.empty()) return {};
    int n = MultiByteToWideChar(CP_ACP, 0, bytes.data(), int(bytes.size()), nullptr, 0);
    if (n <= 0) return {};
    std::wstring out(size_t(n), L'\0');
    MultiByteToWideChar(CP_ACP, 0, bytes.data(), int(bytes.size()), out.data(), n);
    return out;
}

} // namespace

std::wstring findSigntool() {
    std::vector<std::wstring> roots;
    for (const wchar_t* name : {L"ProgramFiles(x86)", L"ProgramFiles"}) {
        std::wstring root = environmentValue(name);
        if (!root.empty()) roots.push_back(root);
    }
    std::wstring result, best;
    for (const std::wstring& root : roots) {
        const std::wstring bin = root + L"\\Windows Kits\\10\\bin";
        WIN32_FIND_DATAW found;
        win::ScopedFind find(FindFirstFileW((bin + L"\\10.*").c_str(), &found));
        for (bool more = find.valid(); more; more = FindNextFileW(find.get(), &found)) {
            if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) continue;
            const std::wstring folder = found.cFileName;
            for (const wchar_t* arch : {L"x86", L"x64"}) {
                std::wstring candidate = bin + L"\\" + folder + L"\\" + arch + L"\\signtool.exe";
                // std::wstring compares ordinally, a longer name winning over its own prefix.
                if (fileExists(candidate) && folder > best) {
                    result = candidate;
                    best = folder;
                }
            }
        }
        if (result.empty()) {
            for (const wchar_t* fixed : {L"\\Windows Kits\\10\\bin\\x86\\signtool.exe",
                                         L"\\Windows Kits\\10\\App Certification Kit\\signtool.exe",
                                         L"\\Windows Kits\\8.1\\bin\\x86\\signtool.exe"}) {
                if (fileExists(root + fixed)) {
                    result = root + fixed;
                    break;
                }
            }
        }
    }
    return result;
}

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
