// One refresh of the live preview on the sample skin, step by step: composing the skin from the working set,
// loading it (decoding every picture), building the scene and rendering it. Goals for the 920 x 580 sample:
// the render alone within 4 ms, the whole refresh within 50 ms. A refresh after an edit finds the pictures in
// the shared picture cache; the "cold" cases empty it before each run, as for the first load of a skin.

#include "bench/bench_harness.h"
#include "core/paths.h"
#include "renderer/scene.h"
#include "skin/picture_cache.h"
#include "skin/workspace.h"

#ifdef _WIN32
#include "core/win32/gdiplus_session.h"
#endif

#include <string>
#include <vector>

namespace {

constexpr int kRuns = 30;

#ifdef _WIN32
nv::GdiplusSession gdiplus; // pictures are decoded and text drawn with GDI+, as in the programs
#endif

nv::SkinWorkspace sampleWorkspace() {
    nv::SkinWorkspace workspace;
    std::wstring message;
    if (!workspace.loadSkinSource(nv::pathJoin(nv::exeFolder(), L"sample-skin"), message))
        nv::bench::fail("the sample skin beside the benchmark does not load");
    return workspace;
}

nv::PatcherScene sampleScene(const nv::SkinWorkspace& workspace) {
    nv::SkinModel model;
    nv::LoadMessages messages;
    if (!workspace.loadPreviewModel(model, messages)) nv::bench::fail("the sample skin does not load");
    return nv::buildScene(model, workspace.settings);
}

} // namespace

int main(int argc, char** argv) {
    return nv::bench::runCases(
        argc, argv,
        {
            {"preview/compose",
             [] {
                 const nv::SkinWorkspace workspace = sampleWorkspace();
                 nv::bench::measure("preview/compose", kRuns, [&] {
                     nv::SkinFileSet composed;
                     std::wstring message;
                     workspace.composeSkinFiles(composed, message);
                     nv::bench::keep(&composed);
                 });
             }},
            {"preview/load/cold",
             [] {
                 const nv::SkinWorkspace workspace = sampleWorkspace();
                 nv::SkinFileSet composed;
                 std::wstring message;
                 workspace.composeSkinFiles(composed, message);
                 nv::bench::measure("preview/load/cold", kRuns, [&] {
                     nv::PictureCache::shared().clear();
                     nv::SkinModel model;
                     nv::loadSkinModel(composed, model);
                     nv::bench::keep(&model);
                 });
             }},
            {"preview/load",
             [] {
                 const nv::SkinWorkspace workspace = sampleWorkspace();
                 nv::SkinFileSet composed;
                 std::wstring message;
                 workspace.composeSkinFiles(composed, message);
                 nv::bench::measure("preview/load", kRuns, [&] {
                     nv::SkinModel model;
                     nv::loadSkinModel(composed, model);
                     nv::bench::keep(&model);
                 });
             }},
            {"preview/render",
             [] {
                 const nv::PatcherScene scene = sampleScene(sampleWorkspace());
                 std::vector<nv::ControlState> states = nv::defaultStates(scene);
                 nv::applyPreviewSamples(scene, states);
                 std::vector<uint32_t> pixels(size_t(scene.width) * size_t(scene.height));
                 nv::bench::measure("preview/render", kRuns * 3,
                                    [&] { nv::renderScene(scene, states, true, pixels.data()); });
                 nv::bench::keep(pixels.data());
             }},
            {"preview/refresh/cold",
             [] {
                 const nv::SkinWorkspace workspace = sampleWorkspace();
                 std::vector<uint32_t> pixels;
                 nv::bench::measure("preview/refresh/cold", kRuns, [&] {
                     nv::PictureCache::shared().clear();
                     const nv::PatcherScene scene = sampleScene(workspace);
                     std::vector<nv::ControlState> states = nv::defaultStates(scene);
                     nv::applyPreviewSamples(scene, states);
                     pixels.assign(size_t(scene.width) * size_t(scene.height), 0);
                     nv::renderScene(scene, states, true, pixels.data());
                 });
                 nv::bench::keep(pixels.data());
             }},
            {"preview/refresh",
             [] {
                 const nv::SkinWorkspace workspace = sampleWorkspace();
                 std::vector<uint32_t> pixels;
                 nv::bench::measure("preview/refresh", kRuns, [&] {
                     const nv::PatcherScene scene = sampleScene(workspace);
                     std::vector<nv::ControlState> states = nv::defaultStates(scene);
                     nv::applyPreviewSamples(scene, states);
                     pixels.assign(size_t(scene.width) * size_t(scene.height), 0);
                     nv::renderScene(scene, states, true, pixels.data());
                 });
                 nv::bench::keep(pixels.data());
             }},
        });
}
