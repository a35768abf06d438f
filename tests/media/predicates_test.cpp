// Every question, for every printed code and its neighbours, the edges of the range and random codes.
#include <clocale>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>

#include "fourcc.h"
#include "media/codes_to_ask.h"

namespace {

using namespace kvtest;

const PrintedSet& printed(std::string_view name) {
    for (const PrintedSet& set : kPrintedSets) {
        if (set.name == name) return set;
    }
    ADD_FAILURE() << name;
    return kPrintedSets[0];
}

/// Members by the printed list and the range, without the flags of the catalogue.
class Expected {
public:
    explicit Expected(std::string_view name) : set_(printed(name)), codes_(setOf(set_.codes)) {}
    bool operator()(std::uint32_t fcc) const { return codes_.contains(fcc) || set_.alsoHolds(fcc); }

private:
    const PrintedSet& set_;
    Codes codes_;
};

TEST(Predicates, ThePrintedSetsHaveTheirCounts) {
    for (const PrintedSet& set : kPrintedSets) {
        EXPECT_EQ(codesOf(set.codes).size(), set.count) << set.name;
        EXPECT_EQ(setOf(set.codes).size(), set.count) << set.name;
    }
    EXPECT_EQ(printed("fccIsh264").count, 40u);
    EXPECT_EQ(printed("fccIsMpeg").count, 59u);
    EXPECT_EQ(printed("fccPrefersYCrCb").count, 271u);
}

TEST(Predicates, EachSetHoldsWhatIsPrintedAndNothingElse) {
    const AllCodes codes;
    SCOPED_TRACE(codes.trace());
    const PrintedFlags flagsOf;
    for (const PrintedSet& set : kPrintedSets) {
        const Expected expected(set.name);
        const bool asksDv25 = set.name == std::string_view("fccIsDv25");
        const bool asksDv50 = set.name == std::string_view("fccIsDv50");
        for (const std::uint32_t fcc : codes) {
            bool holds = expected(fcc);
            if (asksDv25) holds = holds || (flagsOf(fcc) & 0x1000) != 0;
            if (asksDv50) holds = holds || (flagsOf(fcc) & 0x2000) != 0;
            EXPECT_EQ(set.ask(fcc), holds ? 1u : 0u) << set.name << " " << hex(fcc);
        }
    }
}

TEST(Predicates, FlagsOfTheCatalogueAreAskedAsTheyStand) {
    const AllCodes codes;
    SCOPED_TRACE(codes.trace());
    const PrintedFlags flagsOf;
    const Codes excepted = setOf("`gepj`, `avrn`, `AVRn`");
    for (const std::uint32_t fcc : codes) {
        const std::uint32_t flags = flagsOf(fcc);
        EXPECT_EQ(fccIsRGB(fcc), (flags & 0x00800000) != 0 ? 1u : 0u) << hex(fcc);
        EXPECT_EQ(fccIsYUV(fcc), (flags & 0x00400000) != 0 ? 1u : 0u) << hex(fcc);
        EXPECT_EQ(fccCanKeyframe(fcc), (flags & 0x00010000) != 0 ? 1u : 0u) << hex(fcc);
        EXPECT_EQ(fccIsJpeg(fcc), (flags & 0x8000) != 0 && !excepted.contains(fcc) ? 1u : 0u) << hex(fcc);
    }
}

TEST(Predicates, EveryCodeButFourIsPcmWhateverItIs) {
    const AllCodes codes;
    SCOPED_TRACE(codes.trace());
    const Codes compressed = setOf("`3pm.`, ` caa`, `3-ca`, `a4pm`");
    for (const std::uint32_t fcc : codes) {
        EXPECT_EQ(fccIsPCMAudio(fcc), compressed.contains(fcc) ? 0u : 1u) << hex(fcc);
    }
    EXPECT_EQ(fccIsPCMAudio(code("MJPG")), 1u);
    EXPECT_EQ(fccIsPCMAudio(0x87FFFFFF), 1u);
}

TEST(Predicates, BuiltInIsTheUnionOfItsFamilies) {
    const AllCodes codes;
    SCOPED_TRACE(codes.trace());
    const PrintedFlags flagsOf;
    const Codes jpegExcepted = setOf("`gepj`, `avrn`, `AVRn`");
    std::vector<Expected> families;
    for (const char* name : {"fccIsDv25", "fccIsDv50", "fccIsDv100", "fccIs8BitD1YUV", "fccIsh264", "fccIsAVCi",
                             "fccIsDNxHD", "fccIsDNxHR", "fccIsJPEG2000", "fccIsLog", "fccIsMpeg", "fccIsRawRGB",
                             "fccIsUnc3D", "fccIsYCbCr8", "fccIsBayer", "fccIsProRes"}) {
        families.emplace_back(name);
    }
    const Codes singly = setOf(
        "`23FC`, `D3FC`, `DHFC`, `CFHD`, `cfhd`, `v210`, `Y444`, `012v`, `a12v`, `4SDH`, `RSDH`, `IC12`, `IC2K`, "
        "`012V`, `ICPV`, `IC2X`");
    std::size_t listed = 0;
    for (const std::uint32_t fcc : codes) {
        const std::uint32_t flags = flagsOf(fcc);
        bool holds = singly.contains(fcc) || (flags & 0x3000) != 0;
        holds = holds || ((flags & 0x8000) != 0 && !jpegExcepted.contains(fcc));
        for (const Expected& family : families) holds = holds || family(fcc);
        EXPECT_EQ(fccCodecIsBuiltIn(fcc), holds ? 1u : 0u) << hex(fcc);
        listed += holds && fcc < 0x88000000;
    }
    EXPECT_EQ(listed, 290u);
    EXPECT_EQ(fccCodecIsBuiltIn(0x88000000), 1u);
    EXPECT_EQ(fccCodecIsBuiltIn(0x8800001E), 1u);
    EXPECT_EQ(fccCodecIsBuiltIn(0xFFFFFFFF), 1u);
}

TEST(Predicates, SixteenBitsComeFromBayerAndThreeMore) {
    const AllCodes codes;
    SCOPED_TRACE(codes.trace());
    const Expected bayer("fccIsBayer");
    const Codes more = setOf("`WARC`, `warc`, `Vcva`");
    for (const std::uint32_t fcc : codes) {
        EXPECT_EQ(fccCanDecodeTo16(fcc), bayer(fcc) || more.contains(fcc) ? 1u : 0u) << hex(fcc);
    }
}

TEST(Predicates, WidthsOfNarrowedFormatsAreThoseOfTheirFullWidth) {
    const Codes narrowed = setOf("`1dVA`, `dvhd`, `n1vd`, `p1vd`, `5hvd`, `6hvd`, `phvd`");
    Codes codes = printedCodes();
    for (const std::uint32_t fcc : narrowed) addNeighbours(codes, fcc);
    addNeighbours(codes, 0x88000000);
    const std::int32_t widths[] = {INT32_MIN, -1, 0, 720, 959, 960, 1279, 1280, 1281, 1440, 1919, 1920, INT32_MAX};
    for (const std::uint32_t fcc : codes) {
        for (const std::int32_t full : widths) {
            for (const std::int32_t width : widths) {
                bool allowed = width == full;
                if (narrowed.contains(fcc)) {
                    allowed = (full == 1280 && (width == 1280 || width == 960)) ||
                              (full == 1920 && (width == 1280 || width == 1440 || width == 1920));
                }
                EXPECT_EQ(fccCanUseWidth(fcc, width, full), allowed ? 1u : 0u)
                    << hex(fcc) << " " << width << " " << full;
            }
        }
    }
}

TEST(Predicates, AFullWidthThatTheRuleDoesNotNameAllowsNothing) {
    EXPECT_EQ(fccCanUseWidth(code("1dVA"), 1280, 1440), 0u);
    EXPECT_EQ(fccCanUseWidth(code("1dVA"), 1440, 1440), 0u);
    EXPECT_EQ(fccCanUseWidth(code("2hvd"), 960, 1280), 0u);
    EXPECT_EQ(fccCanUseWidth(code("2hvd"), 1440, 1440), 1u);
    for (const char* text : {"2hvd", "3hvd", "qhvd"}) {
        EXPECT_EQ(fccIsDv100(code(text)), 1u);
        EXPECT_EQ(fccCanUseWidth(code(text), 1280, 1920), 0u);
    }
}

TEST(Predicates, TheTwoSetsOfJpegXsDiffer) {
    for (const char* text : {" sxj", "isxj", "ssxj"}) {
        EXPECT_EQ(fccIsJpegXS(code(text)), 1u);
        EXPECT_EQ(fccIsJPEGXS(code(text)), 0u);
    }
    EXPECT_EQ(fccIsJPEGXS(code("cxpj")), 1u);
}

TEST(Predicates, ThreeCodesWithTheJpegFlagAreNoJpeg) {
    for (const char* text : {"gepj", "avrn", "AVRn"}) {
        EXPECT_NE(fccGetInfoVideo(code(text), nullptr, nullptr, nullptr) & fccFlagJpeg, 0u);
        EXPECT_EQ(fccIsJpeg(code(text)), 0u);
    }
    EXPECT_EQ(fccIsJpeg(code("AVRN")), 0u);
    EXPECT_EQ(fccIsAvidJpeg(code("AVRn")), 1u);
}

TEST(Predicates, TheMpegFlagIsNotAskedForTheMpegFamily) {
    for (const char* text : {"XMPG", "MPGI", "MP42", "MP43", "MPG4", "vuym"}) {
        EXPECT_NE(fccGetInfoVideo(code(text), nullptr, nullptr, nullptr) & fccFlagMpeg, 0u);
        EXPECT_EQ(fccIsMpeg(code(text)), 0u);
    }
}

TEST(Predicates, DvIsAskedByFlagAndByList) {
    for (const char* text : {"d2VA", "nfvd", "pfvd"}) {
        EXPECT_EQ(fccGetInfoVideo(code(text), nullptr, nullptr, nullptr), 0u);
        EXPECT_EQ(fccIsDv25(code(text)), 1u);
    }
    EXPECT_EQ(fccIsDv25(code("CDCV")), 1u);
    EXPECT_EQ(fccIsYUV(code("CDCV")), 0u);
    EXPECT_EQ(fccIsDv50(code("n5vd")), 1u);
    EXPECT_EQ(fccIsDv50(code("dv50")), 1u);
}

TEST(Predicates, TheSevenOfDolbyVisionFollowEachOther) {
    EXPECT_EQ(fccIsDolbyVision(code("00vd") - 1), 0u);
    for (std::uint32_t i = 0; i < 7; ++i) EXPECT_EQ(fccIsDolbyVision(code("00vd") + i), 1u);
    EXPECT_EQ(fccIsDolbyVision(code("00vd") + 7), 0u);
    EXPECT_EQ(code("00vd") + 6, code("60vd"));
}

TEST(Predicates, JfifPartsOfTheRangeHaveSixCodesEach) {
    for (const std::uint32_t base : {0x88000000u, 0x88100000u}) {
        EXPECT_EQ(fccIsAvidJfif(base + 0x1E), 0u);
        for (std::uint32_t i = 0x1F; i <= 0x24; ++i) EXPECT_EQ(fccIsAvidJfif(base + i), 1u);
        EXPECT_EQ(fccIsAvidJfif(base + 0x25), 0u);
    }
    EXPECT_EQ(fccIsAvidJfif(0x8820001F), 0u);
}

TEST(Predicates, CodesThatNothingListsAreNothingButPcm) {
    for (const std::uint32_t fcc : {code("zzzz"), code("    "), 4u, 0x7FFFFFFFu, 0x80000000u, 0x87FFFFFFu}) {
        for (const PrintedSet& set : kPrintedSets) EXPECT_EQ(set.ask(fcc), 0u) << set.name << " " << hex(fcc);
        for (auto* const ask : {fccIsRGB, fccIsYUV, fccCanKeyframe, fccIsJpeg, fccCodecIsBuiltIn, fccCanDecodeTo16}) {
            EXPECT_EQ(ask(fcc), 0u) << hex(fcc);
        }
        EXPECT_EQ(fccIsPCMAudio(fcc), 1u);
    }
}

TEST(Predicates, EqualMeansEqualButForTheCaseOfLetters) {
    EXPECT_EQ(fccIsEqual(code("MJPG"), code("mjpg")), 1u);
    EXPECT_EQ(fccIsEqual(code("MJPG"), code("mJpG")), 1u);
    EXPECT_EQ(fccIsEqual(code("MJPG"), code("MJPH")), 0u);
    EXPECT_EQ(fccIsEqual(code("AZ09"), code("az09")), 1u);
    // One bit apart like the cases of a letter, and no letters: '@' and '`', '[' and '{', ' ' and NUL.
    EXPECT_EQ(fccIsEqual(code("@abc"), code("`abc")), 0u);
    EXPECT_EQ(fccIsEqual(code("abc["), code("abc{")), 0u);
    EXPECT_EQ(fccIsEqual(0x20424944, 0x00424944), 0u);
    EXPECT_EQ(fccIsEqual(0x88000041, 0x88000061), 1u);
    EXPECT_EQ(fccIsEqual(0x88000000, 0xA8000000), 0u);
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        for (std::uint32_t other = 0; other < 256; ++other) {
            const auto lower = [](std::uint32_t of) { return of >= 'A' && of <= 'Z' ? of + 32 : of; };
            for (unsigned shift = 0; shift < 32; shift += 8) {
                const std::uint32_t expected = lower(byte) == lower(other) ? 1 : 0;
                ASSERT_EQ(fccIsEqual(byte << shift, other << shift), expected) << byte << " " << other;
            }
        }
    }
}

TEST(Predicates, EqualIsTheSameInEveryLocale) {
    for (const char* locale : {"de_DE.ISO-8859-1", "en_US.ISO-8859-1", "tr_TR.ISO-8859-9", "C.UTF-8"}) {
        if (std::setlocale(LC_ALL, locale) == nullptr) continue;  // not on this machine
        EXPECT_EQ(fccIsEqual(0xC4C4C4C4, 0xE4E4E4E4), 0u) << locale;
        EXPECT_EQ(fccIsEqual(code("IIII"), code("iiii")), 1u) << locale;
    }
    std::setlocale(LC_ALL, "C");
}

}  // namespace
