// How deep the elements of an XML text are nested, found without recursion and ahead of the reading.
#pragma once

#include <cstddef>
#include <string_view>

namespace kv::border {

/// What a text is said to have that could hide any depth.
inline constexpr std::size_t kAnyDepth = static_cast<std::size_t>(-1);

/// The deepest nesting that the XML library can come to while it reads the text, well-formed or not; never too low.
std::size_t deepestNesting(std::string_view text);

}  // namespace kv::border
