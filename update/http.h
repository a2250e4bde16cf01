#pragma once
// What the update engine asks of a transport: one HTTP GET at a time per caller, streamed into a sink, with
// every failure named. The engine's decisions (what to fetch, what a response must look like, when to retry)
// are portable and take this interface; the patcher's transport is WinHTTP (update/win32/), the tests' is a
// scripted fake. Several threads call get() at once, one transfer each.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace nv::update {

// Bytes first..last of a resource, both inclusive (an HTTP "Range: bytes=first-last").
struct ByteRange {
    uint64_t first = 0;
    uint64_t last = 0;
    uint64_t length() const { return last - first + 1; }
    bool operator==(const ByteRange&) const = default;
};

struct HttpRequest {
    std::string url;                // absolute http:// or https:// address, already percent-encoded
    std::optional<ByteRange> range; // none: the whole resource
    // "Cache-Control: no-cache" (and "Pragma: no-cache"): for the config and the list, which a CDN must not
    // serve stale. The caller adds its own cache-busting query; files are fetched plainly so the CDN caches.
    bool noCache = false;
};

// "Content-Range: bytes first-last/total" as the server sent it ("*" for an unknown total).
struct ContentRange {
    ByteRange range;
    std::optional<uint64_t> total;
};

// The response's status and the headers the engine checks, parsed by the transport from the raw header text
// (the system's 64-bit number query is not available everywhere).
struct HttpResponseHead {
    int status = 0;
    std::optional<uint64_t> contentLength; // absent for a chunked body or an unparsable header
    std::optional<ContentRange> contentRange;
    std::string finalUrl; // after redirects
};

// Receives one transfer: the head once, then the body in pieces of any size. Returning false from either
// stops the transfer at once (TransferError::Stopped): a body longer than expected, bytes that fail a check,
// a full disk. The sink counts the bytes it is given; the transport also reports how many arrived.
class HttpBodySink {
public:
    virtual ~HttpBodySink() = default;
    virtual bool onHead(const HttpResponseHead& head) = 0;
    virtual bool onData(const uint8_t* data, size_t size) = 0;
};

enum class TransferError {
    None,      // the body arrived whole: as long as Content-Length (when given) said
    Cancelled, // the caller's cancel flag was set
    Stopped,   // the sink returned false
    Resolve,   // the host name does not resolve
    Connect,   // no connection (refused, unreachable)
    Timeout,   // connect, send or receive took longer than the transport's timeouts
    Tls,       // the secure channel failed (certificate, protocol)
    Redirects, // more redirects than allowed, or a redirect to something other than http/https
    ShortBody, // the connection ended before Content-Length bytes arrived (reported as a clean end)
    Protocol,  // a response that is not HTTP, or headers that cannot be read
    Other,     // any other failure of the system's transport
};

struct TransferResult {
    TransferError error = TransferError::None;
    uint32_t systemCode = 0; // the system's error code where there is one (WinHTTP / Winsock), else 0
    HttpResponseHead head;   // what arrived before the failure (status 0 when no response)
    uint64_t bodyBytes = 0;  // body bytes handed to the sink
};

// Errors worth another try later: the network or the server failed, not the request.
inline bool isTransientError(TransferError e) {
    switch (e) {
    case TransferError::Resolve:
    case TransferError::Connect:
    case TransferError::Timeout:
    case TransferError::ShortBody:
    case TransferError::Protocol:
    case TransferError::Other:
        return true;
    default:
        return false;
    }
}

class HttpTransport {
public:
    virtual ~HttpTransport() = default;
    // One GET, blocking until the body has been delivered, the transfer failed, or cancel was set (checked
    // between pieces; a blocked receive ends within the receive timeout). Follows at most a few redirects
    // (http/https only). Safe to call from several threads at once.
    virtual TransferResult get(const HttpRequest& request, HttpBodySink& sink,
                               const std::atomic<bool>& cancel) = 0;
};

} // namespace nv::update
