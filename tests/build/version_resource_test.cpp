#include "build/version_resource.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nv {
namespace {

uint16_t get16(const Bytes& b, size_t at) {
    return uint16_t(b[at] | b[at + 1] << 8);
}
uint32_t get32(const Bytes& b, size_t at) {
    return get16(b, at) | uint32_t(get16(b, at + 2)) << 16;
}

// A reader of the block that checks every length and alignment rule on its way down.
struct Node {
    std::u16string key;
    uint16_t valueLength = 0, type = 0;
    Bytes value;
    size_t start = 0, end = 0;
    std::vector<Node> children;
};

Node readNode(const Bytes& b, size_t at) {
    Node n;
    n.start = at;
    EXPECT_EQ(at % 4, 0u) << "node not aligned";
    n.end = at + get16(b, at);
    n.valueLength = get16(b, at + 2);
    n.type = get16(b, at + 4);
    size_t p = at + 6;
    while (get16(b, p) != 0)
        n.key += char16_t(get16(b, p)), p += 2;
    p = (p + 2 + 3) & ~size_t(3);
    size_t valueBytes = n.type == 1 ? 2u * n.valueLength : n.valueLength;
    n.value.assign(b.begin() + p, b.begin() + p + valueBytes);
    p += valueBytes;
    while (p < n.end) {
        p = (p + 3) & ~size_t(3);
        n.children.push_back(readNode(b, p));
        p = n.children.back().end;
    }
    EXPECT_EQ(p, n.end) << "children overrun their parent";
    return n;
}

std::u16string textValue(const Node& n) {
    std::u16string s;
    for (size_t i = 0; i + 1 < n.value.size(); i += 2)
        s += char16_t(get16(n.value, i));
    EXPECT_EQ(s.back(), u'\0');
    s.pop_back();
    return s;
}

std::u16string u16(const std::wstring& w) {
    return std::u16string(w.begin(), w.end());
}

TEST(VersionResource, NumbersFromTheVersionText) {
    const struct {
        const wchar_t* text;
        std::array<uint16_t, 4> parts;
    } cases[] = {
        {L"", {1, 0, 0, 0}},
        {L"2", {2, 0, 0, 0}},
        {L"1..2", {1, 2, 0, 0}},
        {L"1.2-beta", {1, 2, 0, 0}},
        {L"v1.2", {1, 0, 0, 0}},
        {L"70000.1", {65535, 1, 0, 0}},
        {L"1.2.3.4.5", {1, 2, 3, 4}},
        {L"0.5", {0, 5, 0, 0}},
        {L"4.3.2.1.", {4, 3, 2, 1}},
        {L"1.2 beta 3", {1, 2, 0, 0}},
        {L"99999999999", {65535, 0, 0, 0}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(versionNumbers(c.text), c.parts) << "case " << (&c - cases);
}

TEST(VersionResource, EmptyFieldsFallBackToDerivedValues) {
    using Strings = std::vector<std::pair<std::wstring, std::wstring>>;
    const struct {
        VersionInfoFields fields;
        Strings expected;
    } cases[] = {
        {{},
         {{L"CompanyName", L"Kaldra"},
          {L"FileDescription", L"Kaldra"},
          {L"FileVersion", L"1.0.0.0"},
          {L"InternalName", L"Kaldra"},
          {L"LegalCopyright", L"(C) Kaldra"},
          {L"OriginalFilename", L"Kaldra.exe"},
          {L"ProductName", L"Kaldra"},
          {L"ProductVersion", L"1.0.0.0"}}},
        {{L"Gece Online", L"", L"", L"v2", L"", L"Patcher.v2.exe"},
         {{L"CompanyName", L"Gece Online"},
          {L"FileDescription", L"Gece Online"},
          {L"FileVersion", L"1.0.0.0"},
          {L"InternalName", L"Patcher.v2"},
          {L"LegalCopyright", L"(C) Gece Online"},
          {L"OriginalFilename", L"Patcher.v2.exe"},
          {L"ProductName", L"Gece Online"},
          {L"ProductVersion", L"1.0.0.0"}}},
        {{L"P", L"Şirket", L"Yama", L"3.1", L"© 2026", L"C:\\oyun/Başla"},
         {{L"CompanyName", L"Şirket"},
          {L"FileDescription", L"Yama"},
          {L"FileVersion", L"3.1.0.0"},
          {L"InternalName", L"Başla"},
          {L"LegalCopyright", L"© 2026"},
          {L"OriginalFilename", L"C:\\oyun/Başla"},
          {L"ProductName", L"P"},
          {L"ProductVersion", L"3.1.0.0"}}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(versionStrings(c.fields), c.expected);
}

TEST(VersionResource, BlockLayout) {
    const VersionInfoFields fields{L"", L"", L"", L"2.5.1", L"", L".exe"};
    const Bytes block = buildVersionResource(fields);
    const Node root = readNode(block, 0);
    EXPECT_EQ(root.end, block.size()) << "the root's length is the whole block";

    EXPECT_EQ(root.key, u"VS_VERSION_INFO");
    EXPECT_EQ(root.type, 0);
    ASSERT_EQ(root.valueLength, 52);
    const uint32_t fixed[13] = {0xFEEF04BD, 0x00010000, 0x00020005, 0x00010000, 0x00020005, 0x00010000, 0x3F,
                                0,          0x00040004, 1,          0,          0,          0};
    for (size_t i = 0; i < 13; ++i)
        EXPECT_EQ(get32(root.value, 4 * i), fixed[i]) << "fixed field " << i;

    ASSERT_EQ(root.children.size(), 2u);
    const Node& stringInfo = root.children[0];
    EXPECT_EQ(stringInfo.key, u"StringFileInfo");
    EXPECT_EQ(stringInfo.type, 1);
    EXPECT_EQ(stringInfo.valueLength, 0);
    ASSERT_EQ(stringInfo.children.size(), 1u);
    const Node& table = stringInfo.children[0];
    EXPECT_EQ(table.key, u"040904b0");
    EXPECT_EQ(table.end, stringInfo.end) << "no padding after the last string is counted";

    const auto expected = versionStrings(fields);
    ASSERT_EQ(table.children.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        const Node& s = table.children[i];
        EXPECT_EQ(s.key, u16(expected[i].first));
        EXPECT_EQ(s.type, 1);
        EXPECT_EQ(textValue(s), u16(expected[i].second));
        EXPECT_EQ(s.valueLength, expected[i].second.size() + 1) << "characters with the terminating zero";
    }
    EXPECT_EQ(table.children[3].valueLength, 1) << "an empty internal name still has its terminating zero";

    const Node& varInfo = root.children[1];
    EXPECT_EQ(varInfo.key, u"VarFileInfo");
    ASSERT_EQ(varInfo.children.size(), 1u);
    EXPECT_EQ(varInfo.children[0].key, u"Translation");
    EXPECT_EQ(varInfo.children[0].type, 0);
    EXPECT_EQ(varInfo.children[0].value, (Bytes{0x09, 0x04, 0xB0, 0x04}));
}

// Text goes out as UTF-16 in every build, also where wchar_t holds whole code points.
TEST(VersionResource, CharactersBeyondTheBasicPlaneBecomeSurrogatePairs) {
    VersionInfoFields fields;
    fields.productName = L"A\U0001F600";
    const Node root = readNode(buildVersionResource(fields), 0);
    const Node& product = root.children[0].children[0].children[6];
    EXPECT_EQ(product.key, u"ProductName");
    EXPECT_EQ(textValue(product), u"A\U0001F600");
    EXPECT_EQ(product.valueLength, 4);
}

} // namespace
} // namespace nv
