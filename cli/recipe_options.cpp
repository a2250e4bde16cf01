#include "cli/recipe_options.h"

#include "core/text.h"
#include "readers/xml.h"

#include <algorithm>
#include <cstdlib>

namespace nv {
namespace {

// "  --option VALUE" takes this many columns before its help; a longer one is followed by two blanks.
constexpr size_t kHelpColumn = 24;

void addKeyHelp(std::wstring& out, const RecipeKey& key) {
    std::wstring head = L"  " + std::wstring(key.option);
    if (!key.placeholder.empty()) head += L" " + std::wstring(key.placeholder);
    head += L"  ";
    if (head.size() < kHelpColumn) head.append(kHelpColumn - head.size(), L' ');
    std::wstring help(key.help);
    if (key.type == KeyType::Count)
        help += L", " + std::to_wstring(key.low) + L".." + std::to_wstring(key.high);
    size_t start = 0;
    while (true) {
        const size_t end = help.find(L'\n', start);
        out +=
            (start == 0 ? head : std::wstring(kHelpColumn, L' ')) + help.substr(start, end - start) + L"\n";
        if (end == std::wstring::npos) break;
        start = end + 1;
    }
}

bool inPart(const RecipeKey& key, OptionPart part) {
    return (key.step == RestoreStep::SkinValues) == (part == OptionPart::SkinValues);
}

std::wstring environmentValue(const std::wstring& variable, bool& set) {
#ifdef _WIN32
    const wchar_t* value = _wgetenv(variable.c_str());
    set = value != nullptr;
    return value ? std::wstring(value) : std::wstring();
#else
    const char* value = std::getenv(wideToUtf8(variable).c_str());
    set = value != nullptr;
    return value ? utf8ToWide(value) : std::wstring();
#endif
}

} // namespace

std::wstring optionHelp(std::initializer_list<std::string_view> names) {
    std::wstring out;
    for (std::string_view name : names)
        if (const RecipeKey* key = findKey(name)) addKeyHelp(out, *key);
    return out;
}

std::wstring skinEditsHelp() {
    std::wstring out =
        L"Düzenlemeler (verilmeyen değer skinden okunduğu gibi kalır; değerler satır sonu içeremez):\n";
    for (const RecipeKey& key : kRecipeKeys)
        if (key.group == OptionGroup::Edit) addKeyHelp(out, key);
    out +=
        L"Skinde yeri olmayan adres (dil dosyası, remoteConfigPath ya da FEED_ kontrolü yoksa) yazılmaz; her "
        L"biri\n"
        L"için standart hataya bir \"Not: \" satırı yazılır.\n";
    return out;
}

bool RecipeOptions::has(std::string_view name) const {
    return value(name) != nullptr;
}

const std::wstring* RecipeOptions::value(std::string_view name) const {
    for (const Given& g : given)
        if (g.key->name == name) return &g.value;
    return nullptr;
}

bool readRecipeOptions(const Invocation& invocation, RecipeOptions& options, std::wstring& error) {
    options.given.clear();
    for (const GivenOption& option : invocation.options) {
        const RecipeKey* key = findKeyByOption(option.name);
        if (!key) continue; // the command's own option
        if (!checkKeyOption(*key, option.value, error)) return false;
        options.given.push_back({key, option.value});
    }
    return true;
}

bool applyRecipeOptions(const RecipeOptions& options, OptionPart part, Recipe& recipe, std::wstring& error) {
    // A list given on the command line replaces the session file's, however many times it is given.
    std::vector<const RecipeKey*> emptied;
    for (const RecipeOptions::Given& g : options.given) {
        if (g.key->secret || !inPart(*g.key, part)) continue;
        if (g.key->type == KeyType::List &&
            std::find(emptied.begin(), emptied.end(), g.key) == emptied.end()) {
            g.key->list(recipe).clear();
            emptied.push_back(g.key);
        }
        if (!applyKeyOption(*g.key, recipe, g.value, error)) return false;
    }
    return true;
}

bool readSecretOptions(const RecipeOptions& options, Recipe& recipe, std::wstring& error) {
    for (const RecipeOptions::Given& g : options.given) {
        if (!g.key->secret) continue;
        bool set = false;
        const std::wstring value = environmentValue(g.value, set);
        if (!set) {
            error = L"Ortam değişkeni tanımlı değil: " + g.value;
            return false;
        }
        g.key->text(recipe) = value;
    }
    return true;
}

bool applySkinEdits(const RecipeOptions& edits, SkinWorkspace& workspace, std::wstring& error) {
    Recipe recipe;
    takeSkinValues(workspace, recipe);
    if (!applyRecipeOptions(edits, OptionPart::SkinValues, recipe, error)) return false;
    applyRecipe(recipe, workspace);
    return true;
}

std::vector<std::wstring> editsWithoutPlace(const RecipeOptions& edits, const SkinWorkspace& workspace) {
    std::vector<std::wstring> notes;
    const auto present = [&](const std::string& name) {
        return name.empty() ? nullptr : workspace.files.findFile(name);
    };
    const std::wstring* iframeUrl = edits.value("iframe_url");
    if (iframeUrl && !iframeUrl->empty() && !present(workspace.localeFile))
        notes.push_back(L"--news-url yazılmadı: skinde dil dosyası yok");
    const std::wstring* configUrl = edits.value("config_url");
    if (configUrl && !configUrl->empty()) {
        const Bytes* address = present(workspace.addressFile);
        XmlDocument document;
        if (!address)
            notes.push_back(L"--config-url yazılmadı: skinde adres dosyası yok");
        else if (parseXml(std::string_view(reinterpret_cast<const char*>(address->data()), address->size()),
                          document) &&
                 !document.root.hasAttribute("remoteConfigPath"))
            notes.push_back(L"--config-url yazılmadı: " + utf8ToWide(workspace.addressFile) +
                            L" remoteConfigPath taşımıyor");
    }
    if (edits.has("feed_url") && !workspace.hasFeed)
        notes.push_back(L"--feed-url yazılmadı: skinde kimliği FEED_ ile başlayan kontrol yok");
    return notes;
}

} // namespace nv
