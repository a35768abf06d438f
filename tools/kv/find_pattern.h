// Names as the calls of the library want them that look into folders.
#pragma once

#include <string>
#include <string_view>

namespace kv::tool {

/// The name with a directory part, which those calls want: a lone name stands in the working folder, one directly under
/// "/" behind a second "/".
std::string withFolder(const std::string& name);

/// A name for a pattern of the find calls, which would take its backslashes for quotes.
std::string withoutQuotes(std::string_view name);

/// The pattern with a quote ahead of a name's first dot: a name that is all extension is none to the find calls.
std::string withName(std::string pattern);

/// The pattern of all that a folder holds.
std::string insideOf(const std::string& folder);

}  // namespace kv::tool
