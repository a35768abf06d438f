// The copy on several threads: where it is cut, what it leaves, and how it is collected.
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "kvos/memory.h"
#include "kvos/sync.h"
#include "kvos/thread.h"

namespace {

constexpr std::uint64_t kMany = 9'125'889;  // from here on 16 slices
constexpr char kUntouched = '-';

/// Bytes that differ from one place to the next, and from one slice to the next.
std::vector<char> pattern(std::uint64_t bytes) {
    std::vector<char> filled(bytes);
    for (std::uint64_t i = 0; i < bytes; ++i) filled[i] = static_cast<char>(i * 0x9E3779B97F4A7C15u >> 57);
    return filled;
}

std::vector<char> blank(std::uint64_t bytes) { return std::vector<char>(bytes, kUntouched); }

TEST(ThreadedCopy, BelowOneMebibyteIsDoneAtOnceAndGivesNoJob) {
    const std::uint64_t bytes = 1'048'575;
    const std::vector<char> source = pattern(bytes);
    for (const std::uint32_t wait : {0u, 1u}) {
        std::vector<char> destination = blank(bytes);
        EXPECT_EQ(kvOSCopyMemoryThreaded(destination.data(), source.data(), bytes, bytes, wait), nullptr);
        EXPECT_EQ(destination, source);
    }
}

TEST(ThreadedCopy, BelowOneMebibyteTheLimitIsNotLookedAt) {
    const std::vector<char> source = pattern(1000);
    std::vector<char> destination = blank(1000);
    EXPECT_EQ(kvOSCopyMemoryThreaded(destination.data(), source.data(), 1000, 10, 0), nullptr);
    EXPECT_EQ(destination, source);
    EXPECT_EQ(kvOSCopyMemoryThreaded(destination.data(), source.data(), 0, 0, 0), nullptr);
}

TEST(ThreadedCopy, IsOneSliceFromOneMebibyteOn) {
    for (const std::uint64_t bytes : {std::uint64_t{1'048'576}, kMany - 1}) {
        const std::vector<char> source = pattern(bytes);
        std::vector<char> destination = blank(bytes);
        kvOSCopyJob* const job = kvOSCopyMemoryThreaded(destination.data(), source.data(), bytes, bytes, 0);
        ASSERT_NE(job, nullptr);
        EXPECT_EQ(job->dwCount, 1u);
        const kvOSCopySlice& slice = job->slices[0];
        EXPECT_EQ(slice.pDestination, destination.data());
        EXPECT_EQ(slice.pSource, source.data());
        EXPECT_EQ(slice.dwBytes, bytes);
        ASSERT_NE(slice.pEvent, nullptr);
        EXPECT_EQ(slice.pEvent->qwManual, 0u);
        EXPECT_NE(slice.pThread, nullptr);
        for (int i = 1; i < 16; ++i) {
            EXPECT_EQ(job->slices[i].pDestination, nullptr);
            EXPECT_EQ(job->slices[i].dwBytes, 0u);
            EXPECT_EQ(job->slices[i].pEvent, nullptr);
            EXPECT_EQ(job->slices[i].pThread, nullptr);
        }
        EXPECT_EQ(kvOSCopyMemoryThreadedComplete(job), 1u);
        EXPECT_EQ(destination, source);
    }
}

TEST(ThreadedCopy, IsSixteenSlicesFromThereOnAndLeavesTheRemainder) {
    const std::uint64_t length = kMany / 16;
    ASSERT_EQ(kMany % 16, 1u);
    const std::vector<char> source = pattern(kMany);
    std::vector<char> destination = blank(kMany);
    kvOSCopyJob* const job = kvOSCopyMemoryThreaded(destination.data(), source.data(), kMany, kMany, 0);
    ASSERT_NE(job, nullptr);
    EXPECT_EQ(job->dwCount, 16u);
    for (std::uint64_t i = 0; i < 16; ++i) {
        const kvOSCopySlice& slice = job->slices[i];
        EXPECT_EQ(slice.pDestination, destination.data() + i * length);
        EXPECT_EQ(slice.pSource, source.data() + i * length);
        EXPECT_EQ(slice.dwBytes, length);
        EXPECT_NE(slice.pEvent, nullptr);
        EXPECT_NE(slice.pThread, nullptr);
    }
    EXPECT_EQ(kvOSCopyMemoryThreadedComplete(job), 1u);
    EXPECT_EQ(std::memcmp(destination.data(), source.data(), 16 * length), 0);
    EXPECT_EQ(destination[16 * length], kUntouched);
}

TEST(ThreadedCopy, LeavesUpToFifteenBytesAtTheEnd) {
    const std::uint64_t length = 600'001;
    for (const std::uint64_t remainder : {0u, 1u, 8u, 15u}) {
        SCOPED_TRACE(remainder);
        const std::uint64_t bytes = 16 * length + remainder;
        const std::vector<char> source = pattern(bytes);
        std::vector<char> destination = blank(bytes);
        EXPECT_EQ(kvOSCopyMemoryThreaded(destination.data(), source.data(), bytes, bytes, 1), nullptr)
            << "waited for, so nothing to collect";
        EXPECT_EQ(std::memcmp(destination.data(), source.data(), 16 * length), 0);
        EXPECT_EQ(std::string(destination.end() - static_cast<std::ptrdiff_t>(remainder), destination.end()),
                  std::string(remainder, kUntouched));
    }
}

TEST(ThreadedCopy, SlicesThatWouldPassTheLimitAreCutThere) {
    const std::uint64_t length = 600'000;
    const std::uint64_t bytes = 16 * length;
    const std::vector<char> source = pattern(bytes);
    for (const std::uint64_t limit :
         {10 * length + 1234, 10 * length, length - 1, std::uint64_t{1}, std::uint64_t{0}, bytes - 1, bytes}) {
        SCOPED_TRACE(limit);
        std::vector<char> destination = blank(limit + 16);
        kvOSCopyJob* const job = kvOSCopyMemoryThreaded(destination.data(), source.data(), bytes, limit, 0);
        ASSERT_NE(job, nullptr);
        for (std::uint64_t i = 0; i < 16; ++i) {
            const std::uint64_t begin = i * length;
            const std::uint64_t expected = begin >= limit ? 0 : begin + length > limit ? limit - begin : length;
            EXPECT_EQ(job->slices[i].dwBytes, expected) << "slice " << i;
        }
        EXPECT_EQ(kvOSCopyMemoryThreadedComplete(job), 1u);
        EXPECT_EQ(std::memcmp(destination.data(), source.data(), limit), 0);
        EXPECT_EQ(std::string(destination.end() - 16, destination.end()), std::string(16, kUntouched));
    }
}

TEST(ThreadedCopy, OneSliceIsCutAtTheLimitAsWell) {
    const std::uint64_t bytes = 2'000'000;
    const std::vector<char> source = pattern(bytes);
    std::vector<char> destination = blank(1'500'001 + 16);
    kvOSCopyJob* const job = kvOSCopyMemoryThreaded(destination.data(), source.data(), bytes, 1'500'001, 0);
    ASSERT_NE(job, nullptr);
    EXPECT_EQ(job->slices[0].dwBytes, 1'500'001u);
    EXPECT_EQ(kvOSCopyMemoryThreadedComplete(job), 1u);
    EXPECT_EQ(std::memcmp(destination.data(), source.data(), 1'500'001), 0);
    EXPECT_EQ(std::string(destination.end() - 16, destination.end()), std::string(16, kUntouched));
}

TEST(ThreadedCopy, CollectingNothingSucceeds) { EXPECT_EQ(kvOSCopyMemoryThreadedComplete(nullptr), 1u); }

TEST(ThreadedCopy, MayBeCollectedByAnotherThread) {
    const std::vector<char> source = pattern(kMany);
    std::vector<char> destination = blank(kMany);
    kvOSCopyJob* const job = kvOSCopyMemoryThreaded(destination.data(), source.data(), kMany - 1, kMany - 1, 0);
    std::thread([job] { EXPECT_EQ(kvOSCopyMemoryThreadedComplete(job), 1u); }).join();
    EXPECT_EQ(std::memcmp(destination.data(), source.data(), kMany - 1), 0);
}

TEST(ThreadedCopy, SeveralAtOnceDoNotMeet) {
    const std::vector<char> source = pattern(16 * 600'000);
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&source] {
            std::vector<char> destination = blank(source.size());
            for (int round = 0; round < 5; ++round) {
                EXPECT_EQ(kvOSCopyMemoryThreaded(destination.data(), source.data(), source.size(), source.size(), 1),
                          nullptr);
                EXPECT_EQ(destination, source);
                std::memset(destination.data(), 0, destination.size());
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

TEST(CopyThread, CopiesItsSliceSignalsAndEndsItsThread) {
    char destination[8] = "-------";
    kvOSEventRec* const event = kvOSCreateEvent(nullptr, 0, 0);
    kvOSCopySlice slice{destination, "copied!", 6, 0, event, nullptr};
    pthread_t thread{};
    ASSERT_EQ(pthread_create(&thread, nullptr, _kvOSCopyThread, &slice), 0);
    EXPECT_EQ(kvOSWaitForEvent(event, KVWAIT_FOREVER), 0u);
    void* result = &slice;
    pthread_join(thread, &result);
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(slice.fDone, 1u);
    EXPECT_STREQ(destination, "copied-");
    kvOSCloseEvent(event);
}

}  // namespace
