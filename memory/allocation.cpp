// The library's plain allocator: the C library's, with a message when memory runs out.
//
// Blocks pass between the library and its callers, so nothing is put in front of them: what KVAlloc returned, free
// can take, and the other way round.
#include <cerrno>
#include <cstdint>
#include <cstdlib>

#include "border/guard.h"
#include "errlog.h"
#include "kvos/memory.h"

void* KVAlloc(uint32_t dwSize) {
    bool ended = false;
    void* block = kv::border::atBorder<void*>(nullptr, [&] {
        void* allocated = std::malloc(dwSize);
        if (allocated == nullptr) {
            const kv::border::KeepErrno reason;
            _DbgOut("Error allocating %d bytes %d 0x%08X", static_cast<int>(dwSize), reason.value(),
                    static_cast<unsigned>(reason.value()));
        }
        ended = true;
        return allocated;
    });
    // A host may have put its own allocator under malloc, and that one may throw.
    if (!ended) _DbgOut("Exception: freeing kvmemory allocation");
    return block;
}

void KVFree(void* pBlock) { std::free(pBlock); }

void* KVReAlloc(void* pBlock, uint32_t dwSize) { return std::realloc(pBlock, dwSize); }
