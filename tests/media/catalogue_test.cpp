// The catalogue, code by code, against the printed one.
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>

#include "fourcc.h"
#include "fourcc_codes.h"
#include "media/codes_to_ask.h"

namespace {

using namespace kvtest;

constexpr std::uint32_t kVideoBit = 0x08000000;
constexpr std::uint32_t kAudioBit = 0x04000000;

std::uint32_t video(std::uint32_t fcc) { return fccGetInfoVideo(fcc, nullptr, nullptr, nullptr); }
std::uint32_t audio(std::uint32_t fcc) { return fccGetInfoAudio(fcc, nullptr, nullptr, nullptr); }
std::uint32_t information(std::uint32_t fcc) { return fccGetInfoInfo(fcc, nullptr, nullptr, nullptr); }
std::uint32_t info(std::uint32_t fcc, std::uint32_t mask) { return fccGetInfo(fcc, nullptr, nullptr, nullptr, mask); }

TEST(Catalogue, ThePrintedListsHaveTheirCounts) {
    std::size_t all = 0;
    for (const PrintedRow& row : kPrintedVideo) {
        EXPECT_EQ(codesOf(row.codes).size(), row.count) << hex(row.flags);
        EXPECT_EQ(setOf(row.codes).size(), row.count) << hex(row.flags);
        all += row.count;
    }
    EXPECT_EQ(all, 275u);
    EXPECT_EQ(codesOf(kPrintedTags).size() + codesOf(kPrintedAudio).size(), 78u);
    EXPECT_EQ(printedAudio().size(), 78u);
}

TEST(Catalogue, VideoCodesHaveTheirFlagsWordAndAllOthersNone) {
    const AllCodes codes;
    SCOPED_TRACE(codes.trace());
    const PrintedFlags expected;
    std::size_t listed = 0;
    for (const std::uint32_t fcc : codes) {
        EXPECT_EQ(video(fcc), expected(fcc)) << hex(fcc);
        listed += fcc < 0x88000000 && video(fcc) != 0;
    }
    EXPECT_EQ(listed, 275u);
}

TEST(Catalogue, AudioCodesHaveTheAudioBitAndAllOthersNone) {
    const AllCodes codes;
    SCOPED_TRACE(codes.trace());
    const Codes expected = printedAudio();
    for (const std::uint32_t fcc : codes) {
        EXPECT_EQ(audio(fcc), expected.contains(fcc) ? kAudioBit : 0) << hex(fcc);
    }
}

TEST(Catalogue, TheInformationLookUpHasTheAudioBitAloneForOneCode) {
    const AllCodes codes;
    SCOPED_TRACE(codes.trace());
    for (const std::uint32_t fcc : codes) EXPECT_EQ(information(fcc), fcc == 0x746D6364 ? kAudioBit : 0) << hex(fcc);
}

TEST(Catalogue, TheMaskPicksTheTables) {
    const AllCodes codes;
    SCOPED_TRACE(codes.trace());
    const PrintedFlags flagsOf;
    const Codes audioCodes = printedAudio();
    for (const std::uint32_t fcc : codes) {
        const std::uint32_t asVideo = flagsOf(fcc);
        const std::uint32_t asAudio = audioCodes.contains(fcc) ? kAudioBit : 0;
        const std::uint32_t asInfo = fcc == 0x746D6364 ? 0x0C000000 : 0;
        EXPECT_EQ(info(fcc, 0), 0u) << hex(fcc);
        EXPECT_EQ(info(fcc, 0xF3FFFFFF), 0u) << hex(fcc);
        EXPECT_EQ(info(fcc, kVideoBit), asVideo != 0 ? asVideo : asInfo) << hex(fcc);
        EXPECT_EQ(info(fcc, kAudioBit), asAudio != 0 ? asAudio : asInfo) << hex(fcc);
        const std::uint32_t either = asVideo != 0 ? asVideo : asAudio != 0 ? asAudio : asInfo;
        EXPECT_EQ(info(fcc, kVideoBit | kAudioBit), either) << hex(fcc);
        EXPECT_EQ(info(fcc, 0xFFFFFFFF), either) << hex(fcc);
    }
}

TEST(Catalogue, KindsAreAskedForInTheOrderVideoAudioInformation) {
    const AllCodes codes;
    SCOPED_TRACE(codes.trace());
    const PrintedFlags flagsOf;
    const Codes audioCodes = printedAudio();
    for (const std::uint32_t fcc : codes) {
        const bool isVideo = flagsOf(fcc) != 0;
        const bool isAudio = !isVideo && audioCodes.contains(fcc);
        EXPECT_EQ(fccIsVideo(fcc), isVideo ? 1u : 0u) << hex(fcc);
        EXPECT_EQ(fccIsAudio(fcc), isAudio ? 1u : 0u) << hex(fcc);
        EXPECT_EQ(fccIsInfo(fcc), fcc == 0x746D6364 ? 1u : 0u) << hex(fcc);
        EXPECT_EQ(fccIsSupported(fcc), isVideo || isAudio || fcc == 0x746D6364 ? 1u : 0u) << hex(fcc);
    }
}

TEST(Catalogue, TheInformationCodeIsNeitherVideoNorAudio) {
    const std::uint32_t fcc = code("dcmt");
    EXPECT_EQ(fcc, KVFCC_INFORMATION);
    EXPECT_EQ(fccIsVideo(fcc), 0u);
    EXPECT_EQ(fccIsAudio(fcc), 0u);
    EXPECT_EQ(fccIsInfo(fcc), 1u);
    EXPECT_EQ(fccIsSupported(fcc), 1u);
    EXPECT_EQ(audio(fcc), 0u);
    EXPECT_EQ(info(fcc, kAudioBit), 0x0C000000u);
    EXPECT_EQ(info(fcc, kVideoBit), 0x0C000000u);
}

TEST(Catalogue, TheSmallestNumbersAndRawDataAreVideoAheadOfAudio) {
    for (const std::uint32_t fcc : {0u, 1u, 2u, 3u, 0x72617720u}) {
        EXPECT_EQ(fccIsSupported(fcc), 1u);
        EXPECT_EQ(fccIsVideo(fcc), 1u);
        EXPECT_EQ(fccIsAudio(fcc), 0u);
        EXPECT_EQ(audio(fcc), kAudioBit);
        EXPECT_EQ(info(fcc, kAudioBit), kAudioBit);
    }
    EXPECT_EQ(video(0), 0x08800000u);
    EXPECT_EQ(video(code(" war")), 0x08000000u);
    EXPECT_EQ(code(" war"), 0x72617720u);
}

TEST(Catalogue, TheRangeBeginsAt0x88000000AndHasTwoCodesWithoutJpeg) {
    EXPECT_EQ(video(0x80000000), 0u);
    EXPECT_EQ(video(0x87FFFFFF), 0u);
    EXPECT_EQ(fccIsSupported(0x87FFFFFF), 0u);
    EXPECT_EQ(video(0x88000000), 0x08408000u);
    EXPECT_EQ(video(0x8800001D), 0x08408000u);
    EXPECT_EQ(video(KVFCC_RANGE_UNCOMPRESSED_1), 0x08400000u);
    EXPECT_EQ(video(0x8800001F), 0x08408000u);
    EXPECT_EQ(video(0x8810001D), 0x08408000u);
    EXPECT_EQ(video(KVFCC_RANGE_UNCOMPRESSED_2), 0x08400000u);
    EXPECT_EQ(video(0x8810001F), 0x08408000u);
    EXPECT_EQ(video(0xFFFFFFFF), 0x08408000u);
    EXPECT_EQ(fccIsSupported(KVFCC_RANGE), 1u);
}

TEST(Catalogue, CapitalAndSmallLettersAreThreeRows) {
    EXPECT_EQ(video(code("MJPG")), 0x08408000u);
    EXPECT_EQ(video(code("mJPG")), 0x08408000u);
    EXPECT_EQ(video(code("mjpg")), 0x08408000u);
    EXPECT_EQ(video(code("MjPG")), 0u);
    EXPECT_EQ(video(code("DIB ")), 0x08000000u);
    EXPECT_EQ(video(code("dib ")), 0u);
}

TEST(Catalogue, NothingIsWrittenThroughThePointers) {
    std::uint32_t flags = 0x12345678;
    char name[8];
    char extension[8];
    std::memset(name, 'n', sizeof name);
    std::memset(extension, 'e', sizeof extension);
    for (const std::uint32_t fcc : {0u, 17u, code("MJPG"), code("dcmt"), 0x88000000u, 0x87FFFFFFu}) {
        fccGetInfoVideo(fcc, &flags, name, extension);
        fccGetInfoAudio(fcc, &flags, name, extension);
        fccGetInfoInfo(fcc, &flags, name, extension);
        fccGetInfo(fcc, &flags, name, extension, 0xFFFFFFFF);
    }
    EXPECT_EQ(flags, 0x12345678u);
    EXPECT_EQ(std::string(name, sizeof name), "nnnnnnnn");
    EXPECT_EQ(std::string(extension, sizeof extension), "eeeeeeee");
}

TEST(Catalogue, TheConstantsAreThePrintedBits) {
    EXPECT_EQ(fccFlagVideo, 0x08000000u);
    EXPECT_EQ(fccFlagAudio, 0x04000000u);
    EXPECT_EQ(fccFlagRGB, 0x00800000u);
    EXPECT_EQ(fccFlagYUV, 0x00400000u);
    EXPECT_EQ(fccFlagCMYK, 0x00200000u);
    EXPECT_EQ(fccFlagGray, 0x00100000u);
    EXPECT_EQ(fccFlagKeyframe, 0x00010000u);
    EXPECT_EQ(fccFlagJpeg, 0x00008000u);
    EXPECT_EQ(fccFlagMpeg, 0x00004000u);
    EXPECT_EQ(fccFlagDv50, 0x00002000u);
    EXPECT_EQ(fccFlagDv25, 0x00001000u);
    EXPECT_EQ(KVFCC('D', 'I', 'B', ' '), 0x20424944u);
    EXPECT_EQ(KVFCC('e', 's', 'a', 'b'), 0x62617365u);
    EXPECT_EQ(KVFCC('\xFF', '\x80', '\0', '\xFE'), 0xFE0080FFu);
}

TEST(Catalogue, ThePublicListHoldsEveryPrintedCodeOnce) {
    const std::uint32_t listed[] = {KVFCC_LISTED_CODES};
    const Codes codes(std::begin(listed), std::end(listed));
    EXPECT_EQ(codes.size(), std::size(listed));
    EXPECT_EQ(codes.size(), std::size_t{KVFCC_LISTED_COUNT});
    EXPECT_EQ(codes, printedCodes());
}

}  // namespace
