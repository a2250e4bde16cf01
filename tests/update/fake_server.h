#pragma once
// A scripted stand-in for the HTTP transport: serves files from memory by address (the query ignored), with
// ranges, and misbehaves on request the way real servers and networks do. Each fault can be limited to a
// number of requests, so a test can say "the first two answers are cut short".

#include "core/files.h"
#include "update/http.h"

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace nv::test {

enum class Fault {
    None,
    Status,       // answer `status` with a short body
    CutShort,     // send `at` bytes of the body, then end as a transport reports a cut connection
    IgnoreRange,  // 200 with the whole file to a range request
    WrongRange,   // 206 with a Content-Range one byte later than asked
    WrongBytes,   // the right length with one byte changed
    Stall,        // nothing until cancelled (or `at` milliseconds, then a timeout)
    Endless,      // 200 without a length, bytes until the receiver stops
    HugeLength,   // a Content-Length of a petabyte
    RedirectLoop, // the transport gives up after too many redirects
    Refused,      // no connection
};

struct FaultRule {
    Fault fault = Fault::None;
    int status = 0;
    uint64_t at = 0;
    int times = -1; // requests affected; -1 every one
    int skip = 0;   // requests answered normally first
};

class FakeServer : public update::HttpTransport {
public:
    static constexpr const char* kBase = "http://patch.test/client/";

    void put(const std::string& url, Bytes body) {
        std::lock_guard lock(mutex_);
        files_[url] = std::make_shared<const Bytes>(std::move(body));
    }
    void putText(const std::string& url, const std::string& text) {
        put(url, Bytes(text.begin(), text.end()));
    }
    void fault(const std::string& url, FaultRule rule) {
        std::lock_guard lock(mutex_);
        faults_[url] = rule;
    }
    void clearFaults() {
        std::lock_guard lock(mutex_);
        faults_.clear();
    }
    // Requests for an address (query ignored) so far, and how many of them asked for a range.
    int requests(const std::string& url) const {
        std::lock_guard lock(mutex_);
        int n = 0;
        for (const auto& r : log_)
            n += stripQuery(r.url) == url;
        return n;
    }
    int rangeRequests(const std::string& url) const {
        std::lock_guard lock(mutex_);
        int n = 0;
        for (const auto& r : log_)
            n += stripQuery(r.url) == url && r.range.has_value();
        return n;
    }
    int totalRequests() const {
        std::lock_guard lock(mutex_);
        return int(log_.size());
    }
    std::vector<update::HttpRequest> log() const {
        std::lock_guard lock(mutex_);
        return log_;
    }

    update::TransferResult get(const update::HttpRequest& request, update::HttpBodySink& sink,
                               const std::atomic<bool>& cancel) override {
        using namespace update;
        const std::string url = stripQuery(request.url);
        FaultRule rule;
        std::shared_ptr<const Bytes> stored;
        {
            std::lock_guard lock(mutex_);
            log_.push_back(request);
            auto f = faults_.find(url);
            if (f != faults_.end()) {
                if (f->second.skip > 0) {
                    --f->second.skip;
                } else if (f->second.times != 0) {
                    rule = f->second;
                    if (f->second.times > 0) --f->second.times;
                }
            }
            auto file = files_.find(url);
            if (file != files_.end()) stored = file->second;
        }
        TransferResult result;
        switch (rule.fault) {
        case Fault::Refused:
            result.error = TransferError::Connect, result.systemCode = 12029;
            return result;
        case Fault::RedirectLoop:
            result.error = TransferError::Redirects, result.systemCode = 12156;
            return result;
        case Fault::Stall: {
            const auto end =
                std::chrono::steady_clock::now() + std::chrono::milliseconds(rule.at ? rule.at : 60000);
            while (!cancel.load() && std::chrono::steady_clock::now() < end)
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            result.error = cancel.load() ? TransferError::Cancelled : TransferError::Timeout;
            result.systemCode = cancel.load() ? 0 : 10060;
            return result;
        }
        case Fault::Status:
            return respond(rule.status, bytesOf("error page"), std::nullopt, sink, cancel);
        case Fault::Endless: {
            result.head.status = 200;
            if (!sink.onHead(result.head)) return stopped(result);
            const Bytes piece(65536, 'x');
            for (;;) {
                if (cancel.load()) return result.error = TransferError::Cancelled, result;
                if (!sink.onData(piece.data(), piece.size())) return stopped(result);
                result.bodyBytes += piece.size();
            }
        }
        case Fault::HugeLength: {
            result.head.status = 200;
            result.head.contentLength = uint64_t(1) << 50;
            if (!sink.onHead(result.head)) return stopped(result);
            return result;
        }
        default:
            break;
        }
        if (!stored) return respond(404, bytesOf("not found"), std::nullopt, sink, cancel);
        const Bytes& body = *stored;
        std::optional<update::ByteRange> range = request.range;
        if (range && (range->last >= body.size() || rule.fault == Fault::IgnoreRange)) range.reset();
        int status = 200;
        std::optional<update::ContentRange> contentRange;
        Bytes sent;
        if (range) {
            status = 206;
            sent.assign(body.begin() + long(range->first), body.begin() + long(range->last) + 1);
            update::ByteRange said = *range;
            if (rule.fault == Fault::WrongRange) ++said.first, ++said.last;
            contentRange = update::ContentRange{said, body.size()};
        } else {
            sent = body;
        }
        if (rule.fault == Fault::WrongBytes && !sent.empty()) sent[sent.size() / 2] ^= 0x5A;
        if (rule.fault == Fault::CutShort) {
            TransferResult cut = respond(status, sent, contentRange, sink, cancel, rule.at);
            if (cut.error == TransferError::None) cut.error = TransferError::ShortBody;
            return cut;
        }
        return respond(status, sent, contentRange, sink, cancel);
    }

    static std::string stripQuery(const std::string& url) { return url.substr(0, url.find('?')); }

private:
    static Bytes bytesOf(const char* text) {
        return Bytes(text, text + std::char_traits<char>::length(text));
    }
    static update::TransferResult stopped(update::TransferResult result) {
        result.error = update::TransferError::Stopped;
        return result;
    }

    // The head, then the body in pieces (up to `cut` bytes when given), as a transport hands them on.
    static update::TransferResult respond(int status, const Bytes& body,
                                          std::optional<update::ContentRange> range,
                                          update::HttpBodySink& sink, const std::atomic<bool>& cancel,
                                          std::optional<uint64_t> cut = std::nullopt) {
        update::TransferResult result;
        result.head.status = status;
        result.head.contentLength = body.size();
        result.head.contentRange = range;
        if (!sink.onHead(result.head)) return stopped(result);
        const uint64_t end = cut ? std::min<uint64_t>(*cut, body.size()) : body.size();
        for (uint64_t at = 0; at < end;) {
            if (cancel.load()) return result.error = update::TransferError::Cancelled, result;
            const size_t n = size_t(std::min<uint64_t>(end - at, 40000));
            if (!sink.onData(body.data() + at, n)) return stopped(result);
            at += n;
            result.bodyBytes += n;
        }
        return result;
    }

    mutable std::mutex mutex_;
    std::map<std::string, std::shared_ptr<const Bytes>> files_;
    std::map<std::string, FaultRule> faults_;
    std::vector<update::HttpRequest> log_;
};

} // namespace nv::test
