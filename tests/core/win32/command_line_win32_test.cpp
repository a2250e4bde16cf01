// Windows' own splitter is the referee of the quoting: every value must come back from CommandLineToArgvW as
// it went in.

#include "core/command_line.h"

#include <windows.h>
#include <shellapi.h>

#include <gtest/gtest.h>

#include <vector>

namespace nv {
namespace {

TEST(CommandLineWin32, HostileValuesComeBackFromCommandLineToArgvW) {
    const std::wstring program = L"C:\\Program Files (x86)\\Windows Kits\\10\\bin\\x86\\signtool.exe";
    const std::vector<std::wstring> values = {
        L"sign",
        L"",
        L"pa\"ss word",
        L"\"",
        L"\"\"",
        L"\\",
        L"\\\\",
        L"C:\\Çıktı klasörü\\",
        L"C:\\a\\\\\"b\\\\",
        L"tab\there",
        L" leading and trailing ",
        L"%PATH% & | < > ^ !",
        L"\\\\?\\C:\\uzun\\yol\\Kaldra.exe.building",
        L"ğüşıöç ĞÜŞİÖÇ",
        L"a\\\"b\\\\\"c",
    };
    std::wstring line = quoteProgram(program);
    for (const std::wstring& value : values)
        line += L" " + quoteArgument(value);
    int count = 0;
    LPWSTR* argv = CommandLineToArgvW(line.c_str(), &count);
    ASSERT_NE(argv, nullptr);
    std::vector<std::wstring> split(argv, argv + count);
    LocalFree(argv);
    ASSERT_EQ(split.size(), values.size() + 1) << line;
    EXPECT_EQ(split[0], program);
    for (size_t i = 0; i < values.size(); ++i)
        EXPECT_EQ(split[i + 1], values[i]) << "argument " << i;
}

} // namespace
} // namespace nv
