#pragma once
// The operator's decisions, as one value: the skin source, the addresses and button links, the patcher's
// settings, the icon, the file texts, the output and the signing. The builder window's fields, its session
// file and nvbuild's options all read into and write from this value through the one table of its keys
// (recipe/recipe_keys.h), so that the window and `nvbuild build --session` make the same build from the same
// decisions.

#include "packager/build_job.h"
#include "skin/settings.h"

#include <string>
#include <vector>

namespace nv {

class SkinWorkspace;

// The fresh window's output name and version text.
inline constexpr const wchar_t* kDefaultOutputName = L"Kaldra.exe";
inline constexpr const wchar_t* kDefaultVersionText = L"1.0.0.0";

// One button's link: the button's place among the skin's buttons, its id as skin.xml writes it, and the
// address it opens.
struct RecipeLink {
    int number = 0;
    std::string id;
    std::wstring address;

    bool operator==(const RecipeLink&) const = default;
};

struct Recipe {
    std::wstring skin; // the skin source: a .zip file or a folder
    std::wstring configUrl, iframeUrl, feedUrl;
    PatcherSettings settings;      // title, connections, segment size, behaviour, run arguments
    std::vector<RecipeLink> links; // one per button of the loaded skin, in the skin's order
    std::wstring icon;             // the picture the patcher's icon is made from; empty: the template's icons
    std::wstring outPath;          // the patcher to write
    VersionInfoFields version;     // its originalFilename is the output's name ("out_name")
    SigningOptions signing;
    std::wstring templatePath; // empty: the template beside the program
    // The update keys' .pub files, joined by "|" (a character no Windows path holds); empty: none.
    std::wstring updateKeys;

    // A fresh builder window's values: the defaults of the key table.
    Recipe();
    bool operator==(const Recipe&) const = default;
};

// The skin's own values, as a load fills the window's fields with them: the addresses, the settings and one
// link per button.
void takeSkinValues(const SkinWorkspace& workspace, Recipe& recipe);

// The recipe's values into the working skin, where a build composes them from: addresses, settings (a
// connection count outside its range leaves the skin's, the segment size is kept to its range) and each link
// onto its button.
void applyRecipe(const Recipe& recipe, SkinWorkspace& workspace);

// The build's inputs: the recipe's output, file texts and signing, with the icon's bytes (read by the caller,
// who knows whether a picture that does not convert is an error or a note).
BuildInputs recipeBuildInputs(const Recipe& recipe, Bytes iconBytes);

} // namespace nv
