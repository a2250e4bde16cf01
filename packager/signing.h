#pragma once
// Code signing with the Windows SDK's signtool.exe: finding the tool, running it with its output captured,
// and signing a file (SHA-256, an optional RFC 3161 time stamp, retried once without one).

#include "packager/build_job.h"

#include <cstdint>
#include <string>

namespace nv {

// A public RFC 3161 time-stamp server, used when none is named.
inline constexpr const wchar_t* kDefaultTimestampServer = L"http://timestamp.digicert.com";

// The newest SDK's signtool.exe under "ProgramFiles(x86)" or "ProgramFiles", else one of the older fixed
// places; empty when there is none.
std::wstring findSigntool();

// Runs a command line with standard output and error captured together (converted from the ANSI code page and
// trimmed). False only when the pipe or the process could not be created. The timeout bounds the wait after
// the child has closed its output; a child still running then reports its still-active exit code.
bool runCapture(const std::wstring& commandLine, std::wstring& output, uint32_t& exitCode,
                uint32_t timeoutMs);

// Signs the file in place. The password reaches only the tool's command line, never the log or a message.
bool signExecutable(const SigningOptions& options, const std::wstring& file, const VersionInfoFields& version,
                    BuildLogFn log, void* context, std::wstring& message);

// The command lines signExecutable runs: the time-stamped one and the plain one.
struct SignCommands {
    std::wstring timestamped, plain;
};
SignCommands signCommands(const std::wstring& tool, const SigningOptions& options, const std::wstring& file,
                          const std::wstring& productName);

} // namespace nv
