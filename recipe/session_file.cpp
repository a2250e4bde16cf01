#include "recipe/session_file.h"

#include "core/files.h"
#include "core/paths.h"
#include "core/text.h"

namespace nv {
namespace {

constexpr const char* kCommentLine = "; Norvane Olusturucu - son oturum (parola kaydedilmez)";
// A session file is a few hundred bytes; anything far larger is not ours.
constexpr uint64_t kMaxSessionFile = 1 << 20;

// A value ends at its first line break: a pasted address must not smuggle keys of its own into the file.
std::string oneLine(std::wstring_view text) {
    const size_t end = text.find_first_of(L"\r\n");
    return wideToUtf8(text.substr(0, end));
}

void addLine(std::string& out, std::string_view key, std::wstring_view value) {
    out.append(key);
    out += '=';
    out.append(oneLine(value));
    out += "\r\n";
}

bool pathPresent(const std::wstring& path) {
    return !path.empty() && (folderExists(path) || fileExists(path));
}

const std::wstring* find(const SessionMap& map, std::string_view key) {
    auto it = map.find(std::string(key));
    return it == map.end() ? nullptr : &it->second;
}

// Every saved key of one step that the file holds, in the table's order.
void restoreStep(const SessionMap& map, RestoreStep step, SessionTarget& target) {
    for (const RecipeKey& key : kRecipeKeys) {
        if (key.step != step) continue;
        if (key.type == KeyType::Links) {
            const std::vector<ButtonLink>& buttons = target.buttons();
            for (size_t i = 0; i < buttons.size(); ++i)
                if (const std::wstring* link = find(map, sessionLinkKey(static_cast<int>(i), buttons[i].id)))
                    target.restoreLink(i, *link);
            continue;
        }
        const std::wstring* text = find(map, key.name);
        // Signing is only ever switched on by a session: any other text leaves it as it is.
        if (text && (step != RestoreStep::Signing || *text == L"1")) target.restore(key, *text);
    }
}

} // namespace

std::string sessionLinkKey(int number, std::string_view id) {
    return std::string(kLinkKeyPrefix) + std::to_string(number) + "." + std::string(id);
}

std::string sessionText(const Recipe& recipe) {
    std::string out = kCommentLine;
    out += "\r\n";
    for (const RecipeKey& key : kRecipeKeys)
        if (key.saved() && key.type != KeyType::Links) addLine(out, key.name, keyText(key, recipe));
    for (const RecipeLink& link : recipe.links) {
        // A name that would end the key early or break the line cannot be read back; it is left out.
        if (link.address.empty() || link.id.find_first_of("=\r\n") != std::string::npos) continue;
        addLine(out, sessionLinkKey(link.number, link.id), link.address);
    }
    return out;
}

SessionMap parseSessionText(std::string_view text) {
    if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3); // saved by a text editor
    SessionMap map;
    size_t pos = 0;
    while (pos < text.size()) {
        size_t end = text.find_first_of("\r\n", pos);
        if (end == std::string_view::npos) end = text.size();
        const std::string_view line = text.substr(pos, end - pos);
        pos = end + 1;
        const size_t eq = line.find('=');
        if (eq == std::string_view::npos) continue;
        const std::string key = trim(line.substr(0, eq));
        if (key.empty()) continue;
        map[key] = utf8ToWide(line.substr(eq + 1));
    }
    return map;
}

std::wstring sessionFilePath(const std::wstring& appDataFolder) {
    if (appDataFolder.empty()) return {};
    return pathJoin(pathJoin(appDataFolder, kSessionFolderName), kSessionFileName);
}

bool writeSessionFile(const std::wstring& path, const Recipe& recipe) {
    if (path.empty() || !createFolders(pathParent(path))) return false;
    const std::string text = sessionText(recipe);
    return writeFileAtomic(path, text.data(), text.size());
}

bool readSessionFile(const std::wstring& path, SessionMap& map) {
    map.clear();
    Bytes bytes;
    if (path.empty() || !readFileBytes(path, bytes, kMaxSessionFile)) return false;
    map = parseSessionText(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    return true;
}

bool applySession(const SessionMap& map, SessionTarget& target) {
    restoreStep(map, RestoreStep::Identity, target);

    if (const std::wstring* icon = find(map, "icon"); icon && !icon->empty() && fileExists(*icon))
        target.setIcon(*icon);

    // What the skin supplied is overridden only when the skin itself is back; a vanished skin takes its
    // addresses, behaviour and links with it.
    const std::wstring* skin = find(map, "skin");
    const bool skinPresent = skin && pathPresent(*skin);
    if (skinPresent) {
        target.loadSkin(*skin);
        restoreStep(map, RestoreStep::SkinValues, target);
    }

    restoreStep(map, RestoreStep::Output, target);
    restoreStep(map, RestoreStep::Signing, target);
    return skinPresent;
}

// --- The restore into a recipe
// -------------------------------------------------------------------------------

void RecipeSessionTarget::loadSkin(const std::wstring& path) {
    if (workspace_.loadSkinSource(path, loadMessage_)) takeSkin(path);
}

void RecipeSessionTarget::takeSkin(const std::wstring& path) {
    recipe_.skin = path;
    takeSkinValues(workspace_, recipe_);
}

void RecipeSessionTarget::restoreLink(size_t index, const std::wstring& address) {
    if (index < recipe_.links.size()) recipe_.links[index].address = address;
}

} // namespace nv
