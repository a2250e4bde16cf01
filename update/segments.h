#pragma once
// How one file is fetched: whole when it is small, else in ranges of the segment size that several
// connections fetch at once; and the record of a large file's finished ranges that lets the next run resume
// after a cut instead of starting over.

#include "update/http.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace nv::update {

// Files larger than two segments are split; smaller ones come whole (several files at once).
inline bool isSegmented(uint64_t size, uint64_t segmentBytes) {
    return segmentBytes > 0 && size > 2 * segmentBytes;
}

inline size_t segmentCount(uint64_t size, uint64_t segmentBytes) {
    return size_t((size + segmentBytes - 1) / segmentBytes);
}

// Segment index of a file of that size: the last one may be shorter.
inline ByteRange segmentRange(uint64_t size, uint64_t segmentBytes, size_t index) {
    const uint64_t first = uint64_t(index) * segmentBytes;
    const uint64_t last = first + segmentBytes < size ? first + segmentBytes - 1 : size - 1;
    return {first, last};
}

// "<file>.nvpart.seg": a header naming the file's expected size, CRC and segment size, then one line per
// finished segment with that segment's CRC. A line cut short by a crash is ignored; a header that no longer
// matches the list (the file changed on the server, the operator changed the segment size) voids the record.
struct ResumeRecord {
    uint64_t size = 0;
    uint32_t crc = 0;
    uint64_t segmentBytes = 0;
    std::map<size_t, uint32_t> done; // segment index -> its CRC-32
};

std::string resumeHeader(uint64_t size, uint32_t crc, uint64_t segmentBytes);
std::string resumeLine(size_t index, uint32_t crc);
// False when the text is not a record; segments beyond the file's count are left out.
bool parseResumeRecord(std::string_view text, ResumeRecord& record);

} // namespace nv::update
