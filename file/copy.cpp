// The plain copy.
//
// The last block goes through a second open of the destination: one that was opened for whole, unbuffered blocks could
// not take it. An object in a store, which is not there before its close, gets it through the first. What the result
// says of a copy without such a block is meant.
#include "kvos/copy.h"

#include <cerrno>
#include <memory>

#include "file/copied.h"
#include "kvos/attributes.h"
#include "kvos/file.h"

namespace kv::file {
namespace {

constexpr std::uint32_t kBlock = 1 << 20;

std::uint32_t copyBlocks(std::int64_t source, std::int64_t destination, const char* path) {
    const std::unique_ptr<char[]> block(new char[kBlock]);
    for (std::int64_t offset = 0;; offset += kBlock) {
        std::uint32_t got = 0;
        const bool read = kvOSReadFile(source, block.get(), kBlock, &got, nullptr) != 0;
        if (got == 0) return read ? 0 : 1;  // meant, both
        if (got < kBlock) return writeTail(destination, path, offset, block.get(), got) ? 1 : 0;
        if (!writeBlock(destination, block.get(), got)) return 0;
    }
}

std::uint32_t copy(const char* from, const char* to, bool failIfExists) {
    if (from == nullptr || to == nullptr) {
        errno = EINVAL;
        return 0;
    }
    if (kvOSFileExists(to) != 0) {
        if (failIfExists) {
            errno = EEXIST;
            return 0;
        }
        kvOSDeleteFile(to);
    }
    const Copied source(kvOSCreateFile(from, KVFILE_READ, 7, nullptr, KVFILE_OPEN_EXISTING, kUnbuffered, 0));
    if (!source.isOpen()) return 0;
    Copied destination(kvOSCreateFile(to, KVFILE_WRITE, 1, nullptr, KVFILE_CREATE_NEW, kUnbuffered, 0));
    const std::uint32_t result = copyBlocks(source.handle(), destination.handle(), to);
    return result != 0 && destination.close() ? result : 0;  // the errno of the first that failed
}

}  // namespace
}  // namespace kv::file

extern "C" uint32_t kvOSCopyFile(const char* pSource, const char* pDestination, uint32_t fFailIfExists) {
    return kv::file::copyAtBorder(0u, [&] { return kv::file::copy(pSource, pDestination, fFailIfExists != 0); });
}
