// How much memory is in use, by the process and at all.
#include <cerrno>
#include <cstdint>

#include "kvos/machine.h"
#include "platform/load.h"

std::uint32_t GetMemoryUsage(std::uint32_t* pdwProcess, std::uint32_t* pdwSystem, std::uint64_t* pqwTotal) {
    using namespace kv::platform;
    if (pdwProcess == nullptr || pdwSystem == nullptr || pqwTotal == nullptr) {
        errno = EINVAL;
        return 0xFFFFFFFF;
    }
    const MemoryPages pages = memoryPages();
    std::uint64_t total = totalMemory();
    if (total == 0) total = pageSize() * (pages.used + pages.free);
    *pqwTotal = total;
    if (total != 0) *pdwSystem = static_cast<std::uint32_t>(pageSize() * pages.used * 100 / total);

    const auto resident = residentSize();
    if (!resident) return 0;
    *pdwProcess = total == 0 ? 0 : static_cast<std::uint32_t>(*resident * 100 / total);
    return 0;
}
