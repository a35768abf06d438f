// The keys for a bucket from a key file.
#pragma once

#include <optional>
#include <string>

namespace kv::file::s3 {

/// What a key file says; what it does not say is empty.
struct KeyFile {
    std::string accessKey;
    std::string secretKey;
    std::string region;
};

/// The key file of a bucket, or the one for all. Nothing, with a message and errno set, where it can't be read.
std::optional<KeyFile> keyFileOf(const std::string& bucket);

}  // namespace kv::file::s3
