// The files attached to a handle, which get what is written to it.
#pragma once

#include <cstdint>
#include <span>

#include "file/handle.h"

namespace kv::file {

inline std::span<const std::int64_t> outputsOf(const kvOSFileHandle& file) {
    return {file.hOutput, file.dwOutputCount};
}

}  // namespace kv::file
