#include "packager/pe_image.h"
#include "packager/signing_readback.h"

#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <cstring>

namespace nv {
namespace {

uint32_t get32(const Bytes& b, size_t at) {
    return uint32_t(b[at]) | uint32_t(b[at + 1]) << 8 | uint32_t(b[at + 2]) << 16 | uint32_t(b[at + 3]) << 24;
}
void put32(Bytes& b, size_t at, uint32_t v) {
    for (int i = 0; i < 4; ++i)
        b[at + i] = uint8_t(v >> (8 * i));
}
void put16(Bytes& b, size_t at, uint32_t v) {
    b[at] = uint8_t(v);
    b[at + 1] = uint8_t(v >> 8);
}

// A PE32+ image: headers in 0x200 bytes, .text at 0x200 and .rsrc at 0x400 (0x200 bytes each), the resource
// section holding a three-level directory with time stamps set.
constexpr size_t kPe = 0x80, kOptional = kPe + 24, kSections = kOptional + 0xF0, kRsrc = 0x400;
constexpr size_t kCertEntry = kOptional + 112 + 8 * 4;

Bytes makePe() {
    Bytes b(0x600, 0);
    b[0] = 'M';
    b[1] = 'Z';
    put32(b, 0x3C, kPe);
    std::memcpy(&b[kPe], "PE\0\0", 4);
    put16(b, kPe + 4, 0x8664);
    put16(b, kPe + 6, 2);
    put32(b, kPe + 8, 0x12345678);
    put16(b, kPe + 20, 0xF0);
    put16(b, kOptional, 0x20B);
    put32(b, kOptional + 60, 0x200);
    put32(b, kOptional + 108, 16);
    put32(b, kOptional + 112 + 8 * 2, 0x2000);
    put32(b, kOptional + 112 + 8 * 2 + 4, 0x60);
    const uint32_t sections[2][4] = {{0x100, 0x1000, 0x200, 0x200}, {0x100, 0x2000, 0x200, 0x400}};
    for (size_t i = 0; i < 2; ++i)
        for (size_t f = 0; f < 4; ++f)
            put32(b, kSections + 40 * i + 8 + 4 * f, sections[i][f]);
    for (size_t i = 0; i < 0x200; ++i)
        b[0x200 + i] = uint8_t(i * 7);
    // Root -> type 10 -> name 900 -> language 0 -> data entry.
    for (size_t dir : {0x00, 0x18, 0x30}) {
        put32(b, kRsrc + dir + 4, 0xDEADBEEF);
        put16(b, kRsrc + dir + 14, 1);
    }
    put32(b, kRsrc + 0x10, 10);
    put32(b, kRsrc + 0x14, 0x80000018);
    put32(b, kRsrc + 0x28, 900);
    put32(b, kRsrc + 0x2C, 0x80000030);
    put32(b, kRsrc + 0x44, 0x48);
    put32(b, kRsrc + 0x48, 0x2058);
    put32(b, kRsrc + 0x4C, 4);
    return b;
}

PeLayout layoutOf(const Bytes& b) {
    PeLayout layout;
    EXPECT_TRUE(readPeLayout(b, layout));
    return layout;
}

// The image with bytes appended and, when certSize is not 0, a certificate table after them (padded to eight
// bytes first, as signers do).
Bytes withTail(Bytes b, const Bytes& overlay, uint32_t certSize) {
    b.insert(b.end(), overlay.begin(), overlay.end());
    if (certSize) {
        b.resize((b.size() + 7) & ~size_t(7), 0);
        put32(b, kCertEntry, uint32_t(b.size()));
        put32(b, kCertEntry + 4, certSize);
        Bytes cert = test::noiseBytes(certSize, 5);
        b.insert(b.end(), cert.begin(), cert.end());
    }
    return b;
}

// The checksum as the usual description computes it: word by word, folding each carry at once.
uint32_t referenceChecksum(const Bytes& b, size_t field) {
    uint32_t sum = 0;
    for (size_t i = 0; i < b.size(); i += 2) {
        uint32_t lo = i >= field && i < field + 4 ? 0 : b[i];
        uint32_t hi = i + 1 >= b.size() || (i + 1 >= field && i + 1 < field + 4) ? 0 : b[i + 1];
        sum += lo | hi << 8;
        sum = (sum & 0xFFFF) + (sum >> 16);
    }
    return ((sum & 0xFFFF) + (sum >> 16)) + uint32_t(b.size());
}

TEST(PeImage, ChecksumMatchesTheWordByWordSum) {
    for (size_t size : {0, 1, 2, 3, 101, 4097, 70000}) {
        const Bytes b = test::noiseBytes(size, uint32_t(size) + 1);
        for (size_t field : {size_t(0), size_t(1), size_t(64), size_t(65), size > 4 ? size - 4 : 0, size + 8})
            EXPECT_EQ(peChecksum(b.data(), b.size(), field), referenceChecksum(b, field))
                << "size " << size << ", field " << field;
    }
    const Bytes ones(0x20000, 0xFF); // every carry folds back
    EXPECT_EQ(peChecksum(ones.data(), ones.size(), 8), referenceChecksum(ones, 8));
}

TEST(PeImage, FinishingAnUpdatedImage) {
    Bytes original = withTail(makePe(), test::noiseBytes(3000, 8), 0x200);
    put32(original, kPe + 12, 0x600 + 1000); // a symbol table inside the overlay
    const PeTail tail = readPeTail(original, layoutOf(original));
    ASSERT_TRUE(tail.hasSymbols);

    Bytes written;
    ASSERT_TRUE(cutPeTail(original, layoutOf(original), written));
    put32(written, kPe + 8, 0x7FFFFFFF);     // the writer's clock
    written.insert(written.end(), 77, 0xEE); // left behind by the writer

    ASSERT_TRUE(finishPeImage(written, tail));
    ASSERT_EQ(written.size(), 0x600 + tail.overlay.size());
    EXPECT_TRUE(std::equal(tail.overlay.begin(), tail.overlay.end(), written.begin() + 0x600));
    EXPECT_EQ(get32(written, kPe + 8), 0x12345678u);
    EXPECT_EQ(get32(written, kPe + 12), 0x600u + 1000);
    for (size_t dir : {0x00, 0x18, 0x30})
        EXPECT_EQ(get32(written, kRsrc + dir + 4), 0u) << dir;
    EXPECT_EQ(get32(written, kCertEntry + 4), 0u);
    EXPECT_EQ(get32(written, kOptional + 64), referenceChecksum(written, kOptional + 64));

    Bytes notPe = test::bytesOf("MZ but nothing else");
    EXPECT_FALSE(finishPeImage(notPe, tail));
}

// Where a signer's PKCS #7 lies: the first WIN_CERTIFICATE of the table that the security directory points
// at.
TEST(PeImage, SignatureSpanInTheCertificateTable) {
    struct Case {
        uint32_t tableAt, tableSize, length, revisionAndType;
        PeSignatureState state;
    } cases[] = {
        {0, 0, 0, 0, PeSignatureState::Unsigned},
        {0x600, 0x110, 0x108, 0x00020200, PeSignatureState::Found},
        {0x600, 0x110, 0x110, 0x00020100, PeSignatureState::Found},     // the old revision, no padding
        {0x600, 0x110, 0x108, 0x00010200, PeSignatureState::Malformed}, // an X.509 entry, not PKCS #7
        {0x600, 0x110, 0x108, 0x00020300, PeSignatureState::Malformed},
        {0x600, 0x110, 0x111, 0x00020200, PeSignatureState::Malformed}, // longer than the table
        {0x600, 0x110, 8, 0x00020200, PeSignatureState::Malformed},     // a header with nothing in it
        {0x600, 0x111, 0x108, 0x00020200, PeSignatureState::Malformed}, // a table past the end of the file
        {0xFFFFFFF0, 0x20, 0x18, 0x00020200, PeSignatureState::Malformed},
        {0x600, 4, 0x108, 0x00020200, PeSignatureState::Malformed},
    };
    for (const Case& c : cases) {
        Bytes image = makePe();
        image.resize(0x710, 0);
        put32(image, kCertEntry, c.tableAt);
        put32(image, kCertEntry + 4, c.tableSize);
        put32(image, 0x600, c.length);
        put32(image, 0x604, c.revisionAndType);
        PeSignatureSpan span;
        EXPECT_EQ(findPeSignature(image.data(), image.size(), span), c.state)
            << std::hex << c.tableAt << " " << c.length;
        if (c.state == PeSignatureState::Found) {
            EXPECT_EQ(span.offset, 0x608u);
            EXPECT_EQ(span.size, c.length - 8u);
        }
    }
    PeSignatureSpan span;
    const Bytes notPe = test::bytesOf("ZM");
    EXPECT_EQ(findPeSignature(notPe.data(), notPe.size(), span), PeSignatureState::NotPe);
}

} // namespace
} // namespace nv
