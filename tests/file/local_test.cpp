// What only local files do: errors of the system in every call, offsets beyond 4 GiB, full disks and broken streams.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "file/ordinary_user.h"
#include "file/owned_file.h"
#include "file/scripted_stream.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

using namespace kvtest;

namespace {

std::string printed(const OwnedFile& file) { return std::to_string(static_cast<int>(file.handle())); }

}  // namespace

TEST(LocalRead, UnexpectedNetworkErrorIsToldAndTriedAgainUntilItPasses) {
    ScriptedStream stream;
    stream.errors = {59, 59, 59};
    stream.toRead = "ok";
    CapturedMessages messages;
    char buffer[2];
    std::uint32_t got = 0;
    EXPECT_EQ(kvOSReadFile(stream.handle(), buffer, 2, &got, nullptr), 1u);
    EXPECT_EQ(got, 2u);
    const std::string once =
        "kvOSReadFile An unexpected network error occurred. (" + stream.printedHandle() + " 2)-FAIL=0x0000003B(59)\n";
    EXPECT_EQ(messages.text(), once + once + once);
}

TEST(LocalRead, EveryNewTrySeeksToTheOverlappedOffset) {
    ScriptedStream stream;
    stream.errors = {59, 59};
    stream.toRead = "ok";
    CapturedMessages messages;
    kvOSOverlapped overlapped{};
    overlapped.qwOffset = 5;
    char buffer[2];
    EXPECT_EQ(kvOSReadFile(stream.handle(), buffer, 2, nullptr, &overlapped), 1u);
    EXPECT_GE(stream.seeks, 3);
}

TEST(LocalRead, OtherErrorIsToldOnceAndFails) {
    ScriptedStream stream;
    stream.errors = {EIO};
    CapturedMessages messages;
    char buffer[2];
    std::uint32_t got = 9;
    EXPECT_EQ(kvOSReadFile(stream.handle(), buffer, 2, &got, nullptr), 0u);
    EXPECT_EQ(got, 0u);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(messages.text(), "kvOSReadFile(" + stream.printedHandle() + " 2)-FAIL=0x00000005(5)\n");
}

TEST(LocalRead, BytesBeforeAnErrorCountAsASuccessForThoseWhoAskForTheCount) {
    ScriptedStream stream;
    stream.toRead = "ab";
    stream.errors = {ScriptedStream::kPass, ScriptedStream::kPass, EIO};
    CapturedMessages messages;
    char buffer[8];
    std::uint32_t got = 0;
    EXPECT_EQ(kvOSReadFile(stream.handle(), buffer, 8, &got, nullptr), 1u);
    EXPECT_EQ(got, 2u);
    EXPECT_EQ(messages.text(), "");
    stream.toRead = "ab";
    stream.errors = {ScriptedStream::kPass, ScriptedStream::kPass, EIO};
    EXPECT_EQ(kvOSReadFile(stream.handle(), buffer, 8, nullptr, nullptr), 0u);
    EXPECT_EQ(messages.count("-FAIL=0x00000005(5)"), 1u);
}

TEST(LocalRead, ErrorsThatAreNeverToldFailInSilence) {
    for (const int error : {0, -5, 997}) {
        SCOPED_TRACE(error);
        ScriptedStream stream;
        stream.errors = {error};
        CapturedMessages messages;
        char buffer[2];
        EXPECT_EQ(kvOSReadFile(stream.handle(), buffer, 2, nullptr, nullptr), 0u);
        EXPECT_EQ(messages.text(), "");
    }
}

TEST(LocalWrite, ErrorsThatAreNeverToldFailInSilence) {
    for (const int error : {0, -5, 997}) {
        SCOPED_TRACE(error);
        ScriptedStream stream("wb");
        stream.errors = {error};
        CapturedMessages messages;
        EXPECT_EQ(kvOSWriteFile(stream.handle(), "ab", 2, nullptr, nullptr), 0u);
        EXPECT_EQ(messages.text(), "");
    }
}

TEST(Close, ErrorsThatAreNeverToldFailInSilence) {
    for (const int error : {0, -5, 997}) {
        SCOPED_TRACE(error);
        ScriptedStream stream("wb");
        stream.failsClose = true;
        stream.closeError = error;
        CapturedMessages messages;
        EXPECT_EQ(kvOSCloseFile(stream.release()), 0u);
        EXPECT_EQ(messages.text(), "");
    }
}

