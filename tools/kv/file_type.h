// What an entry is, by its attribute bits.
#pragma once

#include <cstdint>

namespace kv::tool {

enum class FileType { file, folder, other };

/// A socket, a device or a link to nothing is `other`: it has no size and is not opened.
FileType fileType(std::uint32_t attributes);

/// "file", "folder" or "other".
const char* nameOf(FileType type);

/// Whether the caller may read but not write.
bool isReadOnly(std::uint32_t attributes);

}  // namespace kv::tool
