#include "kv/event_lines.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>

namespace kv::tool {
namespace {

std::vector<std::string> split(std::string_view text, char delimiter) {
    std::vector<std::string> parts;
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t end = std::min(text.find(delimiter, at), text.size());
        parts.emplace_back(text.substr(at, end - at));
        at = end + 1;
    }
    return parts;
}

std::string joined(const std::vector<std::string>& parts, std::size_t first, std::size_t end) {
    std::string text;
    for (std::size_t i = first; i < end; ++i) text += (i == first ? "" : ",") + parts[i];
    return text;
}

/// "2026_1_9-06_30_29" as "2026-01-09T06:30:29".
std::optional<std::string> timeOf(const std::string& field) {
    int year, month, day, hour, minute, second, length = 0;
    const int read =
        std::sscanf(field.c_str(), "%d_%d_%d-%d_%d_%d%n", &year, &month, &day, &hour, &minute, &second, &length);
    if (read != 6 || static_cast<std::size_t>(length) != field.size()) return std::nullopt;
    char text[96];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d", year, month, day, hour, minute, second);
    return text;
}

bool isCode(const std::string& field) {
    return field.size() == 10 && field.starts_with("0x") &&
           field.find_first_not_of("0123456789ABCDEF", 2) == std::string::npos;
}

std::uint32_t codeOf(const std::string& field) {
    return static_cast<std::uint32_t>(std::strtoul(field.c_str(), nullptr, 16));
}

std::optional<EventLine> eventOf(std::string_view line) {
    const auto fields = split(line, ',');
    const auto time = timeOf(fields.front());
    if (!time) return std::nullopt;
    std::size_t codes = 3;  // behind time, timecode and name
    while (codes + 3 < fields.size() && !(isCode(fields[codes]) && isCode(fields[codes + 1]))) ++codes;
    if (codes + 3 >= fields.size()) return std::nullopt;
    return EventLine{.time = *time,
                     .timecode = fields[1],
                     .name = joined(fields, 2, codes),
                     .code = codeOf(fields[codes]),
                     .subCode = codeOf(fields[codes + 1]),
                     .description = fields[codes + 2],
                     .details = joined(fields, codes + 3, fields.size())};
}

}  // namespace

std::vector<EventLine> eventLines(std::string_view content) {
    std::vector<EventLine> events;
    for (const std::string& line : split(content, '\n')) {
        if (auto event = eventOf(line)) events.push_back(std::move(*event));
    }
    return events;
}

}  // namespace kv::tool
