// The server's configuration comes from whoever runs (or has taken over) the server: any bytes must end in a
// configuration or in one of the two refusals, and an accepted one must hold only addresses the run can use.

#include "update/file_list.h"
#include "update/remote_config.h"
#include "update/url.h"

#include <cstdlib>
#include <string_view>

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    nv::update::RemoteConfig config;
    std::string detail;
    const auto error = nv::update::parseRemoteConfig(
        std::string_view(reinterpret_cast<const char*>(data), size), config, detail);
    if (error != nv::update::ConfigError::None) {
        check(!detail.empty());
        return 0;
    }
    check(nv::update::isHttpUrl(config.crcpatchUrl) && config.crcpatchUrl.back() == '/');
    std::string why;
    check(nv::update::isValidListPath(config.crclist, why));
    check(config.patcherUrl.empty() || nv::update::isHttpUrl(config.patcherUrl));
    return 0;
}
