// Printed lists read at run time, and the codes that every question is put for.
//
// Nothing here knows the library's tables: what is expected comes from the texts beside this file.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "media/printed_catalogue.h"
#include "media/printed_frame_sizes.h"
#include "media/printed_sets.h"

namespace kvtest {

/// The value of four characters, the first in the lowest byte, as memory holds it here.
inline std::uint32_t code(std::string_view text) {
    unsigned char bytes[4] = {};
    std::memcpy(bytes, text.data(), 4);
    return bytes[0] + 0x100u * bytes[1] + 0x10000u * bytes[2] + 0x1000000u * bytes[3];
}

/// The codes of a text such as "`DIB `, 0x31000000, 17, `1vdh` to `9vdh`", in its order.
inline std::vector<std::uint32_t> codesOf(std::string_view text) {
    std::vector<std::uint32_t> codes;
    bool isRange = false;
    while (!text.empty()) {
        if (text[0] == '`') {
            const std::uint32_t last = code(text.substr(1, 4));
            while (isRange && codes.back() + 1 < last) codes.push_back(codes.back() + 1);
            codes.push_back(last);
            isRange = false;
            text.remove_prefix(6);
        } else if (text[0] >= '0' && text[0] <= '9') {
            char* end = nullptr;
            const std::string number(text.substr(0, text.find_first_of(", \n")));
            codes.push_back(static_cast<std::uint32_t>(std::strtoul(number.c_str(), &end, 0)));
            text.remove_prefix(number.size());
        } else {
            isRange = isRange || text.substr(0, 2) == "to";
            text.remove_prefix(1);
        }
    }
    return codes;
}

using Codes = std::set<std::uint32_t>;

inline Codes setOf(std::string_view text) {
    const auto codes = codesOf(text);
    return {codes.begin(), codes.end()};
}

/// Every code that occurs in any text, and those that the rules name one by one.
inline Codes printedCodes() {
    Codes codes = setOf("`dcmt`, `WARC`, `warc`, `Vcva`, `IC12`, `IC2K`, `012V`, `ICPV`, `IC2X`");
    const auto add = [&](const char* text) { codes.merge(setOf(text)); };
    for (const PrintedRow& row : kPrintedVideo) add(row.codes);
    add(kPrintedTags);
    add(kPrintedAudio);
    for (const PrintedSet& set : kPrintedSets) add(set.codes);
    for (const PrintedClass& row : kPrintedClasses) add(row.codes);
    return codes;
}

inline void addNeighbours(Codes& codes, std::uint32_t of) {
    for (unsigned shift = 0; shift < 32; shift += 8) {
        codes.insert(of + (1u << shift));
        codes.insert(of - (1u << shift));
        codes.insert(of ^ (0x20u << shift));  // the other case of a letter
        codes.insert(of & ~(0xFFu << shift));
    }
    codes.insert(of ^ 0x20202020u);
    codes.insert(__builtin_bswap32(of));
    codes.insert(of | 0x80000000u);
}

/// The printed codes and their neighbours, the edges of the range and of its parts, and codes at random.
inline Codes codesToAsk(std::uint32_t seed) {
    const Codes printed = printedCodes();
    Codes codes = printed;
    for (const std::uint32_t one : printed) addNeighbours(codes, one);
    for (const std::uint32_t edge : {0u, 0x80000000u, 0x88000000u, 0x8800001Eu, 0x8800001Fu, 0x88000024u, 0x88100000u,
                                     0x8810001Eu, 0x8810001Fu, 0x88100024u, 0xFFFFFFFFu, 0x746D6364u}) {
        codes.insert(edge);
        addNeighbours(codes, edge);
    }
    for (std::uint32_t i = 0; i < 0x40; ++i) {
        codes.insert(0x88000000u + i);
        codes.insert(0x88100000u + i);
    }
    std::mt19937 engine(seed);
    const auto random = [&] { return static_cast<std::uint32_t>(engine()); };
    for (int i = 0; i < 5000; ++i) {
        codes.insert(random());
        codes.insert(random() % 0x7000);
        std::uint32_t letters = 0;
        for (int byte = 0; byte < 4; ++byte) letters = letters << 8 | (0x20 + random() % 0x5F);
        codes.insert(letters);
    }
    return codes;
}

/// The codes that a test over all of them asks about, with their seed for the trace.
class AllCodes {
public:
    AllCodes() : seed_(std::random_device()()), codes_(codesToAsk(seed_)) {}
    auto begin() const { return codes_.begin(); }
    auto end() const { return codes_.end(); }
    std::uint32_t seed() const { return seed_; }
    std::string trace() const { return "seed " + std::to_string(seed_); }

private:
    std::uint32_t seed_;
    Codes codes_;
};

inline std::string hex(std::uint32_t code) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", code);
    return text;
}

/// The flags word of a video code by the printed catalogue and the range rule; 0 for any other code.
class PrintedFlags {
public:
    PrintedFlags() {
        for (const PrintedRow& row : kPrintedVideo) rows_.push_back({row.flags, setOf(row.codes)});
    }

    std::uint32_t operator()(std::uint32_t code) const {
        if (code == 0x8800001E || code == 0x8810001E) return 0x08400000;
        if (code >> 27 > 16) return 0x08408000;
        for (const Row& row : rows_) {
            if (row.codes.contains(code)) return row.flags;
        }
        return 0;
    }

private:
    struct Row {
        std::uint32_t flags;
        Codes codes;
    };
    std::vector<Row> rows_;
};

inline Codes printedAudio() {
    Codes codes = setOf(kPrintedTags);
    codes.merge(setOf(kPrintedAudio));
    return codes;
}

}  // namespace kvtest
