// How the answer of a REST command is gathered. The record is made by hand.
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

#include "file/handle.h"
#include "kvos/rest.h"

namespace {

/// A record that frees what it holds in the end.
struct Record : kvOSFileHandle {
    Record() : kvOSFileHandle{} {}
    ~Record() { std::free(pBuf); }
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;

    std::size_t take(std::string text, std::size_t size = 1) {
        return kvOSHTTPWriteCommandCallback(text.data(), size, text.size() / size, address());
    }
    void* address() { return static_cast<kvOSFileHandle*>(this); }
    const char* text() const { return static_cast<const char*>(pBuf); }
};

}  // namespace

TEST(RestAnswer, WithoutARecordOrWithoutBytesNothingHappens) {
    char data[] = "abc";
    EXPECT_EQ(kvOSHTTPWriteCommandCallback(data, 1, 3, nullptr), 3u);
    Record record;
    EXPECT_EQ(kvOSHTTPWriteCommandCallback(data, 1, 0, record.address()), 0u);
    EXPECT_EQ(kvOSHTTPWriteCommandCallback(data, 0, 3, record.address()), 0u);
    EXPECT_EQ(record.pBuf, nullptr);
}

TEST(RestAnswer, TheFirstBlockHas1024BytesToSpare) {
    Record record;
    EXPECT_EQ(record.take("abcdef", 2), 6u);
    EXPECT_STREQ(record.text(), "abcdef");
    EXPECT_EQ(record.qwBufLen, 6u);
    EXPECT_EQ(record.qwBufSize, 1030u);
    EXPECT_EQ(record.qwBufFill, 0u);
}

TEST(RestAnswer, WhatFitsIsPutBehindWhatIsThere) {
    Record record;
    record.take("abc");
    const void* const block = record.pBuf;
    EXPECT_EQ(record.take(std::string(1023, 'x')), 1023u);
    EXPECT_EQ(record.pBuf, block);
    EXPECT_EQ(record.qwBufLen, 1026u);
    EXPECT_EQ(std::string(record.text()), "abc" + std::string(1023, 'x'));
}

TEST(RestAnswer, BytesThatWouldLeaveNoRoomForTheTerminatorTakeALargerBlock) {
    Record record;
    record.take("abc");
    EXPECT_EQ(record.take(std::string(1024, 'x')), 1024u);
    EXPECT_EQ(record.qwBufSize, 1027u + 1024u);
    EXPECT_EQ(std::string(record.text()), "abc" + std::string(1024, 'x'));
}

TEST(RestAnswer, AConstantEmptyTextIsReplacedAndNotFreed) {
    static char nothing[1] = "";
    Record record;
    record.pBuf = nothing;
    EXPECT_EQ(record.take("abc"), 3u);
    EXPECT_STREQ(record.text(), "abc");
}

TEST(RestAnswer, AnOutgrownBlockThatBeginsWithAZeroIsNotFreed) {
    Record record;
    record.take(std::string("\0bc", 3));
    char* const outgrown = static_cast<char*>(record.pBuf);
    record.take(std::string(5000, 'x'));
    ASSERT_NE(record.pBuf, outgrown);
    EXPECT_EQ(std::memcmp(outgrown, "\0bc", 4), 0);  // still the caller's to look at
    EXPECT_EQ(std::memcmp(record.pBuf, "\0bcx", 4), 0);
    std::free(outgrown);
}

TEST(RestAnswer, AnAnswerBeyond32BitsEndsTheTransfer) {
    char data[] = "abc";
    Record record;
    record.take("abc");
    record.qwBufLen = record.qwBufSize = 0xFFFFFFFFu - 1024u;
    EXPECT_EQ(kvOSHTTPWriteCommandCallback(data, 1, 3, record.address()), 0u);
    record.qwBufLen = 3;
    EXPECT_STREQ(record.text(), "abc");
}
