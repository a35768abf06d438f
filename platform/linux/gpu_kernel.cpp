// The busy figure of the kernel's graphics drivers, one file a card. Cards are numbered without gaps only until one is
// taken out, and outputs stand beside them under names that begin with theirs.
#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

#include "border/text.h"
#include "platform/linux/gpu_sources.h"
#include "platform/linux/proc_text.h"

namespace kv::platform::gpu {
namespace {

constexpr int kCards = 64;  // the kernel's numbers for cards, which those of its other nodes follow

std::optional<std::int64_t> numberIn(const char* path) noexcept {
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) return std::nullopt;
    char bytes[32];
    const ssize_t got = read(file, bytes, sizeof bytes);
    close(file);
    if (got <= 0) return std::nullopt;
    std::string_view text(bytes, static_cast<std::size_t>(got));
    const auto number = proc::takeNumber(text);
    return number ? std::optional(static_cast<std::int64_t>(*number)) : std::nullopt;
}

}  // namespace

std::optional<std::int64_t> busyInKernel(const char* folder) noexcept {
    border::PathBuffer path;
    for (int card = 0; card < kCards; ++card) {
        border::formatText(path, sizeof path, "%s/card%d/device/gpu_busy_percent", folder, card);
        if (const auto busy = numberIn(path)) return busy;
    }
    return std::nullopt;
}

}  // namespace kv::platform::gpu
