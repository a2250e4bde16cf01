// The live preview of a working skin. In a file of its own: the patcher draws its previews with the rest of
// preview.h but never composes a working skin, and a static link then leaves the composition out of it.

#include "renderer/preview.h"

namespace nv {

bool prepareLivePreview(const SkinWorkspace& workspace, PatcherScene& scene,
                        std::vector<ControlState>& states, LoadMessages& messages) {
    SkinModel model;
    if (!workspace.loadPreviewModel(model, messages)) return false;
    scene = buildScene(model, workspace.settings);
    states = previewStates(scene);
    return true;
}

} // namespace nv
