// The window's side of the session file: what the fields hold goes out on every close, focus loss and setting
// command, and comes back once while the window is created. The file's format and its restore rules are
// shared with nvbuild (packager/session_file.h); this only feeds them.

#include "ui/win32/app.h"

#include "packager/session_file.h"
#include "core/text.h"
#include "ui/readiness.h"

#include <shlobj.h>

namespace nv::ui::win {
namespace {

// The roaming application-data folder; empty when the system does not say.
std::wstring appDataFolder() {
    wchar_t path[MAX_PATH] = {};
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, path))) return {};
    return path;
}

const FieldSpec* fieldForKey(std::string_view key) {
    for (const FieldSpec& spec : fixedFields())
        if (key == spec.sessionKey) return &spec;
    return nullptr;
}

} // namespace

// The restored session lands in the fields, the toggles and the working skin.
class WindowSessionTarget : public SessionTarget {
public:
    explicit WindowSessionTarget(BuilderApp& app) : app_(app) {}

    void setText(std::string_view key, const std::wstring& text) override {
        if (const FieldSpec* spec = fieldForKey(key)) app_.setFieldText(spec->id, text);
    }
    void setIcon(const std::wstring& path) override { app_.setIcon(path, true); }
    void loadSkin(const std::wstring& path) override { app_.loadSkin(path, true); }
    const std::vector<ButtonLink>& buttons() const override { return app_.workspace_.buttonLinks; }
    void setLink(size_t index, const std::wstring& address) override {
        for (size_t field = 0; field < app_.linkButtons_.size(); ++field) {
            if (app_.linkButtons_[field] == index) {
                app_.setFieldText(kFieldLinkFirst + static_cast<int>(field), address);
                return;
            }
        }
    }
    void setConnections(int count) override { app_.connections_ = count; }
    void setToggle(std::string_view key, bool on) override {
        static const char* const keys[] = {"close_on_start", "auto_start", "allow_error", "browser_emu"};
        for (size_t i = 0; i < 4; ++i)
            if (key == keys[i]) app_.toggles_[i] = on;
    }
    void switchSigningOn() override { app_.signing_ = true; }

private:
    BuilderApp& app_;
};

void BuilderApp::saveSession() {
    // Snapshot runs leave the operator's session alone.
    if (commandLine_.snapshot) return;
    // An edit field that loses the focus while the window is being torn down reports it after some fields are
    // gone; the accepted close has written the session already, and half-empty fields must not replace it.
    for (const FieldRecord& field : fields_)
        if (!IsWindow(field.hwnd)) return;
    // Read straight from the fields: a build may be reading the working skin on its own thread right now.
    SessionValues v;
    if (skinLoaded_ && skinSource_ != kDroppedFilesLabel) v.skin = skinSource_;
    v.configUrl = fieldText(kFieldConfigUrl);
    v.iframeUrl = fieldText(kFieldNewsUrl);
    v.feedUrl = fieldText(kFieldFeedUrl);
    v.title = fieldText(kFieldTitle);
    v.outName = fieldText(kFieldOutName);
    v.outPath = fieldText(kFieldOutPath);
    v.icon = iconPath_;
    v.connections = connections_;
    v.segmentMb = stepSegment(fieldText(kFieldSegment), 0);
    v.closeOnStart = toggles_[0];
    v.autoStart = toggles_[1];
    v.allowError = toggles_[2];
    v.browserEmu = toggles_[3];
    v.runArgs = fieldText(kFieldRunArgs);
    v.product = fieldText(kFieldProduct);
    v.company = fieldText(kFieldCompany);
    v.version = fieldText(kFieldVersion);
    v.copyright = fieldText(kFieldCopyright);
    v.sign = signing_;
    v.signPfx = fieldText(kFieldPfx);
    v.signTs = fieldText(kFieldTimestamp);
    for (size_t field = 0; field < linkButtons_.size(); ++field) {
        const size_t button = linkButtons_[field];
        std::wstring address = fieldText(kFieldLinkFirst + static_cast<int>(field));
        if (!address.empty())
            v.links.push_back(
                {static_cast<int>(button), workspace_.buttonLinks[button].id, std::move(address)});
    }
    writeSessionFile(sessionPathSet_ ? sessionPath_ : sessionFilePath(appDataFolder()),
                     v); // silent on failure
}

void BuilderApp::restoreSession() {
    SessionMap map;
    if (readSessionFile(sessionPathSet_ ? sessionPath_ : sessionFilePath(appDataFolder()), map)) {
        WindowSessionTarget target(*this);
        applySession(map, target);
    }
    enableSigningFields();
    if (!skinLoaded_) return;
    refreshPreview();
    setStatus(L"Son oturum geri yüklendi — " + sourceName(skinSource_), false);
}

} // namespace nv::ui::win
