#include "core/command_line.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

TEST(CommandLine, QuotingFollowsTheBackslashAndQuoteRules) {
    const std::pair<std::wstring, std::wstring> cases[] = {
        // Nothing to escape: exactly "value", backslashes inside a path untouched.
        {L"C:\\Sertifikalar\\imza dosyası.pfx", L"\"C:\\Sertifikalar\\imza dosyası.pfx\""},
        {L"", L"\"\""},
        // A quote of the value is escaped; backslashes right before it are doubled first.
        {L"pa\"ss", L"\"pa\\\"ss\""},
        {L"a\\\"b", L"\"a\\\\\\\"b\""},
        {L"a\\\\\"b", L"\"a\\\\\\\\\\\"b\""},
        // Backslashes before the closing quote are doubled; one that escapes nothing stays single.
        {L"C:\\Çıktı\\", L"\"C:\\Çıktı\\\\\""},
        {L"a\\b\\", L"\"a\\b\\\\\""},
    };
    for (const auto& [value, quoted] : cases)
        EXPECT_EQ(quoteArgument(value), quoted) << value;
}

} // namespace
} // namespace nv
