#pragma once
// The skin author's checklist: what the loader lets pass (it has to show a stranger's skin as well as it can)
// but what almost always is a mistake: a picture that is missing or named in another case, a control outside
// the window, an unknown type or attribute, a colour that silently became the default, a duplicate id, a link
// to a locale key that the locale file lacks, settings that were clamped or fell back to defaults, a text
// with no width, files that nothing uses.

#include "readers/skin_files.h"

#include <string>
#include <vector>

namespace nv {

struct LintFinding {
    std::string file; // set name ("skin.xml", "norvane.ini", a picture); empty when it concerns no one file
    int line = 0;     // from 1; 0 when the finding has no line
    std::string code; // a short fixed name for scripts ("missing-image", "outside-window", ...)
    std::wstring message;
};

struct LintReport {
    bool loaded = false; // the skin loader accepted the set
    // The loader's own warnings first (code "loader", exactly as the loader words them), then the checks'.
    std::vector<LintFinding> findings;
};

LintReport lintSkin(const SkinFileSet& files);

// Case folding beyond ASCII for comparing file names (Latin-1, Latin Extended-A, Greek, Cyrillic; the Turkish
// dotted and dotless i both fold to 'i'), so that names that differ only in such letters can be recognised.
std::wstring foldNameCase(std::wstring_view name);

} // namespace nv
