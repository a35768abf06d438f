// Scheduling of threads on Linux, which knows no time constraint that a thread could be given from outside: a deadline
// policy exists, but replaces the priority instead of standing beside it.
#include "platform/thread_policy.h"

#include <sched.h>

namespace kv::platform {

int systemPolicy(std::int32_t policy) noexcept { return policy == kFirstInFirstOut ? SCHED_FIFO : policy; }

// With it the system may tell that a thread's children do not inherit the policy.
int plainPolicy(int told) noexcept { return told & ~SCHED_RESET_ON_FORK; }

void setTimeConstraint(pthread_t /*thread*/) noexcept {}

}  // namespace kv::platform
