// Any skin package, loaded as the patcher loads its own and drawn in every state: the renderer must stay
// inside its buffers whatever positions, sizes and pictures a stranger's skin holds. The PNG writer then
// stores the picture and the decoder must read back exactly the rendered pixels.
//
// Input: a skin package. Its CRC trailer is recomputed first, so that the fuzzer spends its time inside the
// package rather than on the checksum. The input's bytes also pick each control's state.

#include "core/crc32.h"
#include "readers/image.h"
#include "renderer/png_writer.h"
#include "renderer/scene.h"
#include "skin/package.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

namespace {

void require(bool condition) {
    if (!condition) std::abort();
}

// Larger windows are legal, but rendering them teaches the fuzzer nothing new and costs it speed.
constexpr uint64_t kMaxFuzzPixels = 1u << 20;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 16) return 0;
    std::vector<uint8_t> package(data, data + size);
    const uint32_t crc = nv::Crc32::of(package.data(), size - 4);
    std::memcpy(package.data() + size - 4, &crc, 4);

    nv::SkinFileSet files;
    if (!nv::readSkinPackage(package.data(), package.size(), files)) return 0;
    nv::SkinModel model;
    if (!nv::loadSkinModel(files, model)) return 0;
    const nv::PatcherScene scene = nv::buildScene(model, model.settings);
    if (scene.width < 1 || scene.height < 1) return 0;
    if (uint64_t(scene.width) * uint64_t(scene.height) > kMaxFuzzPixels) return 0;

    std::vector<nv::ControlState> states = nv::defaultStates(scene);
    nv::applyPreviewSamples(scene, states);
    for (size_t i = 0; i < states.size(); ++i) {
        const uint8_t b = data[i % size];
        states[i].visible = (b & 1) == 0;
        states[i].enabled = (b & 2) == 0;
        states[i].hover = (b & 4) != 0;
        states[i].pressed = (b & 8) != 0;
        if (b & 16) states[i].progress = b & 32 ? NAN : float(b) / 100.f - 0.5f;
    }
    states.resize(states.size() / 2 + (size & 1)); // a short state list counts as defaults

    std::vector<uint32_t> pixels(size_t(scene.width) * size_t(scene.height), 0);
    for (bool preview : {false, true}) {
        nv::renderScene(scene, states, preview, pixels.data());
        for (int x : {-1, 0, scene.width / 2, scene.width})
            nv::controlAt(scene, states, x, x);
    }
    const nv::Bytes png = nv::encodePng(pixels.data(), scene.width, scene.height);
    nv::DecodedImage back;
    require(nv::decodeImage(png.data(), png.size(), back));
    require(back.width == scene.width && back.height == scene.height);
    require(std::memcmp(back.data(), pixels.data(), pixels.size() * 4) == 0);
    return 0;
}
