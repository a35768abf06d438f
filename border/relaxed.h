// Process-wide variables that the contract leaves without a lock.
//
// They are plain exported words, so that a host may read and write them; inside, every access is a relaxed atomic one,
// which costs nothing and keeps a race between threads from being undefined behaviour. No order is promised.
#pragma once

#include <atomic>

namespace kv::border {

template <class Value>
Value relaxedLoad(Value& variable) {
    return std::atomic_ref<Value>(variable).load(std::memory_order_relaxed);
}

template <class Value>
void relaxedStore(Value& variable, Value value) {
    std::atomic_ref<Value>(variable).store(value, std::memory_order_relaxed);
}

}  // namespace kv::border
