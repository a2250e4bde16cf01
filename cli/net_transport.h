#pragma once
// The transport of the commands that read what an operator published (nvbuild feed): the patcher's own on
// Windows, so that they see exactly what players see. The native build has none.

#include "update/http.h"

#include <memory>
#include <string>

namespace nv {

// Null with the reason when this build cannot fetch.
std::unique_ptr<update::HttpTransport> openCliTransport(std::wstring& why);

} // namespace nv
