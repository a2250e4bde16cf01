#include "cli/nvbuild.h"

#include <gtest/gtest.h>

#include <set>

namespace nv {
namespace {

// Every command documents what it accepts: a new option or argument that the help leaves out fails here.
TEST(NvbuildCommands, UsageAndHelpNameEveryArgumentAndOption) {
    std::set<std::wstring_view> names;
    for (const Command* command : nvbuildCommands()) {
        const std::string name(command->name.begin(), command->name.end());
        EXPECT_TRUE(names.insert(command->name).second) << name << " is listed twice";
        EXPECT_TRUE(command->usage.starts_with(std::wstring(command->name) + L" ")) << name;
        EXPECT_EQ(command->summary.find(L'\n'), std::wstring_view::npos)
            << name << ": the summary is one line";
        EXPECT_TRUE(command->help.ends_with(L"\n")) << name;
        for (std::wstring_view argument : command->arguments) {
            EXPECT_NE(command->usage.find(argument), std::wstring_view::npos) << name;
            EXPECT_NE(command->help.find(L"  " + std::wstring(argument) + L" "), std::wstring_view::npos)
                << name;
        }
        for (const OptionSpec& option : command->options) {
            std::wstring shown =
                std::wstring(option.name) + (option.value.empty() ? L"" : L" " + std::wstring(option.value));
            EXPECT_NE(command->help.find(L"  " + shown + L" "), std::wstring_view::npos) << name;
        }
    }
    EXPECT_FALSE(names.count(L"help")) << "help is the dispatcher's own";
}

} // namespace
} // namespace nv
