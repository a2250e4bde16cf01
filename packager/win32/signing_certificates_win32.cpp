// Certificates through the system's crypt32: a thumbprint looked up in the "My" store, and the signature of a
// signed file read back (its PKCS #7 signer, the signer's certificate and a time stamp countersignature).

#include "packager/signing.h"

#include "core/files.h"
#include "core/text.h"
#include "core/win32/scoped_win.h"

#include <windows.h>
#include <wincrypt.h>

#include <cstring>
#include <memory>
#include <vector>

namespace nv {
namespace {

constexpr DWORD kEncoding = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;
constexpr size_t kSha1Size = 20;

// Owners for crypt32's objects, each released by its own function on every path out of a scope.
struct CloseStore {
    void operator()(HCERTSTORE store) const { CertCloseStore(store, 0); }
};
struct FreeCertificate {
    void operator()(PCCERT_CONTEXT certificate) const { CertFreeCertificateContext(certificate); }
};
struct CloseMessage {
    void operator()(HCRYPTMSG message) const { CryptMsgClose(message); }
};
struct FreeLocal {
    void operator()(void* memory) const { LocalFree(memory); }
};
using ScopedStore = std::unique_ptr<void, CloseStore>;
using ScopedCertificate = std::unique_ptr<const CERT_CONTEXT, FreeCertificate>;
using ScopedMessage = std::unique_ptr<void, CloseMessage>;

// A structure that CryptDecodeObjectEx allocates with LocalAlloc.
template <class T> std::unique_ptr<T, FreeLocal> decodeObject(LPCSTR type, const CRYPT_DATA_BLOB& blob) {
    T* object = nullptr;
    DWORD size = 0;
    if (!CryptDecodeObjectEx(kEncoding, type, blob.pbData, blob.cbData, CRYPT_DECODE_ALLOC_FLAG, nullptr,
                             &object, &size))
        object = nullptr;
    return std::unique_ptr<T, FreeLocal>(object);
}

std::wstring hexText(const BYTE* bytes, size_t size) {
    static const wchar_t digits[] = L"0123456789ABCDEF";
    std::wstring text;
    for (size_t i = 0; i < size; ++i) {
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 15];
    }
    return text;
}

int64_t unixSeconds(const FILETIME& time) {
    const uint64_t ticks = uint64_t(time.dwHighDateTime) << 32 | time.dwLowDateTime;
    constexpr uint64_t kTicksTo1970 = 116444736000000000ull; // 100 ns ticks from 1601 to 1970
    return int64_t((ticks - kTicksTo1970) / 10000000);
}

std::wstring displayName(PCCERT_CONTEXT certificate) {
    DWORD n = CertGetNameStringW(certificate, CERT_NAME_SIMPLE_DISPLAY_TYPE, 0, nullptr, nullptr, 0);
    if (n <= 1) return {};
    std::wstring name(n, L'\0');
    n = CertGetNameStringW(certificate, CERT_NAME_SIMPLE_DISPLAY_TYPE, 0, nullptr, name.data(), n);
    name.resize(n > 0 ? n - 1 : 0);
    return name;
}

// One parameter of a message, whatever its size.
bool messageParameter(HCRYPTMSG message, DWORD type, std::vector<BYTE>& out) {
    DWORD size = 0;
    if (!CryptMsgGetParam(message, type, 0, nullptr, &size) || size == 0) return false;
    out.assign(size, 0);
    if (!CryptMsgGetParam(message, type, 0, out.data(), &size)) return false;
    out.resize(size);
    return true;
}

// The older countersignature is a signer info whose signed attributes hold the signing time.
int64_t counterSignatureTime(const CRYPT_ATTR_BLOB& value) {
    const auto signer = decodeObject<CMSG_SIGNER_INFO>(PKCS7_SIGNER_INFO, value);
    if (!signer) return 0;
    for (DWORD i = 0; i < signer->AuthAttrs.cAttr; ++i) {
        const CRYPT_ATTRIBUTE& attribute = signer->AuthAttrs.rgAttr[i];
        if (std::strcmp(attribute.pszObjId, szOID_RSA_signingTime) != 0 || attribute.cValue == 0) continue;
        FILETIME time{};
        DWORD size = sizeof time;
        if (CryptDecodeObjectEx(kEncoding, szOID_RSA_signingTime, attribute.rgValue[0].pbData,
                                attribute.rgValue[0].cbData, 0, nullptr, &time, &size))
            return unixSeconds(time);
    }
    return 0;
}

void readTimestamp(const CMSG_SIGNER_INFO& signer, SignatureInfo& info) {
    for (DWORD i = 0; i < signer.UnauthAttrs.cAttr; ++i) {
        const CRYPT_ATTRIBUTE& attribute = signer.UnauthAttrs.rgAttr[i];
        if (attribute.cValue == 0) continue;
        if (std::strcmp(attribute.pszObjId, szOID_RFC3161_counterSign) == 0) {
            info.timestamp = TimestampKind::Rfc3161;
            const CRYPT_ATTR_BLOB& token = attribute.rgValue[0];
            if (!timestampTokenTime(token.pbData, token.cbData, info.timestampTime)) info.timestampTime = 0;
            return;
        }
        if (std::strcmp(attribute.pszObjId, szOID_RSA_counterSign) == 0) {
            info.timestamp = TimestampKind::Authenticode;
            info.timestampTime = counterSignatureTime(attribute.rgValue[0]);
            return;
        }
    }
}

bool unreadable(std::wstring& message) {
    message = L"Dosyadaki imza okunamadı: " + systemErrorText(GetLastError());
    return false;
}

} // namespace

