#pragma once
// The build: one call turns a template executable, a skin package, an icon and version texts into a finished,
// verified (and, when asked, signed) patcher executable. Headless, so that the builder window's worker
// thread, the preview executable, snapshot mode and nvbuild all run the same code.

#include "packager/signing_readback.h"
#include "core/files.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

namespace nv {

class SkinWorkspace;

struct VersionInfoFields {
    std::wstring productName, companyName, fileDescription, versionText, legalCopyright, originalFilename;

    bool operator==(const VersionInfoFields&) const = default;
};

// Where the signing certificate comes from. A new certificate's key lives on a hardware token or in a cloud
// service, so a PFX file is only one of the ways.
enum class SigningSource : uint8_t {
    PfxFile,   // pfxPath and pfxPassword
    Store,     // the Windows certificate store, by thumbprint (a token's certificate shows up there)
    Automatic, // signtool picks the best signing certificate of the store itself
    Plugin,    // a signtool plug-in DLL and its metadata file, as cloud signing services ship them
    Command,   // the operator's own command line, with {file} standing for the file to sign
};

struct SigningOptions {
    bool enabled = false;
    std::wstring pfxPath, pfxPassword, timestampUrl, signtoolPath; // signtoolPath empty: search for it
    SigningSource source = SigningSource::PfxFile;
    std::wstring thumbprint;   // Store
    bool machineStore = false; // Store and Automatic: the computer's store instead of the user's
    std::wstring pluginPath, pluginMetadataPath; // Plugin
    std::wstring command;                        // Command
    std::vector<std::wstring> moreTimestampUrls; // tried in order after timestampUrl

    bool operator==(const SigningOptions&) const = default;
};

struct BuildRequest {
    std::wstring templatePath, outputPath;
    Bytes iconBytes;    // a whole ICO file; empty keeps the template's icons
    Bytes packageBytes; // the skin package to embed
    VersionInfoFields version;
    SigningOptions signing;
    // Set from another thread (a console's Ctrl-C) to stop the build at its next step: the temporary copy
    // goes and the previous output stays. Once the copy has replaced the output the build is done and stays
    // done.
    const std::atomic<bool>* cancel = nullptr;
    Bytes updateKeys; // the public keys' lines to embed; empty: none
};

struct BuildResult {
    bool ok = false;
    std::wstring message; // the failure, empty on success
    uint32_t crc32 = 0;   // of the file this build put in place
    uint64_t size = 0;
    bool wasSigned = false;
    SignatureInfo signature; // read back from the finished file when it was signed
    bool cancelled = false;  // stopped on request; nothing was left behind
    // runBuild: the warnings of the composed skin's validation (the loader's words), whatever the outcome.
    std::vector<std::wstring> warnings;
};

// Receives each progress line of a build; called on the thread that runs the build.
using BuildLogFn = void (*)(void* context, const std::wstring& line);

// Copies the template beside the output (output + ".building"), writes the icon, version and skin-package
// resources into the copy, verifies that the package reads back, signs it when asked and only then moves it
// over the output. A failure leaves the previous output as it was and no temporary file behind. A build that
// finds another one writing the same output refuses and leaves that build's copy alone. Never throws.
BuildResult writePatcherExecutable(const BuildRequest& request, BuildLogFn log, void* context);

// The build's inputs besides the working skin; the window, the preview executable, snapshot mode and nvbuild
// all make them from the operator's recipe (recipe/recipe.h).
struct BuildInputs {
    std::wstring templatePath, outputPath;
    Bytes iconBytes;
    VersionInfoFields version;
    SigningOptions signing;
    Bytes updateKeys; // the public keys' lines, as read and checked by the caller
};

// How one run of a build is steered, beside its inputs.
struct BuildRunOptions {
    // Any warning of the composed skin's validation fails the build before anything is written (a patcher
    // without its start button's pictures is no patcher to ship from CI).
    bool strict = false;
    const std::atomic<bool>* cancel =
        nullptr; // as BuildRequest::cancel; also stops before the writing starts
};

// Composes the package from the workspace (the recipe applied to it), fills the request (productName defaults
// to the trimmed title, originalFilename to the output's file name) and writes the executable. Never throws;
// safe on a worker thread (reads the workspace only).
BuildResult runBuild(const SkinWorkspace& workspace, const BuildInputs& inputs, BuildLogFn log, void* context,
                     const BuildRunOptions& options = {});

// The failure of a build that was asked to stop.
inline constexpr const wchar_t* kBuildCancelledMessage = L"İptal edildi.";

} // namespace nv
