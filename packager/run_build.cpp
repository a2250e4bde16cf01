// The build as the builder's worker, the preview executable and nvbuild run it.

#include "packager/build_job.h"

#include "packager/build_start.h"
#include "skin/workspace.h"

#include <new>

namespace nv {

BuildResult runBuild(const SkinWorkspace& workspace, const BuildInputs& inputs, BuildLogFn log,
                     void* context) {
    BuildResult result;
    try {
        Bytes package;
        LoadMessages messages;
        if (!workspace.buildSkinPackage(package, messages)) {
            result.message = messages.error.empty() ? L"Skin paketi boş." : messages.error;
            return result;
        }
        return writePatcherExecutable(makeBuildRequest(inputs, workspace.settings.title, std::move(package)),
                                      log, context);
    } catch (const std::bad_alloc&) {
        result.message = L"Bellek yetersiz.";
        return result;
    }
}

} // namespace nv
