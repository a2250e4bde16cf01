#pragma once
// The builder's memory of its last session, "olusturucu.ini": what the operator set in the window (skin
// source, addresses, behaviour, identity, output, signing), written as UTF-8 "key=value" lines and restored
// at the next start. nvbuild reads the same file as a build recipe, so the rules for restoring it live here,
// beside the build, and both the window and the console tool feed them. The certificate password never has a
// key.

#include "packager/build_job.h"
#include "packager/signing.h"
#include "skin/workspace.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace nv {

constexpr const wchar_t* kSessionFolderName = L"Norvane";
constexpr const wchar_t* kSessionFileName = L"olusturucu.ini";
constexpr const wchar_t* kDefaultOutputName = L"Kaldra.exe";
constexpr const wchar_t* kDefaultVersionText = L"1.0.0.0";

// One remembered button link: the button's place among the skin's buttons, its id as written in skin.xml and
// the address.
struct SessionLink {
    int number = 0;
    std::string name;
    std::wstring address;
};

// Everything the file holds, as the builder's fields hold it (texts exactly as typed). The defaults are those
// of a fresh builder window.
struct SessionValues {
    std::wstring skin; // the loaded source: a .zip file or a folder
    std::wstring configUrl, iframeUrl, feedUrl, title;
    std::wstring outName = kDefaultOutputName;
    std::wstring outPath;
    std::wstring icon; // the chosen picture; empty: the template's icon
    int connections = 4;
    int segmentMb = 4;
    bool closeOnStart = true, autoStart = false, allowError = false, browserEmu = true;
    std::wstring runArgs;
    std::wstring product, company;
    std::wstring version = kDefaultVersionText;
    std::wstring copyright;
    bool sign = false;
    std::wstring signPfx;
    std::wstring signTs = kDefaultTimestampServer;
    std::vector<SessionLink> links;
};

// "link." + number + "." + name.
std::string sessionLinkKey(int number, std::string_view name);

// The links worth remembering: every button of the working skin whose address is not empty, numbered by its
// place among the skin's buttons.
std::vector<SessionLink> sessionLinks(const std::vector<ButtonLink>& buttons);

// The whole file: the comment line, then every key in its fixed order, then the links; lines end in CR LF. A
// value is cut at a line break, so that no value can add lines of its own.
std::string sessionText(const SessionValues& values);

// Key to value as read: lines without "=" are skipped (the comment among them), the key is the text before
// the first "=" with blanks trimmed, the value the rest exactly as written, decoded from UTF-8; a later key
// wins.
using SessionMap = std::map<std::string, std::wstring>;
SessionMap parseSessionText(std::string_view text);

// appData\Norvane\olusturucu.ini, or empty when the application-data folder is unknown.
std::wstring sessionFilePath(const std::wstring& appDataFolder);

// Creates the folder and replaces the file atomically. False on any failure (the builder stays silent).
bool writeSessionFile(const std::wstring& path, const SessionValues& values);
// False when the file is missing, unreadable or unreasonably large; then nothing is to be restored.
bool readSessionFile(const std::wstring& path, SessionMap& map);

// Where a restored session goes: the builder's window, or nvbuild's recipe. applySession calls these in the
// file's restore order and only with values that passed its rules.
class SessionTarget {
public:
    virtual ~SessionTarget() = default;
    // A text field, named by its key: "out_name", "v_product", "v_company", "v_version", "v_copyright",
    // "sign_pfx", "sign_ts", "config_url", "iframe_url", "feed_url", "title", "seg", "run_args", "out_path".
    virtual void setText(std::string_view key, const std::wstring& text) = 0;
    // The icon picture, which exists; taken quietly (a picture that does not convert is simply not used).
    virtual void setIcon(const std::wstring& path) = 0;
    // Loads the skin source, which exists, as a restored session does: the skin's values fill the fields.
    virtual void loadSkin(const std::wstring& path) = 0;
    // The buttons of the skin loaded now (none when no skin is loaded).
    virtual const std::vector<ButtonLink>& buttons() const = 0;
    // The link field of buttons()[index].
    virtual void setLink(size_t index, const std::wstring& address) = 0;
    virtual void setConnections(int count) = 0;
    // "close_on_start", "auto_start", "allow_error", "browser_emu".
    virtual void setToggle(std::string_view key, bool on) = 0;
    // Signing is only ever switched on by a session, never off.
    virtual void switchSigningOn() = 0;
};

// Restores in this order: the identity texts and the certificate's texts; the icon when its file exists; the
// skin when its path exists, and only then every value that depends on it (addresses, title, connections
// 1..8, segment text, the toggles, which are on exactly for "1", run arguments, the button links); the output
// path; signing on for exactly "1". Returns whether the skin's path existed (its values were applied).
bool applySession(const SessionMap& map, SessionTarget& target);

// A restore into SessionValues and a working skin: nvbuild's session recipe, and the reference the builder's
// window follows. message holds the skin load's failure, if any.
class SessionValuesTarget : public SessionTarget {
public:
    SessionValuesTarget(SessionValues& values, SkinWorkspace& workspace)
        : values_(values), workspace_(workspace) {}

    void setText(std::string_view key, const std::wstring& text) override;
    void setIcon(const std::wstring& path) override { values_.icon = path; }
    // A folder or a .zip, as the window loads them.
    void loadSkin(const std::wstring& path) override;
    const std::vector<ButtonLink>& buttons() const override { return workspace_.buttonLinks; }
    void setLink(size_t index, const std::wstring& address) override;
    void setConnections(int count) override { values_.connections = count; }
    void setToggle(std::string_view key, bool on) override;
    void switchSigningOn() override { values_.sign = true; }

    bool skinLoaded() const { return workspace_.loaded; }
    const std::wstring& loadMessage() const { return loadMessage_; }

protected:
    // After a successful load: the skin's own values fill the fields, as they do in the window.
    void takeSkinValues(const std::wstring& path);

    SessionValues& values_;
    SkinWorkspace& workspace_;
    std::wstring loadMessage_;
};

// The segment field's text as the builder reads it: a trimmed decimal integer, 4 when it is none, kept to
// 1..64.
int segmentFromText(std::wstring_view text);

// The field values into the working skin, as the window does before a build: addresses, settings, links.
void copySessionToWorkspace(const SessionValues& values, SkinWorkspace& workspace);
// The build's inputs from the field values (the icon's bytes and the template are the caller's).
BuildInputs sessionBuildInputs(const SessionValues& values, const std::wstring& templatePath,
                               Bytes iconBytes);

} // namespace nv
