// The package as a resource of an executable: written with the resource-update API into a copy of this test
// program, then read back from the copy loaded as a data file.

#include "core/files.h"
#include "core/win32/scoped_win.h"
#include "skin/package.h"
#include "skin/win32/embedded_skin.h"
#include "tests/support/test_support.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace nv {
namespace {

// A copy of this program with RT_RCDATA 900 set to the given bytes (language neutral).
std::wstring exeWithResource(const test::TempDir& dir, const Bytes& bytes) {
    std::wstring copy = dir.file(L"carrier.exe");
    EXPECT_TRUE(CopyFileW(exePath().c_str(), copy.c_str(), FALSE));
    HANDLE update = BeginUpdateResourceW(copy.c_str(), FALSE);
    EXPECT_NE(update, nullptr);
    EXPECT_TRUE(UpdateResourceW(update, MAKEINTRESOURCEW(10), MAKEINTRESOURCEW(SKIN_RESOURCE_ID), 0,
                                const_cast<uint8_t*>(bytes.data()), DWORD(bytes.size())));
    EXPECT_TRUE(EndUpdateResourceW(update, FALSE));
    return copy;
}

// Read back from an executable loaded as data; the package reader's own messages pass through. A module
// without the package is the template's case ("Gomulu skin yok." in its message box).
TEST(EmbeddedSkin, ReadsThePackageBackFromAnExecutableLoadedAsData) {
    SkinFileSet set;
    set.putFile("skin.xml", test::bytesOf("<skin background_image=\"main\"/>"));
    set.putFile("main.png", test::noiseBytes(5000, 9));
    Bytes damaged = writeSkinPackage(SkinFileSet{});
    damaged[6] ^= 0xFF;
    for (const auto& [package, error] : {std::pair{writeSkinPackage(set), std::wstring()},
                                         std::pair{damaged, std::wstring(L"Skin paketi bozuk (CRC).")}}) {
        test::TempDir dir;
        win::ScopedModule module(
            LoadLibraryExW(exeWithResource(dir, package).c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
        ASSERT_NE(module.get(), nullptr);
        SkinFileSet files;
        std::wstring said;
        EXPECT_EQ(readEmbeddedSkin(module.get(), files, &said), error.empty());
        EXPECT_EQ(said, error);
        if (error.empty()) {
            EXPECT_EQ(files.entries.size(), 2u);
            EXPECT_TRUE(files.findFile("main.png") && *files.findFile("main.png") == set.entries[1].data);
        }
    }
}

} // namespace
} // namespace nv
