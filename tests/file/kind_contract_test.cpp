// What every kind of file does behind the shared calls. Each kind is a row; where kinds differ, the row says how.
#include <cerrno>
#include <gtest/gtest.h>
#include <memory>
#include <string>

#include "file/owned_file.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

using namespace kvtest;

namespace {

struct KindRow {
    const char* name;
    std::string (*locator)(const ScratchFolder&);
    std::uint32_t type;
    std::uint32_t readAtEnd;  // result of a read that finds nothing
    std::uint32_t flush;      // result of kvOSFlushFileBuffers
    std::uint32_t cutAtEnd;   // result of kvOSSetEndOfFile at the end
    bool endNeedsARead;       // kvOSfeof is true only once a read has met the end
};

void PrintTo(const KindRow& row, std::ostream* out) { *out << row.name; }

constexpr KindRow kLocal{"Local", [](const ScratchFolder& folder) { return folder / "file"; }, KVFILE_LOCAL, 1, 0, 1,
                         true};
constexpr KindRow kMemory{
    "Memory", [](const ScratchFolder&) { return std::string("mem://file"); }, KVFILE_MEMORY, 0, 1, 0, false};

class EveryKind : public ::testing::TestWithParam<KindRow> {
protected:
    OwnedFile openNewFile() { return openNew(GetParam().locator(folder_)); }

    /// A new file with this content, the position at its start.
    OwnedFile holding(std::string_view content) {
        OwnedFile file = openNewFile();
        writeAll(file, content);
        EXPECT_EQ(kvOSSeek(file.handle(), 0), 0);
        return file;
    }

