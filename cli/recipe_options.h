#pragma once
// The recipe's keys as nvbuild's options (compose and render take the skin's edits, build every key): the
// option lists and their help come from the recipe's table, the values are checked as the command line is
// read and reach the recipe only after the skin has filled it.

#include "cli/nvbuild.h"
#include "recipe/recipe.h"
#include "recipe/recipe_keys.h"
#include "skin/workspace.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace nv {

// The parser's entries of the table's options of one group (every option with OptionGroup::None), in the
// table's order.
constexpr size_t recipeOptionCount(OptionGroup group) {
    size_t count = 0;
    for (const RecipeKey& key : kRecipeKeys)
        if (!key.option.empty() && (group == OptionGroup::None || key.group == group)) ++count;
    return count;
}
template <OptionGroup Group> constexpr std::array<OptionSpec, recipeOptionCount(Group)> recipeOptionSpecs() {
    std::array<OptionSpec, recipeOptionCount(Group)> out{};
    size_t i = 0;
    for (const RecipeKey& key : kRecipeKeys)
        if (!key.option.empty() && (Group == OptionGroup::None || key.group == Group))
            out[i++] = {key.option, key.placeholder, key.repeatable};
    return out;
}

// The options that edit the skin's values (compose, render and build take them).
inline constexpr auto kSkinEditOptions = recipeOptionSpecs<OptionGroup::Edit>();
// Every recipe option.
inline constexpr auto kRecipeOptions = recipeOptionSpecs<OptionGroup::None>();

// Help lines of options, each "  --option VALUE" padded to the help's column and followed by the key's help
// (its continuation lines indented to that column); a Count's help ends with its range.
std::wstring optionHelp(std::initializer_list<std::string_view> names);
// The skin edits' help: a heading, every edit option of the table, and what happens to an address that the
// skin has no place for.
std::wstring skinEditsHelp();

// The recipe options given on a command line, checked and in the order given.
class RecipeOptions {
public:
    struct Given {
        const RecipeKey* key;
        std::wstring value;
    };
    std::vector<Given> given;

    bool has(std::string_view name) const;
    // The value of a key given once, or null.
    const std::wstring* value(std::string_view name) const;
};

// Reads every option of the invocation that sets a recipe key. On a value that does not have its key's form,
// error says which and why (a usage error).
bool readRecipeOptions(const Invocation& invocation, RecipeOptions& options, std::wstring& error);

// Which of the given options applyRecipeOptions takes: the skin's values (after the skin has supplied its
// own) or the rest (file texts, output, signing). Secrets are never applied here: their options name where
// the value is, not the value.
enum class OptionPart { SkinValues, Others };
bool applyRecipeOptions(const RecipeOptions& options, OptionPart part, Recipe& recipe, std::wstring& error);

// The value of each given secret, read from the environment variable its option names. False with "Ortam
// değişkeni tanımlı değil: " + the variable when one is not set.
bool readSecretOptions(const RecipeOptions& options, Recipe& recipe, std::wstring& error);

// The skin's edits into a loaded working skin, as the builder's fields would put them there (a link for an id
// without a button is refused): compose and render take them with this one call.
bool applySkinEdits(const RecipeOptions& edits, SkinWorkspace& workspace, std::wstring& error);

// The given edits that this skin offers no place for, so that composing would drop them: a news address
// without a locale file, a configuration address without an address file that carries remoteConfigPath, a
// feed address without FEED_ controls. One line each, for a note on standard error.
std::vector<std::wstring> editsWithoutPlace(const RecipeOptions& edits, const SkinWorkspace& workspace);

} // namespace nv
