#include "update/segments.h"

#include "update/remote_config.h"

#include <charconv>

namespace nv::update {

namespace {

constexpr std::string_view kMagic = "nvresume 1 ";

template <class T> bool number(std::string_view text, T& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() && !text.empty();
}

// The line's fields, apart by single spaces.
size_t split(std::string_view line, std::string_view* fields, size_t most) {
    size_t count = 0;
    while (count < most) {
        const size_t space = line.find(' ');
        fields[count++] = line.substr(0, space);
        if (space == std::string_view::npos) return count;
        line = line.substr(space + 1);
    }
    return most + 1;
}

} // namespace

std::string resumeHeader(uint64_t size, uint32_t crc, uint64_t segmentBytes) {
    return std::string(kMagic) + std::to_string(size) + " " + crcText(crc) + " " +
           std::to_string(segmentBytes) + "\n";
}

std::string resumeLine(size_t index, uint32_t crc) {
    return std::to_string(index) + " " + crcText(crc) + "\n";
}

bool parseResumeRecord(std::string_view text, ResumeRecord& record) {
    record = ResumeRecord();
    if (!text.starts_with(kMagic)) return false;
    const size_t headerEnd = text.find('\n');
    if (headerEnd == std::string_view::npos) return false;
    std::string_view fields[3];
    if (split(text.substr(kMagic.size(), headerEnd - kMagic.size()), fields, 3) != 3) return false;
    const auto crc = parseCrcText(fields[1]);
    if (!crc || !number(fields[0], record.size) || !number(fields[2], record.segmentBytes) ||
        record.segmentBytes == 0)
        return false;
    record.crc = *crc;
    const size_t count = segmentCount(record.size, record.segmentBytes);
    text = text.substr(headerEnd + 1);
    // Only whole lines: the last one may have been cut by a crash.
    for (size_t end; (end = text.find('\n')) != std::string_view::npos; text = text.substr(end + 1)) {
        std::string_view parts[2];
        size_t index = 0;
        if (split(text.substr(0, end), parts, 2) != 2 || !number(parts[0], index) || index >= count) continue;
        if (const auto segmentCrc = parseCrcText(parts[1])) record.done[index] = *segmentCrc;
    }
    return true;
}

} // namespace nv::update
