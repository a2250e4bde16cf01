#pragma once
// Shared by the Windows build tests: the programs the tests' build makes, requests, and the resources of a
// file in a form that compares and prints.

#include "packager/build_job.h"
#include "core/files.h"

#include <map>
#include <string>

namespace nv::test {

// foreign_template.exe, fake-sdk\signtool.exe.
std::wstring buildFixture(const std::wstring& name);

// Writing a small valid skin package into a copy of the template at output, nothing else asked for.
BuildRequest requestFor(const std::wstring& templatePath, const std::wstring& outputPath);

// A log callback that collects the lines into a std::vector<std::wstring>.
void collectLine(void* lines, const std::wstring& line);

// Every resource of a file as "type/name/language" (integer ids in decimal, string ones quoted) to its bytes.
using ResourceMap = std::map<std::string, Bytes>;
ResourceMap resourcesOf(const std::wstring& path);

// The image with an overlay appended and then, when asked, a certificate table as a signer appends it (padded
// to eight bytes, its directory entry set), the checksum recomputed.
Bytes withOverlayAndCertificate(const Bytes& image, const Bytes& overlay, bool certificate);

} // namespace nv::test
