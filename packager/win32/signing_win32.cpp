// Finding signtool.exe among the installed Windows SDKs.

#include "packager/signing.h"

#include "core/files.h"
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

} // namespace nv
