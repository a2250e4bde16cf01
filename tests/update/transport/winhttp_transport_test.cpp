// The WinHTTP transport against real servers on 127.0.0.1: nginx as an operator's origin, and the fault
// server for everything a bad network or a bad server does. servers/with_servers.py starts both and passes
// their addresses (NV_FAULT_URL, NV_FAULT_TLS_URL, NV_NGINX_URL) and the folder they serve (NV_SERVED_DIR),
// into which these tests write the files they fetch.

#include "update/win32/winhttp_transport.h"

#include "core/text.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>
#include <vector>

namespace nv::update {
namespace {

using Clock = std::chrono::steady_clock;

constexpr uint64_t kGiB = 1024ull * 1024 * 1024;
constexpr size_t kSmallSize = 300000;
// Written at this offset of a sparse file, so that ranges past 4 GiB read known bytes.
constexpr uint64_t kFarOffset = 4 * kGiB + 12345;
constexpr size_t kFarSize = 65536;
constexpr uint64_t kNoLength = ~0ull;

std::string envText(const char* name) {
    char value[1024];
    DWORD n = GetEnvironmentVariableA(name, value, sizeof(value));
    return n > 0 && n < sizeof(value) ? std::string(value, n) : std::string();
}

struct Served {
    std::string fault, faultTls, nginx;
    Bytes small, farBlock;
};

Served* served = nullptr;

// Writes the files the tests fetch into the servers' folder, once.
class ServersEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        static Served s;
        s.fault = envText("NV_FAULT_URL");
        s.faultTls = envText("NV_FAULT_TLS_URL");
        s.nginx = envText("NV_NGINX_URL");
        std::wstring root = utf8ToWide(envText("NV_SERVED_DIR"));
        ASSERT_FALSE(s.fault.empty() || s.faultTls.empty() || s.nginx.empty() || root.empty())
            << "run through tests/update/servers/with_servers.py";
        s.small = test::noiseBytes(kSmallSize, 19);
        s.farBlock = test::noiseBytes(kFarSize, 20);
        test::writeFile(root + L"\\small.bin", s.small);
        test::writeFile(root + L"\\sub dir\\\u00fc file.bin", s.small);

        HANDLE h = CreateFileW((root + L"\\big.bin").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                               FILE_ATTRIBUTE_NORMAL, nullptr);
        ASSERT_NE(h, INVALID_HANDLE_VALUE);
        LARGE_INTEGER at;
        at.QuadPart = LONGLONG(kFarOffset);
        DWORD written = 0;
        bool ok = SetFilePointerEx(h, at, nullptr, FILE_BEGIN) &&
                  WriteFile(h, s.farBlock.data(), DWORD(s.farBlock.size()), &written, nullptr) &&
                  written == kFarSize;
        CloseHandle(h);
        ASSERT_TRUE(ok);
        served = &s;
    }
};
[[maybe_unused]] const auto* const kEnvironment = ::testing::AddGlobalTestEnvironment(new ServersEnvironment);

// The bytes big.bin holds at [first, first + count): zeros before the written block.
Bytes bigSlice(uint64_t first, uint64_t count) {
    Bytes out(count, 0);
    for (uint64_t i = 0; i < count; ++i) {
        uint64_t at = first + i;
        if (at >= kFarOffset && at < kFarOffset + kFarSize) out[i] = served->farBlock[at - kFarOffset];
    }
    return out;
}

Bytes slice(const Bytes& b, uint64_t first, uint64_t count) {
    return Bytes(b.begin() + first, b.begin() + first + count);
}

// Keeps what arrives; stops after stopAfter bytes; can set a cancel flag on the first piece.
struct Collector : HttpBodySink {
    HttpResponseHead head;
    int heads = 0;
    Bytes body;
    size_t stopAfter = SIZE_MAX;
    std::atomic<bool>* cancelOnData = nullptr;

    bool onHead(const HttpResponseHead& h) override {
        head = h;
        ++heads;
        return true;
    }
    bool onData(const uint8_t* data, size_t size) override {
        body.insert(body.end(), data, data + size);
        if (cancelOnData) *cancelOnData = true;
        return body.size() < stopAfter;
    }
};

std::unique_ptr<HttpTransport> openTransport(uint32_t receiveTimeoutMs = 20000) {
    WinHttpOptions options;
    options.receiveTimeoutMs = receiveTimeoutMs;
    std::wstring error;
    auto t = openWinHttpTransport(options, &error);
    EXPECT_TRUE(t) << wideToUtf8(error);
    return t;
}

