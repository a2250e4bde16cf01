#pragma once
// Running another program and collecting what it prints: signing runs signtool.exe or the operator's own tool
// this way, and the patcher's self-update starts its helper with it.

#include <cstdint>
#include <string>

namespace nv {

// Runs a command line (quote its arguments with core/command_line.h) with standard output and error captured
// together, converted from the ANSI code page and trimmed. The child has no console window and no standard
// input. False only when the pipe or the process could not be created. The timeout bounds the wait after the
// child has closed its output; a child still running then reports its still-active exit code, and it is never
// terminated.
bool runCapture(const std::wstring& commandLine, std::wstring& output, uint32_t& exitCode,
                uint32_t timeoutMs);

} // namespace nv
