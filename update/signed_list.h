#pragma once
// A signed file list: the list as `nvbuild crclist --sign` writes it, whose comment lines (which readers that
// know nothing of signatures skip) say what the patcher may accept:
//
//   #nvversion<TAB>N                        the list's version: 1 to 18 decimal digits, no leading zero
//   #nvexpires<TAB>YYYY-MM-DDTHH:MM:SSZ     after this moment (UTC) the list is refused
//   #nvsha256<TAB>path<TAB>64 hex digits    one per listed file; more for chunk indexes (".nvindex/...")
//   ... the list's other comment lines and its data lines ...
//   #nvsignature<TAB>128 hex digits         the last line, ending in one LF
//
// The signature is ECDSA P-256 over SHA-256 of every byte before the signature line (byte-order mark, other
// comments and line ends included): change any of them and it no longer verifies. It is written as r || s
// (IEEE P1363, 64 bytes), the form CNG signs and verifies in, so that the patcher parses no ASN.1. Every
// field is strict: a second version, expiry or hash of a path, a hash of a path the list does not hold, a
// listed file without one, or a signature line anywhere but last refuses the whole list.

#include "update/crypto.h"
#include "update/file_list.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace nv::update {

inline constexpr uint64_t kMaxListVersion = 999999999999999999u; // 18 digits
inline constexpr std::string_view kSignatureTag = "#nvsignature\t";

struct SignedList {
    uint64_t version = 0;
    int64_t expires = 0;                        // seconds since 1970-01-01 UTC
    std::map<std::string, Sha256Digest> sha256; // by the path as the list writes it
    size_t signedSize = 0;                      // the bytes the signature covers: all before its line
    Signature signature{};
};

// True when the list has a signature line anywhere (whether it is well placed is parseSignedList's to say).
bool hasSignatureLine(std::string_view bytes);

// The list and its signed fields; the signature is not verified here. listName as for parseFileList.
bool parseSignedList(std::string_view bytes, std::string_view listName, FileList& list, SignedList& info,
                     std::string& error);

// The lines of a list to sign: the fields above and then the list's own comments and files, without the
// signature line. sha256 must hold every listed file.
std::string signedListBody(const FileList& list, uint64_t version, int64_t expires,
                           const std::map<std::string, Sha256Digest>& sha256);
std::string signatureLine(const Signature& signature); // with its line end

// "YYYY-MM-DDTHH:MM:SSZ" and back; parseUtcTime takes exactly that form, 1970 to 9999.
std::string utcTimeText(int64_t seconds);
bool parseUtcTime(std::string_view text, int64_t& seconds);
// "YYYY-MM-DD": the last second of that day, UTC.
bool parseDayEnd(std::string_view text, int64_t& seconds);

// What a patcher with update keys makes of a fetched list, in the order it checks.
enum class ListVerdict {
    Accepted,
    Unsigned,     // no signature line: the list may not be used
    Invalid,      // a malformed list or signed field
    BadSignature, // verifies under none of the keys
    Expired,      // now is past its expiry
    Rollback,     // its version is lower than one accepted before
};

// Checks a list against the patcher's keys, its clock (seconds since 1970 UTC) and the highest version it has
// accepted. The signature is verified before any signed field is believed. detail: one line for the log.
ListVerdict checkSignedList(std::string_view bytes, std::string_view listName,
                            const std::vector<PublicKey>& keys, Crypto& crypto, int64_t now,
                            uint64_t highestAccepted, FileList& list, SignedList& info, std::string& detail);

// The highest version a patcher has accepted, kept in the game folder (kAcceptedFileName): "norvane-accepted
// 1" and the version, one line each. Unreadable text reads as 0.
uint64_t parseAcceptedVersion(std::string_view text);
std::string acceptedVersionText(uint64_t version);

} // namespace nv::update
