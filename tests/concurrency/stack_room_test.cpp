// Small stacks in a process whose thread-local variables want room in each: the system starts no thread on one that
// they do not fit in.
#include <cstdint>
#include <gtest/gtest.h>

#include "concurrency/owned_thread.h"
#include "kvos/thread.h"

namespace {

thread_local char ownOfEachThread[100 * 1024];

TEST(StackRoom, StacksTooSmallForTheThreadsOwnVariablesAreTheDefault) {
    for (const std::uint64_t size : {1u, 16383u, 16384u, 20000u, 32768u, 65536u, 100000u, 131072u, 262144u}) {
        SCOPED_TRACE(size);
        kvOSThreadRec* const thread = kvOSCreateThread(
            nullptr, size,
            [](void*) -> void* {
                volatile char* const last = &ownOfEachThread[sizeof ownOfEachThread - 1];
                *last = 1;
                return nullptr;
            },
            nullptr);
        ASSERT_NE(thread, nullptr);
        kvtest::untilEnded(thread);
        kvOSCloseThread(thread);
    }
}

}  // namespace
