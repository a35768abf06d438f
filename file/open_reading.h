// Opening by name just to see whether there is something to read, as several questions about a path do.
#pragma once

#include <cstdint>

#include "kvos/file.h"

namespace kv::file {

/// Opens what is there, whatever kind it is. The open applies the redirect itself: pass the path as the caller gave it.
/// KVFILE_INVALID on failure, which a local open reports; meant: 0 for a null path.
inline std::int64_t openForReading(const char* path) {
    return kvOSCreateFile(path, KVFILE_READ, 3, nullptr, KVFILE_OPEN_EXISTING, 0, 0);
}

}  // namespace kv::file
