#pragma once
// nvbuild: every job of the builder, headless, for operators and CI.
//
// How nvbuild talks (every command keeps to this, so that scripts can rely on it):
// - Exit codes: 0 success, 1 the operation failed, 2 the command line is wrong, 3 a build stopped by Ctrl-C,
//   Ctrl-Break or a closed console (after cleaning up).
// - What a command produces goes to standard output; every failure reason goes to standard error, always,
//   each message alone on its line (also when the command prints a JSON report on standard output).
// - A wrong command line says first what is wrong, in one of the fixed forms that the parser writes
//   ("Bilinmeyen komut: X", "Eksik argüman: X", "Boş argüman: X", "Fazla argüman: X", "Bilinmeyen seçenek:
//   X", "Değer eksik: X", "Seçenek iki kez verildi: X", "Satır sonu içeren değer: X"), then the short usage
//   of the command. Value checks of a command's own go through Invocation::usageError and follow the same
//   shape.
// - "--help" / "-h" after a command, and "nvbuild help COMMAND", print the command's full help on standard
//   output and exit 0.
// - An input path that does not exist is reported as "Bulunamadı: " + path before any reader runs
//   (requireExisting; loadSkinInput and readPackageFile do it already).
// - Option values never hold a line break (the parser refuses them): they end up in INI and XML files.
// - The tool's own texts are Turkish with Turkish letters. Messages that come from the readers, the package
//   and the skin loader pass through exactly as those layers write them.
//
// Adding a command:
// 1. Write cmd_<name>.cpp with `int command<Name>(const Invocation&, Console&)` and, beside it, its entry
//    `const Command k<Name>Command{...}`: name, one-line summary, short usage (after "nvbuild "), full help
//    (every argument and option: what it is, units, ranges, the form of its value), its positional
//    arguments and its options. Upper-case placeholders in the usage name the arguments ("SOURCE", "OUT").
// 2. Declare the entry below and list it in kCommands (nvbuild.cpp), whose order is that of the help.
// 3. The parser has checked the argument count and the options before the command runs: the command reads
//    invocation.arguments (exactly as many as it declares) and invocation.value/has/values.
// 4. Add the command's usage errors to tests/cli/cli_usage_e2e.sh.

#include "cli/console.h"

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nv {

constexpr int kExitOk = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;
constexpr int kExitCancelled = 3;

struct OptionSpec {
    std::wstring_view name;  // "--json"
    std::wstring_view value; // placeholder of its value ("URL", "0|1"); empty for a switch. An option of two
                             // values names both, apart by a space ("hover|pressed ID").
    bool repeatable = false; // else a second use is a usage error
};

// One option as given: its name, its value and, for an option of two values, the second.
struct GivenOption {
    std::wstring name, value, second;
};

class Invocation;

struct Command {
    std::wstring_view name;
    std::wstring_view summary;                    // one line for the overview
    std::wstring_view usage;                      // "pack SOURCE OUT": shown after "nvbuild "
    std::wstring_view help;                       // the full help, shown under the usage line
    std::span<const std::wstring_view> arguments; // positional placeholders, all required, in order
    std::span<const OptionSpec> options;
    int (*run)(const Invocation& invocation, Console& console);
    // An option that, when given, lets the positional arguments be left out (the command then finds their
    // values elsewhere and says so in its help); empty for none.
    std::wstring_view argumentsOptionalWith = {};
};

// One parsed command line of a command.
class Invocation {
public:
    explicit Invocation(const Command& command) : command_(command) {}

    const Command& command() const { return command_; }

    std::vector<std::wstring> arguments; // exactly as many as the command declares
    // Options in the order given (values empty for a switch).
    std::vector<GivenOption> options;

    bool has(std::wstring_view option) const;
    // The value of a non-repeatable option, or null when it was not given.
    const std::wstring* value(std::wstring_view option) const;
    // Every value of a repeatable option, in order.
    std::vector<std::wstring> values(std::wstring_view option) const;
    // Every use of a repeatable option of two values, in order.
    std::vector<GivenOption> uses(std::wstring_view option) const;

    // The message, then the command's short usage, on standard error; returns kExitUsage.
    int usageError(Console& console, std::wstring_view message) const;

private:
    const Command& command_;
};

// args: the arguments after the program's name.
int runNvbuild(const std::vector<std::wstring>& args, Console& console);

// Every command, in the order of the help.
std::span<const Command* const> nvbuildCommands();

// The message, alone on its line on standard error; returns kExitFailed.
int failed(Console& console, std::wstring_view message);

// False with "Bulunamadı: " + path when nothing (no file, no folder) is at path.
bool requireExisting(const std::wstring& path, std::wstring& message);

extern const Command kPackCommand;
extern const Command kListCommand;
extern const Command kUnpackCommand;
extern const Command kInspectCommand;
extern const Command kLintCommand;
extern const Command kComposeCommand;
extern const Command kRenderCommand;
extern const Command kBuildCommand;
extern const Command kCrclistCommand;
extern const Command kFeedCommand;
extern const Command kKeygenCommand;

} // namespace nv
