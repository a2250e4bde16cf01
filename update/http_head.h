#pragma once
// Reading an HTTP response's head from its raw text, and following a redirect's Location. The transport gets
// the head as one block of text from the system (which cannot give 64-bit numbers everywhere) and decides
// here, in portable code that is tested and fuzzed natively, what the status, the body's length and the range
// are. Every value comes from a server that may be hostile: numbers are checked for overflow, contradictions
// refuse the whole head.

#include "update/http.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nv::update {

// The head as the transport needs it: what the engine sees, plus how the body is framed and where a redirect
// points.
struct ParsedHead {
    HttpResponseHead head; // finalUrl is left to the caller
    bool chunked = false;  // Transfer-Encoding present: Content-Length does not count (and head has none)
    std::optional<std::string> location;
};

// The status line and header lines ("\r\n" or "\n" ends a line; the head ends at an empty line or the end of
// the text). False for text that is not an HTTP response head: no "HTTP/x.y NNN" first line, a header line
// without a colon, Content-Length values that disagree or do not fit 63 bits, two different Content-Ranges.
// A Content-Range that does not parse is left out (the engine refuses a 206 without one).
bool parseResponseHead(std::string_view raw, ParsedHead& out);

// "bytes first-last/total" or "bytes first-last/*"; nothing for any other form (an unsatisfied "bytes */n",
// last before first, last at or past a known total, numbers past 63 bits).
std::optional<ContentRange> parseContentRange(std::string_view value);

// How many body bytes the head promises: Content-Length; else, for a 206 with a Content-Range, that range's
// length; none for a chunked or connection-delimited body. Statuses that carry no body (1xx, 204, 304)
// promise 0.
std::optional<uint64_t> promisedBodyLength(const ParsedHead& parsed);

// A redirect's Location resolved against the address that answered it (absolute, "//host/...", "/path",
// "?query" or a relative path, with "." and ".." segments removed, the fragment dropped, spaces, controls and
// non-ASCII bytes percent-encoded). False when the result would not be an http:// or https:// address with a
// host.
bool resolveLocation(std::string_view base, std::string_view location, std::string& out);

} // namespace nv::update
