// What the parts of URL files share: sizes, and the transfers that url.cpp puts into the kind.
#pragma once

#include <cstdint>

#include "file/kinds.h"

namespace kv::file {

inline constexpr std::uint32_t kUrlBufferSize = 1048576;  // of the read cache, and what a small read asks for
inline constexpr std::uint64_t kUnknownSize = ~std::uint64_t{0};

Outcome readUrl(kvOSFileHandle& file, void* buffer, const Transfer& transfer);
Outcome writeUrl(kvOSFileHandle& file, const void* buffer, const Transfer& transfer);

}  // namespace kv::file
