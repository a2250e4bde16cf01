#pragma once
// Small synthetic skins for the renderer's tests: a background of chosen pixels, an address file, pictures
// and a skin.xml of the given controls, loaded into a scene the way every caller loads one.

#include "renderer/scene.h"
#include "tests/support/image_files.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nv::test {

struct TestSkin {
    SkinFileSet files;
    int width = 0, height = 0;

    // A background of straight ARGB pixels (rows from the top).
    TestSkin(int w, int h, std::vector<uint32_t> background) : width(w), height(h) {
        files.putFile("Fernwick.url.xml",
                      bytesOf("<urls remoteConfigPath=\"https://patch.example/cfg.xml\"/>"));
        files.putFile("main.png", makePng(w, h, background));
    }
    TestSkin(int w, int h, uint32_t colour)
        : TestSkin(w, h, std::vector<uint32_t>(size_t(w) * size_t(h), colour)) {}

    TestSkin& picture(const char* name, int w, int h, uint32_t colour) {
        files.putFile(name, makePng(w, h, colour));
        return *this;
    }
    TestSkin& controls(std::string_view xml) {
        files.putFile("skin.xml", bytesOf("<skin>" + std::string(xml) + "</skin>"));
        return *this;
    }
    TestSkin& locale(std::string_view xml) {
        files.putFile("Fernwick.locale.xml",
                      bytesOf("<torrent_locale>" + std::string(xml) + "</torrent_locale>"));
        return *this;
    }

    PatcherScene scene() const {
        SkinModel model;
        LoadMessages messages;
        EXPECT_TRUE(loadSkinModel(files, model, &messages));
        return buildScene(model, model.settings);
    }
};

// The background as the renderer sees it: decoded, premultiplied.
inline std::vector<uint32_t> backgroundOf(const PatcherScene& scene) {
    return std::vector<uint32_t>(scene.background.data(),
                                 scene.background.data() + size_t(scene.width) * size_t(scene.height));
}

inline std::vector<uint32_t> render(const PatcherScene& scene, const std::vector<ControlState>& states,
                                    bool preview = false) {
    std::vector<uint32_t> pixels(size_t(scene.width) * size_t(scene.height), 0xDEADBEEFu);
    renderScene(scene, states, preview, pixels.data());
    return pixels;
}

} // namespace nv::test
