#include "recipe/recipe.h"

#include "core/text.h"
#include "recipe/recipe_keys.h"
#include "skin/workspace.h"

#include <algorithm>

namespace nv {

Recipe::Recipe() {
    for (const RecipeKey& key : kRecipeKeys)
        if (key.type != KeyType::Links) readKeyText(key, *this, key.defaultText);
}

void takeSkinValues(const SkinWorkspace& workspace, Recipe& recipe) {
    recipe.configUrl = workspace.configUrl;
    recipe.iframeUrl = workspace.iframeUrl;
    recipe.feedUrl = workspace.feedUrl;
    recipe.settings = workspace.settings;
    recipe.links.clear();
    const std::vector<ButtonLink>& buttons = workspace.buttonLinks;
    for (size_t i = 0; i < buttons.size(); ++i)
        recipe.links.push_back({static_cast<int>(i), buttons[i].id, buttons[i].link});
}

void applyRecipe(const Recipe& recipe, SkinWorkspace& workspace) {
    workspace.configUrl = recipe.configUrl;
    workspace.iframeUrl = recipe.iframeUrl;
    workspace.feedUrl = recipe.feedUrl;
    PatcherSettings settings = recipe.settings;
    if (settings.connections < kMinConnections || settings.connections > kMaxConnections)
        settings.connections = workspace.settings.connections;
    settings.segmentMb = std::clamp(settings.segmentMb, kMinSegmentMb, kMaxSegmentMb);
    workspace.settings = std::move(settings);
    // A link lands on the button it was read from; one of another skin (its number or id differs) is dropped.
    for (const RecipeLink& link : recipe.links) {
        const size_t number = static_cast<size_t>(link.number);
        if (link.number >= 0 && number < workspace.buttonLinks.size() &&
            workspace.buttonLinks[number].id == link.id)
            workspace.setButtonLinkAt(number, link.address);
    }
}

BuildInputs recipeBuildInputs(const Recipe& recipe, Bytes iconBytes) {
    BuildInputs inputs;
    inputs.templatePath = recipe.templatePath;
    inputs.outputPath = recipe.outPath;
    inputs.iconBytes = std::move(iconBytes);
    inputs.version = recipe.version;
    inputs.signing = recipe.signing;
    return inputs;
}

} // namespace nv
