// Memory behind a shared segment, as far as systems differ in it.
#pragma once

#include <cstddef>

namespace kv::platform {

/// Takes the memory that a segment of this size needs, where it would otherwise be missed only by the first touch of
/// it, which ends the process. False, with errno set, if there is not so much.
bool reserveSegment(int descriptor, std::size_t size) noexcept;

}  // namespace kv::platform
