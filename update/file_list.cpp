#include "update/file_list.h"

#include "core/paths.h"
#include "core/text.h"
#include "update/bookkeeping.h"
#include "update/remote_config.h"

#include <algorithm>
#include <unordered_set>

namespace nv::update {

namespace {

bool isValidUtf8(std::string_view s) {
    for (size_t i = 0; i < s.size();) {
        const unsigned char lead = static_cast<unsigned char>(s[i]);
        size_t extra;
        uint32_t min;
        uint32_t cp;
        if (lead < 0x80) {
            ++i;
            continue;
        } else if (lead >= 0xC2 && lead <= 0xDF) {
            extra = 1, min = 0x80, cp = lead & 0x1F;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            extra = 2, min = 0x800, cp = lead & 0x0F;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            extra = 3, min = 0x10000, cp = lead & 0x07;
        } else {
            return false;
        }
        for (size_t k = 1; k <= extra; ++k) {
            if (i + k >= s.size()) return false;
            const unsigned char c = static_cast<unsigned char>(s[i + k]);
            if ((c & 0xC0) != 0x80) return false;
            cp = cp << 6 | (c & 0x3F);
        }
        if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return false;
        i += extra + 1;
    }
    return true;
}

bool parseSize(std::string_view text, uint64_t& size) {
    if (text.empty() || text.size() > 15 || (text.size() > 1 && text[0] == '0')) return false;
    size = 0;
    for (char c : text) {
        if (c < '0' || c > '9') return false;
        size = size * 10 + uint64_t(c - '0');
    }
    return size <= kMaxListFileSize;
}

} // namespace

bool isValidListPath(std::string_view path, std::string& why) {
    if (path.empty()) return why = "bos yol", false;
    if (path.size() > kMaxListPath) return why = "yol cok uzun", false;
    if (path[0] == '/') return why = "mutlak yol", false;
    if (path.find('\\') != std::string_view::npos) return why = "'\\' ayirici", false;
    if (!isValidUtf8(path)) return why = "UTF-8 degil", false;
    for (std::string_view rest = path; !rest.empty();) {
        const size_t slash = rest.find('/');
        const std::string_view name = rest.substr(0, slash);
        if (name == "..") return why = "'..' iceriyor", false;
        if (name.size() > 255) return why = "ad cok uzun", false;
        if (!isKeptFileName(name)) {
            why = name.find(':') != std::string_view::npos ? "surucu ya da akis adi"
                  : isWindowsDeviceName(name)              ? "aygit adi"
                                                           : "Windows'un kabul etmedigi ad";
            return false;
        }
        if (slash == std::string_view::npos) break;
        rest = rest.substr(slash + 1);
        if (rest.empty()) return why = "'/' ile bitiyor", false;
    }
    if (isBookkeepingPath(path)) return why = "patcher'in kendi dosyasi", false;
    return true;
}

bool parseFileList(std::string_view bytes, std::string_view listName, FileList& list, std::string& error) {
    list = FileList();
    if (bytes.size() > kMaxListBytes) {
        error = "liste cok buyuk: " + std::to_string(bytes.size()) + " bayt";
        return false;
    }
    if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
    // Counted before anything is built: a list of millions of lines is refused at the cost of one scan.
    size_t dataLines = 0;
    for (size_t at = 0; at < bytes.size();) {
        const size_t end = std::min(bytes.find('\n', at), bytes.size());
        dataLines += end > at && bytes[at] != '#' && bytes[at] != '\r';
        at = end + 1;
    }
    if (dataLines > kMaxListFiles) {
        error = "cok fazla dosya: " + std::to_string(dataLines) + " satir";
        return false;
    }
    const std::string listKey = asciiLower(listName);
    // Windows compares names without case: two spellings of one path, or a file that is also a folder of
    // another, would make two entries write one file.
    std::unordered_set<std::string> files, folders;
    size_t lineNumber = 0;
    auto fail = [&](const std::string& what) {
        error = "satir " + std::to_string(lineNumber) + ": " + what;
        list = FileList();
        return false;
    };
    while (!bytes.empty()) {
        ++lineNumber;
        const size_t end = bytes.find('\n');
        std::string_view line = bytes.substr(0, end);
        bytes = end == std::string_view::npos ? std::string_view() : bytes.substr(end + 1);
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (line.size() > kMaxListLine) return fail("satir cok uzun");
        if (line.empty()) continue;
        if (line[0] == '#') {
            list.comments.emplace_back(line);
            continue;
        }
        if (list.files.size() >= kMaxListFiles) return fail("cok fazla dosya");

        const size_t tab1 = line.find('\t');
        const size_t tab2 = tab1 == std::string_view::npos ? tab1 : line.find('\t', tab1 + 1);
        if (tab2 == std::string_view::npos || line.find('\t', tab2 + 1) != std::string_view::npos)
            return fail("'yol<TAB>boyut<TAB>crc32' biciminde degil");
        ListEntry entry;
        entry.path = std::string(line.substr(0, tab1));
        std::string why;
        if (!isValidListPath(entry.path, why)) return fail(why + ": " + entry.path);
        if (asciiLower(entry.path) == listKey) return fail("listenin kendisi: " + entry.path);
        if (!parseSize(line.substr(tab1 + 1, tab2 - tab1 - 1), entry.size)) return fail("boyut gecersiz");
        const auto crc = parseCrcText(line.substr(tab2 + 1));
        if (!crc) return fail("crc32 8 onaltilik basamak olmali");
        entry.crc = *crc;

        const std::string key = asciiLower(entry.path);
        if (!files.insert(key).second) return fail("iki kez: " + entry.path);
        if (folders.count(key)) return fail("hem klasor hem dosya: " + entry.path);
        for (size_t slash = key.find('/'); slash != std::string::npos; slash = key.find('/', slash + 1)) {
            const std::string folder = key.substr(0, slash);
            if (files.count(folder)) return fail("hem klasor hem dosya: " + folder);
            folders.insert(folder);
        }
        list.files.push_back(std::move(entry));
    }
    return true;
}

std::string writeFileList(const FileList& list) {
    std::string out;
    for (const std::string& comment : list.comments)
        out += comment + "\n";
    for (const ListEntry& entry : list.files)
        out += entry.path + "\t" + std::to_string(entry.size) + "\t" + crcText(entry.crc) + "\n";
    return out;
}

} // namespace nv::update
