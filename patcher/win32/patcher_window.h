#pragma once
// The patcher's one window: borderless, the skin's size, drawn entirely by the renderer. A skin whose
// background has transparent pixels gets a layered window with per-pixel alpha; any other an ordinary window
// painted from the same off-screen picture.

#include "patcher/patcher_logic.h"
#include "patcher/win32/feed_view.h"
#include "patcher/win32/frame_buffer.h"
#include "patcher/win32/news_browser.h"
#include "patcher/win32/update_view.h"
#include "renderer/scene.h"

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

namespace nv {

class PatcherWindow : public UpdateView::Host, public FeedView::Host {
public:
    // source: where the game's files come from (no remoteConfigPath: the patcher updates nothing); repair:
    // the first run reads every file again; feed: the server feed (no url: none is read); feedSnapPrefix: see
    // PatcherOptions.
    PatcherWindow(PatcherScene scene, bool preview, UpdateSource source = {}, bool repair = false,
                  FeedSource feed = {}, std::wstring feedSnapPrefix = {});
    PatcherWindow(const PatcherWindow&) = delete;
    PatcherWindow& operator=(const PatcherWindow&) = delete;

    // Creates and shows the window; false (with the reason) when Windows refuses.
    bool open(HINSTANCE instance, std::wstring& error);

private:
    static LRESULT CALLBACK windowProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT handle(UINT message, WPARAM wParam, LPARAM lParam);

    void redraw(); // renders the current states and puts them on the screen
    void present();
    int controlAtPoint(LPARAM clientPoint) const;
    HeadlineHit headlineAtPoint(LPARAM clientPoint) const;
    bool headlineUnderCursor() const;
    void openHeadline(const HeadlineHit& hit);
    void pointerChanged(bool changed);
    void act(int control);
    void startGame(const SkinControl& control);
    void showError(const std::wstring& text) const;
    void repair();
    void openNews();

    // UpdateView::Host
    void statesChanged() override { redraw(); }
    void startGameNow() override;
    void closeWindow() override;
    // FeedView::Host
    void feedRead(int count) override;

    PatcherScene scene_;
    bool preview_;
    std::vector<ControlState> states_;
    PointerTracker pointer_;
    HeadlineHit pressedHeadline_;
    win::FrameBuffer frame_;
    HWND hwnd_ = nullptr;
    bool trackingLeave_ = false;
    bool repairFirst_ = false;
    bool closing_ = false; // the window waits, hidden, for its update run to end
    std::unique_ptr<UpdateView> update_;
    std::unique_ptr<FeedView> feed_;
    std::unique_ptr<NewsBrowser> news_; // the news page over the news area, while the system can show it
    std::wstring feedSnapPrefix_;
};

} // namespace nv
