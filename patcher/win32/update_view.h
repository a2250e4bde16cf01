#pragma once
// The patcher window's update run: started when the window opens, carried out on a BackgroundJob whose
// worker only posts to the window (progress texts, the in-use question, the end), and finished on the UI
// thread: the operator's notice, the texts and gauges, the start button, the failure's question (NV_RETRY,
// NV_ADMIN_QUESTION), the self-update's restart, auto start.

#include "core/win32/background_job.h"
#include "patcher/update_texts.h"
#include "patcher/win32/update_session.h"
#include "renderer/scene.h"

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

namespace nv {

class UpdateView {
public:
    enum class State { Idle, Running, UpToDate, Failed, Restarting };

    // What the view asks of its window.
    struct Host {
        virtual ~Host() = default;
        virtual void statesChanged() = 0; // redraw
        virtual void startGameNow() = 0;  // auto start
        virtual void closeWindow() = 0;   // after a restart (self-update, elevation)
    };

    UpdateView(const PatcherScene& scene, UpdateSource source, Host& host);
    ~UpdateView();

    // Starts a run (repair: every file read again). False when one is running.
    bool start(HWND window, std::vector<ControlState>& states, bool repair);
    // Asks the run to stop; the end arrives as a message (within the transport's receive timeout).
    void cancel();
    bool running() const { return state_ == State::Running; }
    State state() const { return state_; }

    // The window's messages of the run; true when the message was one of them.
    bool handle(UINT message, WPARAM wParam, LPARAM lParam, std::vector<ControlState>& states);

private:
    void show(const UpdateDisplay& display, std::vector<ControlState>& states) const;
    void finished(const update::UpdateResult& result, const std::wstring& logPath,
                  std::vector<ControlState>& states);
    void failed(const update::Failure& failure, const std::wstring& logPath,
                std::vector<ControlState>& states);
    bool restart(bool elevated);
    int ask(const std::wstring& text, UINT flags) const;
    bool askNotice(const std::wstring& text) const;

    const PatcherScene& scene_;
    UpdateSource source_;
    Host& host_;
    HWND window_ = nullptr;
    State state_ = State::Idle;
    bool cancelled_ = false;                 // the window is closing: the run's end asks nothing more
    std::unique_ptr<UpdateSession> session_; // outlives the job that uses it
    BackgroundJob job_;
};

} // namespace nv
