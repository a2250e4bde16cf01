#pragma once
// Code signing: signtool.exe from the Windows SDK with a PFX file, a certificate of the store, signtool's own
// choice of one or a signing plug-in (SHA-256, RFC 3161 time stamps from a list of servers, then once without
// one), or the operator's own command; then the signature read back from the file.

#include "packager/build_job.h"
#include "packager/signing_commands.h"
#include "packager/signing_readback.h"

#include <string>

namespace nv {

// A public RFC 3161 time-stamp server, used when none is named.
inline constexpr const wchar_t* kDefaultTimestampServer = L"http://timestamp.digicert.com";

// The newest SDK's signtool.exe under "ProgramFiles(x86)" or "ProgramFiles", else one of the older fixed
// places; empty when there is none.
std::wstring findSigntool();

// A certificate of the "My" store (the user's, or the computer's), looked up by its thumbprint. A token's
// certificate is there while its driver has propagated it; its key stays on the token, and hasKey says that
// the store knows where the key is.
struct StoreCertificate {
    bool found = false, hasKey = false;
    std::wstring subject;
};
StoreCertificate findStoreCertificate(const std::wstring& thumbprint, bool machineStore);

// The value of an environment variable of this process, as the operator's command gets it; false when it is
// not set (set to nothing is set).
bool readEnvironmentVariable(const std::wstring& name, std::wstring& value);

// Signs the file in place. Secrets (the password, the values the operator's command takes from the
// environment) reach only the tool's command line, never the log or a message; command lines are not logged.
bool signExecutable(const SigningOptions& options, const std::wstring& file, const VersionInfoFields& version,
                    BuildLogFn log, void* context, std::wstring& message);

// After signExecutable: the signature read back from the file. A file that the tool claims to have signed but
// that carries no readable signature is refused. Warns when the operator's command left the signature without
// a time stamp (signtool's fallback warns on its own).
bool confirmSignature(const SigningOptions& options, const std::wstring& file, BuildLogFn log, void* context,
                      SignatureInfo& info, std::wstring& message);

} // namespace nv
