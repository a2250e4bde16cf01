#pragma once
// Text helpers shared by every layer. Inside the program text is wide (UTF-16 on Windows); file contents and
// skin file names are UTF-8. Case folding is ASCII-only unless a function says otherwise.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace nv {

// Whole-string conversions between UTF-8 and wide text (platform layer). An empty input gives an empty
// output; a conversion the platform rejects gives an empty string. Invalid UTF-8 becomes U+FFFD.
std::wstring utf8ToWide(std::string_view utf8);
std::string wideToUtf8(std::wstring_view wide);

// Zip names stored without the UTF-8 flag are in code page 437 (platform layer).
std::wstring cp437ToWide(std::string_view bytes);

// Lower-cases a wide string with the platform's case rules (not only ASCII).
std::wstring lowerWide(std::wstring_view s);

// 'A'-'Z' gain 32 (resp. 'a'-'z' lose 32); every other byte, UTF-8 sequences included, stays.
std::string asciiLower(std::string_view s);
std::string asciiUpper(std::string_view s);

// Both sides ASCII-lower-cased, then compared byte for byte.
bool equalsIgnoreCase(std::string_view a, std::string_view b);
bool endsWithIgnoreCase(std::string_view s, std::string_view suffix);
bool endsWithIgnoreCase(std::wstring_view s, std::wstring_view suffix);

// Removes space, tab, carriage return and line feed from both ends.
std::string trim(std::string_view s);
std::wstring trim(std::wstring_view s);

// Appends the UTF-8 form of one code point (at most 0x10FFFF; callers decide what to do with surrogates).
void appendUtf8(std::string& out, char32_t codePoint);

// UTF-16 code units (little- or big-endian bytes, no byte-order mark) straight to UTF-8, without going
// through wchar_t, whose size differs between builds. An unpaired surrogate becomes U+FFFD; an odd last byte
// is dropped.
std::string utf16BytesToUtf8(const uint8_t* data, size_t size, bool bigEndian);

// The value of a hexadecimal digit of either case, or -1 for any other character.
int hexDigitValue(char c);

// Narrow ASCII text widened byte by byte (for fixed ASCII keys and names).
std::wstring widenAscii(std::string_view ascii);

} // namespace nv
