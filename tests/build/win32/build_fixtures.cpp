#include "tests/build/win32/build_fixtures.h"

#include "build/pe_image.h"
#include "core/paths.h"
#include "core/text.h"
#include "skin/package.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

namespace nv::test {

std::wstring buildFixture(const std::wstring& name) {
    return pathJoin(pathJoin(testDataDir(), L"build"), name);
}

Bytes samplePackage() {
    SkinFileSet set;
    set.putFile("skin.xml", bytesOf("<skin background_image=\"main\"/>"));
    set.putFile("main.png", noiseBytes(5000, 4));
    return writeSkinPackage(set);
}

BuildRequest requestFor(const std::wstring& templatePath, const std::wstring& outputPath) {
    BuildRequest request;
    request.templatePath = templatePath;
    request.outputPath = outputPath;
    request.packageBytes = samplePackage();
    return request;
}

void collectLine(void* lines, const std::wstring& line) {
    static_cast<std::vector<std::wstring>*>(lines)->push_back(line);
}

std::string narrow(const std::wstring& text) {
    return wideToUtf8(text);
}

std::string resourceKey(const ResourceItem& item) {
    auto part = [](const ResourceId& id) {
        return id.isInteger ? std::to_string(id.id) : "\"" + wideToUtf8(id.text) + "\"";
    };
    return part(item.type) + "/" + part(item.name) + "/" + std::to_string(item.language);
}

ResourceMap resourcesOf(const std::wstring& path) {
    std::vector<ResourceItem> items;
    DWORD error = 0;
    EXPECT_TRUE(readResources(
        path, [](const ResourceId&, const ResourceId&) { return true; }, items, error))
        << narrow(path);
    ResourceMap map;
    for (ResourceItem& item : items) {
        std::string key = resourceKey(item);
        EXPECT_EQ(map.count(key), 0u) << "listed twice: " << key;
        map[key] = std::move(item.data);
    }
    return map;
}

Bytes withOverlayAndCertificate(const Bytes& image, const Bytes& overlay, bool certificate) {
    Bytes out = image;
    out.insert(out.end(), overlay.begin(), overlay.end());
    PeLayout layout;
    EXPECT_TRUE(readPeLayout(out, layout));
    if (certificate) {
        out.resize((out.size() + 7) & ~size_t(7), 0);
        const uint32_t at = uint32_t(out.size()), length = 8 + 0x3F0;
        // WIN_CERTIFICATE: length, revision 2.0, PKCS#7 signed data; then stand-in signature bytes.
        for (uint32_t v : {length, 0x00020200u}) {
            for (int i = 0; i < 4; ++i)
                out.push_back(uint8_t(v >> (8 * i)));
        }
        Bytes signature = noiseBytes(0x3F0, 77);
        out.insert(out.end(), signature.begin(), signature.end());
        for (int i = 0; i < 4; ++i) {
            out[layout.certDirectoryField + i] = uint8_t(at >> (8 * i));
            out[layout.certDirectoryField + 4 + i] = uint8_t(length >> (8 * i));
        }
    }
    const uint32_t sum = peChecksum(out.data(), out.size(), layout.checksumField);
    for (int i = 0; i < 4; ++i)
        out[layout.checksumField + i] = uint8_t(sum >> (8 * i));
    return out;
}

} // namespace nv::test
