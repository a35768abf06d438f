// The last error is the calling thread's errno, so that numbers pass through it in both directions.
#include <cerrno>
#include <cstdint>

#include "kvos/file.h"

std::uint32_t kvOSSetLastError(std::uint32_t dwError) {
    errno = static_cast<int>(dwError);
    return dwError;
}

std::uint32_t kvOSGetLastError(void) { return static_cast<std::uint32_t>(errno); }

// There is no asynchronous I/O: every call completes before it returns.
std::uint32_t kvOSHasOverlappedIoCompleted(const kvOSOverlapped*) { return 1; }

std::uint32_t kvOSGetOverlappedResult(std::int64_t, kvOSOverlapped*, std::uint32_t*, std::uint32_t) { return 1; }
