#pragma once
// Windows command lines put together from separate arguments. A child process gets one string and splits it
// again (CommandLineToArgvW and the C runtimes follow the same rules), so every value is quoted in a way that
// splitting gives back exactly: a password with a double quote or a folder path ending in a backslash must
// arrive as it was typed.

#include <string>
#include <string_view>

namespace nv {

// One argument in double quotes. Backslashes are literal except before a double quote, so a run of them that
// precedes a quote in the value, or the closing quote, is doubled, and each quote of the value is escaped
// with a backslash. A value without quotes and without a trailing backslash comes out as "value", nothing
// else.
std::wstring quoteArgument(std::wstring_view value);

// The program's own path, the first word of a command line. Windows reads it up to the next double quote
// without escapes (a file name cannot hold one), so it is quoted plainly.
std::wstring quoteProgram(std::wstring_view path);

// The first word of a command line as Windows reads it: up to the closing quote when it starts with one, else
// up to the first blank or tab.
std::wstring programOf(std::wstring_view commandLine);

} // namespace nv
