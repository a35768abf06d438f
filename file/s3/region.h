// The region of a bucket: where to look for it first, and what the provider says.
#pragma once

#include <optional>
#include <string>

#include "file/s3/client.h"

namespace kv::file::s3 {

inline constexpr const char* kFirstRegion = "us-east-1";

/// What a host or the settings say, for a locator whose key file names none.
std::string preferredRegion();

/// The region of a bucket, asked for with a client of the region `asked`. Without a region in the answer of a failed
/// request it is `unknown`.
std::string regionOf(Client& client, const std::string& bucket, const std::string& asked, const std::string& unknown);

}  // namespace kv::file::s3
