#pragma once
// Shared by the Windows build tests: the fixture programs, a skin package, requests, and the resources of a
// file read back in a form that compares and prints.

#include "build/build_job.h"
#include "build/win32/resource_io.h"
#include "core/files.h"

#include <map>
#include <string>
#include <vector>

namespace nv::test {

// A program made by the tests' build (foreign_template.exe, hold_file.exe, fake-sdk\signtool.exe).
std::wstring buildFixture(const std::wstring& name);

// A small, valid skin package.
Bytes samplePackage();

// Writing the package into a copy of the template at output, nothing else asked for.
BuildRequest requestFor(const std::wstring& templatePath, const std::wstring& outputPath);

// A log callback that collects the lines into a std::vector<std::wstring>.
void collectLine(void* lines, const std::wstring& line);

// Every resource of a file as "type/name/language" to its bytes; integer ids in decimal, string ones quoted.
using ResourceMap = std::map<std::string, Bytes>;
ResourceMap resourcesOf(const std::wstring& path);
std::string resourceKey(const ResourceItem& item);

// The template with a certificate table appended as a signer would append it (padded to eight bytes, its
// directory entry set, the checksum recomputed), and/or an overlay before it.
Bytes withOverlayAndCertificate(const Bytes& image, const Bytes& overlay, bool certificate);

std::string narrow(const std::wstring& text);

} // namespace nv::test
