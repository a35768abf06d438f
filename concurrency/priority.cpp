// Priorities: classes of the process as nice values, and threads within the range of a policy
// (concurrency/priority_range.h).
//
// A thread that was joined or detached is answered for as the system would answer, without asking it.
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>

#include "border/guard.h"
#include "border/relaxed.h"
#include "concurrency/priority_range.h"
#include "concurrency/record.h"
#include "concurrency/thread_id.h"
#include "errlog.h"
#include "kvos/thread.h"
#include "platform/thread_policy.h"

namespace kv::concurrency {
namespace {

/// By class / 32 - 2: idle (64) first, high (128), real time (256) last.
constexpr std::array<int, 7> kNiceValues{18, 0, -10, 0, 0, 0, -18};

int niceValueOf(std::uint32_t priorityClass) {
    if (priorityClass % 32 != 0 || priorityClass < 64) return 0;
    const std::size_t row = priorityClass / 32 - 2;
    return row < kNiceValues.size() ? kNiceValues[row] : 0;
}

static_assert(KVPRIORITY_CLASS_IDLE / 32 - 2 == 0 && KVPRIORITY_CLASS_REALTIME / 32 - 2 == kNiceValues.size() - 1);

PriorityRange rangeOf(int policy) { return {sched_get_priority_min(policy), sched_get_priority_max(policy)}; }

/// Whether there was none to tell. Both calls tell it in the same words.
bool worked(int error) {
    if (error == 0) return true;
    ErrOut("Unable to set thread priority = 0x%08X (%d) ", static_cast<unsigned>(error), error);
    return false;
}

/// An error number.
int setPriority(kvOSThreadRec& thread, std::int32_t priority) {
    const IdUse id(thread);
    if (!id.isGood()) return ESRCH;
    if (!isPriority(priority)) return EINVAL;
    if (isTimeConstrained(priority)) platform::setTimeConstraint(thread.thread);
    const int policy = platform::systemPolicy(border::relaxedLoad(nProcessPolicy));
    sched_param parameters{};
    parameters.sched_priority = systemPriorityOf(priority, rangeOf(policy));
    return pthread_setschedparam(thread.thread, policy, &parameters);
}

/// Likewise; 0 for success, with the priority stored.
int getPriority(kvOSThreadRec& thread, std::int32_t& priority) {
    const IdUse id(thread);
    if (!id.isGood()) return ESRCH;
    int policy = 0;
    sched_param parameters{};
    const int error = pthread_getschedparam(thread.thread, &policy, &parameters);
    if (error == 0) priority = priorityOf(parameters.sched_priority, rangeOf(platform::plainPolicy(policy)));
    return error;
}

}  // namespace
}  // namespace kv::concurrency

namespace concurrency = kv::concurrency;

int32_t nProcessPolicy = kv::platform::kFirstInFirstOut;

uint32_t kvOSSetPriorityClass(int32_t /*nProcess*/, uint32_t dwClass) {
    errno = 0;
    // -1 alone tells nothing.
    if (setpriority(PRIO_PROCESS, 0, concurrency::niceValueOf(dwClass)) != -1 || errno == 0) return 1;
    const int error = errno;
    ErrOut("Unable to set priority class 0x%08X = 0x%08X (%d) ", dwClass, static_cast<unsigned>(error), error);
    return 0;
}

uint32_t kvOSGetPriorityClass(int32_t nProcess) {
    const int nice = getpriority(PRIO_PROCESS, static_cast<id_t>(nProcess));
    if (nice > 17) return KVPRIORITY_CLASS_IDLE;
    if (nice < -17) return KVPRIORITY_CLASS_REALTIME;
    if (nice < -9) return KVPRIORITY_CLASS_HIGH;
    return KVPRIORITY_CLASS_NORMAL;
}

uint32_t kvOSSetThreadPriority(kvOSThreadRec* pThread, int32_t nPriority) {
    if (!concurrency::isReal(pThread)) return 0;
    const kv::border::KeepErrno keep;
    return concurrency::worked(concurrency::setPriority(*pThread, nPriority)) ? 1 : 0;
}

int32_t kvOSGetThreadPriority(kvOSThreadRec* pThread) {
    if (!concurrency::isReal(pThread)) return 0;
    const kv::border::KeepErrno keep;
    std::int32_t priority = 0;
    return concurrency::worked(concurrency::getPriority(*pThread, priority)) ? priority : 0;
}

uint32_t kvOSSetThreadPriorityBoost(kvOSThreadRec* pThread) { return concurrency::isReal(pThread) ? 1 : 0; }

uint64_t kvOSSetThreadAffinityMask(kvOSThreadRec* pThread, uint64_t qwMask) {
    return concurrency::isReal(pThread) ? qwMask : 0;
}
