#pragma once
// The skin's two XML companions of skin.xml: the address file and the locale file, the built-in locale table,
// and the build-time edits that change only the values concerned.

#include "readers/skin_files.h"

#include <map>
#include <string>
#include <string_view>

namespace nv {

// Upper-case ASCII key -> text.
using LocaleTable = std::map<std::string, std::wstring>;

struct LocaleDefault {
    const char* key; // null in the closing row
    const wchar_t* text;
};
constexpr size_t kLocaleDefaultCount = 76;
// 71 rows in their fixed order, then a row with no key.
extern const LocaleDefault kLocaleDefaults[kLocaleDefaultCount + 1];

// Empties the table and fills it with the built-in rows.
void loadLocaleDefaults(LocaleTable& table);

// A locale text with its first "%d" (or "%s") replaced by the value: the patcher's messages carry one each.
std::wstring fillPlaceholder(std::wstring text, const std::wstring& value);

// Adds every <string key="..."> of the file over what the table holds (keys upper-cased). A file that does
// not parse leaves the table as it was and returns the parser's message.
bool parseLocale(std::string_view text, LocaleTable& table, std::wstring* error = nullptr);

// "fernwick.url.xml", else the first name ending in "url.xml", else "".
std::string findAddressFile(const SkinFileSet& files);
// The preferred name (lower-cased) when present, else "fernwick.locale.xml", else the first name ending in
// ".locale.xml", else "".
std::string findLocaleFile(const SkinFileSet& files, std::string_view preferred);

// Sets the root's "remoteConfigPath" to configUrl, changing only that value. The text comes back
// unchanged when the address is empty or equal to importedAddress, when it does not parse, or when the root
// has no such attribute (it is never added).
std::string writeAddressFile(std::string_view text, std::wstring_view configUrl,
                             std::wstring_view importedAddress);

// Writes the overrides (upper-case key -> text) into the locale file: existing <string> elements get their
// content replaced in place; missing keys get one line each, in key order, before the first
// "</torrent_locale>". Every other byte stays.
std::string writeLocaleFile(std::string_view text, const LocaleTable& overrides);

} // namespace nv
