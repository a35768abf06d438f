// Files that are written anew as a whole.
#pragma once

#include <string_view>

namespace kv::config {

/// Writes the bytes to a new file beside the old one and renames it over that one, which keeps its mode and owner: a
/// process that dies on the way leaves either the old file or the new one. Where nothing can be made beside it, the
/// owner can't be kept or a link leads to nothing yet, the file is written in place. False with errno set on failure,
/// and for a file without write permission.
bool replaceFile(const char* path, std::string_view bytes);

}  // namespace kv::config
