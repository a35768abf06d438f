// What the transfer library calls, called by hand on records made by hand.
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

#include "file/handle.h"
#include "kvos/url.h"
#include "support/captured_messages.h"

using kvtest::CapturedMessages;

namespace {

std::size_t openGets(kvOSFileHandle& record, std::string text) {
    return write_callback_open(text.data(), 1, text.size(), &record);
}

std::size_t readGets(kvOSFileHandle& record, std::string text) {
    return write_callback_read(text.data(), text.size(), 1, &record);
}

kvOSFileHandle recordOver(std::string& buffer, std::uint64_t size) {
    kvOSFileHandle record{};
    record.pBuf = buffer.data();
    record.qwBufSize = size;
    return record;
}

}  // namespace

TEST(UrlOpenCallback, StoresBehindWhatIsHeldAndTerminates) {
    std::string buffer(20, '?');
    kvOSFileHandle record = recordOver(buffer, 20);
    EXPECT_EQ(openGets(record, "abc"), 3u);
    EXPECT_EQ(openGets(record, "de"), 2u);
    EXPECT_EQ(record.qwBufFill, 5u);
    EXPECT_STREQ(buffer.c_str(), "abcde");
    EXPECT_EQ(buffer[6], '?');
}

TEST(UrlOpenCallback, DropsInSilenceWhatDoesNotFit) {
    CapturedMessages messages;
    std::string buffer(8, '?');
    kvOSFileHandle record = recordOver(buffer, 4);
    EXPECT_EQ(openGets(record, "abcdef"), 6u);
    EXPECT_EQ(openGets(record, "gh"), 2u);
    EXPECT_EQ(record.qwBufFill, 4u);
    EXPECT_EQ(buffer, "abcd????");
    EXPECT_EQ(messages.text(), "");
}

TEST(UrlOpenCallback, WithoutABufferTakesAllAndKeepsNothing) {
    kvOSFileHandle record{};
    record.qwBufFill = 7;
    EXPECT_EQ(openGets(record, "abc"), 3u);
    EXPECT_EQ(record.qwBufFill, 0u);
}

TEST(UrlOpenCallback, GrowsWhereItMay) {
    kvOSFileHandle record{};
    record.fBufGrow = 1;
    EXPECT_EQ(openGets(record, "abc"), 3u);
    EXPECT_EQ(record.qwBufSize, 32768u);
    EXPECT_EQ(openGets(record, std::string(40000, 'x')), 40000u);
    EXPECT_EQ(record.qwBufSize, 32768u + 80000u);
    EXPECT_EQ(record.qwBufFill, 40003u);
    // Meant: the old bytes are taken over by the count of the new ones, here all of them.
    EXPECT_EQ(std::string(static_cast<char*>(record.pBuf), 4), "abcx");
    std::free(record.pBuf);
}

TEST(UrlOpenCallback, GrowingTakesOverOnlyAsManyBytesAsComeNew) {
    kvOSFileHandle record{};
    record.fBufGrow = 1;
    openGets(record, std::string(20000, 'a'));
    ASSERT_EQ(record.qwBufSize, 40000u);
    openGets(record, std::string(20000, 'a'));
    openGets(record, "bc");
    const std::string held(static_cast<char*>(record.pBuf), record.qwBufFill);
    EXPECT_EQ(record.qwBufFill, 40002u);
    EXPECT_EQ(held.substr(0, 3), std::string("aa\0", 3));
    EXPECT_EQ(held.substr(40000), "bc");
    std::free(record.pBuf);
}

TEST(UrlOpenCallback, TellsThatItCanNotGrowAndTakesWhatFits) {
    CapturedMessages messages;
    char byte = '?';
    kvOSFileHandle record{};
    record.fBufGrow = 1;
    record.pBuf = &byte;
    record.qwBufSize = record.qwBufFill = std::uint64_t{1} << 62;  // full, and twice as much can't be had
    EXPECT_EQ(openGets(record, "abc"), 0u);
    // A sanitizer has its own word to say about so much memory.
    EXPECT_EQ(messages.count("Error - curl write callback buffer grow failed\n"), 1u) << messages.text();
    EXPECT_EQ(record.pBuf, &byte);
    EXPECT_EQ(record.qwBufFill, std::uint64_t{1} << 62);
    EXPECT_EQ(byte, '?');
}

TEST(UrlReadCallback, StoresOrRefusesTheWhole) {
    CapturedMessages messages;
    std::string buffer(8, '?');
    kvOSFileHandle record = recordOver(buffer, 4);
    record.fBufGrow = 1;
    EXPECT_EQ(readGets(record, "abc"), 3u);
    EXPECT_EQ(readGets(record, "de"), 0u);
    EXPECT_EQ(messages.text(), "Error - curl write callback read buffer too small\n");
    EXPECT_EQ(readGets(record, "d"), 1u);
    EXPECT_EQ(record.qwBufFill, 4u);
    EXPECT_EQ(buffer, "abcd????");
}

TEST(UrlWriteCallback, GivesWhatIsLeftPieceByPiece) {
    std::string buffer = "abcdefgh";
    kvOSFileHandle record = recordOver(buffer, 0);
    record.qwBufLen = 7;
    std::string target(5, '?');
    EXPECT_EQ(read_callback_write(target.data(), 1, 5, &record), 5u);
    EXPECT_EQ(target, "abcde");
    EXPECT_EQ(read_callback_write(target.data(), 0, 5, &record), 0u);
    EXPECT_EQ(read_callback_write(target.data(), 5, 1, &record), 2u);
    EXPECT_EQ(target.substr(0, 2), "fg");
    EXPECT_EQ(read_callback_write(target.data(), 5, 1, &record), 0u);
}

TEST(UrlSeekCallback, SaysDone) { EXPECT_EQ(seek_callback(nullptr, 5, 0), 0); }
