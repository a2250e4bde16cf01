#pragma once
// The builder's memory of its last session, "olusturucu.ini": the recipe the operator set in the window,
// written as UTF-8 "key=value" lines and restored at the next start. nvbuild reads the same file as a build
// recipe, so the rules for restoring it live here, beside the recipe, and both the window and the console
// tool feed them. The keys, their order and their reading rules are the recipe's table (recipe_keys.h); a key
// that is never saved (the certificate password) has no line.

#include "recipe/recipe.h"
#include "recipe/recipe_keys.h"
#include "skin/workspace.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace nv {

constexpr const wchar_t* kSessionFolderName = L"Norvane";
constexpr const wchar_t* kSessionFileName = L"olusturucu.ini";

// "link." + number + "." + id.
std::string sessionLinkKey(int number, std::string_view id);

// The whole file: the comment line, then every saved key in the table's order, then each link whose address
// is not empty; lines end in CR LF. A value is cut at a line break, so that no value can add lines of its
// own.
std::string sessionText(const Recipe& recipe);

// Key to value as read: lines without "=" are skipped (the comment among them), the key is the text before
// the first "=" with blanks trimmed, the value the rest exactly as written, decoded from UTF-8; a later key
// wins.
using SessionMap = std::map<std::string, std::wstring>;
SessionMap parseSessionText(std::string_view text);

// appData\Norvane\olusturucu.ini, or empty when the application-data folder is unknown.
std::wstring sessionFilePath(const std::wstring& appDataFolder);

// Creates the folder and replaces the file atomically. False on any failure (the builder stays silent).
bool writeSessionFile(const std::wstring& path, const Recipe& recipe);
// False when the file is missing, unreadable or unreasonably large; then nothing is to be restored.
bool readSessionFile(const std::wstring& path, SessionMap& map);

// Where a restored session goes: the builder's window, or nvbuild's recipe. applySession calls these in the
// restore order of the keys' steps and only with what passed the step's rule.
class SessionTarget {
public:
    virtual ~SessionTarget() = default;
    // A key's text as the file holds it (a Text, Count or Flag key; a saved one).
    virtual void restore(const RecipeKey& key, const std::wstring& text) = 0;
    // The icon picture, which exists; taken quietly (a picture that does not convert is simply not used).
    virtual void setIcon(const std::wstring& path) = 0;
    // Loads the skin source, which exists, as a restored session does: the skin's values fill the fields.
    virtual void loadSkin(const std::wstring& path) = 0;
    // The buttons of the skin loaded now (none when no skin is loaded).
    virtual const std::vector<ButtonLink>& buttons() const = 0;
    // The link of buttons()[index].
    virtual void restoreLink(size_t index, const std::wstring& address) = 0;
};

// Restores in the order of the steps: the identity texts and the certificate's texts; the icon when its file
// exists; the skin when its path exists, and only then every value that depends on it (addresses, title,
// connections, segment, the toggles, run arguments, the button links); the output path; signing on for
// exactly "1" (never off). Returns whether the skin's path existed (its values were applied).
bool applySession(const SessionMap& map, SessionTarget& target);

// A restore into a recipe and a working skin: nvbuild's session recipe, and the reference the builder's
// window follows. Each key's text is read by the table's rules (a connection count outside its range is
// refused, a segment size kept to its range, a toggle on for exactly "1"). message holds the skin load's
// failure, if any.
class RecipeSessionTarget : public SessionTarget {
public:
    RecipeSessionTarget(Recipe& recipe, SkinWorkspace& workspace) : recipe_(recipe), workspace_(workspace) {}

    void restore(const RecipeKey& key, const std::wstring& text) override { readKeyText(key, recipe_, text); }
    void setIcon(const std::wstring& path) override { recipe_.icon = path; }
    // A folder or a .zip, as the window loads them.
    void loadSkin(const std::wstring& path) override;
    const std::vector<ButtonLink>& buttons() const override { return workspace_.buttonLinks; }
    void restoreLink(size_t index, const std::wstring& address) override;

    bool skinLoaded() const { return workspace_.loaded; }
    const std::wstring& loadMessage() const { return loadMessage_; }

protected:
    // After a successful load: the skin's own values fill the recipe, as they fill the window's fields.
    void takeSkin(const std::wstring& path);

    Recipe& recipe_;
    SkinWorkspace& workspace_;
    std::wstring loadMessage_;
};

} // namespace nv
