#pragma once
// The builder's session file ("olusturucu.ini") as a build recipe: an operator commits the file the builder
// wrote and builds the same patcher headless.

#include "recipe/recipe.h"
#include "skin/workspace.h"

#include <string>

namespace nv {

// Restores the file by the builder's own rules into a recipe and the working skin. source, when not empty,
// stands in for the file's skin path (the path the builder wrote is rarely there on another machine), and
// may be anything nvbuild takes as a skin. note receives what the load notes (a folder's unreadable file).
// Fails with "Bulunamadı: " + path for a missing file or skin, "Okunamadı: " + file, the skin's load failure,
// or "Oturum dosyasında skin yok: " + file when neither names a skin.
bool readSessionRecipe(const std::wstring& file, const std::wstring& source, SkinWorkspace& workspace,
                       Recipe& recipe, std::wstring& message, std::wstring& note);

} // namespace nv
