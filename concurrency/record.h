// The records behind events, semaphores and threads: what counts as one, and how they are allocated.
//
// They come from KVAlloc, uninitialised: each creator stores every field that it promises.
#pragma once

#include <cerrno>
#include <cstdint>
#include <pthread.h>

#include "kvos/memory.h"

namespace kv::concurrency {

/// Null and all-ones, which callers keep from calls that failed or from kvOSGetCurrentThread, are no record.
template <class Record>
bool isReal(const Record* record) {
    return record != nullptr && reinterpret_cast<std::uintptr_t>(record) != ~std::uintptr_t{0};
}

/// Holds a mutex for a scope. It lets go as well when the host cancels a thread that waits inside.
class Hold {
public:
    explicit Hold(pthread_mutex_t& mutex) : mutex_(mutex) { pthread_mutex_lock(&mutex_); }
    ~Hold() { pthread_mutex_unlock(&mutex_); }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

private:
    pthread_mutex_t& mutex_;
};

/// A record with its mutex and its condition made; null, with errno set, where that is not possible.
template <class Record>
Record* makeRecord() {
    auto* const record = static_cast<Record*>(KVAlloc(sizeof(Record)));
    if (record == nullptr) return nullptr;
    int error = pthread_mutex_init(&record->mutex, nullptr);
    if (error == 0) {
        error = pthread_cond_init(&record->condition, nullptr);
        if (error == 0) return record;
        pthread_mutex_destroy(&record->mutex);
    }
    KVFree(record);
    errno = error;
    return nullptr;
}

}  // namespace kv::concurrency
