// What only memory files do. The shared contract is in kind_contract_test.cpp.
#include <cerrno>
#include <gtest/gtest.h>
#include <string>

#include "file/owned_file.h"

using namespace kvtest;

namespace {

constexpr std::uint64_t kFirstBuffer = 1048576;

/// A memory file that checks its seeks, holding "0123456789".
OwnedFile tenBytes() {
    OwnedFile file = openForUpdate("mem://ten");
    writeAll(file, "0123456789");
    kvOSSeek(file.handle(), 0);
    return file;
}

}  // namespace

TEST(MemoryFile, TwoOpensOfOneNameAreTwoFiles) {
    const OwnedFile first = openForUpdate("mem://clip");
    const OwnedFile second = openForUpdate("mem://clip");
    writeAll(first, "abc");
    EXPECT_EQ(kvOSGetFileSize(second.handle(), nullptr), 0u);  // the text after mem:// names nothing
}

TEST(MemoryFile, RecordStartsAsItsContractSays) {
    const OwnedFile file = openForUpdate("mem://clip");
    const kvOSFileHandle& record = file.record();
    EXPECT_STREQ(record.szPath, "mem://clip");
    EXPECT_EQ(record.fBufGrow, 1u);
    EXPECT_NE(record.pBuf, nullptr);
    EXPECT_EQ(record.qwBufSize, kFirstBuffer);
    EXPECT_EQ(record.qwBufLen, 0u);
    EXPECT_EQ(record.qwBufFill, 0u);
    EXPECT_EQ(record.qwSize, 0u);
    EXPECT_EQ(record.dwBlockSize, 0x3C00000u);
    EXPECT_EQ(record.pFile, nullptr);
}

TEST(MemoryFile, LastPositionIsWhereTheLatestTransferBegan) {
    const OwnedFile file = tenBytes();
    kvOSSeek(file.handle(), 4);
    readSome(file, 3);
    EXPECT_EQ(file.record().qwLastPos, 4u);
    writeAll(file, "x");
    EXPECT_EQ(file.record().qwLastPos, 7u);
}

TEST(MemoryFile, BufferGrowsByTheNeedAndOneMiBMore) {
    const OwnedFile file = openForUpdate("mem://");
    writeAll(file, std::string(kFirstBuffer, 'a'));
    EXPECT_EQ(file.record().qwBufSize, kFirstBuffer);
    writeAll(file, "b");
    EXPECT_EQ(file.record().qwBufSize, kFirstBuffer + 1 + kFirstBuffer);
    EXPECT_EQ(file.record().qwBufLen, kFirstBuffer + 1);
    const std::string content = readAll(file);
    EXPECT_EQ(content.substr(0, kFirstBuffer), std::string(kFirstBuffer, 'a'));
    EXPECT_EQ(content.back(), 'b');
}

TEST(MemoryFile, HighWaterMarkStaysWhenTheFileIsCut) {
    const OwnedFile file = tenBytes();
    kvOSSeek(file.handle(), 2);
    EXPECT_EQ(kvOSSetEndOfFile(file.handle()), 1u);
    EXPECT_EQ(file.record().qwSize, 2u);
    EXPECT_EQ(file.record().qwBufLen, 10u);
}

TEST(MemoryFile, WriteBeyondTheEndLeavesAGapOfWhateverTheBufferHolds) {
    const OwnedFile file = tenBytes();
    kvOSSeek(file.handle(), 2);
    kvOSSetEndOfFile(file.handle());
    kvOSSetFilePointer(file.handle(), 5, nullptr, 0);
    writeAll(file, "x");
    EXPECT_EQ(readAll(file), "01234x");  // the bytes between are those that stood there before
}

TEST(MemoryFile, SeekToTheSizeSucceedsAndOneFurtherIsRefused) {
    const OwnedFile file = tenBytes();
    EXPECT_EQ(kvOSSeek(file.handle(), 10), 10);
    EXPECT_EQ(kvOSSeek(file.handle(), 11), -1);
    EXPECT_EQ(file.record().qwPos, ~std::uint64_t{0});
    EXPECT_EQ(kvOSTell(file.handle()), -1);
    EXPECT_EQ(kvOSSeek(file.handle(), -1), -1);
}

TEST(MemoryFile, TransfersAfterARefusedSeekFail) {
    const OwnedFile file = tenBytes();
    kvOSSeek(file.handle(), 11);
    char buffer[32] = {};
    std::uint32_t count = 9;
    EXPECT_EQ(kvOSReadFile(file.handle(), buffer, sizeof buffer, &count, nullptr), 0u);
    EXPECT_EQ(count, 0u);
    count = 9;
    EXPECT_EQ(kvOSWriteFile(file.handle(), buffer, sizeof buffer, &count, nullptr), 0u);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(readAll(file), "0123456789");
}

TEST(MemoryFile, FileOpenedToBeMadeTakesAnySeek) {
    for (const std::uint32_t creation : {1u, 2u}) {
        const OwnedFile file = openFile("mem://", KVFILE_READ | KVFILE_WRITE, creation);
        EXPECT_EQ(kvOSSeek(file.handle(), 5000), 5000);
        EXPECT_EQ(kvOSTell(file.handle()), 5000);
        writeAll(file, "x");
        EXPECT_EQ(kvOSGetFileSize(file.handle(), nullptr), 5001u);
    }
}

