// The rounding decides the unit: what would read "1024.0 KiB" is "1.0 MiB".
#include "kv/human_size.h"

#include <array>
#include <cstddef>
#include <cstdio>

namespace kv::tool {

std::string humanSize(std::uint64_t bytes) {
    constexpr std::array kUnits{"KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
    constexpr double kRoundsUp = 1023.95;
    if (bytes < 1024) return std::to_string(bytes) + " B";

    double value = static_cast<double>(bytes) / 1024;
    std::size_t unit = 0;
    while (value >= kRoundsUp && unit + 1 < kUnits.size()) {
        value /= 1024;
        ++unit;
    }
    std::array<char, 32> text;
    std::snprintf(text.data(), text.size(), "%.1f %s", value, kUnits[unit]);
    return text.data();
}

std::string humanSize(const std::optional<std::uint64_t>& bytes) { return bytes ? humanSize(*bytes) : "-"; }

}  // namespace kv::tool
