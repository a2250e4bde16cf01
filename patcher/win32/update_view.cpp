#include "patcher/win32/update_view.h"

#include "core/files.h"
#include "core/text.h"
#include "patcher/patcher_logic.h"
#include "update/failure_text.h"
#include "update/win32/file_holders.h"
#include "update/win32/self_update.h"

#include <commctrl.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace nv {
namespace {

constexpr UINT kProgressMessage = WM_APP + 20; // UpdateDisplay
constexpr UINT kInUseMessage = WM_APP + 21;    // InUseQuestion
constexpr UINT kEndMessage = WM_APP + 22;      // RunEnd

struct InUseQuestion {
    std::vector<std::wstring> paths;
    std::shared_ptr<std::atomic<int>> answer; // 0 waiting, 1 try again, 2 give up
};

struct RunEnd {
    update::UpdateResult result;
    std::wstring logPath;
};

// The worker's side: every call becomes a posted message; the in-use question waits for the window's answer.
class PostingObserver : public update::UpdateObserver {
public:
    PostingObserver(JobContext& context, const LocaleTable& strings) : context_(context), strings_(strings) {}

    void progress(const update::Progress& progress) override {
        context_.post(kProgressMessage, updateDisplay(progress, strings_));
    }
    bool retryInUse(const std::vector<std::wstring>& paths) override {
        auto answer = std::make_shared<std::atomic<int>>(0);
        if (!context_.post(kInUseMessage, InUseQuestion{paths, answer})) return false;
        while (answer->load() == 0 && !context_.cancelled())
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return answer->load() == 1;
    }

private:
    JobContext& context_;
    const LocaleTable& strings_;
};

std::wstring joinedNames(const std::vector<std::wstring>& names, const PatcherScene& scene) {
    constexpr size_t kShown = 5;
    std::wstring out;
    for (size_t i = 0; i < names.size() && i < kShown; ++i)
        out += (i ? L", " : L"") + names[i];
    if (names.size() > kShown)
        out +=
            L" " + fillPlaceholder(sceneText(scene, "NV_INUSE_MORE"), std::to_wstring(names.size() - kShown));
    return out;
}

// Asks the programs' windows to close, and waits a little for them to end.
void closePrograms(const std::vector<update::FileHolder>& holders) {
    for (const update::FileHolder& holder : holders) {
        if (holder.systemService) continue;
        struct Target {
            DWORD id;
        } target{holder.processId};
        EnumWindows(
            [](HWND window, LPARAM data) -> BOOL {
                DWORD owner = 0;
                GetWindowThreadProcessId(window, &owner);
                if (owner == reinterpret_cast<Target*>(data)->id && IsWindowVisible(window))
                    PostMessageW(window, WM_CLOSE, 0, 0);
                return TRUE;
            },
            reinterpret_cast<LPARAM>(&target));
        HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, holder.processId);
        if (process) {
            WaitForSingleObject(process, 5000);
            CloseHandle(process);
        }
    }
}

} // namespace

UpdateView::UpdateView(const PatcherScene& scene, UpdateSource source, Host& host)
    : scene_(scene), source_(std::move(source)), host_(host) {}

UpdateView::~UpdateView() {
    job_.cancel();
    job_.join();
    if (window_) {
        dropPosted<UpdateDisplay>(window_, kProgressMessage);
        dropPosted<InUseQuestion>(window_, kInUseMessage);
        dropPosted<RunEnd>(window_, kEndMessage);
    }
}

bool UpdateView::start(HWND window, std::vector<ControlState>& states, bool repair) {
    if (state_ == State::Running || state_ == State::Restarting) return false;
    window_ = window;
    job_.join();
    session_ = std::make_unique<UpdateSession>();
    std::wstring error;
    if (!openUpdateSession(scene_, source_, repair, *session_, error)) {
        state_ = State::Failed;
        ask(error, MB_OK | MB_ICONERROR);
        return false;
    }
    for (size_t i = 0; i < scene_.controls.size() && i < states.size(); ++i)
        if (scene_.controls[i].enableOnComplete) states[i].enabled = false;
    UpdateSession* session = session_.get();
    const LocaleTable* strings = &scene_.strings;
    state_ = State::Running;
    cancelled_ = false;
    const bool started = job_.start(window, [session, strings](JobContext& context) {
        PostingObserver observer(context, *strings);
        RunEnd end;
        end.result = update::runUpdate(session->request, *session->transport, *session->files, observer,
                                       session->log, context.cancelFlag());
        end.logPath = session->log.path();
        context.post(kEndMessage, std::move(end));
    });
    if (!started) state_ = State::Failed;
    return started;
}

