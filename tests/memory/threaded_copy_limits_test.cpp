// What a threaded copy does when memory, threads or time run out.
//
// This program's own kvOSCreateThread, kvOSWaitForEvent, KVAlloc, KVFree and usleep stand in for those that the library
// would call; a wait that is to time out does so at once.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "kvos/memory.h"
#include "kvos/sync.h"
#include "kvos/thread.h"

namespace {

struct Controls {
    int threadsUntilFailure = -1;      // how many start before one does not; below 0: all start
    bool holdsThreads = false;         // started threads wait for the gate first
    int allocationsUntilFailure = -1;  // how many succeed before one gives null; below 0: all succeed
    std::vector<int> timeouts;         // for each event in the order of its first wait, how many come first
    const kvOSEventRec* waitedFor = nullptr;
    int waits = 0;
    int otherTimeouts = 0;  // waits of anything but a second
    int pauses = 0;
    int otherStacks = 0;  // threads that were to have another stack than the default
    int blocks = 0;       // allocated and not freed
};
Controls controls;

kvOSEventRec* gate = nullptr;

struct HeldThread {
    kvOSThreadStart start;
    void* argument;
};
HeldThread held[16];
int heldCount = 0;

template <class Call>
Call librarys(const char* name) {
    return reinterpret_cast<Call>(dlsym(RTLD_NEXT, name));
}

std::uint32_t waitInTheLibrary(kvOSEventRec* event, std::uint32_t milliseconds) {
    return librarys<decltype(&kvOSWaitForEvent)>("kvOSWaitForEvent")(event, milliseconds);
}

void* passTheGate(void* argument) {
    const HeldThread inner = *static_cast<HeldThread*>(argument);
    waitInTheLibrary(gate, KVWAIT_FOREVER);
    return inner.start(inner.argument);
}

}  // namespace

// Seen by the library as well, whatever visibility the program is compiled with.
#pragma GCC visibility push(default)
extern "C" {

kvOSThreadRec* kvOSCreateThread(void* security, uint64_t stackSize, kvOSThreadStart start, void* argument) {
    if (controls.threadsUntilFailure >= 0 && controls.threadsUntilFailure-- == 0) return nullptr;
    if (stackSize != 0) ++controls.otherStacks;
    const auto create = librarys<decltype(&kvOSCreateThread)>("kvOSCreateThread");
    if (!controls.holdsThreads) return create(security, stackSize, start, argument);
    held[heldCount] = {start, argument};
    return create(security, stackSize, passTheGate, &held[heldCount++]);
}

uint32_t kvOSWaitForEvent(kvOSEventRec* event, uint32_t milliseconds) {
    ++controls.waits;
    if (milliseconds != 1000) ++controls.otherTimeouts;
    if (controls.waitedFor != event) {
        if (controls.waitedFor != nullptr && !controls.timeouts.empty()) {
            controls.timeouts.erase(controls.timeouts.begin());
        }
        controls.waitedFor = event;
    }
    if (!controls.timeouts.empty() && controls.timeouts.front()-- > 0) return KVWAIT_TIMEOUT;
    return waitInTheLibrary(event, KVWAIT_FOREVER);
}

void* KVAlloc(uint32_t dwSize) {
    if (controls.allocationsUntilFailure >= 0 && controls.allocationsUntilFailure-- == 0) return nullptr;
    __atomic_fetch_add(&controls.blocks, 1, __ATOMIC_RELAXED);
    return std::malloc(dwSize);
}

void KVFree(void* pBlock) {
    if (pBlock != nullptr) __atomic_fetch_sub(&controls.blocks, 1, __ATOMIC_RELAXED);
    std::free(pBlock);
}

int usleep(useconds_t microseconds) {
    EXPECT_EQ(microseconds, 1000u);
    ++controls.pauses;
    return 0;
}

}  // extern "C"
#pragma GCC visibility pop

namespace {

constexpr std::uint64_t kLength = 600'000;
constexpr std::uint64_t kBytes = 16 * kLength;
constexpr int kForEver = 1'000'000;

class ThreadedCopyLimits : public testing::Test {
protected:
    void SetUp() override {
        controls = {};
        heldCount = 0;
    }
    kvOSCopyJob* begin() { return kvOSCopyMemoryThreaded(destination_.data(), source_.data(), kBytes, kBytes, 0); }
    bool isCopied(std::uint64_t slice) const {
        return std::memcmp(destination_.data() + slice * kLength, source_.data() + slice * kLength, kLength) == 0;
    }

