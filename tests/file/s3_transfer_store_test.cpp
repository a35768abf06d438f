// Objects of more than one part written to real stores, and read back in order and at random.
#include <algorithm>
#include <random>
#include <string>

#include "file/s3_fixture.h"
#include "servers/object_store.h"

namespace kvtest {
namespace {

using Engine = ObjectStore::Engine;
constexpr std::uint32_t kPart = 62914560;
constexpr std::uint32_t kMiB = 1048576;

class S3TransferStore : public S3Test, public testing::WithParamInterface<Engine> {
protected:
    ObjectStore store = ObjectStore::shared(GetParam());
};

std::string randomText(std::mt19937& random, std::size_t size) {
    std::string text(size, '\0');
    for (std::size_t i = 0; i + 4 <= size; i += 4) {
        const auto word = static_cast<std::uint32_t>(random());
        std::copy_n(reinterpret_cast<const char*>(&word), 4, text.data() + i);
    }
    return text;
}

TEST_P(S3TransferStore, ObjectOfTwoPartsComesBackAsItWasWritten) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const std::string key = "clips of \xC3\xA9t\xC3\xA9/take 1.mxf";
    std::string all = randomText(random, kPart + 3 * kMiB + 7);

    CapturedMessages messages;
    OwnedFile file = openNew(store.locator(key));
    ASSERT_TRUE(file.isOpen());
    for (std::size_t at = 0; at < all.size();) {
        const auto count = static_cast<std::uint32_t>(std::min<std::size_t>(7 * kMiB + 3, all.size() - at));
        ASSERT_EQ(kvOSWriteFile(file.handle(), all.data() + at, count, nullptr, nullptr), count);
        at += count;
    }
    kvOSSeek(file.handle(), kPart - 5);
    kvOSWriteFile(file.handle(), "rewritten!", 10, nullptr, nullptr);
    all.replace(kPart - 5, 10, "rewritten!");
    EXPECT_EQ(file.close(), 1u);
    EXPECT_EQ(messages.count("exception"), 0u) << messages.text();
    EXPECT_EQ(store.keys(), std::vector<std::string>{key});

    const OwnedFile read = openForReading(store.locator(key));
    ASSERT_TRUE(read.isOpen());
    for (std::size_t at = 0; at < all.size(); at += kMiB) {
        ASSERT_TRUE(readSome(read, kMiB) == all.substr(at, kMiB)) << at;
    }
    for (int i = 0; i < 20; ++i) {
        const std::size_t at = random() % all.size();
        kvOSSeek(read.handle(), static_cast<std::int64_t>(at));
        ASSERT_TRUE(readSome(read, 65536) == all.substr(at, 65536)) << at;
    }
}

TEST_P(S3TransferStore, SmallObjectIsOnePart) {
    const CapturedMessages messages;
    OwnedFile file = openNew(store.locator("note.txt"));
    kvOSWriteFile(file.handle(), "hello", 5, nullptr, nullptr);
    EXPECT_EQ(file.close(), 1u);
    EXPECT_EQ(store.content("note.txt"), "hello");
    EXPECT_EQ(store.keys(), std::vector<std::string>{"note.txt"});
}

INSTANTIATE_TEST_SUITE_P(, S3TransferStore, testing::Values(Engine::ceph, Engine::swift),
                         [](const auto& engine) { return engine.param == Engine::ceph ? "Ceph" : "Swift"; });

}  // namespace
}  // namespace kvtest
