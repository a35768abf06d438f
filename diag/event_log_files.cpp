// Numbered files in a folder that a web server shows.
//
// Thinning is for exactly the full folder: each new file then takes the place of the oldest. A folder that holds more,
// because somebody put files there, is left to whoever did.
#include "diag/event_log_files.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string_view>
#include <sys/time.h>

#include "diag/listed_files.h"
#include "errlog.h"

namespace kv::diag {
namespace {

constexpr std::size_t kFilesKept = 100;

/// The number between the first and the second "_" of a name; 0 for a name with fewer.
std::uint32_t numberIn(std::string_view name) {
    const std::size_t first = name.find('_');
    if (first == std::string_view::npos) return 0;
    const std::size_t second = name.find('_', first + 1);
    if (second == std::string_view::npos) return 0;
    std::string digits(name.substr(first + 1, second - first - 1));
    if (digits.starts_with('-')) digits.erase(0, 1);
    // As a signed word, whose sign is then dropped: a number of 2^31 and more counts as what is left of 2^32.
    const auto number = static_cast<std::uint32_t>(std::strtoul(digits.c_str(), nullptr, 10));
    return std::min(number, 0u - number);
}

std::string printed(const char* format, int a, int b, int c) {
    char text[64];
    std::snprintf(text, sizeof text, format, a, b, c);
    return text;
}

}  // namespace

EventTime eventTime() {
    timeval now{};
    std::tm fields{};
    gettimeofday(&now, nullptr);
    tzset();  // localtime_r need not look at the environment
    if (localtime_r(&now.tv_sec, &fields) == nullptr) return {};
    return {printed("%d_%d_%d", fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday),
            printed("%02d_%02d_%02d", fields.tm_hour, fields.tm_min, fields.tm_sec)};
}

std::uint32_t findEventFiles(std::vector<std::string>& names) {
    std::uint32_t highest = 0;
    forEachFile(KVEVENTLOG_FOLDER "*.csv", [&](const kvOSFindData& entry) {
        names.emplace_back(entry.szName);
        highest = std::max(highest, numberIn(entry.szName));
    });
    return highest;
}

std::string eventFilePath(std::int32_t number, const EventTime& at) {
    char name[32];
    std::snprintf(name, sizeof name, "event_%010d", number);
    return std::string(KVEVENTLOG_FOLDER) + name + "_" + at.date + "-" + at.time + ".csv";
}

void thinEventFiles(const std::vector<std::string>& names) {
    if (names.size() != kFilesKept) return;
    const std::string first = KVEVENTLOG_FOLDER + names.front();
    if (kvOSFileExists(first.c_str()) != 0) kvOSDeleteFile(first.c_str());
}

}  // namespace kv::diag
