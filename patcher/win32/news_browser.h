#pragma once
// The news area's web page: the system's web browser control (IWebBrowser2) hosted in a small window of its
// own over the skin's iframe rectangle. It stays hidden until the page has loaded, so that the renderer's
// headlines show meanwhile and whenever the page cannot load. Only http and https are navigated; links that
// ask for a new window open in the player's default browser; script error dialogs are suppressed.
//
// A layered (transparent) window cannot show child windows, so for such a skin the host is an owned popup
// kept over the area as the patcher moves.

#include <windows.h>

#include <memory>
#include <string>

namespace nv {

class NewsBrowser {
public:
    NewsBrowser();
    ~NewsBrowser();
    NewsBrowser(const NewsBrowser&) = delete;
    NewsBrowser& operator=(const NewsBrowser&) = delete;

    // area: in the owner's client coordinates. emulation: the current document mode is switched on for this
    // exe first. False, with nothing left behind, when the system's browser cannot be created.
    bool open(HWND owner, const RECT& area, bool popup, const std::wstring& url, bool emulation);
    void close();
    // The owner moved: a popup host follows it.
    void follow();

private:
    struct Host;
    std::unique_ptr<Host> host_;
};

} // namespace nv
