// The making of time-based UUIDs.
//
// The generator's state has no lock by contract. Its words are relaxed atomics: threads that meet here may get one time
// value twice, which the random clock sequence has to tell apart, and nothing worse.
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <pthread.h>
#include <sys/time.h>

#include "kvos/guid.h"

namespace kv::text {
namespace {

/// From 15 October 1582, the first day of the Gregorian calendar, to 1970, in units of 100 ns.
constexpr std::uint64_t kGregorianToUnix = 0x01B21DD213814000;
constexpr std::uint32_t kMostCounted = 1024;

constexpr auto kRelaxed = std::memory_order_relaxed;

constinit std::atomic<std::uint64_t> lastStamp = 0;
constinit std::atomic<std::uint32_t> counter = kMostCounted;
constinit std::atomic<std::uint64_t> storedNode = 0;  // 0 until there is one: a node has its multicast bit
constinit std::atomic<bool> isSeeded = false;

struct Moment {
    std::uint64_t stamp;
    std::uint32_t count;  // UUIDs that this stamp was used for before
};

std::uint64_t readStamp() {
    timeval now{};
    gettimeofday(&now, nullptr);
    return kGregorianToUnix + static_cast<std::uint64_t>(now.tv_sec) * 10000000 +
           static_cast<std::uint64_t>(now.tv_usec) * 10;
}

Moment nextMoment() {
    for (;;) {
        const std::uint64_t stamp = readStamp();
        if (stamp != lastStamp.load(kRelaxed)) {
            lastStamp.store(stamp, kRelaxed);
            counter.store(0, kRelaxed);
            return {stamp, 0};
        }
        const std::uint32_t count = counter.load(kRelaxed);
        if (count < kMostCounted) {
            counter.store(count + 1, kRelaxed);
            return {stamp, count + 1};
        }
    }
}

std::uint32_t nextRandom(std::uint64_t stamp) {
    if (!isSeeded.exchange(true, kRelaxed)) std::srand(static_cast<unsigned>((stamp >> 42) ^ (stamp >> 10)));
    return static_cast<std::uint32_t>(std::rand());
}

bool readSystemsRandom(std::array<std::uint8_t, 16>& bytes) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> source(std::fopen("/dev/urandom", "rb"),
                                                                 [](std::FILE* file) { return std::fclose(file); });
    return source != nullptr && std::fread(bytes.data(), 1, bytes.size(), source.get()) == bytes.size();
}

/// A fork goes on with the same values of rand: with the node of its parent it would make the same UUIDs.
void forgetNodeInForks() {
    static std::atomic<bool> isTold = false;
    if (!isTold.exchange(true, kRelaxed)) pthread_atfork(nullptr, nullptr, [] { storedNode.store(0, kRelaxed); });
}

void fillNode(std::uint8_t (&node)[6], std::uint64_t stamp) {
    std::uint64_t value = storedNode.load(kRelaxed);
    if (value == 0) {
        std::array<std::uint8_t, 16> bytes;
        if (!readSystemsRandom(bytes)) {
            for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(nextRandom(stamp));
        }
        bytes[0] |= 1;
        std::uint64_t made = 0;
        std::memcpy(&made, bytes.data(), sizeof node);
        // Of two threads that make the first one, the first to arrive wins, and both go on with the same node.
        if (storedNode.compare_exchange_strong(value, made, kRelaxed)) {
            value = made;
            forgetNodeInForks();
        }
    }
    std::memcpy(node, &value, sizeof node);
}

}  // namespace
}  // namespace kv::text

namespace text = kv::text;

std::uint32_t uuid4122_create(uuid4122_t* pUuid) {
    if (pUuid == nullptr) return 0;
    const text::Moment moment = text::nextMoment();
    const std::uint64_t time = moment.stamp + moment.count;
    text::fillNode(pUuid->node, moment.stamp);
    pUuid->time_low = static_cast<std::uint32_t>(time);
    pUuid->time_mid = static_cast<std::uint16_t>(time >> 32);
    pUuid->time_hi_and_version = static_cast<std::uint16_t>((time >> 48 & 0x0FFF) | 0x1000);
    const std::uint32_t sequence = text::nextRandom(moment.stamp);
    pUuid->clock_seq_low = static_cast<std::uint8_t>(sequence);
    pUuid->clock_seq_hi_and_reserved = static_cast<std::uint8_t>((sequence >> 8 & 0x3F) | 0x80);
    return 1;
}
