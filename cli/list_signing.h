#pragma once
// What `nvbuild crclist --sign` adds to a list: every listed file's SHA-256, a version, an expiry and the
// signature (update/signed_list.h), and what keygen and crclist say where this build has no cryptography.

#include "cli/nvbuild.h"
#include "update/crypto.h"
#include "update/file_list.h"

#include <cstdint>
#include <string>
#include <vector>

namespace nv {

// The line both commands end with where systemCrypto() is null.
extern const std::wstring_view kNoCryptoMessage;

struct ListSigning {
    update::PrivateKey key;
    std::wstring keyPath;
    std::wstring expiresText;            // as given: days or YYYY-MM-DD; empty: the default
    std::wstring versionText;            // as given; empty: one above the list being replaced
    std::vector<std::string> extraFiles; // files beside the listed ones to hash, such as chunk indexes
};

// Reads and checks the options before any file is read: the key file, the expiry's and the version's forms.
// False with the failure printed (exit code in exitCode).
bool readSigningOptions(const Invocation& invocation, Console& console, ListSigning& signing, int& exitCode);

// The signed list's text for the files of root; previous: the bytes of the list being replaced (its version
// is the one to go above). False with the failure printed.
bool signList(update::Crypto& crypto, const ListSigning& signing, const std::wstring& root,
              const update::FileList& list, const std::string& previous, Console& console, std::string& text);

} // namespace nv
