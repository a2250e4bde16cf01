#pragma once
// The server's configuration, fetched from the address file's "remoteConfigPath": an XML file whose root
// element's text holds key=value lines, so that the line the builder copies ("nv_patcher_crc32=...") pastes
// in as it is.
//
//   <config>
//   crcpatch_url=https://cdn.example.com/client/
//   crclist=crclist.txt
//   crclist_crc32=1A2B3C4D
//   nv_patcher_url=https://cdn.example.com/Kaldra.exe
//   nv_patcher_crc32=5E6F7A8B
//   notice=Bu hafta sonu bakım var.\nOyuna giriş 03:00-05:00 arası kapalı.
//   </config>
//
// Unknown keys are ignored (later versions add their own); blank lines and lines starting with "#" or ";"
// are skipped; a later line of a known key wins.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nv::update {

// A configuration larger than this is not one (a server answering with a web page or a file).
inline constexpr size_t kMaxConfigBytes = 64 * 1024;

struct RemoteConfig {
    std::string crcpatchUrl; // base address of the client's files, ending in "/"
    std::string crclist = "crclist.txt";
    std::optional<uint32_t> crclistCrc32;
    std::string patcherUrl; // absolute, or relative to crcpatchUrl
    std::optional<uint32_t> patcherCrc32;
    // The operator's notice, UTF-8, shown to the player before the update and remembered once accepted;
    // empty for none. The value is one line in the file: "\n" in it stands for a line break.
    std::string notice;
};

enum class ConfigError {
    None,
    Invalid,       // not XML, too large, a known key with a value that cannot be used
    NoDownloadUrl, // no (or an empty) crcpatch_url
};

// detail: what is wrong, in a line for the log (the player sees the locale's message).
ConfigError parseRemoteConfig(std::string_view bytes, RemoteConfig& config, std::string& detail);

// Exactly eight hexadecimal digits, either case (the form "%08X" writes).
std::optional<uint32_t> parseCrcText(std::string_view text);
std::string crcText(uint32_t crc); // "%08X"

} // namespace nv::update
