#pragma once
// The patcher's HTTP transport: WinHTTP in synchronous mode, one session shared by every thread, one
// connection and request per get(). WinHTTP reuses kept-alive connections of the session across calls.

#include "update/http.h"

#include <cstdint>
#include <memory>
#include <string>

namespace nv::update {

struct WinHttpOptions {
    uint32_t connectTimeoutMs = 15000; // name resolution and connecting, each
    uint32_t sendTimeoutMs = 20000;
    // How long a silent server may keep a read waiting; also how long a cancel may take while one waits
    // (the system's blocked read cannot be interrupted).
    uint32_t receiveTimeoutMs = 20000;
    int maxRedirects = 5;
    std::wstring userAgent = L"Norvane-Patcher/1.0";
};

// Opens the session: the system's automatic proxy where it has one (Windows 8.1 and later), else the proxy
// configured for WinHTTP; TLS 1.2 or later where the system allows choosing. Certificates are always checked.
// Null with the system's reason when WinHTTP cannot be set up.
std::unique_ptr<HttpTransport> openWinHttpTransport(const WinHttpOptions& options,
                                                    std::wstring* error = nullptr);

} // namespace nv::update
