// A response head comes from any server on the way. Any bytes must end in a head or a refusal, and what is
// read must hold together: a range in order, no Content-Length beside a transfer coding, a promised length
// that is one of the head's own numbers. The head's Location, resolved against a fixed address and used as
// the base for another, must give an http(s) address that a request line can carry as it is, or nothing.

#include "update/http_head.h"

#include <cstdlib>
#include <string>
#include <string_view>

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

void checkAddress(const std::string& url) {
    check(url.rfind("http://", 0) == 0 || url.rfind("https://", 0) == 0);
    for (char c : url) {
        auto b = static_cast<unsigned char>(c);
        check(b > 0x20 && b < 0x7F && c != '#');
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view raw(reinterpret_cast<const char*>(data), size);
    nv::update::ParsedHead parsed;
    if (nv::update::parseResponseHead(raw, parsed)) {
        const nv::update::HttpResponseHead& head = parsed.head;
        check(head.status >= 100 && head.status <= 999);
        check(!(parsed.chunked && head.contentLength));
        if (head.contentRange) {
            check(head.contentRange->range.first <= head.contentRange->range.last);
            if (head.contentRange->total) check(head.contentRange->range.last < *head.contentRange->total);
        }
        auto promised = nv::update::promisedBodyLength(parsed);
        if (promised && *promised != 0) {
            check(*promised == head.contentLength.value_or(0) ||
                  (head.contentRange && *promised == head.contentRange->range.length()));
        }
        if (parsed.location) {
            std::string out, again;
            if (nv::update::resolveLocation("http://h:81/a/b?q", *parsed.location, out)) {
                checkAddress(out);
                if (nv::update::resolveLocation(out, "../c", again)) checkAddress(again);
            }
        }
    }
    // The whole input as a Location too: most of the interesting bytes are in the path.
    std::string out;
    if (nv::update::resolveLocation("https://h/x/y/z", raw, out)) checkAddress(out);
    return 0;
}
