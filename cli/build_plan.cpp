#include "cli/build_plan.h"

#include "cli/recipe_options.h"
#include "cli/session_recipe.h"
#include "cli/skin_input.h"
#include "core/files.h"
#include "core/paths.h"
#include "core/text.h"
#include "packager/icon.h"
#include "recipe/recipe.h"
#include "update/update_key.h"

#include <algorithm>

namespace nv {
namespace {

// The update keys' .pub files (joined by "|"), each checked, into the lines the patcher's resource holds.
bool readUpdateKeys(const std::wstring& joined, Bytes& resource, std::wstring& message) {
    std::vector<update::PublicKey> keys;
    for (size_t start = 0; start < joined.size();) {
        const size_t bar = std::min(joined.find(L'|', start), joined.size());
        const std::wstring path = joined.substr(start, bar - start);
        start = bar + 1;
        Bytes bytes;
        update::PublicKey key;
        std::string error;
        if (!readFileBytes(path, bytes, update::kMaxKeyFileBytes + 1))
            return message = L"Güncelleme anahtarı okunamadı: " + path, false;
        if (!update::parsePublicKey(
                std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()), key, error))
            return message = L"Güncelleme anahtarı geçersiz: " + path + L" — " + utf8ToWide(error), false;
        if (std::find(keys.begin(), keys.end(), key) == keys.end()) keys.push_back(key);
    }
    if (keys.size() > update::kMaxUpdateKeys)
        return message =
                   L"En çok " + std::to_wstring(update::kMaxUpdateKeys) + L" güncelleme anahtarı gömülür.",
               false;
    for (const update::PublicKey& key : keys) {
        const std::string line = update::publicKeyText(key);
        resource.insert(resource.end(), line.begin(), line.end());
    }
    return true;
}

} // namespace

bool chooseSigningSource(const RecipeOptions& options, SigningOptions& signing, std::wstring& error) {
    // The options that only one certificate source uses.
    static constexpr struct {
        std::string_view key;
        SigningSource source;
    } kSourceValues[] = {{"sign_pfx", SigningSource::PfxFile},
                         {"sign_thumbprint", SigningSource::Store},
                         {"sign_dlib", SigningSource::Plugin},
                         {"sign_dmdf", SigningSource::Plugin},
                         {"sign_command", SigningSource::Command}};
    const RecipeKey& sourceKey = *findKey("sign_source");
    if (options.has("sign_source")) {
        signing.enabled = true;
        return true; // the source named wins; the other sources' values are only kept
    }
    const RecipeOptions::Given* first = nullptr;
    for (const RecipeOptions::Given& g : options.given) {
        for (const auto& value : kSourceValues) {
            if (g.key->name != value.key) continue;
            if (first && signing.source != value.source) {
                error = std::wstring(first->key->option) + L" ve " + std::wstring(g.key->option) +
                        L" farklı imza kaynaklarına ait; " + std::wstring(sourceKey.option) +
                        L" ile birini seçin";
                return false;
            }
            if (!first) first = &g;
            signing.source = value.source;
            signing.enabled = true;
        }
    }
    return true;
}

int planBuild(const Invocation& invocation, Console& console, BuildPlan& plan) {
    RecipeOptions options;
    std::wstring error;
    if (!readRecipeOptions(invocation, options, error)) return invocation.usageError(console, error);
    const std::wstring* sessionFile = invocation.value(L"--session");
    if (!sessionFile && !options.has("out_path"))
        return invocation.usageError(console, L"Eksik seçenek: --out");

    // With a session file its fields come first, as the builder restores them; every option given on the
    // command line then wins over them.
    Recipe recipe;
    std::wstring message, note;
    const std::wstring source = invocation.arguments.empty() ? std::wstring() : invocation.arguments[0];
    if (sessionFile) {
        if (!readSessionRecipe(*sessionFile, source, plan.workspace, recipe, message, note))
            return failed(console, message);
    } else {
        // Without a session no file text is set: the version block's own defaults hold, and the original
        // name is the output's.
        recipe.version = VersionInfoFields{};
    }
    applyRecipeOptions(options, OptionPart::Others, recipe, error); // these take any text
    if (recipe.outPath.empty()) return invocation.usageError(console, L"Eksik seçenek: --out");
    // The window always holds a full path; a name typed here means the current folder, as on any command
    // line.
    recipe.outPath = absolutePath(recipe.outPath);
    if (!options.has("template")) recipe.templatePath = pathJoin(exeFolder(), L"Norvane.Template.exe");
    if (!chooseSigningSource(options, recipe.signing, error)) return invocation.usageError(console, error);
    if (!readSecretOptions(options, recipe, error)) return failed(console, error);

    Bytes iconBytes;
    DecodedImage preview;
    bool previewDecoded = false;
    if (const std::wstring* icon = options.value("icon")) {
        if (!requireExisting(*icon, message) ||
            !readIconFile(*icon, iconBytes, preview, previewDecoded, message))
            return failed(console, message);
    } else if (!recipe.icon.empty() &&
               !readIconFile(recipe.icon, iconBytes, preview, previewDecoded, message)) {
        // The builder takes a remembered icon quietly and keeps the template's when it does not convert.
        console.errLine(L"Not: " + message);
    }

    if (!sessionFile) {
        if (!loadSkinInput(source, plan.workspace, message, note)) return failed(console, message);
        recipe.skin = source;
        takeSkinValues(plan.workspace, recipe);
    }
    // A patcher given as the skin's source is never rebuilt over itself: it would lose its icon and version
    // texts.
    if (!checkOutputSparesSource(source.empty() ? plan.workspace.sourceLabel : source, recipe.outPath,
                                 message))
        return failed(console, message);
    if (!note.empty()) console.errLine(L"Not: " + note);
    if (!applyRecipeOptions(options, OptionPart::SkinValues, recipe, error)) return failed(console, error);
    for (const std::wstring& line : editsWithoutPlace(options, plan.workspace))
        console.errLine(L"Not: " + line);

    applyRecipe(recipe, plan.workspace);
    plan.inputs = recipeBuildInputs(recipe, std::move(iconBytes));
    if (!readUpdateKeys(recipe.updateKeys, plan.inputs.updateKeys, message)) return failed(console, message);
    plan.recipe = std::move(recipe);
    return kExitOk;
}

} // namespace nv
