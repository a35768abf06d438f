// The copy on 16 threads beside one memcpy of the same block.
//
// What the threads gain is the machine's affair: how many processors there are, and how much of the memory's bandwidth
// one of them can use alone. So no ratio is aimed at. Each call of ours includes its pause of a millisecond at the end.
#include <cstdint>
#include <cstring>
#include <memory>

#include "bench/topics.h"
#include "kvos/memory.h"

namespace kv::bench {
namespace {

using Block = std::unique_ptr<char[]>;

/// Every page present.
Block makeBlock(std::uint64_t bytes, char content) {
    auto block = std::make_unique_for_overwrite<char[]>(bytes);
    std::memset(block.get(), content, bytes);
    return block;
}

void measureSize(Table& table, std::uint64_t bytes) {
    const Block destination = makeBlock(bytes, 'd');
    const Block source = makeBlock(bytes, 's');
    table.compare(
        {"kvOSCopyMemoryThreaded, " + sizeText(bytes), "memcpy", bytesPerPass(bytes), {}, Clock::wall},
        [&] { kvOSCopyMemoryThreaded(destination.get(), source.get(), bytes, bytes, 1); },
        [&] {
            std::memcpy(destination.get(), source.get(), bytes);
            benchmark::ClobberMemory();
        });
    require(std::memcmp(destination.get(), source.get(), bytes) == 0, "the copy is not whole");
}

}  // namespace

void measureThreadedCopy(const Scale& scale) {
    Table table("threaded_copy: large blocks, waited for", scale);
    constexpr std::uint64_t kMebibyte = 1 << 20;
    measureSize(table, 64 * kMebibyte);
    if (scale.quick) return;
    measureSize(table, 256 * kMebibyte);
    measureSize(table, 1024 * kMebibyte);
}

}  // namespace kv::bench
