// The headers that a server sent, as one text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kv::file {

/// The part that belongs to the last answer: redirects that were followed leave theirs ahead of it.
std::string_view lastAnswer(std::string_view headers);

/// The value of the location, less one blank ahead of it, if it is there and its line ends.
std::optional<std::string> locationIn(std::string_view headers);

}  // namespace kv::file
