// The look-up of a handle's kind, and what all kinds share when they refuse or go.
#include "file/kinds.h"

#include <cerrno>
#include <cstdlib>

namespace kv::file {

const FileKind& kindOf(const kvOSFileHandle& file) {
    switch (file.dwType) {
        case KVFILE_MEMORY:
            return kMemoryFile;
        case KVFILE_CURL:
            return kUrlFile;
        case KVFILE_S3:
            return objectKind();
        default:
            return kLocalFile;
    }
}

Outcome refuseRead(kvOSFileHandle&, void*, const Transfer&) {
    errno = ENOTSUP;
    return Outcome::failed;
}

Outcome refuseWrite(kvOSFileHandle&, const void*, const Transfer&) {
    errno = ENOTSUP;
    return Outcome::failed;
}

void freeRecord(kvOSFileHandle& file) {
    std::free(file.pCache);
    std::free(file.pSpare1);
    std::free(file.pSpare2);
    std::free(&file);
}

}  // namespace kv::file
