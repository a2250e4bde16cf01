#include "update/bookkeeping.h"

#include "core/text.h"

namespace nv::update {

std::string logFileName(int generation) {
    if (generation <= 0) return std::string(kLogFileName);
    return "norvane." + std::to_string(generation) + ".log";
}

bool isBookkeepingPath(std::string_view path) {
    const std::string lower = asciiLower(path);
    if (lower == kStateFileName || lower == kNoticeFileName || lower == kAcceptedFileName ||
        lower == kIndexFolder || lower.starts_with(std::string(kIndexFolder) + "/"))
        return true;
    for (int generation = 0; generation < kKeptLogs; ++generation)
        if (lower == logFileName(generation)) return true;
    for (std::string_view suffix : {kPartSuffix, kResumeSuffix, kAsideSuffix, std::string_view(".nvtmp")})
        if (lower.ends_with(suffix)) return true;
    return false;
}

} // namespace nv::update
