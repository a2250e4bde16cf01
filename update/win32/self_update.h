#pragma once
// The mechanics of a patcher replacing itself: the running program cannot be overwritten, but it can be
// renamed, so the old file is moved aside (".nvold"), the new one takes its name, and the new one is started
// with the same arguments while the old one exits. The next start deletes the aside copy. And starting the
// patcher again elevated, when the player agrees that the game folder needs it.

#include <windows.h>

#include <string>

namespace nv::update {

std::wstring asideCopyPath(const std::wstring& exe);

// Deletes the copy a self-update moved aside, waiting a moment for the old patcher to end.
void removeAsideCopy(const std::wstring& exe);

// The running exe aside, the verified new file in its place. On failure the old exe is back where it was and
// the new file stays where it lay.
bool swapRunningExe(const std::wstring& exe, const std::wstring& newFile, std::wstring& error);

// This process's arguments as written on its command line (everything after the program's name).
std::wstring ownArguments();

// Starts exe with the arguments in its folder; elevated asks the system for administrator rights (the
// consent prompt). process: receives the process handle when not null (the caller closes it).
bool startProgram(const std::wstring& exe, const std::wstring& arguments, bool elevated, HANDLE* process,
                  std::wstring& error);

} // namespace nv::update
