#pragma once
// The build's copy of the template, output + ".building", from its creation until it replaces the output or
// is removed.
//
// Two builds may aim at the same output (two terminals, a CI job started twice, the window and nvbuild). The
// copy's name is fixed, so each must tell the other's copy from the leftover of a build that died. A build
// owns a named mutex for its output for as long as its copy lives: a second build finds it owned and
// refuses, touching nothing; a build that died abandoned its mutex, so the next one takes it over and deletes
// the leftover. The file's own sharing cannot carry this: a handle that blocked deletion would also block the
// resource writer and the signer, which open the file by name and alone.

#include <windows.h>

#include <string>

namespace nv {

class BuildingFile {
public:
    // The copy of the build of outputPath.
    explicit BuildingFile(const std::wstring& outputPath);
    ~BuildingFile() { remove(); }
    BuildingFile(const BuildingFile&) = delete;
    BuildingFile& operator=(const BuildingFile&) = delete;

    enum class Start { Created, InUse, Failed };
    // Claims the output for this build, deletes a leftover copy and creates the copy empty. InUse when a
    // running build has claimed the output; Failed with the system's error code. Call remove() or moveOver()
    // on the same thread (the claim belongs to the thread).
    Start create(DWORD& error);

    // The template's bytes as the copy's content. False with the system's error code.
    bool write(const void* data, size_t size, DWORD& error);

    // Moves the copy over the output (replacing it). False with the system's error code; the copy then stays
    // for remove().
    bool moveOver(const std::wstring& target, DWORD& error);

    // Deletes the copy unless it was moved into place, and gives the claim up.
    void remove();

    const std::wstring& path() const { return path_; }

private:
    void release();

    const std::wstring output_, path_;
    HANDLE claim_ = nullptr; // the output's mutex, owned while set
    bool created_ = false;   // the copy exists and is this build's
};

} // namespace nv
