// How far a copy is: one line on standard error, drawn over itself, and only where that is a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace kv::tool {

class Progress {
public:
    /// @param total  bytes to come, if that is known.
    explicit Progress(std::optional<std::uint64_t> total);
    /// Takes the line away.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void add(std::uint64_t bytes);

private:
    using Clock = std::chrono::steady_clock;

    void draw(Clock::time_point now);

    std::optional<std::uint64_t> total_;
    std::uint64_t done_ = 0;
    bool isShown_;
    Clock::time_point start_ = Clock::now();
    Clock::time_point lastDrawn_{};
};

/// " 50 %  1.0 MiB of 2.0 MiB  512.0 KiB/s  0:02 left"; without a total "1.0 MiB  512.0 KiB/s".
std::string progressText(std::uint64_t done, std::optional<std::uint64_t> total, std::chrono::milliseconds elapsed);

}  // namespace kv::tool
