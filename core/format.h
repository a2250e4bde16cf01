#pragma once
// The short size and number texts shown to the operator.

#include <cstdint>
#include <string>

namespace nv {

// "1023 B", "1,5 KB", "1024,0 KB", "1,0 MB", "2,0 GB": thresholds on the byte count itself.
std::wstring sizeText(uint64_t bytes);

// "%.1f" with every '.' replaced by a comma.
std::wstring decimalText(double value);

// "%lld".
std::wstring integerText(int64_t value);

// Thousands grouped with dots, the Turkish way: "7", "12.345", "1.000.000".
std::wstring groupedIntegerText(uint64_t value);

} // namespace nv
