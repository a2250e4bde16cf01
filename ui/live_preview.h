#pragma once
// The live preview panel's picture: the working skin, with the operator's edits composed in as a build would,
// drawn by the patcher's own renderer with the values that stand in for a running download.

#include "renderer/preview.h"
#include "skin/workspace.h"

#include <string>

namespace nv::ui {

enum class PreviewOutcome {
    NoSkin, // nothing loaded: the panel shows its empty state
    Failed, // the skin could not be described; logLine says why
    Empty,  // a window without size: nothing to show and nothing to say
    Drawn,
};

// Composes the working skin, loads it and draws it. On Failed, logLine is the build log's line for it.
PreviewOutcome renderLivePreview(const SkinWorkspace& workspace, PreviewPicture& picture,
                                 std::wstring& logLine);

} // namespace nv::ui
