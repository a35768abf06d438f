// The events of a file of the event log, read back from its lines.
//
// Texts are not quoted there. What holds a line together is the two codes: a comma ahead of them belongs to the name,
// and one behind the first text after them to the details.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kv::tool {

struct EventLine {
    std::string time;  // local, as in "2026-11-13T06:30:29"
    std::string timecode, name;
    std::uint32_t code, subCode;
    std::string description, details;
};

/// All events, in the order of the file. What is no event, as the header, is passed over.
std::vector<EventLine> eventLines(std::string_view content);

}  // namespace kv::tool
