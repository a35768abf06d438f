// Writing S3 objects: which requests a write makes, and what is never lost by moving the position about.
//
// What becomes of the bytes behind a cut is in s3_cut_test.cpp, the part objects by themselves are in
// s3_parts_test.cpp.
#include <algorithm>
#include <cerrno>
#include <random>
#include <sys/resource.h>

#include "file/s3_write_support.h"
#include "support/captured_messages.h"
#include "support/sanitizers.h"

namespace kvtest {
namespace {

using kv::file::Outcome;

TEST(S3Write, StaysInTheBlockUntilTheClose) {
    Recording clip;
    clip.file.write("hello ");
    clip.file.write("world");
    EXPECT_EQ(clip.file.record().qwPos, 11u);
    EXPECT_EQ(clip.file.record().qwSize, 11u);
    EXPECT_EQ(clip.file.record().dwBlockUsed, 11u);
    EXPECT_EQ(clip.file.record().dwBlockDirty, 1u);
    EXPECT_EQ(clip.requests(), Requests{});
    EXPECT_EQ(clip.finished(), "hello world");
    EXPECT_EQ(clip.requests("PutObject"), Requests{"PutObject P/a_1.mxf 11"});
}

TEST(S3Write, OfNoBytesFails) {
    Recording clip;
    std::uint32_t written = 77;
    EXPECT_EQ(s3::writeObject(clip.file.record(), "", {0, &written, nullptr}), Outcome::failed);
    EXPECT_EQ(written, 0u);
    EXPECT_EQ(s3::writeObject(clip.file.record(), "", {0, nullptr, nullptr}), Outcome::failed);
}

TEST(S3Write, CountMayBeLeftOut) {
    Recording clip;
    EXPECT_EQ(s3::writeObject(clip.file.record(), "abc", {3, nullptr, nullptr}), Outcome::counted);
    EXPECT_EQ(clip.finished(), "abc");
}

TEST(S3Write, BlockSizeIsSetByAWriteThatFindsNone) {
    Recording clip;
    clip.file.record().dwBlockSize = 0;
    clip.file.write("abc");
    EXPECT_EQ(clip.file.record().dwBlockSize, kPart);
}

TEST(S3Write, HandleClosedWithNothingWrittenLeavesNothing) {
    Recording clip;
    clip.finished();
    EXPECT_EQ(clip.requests(), Requests{});
}

TEST(S3Write, WithoutMemoryForTheBlockFailsAndIsTold) {
    if (kAddressSanitizer || kThreadSanitizer) GTEST_SKIP() << "a sanitizer needs the address space itself";
    CapturedMessages messages;
    Recording clip;
    rlimit before;
    getrlimit(RLIMIT_AS, &before);
    const rlimit tight{1, before.rlim_max};
    setrlimit(RLIMIT_AS, &tight);
    std::uint32_t written = 77;
    const Outcome outcome = s3::writeObject(clip.file.record(), "abc", {3, &written, nullptr});
    setrlimit(RLIMIT_AS, &before);
    EXPECT_EQ(outcome, Outcome::failed);
    EXPECT_EQ(written, 77u);
    EXPECT_EQ(messages.count("ERROR(kvFile): Unable to allocate AWS cache block\n"), 1u);
}

TEST(S3Write, PositionOfARefusedSeekAndOnesBeyondAllPartNumbersAreRefused) {
    Recording clip;
    std::uint32_t written = 77;
    clip.file.record().qwPos = kv::file::kNowhere;
    errno = 0;
    EXPECT_EQ(s3::writeObject(clip.file.record(), "abc", {3, &written, nullptr}), Outcome::failed);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(written, 0u);
    clip.file.record().qwPos = kPart * 0x7FFFFFFF - 2;
    EXPECT_EQ(s3::writeObject(clip.file.record(), "abc", {3, &written, nullptr}), Outcome::failed);
    EXPECT_EQ(errno, EFBIG);
    EXPECT_EQ(kvOSReadAWSBlock(clip.handle(), kPart * 0x7FFFFFFF), 0u);
    EXPECT_EQ(clip.requests(), Requests{});
}

TEST(S3Write, OfExactlySixtyMebibytesMakesOnePartWithItsLastByte) {
    Recording clip;
    const std::string all = filled(kPart - 1, 'a');
    clip.file.write(all);
    EXPECT_EQ(clip.requests(), Requests{});
    clip.file.write("b");
    EXPECT_EQ(clip.requests(), Requests{"PutObject P/a_1.mxf 62914560"});
    EXPECT_EQ(clip.file.record().dwBlockUsed, 0u);
    EXPECT_EQ(clip.file.record().dwBlockIndex, 1u);
    EXPECT_EQ(clip.file.record().dwBlockDirty, 0u);
    EXPECT_TRUE(clip.finished() == all + "b");
    EXPECT_EQ(clip.requests(),
              (Requests{"PutObject P/a_1.mxf 62914560", "CreateMultipartUpload clips/a.mxf video/mxf",
                        "ListObjectsV2 P/ ", "UploadPartCopy clips/a.mxf upload /bucket/P/a_1.mxf 1",
                        "CompleteMultipartUpload clips/a.mxf upload", "ListObjects P/ ", "DeleteObject P/a_1.mxf"}));
    EXPECT_EQ(clip.client->keys(), Requests{"clips/a.mxf"});
}

TEST(S3Write, AcrossTwoBlocksMakesTwoParts) {
    Recording clip;
    const std::string all = filled(kPart, 'a') + "beyond";
    clip.file.write(all);
    EXPECT_EQ(clip.requests(), Requests{"PutObject P/a_1.mxf 62914560"});
    EXPECT_TRUE(clip.finished() == all);
    EXPECT_EQ(clip.requests("PutObject"), (Requests{"PutObject P/a_1.mxf 62914560", "PutObject P/a_2.mxf 6"}));
}

TEST(S3Write, InsideAnEarlierPartStoresTheBlockAndLoadsThatPart) {
    Recording clip;
    std::string all = filled(kPart, 'a') + "tail";
    clip.file.write(all);
    clip.file.writeAt(1000, "HERE");
    EXPECT_EQ(clip.requests(),
              (Requests{"PutObject P/a_1.mxf 62914560", "PutObject P/a_2.mxf 4", "GetObject P/a_1.mxf "}));
    EXPECT_EQ(clip.file.record().dwBlockUsed, kPart);
    EXPECT_TRUE(clip.finished() == all.replace(1000, 4, "HERE"));  // closed while the block is an earlier part
    EXPECT_EQ(clip.requests("PutObject").back(), "PutObject P/a_1.mxf 62914560");
}

TEST(S3Write, AtTheFirstByteOfAnEarlierPartLoadsItToo) {
    Recording clip;
    std::string all = filled(kPart, 'a');
    clip.file.write(all);
    clip.file.writeAt(0, "HERE");
    EXPECT_EQ(clip.requests("GetObject"), Requests{"GetObject P/a_1.mxf "});
    EXPECT_TRUE(clip.finished() == all.replace(0, 4, "HERE"));
}

TEST(S3Write, OnFromAReloadedPartIntoAStoredOneLoadsThatFirst) {
    Recording clip;
    std::string all = filled(kPart, 'a') + filled(100, 'b');
    clip.file.write(all);
    clip.file.writeAt(kPart - 2, "1234");
    EXPECT_EQ(clip.requests(),
              (Requests{"PutObject P/a_1.mxf 62914560", "PutObject P/a_2.mxf 100", "GetObject P/a_1.mxf ",
                        "PutObject P/a_1.mxf 62914560", "GetObject P/a_2.mxf "}));
    EXPECT_TRUE(clip.finished() == all.replace(kPart - 2, 4, "1234"));
}

TEST(S3Write, OfTheWholeOfAStoredPartLoadsNothing) {
    Recording clip;
    clip.file.write(filled(kPart, 'a') + filled(100, 'b'));
    clip.file.writeAt(kPart - 2, "12" + filled(101, 'c'));
    EXPECT_EQ(clip.requests("GetObject"), Requests{"GetObject P/a_1.mxf "});
    EXPECT_TRUE(clip.finished() == filled(kPart - 2, 'a') + "12" + filled(101, 'c'));
}

TEST(S3Write, AtTheFirstByteOfALastPartThatWasStoredLosesNothing) {
    Recording clip;
    std::string all = filled(kPart, 'a') + filled(100, 'b');
    clip.file.write(all);
    clip.file.writeAt(5, "x");
    clip.file.writeAt(kPart, "yz");
    EXPECT_TRUE(clip.finished() == all.replace(5, 1, "x").replace(kPart, 2, "yz"));
}

TEST(S3Write, OneByteAheadOfTheEndOfAFullBlockStoresItAndLosesNothing) {
    Recording clip;
    std::string all = filled(kPart, 'a');
    clip.file.write(all);
    clip.file.writeAt(kPart - 3, "xy");
    // The block is full, and the position next to its last byte: it is stored. Then once more, from what it still
    // holds.
    EXPECT_EQ(clip.requests("PutObject").size(), 2u);
    clip.file.writeAt(7, "z");
    EXPECT_EQ(clip.requests("GetObject").size(), 1u);
    EXPECT_TRUE(clip.finished() == all.replace(kPart - 3, 2, "xy").replace(7, 1, "z"));
    EXPECT_EQ(clip.requests("PutObject").size(), 3u);
}

TEST(S3Write, BehindOneOfNoBytesThatStoredTheBlockLosesNothing) {
    Recording clip;
    clip.file.write("0123456789");
    clip.file.record().qwPos = 3 * kPart;
    EXPECT_EQ(s3::writeObject(clip.file.record(), "", {0, nullptr, nullptr}), Outcome::failed);
    EXPECT_EQ(clip.requests(), Requests{"PutObject P/a_1.mxf 10"});
    clip.file.writeAt(2, "xx");
    EXPECT_EQ(clip.finished(), "01xx456789");
    EXPECT_EQ(clip.requests("GetObject"), Requests{});
}

TEST(S3Write, BehindAStoreByHandLosesNothing) {
    Recording clip;
    clip.file.write("0123456789");
    EXPECT_EQ(skvOSWriteAWSBlock(clip.handle()), 1u);
    EXPECT_EQ(clip.file.record().dwBlockUsed, 0u);
    EXPECT_EQ(clip.requests(), Requests{"PutObject P/a_1.mxf 10"});
    EXPECT_EQ(skvOSWriteAWSBlock(clip.handle()), 1u);  // nothing is left to store
    clip.file.writeAt(12, "xx");
    EXPECT_EQ(clip.finished(), std::string("0123456789\0\0xx", 14));
    EXPECT_EQ(clip.requests("PutObject"), (Requests{"PutObject P/a_1.mxf 10", "PutObject P/a_1.mxf 14"}));
}

TEST(S3Write, BehindAGapAtTheFirstByteOfAPartLoadsNothing) {
    Recording clip;
    CapturedMessages messages;
    clip.file.writeAt(2 * kPart, "tail");
    EXPECT_EQ(clip.requests(), Requests{});
    EXPECT_EQ(messages.text(), "");
    EXPECT_EQ(clip.finished(), "");
    EXPECT_EQ(messages.count("Aws::GetObject <clips/a.mxf> exception/error: NoSuchKey no such part\n"), 2u);
    EXPECT_EQ(messages.count("Aws:: !Found object, but part does not exist <2, max=1> "), 1u);
    EXPECT_EQ(clip.requests("CompleteMultipartUpload"), Requests{});
    EXPECT_EQ(clip.client->keys(), Requests{});
}

TEST(S3Write, BehindAGapInsideAPartAsksForItAndFillsItWithZeros) {
    Recording clip;
    CapturedMessages messages;
    clip.file.write("head");
    clip.file.writeAt(kPart + 3, "tail");
    EXPECT_EQ(clip.requests(), (Requests{"PutObject P/a_1.mxf 4", "GetObject P/a_2.mxf "}));
    EXPECT_EQ(messages.count("Aws::Error exception: NoSuchKey \n"), 1u);
    EXPECT_EQ(messages.count("Aws::Error message: no " + clip.file.prefix() + "a_2.mxf \n"), 1u);
    EXPECT_TRUE(clip.finished() == "head" + filled(kPart - 1, '\0') + "tail");
}

TEST(S3Write, BehindAGapInTheFirstPartFillsItWithZeros) {
    Recording clip;
    clip.file.writeAt(3, "abc");
    EXPECT_EQ(clip.finished(), std::string("\0\0\0abc", 6));
}

TEST(S3Write, ThatTheStoreRefusesIsToldAndCountsAsDone) {
    Recording clip;
    CapturedMessages messages;
    clip.client->refuse("PutObject", 1, down());
    clip.file.write(filled(kPart, 'a'));
    EXPECT_EQ(messages.text(), "Aws::GetObject exception/error: SlowDown Please reduce your request rate.\n");
    EXPECT_EQ(clip.file.record().dwBlockUsed, 0u);
    EXPECT_EQ(clip.file.record().dwBlockIndex, 1u);
}

TEST(S3Write, BlockThatTheStoreRefusesOnTheWayToANewPartIsNotMixedIntoThat) {
    Recording clip;
    CapturedMessages messages;
    clip.file.write("0123456789");
    clip.client->refuse("PutObject", 1, down());
    clip.file.writeAt(kPart, "ab");
    clip.finished();
    EXPECT_EQ(clip.requests("PutObject"), (Requests{"PutObject P/a_1.mxf 10", "PutObject P/a_2.mxf 2"}));
}

TEST(S3Write, BlockThatTheStoreRefusesIsStoredAheadOfALoad) {
    Recording clip;
    CapturedMessages messages;
    const std::string all = filled(kPart, 'a') + "tail";
    clip.file.write(all);
    clip.client->refuse("PutObject", 1, down());
    clip.file.writeAt(1, "a");
    EXPECT_EQ(clip.requests(), (Requests{"PutObject P/a_1.mxf 62914560", "PutObject P/a_2.mxf 4",
                                         "PutObject P/a_2.mxf 4", "GetObject P/a_1.mxf "}));
    EXPECT_TRUE(clip.finished() == all);
}

TEST(S3Write, CutInsideTheBlockIsKeptByTheClose) {
    Recording clip;
    clip.file.write("0123456789");
    clip.file.record().qwPos = clip.file.record().qwSize = 4;
    EXPECT_EQ(clip.finished(), "0123");
}

TEST(S3Write, CutInsideAStoredPartIsKeptByTheClose) {
    Recording clip;
    clip.file.write(filled(kPart, 'a') + "tail");
    clip.file.record().qwPos = clip.file.record().qwSize = 4;
    EXPECT_EQ(clip.finished(), "aaaa");
    EXPECT_EQ(clip.requests("PutObject"), (Requests{"PutObject P/a_1.mxf 62914560", "PutObject P/a_1.mxf 4"}));
}

TEST(S3Write, BytesThatWereCutOffDoNotComeBack) {
    Recording clip;
    clip.file.write(filled(kPart, 'a') + "tail");
    clip.file.record().qwPos = clip.file.record().qwSize = 4;
    clip.file.writeAt(6, "b");
    EXPECT_EQ(clip.finished(), std::string("aaaa\0\0b", 7));
}

// Writes anywhere in three parts, against a text that is written alike. The positions gather at the borders of parts.
TEST(S3Write, AnywhereInAnyOrderGivesTheObjectThatAPlainFileWouldHold) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    const auto below = [&random](std::uint64_t limit) { return random() % limit; };
    const CapturedMessages messages;
    Recording clip;
    std::string model(3 * kPart, '\0');
    std::uint64_t size = 0;
    // A part that nothing is ever written to would leave a hole that no store joins.
    std::vector<std::uint64_t> positions = {0, kPart, 2 * kPart};
    for (int i = 0; i < 18; ++i) {
        positions.push_back(below(3) * kPart + (below(2) == 0 ? below(300) : kPart - 1 - below(300)));
    }
    std::shuffle(positions.begin(), positions.end(), random);
    for (const std::uint64_t position : positions) {
        const std::uint64_t wanted = below(12) == 0 ? below(2 * kPart) + 1 : below(600) + 1;
        const std::uint64_t count = std::min(wanted, 3 * kPart - position);
        const auto letter = static_cast<char>('a' + below(26));
        clip.file.writeAt(position, filled(count, letter));
        std::fill_n(model.begin() + static_cast<std::ptrdiff_t>(position), count, letter);
        size = std::max(size, position + count);
        if (below(5) == 0) {
            size = below(3) == 0 ? below(size) : size - 1 - below(std::min<std::uint64_t>(size, 200));
            clip.cutAt(size);
            std::fill(model.begin() + static_cast<std::ptrdiff_t>(size), model.end(), '\0');
        }
        if (below(8) == 0) skvOSWriteAWSBlock(clip.handle());
        if (below(8) == 0 && size > 0) kvOSReadAWSBlock(clip.handle(), below(size));
    }
    // What was cut off may have been all that a part ever had.
    for (std::uint64_t part = 0; part < 3; ++part) {
        clip.file.writeAt(part * kPart + 7, "!");
        model[part * kPart + 7] = '!';
        size = std::max(size, part * kPart + 8);
    }
    if (below(2) == 0) clip.cutAt(size = size - 1 - below(200));
    model.resize(size);
    EXPECT_TRUE(clip.finished() == model);
}

}  // namespace
}  // namespace kvtest
