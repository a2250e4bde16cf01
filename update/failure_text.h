#pragma once
// A failed run in the player's words: the locale text of its kind with the file, address, status or size
// filled in.

#include "skin/locale.h"
#include "update/update_run.h"

#include <initializer_list>
#include <string>

namespace nv::update {

// The locale key of a failure's message ("NV_DISK_FULL").
const char* failureKey(FailureKind kind);

// The text of the failure's key with its placeholders filled in order.
std::wstring failureText(const Failure& failure, const LocaleTable& strings);

// The text with each "%s" or "%d", in order, replaced by the next value (placeholders beyond the values are
// left as they are).
std::wstring fillPlaceholders(std::wstring text, std::initializer_list<std::wstring> values);

} // namespace nv::update
