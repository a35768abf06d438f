// What the parts of URL files share: sizes, and the transfers that url.cpp puts into the kind.
#pragma once

#include <cstdint>

#include "file/curl.h"
#include "file/kinds.h"

namespace kv::file {

inline constexpr std::uint32_t kUrlBufferSize = 1048576;  // of the read cache, and what a small read asks for
inline constexpr std::uint64_t kUnknownSize = ~std::uint64_t{0};

/// What every request on a file but a POST and a PATCH goes by: redirects are followed, a status of 400 and above is a
/// failure, and no certificate is verified.
void setOptionsOfFile(CURL* transfer) noexcept;

/// Certificates are verified on no transfer of a file. Meant.
void trustAnyCertificate(CURL* transfer) noexcept;

Outcome readUrl(kvOSFileHandle& file, void* buffer, const Transfer& transfer);
Outcome writeUrl(kvOSFileHandle& file, const void* buffer, const Transfer& transfer);

}  // namespace kv::file
