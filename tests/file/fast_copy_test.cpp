// The copy on two threads.
#include <array>
#include <atomic>
#include <cerrno>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <utility>

#include "file/ordinary_user.h"
#include "file/scripted_stream.h"
#include "kvos/copy.h"
#include "kvos/file.h"
#include "kvos/memory.h"
#include "kvos/thread.h"
#include "kvos/time.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace {

using namespace kvtest;

constexpr std::uint32_t kFailed = 0xFFFFFFFF;
constexpr std::size_t kMebi = 1 << 20;

std::string bytes(std::size_t count) {
    std::string text(count, 'x');
    for (std::size_t i = 0; i < count; i += 101) text[i] = static_cast<char>(i / 101);
    return text;
}

class FastCopy : public ::testing::Test {
protected:
    std::uint32_t copy(std::uint32_t flags, std::uint64_t count = 0) {
        done_ = count;
        elapsed_ = kUntouched;
        const std::uint32_t start_ms = kvOSGetMs();
        const std::uint32_t result = kvOSCopyFileFast(from_.c_str(), to_.c_str(), flags, &done_, &elapsed_, &permille_);
        longest_ = kvOSGetMs() - start_ms;
        return result;
    }
    bool isWhole(const std::string& content) const { return contentOf(to_) == content; }

    ScratchFolder scratch_;
    std::string from_ = scratch_ / "from";
    std::string to_ = scratch_ / "to";
    std::uint64_t done_ = 77;
    static constexpr std::uint32_t kUntouched = 0xFFFFFFFF;
    std::uint32_t elapsed_ = kUntouched;
    std::uint32_t longest_ = 0;  // what it can be at most
    std::uint32_t permille_ = 77;
    CapturedMessages messages_;  // each open of a destination warns of its share
};

TEST_F(FastCopy, TheFlagsAreTheseBits) {
    EXPECT_EQ(KVCOPY_COUNT_GIVEN, 0x100000u);
    EXPECT_EQ(KVCOPY_KEEP_EXISTING, 0x1000000u);
    EXPECT_EQ(KVCOPY_PLAIN, 0x10000000u);
}

TEST_F(FastCopy, CopiesTheCountOfItsSourceWhole) {
    for (const std::size_t size : {std::size_t{1}, kMebi - 1, kMebi, kMebi + 1, 2 * kMebi, 5 * kMebi + 3}) {
        const std::string content = bytes(size);
        makeFile(from_, content);
        EXPECT_EQ(copy(KVCOPY_COUNT_GIVEN, size), 0u) << size;
        EXPECT_TRUE(isWhole(content)) << size;
        EXPECT_EQ(done_, size);
        EXPECT_EQ(permille_, 1000u);
        EXPECT_LE(elapsed_, longest_);
    }
}

TEST_F(FastCopy, CopiesInBlocksOfEverySize) {
    const std::array<std::size_t, 10> blocks{kMebi,   65536,   131072,   524288,   kMebi,
                                             4194304, 8388608, 16777216, 16777216, 16777216};
    const std::string content = bytes(300001);
    for (std::uint32_t selector = 0; selector < blocks.size(); ++selector) {
        makeFile(from_, content);
        EXPECT_EQ(copy(KVCOPY_COUNT_GIVEN | selector, content.size()), 0u) << selector;
        EXPECT_TRUE(isWhole(content)) << selector;
        std::filesystem::resize_file(from_, 17 * kMebi);
        EXPECT_EQ(copy(selector), 0u) << selector;
        EXPECT_EQ(done_, blocks[selector]) << selector;
        EXPECT_EQ(std::filesystem::file_size(to_), blocks[selector]) << selector;
    }
    EXPECT_EQ(copy(15), 0u);
    EXPECT_EQ(done_, 16777216u);
}

