// The class for shared memory.
//
// Removing the name whatever the object did with it is meant: see the destructor's own words in the header.
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

#include "border/guard.h"
#include "kvos/shared_memory.h"
#include "platform/shared_memory.h"

namespace shoom {

static_assert(sizeof(Shm) == sizeof(std::string) + sizeof(void*) + sizeof(std::uint64_t) + 8,
              "text, pointer, size and descriptor follow each other, with the end filled up");

namespace {

constexpr mode_t kPermissions = 493;
static_assert(kPermissions == 0755);

}  // namespace

Shm::Shm(const std::string& name, std::size_t size) noexcept : size_(size) {
    // Without memory for it the path stays empty, which no segment has.
    kv::border::atBorder(false, [&] {
        path_ = "/" + name;
        return true;
    });
}

Shm::~Shm() {
    const kv::border::KeepErrno keep;
    letGo();
    shm_unlink(path_.c_str());
}

std::int32_t Shm::CreateOrOpen(bool create) {
    letGo();
    if (create && shm_unlink(path_.c_str()) != 0 && errno != ENOENT) return kErrorCreationFailed;
    descriptor_ = shm_open(path_.c_str(), create ? O_RDWR | O_CREAT : O_RDONLY, kPermissions);
    if (descriptor_ < 0) return create ? kErrorCreationFailed : kErrorOpeningFailed;
    if (create && (ftruncate(descriptor_, static_cast<off_t>(size_)) != 0 ||
                   !kv::platform::reserveSegment(descriptor_, Size()))) {
        return kErrorCreationFailed;
    }
    void* const mapped = mmap(nullptr, Size(), create ? PROT_READ | PROT_WRITE : PROT_READ, MAP_SHARED, descriptor_, 0);
    if (mapped == MAP_FAILED || mapped == nullptr) return kErrorMappingFailed;
    memory_ = mapped;
    if (create) std::memset(memory_, 0, Size());
    return kOK;
}

/// Unmapping null would take away what lies at the start of the address space.
void Shm::letGo() {
    const kv::border::KeepErrno keep;
    if (memory_ != nullptr) munmap(memory_, Size());
    if (descriptor_ >= 0) close(descriptor_);
    memory_ = nullptr;
    descriptor_ = -1;
}

}  // namespace shoom