TransferResult fetch(HttpTransport& t, const std::string& url, std::optional<ByteRange> range,
                     Collector& sink, bool noCache = false) {
    std::atomic<bool> cancel{false};
    HttpRequest request;
    request.url = url;
    request.range = range;
    request.noCache = noCache;
    return t.get(request, sink, cancel);
}

const char* errorName(TransferError e) {
    static const char* const kNames[] = {"None", "Cancelled", "Stopped",   "Resolve",  "Connect", "Timeout",
                                         "Tls",  "Redirects", "ShortBody", "Protocol", "Other"};
    return kNames[int(e)];
}

// --- Plain fetches, from nginx and from the fault server alike -------------------------------------------

enum class File { Small, Unicode, Big, Missing };

struct FetchCase {
    const char* name;
    File file;
    std::optional<ByteRange> range;
    int status;
};

const FetchCase kFetches[] = {
    {"whole", File::Small, std::nullopt, 200},
    {"middle range", File::Small, ByteRange{1000, 50999}, 206},
    {"last byte", File::Small, ByteRange{kSmallSize - 1, kSmallSize - 1}, 206},
    {"encoded non-ASCII name", File::Unicode, std::nullopt, 200},
    {"range past 4 GiB", File::Big, ByteRange{kFarOffset + 10, kFarOffset + 1009}, 206},
    {"range across a hole into data", File::Big, ByteRange{kFarOffset - 5, kFarOffset + 5}, 206},
    {"range at the very end", File::Big, ByteRange{kFarOffset + kFarSize - 3, kFarOffset + kFarSize - 1},
     206},
    {"missing file", File::Missing, std::nullopt, 404},
};

const char* pathOf(File f) {
    switch (f) {
    case File::Small:
        return "/small.bin";
    case File::Unicode:
        return "/sub%20dir/%C3%BC%20file.bin";
    case File::Big:
        return "/big.bin";
    default:
        return "/missing.bin";
    }
}

TEST(WinHttpTransport, FetchesWholeFilesAndRangesFromBothServers) {
    auto t = openTransport();
    ASSERT_TRUE(t);
    for (const std::string& base : {served->nginx, served->fault}) {
        for (const FetchCase& c : kFetches) {
            SCOPED_TRACE(base + " " + c.name);
            Collector sink;
            std::string url = base + pathOf(c.file);
            TransferResult r = fetch(*t, url, c.range, sink);
            ASSERT_EQ(r.error, TransferError::None) << errorName(r.error) << " " << r.systemCode;
            EXPECT_EQ(r.head.status, c.status);
            EXPECT_EQ(sink.heads, 1);
            EXPECT_EQ(r.head.finalUrl, url);
            EXPECT_EQ(r.bodyBytes, sink.body.size());
            ASSERT_TRUE(r.head.contentLength);
            EXPECT_EQ(*r.head.contentLength, sink.body.size());
            if (c.status == 404) continue;
            uint64_t size = c.file == File::Big ? kFarOffset + kFarSize : kSmallSize;
            ByteRange want = c.range.value_or(ByteRange{0, size - 1});
            Bytes expected = c.file == File::Big ? bigSlice(want.first, want.length())
                                                 : slice(served->small, want.first, want.length());
            EXPECT_TRUE(sink.body == expected);
            if (c.range) {
                ASSERT_TRUE(r.head.contentRange);
                EXPECT_EQ(r.head.contentRange->range, want);
                EXPECT_EQ(r.head.contentRange->total, std::optional<uint64_t>(size));
            } else {
                EXPECT_FALSE(r.head.contentRange);
            }
        }
    }
}

// --- What bad servers do
// -------------------------------------------------------------------------------------

enum class Body { Ignore, Requested, Whole, Shifted, StatusText };

struct FaultCase {
    const char* name;
    const char* faults; // the fault server's path segments before "/small.bin"
    std::optional<ByteRange> range;
    TransferError error;
    int status;
    Body body;
    uint64_t bodyBytes = kNoLength;     // checked when set
    uint64_t contentLength = kNoLength; // kNoLength: none expected
    const char* contentRange = nullptr; // "first-last/total", "" for none
};

const ByteRange kMid{1000, 50999};

