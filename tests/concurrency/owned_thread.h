// A thread of the library that runs until it is told to end.
#pragma once

#include <cstdint>
#include <gtest/gtest.h>
#include <thread>

#include "concurrency/event_waiters.h"
#include "kvos/thread.h"

namespace kvtest {

/// Asks until the system has seen the thread's end. Joins it, by that.
inline void untilEnded(kvOSThreadRec* thread) {
    std::uint32_t code = 1;
    while (code != 0) {
        EXPECT_EQ(kvOSGetExitCodeThread(thread, &code), 1u);
        std::this_thread::yield();
    }
}

/// Waits for its gate until letGo.
class IdleThread {
public:
    IdleThread() : record_(kvOSCreateThread(nullptr, 0, waitForGate, gate_.get())) {
        EXPECT_NE(record_, nullptr);
        untilWaiting(*gate_, 1);
    }
    ~IdleThread() {
        if (record_ == nullptr) return;
        end();
        kvOSCloseThread(record_);
    }
    IdleThread(const IdleThread&) = delete;
    IdleThread& operator=(const IdleThread&) = delete;

    kvOSThreadRec* record() { return record_; }
    bool isRunning() { return fieldOf(*gate_, &kvOSEventRec::qwWaiting) == 1; }
    void letGo() { kvOSSetEvent(gate_.get()); }
    /// Lets it go and waits for its end, or, once nothing can be asked of it, until it has left the gate.
    void end() {
        letGo();
        if (record_->fAlive != 0) {
            untilEnded(record_);
        } else {
            untilWaiting(*gate_, 0);
        }
    }

private:
    static void* waitForGate(void* gate) {
        kvOSWaitForEvent(static_cast<kvOSEventRec*>(gate), KVWAIT_FOREVER);
        return nullptr;
    }

    Event gate_ = makeEvent(kManual);
    kvOSThreadRec* record_;
};

}  // namespace kvtest
