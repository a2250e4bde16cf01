#include "cli/session_recipe.h"

#include "cli/nvbuild.h"
#include "cli/skin_input.h"
#include "recipe/session_file.h"

namespace nv {
namespace {

// The window's restore, except that the skin may also be a package or a patcher, as everywhere in nvbuild.
class RecipeTarget : public RecipeSessionTarget {
public:
    using RecipeSessionTarget::RecipeSessionTarget;
    void loadSkin(const std::wstring& path) override {
        if (loadSkinInput(path, workspace_, loadMessage_, note)) takeSkin(path);
    }
    std::wstring note;
};

} // namespace

bool readSessionRecipe(const std::wstring& file, const std::wstring& source, SkinWorkspace& workspace,
                       Recipe& recipe, std::wstring& message, std::wstring& note) {
    if (!requireExisting(file, message)) return false;
    SessionMap map;
    if (!readSessionFile(file, map)) {
        message = L"Okunamadı: " + file;
        return false;
    }
    if (!source.empty()) map["skin"] = source;
    const std::wstring skin = map.count("skin") ? map["skin"] : std::wstring();
    if (skin.empty()) {
        message = L"Oturum dosyasında skin yok: " + file;
        return false;
    }
    // The window lets a vanished skin go quietly; a build has nothing to build without one.
    if (!requireExisting(skin, message)) return false;

    RecipeTarget target(recipe, workspace);
    applySession(map, target);
    note = target.note;
    if (!target.skinLoaded()) {
        message = target.loadMessage();
        return false;
    }
    return true;
}

} // namespace nv
