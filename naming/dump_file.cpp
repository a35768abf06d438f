// A block of memory written to a file of any kind, for a look at it.
#include <algorithm>
#include <cstdint>

#include "border/guard.h"
#include "kvos/file.h"
#include "kvos/naming.h"

namespace kv::naming {
namespace {

constexpr std::uint32_t kNormalFile = 128;
constexpr std::uint64_t kLargestWrite = 0xFFFFF000;  // all ones is no count, and whole pages copy fastest

enum class Written { all, fewer, failed };

/// At least one write, also for no bytes: that is what makes a file on a server.
Written writeAll(std::int64_t file, const char* data, std::uint64_t size) {
    do {
        const auto count = static_cast<std::uint32_t>(std::min(size, kLargestWrite));
        std::uint32_t written = 0;
        if (kvOSWriteFile(file, data, count, &written, nullptr) == 0) return Written::failed;
        if (written < count) return Written::fewer;
        data += count;
        size -= count;
    } while (size > 0);
    return Written::all;
}

}  // namespace
}  // namespace kv::naming

namespace naming = kv::naming;

std::int32_t DumpFileBin(const char* pName, const void* pData, std::uint64_t nSize) {
    if (pName == nullptr || (pData == nullptr && nSize > 0)) return -1;
    const std::int64_t file =
        kvOSCreateFile(pName, KVFILE_WRITE, 0, nullptr, KVFILE_CREATE_ALWAYS, naming::kNormalFile, 0);
    if (file == KVFILE_INVALID) return -1;
    const naming::Written outcome =
        naming::writeAll(file, pData == nullptr ? "" : static_cast<const char*>(pData), nSize);
    if (outcome == naming::Written::all) return kvOSCloseFile(file) != 0 ? 0 : -2;
    const kv::border::KeepErrno keep;
    kvOSCloseFile(file);
    return outcome == naming::Written::failed ? -1 : -2;
}
