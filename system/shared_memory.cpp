// The pair of calls for shared memory. The class is in shared_segment.cpp, and goes its own way.
#include "kvos/shared_memory.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/mman.h>
#include <unistd.h>

#include "border/guard.h"
#include "border/text.h"

namespace kv::system {
namespace {

/// Meant: 666 in decimal, which is not the octal number of that spelling.
constexpr mode_t kPermissions = 0x29A;
static_assert(kPermissions == 666);

struct Free {
    void operator()(kvOSSMem* record) const noexcept { std::free(record); }
};
using Record = std::unique_ptr<kvOSSMem, Free>;

/// The descriptor of a segment of that size; -1 on failure. The name stays if only its size was refused.
int makeSegment(const char* name, std::uint32_t size) {
    const int descriptor = shm_open(name, O_RDWR | O_CREAT | O_TRUNC, kPermissions);
    if (descriptor < 0 || ftruncate(descriptor, size) == 0) return descriptor;
    const border::KeepErrno keep;
    close(descriptor);
    return -1;
}

}  // namespace
}  // namespace kv::system

kvOSSMem* kvOSSMemOpen(const char* pName, std::uint32_t dwFlags, std::uint32_t dwSize, void** ppMemory) {
    using namespace kv::system;
    if (pName == nullptr || ppMemory == nullptr) {
        errno = EINVAL;
        return nullptr;
    }
    Record record(static_cast<kvOSSMem*>(std::calloc(1, sizeof(kvOSSMem))));
    if (!record || !kv::border::copyPath(record->szName, pName)) return nullptr;
    record->dwSize = dwSize;
    record->dwFlags = dwFlags;
    record->nDescriptor = makeSegment(pName, dwSize);
    if (record->nDescriptor < 0) return nullptr;
    record->pMemory =
        mmap(nullptr, dwSize, PROT_READ | PROT_WRITE, MAP_SHARED, static_cast<int>(record->nDescriptor), 0);
    *ppMemory = record->pMemory;
    // Meant: a failed mapping is all ones and passes here.
    if (record->pMemory == nullptr) shm_unlink(pName);
    return record.release();
}

std::int32_t kvOSSMemClose(kvOSSMem* pRecord) {
    if (pRecord == nullptr) {
        errno = EINVAL;
        return -1;
    }
    const kv::system::Record record(pRecord);
    munmap(record->pMemory, record->dwSize);
    return shm_unlink(record->szName);
}
