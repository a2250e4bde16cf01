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

struct Loaded {
    bool ok;
    std::wstring error;
    SkinFileSet files;
};

Loaded readFromFile(const std::wstring& exe) {
    win::ScopedModule module(LoadLibraryExW(exe.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
    EXPECT_NE(module.get(), nullptr);
    Loaded result;
    result.ok = readEmbeddedSkin(module.get(), result.files, &result.error);
    return result;
}

TEST(EmbeddedSkin, AModuleWithoutThePackageSaysSo) {
    SkinFileSet files;
    std::wstring error;
    EXPECT_FALSE(readEmbeddedSkin(GetModuleHandleW(nullptr), files, &error));
    EXPECT_EQ(error, L"Gomulu skin yok.");
}

TEST(EmbeddedSkin, ReadsThePackageBackFromAnExecutableLoadedAsData) {
    test::TempDir dir;
    SkinFileSet set;
    set.putFile("skin.xml", test::bytesOf("<skin background_image=\"main\"/>"));
    set.putFile("main.png", test::noiseBytes(5000, 9));
    Loaded loaded = readFromFile(exeWithResource(dir, writeSkinPackage(set)));
    ASSERT_TRUE(loaded.ok) << test::fsPath(loaded.error).string();
    ASSERT_EQ(loaded.files.entries.size(), 2u);
    EXPECT_EQ(loaded.files.entries[1].name, "main.png");
    EXPECT_EQ(loaded.files.entries[1].data, set.entries[1].data);
}

TEST(EmbeddedSkin, TheReadersMessagesPassThrough) {
    test::TempDir dir;
    Bytes damaged = writeSkinPackage(SkinFileSet{});
    damaged[6] ^= 0xFF;
    Loaded loaded = readFromFile(exeWithResource(dir, damaged));
    EXPECT_FALSE(loaded.ok);
    EXPECT_EQ(loaded.error, L"Skin paketi bozuk (CRC).");
}

} // namespace
} // namespace nv
