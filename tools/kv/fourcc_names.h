// The questions and the flags of a format code by the names that the library gives them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kv::tool {

struct Predicate {
    std::string_view name;
    std::uint32_t (*holds)(std::uint32_t fcc);
};

/// Every question with one code for its argument, kinds first.
std::span<const Predicate> predicates();

/// The question of that name, in any case, with or without "fcc", "Is" or "fccIs" ahead of it; null for none. Where two
/// differ by case alone, the name as it is written comes first.
const Predicate* predicateNamed(std::string_view name);

/// The names of those that hold.
std::vector<std::string> predicatesThatHold(std::uint32_t fcc);

/// The names of the bits that are set, the highest first.
std::vector<std::string> flagNames(std::uint32_t flags);

}  // namespace kv::tool
