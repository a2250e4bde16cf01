#pragma once
// Files dropped on the builder's window: which of them becomes the skin, and what the window reports when the
// files join the loaded package instead.

#include "skin/workspace.h"

#include <string>
#include <vector>

namespace nv::ui {

struct DropPlan {
    enum class Action { Ignore, LoadSource, AddFiles };
    Action action = Action::Ignore;
    std::wstring source; // LoadSource: the folder or .zip to load
};

// Nothing happens while a build runs or when nothing was dropped. Otherwise the first path that is a folder
// or whose name ends in ".zip" is loaded as the skin, and the rest of the drop is ignored; with no such path
// every file joins the working skin.
DropPlan planDrop(const std::vector<std::wstring>& paths, bool building);

struct ReportLine {
    std::wstring text;
    int level = 0; // the build log's levels
};

struct DropReport {
    int count = 0;               // files added or replaced
    std::vector<ReportLine> log; // for the build log, in order
    std::wstring status;         // the status line (never a warning)
    bool skinLoaded = false;     // the working skin holds skin.xml now
};

// Adds the files to the working skin (a file of the same name is replaced) and says what to report.
DropReport addDroppedFiles(SkinWorkspace& workspace, const std::vector<std::wstring>& paths);

} // namespace nv::ui
