// Blocks of KVAlloc that end up with the caller, for calls that hand out a buffer and its length.
//
// A block is freed with its owner unless it was given away. No size is cut to what KVAlloc can be asked for: a larger
// one is no block.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>

#include "kvos/memory.h"

namespace kv::text {

inline constexpr std::uint64_t kLargestBlock = std::numeric_limits<std::uint32_t>::max();

/// A block of KVAlloc; empty when there is no memory and above kLargestBlock.
template <class Byte>
class OwnedBlock {
public:
    explicit OwnedBlock(std::uint64_t size)
        : block_(size > kLargestBlock ? nullptr : static_cast<Byte*>(KVAlloc(static_cast<std::uint32_t>(size)))) {}

    explicit operator bool() const { return block_ != nullptr; }
    Byte* get() const { return block_.get(); }
    Byte* release() { return block_.release(); }

private:
    struct Free {
        void operator()(Byte* block) const { KVFree(block); }
    };
    std::unique_ptr<Byte, Free> block_;
};

/// Where a call's buffer and length go. Cleared first, so that a call that ends early has told that there is no result.
template <class Byte>
class Result {
public:
    Result(Byte** out, std::uint64_t* length) : out_(out), length_(length) {
        if (out != nullptr) *out = nullptr;
        if (length != nullptr) *length = 0;
    }

    bool isWanted() const { return out_ != nullptr; }

    std::uint64_t give(OwnedBlock<Byte>& block, std::uint64_t length) {
        *out_ = block.release();
        if (length_ != nullptr) *length_ = length;
        return length;
    }

private:
    Byte** out_;
    std::uint64_t* length_;
};

}  // namespace kv::text
