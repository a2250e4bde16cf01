// The update key's cryptography through CNG (bcrypt.dll): SHA-256 and ECDSA P-256. Algorithm handles are
// opened once and shared; CNG allows their use from several threads at once.

#include "update/crypto.h"

#include <windows.h>

#include <bcrypt.h>

#include <cstring>
#include <vector>

namespace nv::update {
namespace {

bool succeeded(NTSTATUS status) {
    return status >= 0;
}

std::string statusText(const char* what, NTSTATUS status) {
    char hex[16];
    snprintf(hex, sizeof hex, "%08lX", static_cast<unsigned long>(status));
    return std::string(what) + " basarisiz (NTSTATUS 0x" + hex + ")";
}

struct KeyHandle {
    BCRYPT_KEY_HANDLE handle = nullptr;
    KeyHandle() = default;
    KeyHandle(const KeyHandle&) = delete;
    KeyHandle& operator=(const KeyHandle&) = delete;
    ~KeyHandle() {
        if (handle) BCryptDestroyKey(handle);
    }
};

class CngSha256 final : public Sha256 {
public:
    explicit CngSha256(BCRYPT_HASH_HANDLE handle) : handle_(handle) {}
    ~CngSha256() override { BCryptDestroyHash(handle_); }
    void update(const uint8_t* data, size_t size) override {
        // BCryptHashData takes at most 4 GiB at a time.
        while (ok_ && size > 0) {
            const ULONG n = ULONG(std::min<size_t>(size, 1u << 30));
            ok_ = succeeded(BCryptHashData(handle_, const_cast<PUCHAR>(data), n, 0));
            data += n, size -= n;
        }
    }
    Sha256Digest finish() override {
        Sha256Digest digest{};
        // A failed step leaves a digest of zeros, which no listed file has.
        if (!ok_ || !succeeded(BCryptFinishHash(handle_, digest.data(), ULONG(digest.size()), 0)))
            digest.fill(0);
        return digest;
    }

private:
    BCRYPT_HASH_HANDLE handle_;
    bool ok_ = true;
};

class CngCrypto final : public Crypto {
public:
    CngCrypto() {
        if (!succeeded(BCryptOpenAlgorithmProvider(&sha_, BCRYPT_SHA256_ALGORITHM, nullptr, 0)))
            sha_ = nullptr;
        if (!succeeded(BCryptOpenAlgorithmProvider(&ecdsa_, BCRYPT_ECDSA_P256_ALGORITHM, nullptr, 0)))
            ecdsa_ = nullptr;
    }

    std::unique_ptr<Sha256> sha256() override {
        BCRYPT_HASH_HANDLE handle = nullptr;
        if (!sha_ || !succeeded(BCryptCreateHash(sha_, &handle, nullptr, 0, nullptr, 0, 0))) return nullptr;
        return std::make_unique<CngSha256>(handle);
    }

    bool generate(PrivateKey& key, std::string& error) override {
        if (!ecdsa_) return error = "ECDSA P-256 saglayicisi acilamadi", false;
        KeyHandle pair;
        NTSTATUS status = BCryptGenerateKeyPair(ecdsa_, &pair.handle, 256, 0);
        if (succeeded(status)) status = BCryptFinalizeKeyPair(pair.handle, 0);
        if (!succeeded(status)) return error = statusText("anahtar uretimi", status), false;
        std::vector<uint8_t> blob(sizeof(BCRYPT_ECCKEY_BLOB) + 96);
        ULONG written = 0;
        status = BCryptExportKey(pair.handle, nullptr, BCRYPT_ECCPRIVATE_BLOB, blob.data(),
                                 ULONG(blob.size()), &written, 0);
        BCRYPT_ECCKEY_BLOB header;
        std::memcpy(&header, blob.data(), sizeof header);
        if (!succeeded(status) || written != blob.size() || header.cbKey != 32)
            return error = statusText("anahtar disa aktarimi", status), false;
        const uint8_t* numbers = blob.data() + sizeof header;
        std::memcpy(key.publicKey.data(), numbers, 64);
        std::memcpy(key.d.data(), numbers + 64, 32);
        SecureZeroMemory(blob.data(), blob.size());
        return true;
    }

    bool sign(const PrivateKey& key, const uint8_t* data, size_t size, Signature& signature,
              std::string& error) override {
        Sha256Digest digest;
        if (!ecdsa_ || !sha256Of(*this, data, size, digest)) return error = "CNG kullanilamiyor", false;
        std::vector<uint8_t> blob(sizeof(BCRYPT_ECCKEY_BLOB) + 96);
        const BCRYPT_ECCKEY_BLOB header{BCRYPT_ECDSA_PRIVATE_P256_MAGIC, 32};
        std::memcpy(blob.data(), &header, sizeof header);
        std::memcpy(blob.data() + sizeof header, key.publicKey.data(), 64);
        std::memcpy(blob.data() + sizeof header + 64, key.d.data(), 32);
        KeyHandle handle;
        NTSTATUS status = BCryptImportKeyPair(ecdsa_, nullptr, BCRYPT_ECCPRIVATE_BLOB, &handle.handle,
                                              blob.data(), ULONG(blob.size()), 0);
        SecureZeroMemory(blob.data(), blob.size());
        if (!succeeded(status))
            return error = statusText("ozel anahtar okunamadi: ice aktarma", status), false;
        ULONG written = 0;
        status = BCryptSignHash(handle.handle, nullptr, digest.data(), ULONG(digest.size()), signature.data(),
                                ULONG(signature.size()), &written, 0);
        if (!succeeded(status) || written != signature.size())
            return error = statusText("imzalama", status), false;
        return true;
    }

    bool verify(const PublicKey& key, const uint8_t* data, size_t size, const Signature& signature) override {
        Sha256Digest digest;
        if (!ecdsa_ || !sha256Of(*this, data, size, digest)) return false;
        std::vector<uint8_t> blob(sizeof(BCRYPT_ECCKEY_BLOB) + 64);
        const BCRYPT_ECCKEY_BLOB header{BCRYPT_ECDSA_PUBLIC_P256_MAGIC, 32};
        std::memcpy(blob.data(), &header, sizeof header);
        std::memcpy(blob.data() + sizeof header, key.data(), 64);
        KeyHandle handle;
        if (!succeeded(BCryptImportKeyPair(ecdsa_, nullptr, BCRYPT_ECCPUBLIC_BLOB, &handle.handle,
                                           blob.data(), ULONG(blob.size()), 0)))
            return false;
        return BCryptVerifySignature(handle.handle, nullptr, digest.data(), ULONG(digest.size()),
                                     const_cast<PUCHAR>(signature.data()), ULONG(signature.size()), 0) == 0;
    }

private:
    BCRYPT_ALG_HANDLE sha_ = nullptr;
    BCRYPT_ALG_HANDLE ecdsa_ = nullptr;
};

} // namespace

Crypto* systemCrypto() {
    static CngCrypto crypto;
    return &crypto;
}

} // namespace nv::update
