#include "update/chunk_index.h"

#include "core/byte_order.h"
#include "core/crc32.h"
#include "core/text.h"
#include "update/bookkeeping.h"

#include <vector>

namespace nv::update {
namespace {

constexpr std::string_view kMagic = "NVCHIDX1";
constexpr size_t kHeaderBytes = 36;
constexpr size_t kEntryBytes = 20;
constexpr size_t kTrailerBytes = 16;

void putLe32(std::string& out, uint32_t v) {
    for (int i = 0; i < 4; ++i)
        out += char(uint8_t(v >> (8 * i)));
}

void putLe64(std::string& out, uint64_t v) {
    putLe32(out, uint32_t(v));
    putLe32(out, uint32_t(v >> 32));
}

const uint8_t* at(std::string_view bytes, size_t offset) {
    return reinterpret_cast<const uint8_t*>(bytes.data()) + offset;
}

uint64_t readLe64(const uint8_t* p) {
    return uint64_t(readLe32(p)) | uint64_t(readLe32(p + 4)) << 32;
}

bool parseDecimal(std::string_view text, uint64_t& value) {
    if (text.empty() || text.size() > 15 || (text.size() > 1 && text[0] == '0')) return false;
    value = 0;
    for (char c : text) {
        if (c < '0' || c > '9') return false;
        value = value * 10 + uint64_t(c - '0');
    }
    return true;
}

} // namespace

std::string writeChunkIndex(const ChunkIndex& index) {
    std::string out;
    out.reserve(kHeaderBytes + index.chunks.size() * kEntryBytes + kTrailerBytes);
    out += kMagic;
    putLe32(out, index.params.min);
    putLe32(out, index.params.avg);
    putLe32(out, index.params.max);
    putLe64(out, index.fileSize);
    putLe32(out, index.fileCrc);
    putLe32(out, uint32_t(index.chunks.size()));
    for (const Chunk& chunk : index.chunks) {
        putLe32(out, chunk.length);
        out.append(reinterpret_cast<const char*>(chunk.hash.data()), chunk.hash.size());
    }
    const Hash128 sum = hash128(out.data(), out.size());
    out.append(reinterpret_cast<const char*>(sum.data()), sum.size());
    return out;
}

bool parseChunkIndex(std::string_view bytes, ChunkIndex& index, std::string& error) {
    index = ChunkIndex();
    if (bytes.size() > kMaxIndexBytes) return error = "indeks cok buyuk", false;
    if (bytes.size() < kHeaderBytes + kTrailerBytes || bytes.substr(0, kMagic.size()) != kMagic)
        return error = "indeks degil", false;
    const size_t body = bytes.size() - kTrailerBytes;
    Hash128 stored;
    std::copy(at(bytes, body), at(bytes, body) + kTrailerBytes, stored.begin());
    if (hash128(bytes.data(), body) != stored) return error = "indeksin ozeti tutmuyor", false;

    ChunkParams params{readLe32(at(bytes, 8)), readLe32(at(bytes, 12)), readLe32(at(bytes, 16))};
    const uint64_t fileSize = readLe64(at(bytes, 20));
    const uint32_t fileCrc = readLe32(at(bytes, 28));
    const uint32_t count = readLe32(at(bytes, 32));
    if (!isValidChunkParams(params)) return error = "gecersiz parca boyutlari", false;
    if (fileSize > kMaxListFileSize) return error = "dosya boyutu cok buyuk", false;
    if ((body - kHeaderBytes) % kEntryBytes != 0 || (body - kHeaderBytes) / kEntryBytes != count)
        return error = "parca sayisi indeksin boyuna uymuyor", false;
    // Every chunk holds at least one byte, every chunk but the last at least min.
    if (count > fileSize || (fileSize > 0 && count == 0))
        return error = "parca sayisi dosyaya uymuyor", false;

    index.params = params;
    index.fileSize = fileSize;
    index.fileCrc = fileCrc;
    index.chunks.resize(count);
    uint64_t offset = 0;
    for (uint32_t i = 0; i < count; ++i) {
        const uint8_t* entry = at(bytes, kHeaderBytes + size_t(i) * kEntryBytes);
        Chunk& chunk = index.chunks[i];
        chunk.offset = offset;
        chunk.length = readLe32(entry);
        std::copy(entry + 4, entry + kEntryBytes, chunk.hash.begin());
        const bool last = i + 1 == count;
        if (chunk.length == 0 || chunk.length > params.max || (!last && chunk.length < params.min) ||
            chunk.length > fileSize - offset) {
            index = ChunkIndex();
            return error = "parca " + std::to_string(i) + ": uzunluk gecersiz", false;
        }
        offset += chunk.length;
    }
    if (offset != fileSize) {
        index = ChunkIndex();
        return error = "parcalar dosyanin boyuna varmiyor", false;
    }
    return true;
}

std::string indexPathFor(std::string_view listPath) {
    return std::string(kIndexFolder) + "/" + hashHex(hash128(listPath.data(), listPath.size())) + ".nvx";
}

std::string indexRefLine(std::string_view path, const IndexRef& ref) {
    return std::string(kIndexRefPrefix) + std::string(path) + "\t" + std::to_string(ref.size) + "\t" +
           hashHex(ref.hash);
}

std::map<std::string, IndexRef> indexRefs(const FileList& list) {
    std::map<std::string, const ListEntry*> listed;
    for (const ListEntry& entry : list.files)
        listed.emplace(entry.path, &entry);
    std::map<std::string, IndexRef> refs;
    std::map<std::string, int> seen;
    for (const std::string& line : list.comments) {
        if (!line.starts_with(kIndexRefPrefix)) continue;
        // path, size, hash: a path never holds a tab (the list refuses control characters).
        const std::string_view rest = std::string_view(line).substr(kIndexRefPrefix.size());
        const size_t sizeTab = rest.find('\t');
        const size_t hashTab = sizeTab == std::string_view::npos ? sizeTab : rest.find('\t', sizeTab + 1);
        if (hashTab == std::string_view::npos) continue;
        const std::string path(rest.substr(0, sizeTab));
        IndexRef ref;
        if (!parseDecimal(rest.substr(sizeTab + 1, hashTab - sizeTab - 1), ref.size) || ref.size == 0 ||
            ref.size > kMaxIndexBytes || !parseHashHex(rest.substr(hashTab + 1), ref.hash) ||
            !listed.count(path))
            continue;
        if (++seen[path] == 1) refs[path] = ref;
    }
    // A file named twice is trusted with neither: the list was not written by crclist.
    for (const auto& [path, times] : seen)
        if (times > 1) refs.erase(path);
    return refs;
}

bool chunkFile(GameFiles& files, const std::string& path, ChunkParams params, const std::atomic<bool>& cancel,
               ChunkIndex& index, FileError& error) {
    index = ChunkIndex();
    index.params = params;
    FileInfo info;
    if (!files.info(path, info) || !info.exists || info.isFolder) {
        error = {FileFault::NotFound, 0, path};
        return false;
    }
    std::unique_ptr<PartFile> file = files.openRead(path, error);
    if (!file) return false;
    ChunkHasher chunker(params, [&](const Chunk& chunk) { index.chunks.push_back(chunk); });
    Crc32 crc;
    std::vector<uint8_t> buffer(1u << 20);
    for (uint64_t offset = 0; offset < info.size;) {
        if (cancel.load(std::memory_order_relaxed)) {
            error = {FileFault::Other, 0, path};
            return false;
        }
        const size_t n = size_t(std::min<uint64_t>(buffer.size(), info.size - offset));
        if (!file->read(offset, buffer.data(), n, error)) return false;
        crc.update(buffer.data(), n);
        chunker.update(buffer.data(), n);
        offset += n;
    }
    chunker.finish();
    index.fileSize = info.size;
    index.fileCrc = crc.value();
    return true;
}

} // namespace nv::update
