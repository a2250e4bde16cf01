// A signed file is read back after a tool the operator chose wrote it, and a time-stamp token comes from a
// server on the network. Any bytes must give a state (and a span inside the bytes when a signature is found)
// or a time that is a real second of the token's year range, never a read outside the buffer.

#include "packager/signing_readback.h"

#include <cstdlib>

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    nv::PeSignatureSpan span;
    if (nv::findPeSignature(data, size, span) == nv::PeSignatureState::Found)
        check(span.size > 0 && span.offset <= size && span.size <= size - span.offset);

    int64_t seconds = -1;
    if (nv::timestampTokenTime(data, size, seconds)) {
        // Years 0000 to 9999: from -62167219200 (0000-01-01) to 253402300800 (10000-01-01).
        check(seconds >= -62167219200LL && seconds <= 253402300800LL); // a leap second may end 9999
        check(!nv::utcTimeText(seconds).empty());
    } else {
        check(seconds == -1);
    }
    return 0;
}
