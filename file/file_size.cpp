// The size of a file, by handle and by name.
#include <cstdint>

#include "file/kinds.h"
#include "kvos/file.h"

namespace file = kv::file;

std::uint32_t kvOSGetFileSizeEx(std::int64_t hFile, std::uint64_t* pqwSize) {
    if (!file::isValid(hFile)) {
        if (pqwSize != nullptr) *pqwSize = 0;
        return 0;
    }
    kvOSFileHandle& record = file::recordOf(hFile);
    const std::uint64_t size = file::kindOf(record).size(record);
    if (pqwSize != nullptr) *pqwSize = size;
    return 1;
}

std::uint32_t kvOSGetFileSize(std::int64_t hFile, std::uint32_t* pdwHigh) {
    std::uint64_t size = 0;
    kvOSGetFileSizeEx(hFile, &size);
    if (pdwHigh != nullptr) *pdwHigh = static_cast<std::uint32_t>(size >> 32);
    return static_cast<std::uint32_t>(size);
}

std::uint64_t kvOSGetFileSizeName(const char* path) {
    const std::int64_t handle = kvOSCreateFile(path, KVFILE_READ, 3, nullptr, KVFILE_OPEN_EXISTING, 0, 0);
    std::uint64_t size = 0;
    kvOSGetFileSizeEx(handle, &size);
    kvOSCloseFile(handle);
    return size;
}
