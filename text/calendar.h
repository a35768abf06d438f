// Moments broken down into fields, each caller with a record of its own.
//
// The reentrant calls stand here for localtime and gmtime, whose one buffer any thread may fill anew. localtime_r alone
// may go by a zone that it read before; tzset ahead of it makes a new TZ count at once.
#pragma once

#include <ctime>
#include <optional>

namespace kv::text {

/// The fields by the zone of the environment; nothing for a moment whose year does not fit.
inline std::optional<std::tm> localFields(std::time_t moment) noexcept {
    tzset();  // localtime_r need not look at the environment
    std::tm fields{};
    if (localtime_r(&moment, &fields) == nullptr) return std::nullopt;
    return fields;
}

/// The fields in UTC.
inline std::optional<std::tm> utcFields(std::time_t moment) noexcept {
    std::tm fields{};
    if (gmtime_r(&moment, &fields) == nullptr) return std::nullopt;
    return fields;
}

}  // namespace kv::text