TEST(LocalOrder, OutputsAreServedBeforeTheMainFile) {
    std::string journal;
    ScriptedStream main("wb");
    ScriptedStream output("wb");
    main.name = "main";
    output.name = "output";
    main.journal = output.journal = &journal;
    main.record().dwOutputCount = 1;
    main.record().hOutput[0] = output.release();
    kvOSWriteFile(main.handle(), "ab", 2, nullptr, nullptr);
    kvOSSeek(main.handle(), 3);
    kvOSCloseFile(main.release());
    EXPECT_EQ(journal.substr(0, journal.find("main:")), "output:write ");
    EXPECT_LT(journal.find("output:seek"), journal.find("main:seek"));
    EXPECT_LT(journal.find("output:close"), journal.find("main:close"));
}

TEST(LocalRead, ShortReadWithoutACountIsJudgedByTheEnd) {
    ScriptedStream stream;
    stream.toRead = "ok";
    char buffer[8];
    EXPECT_EQ(kvOSReadFile(stream.handle(), buffer, 8, nullptr, nullptr), 1u);  // short, but the end was met
}

TEST(LocalRead, OverlappedRecordSetsThePosition) {
    const ScratchFolder folder;
    makeFile(folder / "a", "0123456789");
    const OwnedFile file = openForReading(folder / "a");
    kvOSOverlapped overlapped{};
    overlapped.qwOffset = 6;
    char buffer[2];
    EXPECT_EQ(kvOSReadFile(file.handle(), buffer, 2, nullptr, &overlapped), 1u);
    EXPECT_EQ(std::string(buffer, 2), "67");
    EXPECT_EQ(kvOSTell(file.handle()), 8);
}

TEST(LocalRead, HandleOpenedForWritingFailsWithAMessage) {
    const ScratchFolder folder;
    const OwnedFile file = openFile(folder / "a", KVFILE_WRITE, KVFILE_CREATE_ALWAYS);
    CapturedMessages messages;
    char byte = 0;
    EXPECT_EQ(kvOSReadFile(file.handle(), &byte, 1, nullptr, nullptr), 0u);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(messages.text(), "kvOSReadFile(" + printed(file) + " 1)-FAIL=0x00000009(9)\n");
}

TEST(LocalWrite, OverlappedRecordSetsThePosition) {
    const ScratchFolder folder;
    makeFile(folder / "a", "0123456789");
    OwnedFile file = openForUpdate(folder / "a");
    kvOSOverlapped overlapped{};
    overlapped.qwOffset = 4;
    EXPECT_EQ(kvOSWriteFile(file.handle(), "xy", 2, nullptr, &overlapped), 1u);
    file.close();
    EXPECT_EQ(contentOf(folder / "a"), "0123xy6789");
}

TEST(LocalWrite, HandleOpenedForReadingFailsWithACodedMessage) {
    const ScratchFolder folder;
    makeFile(folder / "a");
    const OwnedFile file = openForReading(folder / "a");
    CapturedMessages messages;
    std::uint32_t written = 9;
    EXPECT_EQ(kvOSWriteFile(file.handle(), "abc", 3, &written, nullptr), 0u);
    EXPECT_EQ(written, 0u);
    EXPECT_EQ(messages.text(), "ERROR(kvFile): kvOSWriteFile(" + printed(file) + " 3)-FAIL=0x00000009(9) \n\r");
}

TEST(LocalWrite, FullDiskFailsTheWriteThatMeetsIt) {
    const OwnedFile file = openFile("/dev/full", KVFILE_WRITE, KVFILE_OPEN_EXISTING);
    CapturedMessages messages;
    const std::string block(1 << 20, 'x');
    std::uint32_t written = 9;
    EXPECT_EQ(kvOSWriteFile(file.handle(), block.data(), 1 << 20, &written, nullptr), 0u);
    EXPECT_EQ(written, 0u);
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(messages.text(), "ERROR(kvFile): kvOSWriteFile(" + printed(file) + " 1048576)-FAIL=0x0000001C(28) \n\r");
}

TEST(LocalWrite, SmallFullFileSystemKeepsWhatFitAndSaysWhatDidNot) {
    const ScratchFolder folder;
    if (mount("none", folder.path().c_str(), "tmpfs", 0, "size=256k") != 0) {
        GTEST_SKIP() << "mounting a file system needs root";
    }
    {
        CapturedMessages messages;
        OwnedFile file = openNew(folder / "clip");
        const std::string block(65536, 'x');
        std::uint64_t total = 0;
        std::uint32_t written = 0;
        bool failed = false;
        for (int i = 0; i < 8 && !failed; ++i) {
            failed = kvOSWriteFile(file.handle(), block.data(), 65536, &written, nullptr) == 0 || written != 65536;
            total += written;
        }
        EXPECT_TRUE(failed);
        EXPECT_EQ(errno, ENOSPC);
        EXPECT_GE(total, 262144u);  // the stream may count bytes that it only took into its buffer
        EXPECT_EQ(kvOSWriteFile(file.handle(), block.data(), 65536, &written, nullptr) != 0 && written == 65536, false);
        file.close();
        EXPECT_EQ(contentOf(folder / "clip").size(), 262144u);
    }
    umount(folder.path().c_str());
}

