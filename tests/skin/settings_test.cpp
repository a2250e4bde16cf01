#include "skin/settings.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

// UTF-16 code units as file bytes, with the byte-order mark of the chosen order in front.
Bytes utf16File(std::u16string_view units, bool bigEndian) {
    Bytes out = bigEndian ? Bytes{0xFE, 0xFF} : Bytes{0xFF, 0xFE};
    for (char16_t u : units) {
        const uint8_t hi = uint8_t(u >> 8), lo = uint8_t(u & 0xFF);
        out.push_back(bigEndian ? hi : lo);
        out.push_back(bigEndian ? lo : hi);
    }
    return out;
}

TEST(PatcherSettings, ReadingAppliesDefaultsClampsAndTheIniRules) {
    // switches: close_on_start, auto_start, allow_start_on_error, browser_emulation as '1'/'0'.
    struct Case {
        const char* ini;
        int connections, segmentMb;
        const char* switches;
        const wchar_t* title;
        const wchar_t* runArgs;
    } cases[] = {
        {"", 4, 4, "1001", L"", L""},
        {"[patcher]\nconnections=0", 1, 4, "1001", L"", L""},
        {"[patcher]\nconnections=20", 8, 4, "1001", L"", L""},
        {"[patcher]\nconnections=abc", 4, 4, "1001", L"", L""},
        {"[patcher]\nconnections=-3\nsegment_mb=128", 1, 64, "1001", L"", L""},
        {"[patcher]\nsegment_mb=0", 4, 1, "1001", L"", L""},
        {"[patcher]\nclose_on_start=evet", 4, 4, "1001", L"", L""},
        {"[patcher]\nclose_on_start=yes", 4, 4, "1001", L"", L""},
        {"[patcher]\nclose_on_start=hayir", 4, 4, "0001", L"", L""},
        {"[patcher]\nclose_on_start=maybe\nauto_start=maybe", 4, 4, "1001", L"", L""},
        {"[patcher]\nauto_start=Evet\nallow_start_on_error=on\nbrowser_emulation=0", 4, 4, "1110", L"", L""},
        // Case of names, spaces around '=', CR LF, lone CR and LF line ends.
        {"[ PATCHER ]\r\n  Connections =  6 \r\rSEGMENT_MB\t=\t9\n", 6, 9, "1001", L"", L""},
        {"[patcher]\n; connections=2\n# segment_mb=2\n\n   \nconnections=3", 3, 4, "1001", L"", L""},
        {"connections=2\n[other]\nconnections=3\n[patcher] ; own\nsegment_mb=5", 4, 5, "1001", L"", L""},
        // The last of a repeated key wins; a header without ']' is skipped, so the section goes on.
        {"[patcher]\nconnections=2\nconnections=5\n[other\nsegment_mb=7", 5, 7, "1001", L"", L""},
        {"[patcher]\n=7\nrun_args=-ip=1.2.3.4 ;x #y\ntitle=a=b", 4, 4, "1001", L"a=b", L"-ip=1.2.3.4 ;x #y"},
    };
    for (const Case& c : cases) {
        PatcherSettings expected;
        expected.connections = c.connections;
        expected.segmentMb = c.segmentMb;
        expected.closeOnStart = c.switches[0] == '1';
        expected.autoStart = c.switches[1] == '1';
        expected.allowStartOnError = c.switches[2] == '1';
        expected.browserEmulation = c.switches[3] == '1';
        expected.title = c.title;
        expected.runArgs = c.runArgs;
        EXPECT_TRUE(readPatcherSettingsFile(test::bytesOf(c.ini)) == expected) << '"' << c.ini << '"';
    }
}

TEST(PatcherSettings, WriterProducesExactlyTheFixedLines) {
    PatcherSettings s;
    s.title = L"Kaldra";
    s.connections = 6;
    s.segmentMb = 16;
    s.closeOnStart = false;
    s.autoStart = true;
    s.runArgs = L"-lang tr";
    EXPECT_EQ(writePatcherSettings(s), "; Norvane ayarlari (yapici tarafindan yazilir)\r\n"
                                       "[patcher]\r\n"
                                       "title=Kaldra\r\n"
                                       "connections=6\r\n"
                                       "segment_mb=16\r\n"
                                       "close_on_start=0\r\n"
                                       "auto_start=1\r\n"
                                       "allow_start_on_error=0\r\n"
                                       "browser_emulation=1\r\n"
                                       "run_args=-lang tr\r\n");
    // Out-of-range values are written as given: only the reader clamps.
    s.connections = 12;
    EXPECT_NE(writePatcherSettings(s).find("\r\nconnections=12\r\n"), std::string::npos);
}

TEST(PatcherSettings, WrittenFilesReadBackUnchanged) {
    PatcherSettings turkish;
    turkish.title = L"Kaldra G\u00fcncelleyici \u015e\u0130\u011e \u0131\u00e7\u00f6";
    turkish.runArgs = L"-sunucu=\u00e7ark \U0001F600";
    PatcherSettings flipped;
    flipped.connections = 1;
    flipped.segmentMb = 64;
    flipped.closeOnStart = flipped.browserEmulation = false;
    flipped.autoStart = flipped.allowStartOnError = true;
    for (const PatcherSettings& s : {PatcherSettings{}, turkish, flipped}) {
        const std::string text = writePatcherSettings(s);
        EXPECT_TRUE(readPatcherSettingsFile(test::bytesOf(text)) == s) << text;
    }
    EXPECT_NE(writePatcherSettings(turkish).find("title=Kaldra G\xC3\xBCncelleyici \xC5\x9E\xC4\xB0\xC4\x9E"),
              std::string::npos);
}

TEST(IniText, DropsTheUtf8MarkAndConvertsUtf16WithAMark) {
    const std::string expected = "title=\xC5\x9E\xF0\x9F\x98\x80\r\n"; // U+015E, U+1F600
    const std::u16string units = u"title=\u015e\U0001F600\r\n";
    struct Case {
        Bytes bytes;
        std::string text;
    } cases[] = {
        {test::bytesOf("\xEF\xBB\xBF" + expected), expected},
        {test::bytesOf(expected), expected},
        {utf16File(units, false), expected},
        {utf16File(units, true), expected},
        {test::bytesOf("\xEF\xBB\xBF"), ""},
        {Bytes{0xFF, 0xFE}, ""},
        {Bytes{0xFF, 0xFE, 'a', 0, 0x3D, 0xD8, 'b', 0}, "a\xEF\xBF\xBD"
                                                        "b"}, // lone high surrogate
        {Bytes{0xFE, 0xFF, 0xDC, 0x00}, "\xEF\xBF\xBD"},      // lone low surrogate
        {Bytes{0xFF, 0xFE, 'a', 0, 'b'}, "a"},                // odd byte dropped
        {Bytes{'a', 0, 'b', 0}, std::string("a\0b\0", 4)},    // no mark: bytes as they are
    };
    for (const Case& c : cases)
        EXPECT_EQ(iniText(c.bytes), c.text) << test::textOf(c.bytes);

    for (bool bigEndian : {false, true})
        EXPECT_EQ(readPatcherSettingsFile(utf16File(u"[patcher]\r\ntitle=\u00c7ark\r\n", bigEndian)).title,
                  L"\u00c7ark");
}

} // namespace
} // namespace nv
