// The enumeration of a local directory: one run of glob when it begins, then a cursor over what that found.
#pragma once

#include <cstddef>
#include <glob.h>
#include <memory>

#include "kvos/find.h"

namespace kv::file {

class LocalSearch {
public:
    /// Null, with errno -1 (ENAMETOOLONG for a pattern that does not fit), when nothing matches or the pattern is
    /// refused.
    static std::unique_ptr<LocalSearch> begin(const char* pattern);

    LocalSearch() = default;
    ~LocalSearch();
    LocalSearch(const LocalSearch&) = delete;
    LocalSearch& operator=(const LocalSearch&) = delete;

    /// Whether this is an enumeration at all: the guard against handles that were never given out.
    bool isValid() const noexcept { return self_ == this; }

    /// Fills the next entry; false, with errno -1, at the end.
    bool next(kvOSFindData& entry) noexcept;

private:
    const LocalSearch* self_ = this;
    glob_t found_{};
    std::size_t cursor_ = 0;
};

}  // namespace kv::file