void UpdateView::cancel() {
    cancelled_ = true;
    job_.cancel();
}

bool UpdateView::handle(UINT message, WPARAM, LPARAM lParam, std::vector<ControlState>& states) {
    switch (message) {
    case kProgressMessage: {
        const auto display = takePosted<UpdateDisplay>(lParam);
        if (state_ == State::Running) {
            show(*display, states);
            host_.statesChanged();
        }
        return true;
    }
    case kInUseMessage: {
        const auto question = takePosted<InUseQuestion>(lParam);
        if (cancelled_) {
            question->answer->store(2);
            return true;
        }
        std::vector<update::FileHolder> holders;
        update::findFileHolders(question->paths, holders);
        std::vector<std::wstring> files, programs;
        for (const std::wstring& path : question->paths)
            files.push_back(path);
        for (const update::FileHolder& holder : holders)
            programs.push_back(holder.name + (holder.systemService
                                                  ? L" " + sceneText(scene_, "NV_INUSE_SYSTEM_TAG")
                                                  : std::wstring()));
        if (programs.empty()) programs.push_back(sceneText(scene_, "NV_INUSE_UNKNOWN"));
        const std::wstring head = sceneText(scene_, "NV_INUSE_HEAD");
        const std::wstring body =
            fillPlaceholder(sceneText(scene_, "NV_INUSE_FILES"), joinedNames(files, scene_)) + L"\n\n" +
            fillPlaceholder(sceneText(scene_, "NV_INUSE_PROGRAMS"), joinedNames(programs, scene_)) + L"\n\n" +
            sceneText(scene_, "NV_INUSE_QUESTION");
        const std::wstring title = sceneText(scene_, "NV_INUSE_TITLE");
        const std::wstring closeText = sceneText(scene_, "NV_INUSE_BTN_CLOSE"),
                           retryText = sceneText(scene_, "NV_INUSE_BTN_RETRY"),
                           cancelText = sceneText(scene_, "NV_INUSE_BTN_CANCEL");
        const TASKDIALOG_BUTTON buttons[] = {
            {1, closeText.c_str()}, {2, retryText.c_str()}, {3, cancelText.c_str()}};
        TASKDIALOGCONFIG config{};
        config.cbSize = sizeof config;
        config.hwndParent = window_;
        config.pszWindowTitle = title.c_str();
        config.pszMainInstruction = head.c_str();
        config.pszContent = body.c_str();
        config.pszMainIcon = TD_WARNING_ICON;
        config.cButtons = UINT(std::size(buttons));
        config.pButtons = buttons;
        config.nDefaultButton = 2;
        int pressed = 3;
        if (FAILED(TaskDialogIndirect(&config, &pressed, nullptr, nullptr)))
            pressed = ask(head + L"\n\n" + body, MB_RETRYCANCEL | MB_ICONWARNING) == IDRETRY ? 2 : 3;
        if (pressed == 1) closePrograms(holders);
        question->answer->store(pressed == 3 ? 2 : 1);
        return true;
    }
    case kEndMessage: {
        const auto end = takePosted<RunEnd>(lParam);
        job_.join();
        if (cancelled_) {
            state_ = State::Idle;
            return true;
        }
        finished(end->result, end->logPath, states);
        return true;
    }
    default:
        return false;
    }
}

