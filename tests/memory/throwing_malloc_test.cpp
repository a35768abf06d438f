// A host whose own allocator throws: the exception ends in the library's call.
//
// This program puts an allocator of its own under malloc and realloc. They stand under other names here, because the C
// library's header declares that those two never throw.
#include <cstddef>
#include <cstdint>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdexcept>

#include "errlog.h"
#include "kvos/export.h"
#include "kvos/memory.h"
#include "support/captured_messages.h"

// Whatever asks for exactly this much meets the exception; nothing else does, the exception's own record included.
constexpr std::size_t kRefused = 123457;

KVUTIL_API void* hostAllocate(std::size_t size) __asm__("malloc");
KVUTIL_API void* hostResize(void* block, std::size_t size) __asm__("realloc");

namespace {

// Looked up at their first use, which is long before main.
decltype(&hostAllocate) systemsMalloc = nullptr;
decltype(&hostResize) systemsRealloc = nullptr;

template <class Call>
Call systems(Call& call, const char* name) {
    if (call == nullptr) call = reinterpret_cast<Call>(dlsym(RTLD_NEXT, name));
    return call;
}

}  // namespace

void* hostAllocate(std::size_t size) {
    if (size == kRefused) throw std::runtime_error("the pool is empty");
    return systems(systemsMalloc, "malloc")(size);
}

void* hostResize(void* block, std::size_t size) {
    if (size == kRefused) throw std::runtime_error("the pool is empty");
    return systems(systemsRealloc, "realloc")(block, size);
}

namespace {

TEST(ThrowingMalloc, MakesTheAllocationFailWithItsOwnMessage) {
    gdwOutputToStdDebug = 1;
    kvtest::CapturedMessages messages;
    EXPECT_EQ(KVAlloc(kRefused), nullptr);
    EXPECT_EQ(messages.text(), "Exception: freeing kvmemory allocation");
}

TEST(ThrowingMalloc, IsSilentWhileStandardErrorIsSwitchedOff) {
    gdwOutputToStdDebug = 0;
    kvtest::CapturedMessages messages;
    EXPECT_EQ(KVAlloc(kRefused), nullptr);
    EXPECT_EQ(messages.text(), "");
}

TEST(ThrowingMalloc, MakesATrackedAllocationFailAndGivesTheLockBack) {
    gdwOutputToStdDebug = 1;
    dbgzmMemInitTracking();
    kvtest::CapturedMessages messages;
    EXPECT_EQ(_zmwAlloc(kRefused, "refused"), nullptr);
    EXPECT_EQ(messages.text(), "Exception: freeing kvmemory allocation");
    EXPECT_EQ(csMem.qwCount, 0u);
    EXPECT_EQ(d_ListCount(&dlMem), 0u);
    dbgzmMemQuitTracking();
}

TEST(ThrowingMalloc, MakesAResizeFailInSilenceAndKeepsTheBlock) {
    auto* block = static_cast<char*>(KVAlloc(8));
    ASSERT_NE(block, nullptr);
    block[0] = 'k';
    kvtest::CapturedMessages messages;
    EXPECT_EQ(KVReAlloc(block, kRefused), nullptr);
    EXPECT_EQ(messages.text(), "");
    EXPECT_EQ(block[0], 'k');
    KVFree(block);
}

}  // namespace
