#pragma once
// The skin author's checklist: what the loader lets pass (it has to show a stranger's skin as well as it can)
// but what almost always is a mistake: a picture that is missing, named in another case or too large, a
// control outside the window, an unknown type or attribute, a colour that silently became the default, a
// duplicate id, a link to a locale key that the locale file lacks, a languagePath naming a file the skin
// lacks, settings that were clamped or fell back to defaults, a text with no width, files that nothing uses,
// file names that an archiver stored as UTF-8 without saying so. Each finding has its place (file, line,
// column) where it has one, and names the control it is about.

#include "readers/skin_files.h"

#include <string>
#include <vector>

namespace nv {

struct LintFinding {
    std::string file; // set name ("skin.xml", "norvane.ini", a picture); empty when it concerns no one file
    int line = 0;     // from 1; 0 when the finding has no line
    std::string code; // a short fixed name for scripts ("missing-image", "outside-window", ...)
    std::wstring message;
    int column = 0; // from 1, in characters of its line; 0 when the finding has no place within a line
    // The control the finding is about: its id, or "kontrol #N" (its place among the controls, from 1) when
    // it has none; empty when the finding is about no control. A skin.xml written on one line gives every
    // finding line 1, so this and the column are what tell them apart.
    std::wstring control;
};

// "kontrol #N" for the control of that index (from 0), or its id when it has one.
std::wstring controlName(std::string_view id, uint32_t index);

struct LintReport {
    bool loaded = false; // the skin loader accepted the set
    // The loader's own warnings first (code "loader", exactly as the loader words them, placed where they
    // concern a control; a file that does not parse is code "parse-error", placed where the reader stopped,
    // with the reader's words), then the checks'.
    std::vector<LintFinding> findings;
};

LintReport lintSkin(const SkinFileSet& files);

// The name an archiver meant when it stored a UTF-8 name without the zip's UTF-8 flag, so that it reads as
// code page 437 ("I┼ƒ─▒k.png" for "Işık.png"); empty when the name does not read so.
std::string utf8ReadAsCp437(std::string_view name);

// Case folding beyond ASCII for comparing file names (Latin-1, Latin Extended-A, Greek, Cyrillic; the Turkish
// dotted and dotless i both fold to 'i'), so that names that differ only in such letters can be recognised.
std::wstring foldNameCase(std::wstring_view name);

} // namespace nv
