// The texts of the proc file system, read as numbers. They come from the kernel; a text that is none of its is refused.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/load.h"

namespace kv::platform::proc {

/// Takes blanks and the number behind them off the text; nothing, with the text as it was, where there is none.
inline std::optional<std::uint64_t> takeNumber(std::string_view& text) noexcept {
    const std::size_t begin = text.find_first_not_of(' ');
    if (begin == std::string_view::npos) return std::nullopt;
    std::uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [behind, error] = std::from_chars(text.data() + begin, end, number);
    if (error != std::errc{}) return std::nullopt;
    text = {behind, static_cast<std::size_t>(end - behind)};
    return number;
}

/// The first line of "stat": user, nice, system, idle, iowait, irq, softirq, steal. It covers the processors that are
/// switched off as well, so that its sums do not fall when one is.
///
/// Interrupts are work of the system, as other systems count them. A processor that waits for a disk is idle. Time that
/// the host of a virtual machine took is neither: this machine did not have it. The guests of this machine are in user
/// and nice already.
inline std::optional<ProcessorTicks> ticksOf(std::string_view stat) noexcept {
    constexpr std::string_view kAll = "cpu ";
    if (!stat.starts_with(kAll)) return std::nullopt;
    stat = stat.substr(kAll.size(), stat.find('\n') - kAll.size());
    std::uint64_t counts[7]{};
    std::size_t given = 0;
    while (given < 7) {
        const auto count = takeNumber(stat);
        if (!count) break;
        counts[given++] = *count;
    }
    if (given < 4) return std::nullopt;  // those behind the first four came with later kernels
    return ProcessorTicks{counts[0] + counts[1] + counts[2] + counts[5] + counts[6], counts[3] + counts[4]};
}

/// The bytes of a row of "meminfo", whose name includes its colon.
inline std::optional<std::uint64_t> memoryRow(std::string_view meminfo, std::string_view name) noexcept {
    while (!meminfo.empty()) {
        std::string_view line = meminfo.substr(0, meminfo.find('\n'));
        meminfo.remove_prefix(line.size() < meminfo.size() ? line.size() + 1 : line.size());
        if (!line.starts_with(name)) continue;
        line.remove_prefix(name.size());
        const auto kibibytes = takeNumber(line);
        return kibibytes ? std::optional(*kibibytes * 1024) : std::nullopt;
    }
    return std::nullopt;
}

/// The second number of "statm": pages.
inline std::optional<std::uint64_t> residentPages(std::string_view statm) noexcept {
    if (!takeNumber(statm)) return std::nullopt;
    return takeNumber(statm);
}

}  // namespace kv::platform::proc