TEST_F(FastCopy, WithoutACountItCopiesOneBlockAndSucceeds) {
    const std::string content = bytes(3 * kMebi);
    makeFile(from_, content);
    EXPECT_EQ(copy(0, 3 * kMebi), 0u);  // a count that the flag does not announce is none
    EXPECT_TRUE(isWhole(content.substr(0, kMebi)));
    EXPECT_EQ(done_, kMebi);
    EXPECT_EQ(permille_, 1000u);
    EXPECT_EQ(copy(KVCOPY_COUNT_GIVEN, 0), 0u);
    EXPECT_TRUE(isWhole(content.substr(0, kMebi)));
    EXPECT_EQ(kvOSCopyFileFast(from_.c_str(), to_.c_str(), KVCOPY_COUNT_GIVEN, nullptr, nullptr, nullptr), 0u);
    EXPECT_TRUE(isWhole(content.substr(0, kMebi)));
}

TEST_F(FastCopy, ACountEndsTheCopyWithTheBlockThatReachesIt) {
    const std::string content = bytes(4 * kMebi);
    makeFile(from_, content);
    EXPECT_EQ(copy(KVCOPY_COUNT_GIVEN, kMebi + 1), 0u);
    EXPECT_TRUE(isWhole(content.substr(0, 2 * kMebi)));
    EXPECT_EQ(done_, 2 * kMebi);
    EXPECT_EQ(copy(KVCOPY_COUNT_GIVEN, ~std::uint64_t{0}), 0u);
    EXPECT_TRUE(isWhole(content));
}

TEST_F(FastCopy, AnEmptySourceMakesAnEmptyFile) {
    makeFile(from_);
    EXPECT_EQ(copy(0), 0u);
    EXPECT_TRUE(std::filesystem::exists(to_));
    EXPECT_EQ(done_, 0u);
    EXPECT_EQ(permille_, 1000u);
}

TEST_F(FastCopy, AFileOntoItselfIsKeptAndRefused) {
    makeFile(from_, "bytes");
    to_ = from_;
    EXPECT_EQ(copy(0), kFailed);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(contentOf(from_), "bytes");
}

TEST_F(FastCopy, AnExistingDestinationIsReplacedOrKept) {
    makeFile(from_, "new");
    makeFile(to_, "old and longer");
    EXPECT_EQ(copy(KVCOPY_KEEP_EXISTING), kFailed);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(contentOf(to_), "old and longer");
    EXPECT_EQ(copy(0), 0u);
    EXPECT_EQ(contentOf(to_), "new");
    std::filesystem::remove(to_);
    EXPECT_EQ(copy(KVCOPY_KEEP_EXISTING), 0u);
}

TEST_F(FastCopy, ThePlainWayTurnsTheResultRound) {
    for (const std::uint32_t way : {KVCOPY_PLAIN, 2 * KVCOPY_PLAIN}) {
        makeFile(from_, bytes(kMebi + 1));
        permille_ = 77;
        EXPECT_EQ(copy(way), kFailed);
        EXPECT_TRUE(isWhole(bytes(kMebi + 1)));
        EXPECT_EQ(done_, kMebi + 1);
        EXPECT_EQ(permille_, 77u);
        EXPECT_LE(elapsed_, longest_);
        makeFile(from_, bytes(kMebi));
        EXPECT_EQ(copy(way), 0u);
        EXPECT_TRUE(isWhole(bytes(kMebi)));
    }
    EXPECT_EQ(kvOSCopyFileFast(from_.c_str(), to_.c_str(), KVCOPY_PLAIN, nullptr, nullptr, nullptr), 0u);
}

TEST_F(FastCopy, AnyOtherWayCopiesNothingAndSucceeds) {
    makeFile(from_, "new");
    for (std::uint32_t way = 3; way < 16; ++way) {
        makeFile(to_, "old");
        EXPECT_EQ(copy(way << 28), 0u);
        EXPECT_FALSE(std::filesystem::exists(to_));
    }
}

TEST_F(FastCopy, ACountMakesTheWayFast) {
    const std::string content = bytes(kMebi + 1);
    makeFile(from_, content);
    EXPECT_EQ(copy(0xF0000000 | KVCOPY_COUNT_GIVEN, content.size()), 0u);
    EXPECT_TRUE(isWhole(content));
}

