// Events: a mutex, a condition and a flag.
//
// A pulse lets go those who wait at its moment, and leaves nothing signalled for those who come after it. It does not
// touch the flag for that: each waiter remembers how many pulses there had been when it came.
#include <cstdint>
#include <pthread.h>
#include <sys/time.h>

#include "concurrency/deadline.h"
#include "concurrency/record.h"
#include "kvos/sync.h"

namespace kv::concurrency {
namespace {

/// A thread's stay in a wait; exists only while the event's mutex is held, or the condition is waited for.
class Waiter {
public:
    explicit Waiter(kvOSEventRec& event) : event_(event), pulsesBefore_(event.qwPulses) { ++event_.qwWaiting; }
    ~Waiter() {
        --event_.qwWaiting;
        if (!wasThereAtThePulse()) return;
        --event_.qwPulsed;
        // One that leaves otherwise, by a timeout for example, must not leave its share to those who came later.
        if (event_.qwReleases > event_.qwPulsed) event_.qwReleases = event_.qwPulsed;
    }
    Waiter(const Waiter&) = delete;
    Waiter& operator=(const Waiter&) = delete;

    /// Takes what lets this thread go, if there is something: a pulse first, as later threads can't use it.
    bool takeSignal() {
        if (wasThereAtThePulse()) {
            if (event_.qwManual != 0) return true;
            if (event_.qwReleases != 0) {
                --event_.qwReleases;
                return true;
            }
        }
        if (event_.qwSignalled == 0) return false;
        if (event_.qwManual == 0) event_.qwSignalled = 0;
        return true;
    }

private:
    bool wasThereAtThePulse() const { return pulsesBefore_ != event_.qwPulses; }

    kvOSEventRec& event_;
    const std::uint64_t pulsesBefore_;
};

/// The caller holds the event's mutex.
void wake(kvOSEventRec& event) {
    if (event.qwManual != 0) {
        pthread_cond_broadcast(&event.condition);
    } else {
        pthread_cond_signal(&event.condition);
    }
}

/// Waits with `block`, which says 0 for a wake-up and an error for the rest.
template <class Block>
std::uint32_t waitBy(kvOSEventRec& event, Block block) {
    Waiter waiter(event);
    while (!waiter.takeSignal()) {
        if (block(&event.condition, &event.mutex) != 0) return KVWAIT_TIMEOUT;
    }
    return KVWAIT_SIGNALLED;
}

std::uint32_t wait(kvOSEventRec& event, std::uint32_t milliseconds) {
    const Hold hold(event.mutex);
    if (milliseconds == KVWAIT_FOREVER) return waitBy(event, pthread_cond_wait);
    if (milliseconds == 0 || event.qwSignalled != 0) {  // nothing to wait for, and no clock to be read
        return waitBy(event, [](auto*, auto*) { return 1; });
    }
    timeval now{};
    gettimeofday(&now, nullptr);
    const timespec deadline = deadlineAfter(now, milliseconds);
    return waitBy(event, [&deadline](pthread_cond_t* condition, pthread_mutex_t* mutex) {
        return pthread_cond_timedwait(condition, mutex, &deadline);
    });
}

}  // namespace
}  // namespace kv::concurrency

namespace concurrency = kv::concurrency;

kvOSEventRec* kvOSCreateEvent(void* /*pSecurity*/, uint32_t fManual, uint32_t fInitial) {
    auto* const event = concurrency::makeRecord<kvOSEventRec>();
    if (event == nullptr) return nullptr;
    event->qwManual = fManual;
    event->qwSignalled = fInitial;
    event->qwPulses = 0;
    event->qwWaiting = 0;
    event->qwPulsed = 0;
    event->qwReleases = 0;
    return event;
}

kvOSEventRec* kvOSOpenEvent(uint32_t dwAccess, uint32_t fInherit) {
    return kvOSCreateEvent(nullptr, dwAccess, fInherit);
}

uint32_t kvOSSetEvent(kvOSEventRec* pEvent) {
    if (!concurrency::isReal(pEvent)) return 0;
    const concurrency::Hold hold(pEvent->mutex);
    concurrency::wake(*pEvent);
    pEvent->qwSignalled = 1;
    return 1;
}

uint32_t kvOSResetEvent(kvOSEventRec* pEvent) {
    if (!concurrency::isReal(pEvent)) return 0;
    const concurrency::Hold hold(pEvent->mutex);
    pEvent->qwSignalled = 0;
    return 1;
}

uint32_t kvOSPulseEvent(kvOSEventRec* pEvent) {
    if (!concurrency::isReal(pEvent)) return 0;
    const concurrency::Hold hold(pEvent->mutex);
    concurrency::wake(*pEvent);
    ++pEvent->qwPulses;
    pEvent->qwPulsed = pEvent->qwWaiting;
    if (pEvent->qwReleases < pEvent->qwPulsed) ++pEvent->qwReleases;
    pEvent->qwSignalled = 0;
    return 1;
}

uint32_t kvOSWaitForEvent(kvOSEventRec* pEvent, uint32_t dwMilliseconds) {
    return concurrency::isReal(pEvent) ? concurrency::wait(*pEvent, dwMilliseconds) : KVWAIT_TIMEOUT;
}

uint32_t kvOSWaitForMultipleEvents(uint32_t dwCount, kvOSEventRec* const* ppEvents, uint32_t /*fWaitAll*/,
                                   uint32_t dwMilliseconds) {
    std::uint32_t last = KVWAIT_TIMEOUT;
    if (ppEvents == nullptr) return last;
    for (std::uint32_t i = 0; i < dwCount; ++i) last = kvOSWaitForEvent(ppEvents[i], dwMilliseconds);
    return last;
}

uint32_t kvOSCloseEvent(kvOSEventRec* pEvent) {
    if (!concurrency::isReal(pEvent)) return 0;
    pthread_mutex_destroy(&pEvent->mutex);
    pthread_cond_destroy(&pEvent->condition);
    KVFree(pEvent);
    return 0;
}
