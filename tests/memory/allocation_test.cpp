// The plain allocator: blocks, and the message when memory runs out.
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>

#include "errlog.h"
#include "kvos/memory.h"
#include "support/captured_messages.h"
#include "support/sanitizers.h"

namespace {

// A sanitizer needs more address space than any limit leaves.
constexpr bool kLimitsWork = !kvtest::kAddressSanitizer && !kvtest::kThreadSanitizer;

/// Makes requests of gigabytes fail while small ones go on working; lasts until the end of the process.
void limitAddressSpace() {
    const rlimit limit{rlim_t{2} << 30, rlim_t{2} << 30};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &limit), 0);
}

TEST(Allocation, BlockCanBeWrittenAndFreed) {
    void* block = KVAlloc(1000);
    ASSERT_NE(block, nullptr);
    std::memset(block, 0x5A, 1000);
    KVFree(block);
}

TEST(Allocation, OfNoBytesIsABlock) {
    void* block = KVAlloc(0);
    EXPECT_NE(block, nullptr);
    KVFree(block);
}

TEST(Allocation, FreeingNullDoesNothing) { KVFree(nullptr); }

TEST(Allocation, ResizingKeepsTheContent) {
    auto* block = static_cast<char*>(KVReAlloc(nullptr, 8));
    ASSERT_NE(block, nullptr);
    std::memcpy(block, "content", 8);
    block = static_cast<char*>(KVReAlloc(block, 100000));
    ASSERT_NE(block, nullptr);
    EXPECT_STREQ(block, "content");
    block = static_cast<char*>(KVReAlloc(block, 4));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(std::string(block, 4), "cont");
    KVFree(block);
}

TEST(Allocation, FailureIsTold) {
    if (!kLimitsWork) GTEST_SKIP() << "needs a limit on the address space";
    gdwOutputToStdDebug = 1;
    limitAddressSpace();
    kvtest::CapturedMessages messages;
    errno = 0;
    EXPECT_EQ(KVAlloc(0xF0000000u), nullptr);
    EXPECT_EQ(errno, ENOMEM);
    EXPECT_EQ(messages.count("Error allocating -268435456 bytes 12 0x0000000C"), 1u) << messages.text();
}

TEST(Allocation, FailureIsSilentWhileStandardErrorIsSwitchedOff) {
    if (!kLimitsWork) GTEST_SKIP() << "needs a limit on the address space";
    gdwOutputToStdDebug = 0;
    limitAddressSpace();
    kvtest::CapturedMessages messages;
    EXPECT_EQ(KVAlloc(0xF0000000u), nullptr);
    EXPECT_EQ(messages.text(), "");
}

TEST(Allocation, FailedResizeKeepsTheBlockAndIsSilent) {
    if (!kLimitsWork) GTEST_SKIP() << "needs a limit on the address space";
    gdwOutputToStdDebug = 1;
    limitAddressSpace();
    auto* block = static_cast<char*>(KVAlloc(8));
    std::memcpy(block, "content", 8);
    kvtest::CapturedMessages messages;
    EXPECT_EQ(KVReAlloc(block, 0xF0000000u), nullptr);
    EXPECT_EQ(messages.text(), "");
    EXPECT_STREQ(block, "content");
    KVFree(block);
}

}  // namespace
