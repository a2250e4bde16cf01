#pragma once
// The update key's files, as `nvbuild keygen NAME` writes them: one line of text each, so that an operator
// can read, mail and diff them, and nothing in them but the numbers.
//
//   NAME.pub  "norvane-update-key p256 " + 128 hex digits (X || Y)                       the public key
//   NAME.key  "norvane-update-private-key p256 " + 64 hex digits (d) + " " + 128 (X || Y)  keep it secret
//
// followed by one line end (LF or CR LF). Hex digits are written in lower case and read in either. Anything
// else (another curve, a missing or extra digit, a second line, a BOM) is refused: a key is never guessed.
//
// A patcher carries its public keys as one resource of its own: the .pub lines one after the other (several
// for a key rotation, at most kMaxUpdateKeys).

#include "update/crypto.h"

#include <string>
#include <string_view>
#include <vector>

namespace nv::update {

inline constexpr size_t kMaxUpdateKeys = 8;
inline constexpr size_t kMaxKeyFileBytes = 512;

std::string hexText(const uint8_t* data, size_t size); // lower case
// Exactly 2 * size hexadecimal digits, either case.
bool parseHex(std::string_view text, uint8_t* out, size_t size);

std::string publicKeyText(const PublicKey& key);   // with its line end
std::string privateKeyText(const PrivateKey& key); // with its line end
bool parsePublicKey(std::string_view text, PublicKey& key, std::string& error);
bool parsePrivateKey(std::string_view text, PrivateKey& key, std::string& error);

// The embedded resource: one or more public key lines. Refused when empty, over kMaxUpdateKeys, or any line
// is not a public key.
bool parsePublicKeys(std::string_view text, std::vector<PublicKey>& keys, std::string& error);

// A short name for a key in messages and logs: the first 16 hex digits of X.
std::string keyLabel(const PublicKey& key);

} // namespace nv::update
