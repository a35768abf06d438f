// The counts of Linux, as the proc file system shows them.
//
// Of memory, all that is not free is in use: on the lists of active and inactive pages, or the kernel's own. The lists'
// rows alone would leave the kernel's out, which no single row tells.
#include "platform/load.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "platform/linux/proc_text.h"

namespace kv::platform {
namespace {

/// The beginning of a file of the kernel's; empty, with errno set, on failure. What is looked for stands within it.
class Beginning {
public:
    explicit Beginning(const char* path) noexcept {
        const int file = open(path, O_RDONLY | O_CLOEXEC);
        if (file < 0) return;
        ssize_t got = 0;
        do {
            got = read(file, bytes_, sizeof bytes_);
        } while (got < 0 && errno == EINTR);
        const int error = errno;
        close(file);
        errno = error;
        if (got > 0) size_ = static_cast<std::size_t>(got);
    }

    std::string_view text() const noexcept { return {bytes_, size_}; }

private:
    char bytes_[4096];
    std::size_t size_ = 0;
};

std::uint64_t memoryRow(const char* name) noexcept {
    return proc::memoryRow(Beginning("/proc/meminfo").text(), name).value_or(0);
}

}  // namespace

std::uint32_t readProcessorTicks(ProcessorTicks& ticks) noexcept {
    const int before = errno;
    errno = 0;
    const auto read = proc::ticksOf(Beginning("/proc/stat").text());
    if (read) {
        ticks = *read;
        errno = before;
        return 0;
    }
    const int error = errno != 0 ? errno : EIO;
    std::fprintf(stderr, "%s %s\n", kNoTicks, std::strerror(error));  // NOLINT(concurrency-mt-unsafe)
    errno = error;
    return static_cast<std::uint32_t>(error);
}

std::optional<std::uint32_t> processorCount() noexcept {
    const long count = sysconf(_SC_NPROCESSORS_ONLN);
    return count > 0 ? std::optional(static_cast<std::uint32_t>(count)) : std::nullopt;
}

std::uint64_t pageSize() noexcept {
    static const long size = sysconf(_SC_PAGESIZE);
    return size > 0 ? static_cast<std::uint64_t>(size) : 4096;
}

MemoryPages memoryPages() noexcept {
    const Beginning meminfo("/proc/meminfo");
    const auto total = proc::memoryRow(meminfo.text(), "MemTotal:");
    const auto free = proc::memoryRow(meminfo.text(), "MemFree:");
    if (!total || !free || *free > *total) return {};
    return {(*total - *free) / pageSize(), *free / pageSize()};
}

std::uint64_t totalMemory() noexcept { return memoryRow("MemTotal:"); }

std::optional<std::uint64_t> residentSize() noexcept {
    const auto pages = proc::residentPages(Beginning("/proc/self/statm").text());
    return pages ? std::optional(*pages * pageSize()) : std::nullopt;
}

}  // namespace kv::platform
