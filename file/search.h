// An enumeration that ends with its scope, and the mark by which its end is told.
//
// A search that has ended says by errno whether it saw all there was: ask before anything else touches errno.
#pragma once

#include <cerrno>
#include <cstdint>

#include "border/guard.h"
#include "kvos/find.h"

namespace kv::file {

/// What errno is when an enumeration came to its end, or was none.
inline constexpr int kEndOfSearch = -1;

/// One enumeration. The entries go into the caller's record, so that nested searches can share one: a find record is
/// large, and a deep tree has many levels. The last error survives the close.
class Search {
public:
    Search(const char* pattern, kvOSFindData& entry) : entry_(entry), handle_(kvOSFindFirstFile(pattern, &entry)) {}
    ~Search() {
        const border::KeepErrno keep;
        kvOSFindClose(handle_);
    }
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;

    /// Whether the record holds a first entry.
    bool isOpen() const { return handle_ != KVFIND_INVALID; }

    /// Fills the record with the next entry; false at the end.
    bool next() { return kvOSFindNextFile(handle_, &entry_) != 0; }

private:
    kvOSFindData& entry_;
    std::int64_t handle_;
};

}  // namespace kv::file
