#include "packager/signing_readback.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

TEST(SigningReadback, UtcTimesAcrossLeapDaysAndCenturies) {
    const std::pair<int64_t, std::wstring> cases[] = {
        {0, L"1970-01-01 00:00:00 UTC"},          {-1, L"1969-12-31 23:59:59 UTC"},
        {951782400, L"2000-02-29 00:00:00 UTC"},  {1795612263, L"2026-11-25 13:11:03 UTC"},
        {4107542399, L"2100-02-28 23:59:59 UTC"}, {4107542400, L"2100-03-01 00:00:00 UTC"},
    };
    for (const auto& [seconds, text] : cases)
        EXPECT_EQ(utcTimeText(seconds), text) << seconds;
}

std::string der(uint8_t tag, const std::string& body) {
    std::string length = body.size() < 0x80 ? std::string(1, char(body.size()))
                                            : std::string{'\x82', char(body.size() >> 8), char(body.size())};
    return char(tag) + length + body;
}

// A token as time-stamping authorities write it: ContentInfo, SignedData, its content holding the TSTInfo.
std::string token(const std::string& genTime, const std::string& afterTime = "") {
    const std::string oid = der(0x06, "\x2A\x86\x48"), integer = der(0x02, "\x01");
    const std::string tstInfo = der(0x30, integer + oid + der(0x30, der(0x30, "") + der(0x04, "\x11")) +
                                              integer + genTime + afterTime);
    const std::string signedData =
        der(0x30, integer + der(0x31, "") + der(0x30, oid + der(0xA0, der(0x04, tstInfo))) + der(0x31, ""));
    return der(0x30, oid + der(0xA0, signedData));
}

TEST(SigningReadback, TheTimeOfATimestampToken) {
    const std::string generalized = der(0x18, "20261125131103Z");
    const std::string whole = token(generalized);
    const struct {
        std::string bytes;
        bool ok;
        int64_t seconds;
    } cases[] = {
        {whole, true, 1795612263},
        {token(der(0x18, "20000229235959.123Z"), der(0x30, "")), true, 951868799},
        {token(der(0x18, "19700101000000Z") + std::string(200, '\0')), true, 0}, // long-form lengths
        {token(der(0x18, "20261125131103")), false, 0},
        {token(der(0x18, "2026112513110Z")), false, 0},
        {token(der(0x18, "20261325131103Z")), false, 0},
        {token(der(0x18, "2026112513110xZ")), false, 0},
        {token(der(0x18, "20261125131103,5Z")), false, 0},
        {token(der(0x17, "261125131103Z")), false, 0}, // UTCTime is not what a TSTInfo holds
        {token(""), false, 0},
        {whole.substr(0, whole.size() - 1), false, 0},
        {"\x30\x84\xFF\xFF\xFF\xFF", false, 0},
        {"", false, 0},
    };
    for (const auto& c : cases) {
        int64_t seconds = 0;
        EXPECT_EQ(
            timestampTokenTime(reinterpret_cast<const uint8_t*>(c.bytes.data()), c.bytes.size(), seconds),
            c.ok)
            << testing::PrintToString(c.bytes);
        EXPECT_EQ(seconds, c.seconds);
    }
}

} // namespace
} // namespace nv
