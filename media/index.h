// One look-up for all questions: a perfect hash, made by the compiler, from a code to all that the tables say of it.
//
// The upper bits of a product choose a bucket, the bucket's displacement and further bits a slot, and no two codes
// share one. What is not listed lands in some slot as well, finds another code there, and is unknown. The range of
// codes from kRangeFirst up is not in here, but for the two of them that the tables list: it is asked for first.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "fourcc.h"
#include "media/four_cc.h"
#include "media/sets.h"

namespace kv::media {

/// All that is known of a code. 16 bytes, so that a look-up touches one cache line of the slots.
struct Entry {
    std::uint32_t code = 0;
    std::uint16_t shiftedFlags = 0;  // its flags word as a video code, whose lowest twelve bits are always 0
    bool audio = false;
    std::uint8_t frameClass = 0;  // the row in kFrameClasses
    std::uint64_t sets = 0;       // bit by bit, those it is a member of

    static constexpr int kFlagShift = 12;
    constexpr std::uint32_t videoFlags() const { return std::uint32_t{shiftedFlags} << kFlagShift; }
};
static_assert(sizeof(Entry) == 16);

constexpr std::uint64_t bitOf(Set set) { return std::uint64_t{1} << static_cast<unsigned>(set); }

class Index {
public:
    static constexpr std::size_t kBuckets = 256;
    static constexpr std::size_t kSlots = 1024;

    /// Where a code begins: its bucket, and the slot that the bucket's displacement then moves.
    static constexpr std::size_t bucketOf(std::uint32_t code) { return mixed(code) >> 56; }
    static constexpr std::size_t slotAheadOfMove(std::uint32_t code) { return mixed(code) >> 40 & (kSlots - 1); }

    /// What is known of the code; for one that no table lists, an entry that holds nothing.
    const Entry& operator[](std::uint32_t code) const {
        const Entry& entry = slots[slotOf(code)];
        return entry.code == code ? entry : kNothing;
    }

    constexpr std::size_t slotOf(std::uint32_t code) const {
        return slotAheadOfMove(code) ^ displacements[bucketOf(code)];
    }

    std::array<std::uint16_t, kBuckets> displacements;
    std::array<Entry, kSlots> slots;

private:
    static constexpr Entry kNothing{};

    // 2^64 divided by the golden ratio: the upper bits of a product depend on all bits of the code.
    static constexpr std::uint64_t mixed(std::uint32_t code) { return code * 0x9E3779B97F4A7C15u; }
};

extern const Index kIndex;

/// Whether any of the sets in the mask holds the code.
inline bool isInAny(std::uint64_t sets, std::uint32_t code) { return (kIndex[code].sets & sets) != 0; }
inline bool isIn(Set set, std::uint32_t code) { return isInAny(bitOf(set), code); }

/// The flags word of a video code, the range included; 0 for any other code.
inline std::uint32_t videoFlags(std::uint32_t code) {
    if (isUncompressedInRange(code)) return fccFlagVideo | fccFlagYUV;
    if (isInRange(code)) return fccFlagVideo | fccFlagYUV | fccFlagJpeg;
    return kIndex[code].videoFlags();
}

}  // namespace kv::media