StoreCertificate findStoreCertificate(const std::wstring& thumbprint, bool machineStore) {
    StoreCertificate result;
    std::string digits = wideToUtf8(thumbprint);
    if (digits.size() != kSha1Size * 2) return result;
    BYTE hash[kSha1Size];
    for (size_t i = 0; i < kSha1Size; ++i) {
        const int high = hexDigitValue(digits[2 * i]), low = hexDigitValue(digits[2 * i + 1]);
        if (high < 0 || low < 0) return result;
        hash[i] = BYTE(high << 4 | low);
    }
    const DWORD location = machineStore ? CERT_SYSTEM_STORE_LOCAL_MACHINE : CERT_SYSTEM_STORE_CURRENT_USER;
    ScopedStore store(CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0,
                                    location | CERT_STORE_READONLY_FLAG | CERT_STORE_OPEN_EXISTING_FLAG,
                                    L"My"));
    if (!store.get()) return result;
    CRYPT_HASH_BLOB blob{kSha1Size, hash};
    ScopedCertificate certificate(
        CertFindCertificateInStore(store.get(), kEncoding, 0, CERT_FIND_SHA1_HASH, &blob, nullptr));
    if (!certificate.get()) return result;
    result.found = true;
    DWORD size = 0;
    result.hasKey =
        CertGetCertificateContextProperty(certificate.get(), CERT_KEY_PROV_INFO_PROP_ID, nullptr, &size) != 0;
    result.subject = displayName(certificate.get());
    return result;
}

bool readSignature(const std::wstring& file, SignatureInfo& info, std::wstring& message) {
    info = SignatureInfo();
    win::ScopedHandle handle(CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                         FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER size{};
    if (!handle.valid() || !GetFileSizeEx(handle.get(), &size)) {
        message = L"İmzalanan dosya okunamadı: " + systemErrorText(GetLastError());
        return false;
    }
    PeSignatureSpan span;
    PeSignatureState state = PeSignatureState::NotPe;
    CRYPT_DATA_BLOB pkcs7{};
    win::ScopedHandle mapping(size.QuadPart > 0
                                  ? CreateFileMappingW(handle.get(), nullptr, PAGE_READONLY, 0, 0, nullptr)
                                  : nullptr);
    win::ScopedView view(mapping.get() ? MapViewOfFile(mapping.get(), FILE_MAP_READ, 0, 0, 0) : nullptr);
    if (size.QuadPart > 0 && !view.get()) {
        message = L"İmzalanan dosya okunamadı: " + systemErrorText(GetLastError());
        return false;
    }
    if (view.get()) {
        state = findPeSignature(view.get(), size_t(size.QuadPart), span);
        pkcs7 = {DWORD(span.size), view.get() + span.offset};
    }
    switch (state) {
    case PeSignatureState::NotPe:
        message = L"İmzalanan dosya geçerli bir exe değil.";
        return false;
    case PeSignatureState::Unsigned:
        message = L"İmzalama başarılı göründü ama dosyada imza yok.";
        return false;
    case PeSignatureState::Malformed:
        message = L"Dosyadaki imza bozuk.";
        return false;
    case PeSignatureState::Found:
        break;
    }

    DWORD encoding = 0, contentType = 0, format = 0;
    HCERTSTORE storeHandle = nullptr;
    HCRYPTMSG messageHandle = nullptr;
    const BOOL parsed = CryptQueryObject(CERT_QUERY_OBJECT_BLOB, &pkcs7, CERT_QUERY_CONTENT_FLAG_PKCS7_SIGNED,
                                         CERT_QUERY_FORMAT_FLAG_BINARY, 0, &encoding, &contentType, &format,
                                         &storeHandle, &messageHandle, nullptr);
    ScopedStore certificates(storeHandle);
    ScopedMessage signedMessage(messageHandle);
    if (!parsed) return unreadable(message);
    std::vector<BYTE> signerBytes;
    if (!messageParameter(signedMessage.get(), CMSG_SIGNER_INFO_PARAM, signerBytes))
        return unreadable(message);
    const auto& signer = *reinterpret_cast<const CMSG_SIGNER_INFO*>(signerBytes.data());

    CERT_INFO wanted{};
    wanted.Issuer = signer.Issuer;
    wanted.SerialNumber = signer.SerialNumber;
    ScopedCertificate certificate(CertFindCertificateInStore(certificates.get(), kEncoding, 0,
                                                             CERT_FIND_SUBJECT_CERT, &wanted, nullptr));
    if (!certificate.get()) return unreadable(message);
    BYTE hash[kSha1Size];
    DWORD hashSize = sizeof hash;
    if (!CertGetCertificateContextProperty(certificate.get(), CERT_SHA1_HASH_PROP_ID, hash, &hashSize) ||
        hashSize != kSha1Size)
        return unreadable(message);
    info.subject = displayName(certificate.get());
    info.thumbprint = hexText(hash, kSha1Size);
    readTimestamp(signer, info);
    return true;
}

} // namespace nv
