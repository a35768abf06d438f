// Attaching output files.
#include "file/outputs.h"

#include <cstdint>

#include "file/kinds.h"
#include "kvos/file.h"

namespace {

constexpr std::uint32_t kNotForOutputs = 0x40000000;  // of dwFlags

}  // namespace

namespace file = kv::file;

std::uint32_t kvOSAddOutputFile(std::int64_t hFile, const char* path) {
    if (!file::isValid(hFile)) return 0;
    kvOSFileHandle& record = file::recordOf(hFile);
    if (!file::kindOf(record).takesOutputs || (record.dwAccess & KVFILE_WRITE) == 0) return 0;
    if (record.dwOutputCount >= file::kMaxOutputs) return 0;

    const std::int64_t output = kvOSCreateFile(path, KVFILE_WRITE, record.dwShare, record.pSecurity, KVFILE_CREATE_NEW,
                                               record.dwFlags & ~kNotForOutputs, record.hTemplate);
    record.hOutput[record.dwOutputCount] = output;
    if (file::isValid(output)) ++record.dwOutputCount;
    return 1;  // also when the output could not be opened. Meant.
}