const FaultCase kFaults[] = {
    {"200 instead of 206", "/~norange", kMid, TransferError::None, 200, Body::Whole, kSmallSize, kSmallSize,
     ""},
    {"cut range", "/~cut=1000", kMid, TransferError::ShortBody, 206, Body::Ignore, 1000, 50000},
    {"cut whole", "/~cut=1000", std::nullopt, TransferError::ShortBody, 200, Body::Ignore, 1000, kSmallSize},
    {"huge length declared", "/~length=4611686018427387904", std::nullopt, TransferError::ShortBody, 200,
     Body::Ignore, kSmallSize, 4611686018427387904ull},
    {"chunked whole", "/~chunked", std::nullopt, TransferError::None, 200, Body::Whole},
    {"chunked range", "/~chunked", kMid, TransferError::None, 206, Body::Requested, kNoLength, kNoLength,
     "1000-50999/300000"},
    {"close-delimited", "/~close", std::nullopt, TransferError::None, 200, Body::Whole},
    {"close-delimited range cut short", "/~close/~cut=700", kMid, TransferError::ShortBody, 206, Body::Ignore,
     700},
    {"range moved by the server", "/~badrange", kMid, TransferError::None, 206, Body::Shifted, kNoLength,
     50000, "1001-51000/300000"},
    {"other range claimed", "/~crange=bytes%205-9%2F10", kMid, TransferError::None, 206, Body::Requested,
     kNoLength, 50000, "5-9/10"},
    {"unreadable range claimed", "/~crange=bytes%20x", kMid, TransferError::None, 206, Body::Requested,
     kNoLength, 50000, ""},
    {"404", "/~status=404", kMid, TransferError::None, 404, Body::StatusText, 11, 11},
    {"500", "/~status=500", std::nullopt, TransferError::None, 500, Body::StatusText, 11, 11},
    {"503", "/~status=503", kMid, TransferError::None, 503, Body::StatusText, 11, 11},
    {"redirects within the limit", "/~redirect=5", kMid, TransferError::None, 206, Body::Requested, 50000,
     50000, "1000-50999/300000"},
    {"redirect loop", "/~loop", std::nullopt, TransferError::Redirects, 302, Body::Ignore},
    {"redirects past the limit", "/~redirect=6", std::nullopt, TransferError::Redirects, 302, Body::Ignore},
    {"redirect to ftp", "/~location=ftp%3A%2F%2F127.0.0.1%2Fsmall.bin", std::nullopt,
     TransferError::Redirects, 302, Body::Ignore},
    {"redirect to a file URL", "/~location=file%3A%2F%2F%2FC%3A%2Fwindows%2Fwin.ini", std::nullopt,
     TransferError::Redirects, 302, Body::Ignore},
};

TEST(WinHttpTransport, ReportsWhatBadServersDo) {
    auto t = openTransport();
    ASSERT_TRUE(t);
    for (const FaultCase& c : kFaults) {
        SCOPED_TRACE(c.name);
        Collector sink;
        TransferResult r = fetch(*t, served->fault + c.faults + "/small.bin", c.range, sink);
        EXPECT_EQ(r.error, c.error) << errorName(r.error) << " " << r.systemCode;
        EXPECT_EQ(r.head.status, c.status);
        EXPECT_EQ(r.bodyBytes, sink.body.size());
        if (c.bodyBytes != kNoLength) {
            EXPECT_EQ(r.bodyBytes, c.bodyBytes);
        }
        if (c.body != Body::Ignore || c.contentLength != kNoLength) {
            EXPECT_EQ(r.head.contentLength,
                      c.contentLength == kNoLength ? std::nullopt : std::optional<uint64_t>(c.contentLength));
        }
        ByteRange want = c.range.value_or(ByteRange{0, kSmallSize - 1});
        switch (c.body) {
        case Body::Requested:
            EXPECT_TRUE(sink.body == slice(served->small, want.first, want.length()));
            break;
        case Body::Whole:
            EXPECT_TRUE(sink.body == served->small);
            break;
        case Body::Shifted:
            EXPECT_TRUE(sink.body == slice(served->small, want.first + 1, want.length()));
            break;
        case Body::StatusText:
            EXPECT_EQ(test::textOf(sink.body), "status " + std::to_string(c.status) + "\n");
            break;
        case Body::Ignore:
            break;
        }
        if (c.contentRange) {
            std::string text;
            if (r.head.contentRange) {
                const ContentRange& cr = *r.head.contentRange;
                text = std::to_string(cr.range.first) + "-" + std::to_string(cr.range.last) + "/" +
                       (cr.total ? std::to_string(*cr.total) : "*");
            }
            EXPECT_EQ(text, c.contentRange);
        }
        if (c.error == TransferError::Redirects) {
            EXPECT_EQ(sink.heads, 0);
        }
    }
}

