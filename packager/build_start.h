#pragma once
// From the builder's fields to a build: the checks made before a build starts and the request it writes.

#include "packager/build_job.h"

#include <string>

namespace nv {

// The checks the builder makes before it starts a build, in order, the first failure winning: the template is
// there, the output ends in ".exe", its folder exists and it is not the template itself, and a certificate is
// given and present when signing is on (whatever the chosen certificate source needs). (The window asks for
// an output place first when none is set.)
bool checkBuildStart(const BuildInputs& inputs, std::wstring& message);

// The request for a composed package: the inputs as they stand, except that an empty product name becomes the
// trimmed patcher title and an empty original file name the output's file name.
BuildRequest makeBuildRequest(const BuildInputs& inputs, const std::wstring& title, Bytes package);

} // namespace nv
