#pragma once
// The window's side of the session file: the recipe goes out on every accepted close, focus loss and setting
// command, and comes back once while the window is created. The file's format and its restore rules are
// shared with nvbuild (recipe/session_file.h); this only feeds them.

#include <string>

namespace nv::ui::win {

class BuilderApp;

class SessionStore {
public:
    explicit SessionStore(BuilderApp& app) : app_(app) {}
    SessionStore(const SessionStore&) = delete;
    SessionStore& operator=(const SessionStore&) = delete;

    // Where the file is; by default under the roaming application-data folder. Tests that create the window
    // point it at a scratch file, or at nothing (empty: no session is read or written).
    void setPath(std::wstring path) {
        path_ = std::move(path);
        pathSet_ = true;
    }
    // Silent on failure; nothing in snapshot mode.
    void save();
    // Into the fields, the switches and the working skin; then the preview and the status line.
    void restore();

private:
    std::wstring path() const;

    BuilderApp& app_;
    std::wstring path_;
    bool pathSet_ = false;
};

} // namespace nv::ui::win
