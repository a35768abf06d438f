// Whether a path leads to a network: the question that the calls by name ask before they touch a file.
#pragma once

#include "kvos/locator.h"

namespace kv::file {

/// Of a text after the redirect: an S3 address, or one that begins with "http://", "https://" or "ftp://".
inline bool isNetworkPath(const char* redirected) noexcept {
    return kvOSUseAws(redirected) != 0 || kvOSFUseCurl(redirected) != 0;
}

}  // namespace kv::file