TEST(LocalWrite, DataReachesTheDiskAtTheCloseAndNotByAFlush) {
    const ScratchFolder folder;
    OwnedFile file = openFile(folder / "a", KVFILE_WRITE, KVFILE_CREATE_ALWAYS);
    writeAll(file, "abc");
    EXPECT_EQ(kvOSFlushFileBuffers(file.handle()), 0u);
    EXPECT_EQ(contentOf(folder / "a"), "");
    file.close();
    EXPECT_EQ(contentOf(folder / "a"), "abc");
}

TEST(LocalWrite, NothingIsLostWhenReadsAndWritesAlternateWithoutASeek) {
    const ScratchFolder folder;
    OwnedFile file = openNew(folder / "a");
    writeAll(file, "buffered");
    EXPECT_EQ(readSome(file, 1 << 20), "");  // larger than the stream's buffer, which still holds the text
    writeAll(file, "more");
    EXPECT_EQ(kvOSSeek(file.handle(), 4), 4);
    EXPECT_EQ(readSome(file, 2), "er");
    writeAll(file, "EE");
    EXPECT_EQ(readSome(file, 9), "more");
    EXPECT_EQ(file.close(), 1u);
    EXPECT_EQ(contentOf(folder / "a"), "bufferEEmore");
}

TEST(LocalRead, WrittenBytesThatDoNotReachTheDiskFailTheReadThatFollows) {
    const OwnedFile file = openFile("/dev/full", KVFILE_READ | KVFILE_WRITE, KVFILE_OPEN_EXISTING);
    writeAll(file, "lost");
    CapturedMessages messages;
    char byte = 0;
    EXPECT_EQ(kvOSReadFile(file.handle(), &byte, 1, nullptr, nullptr), 0u);
    EXPECT_EQ(messages.text(), "kvOSReadFile(" + printed(file) + " 1)-FAIL=0x0000001C(28)\n");
}

TEST(LocalPosition, LoneNegativeLowWordGoesBackwards) {
    const ScratchFolder folder;
    makeFile(folder / "a", "0123456789");
    const OwnedFile file = openForReading(folder / "a");
    EXPECT_EQ(kvOSSetFilePointer(file.handle(), -3, nullptr, 2), 7u);
    EXPECT_EQ(kvOSSetFilePointer(file.handle(), -2, nullptr, 1), 5u);
}

TEST(LocalPosition, TargetBeforeTheStartFails) {
    const ScratchFolder folder;
    makeFile(folder / "a", "0123456789");
    const OwnedFile file = openForReading(folder / "a");
    EXPECT_EQ(kvOSSeek(file.handle(), -1), -1);
    std::int32_t high = -1;
    EXPECT_EQ(kvOSSetFilePointer(file.handle(), -20, &high, 2), 0xFFFFFFFFu);
    EXPECT_EQ(high, -1);
    std::int64_t position = 0;
    EXPECT_EQ(kvOSSetFilePointerEx(file.handle(), -20, &position, 1), 0u);
    EXPECT_EQ(position, -1);
}

TEST(LocalPosition, WidePointerFromTheEndAddsTheDistance) {
    const ScratchFolder folder;
    makeFile(folder / "a", "0123456789");
    const OwnedFile file = openForReading(folder / "a");
    std::int64_t position = 0;
    EXPECT_EQ(kvOSSetFilePointerEx(file.handle(), -3, &position, 2), 1u);
    EXPECT_EQ(position, 7);
}

TEST(LocalPosition, SeekBeyondTheEndSucceeds) {
    const ScratchFolder folder;
    makeFile(folder / "a", "abc");
    const OwnedFile file = openForReading(folder / "a");
    EXPECT_EQ(kvOSSeek(file.handle(), 100), 100);
    EXPECT_EQ(readSome(file, 1), "");
}

