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
    std::optional<OwnedFile> other;  // open until the end
    std::thread thread;
    bool hasFailed = false;  // what the thread found
};

/// Made ahead of the first request, so that it goes behind what the library made with that.
AtTheEnd& atTheEnd() {
    static AtTheEnd object;
    return object;
}

/// Prepares in a child process what is done at its end, and ends it. The action has to succeed, `message` to be said.
/// What the action needs belongs into the object, since the frame of `prepare` is gone by then.
void expectAtTheEnd(const std::function<void(AtTheEnd&)>& prepare, const char* message = "") {
    EXPECT_EXIT(
        {
            alarm(kPatient);
            prepare(atTheEnd());
            std::exit(0);
        },
        testing::ExitedWithCode(kAsExpected), message);
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
    expectAtTheEnd(
        [&](AtTheEnd& end) {
            end.file.emplace(openForReading(clip()));
            s3cRequestBlock(end.file->handle(), 0, 1000000);
            end.action = [&end] { return failsWithAnError(*end.file); };
        },
        "S3Error: Failure on second try read block 0-");
}

TEST_F(S3ProcessEnd, AReaderInAnotherThreadIsReleased) {
    store.hold("GetObject");
    expectAtTheEnd([&](AtTheEnd& end) {
        end.file.emplace(openForReading(clip()));
        s3cRequestBlock(end.file->handle(), 0, 1000000);
        end.thread = std::thread([&end] { end.hasFailed = failsWithAnError(*end.file); });
        end.action = [&end] {
            end.thread.join();
            return end.hasFailed;
        };
    });
}

TEST_F(S3ProcessEnd, BlocksThatAreThereAreStillRead) {
    expectAtTheEnd([&](AtTheEnd& end) {
        end.file.emplace(openForReading(clip()));
        readSome(*end.file, 10);
        end.action = [&end] {
            const std::string bytes = readSome(*end.file, 2);
            return bytes.size() == 2 && bytes[0] == patternAt(10) && bytes[1] == patternAt(11);
        };
    });
}

TEST_F(S3ProcessEnd, AWrittenObjectIsStillFinished) {
    expectAtTheEnd([&](AtTheEnd& end) {
        end.other.emplace(openForReading(clip()));
        readSome(*end.other, 10);
        end.file.emplace(openNew(store.locator("new.mxf")));
        end.action = [&end] {
            kvOSWriteFile(end.file->handle(), "content", 7, nullptr, nullptr);
            return end.file->close() == 1;
        };
    });
    EXPECT_EQ(store.content("new.mxf"), "content");
}

}  // namespace
}  // namespace kvtest
