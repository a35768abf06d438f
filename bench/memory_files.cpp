// Memory files beside plain copies out of and into a block of the same size.
//
// The peer's block is made as the file's is, so that both lie alike in memory. Ours also sets the position back.
#include <cstdlib>
#include <cstring>
#include <deque>
#include <vector>

#include "bench/topics.h"
#include "kvos/file.h"

namespace kv::bench {
namespace {

/// A file that was grown to its size, the block that stands for it, and what is read into and written from.
struct Ground {
    std::uint32_t size;
    std::int64_t handle;
    char* block;
    std::vector<char> buffer;

    explicit Ground(std::uint32_t bytes)
        : size(bytes),
          handle(kvOSCreateFile("mem://ground", KVFILE_READ | KVFILE_WRITE, 1, nullptr, KVFILE_CREATE_ALWAYS, 0, 0)),
          block(static_cast<char*>(std::malloc(std::size_t{bytes} + 1048576))),
          buffer(bytes, 'k') {
        require(handle != KVFILE_INVALID && block != nullptr, "no memory");
        require(kvOSWriteFile(handle, buffer.data(), size, nullptr, nullptr) == 1, "the file can't be filled");
        std::memcpy(block, buffer.data(), size);
    }
    Ground(const Ground&) = delete;
    Ground& operator=(const Ground&) = delete;
    ~Ground() {
        std::free(block);
        kvOSCloseFile(handle);
    }
};

/// A pass goes through several files, so that the pages that one of them happened to get do not decide.
void measureWhole(Table& table, std::uint32_t size, int files) {
    std::deque<Ground> grounds;
    for (int i = 0; i < files; ++i) grounds.emplace_back(size);
    const Work work = bytesPerPass(std::uint64_t{size} * grounds.size());
    const Row read{"read, " + sizeText(size) + " a call", "memcpy", work, atLeast(0.9)};
    table.compare(
        read,
        [&] {
            for (Ground& ground : grounds) {
                kvOSSeek(ground.handle, 0);
                kvOSReadFile(ground.handle, ground.buffer.data(), size, nullptr, nullptr);
            }
        },
        [&] {
            for (Ground& ground : grounds) {
                std::memcpy(ground.buffer.data(), ground.block, size);
                benchmark::ClobberMemory();
            }
        });
    const Row write{"write into a grown file, " + sizeText(size) + " a call", "memcpy", work, atLeast(0.9)};
    table.compare(
        write,
        [&] {
            for (Ground& ground : grounds) {
                kvOSSeek(ground.handle, 0);
                kvOSWriteFile(ground.handle, ground.buffer.data(), size, nullptr, nullptr);
            }
        },
        [&] {
            for (Ground& ground : grounds) {
                std::memcpy(ground.block, ground.buffer.data(), size);
                benchmark::ClobberMemory();
            }
        });
}

/// Calls of a few bytes in order through the whole file: what a call costs, not what its bytes cost.
void measureSmall(Table& table) {
    constexpr std::uint32_t kCount = 16;
    Ground ground(65536);
    const std::uint32_t calls = ground.size / kCount;
    std::size_t count = kCount;
    table.compare(
        {"read, 16 B a call", "memcpy", callsPerPass(calls), atMostNanoseconds(40)},
        [&, calls] {
            kvOSSeek(ground.handle, 0);
            for (std::uint32_t i = 0; i < calls; ++i) {
                std::uint32_t got = 0;
                kvOSReadFile(ground.handle, ground.buffer.data(), kCount, &got, nullptr);
            }
        },
        [&, calls] {
            for (std::uint32_t i = 0; i < calls; ++i) {
                benchmark::DoNotOptimize(count);  // keeps the copy a call
                std::memcpy(ground.buffer.data(), ground.block + std::size_t{i} * kCount, count);
                benchmark::ClobberMemory();
            }
        });
    table.compare(
        {"write into a grown file, 16 B a call", "memcpy", callsPerPass(calls), atMostNanoseconds(40)},
        [&, calls] {
            kvOSSeek(ground.handle, 0);
            for (std::uint32_t i = 0; i < calls; ++i) {
                std::uint32_t put = 0;
                kvOSWriteFile(ground.handle, ground.buffer.data(), kCount, &put, nullptr);
            }
        },
        [&, calls] {
            for (std::uint32_t i = 0; i < calls; ++i) {
                benchmark::DoNotOptimize(count);
                std::memcpy(ground.block + std::size_t{i} * kCount, ground.buffer.data(), count);
                benchmark::ClobberMemory();
            }
        });
}

}  // namespace

void measureMemoryFiles(const Scale& scale) {
    Table table("memory_files: scratch files that have grown already", scale);
    measureWhole(table, 65536, 8);
    measureWhole(table, 1048576, 8);
    measureWhole(table, 16777216, 2);
    if (!scale.quick) measureWhole(table, 268435456, 1);
    measureSmall(table);
}

}  // namespace kv::bench
