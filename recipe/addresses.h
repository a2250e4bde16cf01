#pragma once
// Whether the addresses of a recipe can be used by the patcher: the server configuration it updates from,
// the news page and the feed, and the buttons' links. The start checks do not stop a build for them (a
// patcher may be built before its server exists), but the operator hears of each one.

#include "recipe/recipe.h"

#include <string>
#include <string_view>
#include <vector>

namespace nv {

// An absolute http or https address with a host: "http://" or "https://" (in any case), then a host of at
// least one character that holds no blank, an optional ":port" of digits, and anything after a "/", "?" or
// "#". Blanks before and after are ignored; one inside is not.
bool isWebAddress(std::wstring_view text);

// One line for each address the patcher cannot use, each beginning "Uyarı: ": an empty or malformed
// configuration address (the patcher will not be able to update), a malformed news, feed or link address (a
// page that cannot open). An empty news or feed address is a choice, and so is an empty link.
std::vector<std::wstring> addressWarnings(const Recipe& recipe);

} // namespace nv
