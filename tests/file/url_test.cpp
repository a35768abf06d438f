// Positions of URL handles, which need no transfer. The record is made by hand.
#include <gtest/gtest.h>

#include "file/handle.h"
#include "kvos/file.h"

namespace {

constexpr std::uint64_t kUnknown = ~std::uint64_t{0};

kvOSFileHandle urlRecord(std::uint32_t access, std::uint64_t size) {
    kvOSFileHandle record{};
    record.dwType = KVFILE_CURL;
    record.dwAccess = access;
    record.dwCreation = KVFILE_OPEN_EXISTING;
    record.qwSize = size;
    return record;
}

std::int64_t handleTo(kvOSFileHandle& record) { return reinterpret_cast<std::int64_t>(&record); }

}  // namespace

TEST(UrlFile, CanSeekWhenOpenedForReadingAndNotForWriting) {
    kvOSFileHandle reading = urlRecord(KVFILE_READ, 10);
    kvOSFileHandle writing = urlRecord(KVFILE_WRITE, 10);
    kvOSFileHandle both = urlRecord(KVFILE_READ | KVFILE_WRITE, 10);
    EXPECT_EQ(kvOSCanSeekFile(handleTo(reading)), 1u);
    EXPECT_EQ(kvOSCanSeekFile(handleTo(writing)), 0u);
    EXPECT_EQ(kvOSCanSeekFile(handleTo(both)), 0u);
}

TEST(UrlFile, SeekChecksTheSizeAndDoesNoTransfer) {
    kvOSFileHandle record = urlRecord(KVFILE_READ, 10);
    EXPECT_EQ(kvOSSeek(handleTo(record), 10), 10);
    EXPECT_EQ(kvOSSeek(handleTo(record), 11), -1);
    EXPECT_EQ(kvOSTell(handleTo(record)), -1);
    EXPECT_EQ(kvOSSeekEnd(handleTo(record)), 10);
}

TEST(UrlFile, OfUnknownLengthTakesAnySeekAndIsNeverAtItsEnd) {
    kvOSFileHandle record = urlRecord(KVFILE_READ, kUnknown);
    std::uint64_t size = 0;
    std::uint32_t high = 0;
    EXPECT_EQ(kvOSSeek(handleTo(record), std::int64_t{1} << 60), std::int64_t{1} << 60);
    EXPECT_EQ(kvOSfeof(handleTo(record)), 0u);
    EXPECT_EQ(kvOSGetFileSizeEx(handleTo(record), &size), 1u);
    EXPECT_EQ(size, kUnknown);
    EXPECT_EQ(kvOSGetFileSize(handleTo(record), &high), 0xFFFFFFFFu);
    EXPECT_EQ(high, 0xFFFFFFFFu);
}

TEST(UrlFile, OfSizeZeroRefusesEveryTargetAboveIt) {
    kvOSFileHandle record = urlRecord(KVFILE_READ, 0);
    EXPECT_EQ(kvOSSeek(handleTo(record), 0), 0);
    EXPECT_EQ(kvOSSeek(handleTo(record), 1), -1);
}

TEST(UrlFile, FlushSaysDone) {
    kvOSFileHandle record = urlRecord(KVFILE_WRITE, 0);
    EXPECT_EQ(kvOSFlushFileBuffers(handleTo(record)), 1u);
}
