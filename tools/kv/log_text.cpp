// A numbered line begins with a line feed, the number, a tab, the time and a tab. Two marks may stand inside what
// follows it: the end of a run, and another start line, which a process writes that is told twice to log to a file. All
// else is text, whatever line feeds it holds.
#include "kv/log_text.h"

#include <algorithm>
#include <charconv>
#include <ctime>

namespace kv::tool {
namespace {

constexpr std::string_view kStart = "LOG STARTED ";
constexpr std::string_view kRunEnd = "\t\t\t\t\t\t[repeat x";
constexpr std::string_view kWrapped = "\tLog Wrapped\n";

// In a pattern "0" stands for a digit and "9" for a digit or a blank, as the clock pads its numbers.
constexpr std::string_view kTimePattern = "0000-00-00T00:00:00.000";
constexpr std::string_view kStartPattern = "LOG STARTED 0000-00-00T00:00:00.000 90:90:90 \n";

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isLike(char pattern, char c) {
    if (pattern == '0') return isDigit(c);
    return pattern == '9' ? isDigit(c) || c == ' ' : c == pattern;
}

bool isLike(std::string_view pattern, std::string_view text) {
    return std::ranges::equal(pattern, text, [](char one, char c) { return isLike(one, c); });
}

bool isTime(std::string_view text) { return isLike(kTimePattern, text); }

/// The head of a numbered line.
struct Head {
    std::int32_t number;
    std::string_view time;
    std::size_t begin;  // its line feed
    std::size_t textBegin;
};

std::optional<Head> headAt(std::string_view content, std::size_t lineFeed) {
    Head head{0, {}, lineFeed, 0};
    const char* const end = content.data() + content.size();
    const auto [rest, error] = std::from_chars(content.data() + lineFeed + 1, end, head.number);
    if (error != std::errc{} || rest == end || *rest != '\t') return std::nullopt;
    const auto timeBegin = static_cast<std::size_t>(rest - content.data()) + 1;
    head.time = content.substr(timeBegin, kTimePattern.size());
    head.textBegin = timeBegin + kTimePattern.size() + 1;
    if (!isTime(head.time) || head.textBegin > content.size() || content[head.textBegin - 1] != '\t') {
        return std::nullopt;
    }
    return head;
}

std::optional<Head> nextHead(std::string_view content, std::size_t from) {
    for (std::size_t at = content.find('\n', from); at != std::string_view::npos; at = content.find('\n', at + 1)) {
        if (const auto head = headAt(content, at)) return head;
    }
    return std::nullopt;
}

/// What ends a message ahead of the next numbered line.
struct Mark {
    std::size_t begin;
    std::size_t end;
    std::uint32_t repeats;  // of the message that it ends
    std::string_view time;  // of what follows; empty: as before
};

std::optional<Mark> runEndAt(std::string_view text, std::size_t begin) {
    const std::string_view rest = text.substr(begin);
    if (!rest.starts_with(kRunEnd)) return std::nullopt;
    std::uint32_t count = 0;
    const char* const end = rest.data() + rest.size();
    const auto [behind, error] = std::from_chars(rest.data() + kRunEnd.size(), end, count);
    if (error != std::errc{} || !std::string_view(behind, end).starts_with("]\n")) return std::nullopt;
    return Mark{begin, static_cast<std::size_t>(behind - text.data()) + 2, count, {}};
}

std::optional<Mark> startLineAt(std::string_view text, std::size_t begin) {
    if (!isLike(kStartPattern, text.substr(begin, kStartPattern.size()))) return std::nullopt;
    return Mark{begin, begin + kStartPattern.size(), 1, text.substr(begin + kStart.size(), kTimePattern.size())};
}

std::optional<Mark> firstMark(std::string_view text) {
    constexpr std::string_view kBeginnings = "\tL";
    for (std::size_t at = text.find_first_of(kBeginnings); at != std::string_view::npos;
         at = text.find_first_of(kBeginnings, at + 1)) {
        if (const auto mark = text[at] == '\t' ? runEndAt(text, at) : startLineAt(text, at)) return mark;
    }
    return std::nullopt;
}

/// The length of the line at a file's start that tells of its wrap; 0 if there is none. The time is often missing in
/// it.
std::size_t wrapMarkLength(std::string_view content) {
    std::int32_t number = 0;
    const char* const end = content.data() + content.size();
    const auto [behind, error] = std::from_chars(content.data(), end, number);
    if (error != std::errc{}) return 0;
    std::string_view rest(behind, end);
    if (!rest.starts_with('\t')) return 0;
    rest.remove_prefix(1);
    if (isTime(rest.substr(0, kTimePattern.size()))) rest.remove_prefix(kTimePattern.size());
    return rest.starts_with(kWrapped) ? content.size() - rest.size() + kWrapped.size() : 0;
}

std::uint32_t codeIn(std::string_view text) {
    constexpr std::string_view kCodeMark = "[0x";
    constexpr std::size_t kDigits = 8;
    for (std::size_t at = text.find(kCodeMark); at != std::string_view::npos; at = text.find(kCodeMark, at + 1)) {
        const std::string_view digits = text.substr(at + kCodeMark.size(), kDigits);
        std::uint32_t code = 0;
        const auto end = digits.data() + digits.size();
        const auto [rest, error] = std::from_chars(digits.data(), end, code, 16);
        const bool closed = text.substr(at + kCodeMark.size() + digits.size()).starts_with(']');
        if (digits.size() == kDigits && error == std::errc{} && rest == end && closed) return code;
    }
    if (text.starts_with("WARNING(")) return 0x80000000;
    return text.starts_with("ERROR(") ? 0xC0000000 : 0;
}

void addOne(std::vector<LogMessage>& messages, LogMessage message, std::string_view text) {
    while (text.ends_with('\n') || text.ends_with('\r')) text.remove_suffix(1);
    message.text = text;
    message.code = codeIn(text);
    if (message.number || !message.text.empty()) messages.push_back(std::move(message));
}

/// A message and all that follows it up to the next numbered line. What stands behind a mark came later, and the file
/// does not tell its number.
void add(std::vector<LogMessage>& messages, LogMessage message, std::string_view text) {
    while (const auto mark = firstMark(text)) {
        LogMessage next{
            .number = std::nullopt, .time = mark->time.empty() ? message.time : std::string(mark->time), .text = {}};
        message.repeats = mark->repeats;
        addOne(messages, std::move(message), text.substr(0, mark->begin));
        text.remove_prefix(mark->end);
        message = std::move(next);
    }
    addOne(messages, std::move(message), text);
}

/// The length of the line that a file begins with, and the time in it. A start line that was cut or altered counts.
std::size_t takeFirstLine(std::string_view content, std::string& time) {
    const std::size_t wrapped = wrapMarkLength(content);
    const std::size_t before = wrapped == 0 ? kStart.size() : content.find('\t') + 1;
    time = content.substr(before, kTimePattern.size());
    if (!isTime(time)) time.clear();
    return wrapped != 0 ? wrapped : std::min(content.find('\n'), content.size() - 1) + 1;
}

}  // namespace

bool looksLikeLog(std::string_view content) { return content.starts_with(kStart) || wrapMarkLength(content) != 0; }

std::vector<LogMessage> logMessages(std::string_view content) {
    std::vector<LogMessage> messages;
    LogMessage current;
    if (looksLikeLog(content)) content.remove_prefix(takeFirstLine(content, current.time));
    std::size_t begin = 0;
    while (const auto head = nextHead(content, begin)) {
        add(messages, std::move(current), content.substr(begin, head->begin - begin));
        current = LogMessage{.number = head->number, .time = std::string(head->time), .text = {}};
        begin = head->textBegin;
    }
    add(messages, std::move(current), content.substr(begin));
    return messages;
}

std::uint64_t momentOf(const LogMessage& message) {
    if (!isTime(message.time)) return 0;
    const auto field = [&](std::size_t at, std::size_t length) {
        int value = 0;
        std::from_chars(message.time.data() + at, message.time.data() + at + length, value);
        return value;
    };
    std::tm fields{};
    fields.tm_year = field(0, 4) - 1900;
    fields.tm_mon = field(5, 2) - 1;
    fields.tm_mday = field(8, 2);
    fields.tm_hour = field(11, 2);
    fields.tm_min = field(14, 2);
    fields.tm_sec = field(17, 2);
    fields.tm_isdst = -1;  // mktime is to find out
    return static_cast<std::uint64_t>(std::mktime(&fields)) * 1000 + static_cast<std::uint64_t>(field(20, 3));
}

}  // namespace kv::tool
