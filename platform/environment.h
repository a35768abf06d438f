// The environment of this process, for a program that it starts.
#pragma once

namespace kv::platform {

/// As posix_spawn takes it. It is the one that setenv changes.
char** environment() noexcept;

}  // namespace kv::platform
