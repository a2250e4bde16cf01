// The recipe's key table and its rules: reading texts (session file, edit fields), checking and applying
// options, and the recipe's way into the working skin and the build's inputs.

#include "core/text.h"
#include "recipe/recipe.h"
#include "recipe/recipe_keys.h"
#include "skin/workspace.h"
#include "tests/support/image_files.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <set>

namespace nv {
namespace {

const RecipeKey& key(std::string_view name) {
    const RecipeKey* found = findKey(name);
    EXPECT_NE(found, nullptr) << name;
    return found ? *found : kRecipeKeys[0];
}

// A row that lacks the accessor of its type, repeats a name, an option or a field, or holds a default that
// does not read as the fresh window's value breaks every consumer of the table at once.
TEST(RecipeKeys, EveryRowIsWhole) {
    std::set<std::string_view> names;
    std::set<std::wstring_view> options;
    std::set<int> fields;
    const Recipe fresh;
    for (const RecipeKey& k : kRecipeKeys) {
        const std::string name(k.name);
        EXPECT_TRUE(names.insert(k.name).second) << name;
        EXPECT_TRUE(k.option.empty() || options.insert(k.option).second) << name;
        EXPECT_TRUE(k.field == 0 || fields.insert(k.field).second) << name;
        EXPECT_EQ(k.text != nullptr, k.type == KeyType::Text) << name;
        EXPECT_EQ(k.count != nullptr, k.type == KeyType::Count) << name;
        EXPECT_EQ(k.flag != nullptr, k.type == KeyType::Flag) << name;
        EXPECT_EQ(k.list != nullptr, k.type == KeyType::List) << name;
        EXPECT_EQ(k.getChoice && k.setChoice && !k.choices.empty(), k.type == KeyType::Choice) << name;
        EXPECT_EQ(k.option.empty(), k.group == OptionGroup::None) << name;
        EXPECT_FALSE(k.secret && k.saved()) << name << ": a secret is never written";
        if (k.type == KeyType::Count) {
            EXPECT_LT(k.low, k.high) << name;
        }
        if (k.type != KeyType::Links) {
            EXPECT_EQ(keyText(k, fresh), std::wstring(k.defaultText)) << name;
        }
    }
    EXPECT_EQ(fresh.settings, PatcherSettings{}) << "a fresh window holds a fresh norvane.ini's settings";
}

// A session file's or an edit field's text, by the builder's rules.
TEST(RecipeKeys, TextsReadByTheKeysRules) {
    const struct {
        const char* key;
        const wchar_t* text;
        bool taken;
        const wchar_t* value; // the key's text afterwards
    } cases[] = {
        {"conn", L"8", true, L"8"},
        {"conn", L"12", false, L"4"},
        {"conn", L"0", false, L"4"},
        {"conn", L"x", false, L"4"},
        {"seg", L"abc", true, L"4"},
        {"seg", L"0", true, L"1"},
        {"seg", L"65", true, L"64"},
        {"seg", L" 12 ", true, L"12"},
        {"close_on_start", L"1", true, L"1"},
        {"close_on_start", L"true", true, L"0"},
        {"auto_start", L"1", true, L"1"},
        {"title", L" Kaldra = Online ", true, L" Kaldra = Online "},
        // A source this builder does not know leaves the one chosen; the names are exact.
        {"sign_source", L"store", true, L"store"},
        {"sign_source", L" command ", true, L"command"},
        {"sign_source", L"hsm", false, L"pfx"},
        {"sign_source", L"Store", false, L"pfx"},
        // Addresses typed into one field, however they are separated.
        {"sign_ts_more", L"http://a.example  http://b.example", true, L"http://a.example http://b.example"},
        {"sign_ts_more", L" http://a.example,http://b.example; http://c.example ", true,
         L"http://a.example http://b.example http://c.example"},
        {"sign_ts_more", L" , ", true, L""},
    };
    for (const auto& c : cases) {
        Recipe recipe;
        EXPECT_EQ(readKeyText(key(c.key), recipe, c.text), c.taken) << c.key << " " << test::fsPath(c.text);
        EXPECT_EQ(keyText(key(c.key), recipe), c.value) << c.key << " " << test::fsPath(c.text);
    }
}

// The segment stepper reads its field by the same rule, then steps within the range.
TEST(RecipeKeys, SegmentStepper) {
    struct Case {
        const wchar_t* text;
        int delta, expected;
    } cases[] = {{L"abc", -1, 3}, {L"abc", 1, 5}, {L"0", -1, 1},   {L"64", 1, 64},        {L" 12 ", 1, 13},
                 {L"", 1, 5},     {L"-5", 1, 1},  {L"99", -1, 64}, {L"2147483647", 1, 64}};
    for (const Case& c : cases)
        EXPECT_EQ(clampedCount(key("seg"), c.text, c.delta), c.expected)
            << test::fsPath(c.text) << " " << c.delta;
}

// The command line is strict where the session file is forgiving: what it refuses is a usage error that names
// the option.
TEST(RecipeKeys, OptionsAreChecked) {
    const struct {
        const char* key;
        const wchar_t* value;
        const wchar_t* error; // empty: accepted
    } cases[] = {
        {"conn", L"8", L""},
        {"conn", L"9", L"--conn 1 ile 8 arasında bir tam sayı olmalı: 9"},
        {"seg", L"65", L"--seg 1 ile 64 arasında bir tam sayı olmalı: 65"},
        {"seg", L"abc", L"--seg 1 ile 64 arasında bir tam sayı olmalı: abc"},
        {"auto_start", L"0", L""},
        {"auto_start", L"yes", L"--auto-start 0 ya da 1 olmalı: yes"},
        {"link", L"URL_SITE=", L""},
        {"link", L"=https://x/", L"--link ID=URL biçiminde olmalı: =https://x/"},
        {"link", L"URL_SITE", L"--link ID=URL biçiminde olmalı: URL_SITE"},
        {"title", L"", L""},
        {"sign_source", L"plugin", L""},
        {"sign_source", L"token",
         L"--sign-source şunlardan biri olmalı: pfx, store, auto, plugin, command: token"},
        {"sign_ts_more", L"http://ts.example", L""},
    };
    for (const auto& c : cases) {
        std::wstring error;
        EXPECT_EQ(checkKeyOption(key(c.key), c.value, error), *c.error == 0) << c.key;
        EXPECT_EQ(error, c.error) << c.key;
    }
}

SkinWorkspace loadedWorkspace() {
    SkinFileSet set;
    set.putFile("skin.xml", test::bytesOf("<skin background_image=\"main\">"
                                          "<control type=\"button\" id=\"URL_SITE\" link_url=\"https://a/\"/>"
                                          "<control type=\"button\" id=\"url_site\" link_url=\"https://b/\"/>"
                                          "<control type=\"button\" id=\"URL_NEW\"/></skin>"));
    set.putFile("norvane.ini", test::bytesOf("[patcher]\r\nconnections=6\r\nsegment_mb=8\r\n"));
    SkinWorkspace ws;
    std::wstring message;
    EXPECT_TRUE(ws.loadSkinSet(set, L"test", message));
    return ws;
}

// A link given on the command line goes to every button of its id, whatever its case; an id that no button
// has is the command's failure, not a usage error.
TEST(Recipe, OptionLinksFindTheirButtons) {
    SkinWorkspace ws = loadedWorkspace();
    Recipe recipe;
    takeSkinValues(ws, recipe);
    std::wstring error;
    EXPECT_TRUE(applyKeyOption(key("link"), recipe, L"Url_Site=https://yeni/?a=b", error));
    EXPECT_EQ(recipe.links[0].address, L"https://yeni/?a=b");
    EXPECT_EQ(recipe.links[1].address, L"https://yeni/?a=b");
    EXPECT_EQ(recipe.links[2].address, L"");
    EXPECT_FALSE(applyKeyOption(key("link"), recipe, L"NOPE=x", error));
    EXPECT_EQ(error, L"Skin'de bu kimlikte buton yok: NOPE");
}

// Into the working skin: a count out of its range leaves the skin's, the segment is kept to its range, each
// link lands on its own button, and a link of another skin lands nowhere.
TEST(Recipe, AppliedToTheWorkingSkin) {
    SkinWorkspace ws = loadedWorkspace();
    Recipe recipe;
    takeSkinValues(ws, recipe);
    EXPECT_EQ(recipe.settings.connections, 6);
    recipe.configUrl = L"https://cfg/";
    recipe.settings.connections = 9;
    recipe.settings.segmentMb = 100;
    recipe.settings.allowError = true;
    recipe.links[1].address = L"https://only-the-second/";
    recipe.links.push_back({7, "URL_NEW", L"https://elsewhere/"});
    recipe.links.push_back({2, "URL_OTHER", L"https://elsewhere/"});
    applyRecipe(recipe, ws);
    EXPECT_EQ(ws.configUrl, L"https://cfg/");
    EXPECT_EQ(ws.settings.connections, 6);
    EXPECT_EQ(ws.settings.segmentMb, 64);
    EXPECT_TRUE(ws.settings.allowError);
    EXPECT_EQ(ws.buttonLinks[0].link, L"https://a/");
    EXPECT_FALSE(ws.buttonLinks[0].edited);
    EXPECT_EQ(ws.buttonLinks[1].link, L"https://only-the-second/");
    EXPECT_TRUE(ws.buttonLinks[1].edited);
    EXPECT_EQ(ws.buttonLinks[2].link, L"");
}

} // namespace
} // namespace nv
