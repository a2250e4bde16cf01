#include "packager/version_resource.h"

#include "core/text.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

uint16_t get16(const Bytes& b, size_t at) {
    return uint16_t(b[at] | b[at + 1] << 8);
}

// Reads a node back, checking on the way that every node starts on a multiple of four and that the children
// fill their parent's length exactly (so no padding after the last child is counted).
struct Node {
    std::u16string key;
    uint16_t valueLength = 0, type = 0;
    Bytes value;
    size_t end = 0;
    std::vector<Node> children;
};

Node readNode(const Bytes& b, size_t at) {
    Node n;
    EXPECT_EQ(at % 4, 0u);
    n.end = at + get16(b, at);
    n.valueLength = get16(b, at + 2);
    n.type = get16(b, at + 4);
    size_t p = at + 6;
    for (; get16(b, p) != 0; p += 2)
        n.key += char16_t(get16(b, p));
    p = (p + 5) & ~size_t(3);
    const size_t valueBytes = n.type == 1 ? 2u * n.valueLength : n.valueLength;
    n.value.assign(b.begin() + p, b.begin() + p + valueBytes);
    for (p += valueBytes; p < n.end; p = n.children.back().end)
        n.children.push_back(readNode(b, (p + 3) & ~size_t(3)));
    EXPECT_EQ(p, n.end);
    return n;
}

std::u16string u16(const std::wstring& w) {
    return std::u16string(w.begin(), w.end());
}

TEST(VersionResource, NumbersFromTheVersionText) {
    const std::pair<const wchar_t*, std::array<uint16_t, 4>> cases[] = {
        {L"", {1, 0, 0, 0}},          {L"2", {2, 0, 0, 0}},
        {L"1..2", {1, 2, 0, 0}},      {L"1.2-beta", {1, 2, 0, 0}},
        {L"v1.2", {1, 0, 0, 0}},      {L"70000.1", {65535, 1, 0, 0}},
        {L"1.2.3.4.5", {1, 2, 3, 4}}, {L"99999999999", {65535, 0, 0, 0}},
    };
    for (const auto& [text, parts] : cases)
        EXPECT_EQ(versionNumbers(text), parts);
}

// The command line's reading: only texts that the version block keeps as written pass.
TEST(VersionResource, StrictVersionText) {
    for (const wchar_t* good : {L"2", L"1.2.3.4", L"0.0.0.0", L"65535.65535", L"007.1"})
        EXPECT_TRUE(isVersionText(good)) << wideToUtf8(good);
    for (const wchar_t* bad : {L"", L"v2.1", L"1.2.3.4.5", L"70000.1", L"65536", L"1..2", L"1.", L".1",
                               L"1.2-beta", L" 1.2", L"1,2", L"٣"})
        EXPECT_FALSE(isVersionText(bad)) << wideToUtf8(bad);
}

TEST(VersionResource, EmptyFieldsFallBackToDerivedValues) {
    const std::pair<VersionInfoFields, std::vector<std::wstring>> cases[] = {
        {{},
         {L"Kaldra", L"Kaldra", L"1.0.0.0", L"Kaldra", L"(C) Kaldra", L"Kaldra.exe", L"Kaldra", L"1.0.0.0"}},
        {{L"Gece", L"", L"Yama", L"v2", L"© 2026", L"Patcher.v2.exe"},
         {L"Gece", L"Yama", L"1.0.0.0", L"Patcher.v2", L"© 2026", L"Patcher.v2.exe", L"Gece", L"1.0.0.0"}},
        {{L"P", L"", L"", L"3.1", L"", L"C:\\oyun/Başla"},
         {L"P", L"P", L"3.1.0.0", L"Başla", L"(C) P", L"C:\\oyun/Başla", L"P", L"3.1.0.0"}},
    };
    const std::wstring keys[] = {L"CompanyName",    L"FileDescription",  L"FileVersion", L"InternalName",
                                 L"LegalCopyright", L"OriginalFilename", L"ProductName", L"ProductVersion"};
    for (const auto& [fields, values] : cases) {
        const auto strings = versionStrings(fields);
        ASSERT_EQ(strings.size(), 8u);
        for (size_t i = 0; i < 8; ++i)
            EXPECT_EQ(strings[i], std::make_pair(keys[i], values[i]));
    }
}

TEST(VersionResource, BlockLayout) {
    const VersionInfoFields fields{L"", L"", L"", L"2.5.1", L"", L".exe"};
    const Bytes block = buildVersionResource(fields);
    const Node root = readNode(block, 0);
    EXPECT_EQ(root.end, block.size());
    EXPECT_EQ(root.key, u"VS_VERSION_INFO");
    EXPECT_EQ(root.type, 0);
    const uint32_t fixed[13] = {0xFEEF04BD, 0x10000, 0x20005, 0x10000, 0x20005, 0x10000, 0x3F,
                                0,          0x40004, 1,       0,       0,       0};
    ASSERT_EQ(root.valueLength, 52);
    for (size_t i = 0; i < 13; ++i)
        EXPECT_EQ(get16(root.value, 4 * i) | get16(root.value, 4 * i + 2) << 16, fixed[i]);

    ASSERT_EQ(root.children.size(), 2u);
    EXPECT_EQ(root.children[0].key, u"StringFileInfo");
    EXPECT_EQ(root.children[0].valueLength, 0);
    const Node& table = root.children[0].children.at(0);
    EXPECT_EQ(table.key, u"040904b0");
    const auto strings = versionStrings(fields);
    ASSERT_EQ(table.children.size(), strings.size());
    for (size_t i = 0; i < strings.size(); ++i) {
        const Node& s = table.children[i];
        EXPECT_EQ(s.key, u16(strings[i].first));
        EXPECT_EQ(s.type, 1);
        EXPECT_EQ(s.valueLength, strings[i].second.size() + 1) << "characters with the terminating zero";
        EXPECT_EQ(s.value.size(), 2 * s.valueLength);
        EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(s.value.data()), strings[i].second.size()),
                  u16(strings[i].second));
    }
    EXPECT_EQ(table.children[3].valueLength, 1) << "an empty internal name is its terminating zero";

    const Node& translation = root.children[1].children.at(0);
    EXPECT_EQ(root.children[1].key, u"VarFileInfo");
    EXPECT_EQ(translation.key, u"Translation");
    EXPECT_EQ(translation.type, 0);
    EXPECT_EQ(translation.value, (Bytes{0x09, 0x04, 0xB0, 0x04}));
}

} // namespace
} // namespace nv
