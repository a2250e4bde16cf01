// The signature read back through crypt32 from files that osslsigncode signed (make_signing_fixtures.py): the
// subject and thumbprint OpenSSL saw, and each kind of time stamp with a time from the moment of signing.

#include "packager/signing.h"
#include "core/text.h"
#include "tests/packager/win32/build_fixtures.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

TEST(SigningReadbackWin32, WhatOsslsigncodeWroteIsReadBack) {
    const test::SignedFixtures fixtures = test::signedFixtures();
    const struct {
        const wchar_t* name;
        TimestampKind timestamp;
        std::wstring failure;
    } cases[] = {
        {L"signed.exe", TimestampKind::None, L""},
        {L"signed-rfc3161.exe", TimestampKind::Rfc3161, L""},
        {L"signed-authenticode.exe", TimestampKind::Authenticode, L""},
        {L"unsigned.exe", TimestampKind::None, L"İmzalama başarılı göründü ama dosyada imza yok."},
        {L"expected.txt", TimestampKind::None, L"İmzalanan dosya geçerli bir exe değil."},
        {L"yok.exe", TimestampKind::None, L"İmzalanan dosya okunamadı: "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(wideToUtf8(c.name));
        SignatureInfo info;
        std::wstring message;
        EXPECT_EQ(readSignature(test::buildFixture(std::wstring(L"signed\\") + c.name), info, message),
                  c.failure.empty());
        EXPECT_EQ(message.substr(0, c.failure.size()), c.failure);
        if (!c.failure.empty()) continue;
        EXPECT_EQ(info.subject, fixtures.subject);
        EXPECT_EQ(info.thumbprint, fixtures.thumbprint);
        EXPECT_EQ(info.timestamp, c.timestamp);
        if (c.timestamp == TimestampKind::None) {
            EXPECT_EQ(info.timestampTime, 0);
        } else {
            const auto [before, after] = fixtures.stampedBetween.at(c.name);
            EXPECT_GE(info.timestampTime, before);
            EXPECT_LE(info.timestampTime, after);
        }
    }
}

// Damage inside the PKCS #7 (its table intact) is reported as an unreadable signature, never taken for one.
TEST(SigningReadbackWin32, ADamagedSignatureIsRefused) {
    test::TempDir dir;
    Bytes bytes = test::readFile(test::buildFixture(L"signed\\signed.exe"));
    PeSignatureSpan span;
    ASSERT_EQ(findPeSignature(bytes.data(), bytes.size(), span), PeSignatureState::Found);
    for (size_t i = 0; i < 64; ++i)
        bytes[span.offset + i] ^= 0x5A;
    const std::wstring file = dir.file(L"bozuk.exe");
    test::writeFile(file, bytes);
    SignatureInfo info;
    std::wstring message;
    EXPECT_FALSE(readSignature(file, info, message));
    EXPECT_EQ(message.rfind(L"Dosyadaki imza okunamadı: ", 0), 0u) << wideToUtf8(message);
}

// The operator's own tool is not asked for a time stamp, so a signature without one is pointed out.
TEST(SigningReadbackWin32, ASignatureWithoutTimestampFromTheOperatorsCommandIsPointedOut) {
    const std::wstring warning =
        L"UYARI: imzada zaman damgası yok; imza sertifika süresi bitince geçersiz sayılır.";
    const struct {
        SigningSource source;
        const wchar_t* file;
        std::vector<std::wstring> lines;
    } cases[] = {
        {SigningSource::Command, L"signed.exe", {warning}},
        {SigningSource::Command, L"signed-rfc3161.exe", {}},
        {SigningSource::PfxFile, L"signed.exe", {}},
    };
    for (const auto& c : cases) {
        SigningOptions options;
        options.source = c.source;
        SignatureInfo info;
        std::wstring message;
        std::vector<std::wstring> lines;
        EXPECT_TRUE(confirmSignature(options, test::buildFixture(std::wstring(L"signed\\") + c.file),
                                     test::collectLine, &lines, info, message));
        EXPECT_EQ(lines, c.lines);
    }
}

} // namespace
} // namespace nv
