#include "tests/packager/win32/build_fixtures.h"

#include "packager/pe_image.h"
#include "packager/win32/resource_io.h"
#include "core/paths.h"
#include "core/text.h"
#include "skin/package.h"
#include "tests/support/test_support.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace nv::test {

std::wstring buildFixture(const std::wstring& name) {
    return pathJoin(pathJoin(testDataDir(), L"packager"), name);
}

BuildRequest requestFor(const std::wstring& templatePath, const std::wstring& outputPath) {
    SkinFileSet set;
    set.putFile("skin.xml", bytesOf("<skin background_image=\"main\"/>"));
    set.putFile("main.png", noiseBytes(5000, 4));
    BuildRequest request;
    request.templatePath = templatePath;
    request.outputPath = outputPath;
    request.packageBytes = writeSkinPackage(set);
    return request;
}

SignedFixtures signedFixtures() {
    SignedFixtures fixtures;
    const std::string text = textOf(readFile(buildFixture(L"signed\\expected.txt")));
    for (size_t at = 0, end; (end = text.find('\n', at)) != std::string::npos; at = end + 1) {
        const std::string line = text.substr(at, end - at);
        const size_t equals = line.find('=');
        const std::wstring key = utf8ToWide(line.substr(0, equals)),
                           value = utf8ToWide(line.substr(equals + 1));
        if (key == L"subject")
            fixtures.subject = value;
        else if (key == L"thumbprint")
            fixtures.thumbprint = value;
        else
            fixtures.stampedBetween[key] = {std::stoll(value), std::stoll(value.substr(value.find(L' ')))};
    }
    return fixtures;
}

FakeSigntool::FakeSigntool() {
    set(L"LOG", dir_.file(L"commands.log"));
    set(L"ARGS", dir_.file(L"arguments.log"));
}

FakeSigntool::~FakeSigntool() {
    for (const wchar_t* name : {L"LOG", L"ARGS", L"SAY", L"EXIT", L"TS_EXIT", L"TS_GOOD", L"COPY"})
        set(name, L"");
}

std::wstring FakeSigntool::path() {
    return buildFixture(L"fake-sdk\\signtool.exe");
}

void FakeSigntool::set(const wchar_t* name, const std::wstring& value) {
    const std::wstring variable = std::wstring(L"NV_FAKE_SIGNTOOL_") + name;
    SetEnvironmentVariableW(variable.c_str(), value.empty() ? nullptr : value.c_str());
}

namespace {

std::vector<std::wstring> takeLines(const std::wstring& path) {
    std::vector<std::wstring> lines;
    if (!fileExists(path)) return lines;
    const std::string text = textOf(readFile(path));
    for (size_t at = 0, end; (end = text.find('\n', at)) != std::string::npos; at = end + 1)
        lines.push_back(utf8ToWide(text.substr(at, end - at)));
    DeleteFileW(path.c_str());
    return lines;
}

} // namespace

std::vector<std::wstring> FakeSigntool::takeCommandLines() {
    return takeLines(dir_.file(L"commands.log"));
}

std::vector<std::vector<std::wstring>> FakeSigntool::takeArguments() {
    std::vector<std::vector<std::wstring>> runs;
    for (const std::wstring& line : takeLines(dir_.file(L"arguments.log"))) {
        runs.emplace_back();
        for (size_t at = 0, end; (end = line.find(L'\x1f', at)) != std::wstring::npos; at = end + 1)
            runs.back().push_back(line.substr(at, end - at));
    }
    return runs;
}

void collectLine(void* lines, const std::wstring& line) {
    static_cast<std::vector<std::wstring>*>(lines)->push_back(line);
}

ResourceMap resourcesOf(const std::wstring& path) {
    std::vector<ResourceItem> items;
    DWORD error = 0;
    EXPECT_TRUE(readResources(
        path, [](const ResourceId&, const ResourceId&) { return true; }, items, error));
    auto part = [](const ResourceId& id) {
        return id.isInteger ? std::to_string(id.id) : "\"" + wideToUtf8(id.text) + "\"";
    };
    ResourceMap map;
    for (ResourceItem& item : items)
        map[part(item.type) + "/" + part(item.name) + "/" + std::to_string(item.language)] =
            std::move(item.data);
    EXPECT_EQ(map.size(), items.size()) << "a resource listed twice";
    return map;
}

Bytes withOverlayAndCertificate(const Bytes& image, const Bytes& overlay, bool certificate) {
    Bytes out = image;
    out.insert(out.end(), overlay.begin(), overlay.end());
    PeLayout layout;
    EXPECT_TRUE(readPeLayout(out, layout));
    auto put32 = [&](size_t at, uint32_t v) {
        for (int i = 0; i < 4; ++i)
            out[at + i] = uint8_t(v >> (8 * i));
    };
    if (certificate) {
        out.resize((out.size() + 7) & ~size_t(7), 0);
        const uint32_t at = uint32_t(out.size()), length = 0x400;
        Bytes table =
            noiseBytes(length, 77); // WIN_CERTIFICATE: length, revision 2.0, PKCS#7; then the signature
        for (int i = 0; i < 8; ++i)
            table[i] = uint8_t(uint64_t(0x0002020000000400ull) >> (8 * i));
        out.insert(out.end(), table.begin(), table.end());
        put32(layout.certDirectoryField, at);
        put32(layout.certDirectoryField + 4, length);
    }
    put32(layout.checksumField, peChecksum(out.data(), out.size(), layout.checksumField));
    return out;
}

} // namespace nv::test
