// The counts of macOS, as its kernel interfaces give them. A tick count of one processor has 32 bits and wraps.
//
// No machine of this project has run this file.
#include "platform/load.h"

#include <mach/mach.h>
#include <mach/mach_error.h>
#include <sys/sysctl.h>

namespace kv::platform {
namespace {

/// The port is a right that each look-up would count once more.
mach_port_t host() noexcept {
    static const mach_port_t port = mach_host_self();
    return port;
}

/// An entry of the group of the hardware; 0 where there is none.
template <class Value>
Value hardware(int entry) noexcept {
    int names[]{CTL_HW, entry};
    Value value = 0;
    std::size_t size = sizeof value;
    return sysctl(names, 2, &value, &size, nullptr, 0) == 0 ? value : Value{0};
}

}  // namespace

std::uint32_t readProcessorTicks(ProcessorTicks& ticks) noexcept {
    natural_t processors = 0;
    processor_info_array_t info = nullptr;
    mach_msg_type_number_t count = 0;
    const kern_return_t result = host_processor_info(host(), PROCESSOR_CPU_LOAD_INFO, &processors, &info, &count);
    if (result != KERN_SUCCESS) {
        mach_error(kNoTicks, result);
        return static_cast<std::uint32_t>(result);
    }
    const auto* const loads = reinterpret_cast<const processor_cpu_load_info_data_t*>(info);
    ticks = {};
    for (natural_t i = 0; i < processors; ++i) {
        const auto& spent = loads[i].cpu_ticks;
        ticks.busy += std::uint64_t{spent[CPU_STATE_USER]} + spent[CPU_STATE_SYSTEM] + spent[CPU_STATE_NICE];
        ticks.idle += spent[CPU_STATE_IDLE];
    }
    vm_deallocate(mach_task_self(), reinterpret_cast<vm_address_t>(info), count * sizeof(integer_t));
    return 0;
}

std::optional<std::uint32_t> processorCount() noexcept {
    const auto count = hardware<std::uint32_t>(HW_NCPU);
    return count != 0 ? std::optional(count) : std::nullopt;
}

std::uint64_t pageSize() noexcept {
    static const vm_size_t size = [] {
        vm_size_t told = 0;
        return host_page_size(host(), &told) == KERN_SUCCESS ? told : vm_size_t{4096};
    }();
    return size;
}

MemoryPages memoryPages() noexcept {
    vm_statistics_data_t pages{};
    mach_msg_type_number_t count = HOST_VM_INFO_COUNT;
    static_assert(HOST_VM_INFO == 2 && HOST_VM_INFO_COUNT == 15);
    if (host_statistics(host(), HOST_VM_INFO, reinterpret_cast<host_info_t>(&pages), &count) != KERN_SUCCESS) return {};
    return {std::uint64_t{pages.active_count} + pages.inactive_count + pages.wire_count, pages.free_count};
}

std::uint64_t totalMemory() noexcept { return hardware<std::uint64_t>(HW_MEMSIZE); }

std::optional<std::uint64_t> residentSize() noexcept {
    mach_task_basic_info_data_t task{};
    mach_msg_type_number_t count = MACH_TASK_BASIC_INFO_COUNT;
    static_assert(MACH_TASK_BASIC_INFO == 20);
    if (task_info(mach_task_self(), MACH_TASK_BASIC_INFO, reinterpret_cast<task_info_t>(&task), &count) !=
        KERN_SUCCESS) {
        return std::nullopt;
    }
    return task.resident_size;
}

}  // namespace kv::platform
