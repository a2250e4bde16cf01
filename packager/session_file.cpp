#include "packager/session_file.h"

#include "core/files.h"
#include "core/paths.h"
#include "core/text.h"
#include "core/values.h"

#include <algorithm>

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

void addLine(std::string& out, std::string_view key, std::string_view value) {
    out.append(key);
    out += '=';
    out.append(value);
    out += "\r\n";
}

void addText(std::string& out, std::string_view key, std::wstring_view value) {
    addLine(out, key, oneLine(value));
}

const char* flag(bool on) {
    return on ? "1" : "0";
}

bool pathPresent(const std::wstring& path) {
    return !path.empty() && (folderExists(path) || fileExists(path));
}

const std::wstring* find(const SessionMap& map, std::string_view key) {
    auto it = map.find(std::string(key));
    return it == map.end() ? nullptr : &it->second;
}

} // namespace

std::string sessionLinkKey(int number, std::string_view name) {
    return "link." + std::to_string(number) + "." + std::string(name);
}

std::vector<SessionLink> sessionLinks(const std::vector<ButtonLink>& buttons) {
    std::vector<SessionLink> links;
    for (size_t i = 0; i < buttons.size(); ++i)
        if (!buttons[i].link.empty()) links.push_back({static_cast<int>(i), buttons[i].id, buttons[i].link});
    return links;
}

