// The files of the event log: their folder, their names, and the numbers in them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kv::diag {

/// The wall clock now as the event log writes it, "2026_11_13" and "06_30_29"; both empty if it can't be broken down.
struct EventTime {
    std::string date, time;
};
EventTime eventTime();

/// Appends the names of all CSV files in the folder; the highest number among them, 0 if none has one.
std::uint32_t findEventFiles(std::vector<std::string>& names);

/// The path of a new file.
std::string eventFilePath(std::int32_t number, const EventTime& at);

/// Where the folder holds as many files as are kept, deletes the first of the list.
void thinEventFiles(const std::vector<std::string>& names);

}  // namespace kv::diag
