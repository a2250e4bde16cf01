#include "renderer/preview.h"

#include <new>

namespace nv {

std::vector<ControlState> previewStates(const PatcherScene& scene) {
    std::vector<ControlState> states = defaultStates(scene);
    applyPreviewSamples(scene, states);
    return states;
}

bool drawPicture(const PatcherScene& scene, const std::vector<ControlState>& states, bool drawNews,
                 PreviewPicture& picture) {
    picture = PreviewPicture{};
    if (scene.width < 1 || scene.height < 1) return false;
    // The loader keeps pictures within its pixel budget, so the window's size is bounded; the buffer is still
    // the one big allocation here.
    try {
        picture.pixels.assign(size_t(scene.width) * size_t(scene.height), 0);
    } catch (const std::bad_alloc&) {
        picture.pixels.clear();
        return false;
    }
    renderScene(scene, states, drawNews, picture.pixels.data());
    picture.width = scene.width;
    picture.height = scene.height;
    return true;
}

} // namespace nv
