// Signal primitives that write down how they were called, for primitives_test.cpp.
//
// They stand under the name of the real ones (memory/primitives/), and the include path of that one program chooses
// them. Each does its work and returns the status that the test asks for.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "memory/word_fill.h"

namespace kv::memory::primitives {

struct Call {
    std::string name;
    std::uint64_t bytes;
    bool operator==(const Call&) const = default;
};

inline std::vector<Call> recorded;
inline std::int32_t status = 0;

inline std::int32_t record(const char* name, std::uint64_t bytes) {
    recorded.push_back({name, bytes});
    return status;
}

inline std::int32_t copy8u(const void* source, void* destination, std::uint64_t bytes) {
    std::memcpy(destination, source, bytes);
    return record("copy8u", bytes);
}

inline std::int32_t copy32s(const void* source, void* destination, std::uint64_t bytes) {
    std::memcpy(destination, source, bytes);
    return record("copy32s", bytes);
}

inline std::int32_t copy64s(const void* source, void* destination, std::uint64_t bytes) {
    std::memcpy(destination, source, bytes);
    return record("copy64s", bytes);
}

inline std::int32_t zero32s(void* destination, std::uint64_t bytes) {
    std::memset(destination, 0, bytes);
    return record("zero32s", bytes);
}

inline std::int32_t zero64s(void* destination, std::uint64_t bytes) {
    std::memset(destination, 0, bytes);
    return record("zero64s", bytes);
}

inline std::int32_t set32s(std::uint32_t value, void* destination, std::uint64_t bytes) {
    fillWords(destination, value, bytes / 4);
    return record("set32s", bytes);
}

}  // namespace kv::memory::primitives