void UpdateView::show(const UpdateDisplay& display, std::vector<ControlState>& states) const {
    for (size_t i = 0; i < scene_.controls.size() && i < states.size(); ++i) {
        const SkinControl& control = scene_.controls[i];
        if (control.id == "TEXT_MAIN") states[i].text = display.main.empty() ? L" " : display.main;
        if (control.id == "TEXT_SUB") states[i].text = display.sub.empty() ? L" " : display.sub;
        if (control.id == "TEXT_TORRENT") states[i].text = display.torrent.empty() ? L" " : display.torrent;
        if (control.id == "PROGRESS_MAIN") states[i].progress = display.mainGauge;
        if (control.id == "PROGRESS_SUB") states[i].progress = display.subGauge;
    }
}

void UpdateView::finished(const update::UpdateResult& result, const std::wstring& logPath,
                          std::vector<ControlState>& states) {
    switch (result.outcome) {
    case update::Outcome::UpToDate: {
        state_ = State::UpToDate;
        update::Progress done;
        done.step = update::Step::Done;
        show(updateDisplay(done, scene_.strings), states);
        for (size_t i = 0; i < scene_.controls.size() && i < states.size(); ++i)
            if (scene_.controls[i].enableOnComplete) states[i].enabled = true;
        host_.statesChanged();
        if (scene_.settings.autoStart) host_.startGameNow();
        return;
    }
    case update::Outcome::SelfUpdate: {
        update::Progress self;
        self.step = update::Step::SelfUpdate;
        UpdateDisplay display = updateDisplay(self, scene_.strings);
        display.main = sceneText(scene_, "NEW_PATCHER_START");
        show(display, states);
        host_.statesChanged();
        std::wstring error;
        const std::wstring exe = exePath();
        if (!update::swapRunningExe(exe, session_->files->displayPath(result.newPatcher), error)) {
            update::Failure failure;
            failure.kind = update::FailureKind::WriteFailed;
            failure.subject = wideToUtf8(exe);
            failure.detail = wideToUtf8(error);
            failed(failure, logPath, states);
            return;
        }
        if (restart(false)) return;
        ask(fillPlaceholder(sceneText(scene_, "ERROR_EXECUTE_PROCESS"), std::to_wstring(GetLastError())),
            MB_OK | MB_ICONERROR);
        state_ = State::Failed;
        return;
    }
    case update::Outcome::Cancelled:
        state_ = State::Idle;
        return;
    case update::Outcome::Failed:
        failed(result.failure, logPath, states);
        return;
    }
}

void UpdateView::failed(const update::Failure& failure, const std::wstring& logPath,
                        std::vector<ControlState>& states) {
    state_ = State::Failed;
    UpdateDisplay display;
    display.main = update::failureText(failure, scene_.strings);
    show(display, states);
    if (scene_.settings.allowError)
        for (size_t i = 0; i < scene_.controls.size() && i < states.size(); ++i)
            if (scene_.controls[i].enableOnComplete) states[i].enabled = true;
    host_.statesChanged();

    // A folder the player may not write: the patcher asks to start again with the rights it needs, and only
    // then asks for them.
    if (failure.kind == update::FailureKind::AccessDenied) {
        if (ask(sceneText(scene_, "NV_ADMIN_QUESTION"), MB_YESNO | MB_ICONQUESTION) == IDYES) {
            if (restart(true)) return;
            ask(fillPlaceholder(sceneText(scene_, "LAUNCH_ERROR_WITH_ADMIN_PRIVILEGES"),
                                std::to_wstring(GetLastError())),
                MB_OK | MB_ICONERROR);
        }
        return;
    }
    const std::wstring question =
        fillPlaceholder(sceneText(scene_, "NV_RETRY"), failureMessage(failure, scene_.strings, logPath));
    if (ask(question, MB_YESNO | MB_ICONWARNING) == IDYES) start(window_, states, session_->request.repair);
}

bool UpdateView::restart(bool elevated) {
    std::wstring error;
    if (!update::startProgram(exePath(), update::ownArguments(), elevated, nullptr, error)) return false;
    state_ = State::Restarting;
    host_.closeWindow();
    return true;
}

int UpdateView::ask(const std::wstring& text, UINT flags) const {
    return MessageBoxW(window_, text.c_str(), patcherTitle(scene_, false).c_str(), flags);
}

} // namespace nv
