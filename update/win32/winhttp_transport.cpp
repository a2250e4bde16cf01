#include "update/win32/winhttp_transport.h"

#include "core/files.h"
#include "core/text.h"
#include "update/http_head.h"

#include <winsock2.h>
#include <windows.h>
#include <winhttp.h>

#include <algorithm>
#include <vector>

namespace nv::update {

namespace {

constexpr DWORD kPieceSize = 128 * 1024;
// WinHTTP bounds a head at 64 KiB by default; this only bounds our copy of it.
constexpr DWORD kMaxHeadBytes = 1024 * 1024;

class InternetHandle {
public:
    explicit InternetHandle(HINTERNET h = nullptr) : h_(h) {}
    ~InternetHandle() {
        if (h_) WinHttpCloseHandle(h_);
    }
    InternetHandle(const InternetHandle&) = delete;
    InternetHandle& operator=(const InternetHandle&) = delete;
    HINTERNET get() const { return h_; }
    void reset(HINTERNET h) {
        if (h_) WinHttpCloseHandle(h_);
        h_ = h;
    }

private:
    HINTERNET h_;
};

// What each system error means to the engine. WinHTTP passes some Winsock codes through as they are (under
// Wine a time-out is 10060, not 12002).
struct ErrorClass {
    DWORD code;
    TransferError error;
};

constexpr ErrorClass kErrorClasses[] = {
    {ERROR_WINHTTP_NAME_NOT_RESOLVED, TransferError::Resolve},
    {WSAHOST_NOT_FOUND, TransferError::Resolve},
    {WSATRY_AGAIN, TransferError::Resolve},
    {WSANO_DATA, TransferError::Resolve},
    {ERROR_WINHTTP_CANNOT_CONNECT, TransferError::Connect},
    {ERROR_WINHTTP_CONNECTION_ERROR, TransferError::Connect},
    {WSAECONNREFUSED, TransferError::Connect},
    {WSAECONNRESET, TransferError::Connect},
    {WSAECONNABORTED, TransferError::Connect},
    {WSAENETDOWN, TransferError::Connect},
    {WSAENETUNREACH, TransferError::Connect},
    {WSAENETRESET, TransferError::Connect},
    {WSAEHOSTUNREACH, TransferError::Connect},
    {ERROR_WINHTTP_TIMEOUT, TransferError::Timeout},
    {WSAETIMEDOUT, TransferError::Timeout},
    {ERROR_TIMEOUT, TransferError::Timeout},
    {ERROR_WINHTTP_SECURE_FAILURE, TransferError::Tls},
    {ERROR_WINHTTP_SECURE_CHANNEL_ERROR, TransferError::Tls},
    {ERROR_WINHTTP_SECURE_INVALID_CA, TransferError::Tls},
    {ERROR_WINHTTP_SECURE_INVALID_CERT, TransferError::Tls},
    {ERROR_WINHTTP_SECURE_CERT_DATE_INVALID, TransferError::Tls},
    {ERROR_WINHTTP_SECURE_CERT_CN_INVALID, TransferError::Tls},
    {ERROR_WINHTTP_SECURE_CERT_REVOKED, TransferError::Tls},
    {ERROR_WINHTTP_SECURE_CERT_REV_FAILED, TransferError::Tls},
    {ERROR_WINHTTP_SECURE_CERT_WRONG_USAGE, TransferError::Tls},
    {ERROR_WINHTTP_CLIENT_AUTH_CERT_NEEDED, TransferError::Tls},
    {ERROR_WINHTTP_REDIRECT_FAILED, TransferError::Redirects},
    {ERROR_WINHTTP_INVALID_SERVER_RESPONSE, TransferError::Protocol},
    {ERROR_WINHTTP_HEADER_COUNT_EXCEEDED, TransferError::Protocol},
    {ERROR_WINHTTP_HEADER_SIZE_OVERFLOW, TransferError::Protocol},
    {ERROR_WINHTTP_CHUNKED_ENCODING_HEADER_SIZE_OVERFLOW, TransferError::Protocol},
    {ERROR_WINHTTP_RESPONSE_DRAIN_OVERFLOW, TransferError::Protocol},
    {ERROR_WINHTTP_HTTP_PROTOCOL_MISMATCH, TransferError::Protocol},
};

// A connection lost once the body has begun is a body cut short: worth another try from where it stopped.
TransferError classify(DWORD code, bool inBody) {
    for (const ErrorClass& c : kErrorClasses) {
        if (c.code != code) continue;
        if (inBody && c.error == TransferError::Connect) return TransferError::ShortBody;
        return c.error;
    }
    return TransferError::Other;
}

bool isRedirect(int status) {
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

class WinHttpTransport final : public HttpTransport {
public:
    WinHttpTransport(HINTERNET session, const WinHttpOptions& options)
        : session_(session), options_(options) {}

    TransferResult get(const HttpRequest& request, HttpBodySink& sink,
                       const std::atomic<bool>& cancel) override;

private:
    struct Exchange {
        InternetHandle connection;
        InternetHandle request;
        ParsedHead parsed;
    };

    bool sendAndReceiveHead(const std::string& url, const HttpRequest& request, Exchange& ex,
                            TransferResult& result) const;
    void readBody(Exchange& ex, HttpBodySink& sink, const std::atomic<bool>& cancel,
                  TransferResult& result) const;

    InternetHandle session_;
    const WinHttpOptions options_;
};

TransferResult& fail(TransferResult& result, TransferError error, DWORD code = 0) {
    result.error = error;
    result.systemCode = code;
    return result;
}

TransferResult WinHttpTransport::get(const HttpRequest& request, HttpBodySink& sink,
                                     const std::atomic<bool>& cancel) {
    TransferResult result;
    std::string url = request.url;
    for (int redirects = 0;; ++redirects) {
        if (cancel.load()) return fail(result, TransferError::Cancelled);
        Exchange ex;
        result.head = HttpResponseHead();
        result.head.finalUrl = url;
        if (!sendAndReceiveHead(url, request, ex, result)) {
            if (cancel.load()) return fail(result, TransferError::Cancelled);
            return result;
        }
        if (isRedirect(result.head.status) && ex.parsed.location) {
            // Followed here rather than by WinHTTP: the count, the schemes and the final address are ours.
            std::string next;
            if (redirects >= options_.maxRedirects || !resolveLocation(url, *ex.parsed.location, next))
                return fail(result, TransferError::Redirects);
            url = std::move(next);
            continue;
        }
        if (!sink.onHead(result.head)) return fail(result, TransferError::Stopped);
        readBody(ex, sink, cancel, result);
        return result;
    }
}

bool WinHttpTransport::sendAndReceiveHead(const std::string& url, const HttpRequest& request, Exchange& ex,
                                          TransferResult& result) const {
    auto systemFailure = [&] {
        DWORD code = GetLastError();
        fail(result, classify(code, false), code);
        return false;
    };

    std::wstring wideUrl = utf8ToWide(url);
    URL_COMPONENTS parts = {};
    parts.dwStructSize = sizeof(parts);
    parts.dwHostNameLength = DWORD(-1);
    parts.dwUrlPathLength = DWORD(-1);
    parts.dwExtraInfoLength = DWORD(-1);
    if (!WinHttpCrackUrl(wideUrl.c_str(), DWORD(wideUrl.size()), 0, &parts)) return systemFailure();
    if (parts.nScheme != INTERNET_SCHEME_HTTP && parts.nScheme != INTERNET_SCHEME_HTTPS) {
        fail(result, TransferError::Other, ERROR_WINHTTP_UNRECOGNIZED_SCHEME);
        return false;
    }
    std::wstring host(parts.lpszHostName, parts.dwHostNameLength);
    std::wstring path(parts.lpszUrlPath, parts.dwUrlPathLength);
    path.append(parts.lpszExtraInfo, parts.dwExtraInfoLength);
    if (path.empty()) path = L"/";

    ex.connection.reset(WinHttpConnect(session_.get(), host.c_str(), parts.nPort, 0));
    if (!ex.connection.get()) return systemFailure();
    // The address is sent as the caller encoded it: WinHTTP's own escaping would encode a "%" a second time.
    DWORD flags = WINHTTP_FLAG_ESCAPE_DISABLE | WINHTTP_FLAG_ESCAPE_DISABLE_QUERY;
    if (parts.nScheme == INTERNET_SCHEME_HTTPS) flags |= WINHTTP_FLAG_SECURE;
    ex.request.reset(WinHttpOpenRequest(ex.connection.get(), L"GET", path.c_str(), nullptr,
                                        WINHTTP_NO_REFERER, WINHTTP_DEFAULT_ACCEPT_TYPES, flags));
    if (!ex.request.get()) return systemFailure();
    DWORD features = WINHTTP_DISABLE_REDIRECTS;
    if (!WinHttpSetOption(ex.request.get(), WINHTTP_OPTION_DISABLE_FEATURE, &features, sizeof(features)))
        return systemFailure();

    std::wstring headers;
    if (request.range)
        headers += L"Range: bytes=" + std::to_wstring(request.range->first) + L"-" +
                   std::to_wstring(request.range->last) + L"\r\n";
    if (request.noCache) headers += L"Cache-Control: no-cache\r\nPragma: no-cache\r\n";
    if (!WinHttpSendRequest(ex.request.get(),
                            headers.empty() ? WINHTTP_NO_ADDITIONAL_HEADERS : headers.c_str(),
                            DWORD(headers.size()), WINHTTP_NO_REQUEST_DATA, 0, 0, 0))
        return systemFailure();
    if (!WinHttpReceiveResponse(ex.request.get(), nullptr)) return systemFailure();

    // The head as text, parsed by us: the system's numeric query stops at 32 bits where 64 are not supported.
    DWORD bytes = 0;
    WinHttpQueryHeaders(ex.request.get(), WINHTTP_QUERY_RAW_HEADERS_CRLF, WINHTTP_HEADER_NAME_BY_INDEX,
                        nullptr, &bytes, WINHTTP_NO_HEADER_INDEX);
    if (GetLastError() != ERROR_INSUFFICIENT_BUFFER || bytes == 0 || bytes > kMaxHeadBytes) {
        fail(result, TransferError::Protocol, bytes > kMaxHeadBytes ? 0 : GetLastError());
        return false;
    }
    std::wstring raw(bytes / sizeof(wchar_t) + 1, L'\0');
    if (!WinHttpQueryHeaders(ex.request.get(), WINHTTP_QUERY_RAW_HEADERS_CRLF, WINHTTP_HEADER_NAME_BY_INDEX,
                             raw.data(), &bytes, WINHTTP_NO_HEADER_INDEX))
        return systemFailure();
    raw.resize(bytes / sizeof(wchar_t));
    if (!parseResponseHead(wideToUtf8(raw), ex.parsed)) {
        fail(result, TransferError::Protocol);
        return false;
    }
    std::string finalUrl = std::move(result.head.finalUrl);
    result.head = ex.parsed.head;
    result.head.finalUrl = std::move(finalUrl);
    return true;
}

void WinHttpTransport::readBody(Exchange& ex, HttpBodySink& sink, const std::atomic<bool>& cancel,
                                TransferResult& result) const {
    // The system ends a body that the connection cut short as if it were complete: the bytes are counted
    // against what the head promised.
    std::optional<uint64_t> promised = promisedBodyLength(ex.parsed);
    std::vector<uint8_t> piece(kPieceSize);
    for (;;) {
        if (cancel.load()) {
            fail(result, TransferError::Cancelled);
            return;
        }
        DWORD available = 0;
        if (!WinHttpQueryDataAvailable(ex.request.get(), &available)) {
            DWORD code = GetLastError();
            fail(result, cancel.load() ? TransferError::Cancelled : classify(code, true), code);
            return;
        }
        if (available == 0) break;
        DWORD read = 0;
        if (!WinHttpReadData(ex.request.get(), piece.data(), std::min(available, kPieceSize), &read)) {
            DWORD code = GetLastError();
            fail(result, cancel.load() ? TransferError::Cancelled : classify(code, true), code);
            return;
        }
        if (read == 0) break;
        if (promised && read > *promised - result.bodyBytes) {
            // More than the head announced (a connection-delimited 206 running past its range).
            fail(result, TransferError::Protocol);
            return;
        }
        result.bodyBytes += read;
        if (!sink.onData(piece.data(), read)) {
            fail(result, TransferError::Stopped);
            return;
        }
    }
    if (promised && result.bodyBytes < *promised) fail(result, TransferError::ShortBody);
}

} // namespace

std::unique_ptr<HttpTransport> openWinHttpTransport(const WinHttpOptions& options, std::wstring* error) {
    HINTERNET session = WinHttpOpen(options.userAgent.c_str(), WINHTTP_ACCESS_TYPE_AUTOMATIC_PROXY,
                                    WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0);
    if (!session) // before Windows 8.1
        session = WinHttpOpen(options.userAgent.c_str(), WINHTTP_ACCESS_TYPE_DEFAULT_PROXY,
                              WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0);
    if (!session) {
        if (error) *error = systemErrorText(GetLastError());
        return nullptr;
    }
    auto transport = std::make_unique<WinHttpTransport>(session, options);
    int connect = int(options.connectTimeoutMs);
    if (!WinHttpSetTimeouts(session, connect, connect, int(options.sendTimeoutMs),
                            int(options.receiveTimeoutMs))) {
        if (error) *error = systemErrorText(GetLastError());
        return nullptr;
    }
    // The wait for a response's head has a time-out of its own (90 s unless set), apart from the receive one.
    DWORD headTimeout = options.receiveTimeoutMs;
    if (!WinHttpSetOption(session, WINHTTP_OPTION_RECEIVE_RESPONSE_TIMEOUT, &headTimeout,
                          sizeof(headTimeout))) {
        if (error) *error = systemErrorText(GetLastError());
        return nullptr;
    }
    // A system that cannot choose keeps its own defaults (Windows 7 without its TLS 1.2 update).
    DWORD protocols = WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2 | WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_3;
    if (!WinHttpSetOption(session, WINHTTP_OPTION_SECURE_PROTOCOLS, &protocols, sizeof(protocols))) {
        protocols = WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2;
        WinHttpSetOption(session, WINHTTP_OPTION_SECURE_PROTOCOLS, &protocols, sizeof(protocols));
    }
    return transport;
}

} // namespace nv::update
