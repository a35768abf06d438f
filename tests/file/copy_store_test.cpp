// Copies to and from a store. An object is made by the close of the one handle that wrote it; the read at the end of
// one fails. The store talks no TLS, so that it refuses every deletion: what is replaced is still there until then.
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "file/s3_fixture.h"
#include "kvos/attributes.h"
#include "kvos/copy.h"
#include "kvos/thread.h"

namespace kvtest {
namespace {

constexpr std::uint32_t kFailed = 0xFFFFFFFF;
constexpr std::size_t kMiB = 1048576;
constexpr std::size_t kSizes[] = {0, 100, kMiB, kMiB + 100};

std::string bytes(std::size_t count) {
    std::string text(count, 'x');
    for (std::size_t i = 0; i < count; i += 101) text[i] = static_cast<char>(i / 101);
    return text;
}

class CopyStore : public S3Test {
protected:
    std::uint32_t copyFast(const std::string& from, const std::string& to, std::uint64_t count) {
        done_ = count;
        return kvOSCopyFileFast(from.c_str(), to.c_str(), KVCOPY_COUNT_GIVEN, &done_, nullptr, nullptr);
    }
    static std::uint32_t extract(const std::string& from, const std::string& to, std::uint64_t offset,
                                 std::uint64_t count) {
        return kvOSExtractFileFast(from.c_str(), to.c_str(), 0, offset, count, 0, nullptr, nullptr, nullptr);
    }

    /// The object holds just these bytes, and nothing else is left in the store; there is none where there are none.
    void expectObject(const std::string& content) const {
        const std::optional<std::string> object = store_.content("clip");
        EXPECT_EQ(object.has_value(), !content.empty());
        EXPECT_TRUE(object.value_or("") == content) << object.value_or("").size() << " bytes";
        EXPECT_EQ(store_.keys().size(), content.empty() ? 0u : 1u);
    }

