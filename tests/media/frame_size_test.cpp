// The largest size of a frame, for every code and many pictures, against the printed formulas.
#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <vector>

#include "fourcc.h"
#include "media/codes_to_ask.h"

namespace {

using namespace kvtest;

std::uint32_t sizeOf(const char* text, std::uint32_t width, std::uint32_t height, std::int32_t bits,
                     std::int32_t rate = 25) {
    return fccGetMaxFrameSize(code(text), width, height, bits, rate);
}

std::uint32_t fourBytesAPixel(const Picture& of) { return 4 * of.pixels(); }

std::map<std::uint32_t, Formula> printedFormulas() {
    std::map<std::uint32_t, Formula> formulas;
    for (const PrintedClass& row : kPrintedClasses) {
        for (const std::uint32_t fcc : codesOf(row.codes)) {
            EXPECT_TRUE(formulas.emplace(fcc, row.bytes).second) << hex(fcc) << " is listed twice";
        }
    }
    for (const PrintedSet& set : kPrintedSets) {
        if (set.ask != fccIsBayer) continue;
        for (const std::uint32_t fcc : codesOf(set.codes)) {
            EXPECT_TRUE(formulas.emplace(fcc, fourBytesAPixel).second) << hex(fcc) << " is listed twice";
        }
    }
    EXPECT_EQ(formulas.size(), 183u);
    return formulas;
}

std::vector<Picture> pictures(std::uint32_t seed) {
    std::vector<Picture> all{{1920, 1080, 24, 25},  {1280, 720, 32, 50}, {1280, 720, 32, 30}, {720, 576, 64, 25},
                             {720, 480, 48, 30},    {1921, 486, 12, 24}, {0, 0, 24, 0},       {1, 1, 16, 60},
                             {1920, 720, 48, 25},   {960, 577, 0, -25},  {48, 575, -24, 50},  {49, 1, 23, 49},
                             {65536, 65536, 64, 1}, {720, 576, 12, 26}};
    std::mt19937 random(seed);
    constexpr std::int32_t kDepths[] = {0, 8, 12, 16, 24, 32, 48, 64, 128, -64};
    constexpr std::int32_t kRates[] = {0, 24, 25, 30, 50, 60};
    for (int i = 0; i < 10; ++i) {
        all.push_back({static_cast<std::uint32_t>(random() % 0xFFFFFF00), static_cast<std::uint32_t>(random()),
                       kDepths[random() % std::size(kDepths)], kRates[random() % std::size(kRates)]});
    }
    return all;
}

TEST(FrameSize, FollowsTheClassOfTheCode) {
    const AllCodes codes;
    SCOPED_TRACE(codes.trace());
    const auto formulas = printedFormulas();
    const auto all = pictures(codes.seed());
    for (const std::uint32_t fcc : codes) {
        const auto found = formulas.find(fcc);
        const Formula formula = found == formulas.end() ? anythingElseBytes : found->second;
        for (const Picture& of : all) {
            EXPECT_EQ(fccGetMaxFrameSize(fcc, of.width, of.height, of.bits, of.rate), formula(of))
                << hex(fcc) << " " << of.width << "x" << of.height << " " << of.bits << " " << of.rate;
        }
    }
}

TEST(FrameSize, Dv25AndDv50TellBothTelevisionsByTheirHeight) {
    for (const std::uint32_t width : {0u, 704u, 720u, 1920u}) {
        EXPECT_EQ(sizeOf("dvsd", width, 576, 24), 144000u);
        EXPECT_EQ(sizeOf("dvsd", width, 480, 24), 120000u);
        EXPECT_EQ(sizeOf("dv50", width, 576, 24), 288000u);
        EXPECT_EQ(sizeOf("dv50", width, 577, 24), 240000u);
    }
}

TEST(FrameSize, Dv100TellsTheRatesOf25And50FromAllOthers) {
    for (const std::int32_t rate : {25, 50}) {
        EXPECT_EQ(sizeOf("dvhd", 1280, 720, 24, rate), 288000u);
        EXPECT_EQ(sizeOf("dvhd", 1920, 1080, 24, rate), 576000u);
    }
    for (const std::int32_t rate : {30, 60, 24, 0, -25}) {
        EXPECT_EQ(sizeOf("dvhd", 1280, 720, 24, rate), 240000u);
        EXPECT_EQ(sizeOf("dvhd", 1920, 1080, 24, rate), 480000u);
    }
}

TEST(FrameSize, PackedTenBitRowsArePaddedTo48Pixels) {
    EXPECT_EQ(sizeOf("012v", 720, 486, 20), 933120u);
    EXPECT_EQ(sizeOf("012v", 1921, 1, 20), 1968u * 8 / 3);
    EXPECT_EQ(sizeOf("012v", 1920, 1, 20), 5120u);
    EXPECT_EQ(sizeOf("012v", 1, 1, 20), 128u);
    EXPECT_EQ(sizeOf("012v", 0, 10, 20), 0u);
    EXPECT_EQ(sizeOf("v210", 720, 486, 24), 3u * 720 * 486) << "only the reversed code is packed";
}

TEST(FrameSize, BayerHasFourBytesAPixelWhateverTheDepth) {
    for (const std::int32_t bits : {0, 8, 24, 48, 64}) EXPECT_EQ(sizeOf("BGGR", 100, 10, bits), 4000u);
}

TEST(FrameSize, PairsOfPicturesTakeTwiceTheBytesOfTheirDepth) {
    EXPECT_EQ(sizeOf("DHFC", 100, 10, 32), 8000u);
    EXPECT_EQ(sizeOf("DHFC", 100, 10, 12), 6000u);
    EXPECT_EQ(sizeOf("DHFC", 100, 10, 24), 6000u);
    EXPECT_EQ(sizeOf("DHFC", 100, 10, 48), 12000u);
    EXPECT_EQ(sizeOf("DHFC", 100, 10, 64), 16000u);
}

TEST(FrameSize, UnknownCodesHaveFourBytesAPixelUnlessTheDepthSaysOtherwise) {
    EXPECT_EQ(sizeOf("zzzz", 100, 10, 16), 4000u);
    EXPECT_EQ(sizeOf("zzzz", 100, 10, 12), 4000u);
    EXPECT_EQ(sizeOf("zzzz", 100, 10, 24), 3000u);
    EXPECT_EQ(sizeOf("zzzz", 100, 10, 48), 6000u);
    EXPECT_EQ(sizeOf("zzzz", 100, 10, 64), 8000u);
    EXPECT_EQ(fccGetMaxFrameSize(0x88000000, 100, 10, 16, 25), 4000u);
    EXPECT_EQ(fccGetMaxFrameSize(0x8800001E, 100, 10, 16, 25), 2000u);
}

TEST(FrameSize, ADvCodeWithoutAClassOfItsOwnFollowsFromThePicture) {
    EXPECT_EQ(fccIsDv25(code("CDCV")), 1u);
    EXPECT_EQ(sizeOf("CDCV", 720, 576, 24), 3u * 720 * 576);
    EXPECT_EQ(fccIsIMX(code("MMES")), 1u);
    EXPECT_EQ(sizeOf("MMES", 720, 576, 24), 3u * 720 * 576);
    EXPECT_EQ(fccIsAVCi(code("niVA")), 1u);
    EXPECT_EQ(sizeOf("niVA", 720, 576, 24), 3u * 720 * 576);
}

TEST(FrameSize, WhatExceeds32BitsIsLostStepByStep) {
    EXPECT_EQ(sizeOf("DIB ", 65536, 65536, 32), 0u);
    EXPECT_EQ(sizeOf("DIB ", 65537, 65536, 32), 262144u);
    EXPECT_EQ(sizeOf("YUY2", 0x80000000, 1, 16), 0u);
    EXPECT_EQ(sizeOf("012v", 0xFFFFFFFF, 1, 20), 0u) << "the padding wraps";
    EXPECT_EQ(sizeOf("012v", 0x20000010, 1, 20), 128u / 3 * 1)
        << "eight times the padded width wraps ahead of the division";
}

}  // namespace
