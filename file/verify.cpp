// The comparison of two files, byte for byte.
//
// Emptiness is looked at ahead of the sizes, so that a second file that is empty, or could not be opened, is told as
// empty and not as one of another size.
#include <cstdint>
#include <cstring>
#include <memory>

#include "file/copied.h"
#include "kvos/copy.h"
#include "kvos/file.h"
#include "kvos/memory.h"

namespace kv::file {
namespace {

constexpr std::uint32_t kBlock = 1 << 20;

struct FreeBlock {
    void operator()(char* block) const { KVFree(block); }
};
using Block = std::unique_ptr<char, FreeBlock>;

Block newBlock() { return Block(static_cast<char*>(KVAlloc(kBlock))); }

std::uint64_t sizeOf(const Copied& file) {
    std::uint64_t size = 0;
    kvOSGetFileSizeEx(file.handle(), &size);
    return size;
}

/// The bytes of one read; a failed read has none.
std::uint32_t readInto(const Copied& file, char* block) {
    std::uint32_t got = 0;
    return kvOSReadFile(file.handle(), block, kBlock, &got, nullptr) != 0 ? got : 0;
}

std::uint32_t compareContents(const Copied& first, const Copied& second) {
    const Block left = newBlock();
    const Block right = newBlock();
    if (left == nullptr || right == nullptr) return KVVERIFY_NO_MEMORY;
    for (;;) {
        const std::uint32_t got = readInto(first, left.get());
        if (got == 0) return KVVERIFY_SAME;
        if (readInto(second, right.get()) != got) return KVVERIFY_SIZES_DIFFER;
        if (std::memcmp(left.get(), right.get(), got) != 0) return KVVERIFY_CONTENTS_DIFFER;
    }
}

std::int64_t openSource(const char* path) {
    return kvOSCreateFile(path, KVFILE_READ, kShareAll, nullptr, KVFILE_OPEN_EXISTING, kUnbuffered, 0);
}

std::uint32_t verify(const char* firstPath, const char* secondPath) {
    const Copied first(openSource(firstPath));
    if (!first.isOpen()) return KVVERIFY_NOT_OPENED;
    const Copied second(openSource(secondPath));  // an open that failed shows as an empty file
    if (sizeOf(first) == 0) return KVVERIFY_FIRST_EMPTY;
    if (sizeOf(second) == 0) return KVVERIFY_SECOND_EMPTY;
    if (sizeOf(first) != sizeOf(second)) return KVVERIFY_SIZES_DIFFER;
    return compareContents(first, second);
}

}  // namespace
}  // namespace kv::file

uint32_t kvOSVerifyFile(const char* pFirst, const char* pSecond) {
    return kv::file::copyAtBorder(KVVERIFY_NO_MEMORY, [&] { return kv::file::verify(pFirst, pSecond); });
}
