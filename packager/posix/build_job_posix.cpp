// Outside Windows there is no resource writer and no loader to verify with: a build gets as far as the
// composed, validated package and stops here with a clear message.

#include "packager/build_job.h"

namespace nv {

BuildResult writePatcherExecutable(const BuildRequest&, BuildLogFn, void*) {
    BuildResult result;
    result.message = L"Patcher exe'si yalnızca Windows'ta yazılabilir.";
    return result;
}

} // namespace nv
