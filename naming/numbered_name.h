// The number in a file name, found without copying the name.
#pragma once

#include <cstdint>
#include <string_view>

namespace kv::naming {

struct NumberedName {
    std::int32_t number = 0;
    std::string_view base;  // a view into the name
    std::uint32_t digits = 0;
};

/// Finds the number at the end of a name that has neither directory nor extension.
NumberedName readNumber(std::string_view name) noexcept;

}  // namespace kv::naming
