// The messages of failed reads and writes, which local files and the shared checks both send.
#pragma once

#include <cstdint>

#include "file/handle.h"

namespace kv::file {

/// Tells of a failed transfer unless the error is one that is never told.
void reportFailedRead(const kvOSFileHandle& file, std::uint32_t count, int error);
void reportFailedWrite(const kvOSFileHandle& file, std::uint32_t count, int error);

}  // namespace kv::file
