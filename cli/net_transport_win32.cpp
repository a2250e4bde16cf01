#include "cli/net_transport.h"

#include "update/win32/winhttp_transport.h"

namespace nv {

std::unique_ptr<update::HttpTransport> openCliTransport(std::wstring& why) {
    return update::openWinHttpTransport(update::WinHttpOptions{}, &why);
}

} // namespace nv
