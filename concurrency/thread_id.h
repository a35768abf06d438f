// Who may use the id of a thread. It is good until the thread was joined or detached here; from then on the system may
// have given its memory to another.
//
// A thread may detach itself while others ask about it, so that every use of an id is claimed, in one step with the
// look at whether there is still one. A use is short: nothing is done with an id that waits for its thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <ctime>

#include "kvos/thread.h"

namespace kv::concurrency {

enum IdState : std::uint8_t { kIdFree = 0, kIdReleased = 1, kIdInUse = 2 };

/// A use of the record's id, after those of other threads. The end of it is the last access to the record.
class IdUse {
public:
    explicit IdUse(kvOSThreadRec& thread) : state_(thread.bIdState) {
        for (;;) {
            std::uint8_t found = kIdFree;
            isGood_ = state_.compare_exchange_weak(found, kIdInUse, std::memory_order_acquire);
            if (isGood_ || found == kIdReleased) return;
            if (found == kIdInUse) pause();
        }
    }
    ~IdUse() {
        if (isGood_) state_.store(after_, std::memory_order_release);
    }
    IdUse(const IdUse&) = delete;
    IdUse& operator=(const IdUse&) = delete;

    /// False once the thread was joined or detached.
    bool isGood() const { return isGood_; }
    /// This use joined or detached the thread.
    void release() { after_ = kIdReleased; }

private:
    /// Not a mere yield, by which a thread of a higher priority would keep the user of the id from going on.
    static void pause() {
        constexpr timespec kPause{0, 50'000};
        nanosleep(&kPause, nullptr);
    }

    std::atomic_ref<std::uint8_t> state_;
    bool isGood_ = false;
    std::uint8_t after_ = kIdFree;
};

}  // namespace kv::concurrency
