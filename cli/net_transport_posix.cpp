#include "cli/net_transport.h"

namespace nv {

// The patcher fetches through WinHTTP; a second transport here could answer differently from the one
// players have, which is the very thing the command is there to tell.
std::unique_ptr<update::HttpTransport> openCliTransport(std::wstring& why) {
    why = L"Bu nvbuild ağdan okuyamaz: patcher'ın okuduğu gibi okumak için Windows yapısını (nvbuild.exe, "
          L"Linux'ta ./nvbuild) kullanın.";
    return nullptr;
}

} // namespace nv
