// What the machine is: its name and its volumes. The fixed answers stand in for measurements that nobody makes.
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <unistd.h>

#include "kvos/machine.h"
#include "platform/volume.h"

namespace kv::system {
namespace {

constexpr std::uint32_t kFailed = 0xFFFFFFFF;
constexpr std::size_t kNameSize = 128;
constexpr std::uint64_t kFat = 19780;

std::optional<platform::Volume> volumeOf(const char* path) {
    if (path != nullptr) return platform::volumeOf(path);
    errno = EINVAL;
    return std::nullopt;
}

/// Stores a fixed answer.
template <class Value>
std::uint32_t answer(Value* target, Value value) {
    if (target == nullptr) {
        errno = EINVAL;
        return kFailed;
    }
    *target = value;
    return 0;
}

}  // namespace
}  // namespace kv::system

std::uint32_t kvOSGetMemSize() { return 2048; }

std::uint32_t kvOSGetCpuSpeed() { return 2400; }

std::uint32_t kvOSGetComputerName(char* pName) {
    using namespace kv::system;
    if (pName == nullptr) {
        errno = EINVAL;
        return kFailed;
    }
    char name[kNameSize + 1] = "";
    // A name that was cut has no end of its own.
    if (gethostname(name, kNameSize) != 0) name[0] = '\0';
    name[kNameSize - 1] = '\0';
    std::memcpy(pName, name, std::strlen(name) + 1);
    return name[0] != '\0' ? 0 : kFailed;
}

std::uint32_t FindLastPhysicalDrive(char* pDrive) { return kv::system::answer(pDrive, '~'); }

std::uint32_t FindRecordDrives(std::uint32_t* pdwCount) { return kv::system::answer(pdwCount, std::uint32_t{1}); }

std::uint64_t zmwGetDiskFreeSpace(const char* pPath) {
    const auto volume = kv::system::volumeOf(pPath);
    return volume ? volume->blockSize * volume->availableBlocks : ~std::uint64_t{0};
}

std::uint64_t zmwGetDiskTotalSpace(const char* pPath) {
    const auto volume = kv::system::volumeOf(pPath);
    return volume ? volume->blockSize * volume->blocks : 0;
}

std::uint32_t IsVolumeFAT(const char* pPath) {
    const auto volume = kv::system::volumeOf(pPath);
    return volume && volume->type == kv::system::kFat ? 1 : 0;
}
