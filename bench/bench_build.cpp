// The whole build of a patcher against the bare steps that no build can avoid: a copy of the template, one
// resource update with the skin package, one read-back of that resource. Measured for the sample skin and for
// the sample with 10 MB more in it (an unreferenced file of incompressible bytes, as a skin with large
// pictures or sounds would be). Goal: the whole build within 1.3 times the bare steps. Windows only (runs
// under Wine).

#include "bench/bench_harness.h"
#include "packager/build_job.h"
#include "core/paths.h"
#include "skin/package.h"
#include "skin/picture_cache.h"
#include "skin/workspace.h"

#include "core/win32/gdiplus_session.h"

#include <windows.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

constexpr int kRuns = 9;

nv::GdiplusSession gdiplus; // the build validates the skin, which decodes its pictures with GDI+

std::wstring templatePath() {
    return nv::pathJoin(nv::exeFolder(), L"Norvane.Template.exe");
}

std::wstring outputPath(const wchar_t* name) {
    wchar_t folder[MAX_PATH + 1] = {};
    GetTempPathW(MAX_PATH, folder);
    return nv::pathJoin(folder, name);
}

// The sample skin, plus extraBytes of an unreferenced incompressible file when asked.
nv::SkinWorkspace workspaceWith(size_t extraBytes) {
    nv::SkinWorkspace workspace;
    std::wstring message;
    if (!workspace.loadSkinSource(nv::pathJoin(nv::exeFolder(), L"sample-skin"), message))
        nv::bench::fail("the sample skin beside the benchmark does not load");
    if (extraBytes > 0) {
        nv::Bytes filler(extraBytes);
        uint32_t state = 0x9E3779B9u; // xorshift: bytes that no compressor or deduplication shortens
        for (uint8_t& b : filler) {
            state ^= state << 13;
            state ^= state >> 17;
            state ^= state << 5;
            b = uint8_t(state);
        }
        workspace.files.putFile("sounds/intro.bin", std::move(filler));
    }
    return workspace;
}

void ignoreLine(void*, const std::wstring&) {}

nv::bench::Timing wholeBuild(const std::string& name, const nv::SkinWorkspace& workspace, bool cold) {
    nv::BuildInputs inputs;
    inputs.templatePath = templatePath();
    inputs.outputPath = outputPath(L"nv-bench-build.exe");
    const nv::bench::Timing timing = nv::bench::measure(name, kRuns, [&] {
        if (cold) nv::PictureCache::shared().clear();
        const nv::BuildResult result = nv::runBuild(workspace, inputs, ignoreLine, nullptr);
        if (!result.ok) {
            char text[512];
            std::snprintf(text, sizeof text, "the build failed: %ls", result.message.c_str());
            nv::bench::fail(text);
        }
    });
    DeleteFileW(inputs.outputPath.c_str());
    return timing;
}

// Copy, one UpdateResourceW of the package, and the package read back through the loader's resource lookup,
// with the loader flags the build's verification is held to.
nv::bench::Timing bareSteps(const std::string& name, const nv::SkinWorkspace& workspace) {
    nv::Bytes package;
    nv::LoadMessages messages;
    if (!workspace.buildSkinPackage(package, messages)) nv::bench::fail("the skin does not pack");
    const std::wstring output = outputPath(L"nv-bench-bare.exe");
    const nv::bench::Timing timing = nv::bench::measure(name, kRuns, [&] {
        if (!CopyFileW(templatePath().c_str(), output.c_str(), FALSE)) nv::bench::fail("no template to copy");
        HANDLE update = BeginUpdateResourceW(output.c_str(), FALSE);
        if (!update) nv::bench::fail("BeginUpdateResourceW failed");
        if (!UpdateResourceW(update, RT_RCDATA, MAKEINTRESOURCEW(nv::SKIN_RESOURCE_ID), 0, package.data(),
                             DWORD(package.size())) ||
            !EndUpdateResourceW(update, FALSE))
            nv::bench::fail("the resource update failed");
        // Loaded as the build must load it for its verification (as an image resource, else as a data file).
        HMODULE module = LoadLibraryExW(output.c_str(), nullptr,
                                        LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
        if (!module) module = LoadLibraryExW(output.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
        HRSRC found =
            module ? FindResourceExW(module, RT_RCDATA, MAKEINTRESOURCEW(nv::SKIN_RESOURCE_ID), 0) : nullptr;
        HGLOBAL loaded = found ? LoadResource(module, found) : nullptr;
        const void* data = loaded ? LockResource(loaded) : nullptr;
        if (!data || SizeofResource(module, found) != package.size() ||
            std::memcmp(data, package.data(), package.size()) != 0)
            nv::bench::fail("the package did not read back");
        FreeLibrary(module);
    });
    DeleteFileW(output.c_str());
    return timing;
}

// Both measurements of one skin and how much the whole build costs over the bare steps (medians).
void compare(const std::string& name, size_t extraBytes) {
    const nv::SkinWorkspace workspace = workspaceWith(extraBytes);
    const nv::bench::Timing bare = bareSteps(name + "/bare", workspace);
    const nv::bench::Timing whole = wholeBuild(name + "/whole", workspace, false);
    wholeBuild(name + "/whole/cold", workspace, true);
    std::printf("%-28s whole / bare = %.2f (goal <= 1.30)\n", name.c_str(), whole.medianMs / bare.medianMs);
    std::fflush(stdout);
}

constexpr size_t kTenMegabytes = 10u << 20;

// What this machine charges for 10 MB of memory touched for the first time. The whole build must hold the
// package in such memory once more than the bare steps do; where that is dear (virtual machines that fault
// each new page in from the host), it alone takes a large share of the 10 MB case's margin.
void freshMemory() {
    nv::bench::measure("memory/fresh-10MB", kRuns, [] {
        nv::Bytes bytes(kTenMegabytes);
        nv::bench::keep(bytes.data());
    });
}

} // namespace

int main(int argc, char** argv) {
    return nv::bench::runCases(argc, argv,
                               {
                                   {"build/sample", [] { compare("build/sample", 0); }},
                                   {"build/10MB", [] { compare("build/10MB", kTenMegabytes); }},
                                   {"memory/fresh-10MB", freshMemory},
                               });
}
