#pragma once
// What the check remembers of each verified file (size, write time, CRC-32), so that an unchanged client is
// checked on the next start without reading it. The file is the patcher's own cache: a line it cannot read is
// dropped and that file is simply read again.

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace nv::update {

struct KnownFile {
    uint64_t size = 0;
    int64_t writeTime = 0;
    uint32_t crc = 0;
};

// Keyed by the path as the list writes it.
using LocalState = std::unordered_map<std::string, KnownFile>;

inline constexpr size_t kMaxStateBytes = 96u << 20;

LocalState parseLocalState(std::string_view text);
std::string writeLocalState(const LocalState& state);

} // namespace nv::update
