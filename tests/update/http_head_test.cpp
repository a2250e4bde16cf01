#include "update/http_head.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace nv::update {
namespace {

constexpr uint64_t kNone = ~0ull; // "absent" in the tables below

std::optional<uint64_t> opt(uint64_t v) {
    return v == kNone ? std::nullopt : std::optional<uint64_t>(v);
}

struct HeadCase {
    const char* name;
    const char* raw;
    bool ok;
    int status = 0;
    uint64_t contentLength = kNone;
    bool chunked = false;
    uint64_t rangeFirst = kNone; // kNone: no Content-Range parsed
    uint64_t rangeLast = 0;
    uint64_t total = kNone;
    const char* location = nullptr;
};

const HeadCase kHeads[] = {
    {"plain", "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n", true, 200, 5},
    {"range past 4 GiB",
     "HTTP/1.1 206 Partial Content\r\nContent-Length: 100\r\n"
     "Content-Range: bytes 5000000000-5000000099/6000000000\r\n\r\n",
     true, 206, 100, false, 5000000000ull, 5000000099ull, 6000000000ull},
    {"unknown total", "HTTP/1.1 206 P\r\nContent-Range: bytes 0-9/*\r\n\r\n", true, 206, kNone, false, 0, 9},
    {"names in any case, LF only", "HTTP/1.0 404 Not Found\ncontent-LENGTH:  9 \n\n", true, 404, 9},
    {"no reason phrase", "HTTP/1.1 503\r\n\r\n", true, 503},
    {"no blank line", "HTTP/1.1 200 OK\r\nContent-Length: 1", true, 200, 1},
    {"nothing after the blank line counts", "HTTP/1.1 200 OK\r\n\r\nContent-Length: 7\r\n", true, 200},
    {"chunked drops Content-Length",
     "HTTP/1.1 200 OK\r\nContent-Length: 5\r\nTransfer-Encoding: chunked\r\n\r\n", true, 200, kNone, true},
    {"same length twice", "HTTP/1.1 200 OK\r\nContent-Length: 5\r\nContent-Length: 5\r\n\r\n", true, 200, 5},
    {"same length as a list", "HTTP/1.1 200 OK\r\nContent-Length: 5, 5\r\n\r\n", true, 200, 5},
    {"largest length", "HTTP/1.1 200 OK\r\nContent-Length: 9223372036854775807\r\n\r\n", true, 200,
     9223372036854775807ull},
    {"folded line", "HTTP/1.1 302 Found\r\nLocation: /a\r\n  b\r\n\r\n", true, 302, kNone, false, kNone, 0,
     kNone, "/a b"},
    {"location", "HTTP/1.1 301 Moved\r\nLocation: http://h/x\r\nLocation: http://h/x\r\n\r\n", true, 301,
     kNone, false, kNone, 0, kNone, "http://h/x"},
    {"unparsable range left out", "HTTP/1.1 206 P\r\nContent-Range: bytes 9-1/20\r\n\r\n", true, 206},

    {"lengths that disagree", "HTTP/1.1 200 OK\r\nContent-Length: 5\r\nContent-Length: 6\r\n\r\n", false},
    {"list that disagrees", "HTTP/1.1 200 OK\r\nContent-Length: 5, 6\r\n\r\n", false},
    {"negative length", "HTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\n", false},
    {"length past 63 bits", "HTTP/1.1 200 OK\r\nContent-Length: 9223372036854775808\r\n\r\n", false},
    {"length past 64 bits", "HTTP/1.1 200 OK\r\nContent-Length: 99999999999999999999999\r\n\r\n", false},
    {"empty length", "HTTP/1.1 200 OK\r\nContent-Length:\r\n\r\n", false},
    {"two ranges", "HTTP/1.1 206 P\r\nContent-Range: bytes 0-1/9\r\nContent-Range: bytes 2-3/9\r\n\r\n",
     false},
    {"two locations", "HTTP/1.1 302 F\r\nLocation: /a\r\nLocation: /b\r\n\r\n", false},
    {"short status", "HTTP/1.1 20 OK\r\n\r\n", false},
    {"long status", "HTTP/1.1 2000 OK\r\n\r\n", false},
    {"status from zero", "HTTP/1.1 099 X\r\n\r\n", false},
    {"not HTTP", "ICY 200 OK\r\n\r\n", false},
    {"empty", "", false},
    {"line without colon", "HTTP/1.1 200 OK\r\nContent-Length 5\r\n\r\n", false},
    {"space before colon", "HTTP/1.1 200 OK\r\nContent-Length : 5\r\n\r\n", false},
    {"fold before any header", "HTTP/1.1 200 OK\r\n x\r\n\r\n", false},
};

TEST(HttpHead, ParsesHeadsAndRefusesContradictions) {
    for (const HeadCase& c : kHeads) {
        SCOPED_TRACE(c.name);
        ParsedHead parsed;
        ASSERT_EQ(parseResponseHead(c.raw, parsed), c.ok);
        if (!c.ok) continue;
        EXPECT_EQ(parsed.head.status, c.status);
        EXPECT_EQ(parsed.head.contentLength, opt(c.contentLength));
        EXPECT_EQ(parsed.chunked, c.chunked);
        if (c.rangeFirst == kNone) {
            EXPECT_FALSE(parsed.head.contentRange);
        } else {
            ASSERT_TRUE(parsed.head.contentRange);
            EXPECT_EQ(parsed.head.contentRange->range, (ByteRange{c.rangeFirst, c.rangeLast}));
            EXPECT_EQ(parsed.head.contentRange->total, opt(c.total));
        }
        EXPECT_EQ(parsed.location, c.location ? std::optional<std::string>(c.location) : std::nullopt);
    }
}

TEST(HttpHead, ContentRangeForms) {
    struct Case {
        const char* value;
        bool ok;
        uint64_t first = 0, last = 0, total = kNone;
    };
    const Case cases[] = {
        {"bytes 0-0/1", true, 0, 0, 1},
        {"BYTES  7-9/*", true, 7, 9},
        {"bytes 0-9223372036854775806/9223372036854775807", true, 0, 9223372036854775806ull,
         9223372036854775807ull},
        {"bytes 1-2/2", false}, // last at the total
        {"bytes 2-1/5", false},
        {"bytes */5", false}, // the form of a 416, no range
        {"items 1-2/3", false},
        {"bytes 1-2", false},
        {"bytes -1-2/3", false},
        {"bytes 1-2/3x", false},
        {"bytes 1 - 2/3", false},
        {"bytes 0-9223372036854775808/*", false},
        {"bytes1-2/3", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.value);
        auto cr = parseContentRange(c.value);
        ASSERT_EQ(cr.has_value(), c.ok);
        if (!c.ok) continue;
        EXPECT_EQ(cr->range, (ByteRange{c.first, c.last}));
        EXPECT_EQ(cr->total, opt(c.total));
    }
}

TEST(HttpHead, PromisedBodyLength) {
    struct Case {
        const char* raw;
        uint64_t promised;
    };
    const Case cases[] = {
        {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n", 10},
        {"HTTP/1.1 200 OK\r\n", kNone}, // ends when the connection closes
        {"HTTP/1.1 206 P\r\nContent-Range: bytes 5-9/20\r\n", 5},
        {"HTTP/1.1 206 P\r\nContent-Length: 3\r\nContent-Range: bytes 5-9/20\r\n", 3}, // the engine judges
        {"HTTP/1.1 206 P\r\nTransfer-Encoding: chunked\r\nContent-Range: bytes 5-9/20\r\n", kNone},
        {"HTTP/1.1 404 Not Found\r\nContent-Length: 9\r\n", 9},
        {"HTTP/1.1 204 No Content\r\nContent-Length: 9\r\n", 0},
        {"HTTP/1.1 304 Not Modified\r\nContent-Length: 9\r\n", 0},
        {"HTTP/1.1 101 Switching\r\n", 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.raw);
        ParsedHead parsed;
        ASSERT_TRUE(parseResponseHead(c.raw, parsed));
        EXPECT_EQ(promisedBodyLength(parsed), opt(c.promised));
    }
}

TEST(HttpHead, ResolvesLocations) {
    struct Case {
        const char* base;
        const char* location;
        const char* expected; // null: refused
    };
    const char* base = "http://h:8080/a/b/c.bin?x=1";
    const Case cases[] = {
        {base, "http://other/x", "http://other/x"},
        {base, "HTTPS://Other/x?y", "https://Other/x?y"},
        {base, "//cdn.example/p", "http://cdn.example/p"},
        {base, "/z/y", "http://h:8080/z/y"},
        {base, "?q=2", "http://h:8080/a/b/c.bin?q=2"},
        {base, "d.bin", "http://h:8080/a/b/d.bin"},
        {base, "../d.bin", "http://h:8080/a/d.bin"},
        {base, "../../../../d", "http://h:8080/d"},
        {base, "./d#part", "http://h:8080/a/b/d"},
        {base, "  /t  ", "http://h:8080/t"},
        {base, "", "http://h:8080/a/b/c.bin?x=1"},
        {base, "/a b/\xC3\xBC\"", "http://h:8080/a%20b/%C3%BC%22"},
        {base, "/already%20encoded", "http://h:8080/already%20encoded"},
        {base, "http://h/x/../../y/.", "http://h/y/"},
        {"https://h", "x", "https://h/x"},
        {"http://[::1]:80/a", "b", "http://[::1]:80/b"},
        {base, "ftp://h/x", nullptr},
        {base, "file:///etc/passwd", nullptr},
        {base, "javascript:alert(1)", nullptr},
        {base, "http://", nullptr},
        {base, "http:x", nullptr},
        {base, "http://user@/x", nullptr},
        {"not a url", "/x", nullptr},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.base) + " + " + c.location);
        std::string out;
        ASSERT_EQ(resolveLocation(c.base, c.location, out), c.expected != nullptr);
        if (c.expected) {
            EXPECT_EQ(out, c.expected);
        }
    }
}

} // namespace
} // namespace nv::update
