// What a folder of an object store holds.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kv::tool {

struct StoredEntry {
    std::string name;  // of a folder without its "/"
    bool isFolder;
    std::uint64_t size;
};

struct StoredListing {
    std::vector<StoredEntry> entries;
    std::string whyNot;  // not empty: why there is no listing, or not the whole of one
};

/// Lists a folder, told by the "/" at its end or by being one, a bucket, or the names in one that match a pattern.
StoredListing listStore(const std::string& locator);

}  // namespace kv::tool
