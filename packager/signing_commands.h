#pragma once
// The command lines that signing runs, decided apart from running them: signtool's for a PFX file, the
// certificate store, its automatic choice or a signing plug-in, one per time-stamp server and one without a
// time stamp; the operator's own command with the file put in; and the checks a build makes before it starts.
// Every value is quoted by the Windows rules, so that a password or path reaches the tool as it was typed.

#include "packager/build_job.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace nv {

// Stands for the file to sign in the operator's own command.
inline constexpr std::wstring_view kFilePlaceholder = L"{file}";

// The time-stamp servers in the order they are tried: timestampUrl, then the further ones; blanks and repeats
// dropped. Empty: sign without a time stamp.
std::vector<std::wstring> timestampServers(const SigningOptions& options);

// A certificate thumbprint as the operator pasted it (the certificate dialog shows it in pairs, and copying
// it from there brings an invisible left-to-right mark along) made into 40 upper-case hexadecimal digits.
// False when it is not a SHA-1 thumbprint.
bool normalizeThumbprint(std::wstring_view text, std::wstring& thumbprint);

// Before a build starts, with signing on: what the chosen certificate source needs is given and there (a PFX
// file, a thumbprint, the plug-in and its metadata file, a command holding the placeholder).
bool checkSigningInputs(const SigningOptions& options, std::wstring& message);

// signtool's command lines for the signtool sources: one time-stamped line per server, in order, and the line
// without a time stamp that is the fallback after them (or the only one when there is no server).
struct SignCommands {
    std::vector<std::wstring> timestamped;
    std::wstring plain;
};
SignCommands signCommands(const std::wstring& tool, const SigningOptions& options, const std::wstring& file,
                          const std::wstring& productName);

// The value of an environment variable; false when it is not set.
using EnvironmentLookup = std::function<bool(const std::wstring& name, std::wstring& value)>;

// The operator's command made runnable. {file} becomes the file's quoted path, whether or not the operator
// put quotes around it. %NAME% becomes the value of that environment variable, so that a PIN or an access
// token lives in the environment and never in the session file; written as "%NAME%" it becomes one quoted
// argument whatever the value holds. A name that is not set refuses the command rather than pass the tool a
// literal %NAME%. The values inserted are the secrets to keep out of the log; values shorter than four
// characters are not counted among them, as masking them would garble the output and hide nothing worth
// hiding.
struct OperatorCommand {
    std::wstring commandLine;
    std::vector<std::wstring> secrets;
};
bool makeOperatorCommand(std::wstring_view pattern, const std::wstring& file, const EnvironmentLookup& lookup,
                         OperatorCommand& command, std::wstring& message);

// A tool's output with every secret replaced by "***", should the tool ever echo its arguments.
std::wstring maskSecrets(std::wstring text, const std::vector<std::wstring>& secrets);

} // namespace nv
