// A host whose own allocator throws: the exception ends in the copying call, and is told.
//
// This program puts an allocator of its own under malloc, which stands under another name here, because the C library's
// header declares that it never throws.
#include <cstddef>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

#include "kvos/copy.h"
#include "kvos/export.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

KVUTIL_API void* hostAllocate(std::size_t size) __asm__("malloc");

namespace {

using namespace kvtest;

constexpr std::size_t kBlock = 1 << 20;

bool refuses = false;
decltype(&hostAllocate) systemsMalloc = nullptr;  // looked up at its first use, which is long before main

}  // namespace

void* hostAllocate(std::size_t size) {
    if (refuses && size == kBlock) throw std::runtime_error("the pool is empty");
    if (systemsMalloc == nullptr) systemsMalloc = reinterpret_cast<decltype(&hostAllocate)>(dlsym(RTLD_NEXT, "malloc"));
    return systemsMalloc(size);
}

namespace {

class CopyException : public ::testing::Test {
protected:
    CopyException() { makeFile(from_, "bytes"); }
    ~CopyException() override { refuses = false; }

    ScratchFolder scratch_;
    std::string from_ = scratch_ / "from";
    std::string to_ = scratch_ / "to";
    CapturedMessages messages_;
};

TEST_F(CopyException, EndsACopyAndIsTold) {
    refuses = true;
    EXPECT_EQ(kvOSCopyFile(from_.c_str(), to_.c_str(), 0), 0u);
    refuses = false;
    EXPECT_EQ(messages_.count("WARNING(kvCopyFile): the pool is empty\n\r"), 1u);
}

TEST_F(CopyException, EndsAComparisonAsLackOfMemory) {
    refuses = true;
    EXPECT_EQ(kvOSVerifyFile(from_.c_str(), from_.c_str()), KVVERIFY_NO_MEMORY);
}

TEST_F(CopyException, EndsAnExtractAsLackOfMemory) {
    refuses = true;
    EXPECT_EQ(kvOSExtractFileFast(from_.c_str(), to_.c_str(), 0, 0, 1, 0, nullptr, nullptr, nullptr), 0u);
    refuses = false;
    EXPECT_EQ(messages_.count("\nERROR:kvOSExtractFileFast("), 1u);
}

}  // namespace
