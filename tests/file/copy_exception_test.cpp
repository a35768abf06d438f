// A host whose own allocator throws: the exception ends in the copying call, and is told.
//
// This program puts an allocator of its own under malloc, which stands under another name here, because the C library's
// header declares that it never throws, and an ErrFmtOut of its own that keeps the report.
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

#include "errlog.h"
#include "kvos/copy.h"
#include "kvos/export.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

KVUTIL_API void* hostAllocate(std::size_t size) __asm__("malloc");

namespace {

using namespace kvtest;

constexpr std::size_t kBlock = 1 << 20;

bool refuses = false;

struct Report {
    std::uint32_t code;
    const char* format;
    char text[200];
    int count;
} report{};
decltype(&hostAllocate) systemsMalloc = nullptr;  // looked up at its first use, which is long before main

}  // namespace

#pragma GCC visibility push(default)
extern "C" uint32_t ErrFmtOut(uint32_t dwCode, const char* /*pFile*/, int32_t /*nLine*/, const char* pFormat, ...) {
    report.code = dwCode;
    report.format = pFormat;
    va_list arguments;
    va_start(arguments, pFormat);
    std::vsnprintf(report.text, sizeof report.text, pFormat, arguments);
    va_end(arguments);
    ++report.count;
    return 0;
}
#pragma GCC visibility pop

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
    EXPECT_EQ(report.count, 1);
    EXPECT_EQ(report.code, 0x80000000u);
    EXPECT_STREQ(report.format, "WARNING(kvCopyFile): %s\n\r");
    EXPECT_STREQ(report.text, "WARNING(kvCopyFile): the pool is empty\n\r");
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
