// Reading and writing: what all kinds share ahead of their own part.
//
// Invalid handles are refused, attached outputs get the bytes first, and a read that asks to be tried again starts over
// with a fresh look at the handle's kind, without limit.
#include "file/transfer.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>

#include "border/guard.h"
#include "errlog.h"
#include "file/kinds.h"
#include "file/outputs.h"
#include "kvos/file.h"

namespace kv::file {
namespace {

constexpr std::uint32_t kRefusedCount = 0xFFFFFFFF;

Outcome readOnce(kvOSFileHandle& record, void* buffer, const Transfer& transfer) {
    return kindOf(record).read(record, buffer, transfer);
}

/// Where nothing is read to or written from: the C library wants an address also for no bytes.
char noBytes;

/// A null buffer is the caller's mistake, told like a failed call.
bool hasBuffer(const void* buffer, std::uint32_t count) {
    if (buffer != nullptr || count == 0) return true;
    errno = EINVAL;
    return false;
}

}  // namespace

void reportFailedRead(const kvOSFileHandle& file, std::uint32_t count, int error) {
    if (isSilentError(error)) return;
    ErrOut("kvOSReadFile(%d %d)-FAIL=0x%08X(%d)\n", printed(handleOf(file)), static_cast<int>(count),
           static_cast<unsigned>(error), error);
}

void reportFailedWrite(const kvOSFileHandle& file, std::uint32_t count, int error) {
    if (isSilentError(error)) return;
    char text[1024];
    std::snprintf(text, sizeof text, "kvOSWriteFile(%d %d)-FAIL=0x%08X(%d) ", printed(handleOf(file)),
                  static_cast<int>(count), static_cast<unsigned>(error), error);
    ErrFmtOut(KVERR_CLASS_ERROR, nullptr, 0, "ERROR(kvFile): %s\n\r", text);
}

}  // namespace kv::file

namespace file = kv::file;
using kv::file::Outcome;

std::uint32_t kvOSReadFile(std::int64_t hFile, void* pBuffer, std::uint32_t dwCount, std::uint32_t* pdwRead,
                           kvOSOverlapped* pOverlapped) {
    if (!file::isValid(hFile) || dwCount == file::kRefusedCount) {
        ErrOut("kvOSReadFile(INVALID_HANDLE_VALUE) ");
        return 0;
    }
    kvOSFileHandle& record = file::recordOf(hFile);
    if (!file::hasBuffer(pBuffer, dwCount)) {
        if (pdwRead != nullptr) *pdwRead = 0;
        file::reportFailedRead(record, dwCount, errno);
        return 0;
    }
    void* target = pBuffer == nullptr ? &file::noBytes : pBuffer;
    Outcome outcome = Outcome::tryAgain;
    while (outcome == Outcome::tryAgain) outcome = file::readOnce(record, target, {dwCount, pdwRead, pOverlapped});
    return outcome == Outcome::done ? 1 : 0;
}

std::uint32_t kvOSWriteFile(std::int64_t hFile, const void* pBuffer, std::uint32_t dwCount, std::uint32_t* pdwWritten,
                            kvOSOverlapped* pOverlapped) {
    if (!file::isValid(hFile)) {
        ErrOut("kvOSWriteFile(INVALID_HANDLE_VALUE) ");
        return 0;
    }
    kvOSFileHandle& record = file::recordOf(hFile);
    if (!file::hasBuffer(pBuffer, dwCount)) {
        if (pdwWritten != nullptr) *pdwWritten = 0;
        file::reportFailedWrite(record, dwCount, errno);
        return 0;
    }
    const void* source = pBuffer == nullptr ? &file::noBytes : pBuffer;
    const file::FileKind& kind = file::kindOf(record);
    if (kind.repeatsWrites) {
        for (const std::int64_t output : file::outputsOf(record)) {
            std::uint32_t written = 0;
            kvOSWriteFile(output, source, dwCount, &written, nullptr);
        }
    }
    const Outcome outcome = kind.write(record, source, {dwCount, pdwWritten, pOverlapped});
    if (outcome == Outcome::counted) return dwCount;
    return outcome == Outcome::done ? 1 : 0;
}

std::uint32_t kvOSSaveBuffer(const char* path, const void* pBuffer, std::uint32_t dwCount) {
    const std::int64_t handle = kvOSCreateFile(path, KVFILE_WRITE, 1, nullptr, KVFILE_CREATE_ALWAYS, 0, 0);
    if (!file::isValid(handle)) return 0;
    std::uint32_t written = 0;
    if (kvOSWriteFile(handle, pBuffer, dwCount, &written, nullptr) == 0) {
        const kv::border::KeepErrno keep;
        kvOSCloseFile(handle);
        return 0;
    }
    // The bytes may reach the disk only now, and a full one is told only now.
    return kvOSCloseFile(handle) != 0 ? written : 0;
}
