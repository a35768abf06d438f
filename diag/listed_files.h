// The files that a pattern of the find calls names: everything but folders.
#pragma once

#include <cstdint>

#include "kvos/attributes.h"
#include "kvos/find.h"

namespace kv::diag {

/// Ends a search with its scope.
class EndOfSearch {
public:
    explicit EndOfSearch(std::int64_t search) : search_(search) {}
    ~EndOfSearch() { kvOSFindClose(search_); }
    EndOfSearch(const EndOfSearch&) = delete;
    EndOfSearch& operator=(const EndOfSearch&) = delete;

private:
    std::int64_t search_;
};

/// What is neither a file nor a folder has no attributes, told by all bits: it counts as a file.
inline bool isFolder(const kvOSFindData& entry) {
    return entry.dwAttributes != KVATTR_INVALID && (entry.dwAttributes & KVATTR_DIRECTORY) != 0;
}

/// Calls `take` with each, in the order of the find calls.
template <class Take>
void forEachFile(const char* pattern, Take take) {
    kvOSFindData entry;
    const std::int64_t search = kvOSFindFirstFile(pattern, &entry);
    if (search == KVFIND_INVALID) return;
    const EndOfSearch end(search);
    do {
        if (!isFolder(entry)) take(entry);
    } while (kvOSFindNextFile(search, &entry) != 0);
}

}  // namespace kv::diag