    ScriptedStore store_;
    const std::string clip_ = store_.locator("clip");
    const ScratchFolder scratch_;
    const std::string file_ = scratch_ / "file";
    std::uint64_t done_ = 0;
    CapturedMessages messages_;
};

// ---- to a store --------------------------------------------------------------------------------------------------

TEST_F(CopyStore, ACopyToAStoreHasItsLastBlock) {
    for (const std::size_t size : kSizes) {
        SCOPED_TRACE(size);
        makeFile(file_, bytes(size));
        EXPECT_EQ(kvOSCopyFile(file_.c_str(), clip_.c_str(), 0), size % kMiB != 0 ? 1u : 0u);
        expectObject(bytes(size));
        store_.remove("clip");
    }
}

TEST_F(CopyStore, AFileMovedToAStoreIsThereWholeOnceItsSourceIsGone) {
    for (const std::size_t size : kSizes) {
        SCOPED_TRACE(size);
        makeFile(file_, bytes(size));
        EXPECT_EQ(kvOSMoveFile(file_.c_str(), clip_.c_str()), size % kMiB != 0 ? 1u : 0u);
        EXPECT_FALSE(std::filesystem::exists(file_));
        expectObject(bytes(size));
        store_.remove("clip");
    }
}

TEST_F(CopyStore, AFastCopyToAStoreHasEveryByte) {
    for (const std::size_t size : kSizes) {
        SCOPED_TRACE(size);
        makeFile(file_, bytes(size));
        EXPECT_EQ(copyFast(file_, clip_, size), 0u);
        EXPECT_EQ(done_, size);
        expectObject(bytes(size));
        store_.remove("clip");
    }
}

TEST_F(CopyStore, AnExtractToAStoreHasEveryByteAndMakesNothingOfNoBytes) {
    for (const std::size_t size : kSizes) {
        SCOPED_TRACE(size);
        makeFile(file_, bytes(size));
        EXPECT_EQ(extract(file_, clip_, 0, size), 1u);
        expectObject(bytes(size));
        store_.remove("clip");
    }
}

TEST_F(CopyStore, AnOlderObjectThatCanNotBeDeletedIsReplacedWhole) {
    for (const std::size_t older : {std::size_t{500}, 3 * kMiB}) {
        for (const std::size_t size : {std::size_t{100}, kMiB + 100}) {
            SCOPED_TRACE(std::to_string(size) + " bytes in place of " + std::to_string(older));
            makeFile(file_, bytes(size));
            const auto putOlder = [&] { store_.put("clip", std::string(older, 'o')); };
            putOlder();
            EXPECT_EQ(kvOSCopyFile(file_.c_str(), clip_.c_str(), 0), 1u);
            expectObject(bytes(size));
            putOlder();
            EXPECT_EQ(copyFast(file_, clip_, size), 0u);
            expectObject(bytes(size));
            putOlder();
            EXPECT_EQ(extract(file_, clip_, 0, size), 1u);
            expectObject(bytes(size));
            putOlder();
            EXPECT_EQ(kvOSMoveFile(file_.c_str(), clip_.c_str()), 1u);
            expectObject(bytes(size));
        }
    }
}

TEST_F(CopyStore, ABlockOfAFastCopyThatIsRefusedOnceGoesThroughTheSameHandle) {
    store_.put("clip", std::string(500, 'o'));
    OwnedFile destination = openFile(clip_, KVFILE_WRITE, KVFILE_OPEN_EXISTING);
    EXPECT_EQ(kvOSWriteFile(destination.handle(), bytes(100).data(), 100, nullptr, nullptr), 100u);
    EXPECT_EQ(kvOSSeek(destination.handle(), 501), -1);  // from here on a write is refused until the next seek
    std::string block(50, 'n');
    kvOSFastCopyJob job{};
    job.buffers[0] = block.data();
    job.lengths[0] = 50;
    job.offsets[0] = 100;
    job.states[0] = 2;
    job.readDone = 1;
    job.destination = destination.handle();
    job.destinationName = clip_.c_str();
    kvOSThreadRec* const writer = kvOSCreateThread(nullptr, 0, _kvOSCopyFileFastWrite, &job);
    for (std::uint32_t code = 1; code != 0;) kvOSGetExitCodeThread(writer, &code);
    kvOSCloseThread(writer);
    EXPECT_EQ(job.failure, 0);
    EXPECT_EQ(job.bytesWritten, 50u);
    destination.close();
    expectObject(bytes(100) + block);
}

TEST_F(CopyStore, AnOlderObjectIsKeptWhenAsked) {
    makeFile(file_, bytes(100));
    store_.put("clip", "older");
    EXPECT_EQ(kvOSCopyFile(file_.c_str(), clip_.c_str(), 1), 0u);
    EXPECT_EQ(errno, EEXIST);
    expectObject("older");
}

TEST_F(CopyStore, AnObjectIsCopiedWithinItsStore) {
    store_.put("from", bytes(kMiB + 100));
    EXPECT_EQ(kvOSCopyFile(store_.locator("from").c_str(), clip_.c_str(), 0), 1u);
    EXPECT_TRUE(store_.content("clip") == bytes(kMiB + 100));
}

// ---- from a store ------------------------------------------------------------------------------------------------

TEST_F(CopyStore, AnObjectIsCopiedWithOneWhateverItsSize) {
    for (const std::size_t size : kSizes) {
        SCOPED_TRACE(size);
        store_.put("clip", bytes(size));
        EXPECT_EQ(kvOSCopyFile(clip_.c_str(), file_.c_str(), 0), 1u);
        EXPECT_TRUE(contentOf(file_) == bytes(size));
    }
}

TEST_F(CopyStore, AnObjectIsMovedAndStaysWhereItCanNotBeDeleted) {
    for (const std::size_t size : kSizes) {
        SCOPED_TRACE(size);
        store_.put("clip", bytes(size));
        EXPECT_EQ(kvOSMoveFile(clip_.c_str(), file_.c_str()), 1u);
        EXPECT_TRUE(contentOf(file_) == bytes(size));
        EXPECT_TRUE(store_.content("clip") == bytes(size));
    }
}

TEST_F(CopyStore, AFastCopyOfAnObjectHasEveryByteButOfAnEmptyOneFails) {
    for (const std::size_t size : kSizes) {
        SCOPED_TRACE(size);
        store_.put("clip", bytes(size));
        EXPECT_EQ(copyFast(clip_, file_, size), size != 0 ? 0u : kFailed);
        EXPECT_TRUE(contentOf(file_) == bytes(size));
    }
}

TEST_F(CopyStore, AFastCopyOfMoreThanTheSizeFailsWhereThatIsAMultipleOfTheBlock) {
    for (const std::size_t size : kSizes) {
        SCOPED_TRACE(size);
        store_.put("clip", bytes(size));
        EXPECT_EQ(copyFast(clip_, file_, size + 5), size % kMiB != 0 ? 0u : kFailed);
    }
}

TEST_F(CopyStore, ARangeOfAnObjectIsExtracted) {
    for (const std::size_t size : kSizes) {
        SCOPED_TRACE(size);
        store_.put("clip", bytes(size));
        EXPECT_EQ(extract(clip_, file_, 0, size), 1u);
        EXPECT_TRUE(contentOf(file_) == bytes(size));
    }
    EXPECT_EQ(extract(clip_, file_, 50, kMiB), 1u);
    EXPECT_TRUE(contentOf(file_) == bytes(kMiB + 100).substr(50, kMiB));
    EXPECT_EQ(messages_.count("kvOSExtractFileFast"), 0u);
}

TEST_F(CopyStore, TheEndOfAnObjectIsAReadThatFailsWithoutAReason) {
    store_.put("clip", bytes(100));
    EXPECT_EQ(extract(clip_, file_, 90, 20), 1u) << "the destination's absence left a last error, which is no reason";
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(contentOf(file_), bytes(100).substr(90));
    EXPECT_EQ(messages_.count("kvOSExtractFileFast Read FAILED 0 0x0 "), 1u) << messages_.text();
}

TEST_F(CopyStore, ABeginningBehindTheEndOfAnObjectIsRefusedWithoutAReason) {
    store_.put("clip", bytes(100));
    EXPECT_EQ(extract(clip_, file_, 101, 1), 0u);
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(messages_.count("\nERROR:kvOSExtractFileFast(0, 0x00000000) "), 1u) << messages_.text();
}

}  // namespace
}  // namespace kvtest
