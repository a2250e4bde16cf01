#pragma once
// The patcher's behaviour settings, carried inside the skin as "norvane.ini".

#include "core/files.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace nv {

// The ranges of the two counts; a value outside them is kept to them when read from a file.
inline constexpr int kMinConnections = 1, kMaxConnections = 8;
inline constexpr int kMinSegmentMb = 1, kMaxSegmentMb = 64;

struct PatcherSettings {
    std::wstring title;
    int connections = 4;      // parallel download connections
    int segmentMb = 4;        // download segment size in MiB
    bool closeOnStart = true; // close the patcher when the game starts
    bool autoStart = false;   // start the game when the update completes
    bool allowError = false;  // the start button stays usable when the update failed
    bool browserEmu = true;   // run the news browser in IE11 emulation
    std::wstring runArgs;     // arguments for the game executable

    bool operator==(const PatcherSettings&) const = default;
};

// INI values addressed as "section.key" (both lower-cased), values trimmed, UTF-8.
using IniValues = std::map<std::string, std::string>;

// The file's bytes as UTF-8 text: a UTF-8 byte-order mark is dropped, UTF-16 with a byte-order mark
// converted.
std::string iniText(const Bytes& bytes);
// Reading rules: lines end at CR, LF or CR LF and are trimmed; blank lines and lines starting with ';' or '#'
// are skipped. "[name]" opens a section (text after the ']' is ignored; a '[' line without ']' is skipped).
// "key = value" splits at the first '='; key and value are trimmed and the key must not be empty. The value
// keeps everything else, ';' and '#' included, so addresses and game arguments survive. Section and key names
// are lower-cased (ASCII); a key outside any section is stored under its bare name; a repeated key keeps the
// last value; any other line is skipped.
IniValues parseIni(std::string_view text);
// The same reading, entry by entry in file order: entry(key, value, offset) with the key as parseIni files it
// ("section.key") and offset the first byte of the entry's line in text.
void forEachIniEntry(
    std::string_view text,
    const std::function<void(const std::string& key, std::string value, size_t offset)>& entry);

// Reads with the defaults and clamps of each field; never fails.
PatcherSettings readPatcherSettings(const IniValues& ini);
PatcherSettings readPatcherSettingsFile(const Bytes& bytes);

// The whole "norvane.ini": fixed lines ending in CR LF, free texts as UTF-8, nothing clamped or escaped.
std::string writePatcherSettings(const PatcherSettings& settings);

} // namespace nv
