#pragma once
// What the readiness checklist needs to know about the chosen certificate source and cannot read from the
// options alone: whether signtool and the named files are there, whether the store holds the thumbprint with
// its key, whether the operator's command names an environment variable that is not set. Asked on every
// paint; the store is asked again only when the thumbprint changes or a moment has passed (a token may have
// been plugged in meanwhile).

#include "ui/readiness.h"

#include <cstdint>
#include <string>

namespace nv::ui::win {

class SigningProbe {
public:
    SigningFacts facts(const SigningOptions& signing) const;

private:
    StoreCertificate lookUp(const std::wstring& thumbprint, bool machineStore) const;

    mutable std::wstring thumbprint_;
    mutable bool machineStore_ = false;
    mutable uint32_t askedAt_ = 0;
    mutable StoreCertificate answer_;
};

} // namespace nv::ui::win
