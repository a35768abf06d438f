// How many handles, enumerations and deletions use the client's libraries.
#pragma once

#include <cstdint>

namespace kv::file::s3 {

/// Counts a user, readying the libraries for the first; the new count.
std::int64_t beginUse();

/// Takes a user away, the last error kept.
void endUse() noexcept;

/// One user for as long as the object lives.
class Use {
public:
    Use() { beginUse(); }
    ~Use() { endUse(); }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
};

}  // namespace kv::file::s3
