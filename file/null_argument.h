// The answer to a caller who passed null where the contract wants a buffer or a record.
#pragma once

#include <cerrno>

namespace kv::file {

/// Sets errno to EINVAL and answers `failure`, the call's own failure value.
template <class Result>
Result refuseNull(Result failure) noexcept {
    errno = EINVAL;
    return failure;
}

}  // namespace kv::file