    std::vector<char> source_ = std::vector<char>(kBytes, 's');
    std::vector<char> destination_ = std::vector<char>(kBytes, 'd');
};

TEST_F(ThreadedCopyLimits, CollectingWaitsASecondForEachSliceAndPausesOnce) {
    kvOSCopyJob* const job = begin();
    EXPECT_EQ(kvOSCopyMemoryThreadedComplete(job), 1u);
    EXPECT_EQ(controls.waits, 16);
    EXPECT_EQ(controls.otherTimeouts, 0);
    EXPECT_EQ(controls.pauses, 1);
    EXPECT_EQ(controls.otherStacks, 0);
    EXPECT_EQ(controls.blocks, 0);
    EXPECT_EQ(destination_, source_);
}

TEST_F(ThreadedCopyLimits, NinetyNineTimeoutsOverAllSlicesAreAllowed) {
    controls.timeouts = {60, 38, 0, 1};
    kvOSCopyJob* const job = begin();
    EXPECT_EQ(kvOSCopyMemoryThreadedComplete(job), 1u);
    EXPECT_EQ(controls.waits, 99 + 16);
    EXPECT_EQ(controls.pauses, 1);
    EXPECT_EQ(controls.blocks, 0);
    EXPECT_EQ(destination_, source_);
}

TEST_F(ThreadedCopyLimits, TheHundredthEndsTheCollectingAndStillSucceeds) {
    controls.timeouts = {60, 40};
    kvOSCopyJob* const job = begin();
    // So that no thread is in need of its slice.
    for (kvOSCopySlice& slice : job->slices) {
        while (__atomic_load_n(&slice.fDone, __ATOMIC_ACQUIRE) == 0) std::this_thread::yield();
    }
    const std::vector<kvOSCopySlice> left(job->slices + 1, job->slices + 16);
    EXPECT_EQ(kvOSCopyMemoryThreadedComplete(job), 1u);
    EXPECT_EQ(controls.waits, 60 + 1 + 40);
    EXPECT_EQ(controls.pauses, 0);
    EXPECT_EQ(controls.blocks, 15 * 2) << "events and threads of 15 slices; the job is freed";
    for (const kvOSCopySlice& slice : left) {
        EXPECT_EQ(waitInTheLibrary(slice.pEvent, KVWAIT_FOREVER), 0u) << "as it was";
        kvOSCloseEvent(slice.pEvent);
        EXPECT_EQ(slice.pThread->fAlive, 1);
        EXPECT_EQ(kvOSCloseThread(slice.pThread), 1u);
    }
    EXPECT_EQ(destination_, source_);
}

TEST_F(ThreadedCopyLimits, ASliceWithoutThreadStaysUncopiedAndIsWaitedForInVain) {
    controls.threadsUntilFailure = 15;
    controls.timeouts = std::vector<int>(16, 0);
    controls.timeouts[15] = kForEver;
    kvOSCopyJob* const job = begin();
    ASSERT_NE(job, nullptr);
    EXPECT_EQ(job->slices[15].pThread, nullptr);
    EXPECT_NE(job->slices[14].pThread, nullptr);
    kvOSEventRec* const event = job->slices[15].pEvent;
    EXPECT_EQ(kvOSCopyMemoryThreadedComplete(job), 1u) << "nothing tells";
    EXPECT_EQ(controls.waits, 15 + 100);
    EXPECT_TRUE(isCopied(14));
    EXPECT_EQ(destination_[15 * kLength], 'd');
    EXPECT_EQ(destination_.back(), 'd');
    EXPECT_EQ(controls.blocks, 1) << "the event of that slice alone";
    kvOSCloseEvent(event);
}

TEST_F(ThreadedCopyLimits, AThreadThatIsLateFindsItsSlice) {
    gate = kvOSCreateEvent(nullptr, 1, 0);
    controls.holdsThreads = true;
    controls.timeouts = {kForEver};
    kvOSCopyJob* const job = begin();
    EXPECT_EQ(kvOSCopyMemoryThreadedComplete(job), 1u);
    EXPECT_EQ(controls.waits, 100);
    kvOSSetEvent(gate);
    for (kvOSCopySlice& slice : job->slices) {
        EXPECT_EQ(waitInTheLibrary(slice.pEvent, KVWAIT_FOREVER), 0u);
        kvOSCloseEvent(slice.pEvent);
        kvOSCloseThread(slice.pThread);
    }
    EXPECT_EQ(destination_, source_);
    KVFree(job);
    kvOSCloseEvent(gate);
    EXPECT_EQ(controls.blocks, 0);
}

TEST_F(ThreadedCopyLimits, WithoutMemoryForTheJobTheCallingThreadCopies) {
    // The job, or one of its events, the last of them included.
    for (const int succeed : {0, 1, 5, 16}) {
        SCOPED_TRACE(succeed);
        std::memset(destination_.data(), 'd', kBytes);
        controls.allocationsUntilFailure = succeed;
        EXPECT_EQ(begin(), nullptr);
        controls.allocationsUntilFailure = -1;
        EXPECT_EQ(destination_, source_);
        EXPECT_EQ(controls.blocks, 0);
        EXPECT_EQ(controls.waits, 0);
    }
}

TEST_F(ThreadedCopyLimits, WithoutMemoryForTheJobTheLimitHolds) {
    controls.allocationsUntilFailure = 0;
    EXPECT_EQ(kvOSCopyMemoryThreaded(destination_.data(), source_.data(), kBytes, 1234567, 1), nullptr);
    EXPECT_EQ(destination_[1234566], 's');
    EXPECT_EQ(destination_[1234567], 'd');
    EXPECT_EQ(destination_.back(), 'd');
}

}  // namespace
