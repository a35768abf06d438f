// Drawn ten times a second at most: a terminal can be slower than a copy.
#include "kv/progress.h"

#include <cstdio>
#include <unistd.h>

#include "kv/human_size.h"

namespace kv::tool {
namespace {

constexpr std::chrono::milliseconds kPause{100};
constexpr const char* kClearLine = "\r\033[K";

void write(const std::string& text) {
    std::fputs(text.c_str(), stderr);
    std::fflush(stderr);
}

/// "0:07", "1:02:03".
std::string durationText(std::uint64_t seconds) {
    const auto part = [](std::uint64_t value) { return (value < 10 ? "0" : "") + std::to_string(value); };
    const std::uint64_t hours = seconds / 3600;
    const std::uint64_t minutes = seconds / 60 % 60;
    const std::string ahead = hours == 0 ? std::to_string(minutes) : std::to_string(hours) + ":" + part(minutes);
    return ahead + ":" + part(seconds % 60);
}

}  // namespace

std::string progressText(std::uint64_t done, std::optional<std::uint64_t> total, std::chrono::milliseconds elapsed) {
    const double seconds = static_cast<double>(elapsed.count()) / 1000;
    const double rate = seconds > 0 ? static_cast<double>(done) / seconds : 0;
    const std::string rateText = "  " + humanSize(static_cast<std::uint64_t>(rate)) + "/s";
    if (!total) return humanSize(done) + rateText;
    const double share = *total == 0 ? 1 : static_cast<double>(done) / static_cast<double>(*total);
    char percent[16];
    std::snprintf(percent, sizeof percent, "%3.0f %%  ", share * 100);
    std::string text = percent + humanSize(done) + " of " + humanSize(*total) + rateText;
    if (rate >= 1 && done < *total) {
        text += "  " + durationText(static_cast<std::uint64_t>(static_cast<double>(*total - done) / rate)) + " left";
    }
    return text;
}

Progress::Progress(std::optional<std::uint64_t> total) : total_(total), isShown_(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
    if (isShown_) write(kClearLine);
}

void Progress::add(std::uint64_t bytes) {
    done_ += bytes;
    if (!isShown_) return;
    const auto now = Clock::now();
    if (now - lastDrawn_ >= kPause) draw(now);
}

void Progress::draw(Clock::time_point now) {
    lastDrawn_ = now;
    const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(now - start_);
    write(kClearLine + progressText(done_, total_, elapsed));
}

}  // namespace kv::tool
