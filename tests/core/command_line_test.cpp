#include "core/command_line.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

TEST(CommandLine, QuotingFollowsTheBackslashAndQuoteRules) {
    const std::pair<std::wstring, std::wstring> cases[] = {
        // Nothing to escape: exactly "value", backslashes inside a path untouched.
        {L"C:\\Sertifikalar\\imza dosyası.pfx", L"\"C:\\Sertifikalar\\imza dosyası.pfx\""},
        {L"", L"\"\""},
        {L"\\\\sunucu\\paylaşım\\a b", L"\"\\\\sunucu\\paylaşım\\a b\""},
        // A quote of the value is escaped; backslashes right before it are doubled first.
        {L"pa\"ss", L"\"pa\\\"ss\""},
        {L"\"", L"\"\\\"\""},
        {L"a\\\"b", L"\"a\\\\\\\"b\""},
        {L"a\\\\\"b", L"\"a\\\\\\\\\\\"b\""},
        // Backslashes before the closing quote are doubled; one that escapes nothing stays single.
        {L"C:\\Çıktı\\", L"\"C:\\Çıktı\\\\\""},
        {L"a\\\\", L"\"a\\\\\\\\\""},
        {L"a\\b\\", L"\"a\\b\\\\\""},
        {L"\"\\", L"\"\\\"\\\\\""},
    };
    for (const auto& [value, quoted] : cases)
        EXPECT_EQ(quoteArgument(value), quoted) << value;
}

TEST(CommandLine, TheProgramIsTheFirstWordAsWindowsReadsIt) {
    const std::pair<std::wstring, std::wstring> cases[] = {
        {L"\"C:\\Program Files\\Araç\\sign.exe\" a \"b c\"", L"C:\\Program Files\\Araç\\sign.exe"},
        {L"  jsign.exe --storetype X", L"jsign.exe"},
        {L"\tsigner", L"signer"},
        {L"\"yarım kalmış", L"yarım kalmış"},
        {L"C:\\a\\b\"c d\"", L"C:\\a\\b\"c"},
        {L"   ", L""},
    };
    for (const auto& [line, program] : cases)
        EXPECT_EQ(programOf(line), program) << line;
}

} // namespace
} // namespace nv
