#pragma once
// The update key's cryptography: ECDSA over P-256 with SHA-256, and SHA-256 alone, always from the system
// (CNG on Windows), never our own. The portable layers only name what they need through this interface; a
// build without system cryptography has none (systemCrypto() is null) and every caller says so plainly
// instead of pretending to sign or verify.
//
// Keys and signatures travel as raw big-endian numbers, the form CNG takes and gives: a public key is X || Y
// (32 bytes each), a private key d (32 bytes) with its public key, a signature r || s (32 bytes each).

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace nv::update {

using Sha256Digest = std::array<uint8_t, 32>;
using PublicKey = std::array<uint8_t, 64>; // X || Y
using Signature = std::array<uint8_t, 64>; // r || s

struct PrivateKey {
    std::array<uint8_t, 32> d{};
    PublicKey publicKey{};
};

class Sha256 {
public:
    virtual ~Sha256() = default;
    virtual void update(const uint8_t* data, size_t size) = 0;
    virtual Sha256Digest finish() = 0; // once
};

class Crypto {
public:
    virtual ~Crypto() = default;
    // Null when the system refuses (out of memory, a broken provider).
    virtual std::unique_ptr<Sha256> sha256() = 0;
    virtual bool generate(PrivateKey& key, std::string& error) = 0;
    // Signs SHA-256(data).
    virtual bool sign(const PrivateKey& key, const uint8_t* data, size_t size, Signature& signature,
                      std::string& error) = 0;
    // False for a key that is not a point of the curve as well as for a signature that does not verify.
    virtual bool verify(const PublicKey& key, const uint8_t* data, size_t size,
                        const Signature& signature) = 0;
};

// The system's cryptography, or null where this build has none. Lives as long as the program.
Crypto* systemCrypto();

// SHA-256 of a whole buffer; false when the system refuses.
bool sha256Of(Crypto& crypto, const uint8_t* data, size_t size, Sha256Digest& digest);

} // namespace nv::update
