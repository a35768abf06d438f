// The answer of a REST command as it arrives: one block that is always a terminated text.
//
// Blocks are as large as the answer so far and a little more; a service's answer is small.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "file/handle.h"
#include "kvos/memory.h"
#include "kvos/rest.h"

namespace kv::file {
namespace {

constexpr std::uint64_t kSpare = 1024;
constexpr std::uint64_t kLargestBlock = std::numeric_limits<std::uint32_t>::max();

/// Meant: a block whose first byte is 0 stays, since it may be a constant empty text.
void releaseOutgrown(char* block) {
    if (block != nullptr && block[0] != '\0') std::free(block);
}

/// Moves the answer into a block with room for `amount` bytes more; false, and nothing has changed, without memory.
bool makeRoom(kvOSFileHandle& file, std::uint64_t amount) {
    if (amount > kLargestBlock - kSpare || file.qwBufLen > kLargestBlock - kSpare - amount) return false;
    const std::uint64_t size = file.qwBufLen + amount + kSpare;
    auto* const larger = static_cast<char*>(KVAlloc(static_cast<std::uint32_t>(size)));
    if (larger == nullptr) return false;
    if (file.qwBufLen > 0) kvOSCopyMemory(larger, file.pBuf, file.qwBufLen);
    releaseOutgrown(static_cast<char*>(file.pBuf));
    file.pBuf = larger;
    file.qwBufSize = size;
    return true;
}

}  // namespace
}  // namespace kv::file

namespace file = kv::file;

std::size_t kvOSHTTPWriteCommandCallback(char* pData, std::size_t nSize, std::size_t nCount, void* pFile) {
    const std::size_t amount = nSize * nCount;
    if (pFile == nullptr || amount == 0) return amount;
    kvOSFileHandle& record = *static_cast<kvOSFileHandle*>(pFile);
    if (record.pBuf == nullptr) record.qwBufLen = record.qwBufSize = 0;
    // The terminator needs a byte too, so bytes that would just fill the block do not fit.
    const bool fits = record.qwBufLen < record.qwBufSize && amount < record.qwBufSize - record.qwBufLen;
    if (!fits && !file::makeRoom(record, amount)) return 0;
    auto* const answer = static_cast<char*>(record.pBuf);
    kvOSCopyMemory(answer + record.qwBufLen, pData, amount);
    record.qwBufLen += amount;
    answer[record.qwBufLen] = '\0';
    return amount;
}
