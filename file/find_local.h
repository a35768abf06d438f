// The enumeration of a local directory: one run of glob when it begins, then a cursor over what that found.
//
// Its memory comes from KVAlloc, so that it must go by its owner and not by delete.
#pragma once

#include <cstddef>
#include <glob.h>
#include <memory>

#include "kvos/find.h"

namespace kv::file {

class LocalSearch;

/// Ends a search and gives its memory back, the last error kept.
struct EndLocalSearch {
    void operator()(LocalSearch* search) const noexcept;
};
using LocalSearchOwner = std::unique_ptr<LocalSearch, EndLocalSearch>;

class LocalSearch {
public:
    /// Null, with errno -1 (ENAMETOOLONG for a pattern that does not fit), when nothing matches or the pattern is
    /// refused.
    static LocalSearchOwner begin(const char* pattern);

    LocalSearch() = default;
    ~LocalSearch();
    LocalSearch(const LocalSearch&) = delete;
    LocalSearch& operator=(const LocalSearch&) = delete;

    /// Whether this is an enumeration at all: the guard against handles that were never given out.
    bool isValid() const noexcept { return self_ == this; }

    /// Fills the next entry; false at the end, with errno -1, or ENAMETOOLONG if entries were left out whose paths do
    /// not fit.
    bool next(kvOSFindData& entry) noexcept;

private:
    const LocalSearch* self_ = this;
    glob_t found_{};
    std::size_t cursor_ = 0;
    bool leftOut_ = false;
};

}  // namespace kv::file
