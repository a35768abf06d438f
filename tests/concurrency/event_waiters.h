// Threads that wait for an event, and the moment at which they do.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <pthread.h>
#include <thread>
#include <vector>

#include "kvos/sync.h"

namespace kvtest {

struct CloseEvent {
    void operator()(kvOSEventRec* event) const { kvOSCloseEvent(event); }
};
using Event = std::unique_ptr<kvOSEventRec, CloseEvent>;

inline constexpr std::uint32_t kManual = 1;
inline constexpr std::uint32_t kAutoReset = 0;

inline Event makeEvent(std::uint32_t manual, std::uint32_t initial = 0) {
    return Event(kvOSCreateEvent(nullptr, manual, initial));
}

/// A field of the event as a thread sees it that holds the event's mutex.
inline std::uint64_t fieldOf(kvOSEventRec& event, std::uint64_t kvOSEventRec::*field) {
    pthread_mutex_lock(&event.mutex);
    const std::uint64_t value = event.*field;
    pthread_mutex_unlock(&event.mutex);
    return value;
}

/// Returns once exactly so many threads are in a wait.
inline void untilWaiting(kvOSEventRec& event, std::uint64_t threads) {
    while (fieldOf(event, &kvOSEventRec::qwWaiting) != threads) std::this_thread::yield();
}

/// Threads in a wait without end, all of them waiting when the constructor returns.
class Waiters {
public:
    Waiters(kvOSEventRec& event, int count) {
        for (int i = 0; i < count; ++i) {
            threads_.emplace_back([this, &event] {
                if (kvOSWaitForEvent(&event, KVWAIT_FOREVER) == KVWAIT_SIGNALLED) ++released_;
            });
        }
        untilWaiting(event, static_cast<std::uint64_t>(count));
    }
    ~Waiters() { join(); }
    Waiters(const Waiters&) = delete;
    Waiters& operator=(const Waiters&) = delete;

    /// All of them have to be released already, or soon.
    void join() {
        for (std::thread& thread : threads_) {
            if (thread.joinable()) thread.join();
        }
    }
    int released() const { return released_; }

private:
    std::atomic<int> released_ = 0;
    std::vector<std::thread> threads_;
};

}  // namespace kvtest
