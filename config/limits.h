// How large and how deep a store can be. Both hold for what is read and for what is made, so that what was saved can be
// opened again.
#pragma once

#include <cstddef>

namespace kv::config {

/// Elements within each other, the root counted. The XML library reads, copies, prints and frees by recursion, some 400
/// bytes of stack a level; this leaves room on a thread with a small stack.
inline constexpr std::size_t kDeepest = 257;

/// Bytes of a file.
inline constexpr std::size_t kLargestFile = std::size_t{64} << 20;

/// Bytes of a name.
inline constexpr std::size_t kLongestName = 63;

}  // namespace kv::config
