// Pushing a file's data through to the medium, past the drive's own cache.
//
// Only macOS has a command of its own for that; elsewhere nothing is called, as a plain fsync promises something else.
#pragma once

namespace kv::platform {

void fullSync(int descriptor) noexcept;

}  // namespace kv::platform