TEST(WinHttpTransport, FollowsARedirectToAnotherServerAndNamesTheFinalAddress) {
    auto t = openTransport();
    ASSERT_TRUE(t);
    std::string target = served->nginx + "/small.bin";
    std::string encoded;
    for (char ch : target) {
        if (ch == ':' || ch == '/') {
            char hex[4];
            snprintf(hex, sizeof(hex), "%%%02X", unsigned(static_cast<unsigned char>(ch)));
            encoded += hex;
        } else {
            encoded += ch;
        }
    }
    Collector sink;
    TransferResult r = fetch(*t, served->fault + "/~location=" + encoded + "/small.bin", kMid, sink);
    ASSERT_EQ(r.error, TransferError::None) << errorName(r.error);
    EXPECT_EQ(r.head.status, 206);
    EXPECT_EQ(r.head.finalUrl, target);
    EXPECT_TRUE(sink.body == slice(served->small, kMid.first, kMid.length()));
}

TEST(WinHttpTransport, SendsRangeNoCacheAndItsNameAsTheServerLogShows) {
    auto t = openTransport();
    ASSERT_TRUE(t);
    Collector first, second, log;
    ASSERT_EQ(fetch(*t, served->fault + "/small.bin?tag=nocache", ByteRange{1, 2}, first, true).error,
              TransferError::None);
    ASSERT_EQ(fetch(*t, served->fault + "/small.bin?tag=plain", std::nullopt, second).error,
              TransferError::None);
    ASSERT_EQ(fetch(*t, served->fault + "/_log", std::nullopt, log).error, TransferError::None);
    std::string text = test::textOf(log.body);
    auto record = [&](const std::string& tag) {
        size_t at = text.find("\"query\": \"tag=" + tag + "\"");
        if (at == std::string::npos) return std::string();
        size_t start = text.rfind('\n', at);
        return text.substr(start == std::string::npos ? 0 : start + 1, text.find('\n', at) - start);
    };
    std::string withCache = record("nocache"), plain = record("plain");
    ASSERT_FALSE(withCache.empty() || plain.empty()) << text;
    EXPECT_NE(withCache.find("\"range\": \"bytes=1-2\""), std::string::npos) << withCache;
    EXPECT_NE(withCache.find("\"cache_control\": \"no-cache\""), std::string::npos) << withCache;
    EXPECT_NE(withCache.find("\"pragma\": \"no-cache\""), std::string::npos) << withCache;
    EXPECT_NE(withCache.find("\"user_agent\": \"Norvane"), std::string::npos) << withCache;
    EXPECT_NE(plain.find("\"range\": null"), std::string::npos) << plain;
    EXPECT_NE(plain.find("\"cache_control\": null"), std::string::npos) << plain;
}

TEST(WinHttpTransport, ASinkStopsAnEndlessBody) {
    auto t = openTransport();
    ASSERT_TRUE(t);
    Collector sink;
    sink.stopAfter = 1 << 20;
    TransferResult r = fetch(*t, served->fault + "/~endless/small.bin", std::nullopt, sink);
    EXPECT_EQ(r.error, TransferError::Stopped);
    EXPECT_EQ(r.head.contentLength, std::nullopt);
    EXPECT_GE(r.bodyBytes, sink.stopAfter);
    EXPECT_LT(r.bodyBytes, sink.stopAfter + (1 << 20));
}

// --- Waiting and cancelling (every wait here is bounded by the receive timeout)
// -----------------------------

constexpr uint32_t kShortTimeoutMs = 1500;
constexpr double kSlackSeconds = 8.0; // the machine is shared: only an unbounded wait should fail these

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

TEST(WinHttpTransport, AStalledServerEndsInATimeout) {
    auto t = openTransport(kShortTimeoutMs);
    ASSERT_TRUE(t);
    struct Case {
        const char* faults;
        int status;
        uint64_t bodyBytes;
    };
    for (const Case& c : {Case{"/~stall=30", 0, 0}, Case{"/~stall=30@1000", 200, 1000}}) {
        SCOPED_TRACE(c.faults);
        Collector sink;
        auto start = Clock::now();
        TransferResult r = fetch(*t, served->fault + c.faults + "/small.bin", std::nullopt, sink);
        double seconds = secondsSince(start);
        EXPECT_EQ(r.error, TransferError::Timeout) << errorName(r.error) << " " << r.systemCode;
        EXPECT_NE(r.systemCode, 0u);
        EXPECT_EQ(r.head.status, c.status);
        EXPECT_EQ(r.bodyBytes, c.bodyBytes);
        EXPECT_GE(seconds, kShortTimeoutMs / 1000.0 * 0.8);
        EXPECT_LT(seconds, kShortTimeoutMs / 1000.0 + kSlackSeconds);
    }
}

