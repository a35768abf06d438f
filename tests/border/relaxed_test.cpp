// Process-wide variables without a lock: plain words outside, atomic ones inside.
#include "border/relaxed.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace {

using kv::border::relaxedLoad;
using kv::border::relaxedStore;

TEST(Relaxed, LoadsAndStoresThePlainVariable) {
    std::uint32_t word = 5;
    EXPECT_EQ(relaxedLoad(word), 5u);
    relaxedStore(word, 6u);
    EXPECT_EQ(word, 6u);
    word = 7;
    EXPECT_EQ(relaxedLoad(word), 7u);
}

TEST(Relaxed, TakesPointersToo) {
    int target = 0;
    int* pointer = nullptr;
    relaxedStore(pointer, &target);
    EXPECT_EQ(relaxedLoad(pointer), &target);
}

// The thread sanitizer is what would object to plain accesses here.
TEST(Relaxed, AccessesOfSeveralThreadsAreWhole) {
    std::uint64_t word = 0;
    std::vector<std::thread> threads;
    for (std::uint64_t i = 1; i <= 4; ++i) {
        threads.emplace_back([&word, i] {
            for (int round = 0; round < 10000; ++round) {
                relaxedStore(word, i * 0x0001000100010001);
                const std::uint64_t seen = relaxedLoad(word);
                if (seen != (seen & 7) * 0x0001000100010001) ADD_FAILURE() << "a torn word: " << seen;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
