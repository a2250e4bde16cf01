#pragma once
// Shared by the Windows build tests: the programs the tests' build makes, requests, and the resources of a
// file in a form that compares and prints.

#include "packager/build_job.h"
#include "core/files.h"
#include "tests/support/test_support.h"

#include <map>
#include <string>
#include <vector>

namespace nv::test {

// foreign_template.exe, fake-sdk\signtool.exe, signed\... (make_signing_fixtures.py).
std::wstring buildFixture(const std::wstring& name);

// What the signed fixtures hold, as OpenSSL saw it when it made them: the signer's subject and thumbprint,
// and for each time-stamped file the Unix seconds just before and after it was signed.
struct SignedFixtures {
    std::wstring subject, thumbprint;
    std::map<std::wstring, std::pair<int64_t, int64_t>> stampedBetween;
};
SignedFixtures signedFixtures();

// The signtool stand-in's environment (fixtures/fake_signtool.cpp), inherited by the children this process
// starts, for one scope: it records into a folder of its own and is cleared at the end.
class FakeSigntool {
public:
    FakeSigntool();
    ~FakeSigntool();
    FakeSigntool(const FakeSigntool&) = delete;
    FakeSigntool& operator=(const FakeSigntool&) = delete;

    static std::wstring path();
    // NV_FAKE_SIGNTOOL_<name>; an empty value removes it.
    void set(const wchar_t* name, const std::wstring& value);
    // The command lines of the runs so far, and their arguments as the stand-in received them; both
    // forgotten.
    std::vector<std::wstring> takeCommandLines();
    std::vector<std::vector<std::wstring>> takeArguments();

private:
    TempDir dir_;
};

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
