// The objects of one bucket in memory, and what a store says about them. Knows nothing of HTTP, nor of threads.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kvtest {

/// When all objects of a scripted store were last modified: 2024-05-06T07:08:09Z, in seconds since 1970.
inline constexpr std::int64_t kStoredTime = 1714979289;

struct StoredObject {
    using Reader = std::function<std::string(std::uint64_t from, std::uint64_t count)>;

    std::uint64_t size = 0;
    Reader read;  // only asked for what there is
    std::string contentType = "binary/octet-stream";
    std::string eTag;  // with its quotes
};

StoredObject makeObject(std::string content, std::string contentType = "binary/octet-stream");
/// An object that takes no memory: its byte at any offset is patternAt(offset).
StoredObject makePattern(std::uint64_t size);
char patternAt(std::uint64_t offset);
std::string patternFrom(std::uint64_t offset, std::uint64_t count);

/// One object behind the other, whose contents are shared and not copied.
StoredObject joined(const std::vector<StoredObject>& parts);

struct ListQuery {
    std::string prefix;
    std::string delimiter;
    std::string after;  // only what comes behind it in order
    std::size_t pageSize = 1000;
};
struct ListPage {
    struct Entry {
        std::string key;
        StoredObject object;
    };
    std::vector<Entry> contents;
    std::vector<std::string> commonPrefixes;
    std::optional<std::string> next;  // set when there is more: where the next page begins behind
};

using StoredObjects = std::map<std::string, StoredObject>;

ListPage list(const StoredObjects& objects, const ListQuery& query);

}  // namespace kvtest
