// The redirect, for the calls of this folder.
#pragma once

#include "border/text.h"

namespace kv::file {

/// Fills `target` with the path after the redirect; false, with errno EINVAL or ENAMETOOLONG and an empty target, for a
/// null path and for one that does not fit.
bool redirected(const char* path, border::PathBuffer& target) noexcept;

}  // namespace kv::file
