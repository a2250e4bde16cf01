#include "core/values.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

TEST(ParseInt, AcceptsOnlySignAndDigitsWithinTheSymmetricRange) {
    const std::pair<const char*, int> accepted[] = {
        {"42", 42}, {"  -17\r\n", -17},         {"+8", 8},
        {"007", 7}, {"2147483647", 2147483647}, {"-2147483647", -2147483647}};
    for (const auto& [text, value] : accepted)
        EXPECT_EQ(parseInt(text, -1), value) << '"' << text << '"';
    for (const char* text : {"2147483648", "-2147483648", "", "   ", "-", "+", "1 2", "12a", "0x10", "1.5",
                             "--1", "99999999999999999999"})
        EXPECT_EQ(parseInt(text, -1), -1) << '"' << text << '"';
}

TEST(ParseYesNo, KnowsTurkishAndEnglishWordsAndKeepsTheDefaultOtherwise) {
    struct Case {
        const char* text;
        bool defaultValue;
        bool expected;
    } cases[] = {
        {"  Evet\n", false, true}, {"HAYIR", true, false},  {"2", true, true},       {"2", false, false},
        {"on", false, true},       {"OFF", true, false},    {"yes", false, true},    {"no", true, false},
        {"TRUE", false, true},     {"false", true, false},  {"1", false, true},      {"0", true, false},
        {"", true, true},          {"maybe", false, false}, {"e vet", false, false},
    };
    for (const Case& c : cases)
        EXPECT_EQ(parseYesNo(c.text, c.defaultValue), c.expected) << '"' << c.text << '"';
}

} // namespace
} // namespace nv
