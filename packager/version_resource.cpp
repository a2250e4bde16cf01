#include "packager/version_resource.h"

#include <algorithm>

namespace nv {
namespace {

const wchar_t* const kDefaultName = L"Kaldra";

void add16(Bytes& out, uint32_t v) {
    out.push_back(uint8_t(v));
    out.push_back(uint8_t(v >> 8));
}
void add32(Bytes& out, uint32_t v) {
    add16(out, v & 0xFFFF);
    add16(out, v >> 16);
}
void put16(Bytes& out, size_t at, size_t v) {
    out[at] = uint8_t(v);
    out[at + 1] = uint8_t(v >> 8);
}

// UTF-16 little-endian with a terminating zero, whatever the width of wchar_t in this build.
void addUtf16z(Bytes& out, const std::wstring& text) {
    for (wchar_t c : text) {
        char32_t cp = char32_t(c);
        if (cp > 0xFFFF) {
            cp -= 0x10000;
            add16(out, 0xD800 + (cp >> 10));
            add16(out, 0xDC00 + (cp & 0x3FF));
        } else {
            add16(out, cp);
        }
    }
    add16(out, 0);
}

void padTo4(Bytes& out) {
    out.resize((out.size() + 3) & ~size_t(3), 0);
}

struct VersionNode {
    std::wstring key;
    Bytes value;
    bool isText = false;
    std::vector<VersionNode> children;
};

VersionNode textNode(const std::wstring& key, const std::wstring& value) {
    VersionNode node{key, {}, true, {}};
    addUtf16z(node.value, value);
    return node;
}

// A node's length covers its key, value and children but not the padding that may follow it. Every node
// starts on a multiple of four from the block's start, so aligning to the block aligns to the node too.
void serialise(const VersionNode& node, Bytes& out) {
    const size_t start = out.size();
    add16(out, 0);
    add16(out, node.isText ? node.value.size() / 2 : node.value.size());
    add16(out, node.isText ? 1 : 0);
    addUtf16z(out, node.key);
    padTo4(out);
    out.insert(out.end(), node.value.begin(), node.value.end());
    for (const VersionNode& child : node.children) {
        padTo4(out);
        serialise(child, out);
    }
    put16(out, start, out.size() - start);
}

std::wstring fileStem(const std::wstring& path) {
    size_t slash = path.find_last_of(L"\\/");
    std::wstring name = slash == std::wstring::npos ? path : path.substr(slash + 1);
    size_t dot = name.rfind(L'.');
    return dot == std::wstring::npos ? name : name.substr(0, dot);
}

} // namespace

std::array<uint16_t, 4> versionNumbers(const std::wstring& versionText) {
    const std::wstring text = versionText.empty() ? L"1.0.0.0" : versionText;
    std::array<uint16_t, 4> parts{1, 0, 0, 0};
    size_t recorded = 0;
    uint32_t current = 0;
    bool haveNumber = false;
    // The end of the text counts as one more separator.
    for (size_t i = 0; i <= text.size() && recorded < parts.size(); ++i) {
        const bool atEnd = i == text.size();
        const wchar_t c = atEnd ? L'\0' : text[i];
        if (!atEnd && c >= L'0' && c <= L'9') {
            current = std::min<uint32_t>(current * 10 + uint32_t(c - L'0'), 65535);
            haveNumber = true;
            continue;
        }
        if (haveNumber) parts[recorded++] = uint16_t(current);
        current = 0;
        haveNumber = false;
        if (!atEnd && c != L'.') break;
    }
    return parts;
}

bool isVersionText(std::wstring_view text) {
    size_t numbers = 0;
    for (size_t at = 0;; ++at) {
        const size_t end = std::min(text.find(L'.', at), text.size());
        const std::wstring_view number = text.substr(at, end - at);
        // Up to five digits, so the value fits before it is compared (leading zeros are harmless).
        if (number.empty() || number.size() > 5 ||
            !std::all_of(number.begin(), number.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; }))
            return false;
        uint32_t value = 0;
        for (wchar_t c : number)
            value = value * 10 + uint32_t(c - L'0');
        if (value > 65535 || ++numbers > 4) return false;
        if (end == text.size()) return true;
        at = end;
    }
}

std::vector<std::pair<std::wstring, std::wstring>> versionStrings(const VersionInfoFields& f) {
    const auto p = versionNumbers(f.versionText);
    const std::wstring version = std::to_wstring(p[0]) + L"." + std::to_wstring(p[1]) + L"." +
                                 std::to_wstring(p[2]) + L"." + std::to_wstring(p[3]);
    const std::wstring name = f.productName.empty() ? kDefaultName : f.productName;
    auto orName = [&](const std::wstring& v) { return v.empty() ? name : v; };
    return {
        {L"CompanyName", orName(f.companyName)},
        {L"FileDescription", orName(f.fileDescription)},
        {L"FileVersion", version},
        {L"InternalName", fileStem(orName(f.originalFilename))},
        {L"LegalCopyright", f.legalCopyright.empty() ? L"(C) " + name : f.legalCopyright},
        {L"OriginalFilename", f.originalFilename.empty() ? name + L".exe" : f.originalFilename},
        {L"ProductName", name},
        {L"ProductVersion", version},
    };
}

Bytes buildVersionResource(const VersionInfoFields& fields) {
    const auto p = versionNumbers(fields.versionText);
    const uint32_t high = uint32_t(p[0]) << 16 | p[1];
    const uint32_t low = uint32_t(p[2]) << 16 | p[3];

    VersionNode root{L"VS_VERSION_INFO", {}, false, {}};
    for (uint32_t v :
         {0xFEEF04BDu, 0x00010000u, high, low, high, low, 0x3Fu, 0u, 0x00040004u, 1u, 0u, 0u, 0u})
        add32(root.value, v);

    VersionNode table{L"040904b0", {}, true, {}};
    for (const auto& [key, value] : versionStrings(fields))
        table.children.push_back(textNode(key, value));
    root.children.push_back({L"StringFileInfo", {}, true, {std::move(table)}});

    VersionNode translation{L"Translation", {0x09, 0x04, 0xB0, 0x04}, false, {}};
    root.children.push_back({L"VarFileInfo", {}, true, {std::move(translation)}});

    Bytes out;
    serialise(root, out);
    return out;
}

} // namespace nv
