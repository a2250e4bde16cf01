#include "patcher/win32/headless.h"

#include "core/files.h"
#include "core/format.h"
#include "core/text.h"
#include "patcher/update_texts.h"
#include "update/win32/self_update.h"

#include <windows.h>

#include <atomic>

namespace nv {
namespace {

std::atomic<bool> gCancel{false};

BOOL WINAPI onConsoleEvent(DWORD) {
    gCancel = true; // the run stops within the receive timeout and leaves no half-written file
    return TRUE;
}

// Standard output and error as UTF-8 lines; a patcher started from a console window (it is a GUI program)
// writes to that console.
class Output {
public:
    Output() {
        out_ = GetStdHandle(STD_OUTPUT_HANDLE);
        err_ = GetStdHandle(STD_ERROR_HANDLE);
        if ((!usable(out_) || !usable(err_)) && AttachConsole(ATTACH_PARENT_PROCESS)) {
            HANDLE console =
                CreateFileW(L"CONOUT$", GENERIC_WRITE, FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
            if (!usable(out_)) out_ = console;
            if (!usable(err_)) err_ = console;
        }
    }
    void out(const std::wstring& line) const { write(out_, line); }
    void err(const std::wstring& line) const { write(err_, line); }

private:
    static bool usable(HANDLE h) { return h != nullptr && h != INVALID_HANDLE_VALUE; }
    static void write(HANDLE h, const std::wstring& line) {
        if (!usable(h)) return;
        const std::string bytes = wideToUtf8(line + L"\n");
        DWORD written = 0;
        WriteFile(h, bytes.data(), DWORD(bytes.size()), &written, nullptr);
    }
    HANDLE out_ = nullptr, err_ = nullptr;
};

class LineObserver : public update::UpdateObserver {
public:
    LineObserver(const Output& output, const LocaleTable& strings, bool acceptNotice)
        : output_(output), strings_(strings), acceptNotice_(acceptNotice) {}
    void step(update::Step step) override {
        if (step == update::Step::Done) return; // said once the run is over
        output_.out(stepLine(step, strings_));
    }
    void fileFinished(const std::string& path, uint64_t size) override {
        output_.out(L"  " + utf8ToWide(path) + L"  " + sizeText(size));
    }
    // Nobody is there to press a button: the notice is printed, and taken as accepted only when the command
    // line says so. Whoever runs the patcher from a script has then read it once.
    bool acceptNotice(const std::string& text) override {
        output_.out(localeText(strings_, "TORRENT_NOTICE_TITLE") + L":");
        output_.out(utf8ToWide(text));
        return acceptNotice_;
    }
    void deltaApplied(const std::string& path, uint64_t size, uint64_t fetched) override {
        output_.out(L"  " + utf8ToWide(path) + L"  fark: " + sizeText(fetched) + L" indirildi, " +
                    sizeText(size > fetched ? size - fetched : 0) + L" yerel dosyalardan");
    }

private:
    const Output& output_;
    const LocaleTable& strings_;
    bool acceptNotice_;
};

// Why a headless run stopped at the notice, and how to go on.
constexpr const wchar_t* kNoticeNotAccepted =
    L"Sunucunun duyurusu kabul edilmedi; oyun dosyalarına dokunulmadı. Duyuruyu okuduysanız "
    L"--accept-notice ile yeniden çalıştırın (ya da patcher'ı bir kez penceresiyle açıp kabul edin).";

} // namespace

int runHeadless(const PatcherScene& scene, const UpdateSource& source, const PatcherOptions& options) {
    const Output output;
    if (trim(source.remoteConfigPath).empty()) {
        output.err(kNoUpdateSourceText);
        return 1;
    }
    SetConsoleCtrlHandler(onConsoleEvent, TRUE);
    UpdateSession session;
    std::wstring error;
    if (!openUpdateSession(scene, source, options.repair, session, error)) {
        output.err(error);
        return 1;
    }
    LineObserver observer(output, scene.strings, options.acceptNotice);
    const update::UpdateResult result = update::runUpdate(session.request, *session.transport, *session.files,
                                                          observer, session.log, gCancel);
    switch (result.outcome) {
    case update::Outcome::UpToDate:
        if (result.deltaFiles > 0)
            output.out(L"Fark güncellemesi: " + std::to_wstring(result.deltaFiles) + L" dosya, " +
                       sizeText(result.bytesSaved) + L" indirilmedi (toplam indirilen " +
                       sizeText(result.bytesFetched) + L")");
        output.out(sceneText(scene, "NV_UP_TO_DATE"));
        return 0;
    case update::Outcome::Cancelled:
        output.err(sceneText(scene, "NV_INUSE_STOPPED"));
        return 1;
    case update::Outcome::Failed:
        output.err(failureMessage(result.failure, scene.strings, session.log.path()));
        return 1;
    case update::Outcome::Refused:
        output.err(kNoticeNotAccepted);
        return 1;
    case update::Outcome::SelfUpdate:
        break;
    }
    // The new patcher finishes the run in this console; its answer is this one's.
    const std::wstring exe = exePath();
    if (!update::swapRunningExe(exe, session.files->displayPath(result.newPatcher), error)) {
        output.err(fillPlaceholder(sceneText(scene, "FAILED_WRITE_FILE"), exe) + L"\n" + error);
        return 1;
    }
    output.out(sceneText(scene, "NEW_PATCHER_START"));
    HANDLE process = nullptr;
    if (!update::startProgram(exe, update::ownArguments(), false, &process, error)) {
        output.err(
            fillPlaceholder(sceneText(scene, "ERROR_EXECUTE_PROCESS"), std::to_wstring(GetLastError())) +
            L"\n" + error);
        return 1;
    }
    WaitForSingleObject(process, INFINITE);
    DWORD code = 1;
    GetExitCodeProcess(process, &code);
    CloseHandle(process);
    return int(code);
}

} // namespace nv
