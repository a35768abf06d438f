// The everyday copy, zero and set calls beside the calls of the C library that do the same.
//
// Both sides of a row work on the same two blocks. The size is hidden from the compiler, so that the C library's call
// stays a call.
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <memory>
#include <new>
#include <string>

#include "bench/topics.h"
#include "kvos/memory.h"

namespace kv::bench {
namespace {

constexpr std::size_t kPage = 4096;

/// A block that begins a page, with every page present.
class Block {
public:
    explicit Block(std::size_t size)
        : bytes_(static_cast<char*>(std::aligned_alloc(kPage, (size / kPage + 2) * kPage))) {
        require(bytes_ != nullptr, "no memory");
        std::memset(bytes_.get(), 'k', size + kPage);
    }
    char* at(std::size_t offset) { return bytes_.get() + offset; }

private:
    struct Free {
        void operator()(char* bytes) const { std::free(bytes); }
    };
    std::unique_ptr<char, Free> bytes_;
};

struct Operands {
    void* destination;
    const void* source;
    std::size_t size;
};

/// One row: two calls of (operands) on the same operands.
template <class Ours, class Peer>
void compareCalls(Table& table, const std::string& what, const char* peerName, const Operands& operands, Ours ours,
                  Peer peer) {
    constexpr std::size_t kCallCostOnly = 1024;  // below it the time is the call's, not the bytes'
    const auto once = [operands](auto call) {
        return [call, operands]() mutable {
            benchmark::DoNotOptimize(operands.size);
            call(operands);
            benchmark::ClobberMemory();
        };
    };
    const bool isSmall = operands.size < kCallCostOnly;
    table.compare({what, peerName, isSmall ? callsPerPass(1) : bytesPerPass(operands.size),
                   isSmall ? atMostMoreNanoseconds(3) : atLeast(0.97)},
                  once(ours), once(peer));
}

void measureSize(Table& table, std::size_t size, bool aligned) {
    Block destination(size);
    Block source(size);
    const Operands operands{destination.at(aligned ? 0 : 1), source.at(aligned ? 0 : 3), size};
    const std::string where = ", " + sizeText(size) + (aligned ? ", aligned" : ", not aligned");
    const auto memcpyPeer = [](const Operands& o) { std::memcpy(o.destination, o.source, o.size); };

    compareCalls(
        table, "kvOSCopyMemory" + where, "memcpy", operands,
        [](const Operands& o) { kvOSCopyMemory(o.destination, o.source, o.size); }, memcpyPeer);
    compareCalls(
        table, "CopyMemoryFast" + where, "memcpy", operands,
        [](const Operands& o) { CopyMemoryFast(o.destination, o.source, o.size); }, memcpyPeer);
    compareCalls(
        table, "ZeroMemoryFast" + where, "memset", operands,
        [](const Operands& o) { ZeroMemoryFast(o.destination, o.size); },
        [](const Operands& o) { std::memset(o.destination, 0, o.size); });
    compareCalls(
        table, "SetMemoryFast" + where, "wmemset", operands,
        [](const Operands& o) { SetMemoryFast(o.destination, 0x4B564B56, o.size); },
        [](const Operands& o) {
            std::wmemset(static_cast<wchar_t*>(o.destination), 0x4B564B56, o.size / sizeof(wchar_t));
        });
}

}  // namespace

void measureCopies(const Scale& scale) {
    Table table("copies: copy, zero and set", scale);
    const std::size_t largest = scale.quick ? 16u << 20 : 256u << 20;
    for (const std::size_t size : {std::size_t{64}, std::size_t{4096}, std::size_t{1048576}, largest}) {
        measureSize(table, size, true);
        measureSize(table, size, false);
    }
}

}  // namespace kv::bench
