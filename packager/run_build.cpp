// The build as the builder's worker, the preview executable and nvbuild run it.

#include "packager/build_job.h"

#include "packager/build_start.h"
#include "skin/workspace.h"

#include <new>

namespace nv {

BuildResult runBuild(const SkinWorkspace& workspace, const BuildInputs& inputs, BuildLogFn log, void* context,
                     const BuildRunOptions& options) {
    BuildResult result;
    try {
        Bytes package;
        LoadMessages messages;
        const bool composed = workspace.buildSkinPackage(package, messages);
        if (!composed) result.message = messages.error.empty() ? L"Skin paketi boş." : messages.error;
        result.warnings = std::move(messages.warnings);
        if (!composed) return result;
        if (options.strict && !result.warnings.empty()) {
            result.message = L"Skin doğrulaması " + std::to_wstring(result.warnings.size()) +
                             L" uyarı verdi; katı denetimde uyarılı skinden patcher oluşturulmaz.";
            return result;
        }
        if (options.cancel && options.cancel->load()) {
            result.message = kBuildCancelledMessage;
            result.cancelled = true;
            return result;
        }
        BuildRequest request = makeBuildRequest(inputs, workspace.settings.title, std::move(package));
        request.cancel = options.cancel;
        BuildResult written = writePatcherExecutable(request, log, context);
        written.warnings = std::move(result.warnings);
        return written;
    } catch (const std::bad_alloc&) {
        result.message = L"Bellek yetersiz.";
        return result;
    }
}

} // namespace nv