TEST(WinHttpTransport, CancelStopsATransfer) {
    auto t = openTransport(kShortTimeoutMs);
    ASSERT_TRUE(t);
    HttpRequest request;

    // Set before the call: nothing is fetched.
    std::atomic<bool> cancel{true};
    Collector before;
    request.url = served->fault + "/small.bin";
    EXPECT_EQ(t->get(request, before, cancel).error, TransferError::Cancelled);
    EXPECT_EQ(before.heads, 0);

    // Set while the body flows (300 kB at 100 kB/s): the next piece is not waited for.
    cancel = false;
    Collector flowing;
    flowing.cancelOnData = &cancel;
    request.url = served->fault + "/~rate=100000/small.bin";
    auto start = Clock::now();
    TransferResult r = t->get(request, flowing, cancel);
    EXPECT_EQ(r.error, TransferError::Cancelled);
    EXPECT_LT(r.bodyBytes, kSmallSize);
    EXPECT_LT(secondsSince(start), 2.5);

    // Set from another thread while the server says nothing: over within the receive timeout.
    cancel = false;
    Collector stalled;
    request.url = served->fault + "/~stall=30@10/small.bin";
    std::thread canceller([&] {
        Sleep(300);
        cancel = true;
    });
    start = Clock::now();
    r = t->get(request, stalled, cancel);
    canceller.join();
    EXPECT_EQ(r.error, TransferError::Cancelled) << errorName(r.error);
    EXPECT_LT(secondsSince(start), kShortTimeoutMs / 1000.0 + kSlackSeconds);
}

// --- Failures before any response -------------------------------------------------------------------------

TEST(WinHttpTransport, NamesFailuresBeforeAnyResponse) {
    auto t = openTransport(kShortTimeoutMs);
    ASSERT_TRUE(t);
    struct Case {
        const char* name;
        std::string url;
        TransferError error;
    };
    const Case cases[] = {
        {"untrusted certificate", served->faultTls + "/small.bin", TransferError::Tls},
        {"nobody listening", "http://127.0.0.1:1/small.bin", TransferError::Connect},
        {"unknown host", "http://norvane-test.invalid/small.bin", TransferError::Resolve},
        {"not http", "ftp://127.0.0.1/small.bin", TransferError::Other},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Collector sink;
        TransferResult r = fetch(*t, c.url, std::nullopt, sink);
        EXPECT_EQ(r.error, c.error) << errorName(r.error) << " " << r.systemCode;
        EXPECT_NE(r.systemCode, 0u);
        EXPECT_EQ(r.head.status, 0);
        EXPECT_EQ(sink.heads, 0);
    }
}

// --- One transport, many threads
// ------------------------------------------------------------------------------

TEST(WinHttpTransport, SeveralThreadsShareOneTransport) {
    auto t = openTransport();
    ASSERT_TRUE(t);
    constexpr int kThreads = 8;
    constexpr int kEach = 6;
    std::atomic<int> good{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            for (int j = 0; j < kEach; ++j) {
                // Alternating servers and files; every range differs.
                bool big = (i + j) % 2 == 0;
                std::string base = j % 3 == 0 ? served->fault : served->nginx;
                uint64_t first =
                    big ? kFarOffset + uint64_t(i * 997 + j * 131) : uint64_t(i * 20011 + j * 3001);
                ByteRange range{first, first + 4095 + uint64_t(i * 7)};
                Collector sink;
                TransferResult r = fetch(*t, base + (big ? "/big.bin" : "/small.bin"), range, sink);
                Bytes expected = big ? bigSlice(range.first, range.length())
                                     : slice(served->small, range.first, range.length());
                if (r.error == TransferError::None && r.head.status == 206 && sink.body == expected) ++good;
            }
        });
    }
    for (auto& th : threads)
        th.join();
    EXPECT_EQ(good.load(), kThreads * kEach);
}

} // namespace
} // namespace nv::update
