// Reads of a local file in the page cache, beside the stream and the system call that the library stands on.
//
// The peer's stream is opened as the library opens its own: setvbuf with a size and without a buffer, of which the C
// library may take no notice.
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <random>
#include <unistd.h>
#include <vector>

#include "bench/scratch.h"
#include "bench/topics.h"
#include "kvos/file.h"

namespace kv::bench {
namespace {

/// The three ways to the same bytes, and the buffer that all of them fill.
struct Sources {
    std::int64_t handle;
    std::FILE* stream;
    int descriptor;
    std::vector<char> buffer;

    explicit Sources(const std::string& path, std::size_t largestRead)
        : handle(kvOSCreateFile(path.c_str(), KVFILE_READ, 1, nullptr, KVFILE_OPEN_EXISTING, 0, 0)),
          stream(std::fopen(path.c_str(), "rb")),
          descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC)),
          buffer(largestRead) {
        require(handle != KVFILE_INVALID && stream != nullptr && descriptor >= 0, "the file can't be opened");
        std::setvbuf(stream, nullptr, _IOFBF, 524288);
    }
    Sources(const Sources&) = delete;
    Sources& operator=(const Sources&) = delete;
    ~Sources() {
        close(descriptor);
        std::fclose(stream);
        kvOSCloseFile(handle);
    }

    void readByHandle(std::uint32_t count) {
        std::uint32_t got = 0;
        require(kvOSReadFile(handle, buffer.data(), count, &got, nullptr) == 1 && got == count, "a short read");
    }
    void readByStream(std::size_t count) {
        require(std::fread(buffer.data(), 1, count, stream) == count, "a short fread");
    }
    void readByDescriptor(std::size_t count) {
        require(read(descriptor, buffer.data(), count) == static_cast<ssize_t>(count), "a short read(2)");
    }
};

void measureSequential(Table& table, Sources& sources, std::uint64_t fileSize, std::uint32_t count) {
    const std::uint64_t calls = fileSize / count;
    const auto ours = [&sources, calls, count] {
        kvOSSeek(sources.handle, 0);
        for (std::uint64_t i = 0; i < calls; ++i) sources.readByHandle(count);
    };
    const std::string what = "in order, " + sizeText(count) + " a call";
    table.compare({what, "fread", bytesPerPass(fileSize), atLeast(0.95)}, ours, [&sources, calls, count] {
        fseeko(sources.stream, 0, SEEK_SET);
        for (std::uint64_t i = 0; i < calls; ++i) sources.readByStream(count);
    });
    if (count < (1 << 20)) return;
    table.compare({what, "read", bytesPerPass(fileSize), atLeast(0.9)}, ours, [&sources, calls, count] {
        lseek(sources.descriptor, 0, SEEK_SET);
        for (std::uint64_t i = 0; i < calls; ++i) sources.readByDescriptor(count);
    });
}

void measureRandom(Table& table, Sources& sources, std::uint64_t fileSize) {
    constexpr std::uint32_t kCount = 4096;
    std::mt19937_64 random(2);
    std::uniform_int_distribution<std::int64_t> block(0, static_cast<std::int64_t>(fileSize / kCount) - 1);
    std::vector<std::int64_t> positions(16384);
    for (std::int64_t& position : positions) position = block(random) * kCount;

    const auto peer = [&] {
        for (const std::int64_t position : positions) {
            fseeko(sources.stream, position, SEEK_SET);
            sources.readByStream(kCount);
        }
    };
    const Work work = callsPerPass(positions.size());
    table.compare(
        {"anywhere, 4 KiB a call, kvOSSeek and kvOSReadFile", "fseeko, fread", work, atLeast(0.95)},
        [&] {
            for (const std::int64_t position : positions) {
                kvOSSeek(sources.handle, position);
                sources.readByHandle(kCount);
            }
        },
        peer);
    table.compare(
        {"anywhere, 4 KiB a call, kvOSReadFile with a position", "fseeko, fread", work, atLeast(0.95)},
        [&] {
            for (const std::int64_t position : positions) {
                kvOSOverlapped at{0, 0, static_cast<std::uint64_t>(position), nullptr};
                kvOSReadFile(sources.handle, sources.buffer.data(), kCount, nullptr, &at);
            }
        },
        peer);
}

}  // namespace

void measureLocalReads(const Scale& scale) {
    const std::uint64_t fileSize = (scale.quick ? 32u : 256u) * std::uint64_t{1048576};
    const ScratchFolder folder;
    Sources sources(folder.makeFile("clip.mov", fileSize), 1 << 20);
    Table table("local_reads: a file of " + sizeText(fileSize) + " in the page cache", scale);
    for (const std::uint32_t count : {4096u, 65536u, 1048576u}) measureSequential(table, sources, fileSize, count);
    measureRandom(table, sources, fileSize);
}

}  // namespace kv::bench
