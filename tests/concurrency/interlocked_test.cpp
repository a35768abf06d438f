// Interlocked operations: results, wrapping, and that several threads lose nothing.
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <thread>
#include <vector>

#include "kvos/sync.h"

namespace {

constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();

template <class Body>
void onEightThreads(Body body) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) threads.emplace_back([&body, i] { body(i); });
    for (std::thread& thread : threads) thread.join();
}

TEST(Interlocked, IncrementAndDecrementReturnTheNewValue) {
    std::int32_t value = 5;
    EXPECT_EQ(kvOSInterlockedIncrement(&value), 6);
    EXPECT_EQ(kvOSInterlockedDecrement(&value), 5);
    EXPECT_EQ(value, 5);
}

TEST(Interlocked, IncrementAndDecrementWrap) {
    std::int32_t value = kHighest;
    EXPECT_EQ(kvOSInterlockedIncrement(&value), kLowest);
    EXPECT_EQ(kvOSInterlockedDecrement(&value), kHighest);
}

TEST(Interlocked, ExchangeReturnsTheOldValue) {
    std::int32_t value = -3;
    EXPECT_EQ(kvOSInterlockedExchange(&value, 9), -3);
    EXPECT_EQ(value, 9);
}

TEST(Interlocked, ExchangePointerCarriesAllBits) {
    void* const high = reinterpret_cast<void*>(std::uintptr_t{0x123456789ABCDEF0});
    int target = 0;
    void* value = high;
    EXPECT_EQ(kvOSInterlockedExchangePointer(&value, &target), high);
    EXPECT_EQ(value, &target);
    EXPECT_EQ(kvOSInterlockedExchangePointer(&value, nullptr), &target);
    EXPECT_EQ(value, nullptr);
}

TEST(Interlocked, CompareExchangeStoresOnlyOnAMatch) {
    std::int32_t value = 1;
    EXPECT_EQ(kvOSInterlockedCompareExchange(&value, 2, 7), 1);
    EXPECT_EQ(value, 1);
    EXPECT_EQ(kvOSInterlockedCompareExchange(&value, 2, 1), 1);
    EXPECT_EQ(value, 2);
}

TEST(Interlocked, CompareExchangePointerComparesAllBits) {
    // Differs from the comparand in the high half alone.
    void* const stored = reinterpret_cast<void*>(std::uintptr_t{0x1'00000010});
    void* const comparand = reinterpret_cast<void*>(std::uintptr_t{0x2'00000010});
    int target = 0;
    void* value = stored;
    EXPECT_EQ(kvOSInterlockedCompareExchangePointer(&value, &target, comparand), stored);
    EXPECT_EQ(value, stored);
    EXPECT_EQ(kvOSInterlockedCompareExchangePointer(&value, &target, stored), stored);
    EXPECT_EQ(value, &target);
}

TEST(Interlocked, ThreadsLoseNoIncrement) {
    std::int32_t up = 0;
    std::int32_t down = 0;
    onEightThreads([&](int) {
        for (int i = 0; i < 20000; ++i) {
            kvOSInterlockedIncrement(&up);
            kvOSInterlockedDecrement(&down);
        }
    });
    EXPECT_EQ(up, 160000);
    EXPECT_EQ(down, -160000);
}

TEST(Interlocked, ThreadsLoseNoCompareExchange) {
    std::int32_t sum = 0;
    onEightThreads([&](int) {
        for (int i = 0; i < 5000; ++i) {
            std::int32_t seen = kvOSInterlockedCompareExchange(&sum, 0, 0);
            for (std::int32_t old; (old = kvOSInterlockedCompareExchange(&sum, seen + 3, seen)) != seen;) seen = old;
        }
    });
    EXPECT_EQ(sum, 120000);
}

TEST(Interlocked, ExchangePassesPlainDataBetweenThreads) {
    // A block published by an exchange is seen whole by the thread that takes it.
    struct Block {
        int first = 0;
        int second = 0;
    };
    void* slot = nullptr;
    std::int32_t taken = 0;
    onEightThreads([&](int thread) {
        for (int i = 1; i <= 2000; ++i) {
            auto* old = static_cast<Block*>(kvOSInterlockedExchangePointer(&slot, new Block{i, i + thread}));
            if (old == nullptr) continue;
            if (old->second - old->first < 0 || old->second - old->first > 7) ADD_FAILURE() << "a torn block";
            delete old;
            kvOSInterlockedIncrement(&taken);
        }
    });
    delete static_cast<Block*>(kvOSInterlockedExchangePointer(&slot, nullptr));
    EXPECT_EQ(taken, 8 * 2000 - 1);
}

}  // namespace
