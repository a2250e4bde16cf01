#include "update/remote_config.h"

#include "core/text.h"
#include "readers/xml.h"
#include "update/file_list.h"
#include "update/url.h"

#include <cstdio>

namespace nv::update {

std::optional<uint32_t> parseCrcText(std::string_view text) {
    if (text.size() != 8) return std::nullopt;
    uint32_t value = 0;
    for (char c : text) {
        const int digit = hexDigitValue(c);
        if (digit < 0) return std::nullopt;
        value = value << 4 | uint32_t(digit);
    }
    return value;
}

std::string crcText(uint32_t crc) {
    char text[9];
    std::snprintf(text, sizeof text, "%08X", crc);
    return text;
}

namespace {

bool setCrc(std::string_view key, std::string_view value, std::optional<uint32_t>& out, std::string& detail) {
    if (value.empty()) {
        out.reset();
        return true;
    }
    out = parseCrcText(value);
    if (!out) detail = std::string(key) + ": 8 onaltilik basamak olmali: " + std::string(value);
    return out.has_value();
}

// A configuration line holds no line break, so the operator writes "\n" for one.
std::string noticeText(std::string_view value) {
    std::string out;
    for (size_t i = 0; i < value.size(); ++i) {
        if (value[i] == '\\' && i + 1 < value.size() && value[i + 1] == 'n') {
            out += '\n';
            ++i;
        } else {
            out += value[i];
        }
    }
    return out;
}

} // namespace

ConfigError parseRemoteConfig(std::string_view bytes, RemoteConfig& config, std::string& detail) {
    config = RemoteConfig();
    if (bytes.size() > kMaxConfigBytes) {
        detail = "yapilandirma cok buyuk: " + std::to_string(bytes.size()) + " bayt";
        return ConfigError::Invalid;
    }
    XmlDocument document;
    std::wstring xmlError;
    if (!parseXml(bytes, document, &xmlError) || !document.hasRoot) {
        detail = "XML degil: " + wideToUtf8(xmlError);
        return ConfigError::Invalid;
    }

    std::string_view text = document.root.text;
    while (!text.empty()) {
        const size_t end = text.find('\n');
        const std::string line = trim(text.substr(0, end));
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        if (line.empty() || line[0] == '#' || line[0] == ';') continue;
        const size_t equals = line.find('=');
        if (equals == std::string::npos) continue; // not a setting: tolerated like an unknown key
        const std::string key = asciiLower(trim(std::string_view(line).substr(0, equals)));
        const std::string value = trim(std::string_view(line).substr(equals + 1));
        if (key == "crcpatch_url") {
            config.crcpatchUrl = value;
        } else if (key == "crclist") {
            config.crclist = value;
        } else if (key == "crclist_crc32") {
            if (!setCrc(key, value, config.crclistCrc32, detail)) return ConfigError::Invalid;
        } else if (key == "nv_patcher_url") {
            config.patcherUrl = value;
        } else if (key == "nv_patcher_crc32") {
            if (!setCrc(key, value, config.patcherCrc32, detail)) return ConfigError::Invalid;
        } else if (key == "notice") {
            config.notice = noticeText(value);
        }
    }

    if (config.crcpatchUrl.empty()) {
        detail = "crcpatch_url yok";
        return ConfigError::NoDownloadUrl;
    }
    if (!isHttpUrl(config.crcpatchUrl) || config.crcpatchUrl.find_first_of("?#") != std::string::npos) {
        detail = "crcpatch_url http(s) adresi degil: " + config.crcpatchUrl;
        return ConfigError::Invalid;
    }
    if (config.crcpatchUrl.back() != '/') config.crcpatchUrl += '/';
    if (config.crclist.empty()) config.crclist = "crclist.txt";
    std::string why;
    if (!isValidListPath(config.crclist, why)) {
        detail = "crclist gecersiz: " + config.crclist + " (" + why + ")";
        return ConfigError::Invalid;
    }
    if (!config.patcherUrl.empty()) {
        config.patcherUrl = resolveUrl(config.crcpatchUrl, config.patcherUrl);
        if (!isHttpUrl(config.patcherUrl)) {
            detail = "nv_patcher_url gecersiz: " + config.patcherUrl;
            return ConfigError::Invalid;
        }
    }
    return ConfigError::None;
}

} // namespace nv::update
