#pragma once
// nvbuild: every job of the builder, headless. Exit codes: 0 success, 1 the operation failed (its message
// alone on a line of stderr), 2 usage error.

#include "cli/console.h"

#include <string>
#include <vector>

namespace nv {

constexpr int kExitOk = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

// args: the arguments after the program's name.
int runNvbuild(const std::vector<std::wstring>& args, Console& console);

// The commands, each given its own arguments (after the command's name).
int commandPack(const std::vector<std::wstring>& args, Console& console);
int commandList(const std::vector<std::wstring>& args, Console& console);
int commandUnpack(const std::vector<std::wstring>& args, Console& console);
int commandInspect(const std::vector<std::wstring>& args, Console& console);
int commandCompose(const std::vector<std::wstring>& args, Console& console);

int usage(Console& console);

} // namespace nv
