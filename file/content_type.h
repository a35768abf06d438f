// The content type that an object is stored with.
#pragma once

#include <string>

namespace kv::file {

/// That of the key's extension in the list of MIME types; the key may be of any length.
std::string contentTypeOf(const std::string& key);

}  // namespace kv::file