TEST(MemoryFile, LoneNegativeLowWordIsUnsigned) {
    const OwnedFile file = tenBytes();
    EXPECT_EQ(kvOSSetFilePointer(file.handle(), -1, nullptr, 2), static_cast<std::uint32_t>(10 - 0xFFFFFFFFull));
    EXPECT_EQ(file.record().qwPos, 10 - 0xFFFFFFFFull);
    kvOSSeek(file.handle(), 5);
    EXPECT_EQ(kvOSSetFilePointer(file.handle(), -1, nullptr, 1), 4u);  // 5 + 0xFFFFFFFF, low 32 bits
    EXPECT_EQ(file.record().qwPos, 5 + 0xFFFFFFFFull);
}

TEST(MemoryFile, DistanceFromTheEndCountsByItsMagnitude) {
    const OwnedFile file = tenBytes();
    std::int32_t high = -1;
    EXPECT_EQ(kvOSSetFilePointer(file.handle(), -1, &high, 2), 9u);
    EXPECT_EQ(high, 0);
    high = 0;
    EXPECT_EQ(kvOSSetFilePointer(file.handle(), 1, &high, 2), 9u);
}

TEST(MemoryFile, PointerMayBeLeftBeyondTheEnd) {
    const OwnedFile file = tenBytes();
    EXPECT_EQ(kvOSSetFilePointer(file.handle(), 100, nullptr, 0), 100u);
    EXPECT_EQ(kvOSTell(file.handle()), 100);
    EXPECT_EQ(kvOSfeof(file.handle()), 1u);
    EXPECT_EQ(readSome(file, 4), "");
}

TEST(MemoryFile, HighWordOfTheNewPositionIsStored) {
    const OwnedFile file = tenBytes();
    std::int32_t high = 3;
    EXPECT_EQ(kvOSSetFilePointer(file.handle(), 7, &high, 0), 7u);
    EXPECT_EQ(high, 3);
    EXPECT_EQ(file.record().qwPos, 0x300000007u);
}

TEST(MemoryFile, WidePointerFromTheEndIsTheSizeLessTheDistance) {
    const OwnedFile file = tenBytes();
    std::int64_t position = 0;
    EXPECT_EQ(kvOSSetFilePointerEx(file.handle(), 3, &position, 2), 1u);
    EXPECT_EQ(position, 7);
}

TEST(MemoryFile, WidePointerOutOfRangeBecomesAllOnesAndSucceeds) {
    const OwnedFile file = tenBytes();
    for (const auto& [distance, method] :
         {std::pair{-3, 2u}, std::pair{11, 0u}, std::pair{-1, 0u}, std::pair{11, 2u}}) {
        SCOPED_TRACE(std::to_string(distance) + " by " + std::to_string(method));
        std::int64_t position = 0;
        EXPECT_EQ(kvOSSetFilePointerEx(file.handle(), distance, &position, method), 1u);
        EXPECT_EQ(position, -1);
        EXPECT_EQ(kvOSTell(file.handle()), -1);
    }
}

TEST(MemoryFile, WidePointerIsRangeCheckedAlsoWhileTheFileIsBeingMade) {
    const OwnedFile file = openNew("mem://");
    writeAll(file, "abc");
    EXPECT_EQ(kvOSSetFilePointerEx(file.handle(), 100, nullptr, 0), 1u);
    EXPECT_EQ(kvOSTell(file.handle()), -1);  // where kvOSSeek would go there
}

TEST(MemoryFile, CuttingAtOrBehindTheEndChangesNothing) {
    const OwnedFile file = tenBytes();
    kvOSSeek(file.handle(), 10);
    EXPECT_EQ(kvOSSetEndOfFile(file.handle()), 0u);
    kvOSSetFilePointer(file.handle(), 50, nullptr, 0);
    EXPECT_EQ(kvOSSetEndOfFile(file.handle()), 0u);
    EXPECT_EQ(kvOSGetFileSize(file.handle(), nullptr), 10u);
}

TEST(MemoryFile, OverlappedRecordIsNotLookedAt) {
    const OwnedFile file = tenBytes();
    kvOSOverlapped overlapped{};
    overlapped.qwOffset = 5;
    char byte = 0;
    EXPECT_EQ(kvOSReadFile(file.handle(), &byte, 1, nullptr, &overlapped), 1u);
    EXPECT_EQ(byte, '0');
}

TEST(MemoryFile, RoomThatTheMachineHasNotIsRefusedAndNothingIsLost) {
    const OwnedFile file = openNew("mem://");
    writeAll(file, "kept");
    kvOSSeek(file.handle(), std::int64_t{1} << 62);
    std::uint32_t written = 9;
    EXPECT_EQ(kvOSWriteFile(file.handle(), "x", 1, &written, nullptr), 0u);
    EXPECT_EQ(written, 0u);
    kvOSSeek(file.handle(), 0);
    EXPECT_EQ(readSome(file, 4), "kept");
}

TEST(MemoryFile, TakesNoOutputs) {
    const OwnedFile file = openForUpdate("mem://");
    EXPECT_EQ(kvOSAddOutputFile(file.handle(), "mem://copy"), 0u);
}

TEST(MemoryFile, SizeByNameIsThatOfANewEmptyFile) { EXPECT_EQ(kvOSGetFileSizeName("mem://any"), 0u); }
