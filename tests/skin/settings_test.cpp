#include "skin/settings.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <set>

namespace nv {
namespace {

TEST(PatcherSettings, ReadingAppliesDefaultsClampsAndTheIniRules) {
    // Fields in order: title, connections, segment MB, close on start, auto start, start on error, browser
    // emulation, game arguments.
    const std::pair<const char*, PatcherSettings> cases[] = {
        {"", {}},
        {"[patcher]\nconnections=0\nsegment_mb=128", {L"", 1, 64, true, false, false, true, L""}},
        {"[patcher]\nconnections=20\nsegment_mb=-3", {L"", 8, 1, true, false, false, true, L""}},
        {"[patcher]\nclose_on_start=hayir\nauto_start=evet\nallow_start_on_error=yes\nbrowser_emulation=0",
         {L"", 4, 4, false, true, true, false, L""}},
        {"[patcher]\nconnections=abc\nclose_on_start=maybe\nauto_start=maybe", {}},
        // A byte-order mark, another section, case and spaces, any line end, the last of a repeated key.
        {"\xEF\xBB\xBF[ PATCHER ] ; own\r  Connections =  6 "
         "\n[other]\nconnections=3\r\n[patcher]\nsegment_mb=9\r\nSEGMENT_MB\t=\t7",
         {L"", 6, 7, true, false, false, true, L""}},
    };
    for (const auto& [ini, expected] : cases)
        EXPECT_TRUE(readPatcherSettingsFile(test::bytesOf(ini)) == expected) << '"' << ini << '"';
}

TEST(PatcherSettings, WriterProducesExactlyTheFixedLinesThatReadBack) {
    PatcherSettings s{L"Kaldra \u015e\u0130", 8, 1, false, true, false, true, L"-ip=1.2.3.4 ;x #y \u00e7"};
    EXPECT_EQ(
        writePatcherSettings(s),
        "; Norvane ayarlari (yapici tarafindan yazilir)\r\n[patcher]\r\ntitle=Kaldra \xC5\x9E\xC4\xB0\r\n"
        "connections=8\r\nsegment_mb=1\r\nclose_on_start=0\r\nauto_start=1\r\n"
        "allow_start_on_error=0\r\nbrowser_emulation=1\r\nrun_args=-ip=1.2.3.4 ;x #y \xC3\xA7\r\n");
    const PatcherSettings flipped{L"", 1, 64, true, false, true, false, L""};
    for (const PatcherSettings& written : {PatcherSettings{}, s, flipped})
        EXPECT_TRUE(readPatcherSettingsFile(test::bytesOf(writePatcherSettings(written))) == written);
    s.connections = 12; // only the reader clamps
    EXPECT_NE(writePatcherSettings(s).find("\r\nconnections=12\r\n"), std::string::npos);
}

TEST(IniText, DropsTheUtf8MarkAndConvertsUtf16WithAMark) {
    const std::pair<Bytes, std::string> cases[] = {
        {test::bytesOf("\xEF\xBB\xBF[a]\xC5\x9E"), "[a]\xC5\x9E"},
        {Bytes{'a', 0, 'b', 0}, std::string("a\0b\0", 4)}, // no mark: the bytes as they are
        // U+015E, a surrogate pair, a lone high surrogate, then an odd byte that is dropped.
        {Bytes{0xFF, 0xFE, 0x5E, 0x01, 0x3D, 0xD8, 0x00, 0xDE, 0x3D, 0xD8, 'z', 0, 'c'},
         "\xC5\x9E\xF0\x9F\x98\x80\xEF\xBF\xBDz"},
        {Bytes{0xFE, 0xFF, 0x01, 0x5E, 0xDC, 0x00}, "\xC5\x9E\xEF\xBF\xBD"}, // a lone low surrogate
    };
    for (const auto& [bytes, text] : cases)
        EXPECT_EQ(iniText(bytes), text) << test::textOf(bytes);
}

} // namespace
} // namespace nv

namespace nv {
namespace {

// The table that lint and the skin authors' reference go by describes the reader exactly: the same keys as
// the written file has, each number kept to its range and defaulting when it is no number, each switch
// defaulting when it reads as neither. The values read are seen through the writer, key by key.
TEST(PatcherSettings, TheKeyTableIsWhatTheReaderDoes) {
    auto readBack = [](const std::string& line) {
        return parseIni(writePatcherSettings(readPatcherSettingsFile(test::bytesOf("[patcher]\n" + line))));
    };
    std::set<std::string> tableKeys, writtenKeys;
    for (const auto& [key, value] : parseIni(writePatcherSettings({})))
        writtenKeys.insert(key);
    for (const SettingKey& k : kSettingKeys) {
        const std::string key(k.key), full = "patcher." + key;
        tableKeys.insert(full);
        EXPECT_EQ(readBack("").at(full), k.defaultText) << key;
        switch (k.kind) {
        case SettingKind::Number:
            EXPECT_EQ(readBack(key + "=" + std::to_string(k.high + 1)).at(full), std::to_string(k.high))
                << key;
            EXPECT_EQ(readBack(key + "=" + std::to_string(k.low - 1)).at(full), std::to_string(k.low)) << key;
            EXPECT_EQ(readBack(key + "=" + std::to_string(k.high)).at(full), std::to_string(k.high)) << key;
            EXPECT_EQ(readBack(key + "=x").at(full), k.defaultText) << key;
            break;
        case SettingKind::Switch:
            EXPECT_EQ(readBack(key + "=maybe").at(full), k.defaultText) << key;
            EXPECT_EQ(readBack(key + "=" + (k.defaultText == "1" ? "hayir" : "evet")).at(full),
                      k.defaultText == "1" ? "0" : "1")
                << key;
            break;
        case SettingKind::Text:
            EXPECT_EQ(readBack(key + "=I\xC5\x9F\xC4\xB1k 2").at(full), "I\xC5\x9F\xC4\xB1k 2") << key;
            break;
        }
    }
    EXPECT_EQ(tableKeys, writtenKeys);
}

} // namespace
} // namespace nv
