// What the calls by name ask of S3 objects. The build without S3 support, where no name is one, refuses.
#pragma once

#include <cstdint>
#include <memory>

#include "kvos/find.h"

namespace kv::file {

/// The enumeration of the objects under a prefix.
class ObjectSearch {
public:
    ObjectSearch() = default;
    virtual ~ObjectSearch() = default;
    ObjectSearch(const ObjectSearch&) = delete;
    ObjectSearch& operator=(const ObjectSearch&) = delete;

    /// Fills the next entry; false at the end, with errno as kvOSFindNextFile says, and on failure.
    virtual bool next(kvOSFindData& entry) = 0;
};

/// Null, with errno set, on failure.
std::unique_ptr<ObjectSearch> beginObjectSearch(const char* pattern);

/// Whether the store took the request, with errno set where not.
bool deleteObject(const char* locator);

}  // namespace kv::file
