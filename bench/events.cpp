// The hand-over between two threads: auto-reset events beside a bare condition variable that does the same.
//
// A pass is a number of turns, there and back, with a partner that is started anew for each pass and joined at its end,
// for ours and for the peer alike.
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

#include "bench/topics.h"
#include "kvos/sync.h"

namespace kv::bench {
namespace {

constexpr int kTurns = 2000;

enum class Wait { forever, aMinute };

template <Wait wait>
class Event {
public:
    void give() { kvOSSetEvent(event_.get()); }
    void take() {
        constexpr std::uint32_t kTimeout_ms = wait == Wait::forever ? KVWAIT_FOREVER : 60000;
        require(kvOSWaitForEvent(event_.get(), kTimeout_ms) == KVWAIT_SIGNALLED, "an event was lost");
    }

private:
    struct Close {
        void operator()(kvOSEventRec* event) const { kvOSCloseEvent(event); }
    };
    std::unique_ptr<kvOSEventRec, Close> event_{kvOSCreateEvent(nullptr, 0, 0)};
};

template <Wait wait>
class Bare {
public:
    void give() {
        const std::lock_guard lock(mutex_);
        set_ = true;
        condition_.notify_one();
    }
    void take() {
        const auto isSet = [this] { return set_; };
        std::unique_lock lock(mutex_);
        if constexpr (wait == Wait::forever) {
            condition_.wait(lock, isSet);
        } else {
            const auto end = std::chrono::system_clock::now() + std::chrono::minutes(1);
            require(condition_.wait_until(lock, end, isSet), "a turn was lost");
        }
        set_ = false;
    }

private:
    std::mutex mutex_;
    std::condition_variable condition_;
    bool set_ = false;
};

template <class Signal>
void handOver() {
    Signal there;
    Signal back;
    const std::jthread partner([&] {
        for (int i = 0; i < kTurns; ++i) {
            there.take();
            back.give();
        }
    });
    for (int i = 0; i < kTurns; ++i) {
        there.give();
        back.take();
    }
}

/// Setting and taking a signal on one thread: what the calls themselves cost.
template <class Signal>
void withoutPartner() {
    Signal signal;
    for (int i = 0; i < kTurns; ++i) {
        signal.give();
        signal.take();
    }
}

}  // namespace

void measureEvents(const Scale& scale) {
    Table table("events: hand-over between two threads and back", scale);
    table.compare(
        {"kvOSSetEvent, kvOSWaitForEvent", "condition variable", callsPerPass(kTurns), atLeast(0.95), Clock::wall},
        handOver<Event<Wait::forever>>, handOver<Bare<Wait::forever>>);
    table.compare({"the same with a timeout", "condition variable", callsPerPass(kTurns), atLeast(0.95), Clock::wall},
                  handOver<Event<Wait::aMinute>>, handOver<Bare<Wait::aMinute>>);
    table.compare({"set and taken by one thread", "condition variable", callsPerPass(kTurns)},
                  withoutPartner<Event<Wait::forever>>, withoutPartner<Bare<Wait::forever>>);
}

}  // namespace kv::bench
