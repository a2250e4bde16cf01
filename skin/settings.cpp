#include "skin/settings.h"

#include "core/text.h"
#include "core/values.h"

#include <algorithm>
#include <cstdint>

namespace nv {
namespace {

std::string valueOr(const IniValues& ini, const char* key, const char* defaultText) {
    auto it = ini.find(key);
    return it != ini.end() ? it->second : std::string(defaultText);
}

const char* flag(bool value) {
    return value ? "1" : "0";
}

} // namespace

std::string iniText(const Bytes& bytes) {
    const uint8_t* data = bytes.data();
    const size_t size = bytes.size();
    if (size >= 3 && data[0] == 0xEF && data[1] == 0xBB && data[2] == 0xBF)
        return std::string(reinterpret_cast<const char*>(data) + 3, size - 3);
    if (size >= 2 && data[0] == 0xFF && data[1] == 0xFE) return utf16BytesToUtf8(data + 2, size - 2, false);
    if (size >= 2 && data[0] == 0xFE && data[1] == 0xFF) return utf16BytesToUtf8(data + 2, size - 2, true);
    return std::string(bytes.begin(), bytes.end());
}

void forEachIniEntry(
    std::string_view text,
    const std::function<void(const std::string& key, std::string value, size_t offset)>& entry) {
    std::string section;
    size_t pos = 0;
    while (pos < text.size()) {
        const size_t start = pos;
        size_t end = text.find_first_of("\r\n", pos);
        if (end == std::string_view::npos) end = text.size();
        const std::string line = trim(text.substr(pos, end - pos));
        pos = end + 1;

        if (line.empty() || line[0] == ';' || line[0] == '#') continue;
        if (line[0] == '[') {
            const size_t close = line.find(']');
            if (close != std::string::npos)
                section = asciiLower(trim(std::string_view(line).substr(1, close - 1)));
            continue;
        }
        const size_t equals = line.find('=');
        if (equals == std::string::npos) continue;
        const std::string key = asciiLower(trim(std::string_view(line).substr(0, equals)));
        if (key.empty()) continue;
        entry(section.empty() ? key : section + "." + key, trim(std::string_view(line).substr(equals + 1)),
              start);
    }
}

IniValues parseIni(std::string_view text) {
    IniValues values;
    forEachIniEntry(
        text, [&](const std::string& key, std::string value, size_t) { values[key] = std::move(value); });
    return values;
}

PatcherSettings readPatcherSettings(const IniValues& ini) {
    PatcherSettings s;
    s.title = utf8ToWide(valueOr(ini, "patcher.title", ""));
    s.connections =
        std::clamp(parseInt(valueOr(ini, "patcher.connections", "4"), 4), kMinConnections, kMaxConnections);
    s.segmentMb =
        std::clamp(parseInt(valueOr(ini, "patcher.segment_mb", "4"), 4), kMinSegmentMb, kMaxSegmentMb);
    s.closeOnStart = parseYesNo(valueOr(ini, "patcher.close_on_start", "1"), true);
    s.autoStart = parseYesNo(valueOr(ini, "patcher.auto_start", "0"), false);
    s.allowError = parseYesNo(valueOr(ini, "patcher.allow_start_on_error", "0"), false);
    s.browserEmu = parseYesNo(valueOr(ini, "patcher.browser_emulation", "1"), true);
    s.runArgs = utf8ToWide(valueOr(ini, "patcher.run_args", ""));
    return s;
}

PatcherSettings readPatcherSettingsFile(const Bytes& bytes) {
    return readPatcherSettings(parseIni(iniText(bytes)));
}

std::string writePatcherSettings(const PatcherSettings& settings) {
    std::string out;
    out += "; Norvane ayarlari (yapici tarafindan yazilir)\r\n";
    out += "[patcher]\r\n";
    out += "title=" + wideToUtf8(settings.title) + "\r\n";
    out += "connections=" + std::to_string(settings.connections) + "\r\n";
    out += "segment_mb=" + std::to_string(settings.segmentMb) + "\r\n";
    out += std::string("close_on_start=") + flag(settings.closeOnStart) + "\r\n";
    out += std::string("auto_start=") + flag(settings.autoStart) + "\r\n";
    out += std::string("allow_start_on_error=") + flag(settings.allowError) + "\r\n";
    out += std::string("browser_emulation=") + flag(settings.browserEmu) + "\r\n";
    out += "run_args=" + wideToUtf8(settings.runArgs) + "\r\n";
    return out;
}

} // namespace nv
