// Deflate streams come from zip archives the tool did not write. Any bytes must be refused with a message or
// decode to exactly the size asked for, and zlib is the referee: a stream that zlib decodes to that size must
// decode here to the same bytes, and one it refuses (or decodes to another size) must fail here too.
//
// Input: a 3-byte little-endian expected size (the low 20 bits, so at most 1 MiB - 1), then the raw stream.

#include "readers/inflate.h"

#include <zlib.h>

#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 3) return 0;
    size_t expected = (data[0] | data[1] << 8 | data[2] << 16) & 0xFFFFF;
    data += 3;
    size -= 3;

    nv::Bytes out;
    std::wstring error;
    bool ok = nv::inflateRaw(data, size, expected, out, &error);
    if (ok ? out.size() != expected : error.empty() || !out.empty()) std::abort();

    // One byte of spare room, so that a stream longer than expected shows as such.
    nv::Bytes reference(expected + 1);
    z_stream z{};
    if (inflateInit2(&z, -15) != Z_OK) std::abort();
    z.next_in = const_cast<Bytef*>(data);
    z.avail_in = uInt(size);
    z.next_out = reference.data();
    z.avail_out = uInt(reference.size());
    bool zlibOk = inflate(&z, Z_FINISH) == Z_STREAM_END && z.total_out == expected;
    inflateEnd(&z);

    if (ok != zlibOk) std::abort();
    if (ok && expected && std::memcmp(out.data(), reference.data(), expected) != 0) std::abort();
    return 0;
}
