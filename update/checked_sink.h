#pragma once
// A transfer's body taken only when the response is the one that was asked for: the status, the
// Content-Range of a range, the length announced and the bytes that actually arrive are all checked, since a
// transport reports a cut connection as a clean end and a server may ignore a range, send another one, or
// never stop sending.

#include "update/http.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace nv::update {

enum class FetchFault {
    None,
    Cancelled,    // the run was stopped
    Abandoned,    // the body is no longer wanted (its file switched to one stream)
    Status,       // a status other than the one expected (200, or 206 for a range)
    RangeIgnored, // 200 with the whole file to a range request
    BadRange,     // 206 with a Content-Range other than the one requested
    BadLength,    // a Content-Length other than the expected length
    TooLong,      // more bytes than expected (or than the limit of an unknown length)
    ShortBody,    // fewer bytes than expected
    Network,      // the transport failed (see TransferResult)
    Consumer,     // the bytes could not be kept (a file error: see the caller)
};

struct FetchOutcome {
    FetchFault fault = FetchFault::None;
    TransferResult transfer;
    std::string detail; // for the log

    bool ok() const { return fault == FetchFault::None; }
    // Worth another try: the network, a server error (5xx), a body that did not fit.
    bool retriable() const;
};

struct Expected {
    std::optional<ByteRange> range; // requested
    std::optional<uint64_t> size;   // the whole resource's size, when known
    uint64_t limit = 0;             // most bytes accepted when the size is not known
};

class CheckedSink : public HttpBodySink {
public:
    using Consume = std::function<bool(const uint8_t* data, size_t size)>;

    // abandon: when set (may be null), the body stops being taken.
    CheckedSink(Expected expected, Consume consume, const std::atomic<bool>* abandon = nullptr);

    bool onHead(const HttpResponseHead& head) override;
    bool onData(const uint8_t* data, size_t size) override;

    // The outcome of the transfer the transport reported.
    FetchOutcome finish(const TransferResult& result) const;
    uint64_t received() const { return received_; }

private:
    bool refuse(FetchFault fault, std::string detail);

    Expected expected_;
    Consume consume_;
    const std::atomic<bool>* abandon_;
    std::optional<uint64_t> length_; // what the body must hold, once known
    uint64_t received_ = 0;
    FetchFault fault_ = FetchFault::None;
    std::string detail_;
};

// The transport's failure in the player's words ("bağlantı kurulamadı (12029)").
std::wstring transferErrorText(const TransferResult& result);
const char* transferErrorName(TransferError error);

} // namespace nv::update
