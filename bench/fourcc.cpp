// A question about a format code, beside the same set in a hash table and in a sorted array.
//
// A pass asks for codes in an order that no branch prediction learns: half of them members, half known codes that are
// none. The peers stand in this program and are inlined, the library's answer comes through its exported call.
#include "fourcc.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <unordered_set>
#include <vector>

#include "bench/topics.h"
#include "fourcc_codes.h"

namespace kv::bench {
namespace {

using Ask = std::uint32_t (*)(std::uint32_t);

constexpr std::size_t kCodes = 4096;

/// The codes of a set, sorted, and those that are asked for.
struct Data {
    std::vector<std::uint32_t> members;
    std::vector<std::uint32_t> asked;
};

Data dataOf(Ask ask) {
    Data data;
    std::vector<std::uint32_t> others;
    for (const std::uint32_t fcc : {KVFCC_LISTED_CODES}) {
        if (fcc < KVFCC_RANGE) (ask(fcc) != 0 ? data.members : others).push_back(fcc);
    }
    std::ranges::sort(data.members);
    std::mt19937 random(20240607);
    const auto anyOf = [&](const std::vector<std::uint32_t>& codes) { return codes[random() % codes.size()]; };
    for (std::size_t i = 0; i < kCodes; ++i)
        data.asked.push_back(random() % 2 == 0 ? anyOf(data.members) : anyOf(others));
    return data;
}

template <class Holds>
auto passOver(const std::vector<std::uint32_t>& codes, Holds holds) {
    return [&codes, holds] {
        std::uint32_t count = 0;
        for (const std::uint32_t fcc : codes) count += holds(fcc) ? 1 : 0;
        benchmark::DoNotOptimize(count);
    };
}

void compare(Table& table, const std::string& name, Ask ask) {
    const Data data = dataOf(ask);
    const std::unordered_set<std::uint32_t> hashed(data.members.begin(), data.members.end());
    const auto ours = passOver(data.asked, [ask](std::uint32_t fcc) { return ask(fcc) != 0; });
    const auto inHash = [&](std::uint32_t fcc) { return hashed.contains(fcc); };
    const auto inSorted = [&](std::uint32_t fcc) {
        return std::binary_search(data.members.begin(), data.members.end(), fcc);
    };
    for (const std::uint32_t fcc : data.asked) {
        require((ask(fcc) != 0) == inHash(fcc) && inHash(fcc) == inSorted(fcc), "a set differs from its peer");
    }
    const std::string what = name + ", " + std::to_string(data.members.size()) + " codes";
    table.compare({what, "std::unordered_set", callsPerPass(kCodes), atLeast(1)}, ours, passOver(data.asked, inHash));
    table.compare({what, "std::binary_search", callsPerPass(kCodes), atLeast(1)}, ours, passOver(data.asked, inSorted));
}

}  // namespace

void measureFourCCs(const Scale& scale) {
    Table table("fourcc: is a format code in a set", scale);
    compare(table, "fccPrefersYCrCb", fccPrefersYCrCb);
    compare(table, "fccIsMpeg", fccIsMpeg);
    compare(table, "fccIsBayer", fccIsBayer);
    compare(table, "fccIsJPEG2000", fccIsJPEG2000);
    compare(table, "fccIsCompressedAudio", fccIsCompressedAudio);
    compare(table, "fccCodecIsBuiltIn", fccCodecIsBuiltIn);
}

}  // namespace kv::bench