TEST_F(FastCopy, OpensThatFailGiveAllOnes) {
    EXPECT_EQ(copy(0), kFailed);
    EXPECT_EQ(errno, ENOENT);
    makeFile(from_, "x");
    to_ = "/no/such/folder/to";
    EXPECT_EQ(copy(0), kFailed);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(kvOSCopyFileFast(nullptr, to_.c_str(), 0, nullptr, nullptr, nullptr), kFailed);
    EXPECT_EQ(kvOSCopyFileFast(from_.c_str(), nullptr, 0, nullptr, nullptr, nullptr), kFailed);
    EXPECT_EQ(errno, EINVAL);
}

TEST_F(FastCopy, ASourceThatCanNotBeReadGivesAllOnes) {
    std::filesystem::create_directory(from_);
    EXPECT_EQ(copy(0), kFailed);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(done_, 0u);
    EXPECT_EQ(permille_, 1000u);  // meant
    EXPECT_EQ(kvOSCopyFileFast("mem://x", to_.c_str(), 0, nullptr, nullptr, nullptr), kFailed);
}

TEST_F(FastCopy, EachOpenOfADestinationWarnsOfItsShare) {
    makeFile(from_, "x");
    copy(0);
    EXPECT_EQ(messages_.count("being open for write with write share enabled!"), 1u);
}

TEST_F(FastCopy, AFullDiskGivesAllOnes) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
    makeFile(from_, bytes(3 * kMebi));
    std::filesystem::create_symlink("/dev/full", to_);
    // The link itself is what would be deleted, so the copy goes to a folder that keeps it.
    openToAll(scratch_.path());
    ASSERT_EQ(chmod(scratch_.path().c_str(), 0555), 0);
    ASSERT_EQ(chmod(from_.c_str(), 0644), 0);
    EXPECT_TRUE(trueAsOrdinaryUser(
        [&] { return copy(KVCOPY_COUNT_GIVEN, 3 * kMebi) == kFailed && copy(KVCOPY_COUNT_GIVEN, kMebi) == kFailed; }));
    makeFile(from_, "less than a stream's buffer");
    EXPECT_TRUE(trueAsOrdinaryUser([&] { return copy(0) == kFailed; }));
}

// ---- the thread bodies -------------------------------------------------------------------------------------------

/// A job with buffers of its own.
class Job {
public:
    explicit Job(std::uint32_t blockSize) {
        record.blockSize = blockSize;
        record.source = record.destination = KVFILE_INVALID;
        for (std::size_t i = 0; i < 2; ++i) {
            memory_[i].assign(blockSize, '?');
            record.buffers[i] = memory_[i].data();
        }
    }

    /// Runs a body on a thread of its own to its end.
    void run(kvOSThreadStart body) {
        kvOSThreadRec* const thread = kvOSCreateThread(nullptr, 0, body, &record);
        ASSERT_NE(thread, nullptr);
        std::uint32_t code = 1;
        while (code != 0) kvOSGetExitCodeThread(thread, &code);
        kvOSCloseThread(thread);
    }

    std::string buffer(std::size_t i) const { return memory_[i].substr(0, record.lengths[i]); }

    kvOSFastCopyJob record{};

private:
    std::array<std::string, 2> memory_;
};

TEST_F(FastCopy, TheReaderStopsAtOnceWhenToldSoAheadOfIt) {
    Job job(16);
    job.record.readDone = 1;
    job.record.bytesRead = 7;
    job.run(_kvOSCopyFileFastRead);
    EXPECT_EQ(job.record.bytesRead, 0u);
    EXPECT_EQ(job.record.failure, 0);
}

TEST_F(FastCopy, TheReaderFillsOneBufferAfterTheOther) {
    makeFile(from_, "0123456789abcdefXYZ");
    Job job(16);
    job.record.limit = 100;
    job.record.source = kvOSCreateFile(from_.c_str(), KVFILE_READ, 1, nullptr, KVFILE_OPEN_EXISTING, 0, 0);
    job.run(_kvOSCopyFileFastRead);
    EXPECT_EQ(job.record.bytesRead, 19u);
    EXPECT_EQ(job.record.readDone, 1u);
    EXPECT_EQ(job.record.states[0], 2u);
    EXPECT_EQ(job.record.states[1], 2u);
    EXPECT_EQ(job.record.offsets[1], 16u);
    EXPECT_EQ(job.buffer(0), "0123456789abcdef");
    EXPECT_EQ(job.buffer(1), "XYZ");
    kvOSCloseFile(job.record.source);
}

