// Letters of names compared in any case: ASCII alone, whatever the locale.
#pragma once

#include <string_view>

#include "border/text.h"

namespace kv::naming {

using border::equalAnyCase;
using border::lowerCase;

constexpr bool endsWithAnyCase(std::string_view text, std::string_view ending) noexcept {
    return text.size() >= ending.size() && equalAnyCase(text.substr(text.size() - ending.size()), ending);
}

}  // namespace kv::naming
