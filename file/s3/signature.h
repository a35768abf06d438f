// Signature Version 4, and the texts of a request that it covers.
//
// What is signed must be what is sent, to the letter: so a request holds its path encoded, and its query is sent in the
// canonical order that canonicalQuery gives. The time is an argument, so that the same request has the same signature.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "file/s3/client.h"

namespace kv::file::s3 {

using NamedTexts = std::vector<std::pair<std::string, std::string>>;

struct HttpRequest {
    std::string method;
    std::string path;    // percent-encoded, beginning with "/"
    NamedTexts query;    // not yet encoded
    NamedTexts headers;  // all of them are signed; "host" is one of them
};

inline constexpr std::string_view kUnsignedPayload = "UNSIGNED-PAYLOAD";

/// Every byte but A-Z, a-z, 0-9, "-", ".", "_" and "~" as "%XX".
std::string percentEncoded(std::string_view text);

/// The same with "/" left as it is.
std::string percentEncodedPath(std::string_view path);

/// Names and values encoded and sorted, "name=" for those without a value; empty for no query.
std::string canonicalQuery(const NamedTexts& query);

/// SHA-256 in lower-case hexadecimal digits.
std::string hexDigest(std::span<const std::byte> bytes);

/// The text whose digest is signed. `payload` is the body's hexDigest, or kUnsignedPayload.
std::string canonicalRequest(const HttpRequest& request, std::string_view payload);

/// What the signing key signs, at `now`, in seconds since 1970 in UTC.
std::string stringToSign(const std::string& canonicalRequest, std::string_view region, std::int64_t now);

/// Adds x-amz-content-sha256, x-amz-date, the session token where there is one, and authorization, in this order.
void sign(HttpRequest& request, const Credentials& credentials, std::string_view region, std::string_view payload,
          std::int64_t now);

}  // namespace kv::file::s3
