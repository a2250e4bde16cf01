// What `nvbuild build` makes of a session file and of its options: every option reaches the same value as its
// session key, so a CI line that names a setting builds what a session file that holds it builds.

#include "cli/build_plan.h"
#include "core/paths.h"
#include "core/text.h"
#include "recipe/session_file.h"
#include "tests/support/image_files.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

struct QuietConsole : Console {
    std::wstring text;
    void out(std::wstring_view t) override { text += t; }
    void err(std::wstring_view t) override { text += t; }
};

class BuildPlanTest : public ::testing::Test {
protected:
    void SetUp() override {
        skin_ = dir_.file(L"gece");
        test::writeFile(pathJoin(skin_, L"skin.xml"),
                        "<skin background_image=\"main\">"
                        "<control type=\"button\" id=\"URL_SITE\" link_url=\"https://a/\"/>"
                        "</skin>");
        test::writeFile(pathJoin(skin_, L"main.png"), test::makePng(8, 8, 0xFF000000));
        test::writeFile(pathJoin(skin_, L"Fernwick.url.xml"),
                        "<urls remoteConfigPath=\"https://skin/c.xml\"/>");
        test::writeFile(pathJoin(skin_, L"Fernwick.locale.xml"), "<torrent_locale/>");
        picture_ = dir_.file(L"simge.png");
        test::writeFile(picture_, test::makePng(16, 16, 0xFF2080C0));
    }

    // build --session FILE [options], the file holding the skin, an output place and the given lines.
    BuildPlan plan(const std::string& lines, std::vector<GivenOption> options) {
        const std::wstring file = dir_.file(L"olusturucu.ini");
        test::writeFile(file, "skin=" + wideToUtf8(skin_) + "\nout_path=" + wideToUtf8(dir_.file(L"K.exe")) +
                                  "\n" + lines);
        Invocation invocation(kBuildCommand);
        invocation.options = std::move(options);
        invocation.options.push_back({L"--session", file, L""});
        BuildPlan plan;
        QuietConsole console;
        EXPECT_EQ(planBuild(invocation, console, plan), kExitOk) << test::fsPath(console.text);
        return plan;
    }

    test::TempDir dir_;
    std::wstring skin_, picture_;
};

TEST_F(BuildPlanTest, EveryOptionReachesTheValueOfItsSessionKey) {
    for (const RecipeKey& key : kRecipeKeys) {
        if (key.option.empty() || !key.saved()) continue;
        const std::string name(key.name);
        std::wstring value; // as the option gives it
        std::string line;   // as the session file holds it
        switch (key.type) {
        case KeyType::Text:
            value = key.name == "icon"       ? picture_
                    : key.name == "out_path" ? dir_.file(L"Başka.exe")
                                             : L"değer " + utf8ToWide(key.name);
            line = name + "=" + wideToUtf8(value);
            break;
        case KeyType::Count:
            value = std::to_wstring(key.low + 1);
            line = name + "=" + wideToUtf8(value);
            break;
        case KeyType::Flag: {
            const Recipe fresh;
            value = keyText(key, fresh) == L"1" ? L"0" : L"1";
            line = name + "=" + wideToUtf8(value);
            break;
        }
        case KeyType::Choice:
            value = std::wstring(key.choices.back());
            line = name + "=" + wideToUtf8(value);
            break;
        case KeyType::List:
            value = L"http://ts2.example/";
            line = name + "=" + wideToUtf8(value);
            break;
        case KeyType::Links:
            value = L"URL_SITE=https://yeni/";
            line = sessionLinkKey(0, "URL_SITE") + "=https://yeni/";
            break;
        }
        const BuildPlan fromFile = plan(line, {});
        const BuildPlan fromOption = plan("", {{std::wstring(key.option), value, L""}});
        if (key.type != KeyType::Links) {
            EXPECT_EQ(keyText(key, fromOption.recipe), keyText(key, fromFile.recipe)) << name;
            EXPECT_NE(keyText(key, fromOption.recipe), keyText(key, plan("", {}).recipe)) << name;
        }
        Recipe expected = fromFile.recipe;
        // Naming a certificate source, or what only one source uses, on the command line asks for a signature
        // with that source; the file has keys of its own for both.
        const std::pair<std::string_view, SigningSource> chosen[] = {
            {"sign_source", SigningSource::Command},   {"sign_pfx", SigningSource::PfxFile},
            {"sign_thumbprint", SigningSource::Store}, {"sign_dlib", SigningSource::Plugin},
            {"sign_dmdf", SigningSource::Plugin},      {"sign_command", SigningSource::Command}};
        for (const auto& [option, source] : chosen) {
            if (key.name != option) continue;
            expected.signing.enabled = true;
            expected.signing.source = source;
        }
        EXPECT_TRUE(fromOption.recipe == expected) << name;
        EXPECT_EQ(fromOption.inputs.iconBytes, fromFile.inputs.iconBytes) << name;
        Recipe builtFromFile, builtFromOption;
        takeSkinValues(fromFile.workspace, builtFromFile);
        takeSkinValues(fromOption.workspace, builtFromOption);
        EXPECT_TRUE(builtFromOption == builtFromFile) << name << ": the working skins differ";
    }
}

