#include "recipe/recipe_keys.h"

#include "core/text.h"
#include "core/values.h"

#include <algorithm>

namespace nv {
namespace {

int parsedCount(std::wstring_view text, int fallback) {
    return parseInt(wideToUtf8(text), fallback);
}

std::wstring rangeText(const RecipeKey& key) {
    return std::to_wstring(key.low) + L" ile " + std::to_wstring(key.high);
}

int choiceIndex(const RecipeKey& key, std::wstring_view name) {
    for (size_t i = 0; i < key.choices.size(); ++i)
        if (key.choices[i] == name) return static_cast<int>(i);
    return -1;
}

// A list's words: typed into one field, an operator separates addresses with blanks, commas or semicolons.
std::vector<std::wstring> listWords(std::wstring_view text) {
    std::vector<std::wstring> words;
    size_t at = 0;
    while (at < text.size()) {
        const size_t start = text.find_first_not_of(L" \t,;", at);
        if (start == std::wstring_view::npos) break;
        size_t end = text.find_first_of(L" \t,;", start);
        if (end == std::wstring_view::npos) end = text.size();
        words.emplace_back(text.substr(start, end - start));
        at = end;
    }
    return words;
}

} // namespace

const RecipeKey* findKey(std::string_view name) {
    for (const RecipeKey& key : kRecipeKeys)
        if (key.name == name) return &key;
    return nullptr;
}

const RecipeKey* findKeyByOption(std::wstring_view option) {
    for (const RecipeKey& key : kRecipeKeys)
        if (!key.option.empty() && key.option == option) return &key;
    return nullptr;
}

const RecipeKey* findKeyByField(int field) {
    for (const RecipeKey& key : kRecipeKeys)
        if (field != 0 && key.field == field) return &key;
    return nullptr;
}

std::wstring keyText(const RecipeKey& key, const Recipe& recipe) {
    // The accessors hand out references for reading and writing alike; reading changes nothing.
    Recipe& r = const_cast<Recipe&>(recipe);
    switch (key.type) {
    case KeyType::Text:
        return key.text(r);
    case KeyType::Count:
        return std::to_wstring(key.count(r));
    case KeyType::Flag:
        return key.flag(r) ? L"1" : L"0";
    case KeyType::Choice:
        return std::wstring(key.choices[static_cast<size_t>(key.getChoice(recipe))]);
    case KeyType::List: {
        std::wstring text;
        for (const std::wstring& word : key.list(r))
            text += (text.empty() ? L"" : L" ") + word;
        return text;
    }
    case KeyType::Links:
        break;
    }
    return {};
}

bool keyOn(const RecipeKey& key, const Recipe& recipe) {
    return key.type == KeyType::Flag && key.flag(const_cast<Recipe&>(recipe));
}

int clampedCount(const RecipeKey& key, std::wstring_view text, int delta) {
    const int value = parsedCount(trim(text), parsedCount(key.defaultText, key.low));
    return static_cast<int>(std::clamp<long long>(static_cast<long long>(value) + delta, key.low, key.high));
}

bool readKeyText(const RecipeKey& key, Recipe& recipe, std::wstring_view text) {
    switch (key.type) {
    case KeyType::Text:
        key.text(recipe) = std::wstring(text);
        return true;
    case KeyType::Count: {
        if (key.clampText) {
            key.count(recipe) = clampedCount(key, text);
            return true;
        }
        // A text that is no number reads below the range, so it is refused like one out of it.
        const int value = parsedCount(text, key.low - 1);
        if (value < key.low || value > key.high) return false;
        key.count(recipe) = value;
        return true;
    }
    case KeyType::Flag:
        key.flag(recipe) = text == L"1";
        return true;
    case KeyType::Choice: {
        // A name this builder does not know (a newer one's, a typing slip) leaves the choice as it was.
        const int index = choiceIndex(key, trim(text));
        if (index < 0) return false;
        key.setChoice(recipe, index);
        return true;
    }
    case KeyType::List:
        key.list(recipe) = listWords(text);
        return true;
    case KeyType::Links:
        break;
    }
    return false;
}

bool checkKeyOption(const RecipeKey& key, const std::wstring& value, std::wstring& error) {
    const std::wstring option(key.option);
    switch (key.type) {
    case KeyType::Text:
    case KeyType::List:
        return true;
    case KeyType::Choice: {
        if (choiceIndex(key, value) >= 0) return true;
        std::wstring names;
        for (std::wstring_view name : key.choices)
            names += (names.empty() ? L"" : L", ") + std::wstring(name);
        error = option + L" şunlardan biri olmalı: " + names + L": " + value;
        return false;
    }
    case KeyType::Count: {
        const int v = parsedCount(value, key.low - 1);
        if (v >= key.low && v <= key.high) return true;
        error = option + L" " + rangeText(key) + L" arasında bir tam sayı olmalı: " + value;
        return false;
    }
    case KeyType::Flag:
        if (value == L"1" || value == L"0") return true;
        error = option + L" 0 ya da 1 olmalı: " + value;
        return false;
    case KeyType::Links: {
        const size_t eq = value.find(L'=');
        if (eq != 0 && eq != std::wstring::npos) return true;
        error = option + L" ID=URL biçiminde olmalı: " + value;
        return false;
    }
    }
    return false;
}

bool applyKeyOption(const RecipeKey& key, Recipe& recipe, const std::wstring& value, std::wstring& error) {
    switch (key.type) {
    case KeyType::Text:
        // A repeatable text gathers its values, apart by "|".
        if (key.repeatable && !key.text(recipe).empty())
            key.text(recipe) += L"|" + value;
        else
            key.text(recipe) = value;
        return true;
    case KeyType::Count:
        key.count(recipe) = parsedCount(value, key.low);
        return true;
    case KeyType::Flag:
        key.flag(recipe) = value == L"1";
        return true;
    case KeyType::Choice:
        key.setChoice(recipe, choiceIndex(key, value));
        return true;
    case KeyType::List:
        for (std::wstring& word : listWords(value))
            key.list(recipe).push_back(std::move(word));
        return true;
    case KeyType::Links: {
        const size_t eq = value.find(L'=');
        const std::string id = wideToUtf8(value.substr(0, eq));
        bool found = false;
        for (RecipeLink& link : recipe.links) {
            if (!equalsIgnoreCase(link.id, id)) continue;
            link.address = value.substr(eq + 1);
            found = true;
        }
        if (!found) error = L"Skin'de bu kimlikte buton yok: " + utf8ToWide(id);
        return found;
    }
    }
    return false;
}

} // namespace nv
