// The copying behind cp, mv and cut: from any locator to any that can be written.
//
// Not by the library's copying calls: their results leave open whether every byte arrived.
#pragma once

#include <string>

#include "kv/commands.h"
#include "kv/source.h"

namespace kv::tool {

/// Where the copy goes: the locator itself, or its source's name in it if it is a local folder or, by the "/" at its
/// end, one of a store.
std::string targetOf(const std::string& source, const std::string& destination);

/// Whether both name the same file, or the destination can't be one; that is told.
bool isRefused(const std::string& source, const std::string& destination);

/// Copies all that the source has left. Whatever fails is told, and leaves the destination as it was.
Exit copyFrom(Source& source, std::uint64_t bytes, const std::string& destination);
Exit copyFrom(Source& source, const std::string& destination);

}  // namespace kv::tool