std::string sessionText(const SessionValues& v) {
    std::string out = kCommentLine;
    out += "\r\n";
    addText(out, "skin", v.skin);
    addText(out, "config_url", v.configUrl);
    addText(out, "iframe_url", v.iframeUrl);
    addText(out, "feed_url", v.feedUrl);
    addText(out, "title", v.title);
    addText(out, "out_name", v.outName);
    addText(out, "out_path", v.outPath);
    addText(out, "icon", v.icon);
    addLine(out, "conn", std::to_string(v.connections));
    addLine(out, "seg", std::to_string(v.segmentMb));
    addLine(out, "close_on_start", flag(v.closeOnStart));
    addLine(out, "auto_start", flag(v.autoStart));
    addLine(out, "allow_error", flag(v.allowError));
    addLine(out, "browser_emu", flag(v.browserEmu));
    addText(out, "run_args", v.runArgs);
    addText(out, "v_product", v.product);
    addText(out, "v_company", v.company);
    addText(out, "v_version", v.version);
    addText(out, "v_copyright", v.copyright);
    addLine(out, "sign", flag(v.sign));
    addText(out, "sign_pfx", v.signPfx);
    addText(out, "sign_ts", v.signTs);
    for (const SessionLink& link : v.links) {
        // A name that would end the key early or break the line cannot be read back; it is left out.
        if (link.name.find_first_of("=\r\n") != std::string::npos) continue;
        addText(out, sessionLinkKey(link.number, link.name), link.address);
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

bool writeSessionFile(const std::wstring& path, const SessionValues& values) {
    if (path.empty() || !createFolders(pathParent(path))) return false;
    const std::string text = sessionText(values);
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
    for (const char* key :
         {"out_name", "v_product", "v_company", "v_version", "v_copyright", "sign_pfx", "sign_ts"})
        if (const std::wstring* value = find(map, key)) target.setText(key, *value);

    if (const std::wstring* icon = find(map, "icon"); icon && !icon->empty() && fileExists(*icon))
        target.setIcon(*icon);

    // What the skin supplied is overridden only when the skin itself is back; a vanished skin takes its
    // addresses, behaviour and links with it.
    const std::wstring* skin = find(map, "skin");
    const bool skinPresent = skin && pathPresent(*skin);
    if (skinPresent) {
        target.loadSkin(*skin);
        for (const char* key : {"config_url", "iframe_url", "feed_url", "title"})
            if (const std::wstring* value = find(map, key)) target.setText(key, *value);
        if (const std::wstring* conn = find(map, "conn")) {
            const int count = parseInt(wideToUtf8(*conn), 0);
            if (count >= 1 && count <= 8) target.setConnections(count);
        }
        if (const std::wstring* seg = find(map, "seg")) target.setText("seg", *seg);
        for (const char* key : {"close_on_start", "auto_start", "allow_error", "browser_emu"})
            if (const std::wstring* value = find(map, key)) target.setToggle(key, *value == L"1");
        if (const std::wstring* args = find(map, "run_args")) target.setText("run_args", *args);
        const std::vector<ButtonLink>& buttons = target.buttons();
        for (size_t i = 0; i < buttons.size(); ++i)
            if (const std::wstring* link = find(map, sessionLinkKey(static_cast<int>(i), buttons[i].id)))
                target.setLink(i, *link);
    }

    if (const std::wstring* out = find(map, "out_path")) target.setText("out_path", *out);
    if (const std::wstring* sign = find(map, "sign"); sign && *sign == L"1") target.switchSigningOn();
    return skinPresent;
}

// --- The restore into field values
// ---------------------------------------------------------------------------

void SessionValuesTarget::setText(std::string_view key, const std::wstring& text) {
    struct Field {
        const char* key;
        std::wstring SessionValues::*member;
    };
    static const Field fields[] = {
        {"config_url", &SessionValues::configUrl},  {"iframe_url", &SessionValues::iframeUrl},
        {"feed_url", &SessionValues::feedUrl},      {"title", &SessionValues::title},
        {"out_name", &SessionValues::outName},      {"out_path", &SessionValues::outPath},
        {"run_args", &SessionValues::runArgs},      {"v_product", &SessionValues::product},
        {"v_company", &SessionValues::company},     {"v_version", &SessionValues::version},
        {"v_copyright", &SessionValues::copyright}, {"sign_pfx", &SessionValues::signPfx},
        {"sign_ts", &SessionValues::signTs},
    };
    if (key == "seg") {
        values_.segmentMb = segmentFromText(text);
        return;
    }
    for (const Field& field : fields)
        if (key == field.key) values_.*field.member = text;
}

void SessionValuesTarget::loadSkin(const std::wstring& path) {
    if (workspace_.loadSkinSource(path, loadMessage_)) takeSkinValues(path);
}

void SessionValuesTarget::takeSkinValues(const std::wstring& path) {
    values_.skin = path;
    values_.configUrl = workspace_.serverAddress;
    values_.iframeUrl = workspace_.newsAddress;
    values_.feedUrl = workspace_.feedUrl;
    const PatcherSettings& s = workspace_.settings;
    values_.title = s.title;
    values_.connections = s.connections;
    values_.segmentMb = s.segmentMb;
    values_.closeOnStart = s.closeOnStart;
    values_.autoStart = s.autoStart;
    values_.allowError = s.allowStartOnError;
    values_.browserEmu = s.browserEmulation;
    values_.runArgs = s.runArgs;
}

void SessionValuesTarget::setLink(size_t index, const std::wstring& address) {
    if (index < workspace_.buttonLinks.size())
        workspace_.setButtonLink(workspace_.buttonLinks[index].id, address);
}

void SessionValuesTarget::setToggle(std::string_view key, bool on) {
    if (key == "close_on_start") values_.closeOnStart = on;
    if (key == "auto_start") values_.autoStart = on;
    if (key == "allow_error") values_.allowError = on;
    if (key == "browser_emu") values_.browserEmu = on;
}

int segmentFromText(std::wstring_view text) {
    return std::clamp(parseInt(wideToUtf8(trim(text)), 4), 1, 64);
}

void copySessionToWorkspace(const SessionValues& values, SkinWorkspace& workspace) {
    workspace.serverAddress = values.configUrl;
    workspace.newsAddress = values.iframeUrl;
    workspace.feedUrl = values.feedUrl;
    PatcherSettings& s = workspace.settings;
    s.title = values.title;
    if (values.connections >= 1 && values.connections <= 8) s.connections = values.connections;
    s.segmentMb = std::clamp(values.segmentMb, 1, 64);
    s.closeOnStart = values.closeOnStart;
    s.autoStart = values.autoStart;
    s.allowStartOnError = values.allowError;
    s.browserEmulation = values.browserEmu;
    s.runArgs = values.runArgs;
}

BuildInputs sessionBuildInputs(const SessionValues& values, const std::wstring& templatePath,
                               Bytes iconBytes) {
    BuildInputs inputs;
    inputs.templatePath = templatePath;
    inputs.outputPath = values.outPath;
    inputs.iconBytes = std::move(iconBytes);
    inputs.version.productName = values.product;
    inputs.version.companyName = values.company;
    inputs.version.versionText = values.version;
    inputs.version.legalCopyright = values.copyright;
    inputs.version.originalFilename = values.outName;
    inputs.signing.enabled = values.sign;
    inputs.signing.pfxPath = values.signPfx;
    inputs.signing.timestampUrl = values.signTs;
    return inputs;
}

} // namespace nv
