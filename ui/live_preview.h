#pragma once
// The live preview's picture: the working skin, with the operator's edits composed in as a build would, drawn
// by the patcher's own renderer with the values that stand in for a running download.

#include "skin/settings.h"
#include "skin/skin_model.h"
#include "skin/workspace.h"

#include <cstdint>
#include <string>
#include <vector>

namespace nv::ui {

struct PreviewPicture {
    int width = 0, height = 0;
    std::vector<uint32_t> pixels; // premultiplied 0xAARRGGBB, rows from the top
};

enum class PreviewOutcome {
    NoSkin, // nothing loaded: the panel shows its empty state
    Failed, // the skin could not be described; logLine says why
    Empty,  // a window without size: nothing to show and nothing to say
    Drawn,
};

// The picture of a loaded model (no picture for a window narrower or lower than one pixel).
PreviewOutcome drawPreviewModel(const SkinModel& model, const PatcherSettings& settings,
                                PreviewPicture& picture);

// Composes the working skin, loads it and draws it. On Failed, logLine is the build log's line for it.
PreviewOutcome renderLivePreview(const SkinWorkspace& workspace, PreviewPicture& picture,
                                 std::wstring& logLine);

} // namespace nv::ui
