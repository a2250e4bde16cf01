#include "ui/win32/signing_probe.h"

#include "core/files.h"
#include "core/text.h"

#include <windows.h>

namespace nv::ui::win {
namespace {

// Opening a store and searching it takes a few milliseconds; the window paints far more often than a token
// comes or goes.
constexpr uint32_t kStoreAnswerMs = 2000;

} // namespace

StoreCertificate SigningProbe::lookUp(const std::wstring& thumbprint, bool machineStore) const {
    const uint32_t now = GetTickCount();
    if (thumbprint != thumbprint_ || machineStore != machineStore_ || now - askedAt_ >= kStoreAnswerMs) {
        answer_ = findStoreCertificate(thumbprint, machineStore);
        thumbprint_ = thumbprint;
        machineStore_ = machineStore;
        askedAt_ = now;
    }
    return answer_;
}

SigningFacts SigningProbe::facts(const SigningOptions& signing) const {
    SigningFacts facts;
    if (!signing.enabled) return facts;
    facts.signtoolFound = !signing.signtoolPath.empty() && fileExists(signing.signtoolPath);
    switch (signing.source) {
    case SigningSource::PfxFile:
        facts.pfxExists = fileExists(trim(signing.pfxPath));
        break;
    case SigningSource::Store: {
        std::wstring thumbprint;
        if (normalizeThumbprint(signing.thumbprint, thumbprint))
            facts.store = lookUp(thumbprint, signing.machineStore);
        break;
    }
    case SigningSource::Automatic:
        break;
    case SigningSource::Plugin:
        facts.pluginExists = fileExists(trim(signing.pluginPath));
        facts.metadataExists = fileExists(trim(signing.pluginMetadataPath));
        break;
    case SigningSource::Command: {
        // The command made as signing will make it, noting the first variable this process does not hold.
        OperatorCommand command;
        std::wstring message;
        makeOperatorCommand(
            signing.command, L"",
            [&](const std::wstring& name, std::wstring& value) {
                if (readEnvironmentVariable(name, value)) return true;
                facts.unsetVariable = name;
                return false;
            },
            command, message);
        break;
    }
    }
    return facts;
}

} // namespace nv::ui::win