TEST(LocalPosition, OffsetsBeyondFourGiBWorkInEveryCall) {
    const ScratchFolder folder;
    constexpr std::int64_t kFar = 0x500000000;  // 20 GiB, sparse
    OwnedFile file = openNew(folder / "far");
    EXPECT_EQ(kvOSSeek(file.handle(), kFar), kFar);
    writeAll(file, "far");
    EXPECT_EQ(kvOSTell(file.handle()), kFar + 3);
    std::uint32_t high = 0;
    EXPECT_EQ(kvOSGetFileSize(file.handle(), &high), 3u);
    EXPECT_EQ(high, 5u);
    std::int32_t highMove = 5;
    EXPECT_EQ(kvOSSetFilePointer(file.handle(), 1, &highMove, 0), 1u);
    EXPECT_EQ(highMove, 5);
    EXPECT_EQ(readSome(file, 2), "ar");
    std::int64_t position = 0;
    EXPECT_EQ(kvOSSetFilePointerEx(file.handle(), -3, &position, 2), 1u);
    EXPECT_EQ(position, kFar);
    kvOSOverlapped overlapped{};
    overlapped.qwOffset = kFar + 1;
    char byte = 0;
    EXPECT_EQ(kvOSReadFile(file.handle(), &byte, 1, nullptr, &overlapped), 1u);
    EXPECT_EQ(byte, 'a');
    EXPECT_EQ(kvOSSeek(file.handle(), kFar - 5), kFar - 5);
    EXPECT_EQ(kvOSSetEndOfFile(file.handle()), 1u);
    file.close();
    EXPECT_EQ(kvOSGetFileSizeName((folder / "far").c_str()), static_cast<std::uint64_t>(kFar - 5));
}

TEST(LocalCut, FailureIsTold) {
    const ScratchFolder folder;
    makeFile(folder / "a", "0123456789");
    const OwnedFile file = openForReading(folder / "a");
    CapturedMessages messages;
    EXPECT_EQ(kvOSSetEndOfFile(file.handle()), 0u);
    EXPECT_EQ(messages.text(), "kvOSSetEndOfFile(" + printed(file) + ")-FAIL=0x00000016(22) ");
    EXPECT_EQ(contentOf(folder / "a"), "0123456789");
}

TEST(LocalCut, CanExtendAFile) {
    const ScratchFolder folder;
    makeFile(folder / "a", "ab");
    OwnedFile file = openForUpdate(folder / "a");
    kvOSSeek(file.handle(), 4);
    EXPECT_EQ(kvOSSetEndOfFile(file.handle()), 1u);
    file.close();
    EXPECT_EQ(contentOf(folder / "a"), std::string("ab\0\0", 4));
}

TEST(LocalSize, PipeHasNone) {
    const ScratchFolder folder;
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    const int writer = ::open((folder / "pipe").c_str(), O_RDWR);
    const OwnedFile file = openForReading(folder / "pipe");
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(kvOSGetFileSize(file.handle(), nullptr), 0u);
    ::close(writer);
}

TEST(LocalSize, MissingFileByNameHasNone) {
    CapturedMessages messages;
    EXPECT_EQ(kvOSGetFileSizeName("/no/such/file"), 0u);
    EXPECT_EQ(kvOSGetFileSizeName(nullptr), 0u);
    EXPECT_EQ(messages.count("kvOSCreateFile("), 1u);
}

TEST(LocalFile, IsNotHandedToProgramsThatAreStarted) {
    const ScratchFolder folder;
    const std::string path = folder / "clip";
    for (const std::uint32_t access : {KVFILE_WRITE, KVFILE_READ, KVFILE_READ | KVFILE_WRITE}) {
        for (const std::uint32_t creation : {KVFILE_CREATE_ALWAYS, KVFILE_OPEN_EXISTING}) {
            const OwnedFile file = openFile(path, access, creation);
            ASSERT_TRUE(file.isOpen());
            const int descriptor = fileno(static_cast<std::FILE*>(file.record().pFile));
            EXPECT_EQ(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC) << access << " " << creation;
        }
    }
    const OwnedFile made = openFile(folder / "made", KVFILE_WRITE, KVFILE_OPEN_EXISTING);
    EXPECT_EQ(fcntl(fileno(static_cast<std::FILE*>(made.record().pFile)), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST(LocalFolder, FileInAReadOnlyFolderCanNotBeMade) {
    const ScratchFolder folder;
    openToAll(folder.path());
    EXPECT_TRUE(trueAsOrdinaryUser([&] {
        CapturedMessages messages;
        return !openNew(folder / "a").isOpen() && errno == EACCES && messages.count("-FAIL=0x0000000D(13) ") == 1;
    }));
}
