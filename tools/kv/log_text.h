// The messages of a log file, read back from its text.
//
// A file keeps no codes, and messages that came in one burst stand on one line of it: they are one message here. A code
// that the text itself tells ("[0xE8023011]", "WARNING(", "ERROR(") is taken from there.
//
// In a file that was wrapped the newest messages stand first, and what is left of old ones runs on behind the last of
// them: nothing in the file tells where.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kv::tool {

struct LogMessage {
    std::optional<std::int32_t> number;  // none for what stands ahead of the first numbered line or behind a mark
    std::string time;                    // local, as in "2026-11-21T17:05:09.123"; empty if the file tells none
    std::string text;                    // without line ends at its end
    std::uint32_t repeats = 1;           // how often it came in a row
    std::uint32_t code = 0;
};

/// Whether a text begins as a log file does: with its start, or with the mark of a wrap.
bool looksLikeLog(std::string_view content);

/// All messages, in the order of the file.
std::vector<LogMessage> logMessages(std::string_view content);

/// The moment of a message in milliseconds since 1970; 0 if it has none.
std::uint64_t momentOf(const LogMessage& message);

}  // namespace kv::tool
