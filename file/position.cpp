// Positions and sizes: the exported calls, and the answers of every kind that keeps both in its record.
//
// The calls that move a position or cut the file repeat themselves on the attached outputs first, so that an output
// keeps step with its main file.
#include <cerrno>
#include <cstdint>

#include "file/kinds.h"
#include "file/outputs.h"
#include "kvos/file.h"

namespace kv::file {
namespace {

bool takesAnyTarget(const kvOSFileHandle& file) {
    return file.dwCreation == KVFILE_CREATE_NEW || file.dwCreation == KVFILE_CREATE_ALWAYS;
}

std::uint64_t joined(std::int32_t low, const std::int32_t* high) {
    const std::uint64_t upper = high == nullptr ? 0 : static_cast<std::uint32_t>(*high);
    return upper << 32 | static_cast<std::uint32_t>(low);
}

std::uint64_t magnitude(std::uint64_t distance) {
    return static_cast<std::int64_t>(distance) < 0 ? 0 - distance : distance;
}

}  // namespace

std::int64_t seekInRecord(kvOSFileHandle& file, std::int64_t position) {
    const auto target = static_cast<std::uint64_t>(position);
    // A file that is being made takes any target, since its size is still growing.
    if (!takesAnyTarget(file) && (position < 0 || target > file.qwSize)) {
        file.qwPos = kNowhere;
        return -1;
    }
    file.qwPos = target;
    return position;
}

std::int64_t seekEndInRecord(kvOSFileHandle& file) {
    file.qwPos = file.qwSize;
    return tellInRecord(file);
}

std::int64_t tellInRecord(kvOSFileHandle& file) { return static_cast<std::int64_t>(file.qwPos); }

std::uint32_t movePointerInRecord(kvOSFileHandle& file, std::int32_t low, std::int32_t* high, std::uint32_t method) {
    const std::uint64_t distance = joined(low, high);
    switch (method) {
        case 1:
            file.qwPos += distance;
            break;
        case 2:
            file.qwPos = file.qwSize - magnitude(distance);
            break;
        default:
            file.qwPos = distance;
            break;
    }
    if (high != nullptr) *high = static_cast<std::int32_t>(file.qwPos >> 32);
    return static_cast<std::uint32_t>(file.qwPos);
}

std::uint32_t movePointerExInRecord(kvOSFileHandle& file, std::int64_t distance, std::int64_t* result,
                                    std::uint32_t method) {
    auto target = static_cast<std::uint64_t>(distance);
    if (method == 1) target = file.qwPos + target;
    if (method == 2) target = file.qwSize - target;
    if (static_cast<std::int64_t>(target) < 0 || target > file.qwSize) target = kNowhere;
    file.qwPos = target;
    if (result != nullptr) *result = static_cast<std::int64_t>(target);
    return 1;  // also for a target out of range. Meant.
}

std::uint64_t sizeInRecord(kvOSFileHandle& file) { return file.qwSize; }

bool cutInRecord(kvOSFileHandle& file) {
    if (file.qwPos >= file.qwSize) return false;
    file.qwSize = file.qwPos;
    return true;
}

bool isAtEndOfRecord(kvOSFileHandle& file) { return file.qwPos >= file.qwSize; }

}  // namespace kv::file

namespace file = kv::file;

std::int64_t kvOSSeek(std::int64_t hFile, std::int64_t qwPosition) {
    if (!file::isValid(hFile)) return -1;
    kvOSFileHandle& record = file::recordOf(hFile);
    for (const std::int64_t output : file::outputsOf(record)) kvOSSeek(output, qwPosition);
    return file::kindOf(record).seek(record, qwPosition);
}

std::int64_t kvOSSeekEnd(std::int64_t hFile) {
    if (!file::isValid(hFile)) return -1;
    kvOSFileHandle& record = file::recordOf(hFile);
    for (const std::int64_t output : file::outputsOf(record)) kvOSSeekEnd(output);
    return file::kindOf(record).seekEnd(record);
}

std::int64_t kvOSTell(std::int64_t hFile) {
    if (!file::isValid(hFile)) return -1;
    kvOSFileHandle& record = file::recordOf(hFile);
    return file::kindOf(record).tell(record);
}

std::uint32_t kvOSSetFilePointer(std::int64_t hFile, std::int32_t lDistance, std::int32_t* plDistanceHigh,
                                 std::uint32_t dwMethod) {
    if (!file::isValid(hFile)) return 0xFFFFFFFF;
    kvOSFileHandle& record = file::recordOf(hFile);
    for (const std::int64_t output : file::outputsOf(record)) {
        // A high word of its own, so that the caller's is untouched; it is 0 where the caller gives none. Meant.
        std::int32_t high = plDistanceHigh == nullptr ? 0 : *plDistanceHigh;
        kvOSSetFilePointer(output, lDistance, &high, dwMethod);
    }
    return file::kindOf(record).movePointer(record, lDistance, plDistanceHigh, dwMethod);
}

std::uint32_t kvOSSetFilePointerEx(std::int64_t hFile, std::int64_t qwDistance, std::int64_t* pqwNewPosition,
                                   std::uint32_t dwMethod) {
    if (!file::isValid(hFile)) {
        if (pqwNewPosition != nullptr) *pqwNewPosition = -1;
        return 0;
    }
    kvOSFileHandle& record = file::recordOf(hFile);
    for (const std::int64_t output : file::outputsOf(record)) {
        kvOSSetFilePointerEx(output, qwDistance, nullptr, dwMethod);
    }
    return file::kindOf(record).movePointerEx(record, qwDistance, pqwNewPosition, dwMethod);
}

std::uint32_t kvOSSetEndOfFile(std::int64_t hFile) {
    if (!file::isValid(hFile)) return 0;
    kvOSFileHandle& record = file::recordOf(hFile);
    for (const std::int64_t output : file::outputsOf(record)) kvOSSetEndOfFile(output);
    return file::kindOf(record).cutHere(record) ? 1 : 0;
}

std::uint32_t kvOSFlushFileBuffers(std::int64_t hFile) {
    if (!file::isValid(hFile)) return 0;
    kvOSFileHandle& record = file::recordOf(hFile);
    for (const std::int64_t output : file::outputsOf(record)) kvOSFlushFileBuffers(output);
    return file::kindOf(record).flush(record) ? 1 : 0;
}

std::uint32_t kvOSCanSeekFile(std::int64_t hFile) {
    if (!file::isValid(hFile)) return 0;
    const kvOSFileHandle& record = file::recordOf(hFile);
    return record.dwAccess == KVFILE_READ || file::kindOf(record).seeksWhenWriting ? 1 : 0;
}

std::uint32_t kvOSfeof(std::int64_t hFile) {
    if (!file::isValid(hFile)) return 1;  // a loop until the end ends
    kvOSFileHandle& record = file::recordOf(hFile);
    return file::kindOf(record).isAtEnd(record) ? 1 : 0;
}