// The command line picks the source; values of two sources without --sign-source are a usage error; a list
// given on the command line replaces the file's, every use adding to it.
TEST_F(BuildPlanTest, SigningSourceAndTimestampListFromTheCommandLine) {
    const std::string file =
        "sign=0\nsign_source=store\nsign_thumbprint=AB\nsign_ts_more=http://dosya.example\n";
    BuildPlan p = plan(file, {});
    EXPECT_FALSE(p.inputs.signing.enabled);
    EXPECT_EQ(p.inputs.signing.source, SigningSource::Store);
    EXPECT_EQ(p.inputs.signing.moreTimestampUrls, std::vector<std::wstring>{L"http://dosya.example"});

    p = plan(file, {{L"--sign-source", L"auto", L""}, {L"--sign-machine-store", L"1", L""}});
    EXPECT_TRUE(p.inputs.signing.enabled);
    EXPECT_EQ(p.inputs.signing.source, SigningSource::Automatic);
    EXPECT_TRUE(p.inputs.signing.machineStore);
    EXPECT_EQ(p.inputs.signing.thumbprint, L"AB") << "the other sources' values are kept";

    p = plan(file,
             {{L"--sign-ts-more", L"http://a.example", L""}, {L"--sign-ts-more", L"http://b.example", L""}});
    EXPECT_EQ(p.inputs.signing.moreTimestampUrls,
              (std::vector<std::wstring>{L"http://a.example", L"http://b.example"}));
    EXPECT_FALSE(p.inputs.signing.enabled) << "a time-stamp server alone asks for nothing";

    // An explicit source settles what the values alone leave open.
    p = plan(file, {{L"--sign-pfx", L"c.pfx", L""},
                    {L"--sign-dlib", L"e.dll", L""},
                    {L"--sign-source", L"plugin", L""}});
    EXPECT_EQ(p.inputs.signing.source, SigningSource::Plugin);

    Invocation invocation(kBuildCommand);
    invocation.options = {{L"--out", dir_.file(L"K.exe"), L""},
                          {L"--sign-dlib", L"e.dll", L""},
                          {L"--sign-dmdf", L"m.json", L""},
                          {L"--sign-thumbprint", L"AB", L""}};
    invocation.arguments = {skin_};
    QuietConsole console;
    BuildPlan refused;
    EXPECT_EQ(planBuild(invocation, console, refused), kExitUsage);
    EXPECT_NE(
        console.text.find(L"--sign-dlib ve --sign-thumbprint farklı imza kaynaklarına ait; --sign-source ile "
                          L"birini seçin"),
        std::wstring::npos)
        << test::fsPath(console.text);
}

} // namespace
} // namespace nv
