#include "devices/read_on.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <unistd.h>

#include "platform/serial_line.h"

namespace kv::devices {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kSilence{1000};

/// Whether something can be read before the line has been silent for too long.
bool speaks(int line, Signals signals) noexcept {
    const auto deadline = Clock::now() + kSilence;
    while (true) {
        const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
        const int ready = platform::awaitInput(line, std::max(left, milliseconds{0}));
        if (ready >= 0 || errno != EINTR || signals == Signals::endIt) return ready > 0;
    }
}

}  // namespace

std::size_t readOn(int line, std::span<std::uint8_t> target, Signals signals) noexcept {
    std::size_t count = 0;
    while (count < target.size() && speaks(line, signals)) {
        const ssize_t got = read(line, target.data() + count, target.size() - count);
        if (got <= 0) break;
        count += static_cast<std::size_t>(got);
    }
    return count;
}

}  // namespace kv::devices
