#pragma once
// Parsing of the integer and yes/no values found in skin attributes and settings files.

#include <string_view>

namespace nv {

// Trimmed text of an optional sign and decimal digits and nothing else, within -2147483647..2147483647;
// anything else (including -2147483648, empty text and a lone sign) gives the default.
int parseInt(std::string_view text, int defaultValue);

// "1", "true", "yes", "evet", "on" -> true; "0", "false", "no", "hayir", "off" -> false (trimmed, ASCII
// case-insensitive); anything else gives the default.
bool parseYesNo(std::string_view text, bool defaultValue);

} // namespace nv
