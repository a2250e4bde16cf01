// The server's configuration, the file list, addresses, and the patcher's own state and resume records: what
// each accepts, what it refuses, and that what it writes reads back.

#include "update/bookkeeping.h"
#include "update/file_list.h"
#include "update/local_state.h"
#include "update/remote_config.h"
#include "update/retry.h"
#include "update/segments.h"
#include "update/url.h"

#include <gtest/gtest.h>

namespace nv::update {
namespace {

TEST(RemoteConfig, ReadsKeyValueLinesFromTheRootText) {
    struct Case {
        const char* name;
        std::string text;
        ConfigError error;
        std::string base = {}, list = {};
        std::optional<uint32_t> listCrc = {}, patcherCrc = {};
        std::string patcherUrl = {};
    };
    const Case cases[] = {
        {"every key, CR LF, spaces, comments, unknown keys",
         "<?xml version=\"1.0\"?>\r\n<config>\r\n# yorum\r\n crcpatch_url = https://cdn.test/c "
         "\r\ncrclist=liste.txt\r\n"
         "crclist_crc32=1a2b3c4d\r\nnv_patcher_url=Kaldra.exe\r\nnv_patcher_crc32=DEADBEEF\r\nnotice=x\r\n"
         "bare line\r\n</config>",
         ConfigError::None, "https://cdn.test/c/", "liste.txt", 0x1A2B3C4D, 0xDEADBEEF,
         "https://cdn.test/c/Kaldra.exe"},
        {"defaults",
         "<c>crcpatch_url=http://h/</c>",
         ConfigError::None,
         "http://h/",
         "crclist.txt",
         {},
         {},
         ""},
        {"a later line wins",
         "<c>crcpatch_url=http://a/\nCRCPATCH_URL=http://b/</c>",
         ConfigError::None,
         "http://b/",
         "crclist.txt",
         {},
         {},
         ""},
        {"absolute patcher address",
         "<c>crcpatch_url=http://h/c/\nnv_patcher_url=https://o/p.exe</c>",
         ConfigError::None,
         "http://h/c/",
         "crclist.txt",
         {},
         {},
         "https://o/p.exe"},
        {"no download address", "<c>crclist=a.txt</c>", ConfigError::NoDownloadUrl},
        {"empty download address", "<c>crcpatch_url=</c>", ConfigError::NoDownloadUrl},
        {"not XML", "crcpatch_url=http://h/", ConfigError::Invalid},
        {"not http", "<c>crcpatch_url=file:///C:/</c>", ConfigError::Invalid},
        {"a query in the base", "<c>crcpatch_url=http://h/?a=1</c>", ConfigError::Invalid},
        {"short CRC", "<c>crcpatch_url=http://h/\ncrclist_crc32=1234</c>", ConfigError::Invalid},
        {"CRC with a sign", "<c>crcpatch_url=http://h/\nnv_patcher_crc32=+1234567</c>", ConfigError::Invalid},
        {"list outside the base", "<c>crcpatch_url=http://h/\ncrclist=../x.txt</c>", ConfigError::Invalid},
        {"too large", "<c>crcpatch_url=http://h/\n" + std::string(kMaxConfigBytes, ' ') + "</c>",
         ConfigError::Invalid},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        RemoteConfig config;
        std::string detail;
        ASSERT_EQ(parseRemoteConfig(c.text, config, detail), c.error) << detail;
        if (c.error != ConfigError::None) continue;
        EXPECT_EQ(config.crcpatchUrl, c.base);
        EXPECT_EQ(config.crclist, c.list);
        EXPECT_EQ(config.crclistCrc32, c.listCrc);
        EXPECT_EQ(config.patcherCrc32, c.patcherCrc);
        EXPECT_EQ(config.patcherUrl, c.patcherUrl);
    }
}

TEST(RemoteConfig, TheNoticeIsOneLineWithEscapedLineBreaks) {
    struct Case {
        const char* line;
        const char* notice;
    };
    const Case cases[] = {
        {"notice=Bakım var.\\nGiriş kapalı.", "Bakım var.\nGiriş kapalı."},
        {"notice=  kenarlar  ", "kenarlar"},
        {"NOTICE=a\\n\\nb", "a\n\nb"},
        {"notice=sonda ters bölü\\", "sonda ters bölü\\"},
        {"notice=\\t kalır", "\\t kalır"},
        {"notice=", ""},
        {"# notice=yorum", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        RemoteConfig config;
        std::string detail;
        ASSERT_EQ(
            parseRemoteConfig(std::string("<c>crcpatch_url=http://h/\n") + c.line + "</c>", config, detail),
            ConfigError::None)
            << detail;
        EXPECT_EQ(config.notice, c.notice);
    }
}

TEST(FileList, RefusesEveryPathThatCouldLeaveTheFolderOrClash) {
    struct Case {
        const char* path;
        bool valid;
    };
    const Case cases[] = {
        {"game.exe", true},
        {"data/harita 1/şehir.pak", true},
        {"a/.hidden/x", true},
        {"", false},
        {"/etc/passwd", false},
        {"../up.dll", false},
        {"data/../../up.dll", false},
        {"data/..", false},
        {"./x", false},
        {"a//b", false},
        {"a/", false},
        {"C:/Windows/x.dll", false},
        {"c:x.dll", false},
        {"data\\x.dll", false},
        {"x.dll:stream", false},
        {"con", false},
        {"data/nul.txt", false},
        {"LPT1.pak", false},
        {"a?.pak", false},
        {"a*.pak", false},
        {"tab\there", false},
        {"trailing.", false},
        {"trailing /x", false},
        {"x.pak.nvpart", false},
        {"norvane.state", false},
        {"Norvane.LOG", false},
        {"norvane.2.log", false},
        {".nvindex/a.idx", false},
        {"\xC3\x28.pak", false},     // not UTF-8
        {"\xED\xA0\x80.pak", false}, // a surrogate in UTF-8
    };
    for (const Case& c : cases) {
        std::string why;
        EXPECT_EQ(isValidListPath(c.path, why), c.valid) << c.path << " " << why;
    }
    std::string why;
    EXPECT_FALSE(isValidListPath(std::string(kMaxListPath + 1, 'a'), why));
}

TEST(FileList, DataLinesAreStrictCommentsAreKept) {
    struct Case {
        const char* name;
        std::string text;
        bool ok;
        size_t files;
    };
    const Case cases[] = {
        {"LF, CR LF, blank lines, comments, BOM",
         "\xEF\xBB\xBF# imza: abc\na.pak\t3\t0000000A\r\n\r\n#chunk x\nb/c d.pak\t0\t00000000\n", true, 2},
        {"no line end at the end", "a\t1\tFFFFFFFF", true, 1},
        {"empty list", "", true, 0},
        {"two fields", "a\t1\n", false, 0},
        {"four fields", "a\t1\t00000000\tx\n", false, 0},
        {"spaces for tabs", "a 1 00000000\n", false, 0},
        {"size with a sign", "a\t+1\t00000000\n", false, 0},
        {"size with a leading zero", "a\t01\t00000000\n", false, 0},
        {"size too large", "a\t99999999999999999\t00000000\n", false, 0},
        {"CRC of seven digits", "a\t1\t0000000\n", false, 0},
        {"CRC not hex", "a\t1\t0000000G\n", false, 0},
        {"the list itself", "CRCLIST.TXT\t1\t00000000\n", false, 0},
        {"twice in another case", "A.pak\t1\t00000000\na.PAK\t1\t00000000\n", false, 0},
        {"a file that is a folder", "a\t1\t00000000\na/b\t1\t00000000\n", false, 0},
        {"a folder that is a file", "a/b\t1\t00000000\nA\t1\t00000000\n", false, 0},
        {"a bad line after good ones", "a\t1\t00000000\n../b\t1\t00000000\n", false, 0},
        {"a line too long", "#" + std::string(kMaxListLine, 'x') + "\n", false, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        FileList list;
        std::string error;
        EXPECT_EQ(parseFileList(c.text, "crclist.txt", list, error), c.ok) << error;
        EXPECT_EQ(list.files.size(), c.files);
    }

    FileList list;
    std::string error;
    ASSERT_TRUE(parseFileList("# s\nş/a b.pak\t123\tdeadBEEF\n", "crclist.txt", list, error));
    EXPECT_EQ(list.comments, std::vector<std::string>{"# s"});
    ASSERT_EQ(list.files.size(), 1u);
    EXPECT_EQ(list.files[0].path, "ş/a b.pak");
    EXPECT_EQ(list.files[0].size, 123u);
    EXPECT_EQ(list.files[0].crc, 0xDEADBEEFu);
    EXPECT_EQ(writeFileList(list), "# s\nş/a b.pak\t123\tDEADBEEF\n");
}

TEST(FileList, AHostileListEndsInAMessageNotInMemory) {
    const std::string line = "f\t1\t00000000\n";
    std::string million;
    million.reserve(line.size() * (kMaxListFiles + 1));
    for (size_t i = 0; i <= kMaxListFiles; ++i)
        million += line;
    FileList list;
    std::string error;
    EXPECT_FALSE(parseFileList(million, "crclist.txt", list, error));
    EXPECT_NE(error.find("cok fazla"), std::string::npos) << error;
    EXPECT_TRUE(list.files.empty());
    EXPECT_FALSE(parseFileList(std::string(kMaxListBytes + 1, '#'), "crclist.txt", list, error));
}

TEST(Url, PathsAreEncodedAndQueriesBustCaches) {
    EXPECT_EQ(percentEncodePath("data/harita 1/şehir+ok.pak"), "data/harita%201/%C5%9Fehir%2Bok.pak");
    EXPECT_EQ(percentEncodePath("a-b_c.~d/%#?"), "a-b_c.~d/%25%23%3F");
    EXPECT_EQ(fileUrl("http://h/c/", "a b"), "http://h/c/a%20b");
    EXPECT_EQ(resolveUrl("http://h/c/", "/p.exe"), "http://h/p.exe");
    EXPECT_EQ(resolveUrl("https://h:8080/c/", "/p.exe"), "https://h:8080/p.exe");
    EXPECT_EQ(resolveUrl("http://h/c/", "x/p.exe"), "http://h/c/x/p.exe");
    EXPECT_EQ(resolveUrl("http://h/c/", "HTTPS://o/p.exe"), "HTTPS://o/p.exe");
    EXPECT_EQ(cacheBusted("http://h/config.xml", 0x1F), "http://h/config.xml?nvt=1f");
    EXPECT_EQ(cacheBusted("http://h/config.php?s=1", 0), "http://h/config.php?s=1&nvt=0");
    for (const char* bad : {"", "http://", "http:///x", "ftp://h/", "http://h/a b", "h/x", "http://h/\x01"})
        EXPECT_FALSE(isHttpUrl(bad)) << bad;
    EXPECT_TRUE(isHttpUrl("HTTPS://h"));
}

TEST(LocalState, ReadsBackWhatItWroteAndDropsWhatItCannotRead) {
    LocalState state;
    state["a b/ş.pak"] = {12, -5, 0xDEADBEEF};
    state["z"] = {0, 1700000000123456789, 0};
    const std::string text = writeLocalState(state);
    const LocalState back = parseLocalState(text);
    ASSERT_EQ(back.size(), 2u);
    EXPECT_EQ(back.at("a b/ş.pak").writeTime, -5);
    EXPECT_EQ(back.at("z").writeTime, 1700000000123456789);
    EXPECT_EQ(back.at("a b/ş.pak").crc, 0xDEADBEEFu);

    const LocalState damaged = parseLocalState(text + "cut\t1\t2\n\tx\ty\tz\nq\t1\t2\t0000000Z\n");
    EXPECT_EQ(damaged.size(), 2u);
    EXPECT_TRUE(parseLocalState("another format\na\t1\t2\t00000000\n").empty());
}

TEST(Segments, RangesCoverTheFileAndOnlyLargeFilesAreSplit) {
    constexpr uint64_t seg = 4 << 20;
    EXPECT_FALSE(isSegmented(2 * seg, seg));
    EXPECT_TRUE(isSegmented(2 * seg + 1, seg));
    EXPECT_EQ(segmentCount(2 * seg + 1, seg), 3u);
    EXPECT_EQ(segmentRange(2 * seg + 1, seg, 2), (ByteRange{2 * seg, 2 * seg}));
    EXPECT_EQ(segmentRange(3 * seg, seg, 2), (ByteRange{2 * seg, 3 * seg - 1}));
    // Offsets above 4 GiB stay exact.
    EXPECT_EQ(segmentRange(uint64_t(5) << 32, seg, 1100).first, uint64_t(1100) * seg);
}

TEST(Segments, AResumeRecordKeepsOnlyWholeLines) {
    const std::string text = resumeHeader(10 << 20, 0xABCDEF01, 4 << 20) + resumeLine(0, 1) +
                             resumeLine(2, 0xFFFFFFFF) + resumeLine(3, 5) + "1 000";
    ResumeRecord record;
    ASSERT_TRUE(parseResumeRecord(text, record));
    EXPECT_EQ(record.size, uint64_t(10) << 20);
    EXPECT_EQ(record.crc, 0xABCDEF01u);
    EXPECT_EQ(record.done, (std::map<size_t, uint32_t>{{0, 1}, {2, 0xFFFFFFFF}})); // 3 is past the file's end
    EXPECT_FALSE(parseResumeRecord("nvresume 1 10 00000000 0\n", record));
    EXPECT_FALSE(parseResumeRecord("nvresume 2 10 00000000 4\n", record));
}

TEST(Retry, PausesGrowAndStayBounded) {
    RetryPolicy policy;
    policy.firstDelay = std::chrono::milliseconds(500);
    policy.maxDelay = std::chrono::milliseconds(3000);
    EXPECT_EQ(policy.delayBefore(2).count(), 500);
    EXPECT_EQ(policy.delayBefore(3).count(), 1000);
    EXPECT_EQ(policy.delayBefore(4).count(), 2000);
    EXPECT_EQ(policy.delayBefore(9).count(), 3000);
    for (int status : {500, 502, 503, 599})
        EXPECT_TRUE(isRetriableStatus(status)) << status;
    for (int status : {200, 301, 400, 403, 404, 408, 429, 600})
        EXPECT_FALSE(isRetriableStatus(status)) << status;
}

} // namespace
} // namespace nv::update
