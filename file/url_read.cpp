// Reading a URL: byte ranges, the small ones through a cache of one MiB.
//
// The cache is for one reader of an unchanging file; nothing empties it.
#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>

#include "file/curl.h"
#include "file/url.h"
#include "kvos/memory.h"
#include "kvos/url.h"

namespace kv::file {
namespace {

/// A range of the file, and where its bytes go.
struct Range {
    std::uint64_t first;
    std::uint64_t last;  // inclusive
    void* buffer;
    std::uint32_t size;  // of the buffer
};

bool isCached(const kvOSFileHandle& file, std::uint32_t count) {
    if (file.qwPos < file.qwCacheStart) return false;
    const std::uint64_t offset = file.qwPos - file.qwCacheStart;
    return offset <= file.dwCacheLen && count <= file.dwCacheLen - offset;
}

const char* cachedAt(const kvOSFileHandle& file) {
    return static_cast<const char*>(file.pCache) + (file.qwPos - file.qwCacheStart);
}

/// What is left of a file of known size; of one of size 0, which is unknown as well, all that is asked for.
std::uint32_t wantedOf(const kvOSFileHandle& file, std::uint32_t count) {
    if (file.qwSize == 0 || file.qwSize == kUnknownSize) return count;
    if (file.qwPos >= file.qwSize) return 0;
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(count, file.qwSize - file.qwPos));
}

void setBuffer(kvOSFileHandle& file, void* buffer, std::uint32_t size) {
    file.pBuf = buffer;
    file.qwBufFill = 0;
    file.qwBufLen = file.qwBufSize = size;
}

bool setRange(CURL* transfer, const Range& range) {
    char text[136];
    std::snprintf(text, sizeof text, "%" PRIu64 "-%" PRIu64, range.first, range.last);
    return curl_easy_setopt(transfer, CURLOPT_RANGE, text) == CURLE_OK;
}

/// Whether the answer is the whole file in place of a range behind its start, whose bytes would be taken for others.
bool isRangeIgnored(CURL* transfer, const Range& range) {
    constexpr long kWholeFile = 200;
    if (range.first == 0 || statusOf(transfer) != kWholeFile) return false;
    errno = EPROTO;
    return true;
}

bool perform(kvOSFileHandle& file, const Range& range) {
    setBuffer(file, range.buffer, range.size);
    const CURLcode result = curl_easy_perform(file.pFile);
    setErrno(file.pFile, result);
    return result == CURLE_OK;
}

/// Once, or once more with a new token where there is one.
bool transferOrRetry(kvOSFileHandle& file, const Range& range) {
    CURL* const transfer = file.pFile;
    curl_easy_setopt(transfer, CURLOPT_CUSTOMREQUEST, "GET");
    curl_easy_setopt(transfer, CURLOPT_VERBOSE, 1L);  // on every read. Meant.
    kvOSOAuthAddHeader(&file, transfer);
    if (!setRange(transfer, range)) return false;
    if (perform(file, range)) return true;
    if (file.szAccessToken == nullptr) return false;
    kvOSOAuthAuthorize(&file);
    kvOSOAuthAddHeader(&file, transfer);
    return setRange(transfer, range) && perform(file, range);
}

bool fetch(kvOSFileHandle& file, const Range& range) {
    return transferOrRetry(file, range) && !isRangeIgnored(file.pFile, range);
}

Outcome deliver(kvOSFileHandle& file, const Transfer& transfer, std::uint64_t count) {
    if (transfer.moved != nullptr) *transfer.moved = static_cast<std::uint32_t>(count);
    file.qwPos += count;
    setBuffer(file, nullptr, 0);
    return Outcome::done;
}

Outcome refuse(kvOSFileHandle& file) {
    setBuffer(file, nullptr, 0);
    return Outcome::failed;
}

Outcome readDirectly(kvOSFileHandle& file, void* buffer, const Transfer& transfer) {
    const std::uint32_t wanted = wantedOf(file, transfer.count);
    if (!fetch(file, {file.qwPos, file.qwPos + wanted - 1, buffer, wanted})) return refuse(file);
    return deliver(file, transfer, file.qwBufFill);
}

/// Meant: what is wanted counts as read, even if less came; the rest is zeros. A file that gives nothing is empty.
Outcome readThroughCache(kvOSFileHandle& file, void* buffer, const Transfer& transfer) {
    const std::uint32_t wanted = wantedOf(file, transfer.count);
    file.qwCacheStart = file.qwPos;
    file.dwCacheLen = 0;
    if (!fetch(file, {file.qwPos, file.qwPos + kUrlBufferSize - 1, file.pCache, kUrlBufferSize})) return refuse(file);
    file.dwCacheLen = static_cast<std::uint32_t>(file.qwBufFill);
    if (file.dwCacheLen == 0) return deliver(file, transfer, 0);
    if (file.dwCacheLen < wanted) {
        std::memset(static_cast<char*>(file.pCache) + file.dwCacheLen, 0, wanted - file.dwCacheLen);
    }
    kvOSCopyMemory(buffer, file.pCache, wanted);
    return deliver(file, transfer, wanted);
}

/// What was opened for writing would send where it should ask; a refused seek left no position.
bool canRead(const kvOSFileHandle& file) {
    const bool sends = (file.dwAccess & KVFILE_WRITE) != 0;
    if (!sends && file.qwPos != kNowhere) return true;
    errno = sends ? EBADF : EINVAL;
    return false;
}

}  // namespace

Outcome readUrl(kvOSFileHandle& file, void* buffer, const Transfer& transfer) {
    if (!canRead(file)) return Outcome::failed;
    if (isCached(file, transfer.count)) {
        kvOSCopyMemory(buffer, cachedAt(file), transfer.count);
        return deliver(file, transfer, transfer.count);
    }
    return transfer.count >= kUrlBufferSize ? readDirectly(file, buffer, transfer)
                                            : readThroughCache(file, buffer, transfer);
}

}  // namespace kv::file
