// S3 handles of a process that ends: reads, writes and closes in the destructors of static objects, when requests that
// were under way have been abandoned and no new ones are made in other threads.
//
// The process is a child of the test, which holds the store. It ends by an alarm where it would wait for ever.
#include <cerrno>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <unistd.h>

#include "file/s3_fixture.h"
#include "support/sanitizers.h"

namespace kvtest {
namespace {

constexpr std::uint32_t kPatient = 60;  // seconds
constexpr int kAsExpected = 7;

/// What is done when the process ends, behind everything that the library does then for its requests.
class AtTheEnd {
public:
    AtTheEnd() = default;
    ~AtTheEnd() {
        if (action) _exit(action() ? kAsExpected : 1);
    }
    AtTheEnd(const AtTheEnd&) = delete;
    AtTheEnd& operator=(const AtTheEnd&) = delete;

    std::function<bool()> action;
    std::optional<OwnedFile> file;
    std::thread thread;
};

/// Made ahead of the first request, so that it goes behind what the library made with that.
AtTheEnd& atTheEnd() {
    static AtTheEnd object;
    return object;
}

bool failsWithAnError(const OwnedFile& file) {
    char bytes[10];
    std::uint32_t got = 77;
    errno = 0;
    return kvOSReadFile(file.handle(), bytes, sizeof bytes, &got, nullptr) == 0 && got == 0 && errno == EIO;
}

class S3ProcessEnd : public S3Test {
protected:
    void SetUp() override {
        if (kThreadSanitizer) GTEST_SKIP() << "it refuses to fork a process with threads";
        store.putPattern("clip.mxf", 20 * 1048576);
    }
    std::string clip() const { return store.locator("clip.mxf"); }

    ScriptedStore store;
};

TEST_F(S3ProcessEnd, AReadThatWaitsForAnAbandonedRequestFails) {
    store.hold("GetObject");
    EXPECT_EXIT(
        {
            alarm(kPatient);
            AtTheEnd& end = atTheEnd();
            end.file.emplace(openForReading(clip()));
            s3cRequestBlock(end.file->handle(), 0, 1000000);
            end.action = [&] { return failsWithAnError(*end.file); };
            std::exit(0);
        },
        testing::ExitedWithCode(kAsExpected), "S3Error: Failure on second try read block 0-");
}

TEST_F(S3ProcessEnd, AReaderInAnotherThreadIsReleased) {
    store.hold("GetObject");
    EXPECT_EXIT(
        {
            alarm(kPatient);
            AtTheEnd& end = atTheEnd();
            end.file.emplace(openForReading(clip()));
            s3cRequestBlock(end.file->handle(), 0, 1000000);
            bool failed = false;
            end.thread = std::thread([&] { failed = failsWithAnError(*end.file); });
            end.action = [&] {
                end.thread.join();
                return failed;
            };
            std::exit(0);
        },
        testing::ExitedWithCode(kAsExpected), "");
}

TEST_F(S3ProcessEnd, BlocksThatAreThereAreStillRead) {
    EXPECT_EXIT(
        {
            alarm(kPatient);
            AtTheEnd& end = atTheEnd();
            end.file.emplace(openForReading(clip()));
            readSome(*end.file, 10);
            end.action = [&] {
                const std::string bytes = readSome(*end.file, 2);
                return bytes.size() == 2 && bytes[0] == patternAt(10) && bytes[1] == patternAt(11);
            };
            std::exit(0);
        },
        testing::ExitedWithCode(kAsExpected), "");
}

TEST_F(S3ProcessEnd, AWrittenObjectIsStillFinished) {
    EXPECT_EXIT(
        {
            alarm(kPatient);
            AtTheEnd& end = atTheEnd();
            const OwnedFile other = openForReading(clip());
            readSome(other, 10);
            end.file.emplace(openNew(store.locator("new.mxf")));
            end.action = [&] {
                kvOSWriteFile(end.file->handle(), "content", 7, nullptr, nullptr);
                return end.file->close() == 1;
            };
            std::exit(0);
        },
        testing::ExitedWithCode(kAsExpected), "");
    EXPECT_EQ(store.content("new.mxf"), "content");
}

}  // namespace
}  // namespace kvtest
