// What an open S3 object owns beside the fields that every handle has.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "file/s3/client.h"

namespace kv::file::s3 {

class BlockList;  // the read-ahead blocks (blocks.h)

/// What the store holds of a part. Where the file was cut since, fewer of the bytes belong to it than are there.
struct StoredPart {
    std::uint32_t bytes = 0;
    std::uint32_t valid = 0;
};

struct Object {
    Credentials credentials;
    ClientConfiguration clientConfig;
    std::shared_ptr<Client> client;
    std::string contentType;
    std::string bucket;  // as kvOSAwsParse gives it, its leading "/" or "@" kept
    std::string key;
    std::optional<std::string> partPrefix;  // key prefix of the part objects; made with the first part's name
    std::string uploadId;
    std::vector<CompletedPart> completedParts;
    std::map<std::uint32_t, StoredPart> storedParts;  // the part objects of this handle, by index
    std::optional<std::uint32_t> partInBlock;         // the stored part whose bytes the write block holds
    bool wasCut = false;                              // bytes that were written were cut off
    std::shared_ptr<BlockList> cache;
    std::uint32_t cacheHits = 0;
    std::uint32_t cacheMisses = 0;
    std::uint64_t requestStart = 0;  // range of the last request for a block
    std::uint64_t requestEnd = 0;
};

/// The bucket as requests name it: without the leading "/" or "@" of the record's text.
inline std::string bareBucket(const std::string& bucket) {
    return bucket.starts_with('/') || bucket.starts_with('@') ? bucket.substr(1) : bucket;
}

}  // namespace kv::file::s3
