// The library's plain allocator: the C library's, with a message when memory runs out.
//
// Blocks pass between the library and its callers, so nothing is put in front of them: what KVAlloc returned, free
// can take, and the other way round.
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "border/guard.h"
#include "errlog.h"
#include "kvos/memory.h"

namespace kv::memory {
namespace {

// A host may have put its own allocator under malloc, and that one may throw. The C library declares that malloc does
// not, and the compiler would leave out what catches; it cannot know what a pointer leads to that it must read anew.
void* (*volatile allocate)(std::size_t bytes) = std::malloc;
void* (*volatile resize)(void* block, std::size_t bytes) = std::realloc;

}  // namespace
}  // namespace kv::memory

void* KVAlloc(uint32_t dwSize) {
    bool ended = false;
    void* block = kv::border::atBorder<void*>(nullptr, [&] {
        void* allocated = kv::memory::allocate(dwSize);
        if (allocated == nullptr) {
            const kv::border::KeepErrno reason;
            _DbgOut("Error allocating %d bytes %d 0x%08X", static_cast<int>(dwSize), reason.value(),
                    static_cast<unsigned>(reason.value()));
        }
        ended = true;
        return allocated;
    });
    if (!ended) _DbgOut("Exception: freeing kvmemory allocation");
    return block;
}

void KVFree(void* pBlock) { std::free(pBlock); }

void* KVReAlloc(void* pBlock, uint32_t dwSize) {
    return kv::border::atBorder<void*>(nullptr, [&] { return kv::memory::resize(pBlock, dwSize); });
}
