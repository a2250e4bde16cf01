#pragma once
// The patcher window as it is shown without running: the builder's live preview, `nvbuild render`, and the
// patcher's own "--preview" and "--snap". The working skin is composed as a build composes it and loaded, its
// scene gets the values that stand in for a running download, and it is drawn once at the window's size.

#include "renderer/scene.h"
#include "skin/skin_model.h"
#include "skin/workspace.h"

#include <cstdint>
#include <vector>

namespace nv {

struct PreviewPicture {
    int width = 0, height = 0;
    std::vector<uint32_t> pixels; // premultiplied 0xAARRGGBB, rows from the top
};

// Every control's default state with the stand-ins for a running download and the server's feed
// (applyPreviewSamples).
std::vector<ControlState> previewStates(const PatcherScene& scene);

// The scene of the working skin, composed and loaded as a build would, and its preview states. False when the
// skin could not be loaded: messages.error says why (its warnings are there either way).
bool prepareLivePreview(const SkinWorkspace& workspace, PatcherScene& scene,
                        std::vector<ControlState>& states, LoadMessages& messages);

// The scene drawn once into a picture of the window's size; drawNews as renderScene has it. False, and no
// picture, for a window narrower or lower than one pixel or one whose pixels do not fit in memory.
bool drawPicture(const PatcherScene& scene, const std::vector<ControlState>& states, bool drawNews,
                 PreviewPicture& picture);

} // namespace nv
