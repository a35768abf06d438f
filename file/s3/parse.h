// An S3 address taken apart.
#pragma once

#include <string>

namespace kv::file::s3 {

/// Parts that the address does not have are empty.
struct Address {
    std::string host;    // empty: the provider's own
    std::string bucket;  // with the character ahead of it, "/" or "@"
    std::string key;
    std::string contentType;
    std::string accessKey;
    std::string secretKey;
};

/// Splits a locator as kvOSAwsParse tells; all is empty for one that has no place for a host.
Address addressIn(const std::string& locator);

/// Whether every part fits in the buffer that kvOSAwsParse has for it.
bool fits(const Address& address);

}  // namespace kv::file::s3