TEST_F(FastCopy, TheReaderStopsWithTheBlockThatReachesTheLimit) {
    makeFile(from_, std::string(64, 'x'));
    Job job(16);
    job.record.limit = 32;
    job.record.source = kvOSCreateFile(from_.c_str(), KVFILE_READ, 1, nullptr, KVFILE_OPEN_EXISTING, 0, 0);
    job.run(_kvOSCopyFileFastRead);
    EXPECT_EQ(job.record.bytesRead, 32u);
    EXPECT_EQ(kvOSTell(job.record.source), 32) << "no further read, which would wait for a buffer as well";
    EXPECT_EQ(job.record.states[0], 2u);
    EXPECT_EQ(job.record.states[1], 2u);
    kvOSCloseFile(job.record.source);
}

TEST_F(FastCopy, TheReaderWithoutALimitStopsBehindOneBlock) {
    makeFile(from_, std::string(64, 'x'));
    Job job(16);
    job.record.source = kvOSCreateFile(from_.c_str(), KVFILE_READ, 1, nullptr, KVFILE_OPEN_EXISTING, 0, 0);
    job.run(_kvOSCopyFileFastRead);
    EXPECT_EQ(job.record.bytesRead, 16u);
    EXPECT_EQ(job.record.states[1], 0u);
    kvOSCloseFile(job.record.source);
}

TEST_F(FastCopy, AReadThatFailsIsMarked) {
    Job job(16);
    job.run(_kvOSCopyFileFastRead);
    EXPECT_EQ(job.record.failure, -1);
    EXPECT_EQ(job.record.readDone, 1u);
}

TEST_F(FastCopy, TheWriterStopsAtOnceWhenToldSoAheadOfIt) {
    Job job(16);
    job.record.writeDone = 1;
    job.record.bytesWritten = 7;
    job.run(_kvOSCopyFileFastWrite);
    EXPECT_EQ(job.record.bytesWritten, 0u);
}

TEST_F(FastCopy, TheWriterWritesWhatIsThereOnceTheReaderHasStopped) {
    Job job(16);
    job.record.readDone = 1;
    job.record.lengths[0] = 16;
    job.record.states[0] = 2;
    job.record.lengths[1] = 3;  // its state does not count any more
    job.record.limit = 38;
    std::uint64_t done = 0;
    std::uint32_t permille = 0;
    job.record.progressBytes = &done;
    job.record.progressPermille = &permille;
    job.record.destination = kvOSCreateFile(to_.c_str(), KVFILE_WRITE, 1, nullptr, KVFILE_CREATE_NEW, 0, 0);
    job.run(_kvOSCopyFileFastWrite);
    kvOSCloseFile(job.record.destination);
    EXPECT_EQ(job.record.bytesWritten, 19u);
    EXPECT_EQ(job.record.writeDone, 1u);
    EXPECT_EQ(job.record.lengths[0], 0u);
    EXPECT_EQ(job.record.states[0], 0u);
    EXPECT_EQ(done, 19u);
    EXPECT_EQ(permille, 500u);
    EXPECT_EQ(contentOf(to_), std::string(19, '?'));
}

TEST_F(FastCopy, TheWriterTellsHowFarItIsAfterEachBlock) {
    Job job(16);
    job.record.readDone = 1;
    job.record.lengths[0] = 16;
    job.record.lengths[1] = 3;
    job.record.limit = 38;
    std::uint64_t done = 0;
    std::uint32_t permille = 0;
    job.record.progressBytes = &done;
    job.record.progressPermille = &permille;
    ScriptedStream stream("wb");
    stream.errors = {ScriptedStream::kPass, EIO};
    job.record.destination = stream.handle();
    job.record.destinationName = "/no/such/folder/to";
    job.run(_kvOSCopyFileFastWrite);
    EXPECT_EQ(job.record.failure, -1) << "the second block found no place";
    EXPECT_EQ(done, 16u) << "what the first one told";
    EXPECT_EQ(permille, 421u);
}

