// The compiler's making of the index. A code listed under two flags words, or in two frame classes, ends the
// compilation, and so would a set of codes for which the hash has no room.
#include "media/index.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "fourcc_codes.h"
#include "media/catalogue_codes.h"
#include "media/frame_classes.h"
#include "media/sets.h"

namespace kv::media {
namespace {

/// Calls visit(code) for each listing of a code in any table, and so for most codes several times.
template <class Visit>
constexpr void visitListings(Visit visit) {
    const auto visitAll = [&](std::span<const std::uint32_t> codes) {
        for (const std::uint32_t code : codes) visit(code);
    };
    for (const CatalogueRow& row : kVideoCatalogue) visitAll(row.codes);
    visitAll(kListedAudio.sorted);
    visit(kInformation);
    for (const SetRow& row : kSets) visitAll(row.codes);
    for (const FrameClass& row : kFrameClasses) visitAll({row.codes.data(), row.count});
}

/// The codes that share a bucket, each once, however often it is listed.
struct Bucket {
    std::array<std::uint32_t, 16> codes{};
    std::size_t size = 0;

    constexpr void add(std::uint32_t code) {
        for (std::size_t i = 0; i < size; ++i) {
            if (codes[i] == code) return;
        }
        codes[size++] = code;
    }
};
using Buckets = std::array<Bucket, Index::kBuckets>;

consteval Buckets collect() {
    Buckets buckets{};
    visitListings([&](std::uint32_t code) { buckets[Index::bucketOf(code)].add(code); });
    return buckets;
}
constexpr Buckets kListed = collect();

/// The public list holds what the tables list, no more and no less.
consteval bool publicListIsComplete() {
    Buckets buckets = kListed;
    std::size_t listed = 0;
    for (const Bucket& bucket : kListed) listed += bucket.size;
    for (const std::uint32_t code : {KVFCC_LISTED_CODES}) buckets[Index::bucketOf(code)].add(code);
    std::size_t together = 0;
    for (const Bucket& bucket : buckets) together += bucket.size;
    return listed == KVFCC_LISTED_COUNT && together == listed;
}
static_assert(publicListIsComplete());
static_assert(CodeSet{KVFCC_LISTED_CODES}.size() == KVFCC_LISTED_COUNT);

using Taken = std::array<bool, Index::kSlots>;

/// Takes the slots of a bucket's codes; none of them if one is taken.
constexpr bool place(const Bucket& bucket, std::size_t displacement, Taken& taken) {
    for (std::size_t i = 0; i < bucket.size; ++i) {
        bool& slot = taken[Index::slotAheadOfMove(bucket.codes[i]) ^ displacement];
        if (slot) {
            while (i-- > 0) taken[Index::slotAheadOfMove(bucket.codes[i]) ^ displacement] = false;
            return false;
        }
        slot = true;
    }
    return true;
}

constexpr std::uint16_t displacementOf(const Bucket& bucket, Taken& taken) {
    for (std::size_t displacement = 0; displacement < Index::kSlots; ++displacement) {
        if (place(bucket, displacement, taken)) return static_cast<std::uint16_t>(displacement);
    }
    throw "no room for a bucket: take more slots or another factor";
}

/// The fullest buckets come first: they are the hardest to place.
consteval auto displacements() {
    std::array<std::uint16_t, Index::kBuckets> found{};
    Taken taken{};
    for (std::size_t size = Bucket{}.codes.size(); size > 0; --size) {
        for (std::size_t i = 0; i < kListed.size(); ++i) {
            if (kListed[i].size == size) found[i] = displacementOf(kListed[i], taken);
        }
    }
    return found;
}
constexpr auto kDisplacements = displacements();

consteval Index filled() {
    Index index{.displacements = kDisplacements, .slots = {}};
    const auto entry = [&](std::uint32_t code) -> Entry& { return index.slots[index.slotOf(code)]; };
    for (const Bucket& bucket : kListed) {
        for (std::size_t i = 0; i < bucket.size; ++i) entry(bucket.codes[i]).code = bucket.codes[i];
    }

    for (const CatalogueRow& row : kVideoCatalogue) {
        for (const std::uint32_t code : row.codes) {
            if (entry(code).shiftedFlags != 0) throw "a code has two flags words";
            entry(code).shiftedFlags = static_cast<std::uint16_t>(row.flags >> Entry::kFlagShift);
        }
    }
    for (const std::uint32_t code : kListedAudio.sorted) entry(code).audio = true;
    for (const SetRow& row : kSets) {
        for (const std::uint32_t code : row.codes) entry(code).sets |= bitOf(row.set);
    }
    for (std::size_t row = 0; row < kFrameClasses.size(); ++row) {
        for (std::size_t i = 0; i < kFrameClasses[row].count; ++i) {
            Entry& known = entry(kFrameClasses[row].codes[i]);
            if (known.frameClass != 0) throw "a code has two frame classes";
            known.frameClass = static_cast<std::uint8_t>(row);
        }
    }
    return index;
}

}  // namespace

constexpr Index kIndex = filled();

}  // namespace kv::media
