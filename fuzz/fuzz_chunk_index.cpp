// A chunk index comes from the server: any bytes must end in an index whose chunks cover exactly the file it
// names, within the sizes it names, or in a refusal. The input is the index without its trailing hash, which
// is added here, so that the fuzzer reaches the numbers behind it; the bytes as given are parsed too.

#include "update/chunk_index.h"

#include <cstdlib>
#include <string>

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

void parseAndCheck(const std::string& bytes) {
    using namespace nv::update;
    ChunkIndex index;
    std::string error;
    if (!parseChunkIndex(bytes, index, error)) {
        check(!error.empty() && index.chunks.empty());
        return;
    }
    check(isValidChunkParams(index.params));
    uint64_t offset = 0;
    for (size_t i = 0; i < index.chunks.size(); ++i) {
        const Chunk& chunk = index.chunks[i];
        check(chunk.offset == offset && chunk.length > 0 && chunk.length <= index.params.max);
        check(i + 1 == index.chunks.size() || chunk.length >= index.params.min);
        offset += chunk.length;
    }
    check(offset == index.fileSize);
    check(writeChunkIndex(index) == bytes);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string bytes(reinterpret_cast<const char*>(data), size);
    parseAndCheck(bytes);
    const nv::update::Hash128 sum = nv::update::hash128(bytes.data(), bytes.size());
    bytes.append(reinterpret_cast<const char*>(sum.data()), sum.size());
    parseAndCheck(bytes);
    return 0;
}
