// The signed list and the update key files: what they accept, what they refuse, and the order in which a
// patcher with keys judges a list. The signature itself is checked here by a stand-in; the system's ECDSA is
// checked against a referee under Wine.

#include "core/crc32.h"
#include "update/bookkeeping.h"
#include "update/signed_list.h"
#include "update/update_key.h"

#include <gtest/gtest.h>

namespace nv::update {
namespace {

// "Signs" by mixing the key into the data's CRC-32: enough to tell keys and bytes apart in rule tests.
class StandInCrypto final : public Crypto {
public:
    static Signature mark(const PublicKey& key, const uint8_t* data, size_t size) {
        const uint32_t crc = Crc32::of(data, size);
        Signature s;
        for (size_t i = 0; i < s.size(); ++i)
            s[i] = uint8_t(key[i] ^ (crc >> (8 * (i % 4))));
        return s;
    }
    std::unique_ptr<Sha256> sha256() override { return nullptr; }
    bool generate(PrivateKey&, std::string&) override { return false; }
    bool sign(const PrivateKey& key, const uint8_t* data, size_t size, Signature& s, std::string&) override {
        s = mark(key.publicKey, data, size);
        return true;
    }
    bool verify(const PublicKey& key, const uint8_t* data, size_t size, const Signature& s) override {
        return s == mark(key, data, size);
    }
};

PublicKey keyOf(uint8_t seed) {
    PublicKey key;
    for (size_t i = 0; i < key.size(); ++i)
        key[i] = uint8_t(seed + i * 7);
    return key;
}

Sha256Digest digestOf(uint8_t seed) {
    Sha256Digest d;
    d.fill(seed);
    return d;
}

constexpr int64_t kExpiry = 1798761599; // 2026-12-31T23:59:59Z

std::string body(uint64_t version = 7, int64_t expires = kExpiry) {
    FileList list;
    list.files = {{"Kaldra.exe", 3, 0x1A2B3C4D}, {"data/harita 1/şehir.pak", 10, 0xDEADBEEF}};
    list.comments = {"#nvindex\tdata/harita 1/şehir.pak\t99\t00"};
    return signedListBody(list, version, expires,
                          {{"Kaldra.exe", digestOf(1)}, {"data/harita 1/şehir.pak", digestOf(2)}});
}

std::string signedBy(const PublicKey& key, const std::string& text) {
    return text + signatureLine(
                      StandInCrypto::mark(key, reinterpret_cast<const uint8_t*>(text.data()), text.size()));
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

TEST(SignedList, ReadsWhatItWrites) {
    const std::string text = signedBy(keyOf(1), body());
    FileList list;
    SignedList info;
    std::string error;
    ASSERT_TRUE(parseSignedList(text, "crclist.txt", list, info, error)) << error;
    EXPECT_EQ(info.version, 7u);
    EXPECT_EQ(info.expires, kExpiry);
    EXPECT_EQ(info.signedSize, body().size());
    EXPECT_EQ(info.sha256.at("data/harita 1/şehir.pak"), digestOf(2));
    ASSERT_EQ(list.files.size(), 2u);
    EXPECT_EQ(list.files[1].crc, 0xDEADBEEFu);
    // A reader that knows nothing of signatures still reads the same files.
    FileList plain;
    ASSERT_TRUE(parseFileList(text, "crclist.txt", plain, error)) << error;
    EXPECT_EQ(plain.files.size(), 2u);
}

TEST(SignedList, RefusesMalformedFields) {
    const std::string good = body();
    const std::string sig = signatureLine(Signature{});
    struct Case {
        const char* name;
        std::string text;
    };
    const std::string line = "#nvsha256\tKaldra.exe\t" + std::string(64, '1') + "\n";
    const Case cases[] = {
        {"no signature line at all", good},
        {"signature without its line end", good + sig.substr(0, sig.size() - 1)},
        {"signature line ending in CR LF", good + sig.substr(0, sig.size() - 1) + "\r\n"},
        {"a line after the signature", good + sig + "Yeni.exe\t1\t00000000\n"},
        {"a comment after the signature", good + sig + "# sonra\n"},
        {"two signature lines", good + sig + sig},
        {"signature in the middle", sig + good + sig},
        {"signature of 127 digits", good + "#nvsignature\t" + std::string(127, 'a') + "\n"},
        {"signature not hex", good + "#nvsignature\t" + std::string(127, 'a') + "g\n"},
        {"second version", "#nvversion\t8\n" + good + sig},
        {"second expiry", "#nvexpires\t2026-01-01T00:00:00Z\n" + good + sig},
        {"second hash of a file", line + good + sig},
        {"no version", replaced(good, "#nvversion\t7\n", "") + sig},
        {"no expiry", replaced(good, "#nvexpires\t2026-12-31T23:59:59Z\n", "") + sig},
        {"version with a space", replaced(good, "#nvversion\t7", "#nvversion 7") + sig},
        {"version 0", replaced(good, "#nvversion\t7", "#nvversion\t0") + sig},
        {"version with a leading zero", replaced(good, "#nvversion\t7", "#nvversion\t07") + sig},
        {"version of 19 digits", replaced(good, "#nvversion\t7", "#nvversion\t1000000000000000000") + sig},
        {"expiry on 29 February 2026", replaced(good, "2026-12-31", "2026-02-29") + sig},
        {"expiry in month 13", replaced(good, "2026-12-31", "2026-13-01") + sig},
        {"expiry at 24:00", replaced(good, "23:59:59Z", "24:00:00Z") + sig},
        {"expiry without Z", replaced(good, "23:59:59Z", "23:59:59+") + sig},
        {"expiry before 1970", replaced(good, "2026-12-31", "1969-12-31") + sig},
        {"hash of 63 digits",
         replaced(good, hexText(digestOf(1).data(), 32), hexText(digestOf(1).data(), 32).substr(1)) + sig},
        {"a listed file without its hash", good + "Yeni.exe\t1\t00000000\n" + sig},
        {"hash of a path the list does not hold",
         "#nvsha256\tbaska.exe\t" + std::string(64, '1') + "\n" + good + sig},
        {"a bad data line in the signed part", good + "Yeni.exe\t1\n" + sig},
    };
    for (const Case& c : cases) {
        FileList list;
        SignedList info;
        std::string error;
        EXPECT_FALSE(parseSignedList(c.text, "crclist.txt", list, info, error)) << c.name;
        EXPECT_FALSE(error.empty()) << c.name;
        EXPECT_TRUE(list.files.empty()) << c.name;
    }
}

TEST(SignedList, TakesHashesOfChunkIndexesAndRefusesEveryTruncation) {
    const std::string text =
        signedBy(keyOf(1), "#nvsha256\t.nvindex/00ff.nvx\t" + std::string(64, 'a') + "\n" + body());
    FileList list;
    SignedList info;
    std::string error;
    ASSERT_TRUE(parseSignedList(text, "crclist.txt", list, info, error)) << error;
    EXPECT_EQ(info.sha256.size(), 3u);
    for (size_t size = 0; size < text.size(); ++size)
        ASSERT_FALSE(
            parseSignedList(std::string_view(text).substr(0, size), "crclist.txt", list, info, error))
            << "cut at " << size;
}

TEST(SignedList, JudgesSignatureThenExpiryThenVersion) {
    StandInCrypto crypto;
    const PublicKey oldKey = keyOf(1), newKey = keyOf(2), stranger = keyOf(3);
    const std::string good = signedBy(newKey, body(7));
    struct Case {
        const char* name;
        std::string text;
        std::vector<PublicKey> keys;
        int64_t now;
        uint64_t highest;
        ListVerdict verdict;
    };
    const Case cases[] = {
        {"signed, in time, newer", good, {newKey}, kExpiry - 100, 6, ListVerdict::Accepted},
        {"the same version again", good, {newKey}, kExpiry - 100, 7, ListVerdict::Accepted},
        {"the last second", good, {newKey}, kExpiry, 0, ListVerdict::Accepted},
        {"the new key beside the old one", good, {oldKey, newKey}, 0, 0, ListVerdict::Accepted},
        {"unsigned", body(7), {newKey}, 0, 0, ListVerdict::Unsigned},
        {"a misplaced signature", good + "x\t1\t00000000\n", {newKey}, 0, 0, ListVerdict::Invalid},
        {"another key", signedBy(stranger, body(7)), {oldKey, newKey}, 0, 0, ListVerdict::BadSignature},
        {"no key at all", good, {}, 0, 0, ListVerdict::BadSignature},
        {"a changed line under the old signature",
         replaced(good, "Kaldra.exe\t3\t1A2B3C4D", "Kaldra.exe\t3\t1A2B3C4E"),
         {newKey},
         0,
         0,
         ListVerdict::BadSignature},
        {"expired", good, {newKey}, kExpiry + 1, 0, ListVerdict::Expired},
        {"older than one accepted", good, {newKey}, 0, 8, ListVerdict::Rollback},
        // An attacker's expired or old list is refused for its signature first, so the log says "forged".
        {"expired and forged",
         signedBy(stranger, body(7, 0)),
         {newKey},
         kExpiry,
         0,
         ListVerdict::BadSignature},
    };
    for (const Case& c : cases) {
        FileList list;
        SignedList info;
        std::string detail;
        EXPECT_EQ(
            checkSignedList(c.text, "crclist.txt", c.keys, crypto, c.now, c.highest, list, info, detail),
            c.verdict)
            << c.name << ": " << detail;
        EXPECT_EQ(list.files.empty(), c.verdict == ListVerdict::Unsigned || c.verdict == ListVerdict::Invalid)
            << c.name;
    }
}

TEST(SignedList, AnyChangedByteBreaksTheSignature) {
    StandInCrypto crypto;
    const std::string good = signedBy(keyOf(1), body());
    const size_t signedSize = body().size();
    for (size_t at = 0; at < signedSize; ++at) {
        std::string changed = good;
        changed[at] ^= 0x01;
        FileList list;
        SignedList info;
        std::string detail;
        EXPECT_NE(checkSignedList(changed, "crclist.txt", {keyOf(1)}, crypto, 0, 0, list, info, detail),
                  ListVerdict::Accepted)
            << "byte " << at;
    }
}

TEST(SignedList, TimesRoundTripInUtc) {
    struct Case {
        int64_t seconds;
        const char* text;
    };
    const Case cases[] = {
        {0, "1970-01-01T00:00:00Z"},
        {951782400, "2000-02-29T00:00:00Z"},
        {kExpiry, "2026-12-31T23:59:59Z"},
        {4107542399, "2100-02-28T23:59:59Z"},
        {253402300799, "9999-12-31T23:59:59Z"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(utcTimeText(c.seconds), c.text);
        int64_t back = -1;
        EXPECT_TRUE(parseUtcTime(c.text, back)) << c.text;
        EXPECT_EQ(back, c.seconds) << c.text;
    }
    int64_t end = 0;
    EXPECT_TRUE(parseDayEnd("2026-12-31", end));
    EXPECT_EQ(end, kExpiry);
    for (const char* bad : {"2100-02-29", "2026-12-31T", "26-12-31", "2026-1-31", "2026-00-10", "2026-04-31"})
        EXPECT_FALSE(parseDayEnd(bad, end)) << bad;
}

TEST(SignedList, AcceptedVersionIsThePatchersOwnFile) {
    EXPECT_EQ(parseAcceptedVersion(acceptedVersionText(42)), 42u);
    for (const char* bad :
         {"", "42\n", "norvane-accepted 1\n42", "norvane-accepted 1\n-1\n", "norvane-accepted 2\n5\n"})
        EXPECT_EQ(parseAcceptedVersion(bad), 0u) << bad;
    // A list may not overwrite it, in any case.
    std::string why;
    EXPECT_FALSE(isValidListPath("Norvane.Accepted", why));
}

TEST(UpdateKeyFiles, ReadOnlyTheirOwnExactForm) {
    const PublicKey key = keyOf(9);
    PrivateKey secret;
    secret.d.fill(0x5A);
    secret.publicKey = key;
    const std::string pub = publicKeyText(key), priv = privateKeyText(secret);
    struct Case {
        const char* name;
        std::string text;
        bool isPublic, ok;
    };
    std::string upper = pub;
    for (size_t i = std::string("norvane-update-key p256 ").size(); i < upper.size(); ++i)
        upper[i] = char(toupper(upper[i]));
    const Case cases[] = {
        {"public", pub, true, true},
        {"public with CR LF", pub.substr(0, pub.size() - 1) + "\r\n", true, true},
        {"public in upper case hex", upper, true, true},
        {"private", priv, false, true},
        {"public without its line end", pub.substr(0, pub.size() - 1), true, false},
        {"public with a second line", pub + pub, true, false},
        {"public with a BOM", "\xEF\xBB\xBF" + pub, true, false},
        {"public of 127 digits", pub.substr(0, pub.size() - 2) + "\n", true, false},
        {"public on another curve", replaced(pub, "p256", "p384"), true, false},
        {"private where the public is wanted", priv, true, false},
        {"public where the private is wanted", pub, false, false},
        {"private without the space",
         replaced(priv, "5a " + hexText(key.data(), 1), "5a" + hexText(key.data(), 1)), false, false},
        {"private of a short d",
         "norvane-update-private-key p256 " + std::string(62, '1') + " " + std::string(128, '2') + "\n",
         false, false},
    };
    for (const Case& c : cases) {
        std::string error;
        PublicKey readKey{};
        PrivateKey readSecret{};
        const bool ok =
            c.isPublic ? parsePublicKey(c.text, readKey, error) : parsePrivateKey(c.text, readSecret, error);
        EXPECT_EQ(ok, c.ok) << c.name << ": " << error;
        if (!ok) continue;
        if (c.isPublic) {
            EXPECT_EQ(readKey, key) << c.name;
        } else {
            EXPECT_EQ(readSecret.d, secret.d) << c.name;
            EXPECT_EQ(readSecret.publicKey, key) << c.name;
        }
    }
}

TEST(UpdateKeyFiles, APatcherCarriesOneToEightKeys) {
    std::string text;
    std::vector<PublicKey> keys;
    std::string error;
    EXPECT_FALSE(parsePublicKeys(text, keys, error));
    for (uint8_t i = 0; i < kMaxUpdateKeys; ++i)
        text += publicKeyText(keyOf(i));
    ASSERT_TRUE(parsePublicKeys(text, keys, error)) << error;
    EXPECT_EQ(keys.size(), kMaxUpdateKeys);
    EXPECT_EQ(keys[3], keyOf(3));
    EXPECT_FALSE(parsePublicKeys(text + publicKeyText(keyOf(99)), keys, error));
    EXPECT_FALSE(parsePublicKeys(text + "norvane", keys, error));
}

} // namespace
} // namespace nv::update
