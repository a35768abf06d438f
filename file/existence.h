// The list of names that count as existing, for the calls of this folder.
#pragma once

namespace kv::file {

/// Whether the text is on gvecNames, letter by letter.
bool isOnNameList(const char* text) noexcept;

}  // namespace kv::file
