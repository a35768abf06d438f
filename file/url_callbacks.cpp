// What the transfer library calls while a URL is open. The place that bytes come to or go from is the record's buffer
// of the moment.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "errlog.h"
#include "file/handle.h"
#include "kvos/url.h"

namespace kv::file {
namespace {

constexpr std::size_t kSmallestGrown = 32768;

std::size_t room(const kvOSFileHandle& file) {
    return file.qwBufSize > file.qwBufFill ? file.qwBufSize - file.qwBufFill : 0;
}

void append(kvOSFileHandle& file, const char* data, std::size_t amount) {
    std::memcpy(static_cast<char*>(file.pBuf) + file.qwBufFill, data, amount);
    file.qwBufFill += amount;
}

/// A full buffer's terminator is in the byte that its owner put behind it, if any.
void terminate(kvOSFileHandle& file) {
    if (file.qwBufFill < file.qwBufSize) static_cast<char*>(file.pBuf)[file.qwBufFill] = '\0';
}

/// One byte more than the buffer says, for the terminator. Meant: of the old bytes only as many as new ones come.
bool grow(kvOSFileHandle& file, std::size_t amount) {
    const std::size_t size = std::max<std::size_t>(file.qwBufSize + 2 * amount, kSmallestGrown);
    auto* const larger = static_cast<char*>(std::calloc(size + 1, 1));
    if (larger == nullptr) {
        ErrOut("Error - curl write callback buffer grow failed\n");
        return false;
    }
    if (file.pBuf != nullptr) std::memcpy(larger, file.pBuf, std::min<std::size_t>(amount, file.qwBufSize));
    std::free(file.pBuf);
    file.pBuf = larger;
    file.qwBufSize = size;
    return true;
}

}  // namespace
}  // namespace kv::file

namespace file = kv::file;

std::size_t write_callback_open(char* pData, std::size_t nSize, std::size_t nCount, void* pFile) {
    kvOSFileHandle& record = *static_cast<kvOSFileHandle*>(pFile);
    const std::size_t amount = nSize * nCount;
    const std::size_t before = file::room(record);
    const bool grows = amount > before && record.fBufGrow != 0;
    const bool grown = grows && file::grow(record, amount);
    if (record.pBuf == nullptr) {
        record.qwBufFill = 0;
    } else {
        file::append(record, pData, std::min(amount, file::room(record)));
        file::terminate(record);
    }
    return grows && !grown ? before : amount;
}

std::size_t write_callback_read(char* pData, std::size_t nSize, std::size_t nCount, void* pFile) {
    kvOSFileHandle& record = *static_cast<kvOSFileHandle*>(pFile);
    const std::size_t amount = nSize * nCount;
    if (amount > file::room(record)) {
        ErrOut("Error - curl write callback read buffer too small\n");
        return 0;
    }
    if (amount > 0) file::append(record, pData, amount);
    return amount;
}

std::size_t read_callback_write(char* pTarget, std::size_t nSize, std::size_t nCount, void* pFile) {
    kvOSFileHandle& record = *static_cast<kvOSFileHandle*>(pFile);
    const std::size_t amount = nSize * nCount;
    if (amount == 0 || record.qwBufFill >= record.qwBufLen) return 0;
    const std::size_t given = std::min<std::size_t>(amount, record.qwBufLen - record.qwBufFill);
    std::memcpy(pTarget, static_cast<const char*>(record.pBuf) + record.qwBufFill, given);
    record.qwBufFill += given;
    return given;
}

int seek_callback(void*, std::int64_t, int) { return 0; }
