#include "ui/win32/session_store.h"

#include "recipe/session_file.h"
#include "ui/readiness.h"
#include "ui/win32/app.h"

#include <shlobj.h>

namespace nv::ui::win {
namespace {

// The roaming application-data folder; empty when the system does not say.
std::wstring appDataFolder() {
    wchar_t path[MAX_PATH] = {};
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, path))) return {};
    return path;
}

} // namespace

// A restored session lands in the fields as the file holds their texts, in the window's own decisions by the
// keys' rules, and in the working skin.
class WindowSessionTarget : public SessionTarget {
public:
    explicit WindowSessionTarget(BuilderApp& app) : app_(app) {}

    void restore(const RecipeKey& key, const std::wstring& text) override {
        if (key.field != 0)
            app_.fields().setText(key.field, text);
        else
            readKeyText(key, app_.decisions_, text);
    }
    void setIcon(const std::wstring& path) override { app_.setIcon(path, true); }
    void loadSkin(const std::wstring& path) override { app_.loadSkin(path, true); }
    const std::vector<ButtonLink>& buttons() const override { return app_.workspace_.buttonLinks; }
    void restoreLink(size_t index, const std::wstring& address) override {
        if (const int field = app_.fields().linkField(index)) app_.fields().setText(field, address);
    }

private:
    BuilderApp& app_;
};

std::wstring SessionStore::path() const {
    return pathSet_ ? path_ : sessionFilePath(appDataFolder());
}

void SessionStore::save() {
    // Snapshot runs leave the operator's session alone.
    if (app_.snapshotMode()) return;
    // An edit field that loses the focus while the window is being torn down reports it after some fields are
    // gone; the accepted close has written the session already, and half-empty fields must not replace it.
    if (!app_.fields().allAlive()) return;
    writeSessionFile(path(), app_.recipe()); // silent on failure
}

void SessionStore::restore() {
    SessionMap map;
    if (readSessionFile(path(), map)) {
        WindowSessionTarget target(app_);
        applySession(map, target);
    }
    app_.fields().enable(app_.build().building(), app_.recipe().signing.enabled);
    if (!app_.skinLoaded()) return;
    app_.preview().refresh();
    app_.setStatus(L"Son oturum geri yüklendi — " + sourceName(app_.skinSource()), false);
}

} // namespace nv::ui::win