    ScratchFolder folder_;
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Kinds, EveryKind, ::testing::Values(kLocal, kMemory),
                         [](const auto& row) { return row.param.name; });

TEST_P(EveryKind, RecordNamesItsKind) { EXPECT_EQ(openNewFile().record().dwType, GetParam().type); }

TEST_P(EveryKind, WhatIsWrittenIsRead) {
    const OwnedFile file = holding("0123456789");
    EXPECT_EQ(readSome(file, 4), "0123");
    EXPECT_EQ(readSome(file, 6), "456789");
}

TEST_P(EveryKind, ReadAcrossEndIsShortAndSucceeds) {
    const OwnedFile file = holding("abc");
    char buffer[16];
    std::uint32_t got = 99;
    EXPECT_EQ(kvOSReadFile(file.handle(), buffer, sizeof buffer, &got, nullptr), 1u);
    EXPECT_EQ(got, 3u);
}

TEST_P(EveryKind, ReadAtEndGivesNoBytes) {
    const OwnedFile file = holding("abc");
    kvOSSeekEnd(file.handle());
    char byte = 0;
    std::uint32_t got = 99;
    EXPECT_EQ(kvOSReadFile(file.handle(), &byte, 1, &got, nullptr), GetParam().readAtEnd);
    EXPECT_EQ(got, 0u);
}

TEST_P(EveryKind, BytesReadAndWrittenMayGoUncounted) {
    const OwnedFile file = openNewFile();
    EXPECT_EQ(kvOSWriteFile(file.handle(), "abc", 3, nullptr, nullptr), 1u);
    kvOSSeek(file.handle(), 0);
    char buffer[3];
    EXPECT_EQ(kvOSReadFile(file.handle(), buffer, 3, nullptr, nullptr), 1u);
    EXPECT_EQ(std::string(buffer, 3), "abc");
}

TEST_P(EveryKind, TransferOfNothingSucceedsInsideTheFile) {
    const OwnedFile file = holding("abc");
    std::uint32_t count = 99;
    EXPECT_EQ(kvOSReadFile(file.handle(), nullptr, 0, &count, nullptr), 1u);
    EXPECT_EQ(count, 0u);
    count = 99;
    EXPECT_EQ(kvOSWriteFile(file.handle(), nullptr, 0, &count, nullptr), 1u);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(readAll(file), "abc");
}

TEST_P(EveryKind, NullBufferIsRefusedWithAMessage) {
    const OwnedFile file = holding("abc");
    CapturedMessages messages;
    std::uint32_t count = 99;
    EXPECT_EQ(kvOSReadFile(file.handle(), nullptr, 2, &count, nullptr), 0u);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(messages.count("kvOSReadFile("), 1u);
    EXPECT_EQ(kvOSWriteFile(file.handle(), nullptr, 2, &count, nullptr), 0u);
    EXPECT_EQ(messages.count("ERROR(kvFile): kvOSWriteFile("), 1u);
    EXPECT_EQ(readAll(file), "abc");
}

TEST_P(EveryKind, CountOfAllOnesIsRefusedLikeAnInvalidHandle) {
    const OwnedFile file = holding("abc");
    CapturedMessages messages;
    char byte = 0;
    EXPECT_EQ(kvOSReadFile(file.handle(), &byte, 0xFFFFFFFF, nullptr, nullptr), 0u);
    EXPECT_EQ(messages.text(), "kvOSReadFile(INVALID_HANDLE_VALUE) ");
}

TEST_P(EveryKind, WritingInTheMiddleReplacesAndKeepsTheRest) {
    const OwnedFile file = holding("0123456789");
    kvOSSeek(file.handle(), 3);
    writeAll(file, "abc");
    EXPECT_EQ(kvOSTell(file.handle()), 6);
    EXPECT_EQ(readAll(file), "012abc6789");
}

TEST_P(EveryKind, SizesAgreeAndLeaveThePositionAlone) {
    const OwnedFile file = holding("0123456789");
    kvOSSeek(file.handle(), 4);
    std::uint32_t high = 99;
    std::uint64_t size = 0;
    EXPECT_EQ(kvOSGetFileSize(file.handle(), &high), 10u);
    EXPECT_EQ(high, 0u);
    EXPECT_EQ(kvOSGetFileSize(file.handle(), nullptr), 10u);
    EXPECT_EQ(kvOSGetFileSizeEx(file.handle(), &size), 1u);
    EXPECT_EQ(size, 10u);
    EXPECT_EQ(kvOSGetFileSizeEx(file.handle(), nullptr), 1u);
    EXPECT_EQ(kvOSTell(file.handle()), 4);
}

TEST_P(EveryKind, SeekEndGivesTheSize) {
    const OwnedFile file = holding("0123456789");
    EXPECT_EQ(kvOSSeekEnd(file.handle()), 10);
    EXPECT_EQ(kvOSTell(file.handle()), 10);
}

TEST_P(EveryKind, PointerMovesFromStartPositionAndEnd) {
    const OwnedFile file = holding("0123456789");
    std::int32_t high = 0;
    EXPECT_EQ(kvOSSetFilePointer(file.handle(), 4, &high, 0), 4u);
    EXPECT_EQ(kvOSSetFilePointer(file.handle(), 3, &high, 1), 7u);
    high = -1;
    EXPECT_EQ(kvOSSetFilePointer(file.handle(), -2, &high, 2), 8u);
    EXPECT_EQ(high, 0);
    EXPECT_EQ(kvOSSetFilePointer(file.handle(), 5, nullptr, 77), 5u);  // an unknown method counts from the start
    EXPECT_EQ(readSome(file, 1), "5");
}

TEST_P(EveryKind, WidePointerMovesFromStartAndPosition) {
    const OwnedFile file = holding("0123456789");
    std::int64_t position = 0;
    EXPECT_EQ(kvOSSetFilePointerEx(file.handle(), 6, &position, 0), 1u);
    EXPECT_EQ(position, 6);
    EXPECT_EQ(kvOSSetFilePointerEx(file.handle(), -2, &position, 1), 1u);
    EXPECT_EQ(position, 4);
    EXPECT_EQ(kvOSSetFilePointerEx(file.handle(), 0, nullptr, 2), 1u);
    EXPECT_EQ(kvOSTell(file.handle()), 10);
}

TEST_P(EveryKind, CuttingDropsWhatIsBehindThePosition) {
    const OwnedFile file = holding("0123456789");
    kvOSSeek(file.handle(), 4);
    EXPECT_EQ(kvOSSetEndOfFile(file.handle()), 1u);
    EXPECT_EQ(kvOSGetFileSize(file.handle(), nullptr), 4u);
    EXPECT_EQ(readAll(file), "0123");
}

TEST_P(EveryKind, CuttingAtTheEnd) {
    const OwnedFile file = holding("0123");
    kvOSSeekEnd(file.handle());
    EXPECT_EQ(kvOSSetEndOfFile(file.handle()), GetParam().cutAtEnd);
    EXPECT_EQ(readAll(file), "0123");
}

TEST_P(EveryKind, FlushAnswersByKind) { EXPECT_EQ(kvOSFlushFileBuffers(openNewFile().handle()), GetParam().flush); }

TEST_P(EveryKind, CanAlwaysSeek) {
    EXPECT_EQ(kvOSCanSeekFile(openNewFile().handle()), 1u);
    const std::string locator = GetParam().locator(folder_);
    EXPECT_EQ(kvOSCanSeekFile(openFile(locator, KVFILE_WRITE, KVFILE_CREATE_ALWAYS).handle()), 1u);
    EXPECT_EQ(kvOSCanSeekFile(openForReading(locator).handle()), 1u);
}

TEST_P(EveryKind, EndOfFile) {
    const OwnedFile file = holding("ab");
    EXPECT_EQ(kvOSfeof(file.handle()), 0u);
    readSome(file, 2);
    EXPECT_EQ(kvOSfeof(file.handle()), GetParam().endNeedsARead ? 0u : 1u);
    readSome(file, 1);
    EXPECT_EQ(kvOSfeof(file.handle()), 1u);
    kvOSSeek(file.handle(), 0);
    EXPECT_EQ(kvOSfeof(file.handle()), 0u);
}

TEST_P(EveryKind, LinesComeWithoutTheirEndings) {
    const OwnedFile file = holding("one\ntwo\nlast");
    char line[5];
    EXPECT_STREQ(kvOSfgets(line, sizeof line, file.handle()), "one");
    EXPECT_STREQ(kvOSfgets(line, sizeof line, file.handle()), "two");
    EXPECT_STREQ(kvOSfgets(line, sizeof line, file.handle()), "last");
    EXPECT_EQ(kvOSfgets(line, sizeof line, file.handle()), nullptr);
}

TEST_P(EveryKind, LineEndingOfTwoBytesIsTakenWhole) {
    const OwnedFile file = holding("ab\r\ncd");
    char line[64];
    EXPECT_STREQ(kvOSfgets(line, sizeof line, file.handle()), "ab");
    EXPECT_STREQ(kvOSfgets(line, sizeof line, file.handle()), "cd");
}

TEST_P(EveryKind, CarriageReturnFurtherOnMovesOneByteTooFar) {
    const OwnedFile file = holding("ab\ncd\r\n");
    char line[64];
    EXPECT_STREQ(kvOSfgets(line, sizeof line, file.handle()), "ab");
    EXPECT_EQ(kvOSTell(file.handle()), 4);
    EXPECT_STREQ(kvOSfgets(line, sizeof line, file.handle()), "d");
}

TEST_P(EveryKind, LineLongerThanTheBufferComesInPieces) {
    const OwnedFile file = holding("abcdefgh\nx");
    char line[4];
    EXPECT_STREQ(kvOSfgets(line, sizeof line, file.handle()), "abc");
    EXPECT_STREQ(kvOSfgets(line, sizeof line, file.handle()), "def");
    EXPECT_STREQ(kvOSfgets(line, sizeof line, file.handle()), "gh");
    EXPECT_STREQ(kvOSfgets(line, sizeof line, file.handle()), "x");
}

TEST_P(EveryKind, EmptyLineIsAnEmptyText) {
    const OwnedFile file = holding("\nx");
    char line[8];
    EXPECT_STREQ(kvOSfgets(line, sizeof line, file.handle()), "");
    EXPECT_STREQ(kvOSfgets(line, sizeof line, file.handle()), "x");
}

TEST_P(EveryKind, LineIntoNothingGivesNull) {
    const OwnedFile file = holding("abc");
    CapturedMessages messages;
    char line[4];
    EXPECT_EQ(kvOSfgets(nullptr, 4, file.handle()), nullptr);
    EXPECT_EQ(kvOSfgets(line, 1, file.handle()), nullptr);
    EXPECT_EQ(messages.text(), "");
    EXPECT_EQ(kvOSfgets(line, 0, file.handle()), nullptr);
    EXPECT_EQ(messages.text(), "kvOSReadFile(INVALID_HANDLE_VALUE) ");
}

TEST_P(EveryKind, CharactersTextsAndFormattedTextAreWritten) {
    const OwnedFile file = openNewFile();
    EXPECT_EQ(kvOSfputc('a', file.handle()), 1u);
    EXPECT_EQ(kvOSfputs("bc", file.handle()), 1u);
    EXPECT_EQ(kvOSfputs("", file.handle()), 1u);
    EXPECT_EQ(kvOSfprintf(file.handle(), "-%d-%s", 42, "x"), 5u);
    EXPECT_EQ(readAll(file), "abc-42-x");
}

TEST_P(EveryKind, FormattedTextOfAnyLengthIsWrittenWhole) {
    for (const int length : {4094, 4095, 4096, 4097, 100000}) {
        SCOPED_TRACE(length);
        const OwnedFile file = openNewFile();
        EXPECT_EQ(kvOSfprintf(file.handle(), "%*d", length, 7), static_cast<std::uint32_t>(length));
        EXPECT_EQ(readAll(file), std::string(static_cast<std::size_t>(length) - 1, ' ') + "7");
    }
}

TEST_P(EveryKind, NullTextIsRefused) {
    const OwnedFile file = openNewFile();
    EXPECT_EQ(kvOSfputs(nullptr, file.handle()), 0xFFFFFFFFu);
    EXPECT_EQ(errno, EINVAL);
}

// The answers to the two values that name no file.
class InvalidHandle : public ::testing::TestWithParam<std::int64_t> {};

INSTANTIATE_TEST_SUITE_P(Values, InvalidHandle, ::testing::Values(0, -1),
                         [](const auto& row) { return row.param == 0 ? "Zero" : "MinusOne"; });

TEST_P(InvalidHandle, TransfersAreRefusedWithTheirMessages) {
    char byte = 0;
    {
        CapturedMessages messages;
        EXPECT_EQ(kvOSReadFile(GetParam(), &byte, 1, nullptr, nullptr), 0u);
        EXPECT_EQ(messages.text(), "kvOSReadFile(INVALID_HANDLE_VALUE) ");
    }
    CapturedMessages messages;
    EXPECT_EQ(kvOSWriteFile(GetParam(), &byte, 1, nullptr, nullptr), 0u);
    EXPECT_EQ(messages.text(), "kvOSWriteFile(INVALID_HANDLE_VALUE) ");
}

TEST_P(InvalidHandle, PositionsAreMinusOne) {
    EXPECT_EQ(kvOSSeek(GetParam(), 0), -1);
    EXPECT_EQ(kvOSSeekEnd(GetParam()), -1);
    EXPECT_EQ(kvOSTell(GetParam()), -1);
    EXPECT_EQ(kvOSSetFilePointer(GetParam(), 0, nullptr, 0), 0xFFFFFFFFu);
    std::int64_t position = 0;
    EXPECT_EQ(kvOSSetFilePointerEx(GetParam(), 0, &position, 0), 0u);
    EXPECT_EQ(position, -1);
}

TEST_P(InvalidHandle, EverythingElseAnswersZeroOrFailure) {
    std::uint32_t high = 9;
    std::uint64_t size = 9;
    EXPECT_EQ(kvOSGetFileSize(GetParam(), &high), 0u);
    EXPECT_EQ(high, 0u);
    EXPECT_EQ(kvOSGetFileSizeEx(GetParam(), &size), 0u);
    EXPECT_EQ(kvOSSetEndOfFile(GetParam()), 0u);
    EXPECT_EQ(kvOSFlushFileBuffers(GetParam()), 0u);
    EXPECT_EQ(kvOSCanSeekFile(GetParam()), 0u);
    EXPECT_EQ(kvOSfeof(GetParam()), 1u);
    EXPECT_EQ(kvOSAddOutputFile(GetParam(), "x"), 0u);
    CapturedMessages messages;
    char line[8];
    EXPECT_EQ(kvOSfgets(line, sizeof line, GetParam()), nullptr);
    EXPECT_EQ(kvOSfputc('a', GetParam()), 0xFFFFFFFFu);
    EXPECT_EQ(kvOSfputs("a", GetParam()), 0xFFFFFFFFu);
    EXPECT_EQ(kvOSfprintf(GetParam(), "%d", 1), 0u);
}
