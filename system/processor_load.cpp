// How busy the processors are, and how many there are.
//
// The ticks of the last call are kept for the whole process, each by itself: counts that fall, as those may that the
// kernel corrects, and a pair that two threads mixed give no figure outside of 0 to 100.
#include <algorithm>
#include <atomic>
#include <cstdint>

#include "border/relaxed.h"
#include "errlog.h"
#include "kvos/machine.h"
#include "platform/load.h"

namespace kv::system {
namespace {

constexpr std::uint32_t kTooSoon = 30;
constexpr std::uint32_t kProcessorsUntold = 2;
constexpr std::uint32_t kHalvedFrom = 4;
constexpr std::uint32_t kMostProcessors = 24;

std::uint64_t prevOurTicks = 0;
std::uint64_t prevTotalTicks = 0;
std::uint32_t fDisplayedCPUs = 0;

std::uint32_t percentSinceLast(const platform::ProcessorTicks& ticks) {
    const std::uint64_t total = ticks.busy + ticks.idle == 0 ? 1 : ticks.busy + ticks.idle;
    const std::uint64_t totalBefore = border::relaxedLoad(prevTotalTicks);
    const std::uint64_t busyBefore = border::relaxedLoad(prevOurTicks);
    border::relaxedStore(prevOurTicks, ticks.busy);
    border::relaxedStore(prevTotalTicks, total);
    if (total == totalBefore) return kTooSoon;
    if (total < totalBefore || ticks.busy < busyBefore) return 0;
    const std::uint64_t percent = (ticks.busy - busyBefore) * 100 / (total - totalBefore);
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(percent, 100));
}

/// Once in a process.
void reportCount() {
    if (std::atomic_ref(fDisplayedCPUs).exchange(1, std::memory_order_relaxed) != 0) return;
    ErrOut("CPU:  Actual Cores=%d, Virtual Cores=%d Physical Memory : %3.2f Gb", static_cast<int>(kvOSGetNumCpu(0)),
           static_cast<int>(kvOSGetNumCpu(1)), 2.0);
}

}  // namespace
}  // namespace kv::system

std::uint32_t GetCpuUsage() {
    kv::platform::ProcessorTicks ticks;
    const std::uint32_t error = kv::platform::readProcessorTicks(ticks);
    return error != 0 ? error : kv::system::percentSinceLast(ticks);
}

std::uint32_t GetCpuUsageProc() { return GetCpuUsage(); }

std::uint32_t GetSystemCpuUsage() { return GetCpuUsage(); }

std::uint32_t kvOSGetNumCpu(std::uint32_t dwFlag) {
    using namespace kv::system;
    reportCount();
    auto count = kv::platform::processorCount();
    if (!count) return kProcessorsUntold;
    if ((dwFlag & 1) == 0 && *count >= kHalvedFrom) *count /= 2;
    return *count < kMostProcessors ? *count : kMostProcessors;
}
