#pragma once
// What a signed file says about its signature once it is written: who signed it and whether a time-stamping
// authority countersigned it. A signing tool that reports success is not taken at its word; the build reads
// the signature back from the file and shows the operator what the players will see.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace nv {

enum class TimestampKind : uint8_t {
    None,
    Rfc3161,      // a time-stamp token in the signer's unsigned attributes (signtool /tr)
    Authenticode, // the older PKCS #9 countersignature (signtool /t)
};

struct SignatureInfo {
    std::wstring subject; // the signing certificate's display name (its common name, else its organisation)
    std::wstring thumbprint; // SHA-1 of the signing certificate, 40 upper-case hexadecimal digits
    TimestampKind timestamp = TimestampKind::None;
    int64_t timestampTime = 0; // seconds since 1970-01-01 UTC; 0 when the time could not be read
};

// The lines that show a signature to the operator: signer, thumbprint, time stamp.
std::vector<std::wstring> signatureLines(const SignatureInfo& info);

// "2026-03-05 14:22:01 UTC".
std::wstring utcTimeText(int64_t secondsSince1970);

// The time in an RFC 3161 time-stamp token (a ContentInfo holding SignedData whose content is a TSTInfo): the
// TSTInfo's genTime, a GeneralizedTime "YYYYMMDDHHMMSS[.fraction]Z", as seconds since 1970 UTC. Walked here
// rather than through crypt32: Wine's has no TIMESTAMP_INFO decoder and hands the token's content back still
// wrapped in its OCTET STRING. False when the bytes are no such token.
bool timestampTokenTime(const uint8_t* token, size_t size, int64_t& seconds);

enum class PeSignatureState : uint8_t {
    NotPe,     // the bytes are no PE image
    Unsigned,  // no certificate table
    Malformed, // a certificate table that lies outside the file or holds no PKCS #7 signature first
    Found,
};

// Where the PKCS #7 signature of a PE image lies (inside the first WIN_CERTIFICATE of its certificate table,
// which the optional header's security directory points at by file offset).
struct PeSignatureSpan {
    size_t offset = 0, size = 0;
};
PeSignatureState findPeSignature(const uint8_t* data, size_t size, PeSignatureSpan& span);

// Reads the signature of a signed file through the system's crypt32: the security directory, the PKCS #7
// signer and its certificate, a time stamp countersignature. False with a message when the file cannot be
// read, carries no signature or one that does not parse. Windows only.
bool readSignature(const std::wstring& file, SignatureInfo& info, std::wstring& message);

} // namespace nv
