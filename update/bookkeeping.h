#pragma once
// The files the patcher keeps in the game folder beside the game's own, and the names that therefore cannot
// be game files: a list that named one would let the server overwrite the patcher's bookkeeping, and
// `nvbuild crclist` must never publish one left in an operator's client folder.

#include <string>
#include <string_view>

namespace nv::update {

// What the check remembers between runs (path, size, write time, CRC of each verified file).
inline constexpr std::string_view kStateFileName = "norvane.state";
// The exact text of the operator's notice the player accepted last: a changed notice is asked again.
inline constexpr std::string_view kNoticeFileName = "norvane.notice";
// The highest signed list version this patcher has accepted, so that an older signed list is refused.
inline constexpr std::string_view kAcceptedFileName = "norvane.accepted";
// The run log and its rotated predecessors ("norvane.1.log" is the run before, "norvane.2.log" the one before
// that).
inline constexpr std::string_view kLogFileName = "norvane.log";
inline constexpr int kKeptLogs = 3;
// A file being downloaded, beside the file it will replace.
inline constexpr std::string_view kPartSuffix = ".nvpart";
// The segments of a large ".nvpart" that are complete, so that the next run resumes after a cut.
inline constexpr std::string_view kResumeSuffix = ".nvpart.seg";
// The running patcher, moved aside by a self-update and deleted on the next start.
inline constexpr std::string_view kAsideSuffix = ".nvold";
// Reserved for the chunk indexes of delta updates.
inline constexpr std::string_view kIndexFolder = ".nvindex";

// "norvane.log", "norvane.1.log", "norvane.2.log" for generation 0, 1, 2.
std::string logFileName(int generation);

// True for a path (relative, "/"-separated, any ASCII case) that the patcher writes itself: the state file,
// the accepted notice and list version, a log, a ".nvpart", its resume record, an aside copy, a temporary
// ".nvtmp", or anything under ".nvindex/".
bool isBookkeepingPath(std::string_view path);

} // namespace nv::update
