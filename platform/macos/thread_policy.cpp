// Scheduling of threads on macOS: the time constraint is counted in ticks of the bus, so its frequency is asked first.
//
// No machine of this project has run this file.
#include "platform/thread_policy.h"

#include <cstddef>
#include <mach/mach.h>
#include <mach/thread_policy.h>
#include <sched.h>
#include <sys/sysctl.h>

namespace kv::platform {
namespace {

constexpr int kBusFrequency = 14;        // of CTL_HW
constexpr int kProcessorFrequency = 15;  // likewise
constexpr std::uint32_t kUsualFrequency = 133'000'000;

/// False, and the frequency as it was, where the system does not tell.
bool readFrequency(int key, std::uint32_t& frequency) {
    int name[2] = {CTL_HW, key};
    std::uint32_t value = 0;
    std::size_t size = sizeof value;
    if (sysctl(name, 2, &value, &size, nullptr, 0) != 0) return false;
    frequency = value;
    return true;
}

/// Ticks of the bus in a second. A machine that tells a tiny number or all-ones for it is asked for its processor's.
std::uint32_t busFrequency() {
    std::uint32_t frequency = kUsualFrequency;
    const bool told = readFrequency(kBusFrequency, frequency);
    if (!told || frequency + 1 < 1'000'001) readFrequency(kProcessorFrequency, frequency);
    return frequency;
}

}  // namespace

static_assert(SCHED_FIFO == kFirstInFirstOut);

int systemPolicy(std::int32_t policy) noexcept { return policy; }

int plainPolicy(int told) noexcept { return told; }

void setTimeConstraint(pthread_t thread) noexcept {
    const std::uint32_t frequency = busFrequency();
    const mach_port_t port = pthread_mach_thread_np(thread);
    thread_time_constraint_policy_data_t policy{};
    mach_msg_type_number_t count = THREAD_TIME_CONSTRAINT_POLICY_COUNT;
    boolean_t isDefault = FALSE;
    thread_policy_get(port, THREAD_TIME_CONSTRAINT_POLICY, reinterpret_cast<thread_policy_t>(&policy), &count,
                      &isDefault);
    policy.period = frequency / 160;
    policy.computation = frequency / 3300;
    policy.constraint = frequency / 2200;
    policy.preemptible = 0;
    thread_policy_set(port, THREAD_TIME_CONSTRAINT_POLICY, reinterpret_cast<thread_policy_t>(&policy),
                      THREAD_TIME_CONSTRAINT_POLICY_COUNT);
}

}  // namespace kv::platform