TEST_F(FastCopy, ThousandthsThatThirtyTwoBitsDoNotTellAreAllOnes) {
    Job job(8 << 20);
    job.record.readDone = 1;
    job.record.lengths[0] = 8 << 20;
    std::uint32_t permille = 0;
    job.record.progressPermille = &permille;
    for (const auto& [limit, expected] : {std::pair{8u << 19, 2000u}, std::pair{2u, 4194304000u}, std::pair{1u, ~0u}}) {
        job.record.writeDone = 0;
        job.record.lengths[0] = 8 << 20;
        job.record.limit = limit;
        job.record.destination = kvOSCreateFile(to_.c_str(), KVFILE_WRITE, 1, nullptr, KVFILE_CREATE_ALWAYS, 0, 0);
        job.run(_kvOSCopyFileFastWrite);
        kvOSCloseFile(job.record.destination);
        EXPECT_EQ(permille, expected) << limit;
    }
}

TEST_F(FastCopy, AFullBufferWithoutBytesIsPassedOverWhileTheReaderRuns) {
    Job job(16);
    job.record.states[0] = job.record.states[1] = 2;
    job.record.lengths[1] = 3;
    job.record.destination = kvOSCreateFile(to_.c_str(), KVFILE_WRITE, 1, nullptr, KVFILE_CREATE_NEW, 0, 0);
    std::thread reader([&] {
        for (auto& state : job.record.states) {
            while (std::atomic_ref(state).load() != 0) std::this_thread::yield();
        }
        std::atomic_ref(job.record.readDone).store(1);
    });
    job.run(_kvOSCopyFileFastWrite);
    reader.join();
    kvOSCloseFile(job.record.destination);
    EXPECT_EQ(job.record.failure, 0);
    EXPECT_EQ(job.record.bytesWritten, 3u);
    EXPECT_EQ(contentOf(to_), "???");
}

TEST_F(FastCopy, ABlockThatIsRefusedBehindTheReadersEndGoesThroughAnotherOpen) {
    makeFile(to_, "0123456789");
    Job job(16);
    job.record.readDone = 1;
    job.record.lengths[0] = 3;
    job.record.offsets[0] = 4;
    job.record.states[0] = 2;
    job.record.destinationName = to_.c_str();
    job.run(_kvOSCopyFileFastWrite);  // its destination is the handle of no file
    EXPECT_EQ(job.record.failure, 0);
    EXPECT_EQ(job.record.bytesWritten, 3u);
    EXPECT_EQ(contentOf(to_), "0123???789");
}

TEST_F(FastCopy, ARefusedBlockThatIsNotTheLastIsAFailure) {
    makeFile(to_, "0123456789");
    Job job(16);
    job.record.readDone = 1;
    job.record.lengths[0] = 3;
    job.record.lengths[1] = 2;
    job.record.states[0] = job.record.states[1] = 2;
    job.record.destinationName = to_.c_str();
    job.run(_kvOSCopyFileFastWrite);
    EXPECT_EQ(job.record.failure, -1);
    EXPECT_EQ(contentOf(to_), "0123456789");
}

TEST_F(FastCopy, ABlockThatIsRefusedAheadOfTheReadersEndIsAFailure) {
    makeFile(to_, "0123456789");
    Job job(16);
    job.record.lengths[0] = 3;
    job.record.states[0] = 2;
    job.record.destinationName = to_.c_str();
    job.run(_kvOSCopyFileFastWrite);
    EXPECT_EQ(job.record.failure, -1);
    EXPECT_EQ(job.record.writeDone, 1u);
    EXPECT_EQ(contentOf(to_), "0123456789");
    job.record.readDone = 1;
    job.record.writeDone = 0;
    job.record.failure = 0;
    job.record.destinationName = "/no/such/folder/to";
    job.run(_kvOSCopyFileFastWrite);
    EXPECT_EQ(job.record.failure, -1);
}

TEST_F(FastCopy, NoJobIsNoWork) {
    EXPECT_EQ(_kvOSCopyFileFastRead(nullptr), nullptr);
    EXPECT_EQ(_kvOSCopyFileFastWrite(nullptr), nullptr);
}

}  // namespace
