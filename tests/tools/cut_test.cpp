// kv cut.
#include <filesystem>
#include <string>

#include "servers/nginx.h"
#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;

Outcome cut(const std::string& from, const std::string& to, const std::string& first, const std::string& bytes) {
    return runKv({"cut", from, to, "--from", first, "--bytes", bytes});
}

TEST(Cut, GivesTheRange) {
    const ScratchFolder folder;
    makeFile(folder / "from", "0123456789");
    makeFile(folder / "to", "old and longer");
    const Outcome run = cut(folder / "from", folder / "to", "3", "4");
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(contentOf(folder / "to"), "3456");
    EXPECT_EQ(cut(folder / "from", folder / "to", "10", "0").exit, 0);
    EXPECT_EQ(contentOf(folder / "to"), "");
}

TEST(Cut, GivesALongRangeOfAServersFile) {
    const Nginx server;
    const ScratchFolder folder;
    std::string content;
    while (content.size() < (std::size_t{9} << 20)) content += everyByte() + std::to_string(content.size());
    server.makeDocument("/clip", content);
    EXPECT_EQ(cut(server.url("/clip"), folder / "to", "1000", "6000000").exit, 0);
    EXPECT_TRUE(contentOf(folder / "to") == content.substr(1000, 6000000));
    EXPECT_EQ(cut(server.url("/clip"), folder / "to", std::to_string(content.size() - 3), "3").exit, 0);
    EXPECT_EQ(contentOf(folder / "to"), content.substr(content.size() - 3));
}

TEST(Cut, ARangeBeyondTheEndIsRefusedAndTheDestinationKept) {
    const ScratchFolder folder;
    makeFile(folder / "from", "0123456789");
    makeFile(folder / "to", "old");
    for (const auto& [first, bytes] :
         {std::pair{"8", "3"}, {"11", "0"}, {"18446744073709551615", "1"}, {"1", "18446744073709551615"}}) {
        const Outcome run = cut(folder / "from", folder / "to", first, bytes);
        EXPECT_EQ(run.exit, 1);
        EXPECT_EQ(run.err, "kv: '" + (folder / "from") + "' has 10 bytes, which end ahead of the range\n");
    }
    EXPECT_EQ(contentOf(folder / "to"), "old");
}

TEST(Cut, ARangeOfWhatTellsNoLengthEndsEarlyAndIsTold) {
    const Nginx server;
    const ScratchFolder folder;
    server.makeDocument("/clip", "0123456789");
    EXPECT_EQ(cut(server.url("/chunked/clip"), folder / "to", "0", "4").exit, 0);
    EXPECT_EQ(contentOf(folder / "to"), "0123");
    const Outcome run = cut(server.url("/chunked/clip"), folder / "to", "0", "40");
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: '" + server.url("/chunked/clip") + "' ended early, after 10 bytes\n");
    EXPECT_EQ(contentOf(folder / "to"), "0123");
    EXPECT_EQ(cut(server.url("/chunked/clip"), folder / "to", "5", "2").exit, 1);  // which it can not do
}

TEST(Cut, TheRangeIsAskedFor) {
    EXPECT_EQ(runKv({"cut", "a", "b"}).exit, 2);
    EXPECT_EQ(runKv({"cut", "a", "b", "--from", "1"}).exit, 2);
    EXPECT_EQ(cut("a", "b", "-1", "2").exit, 2);
    EXPECT_EQ(cut("a", "b", "1", "two").exit, 2);
}

}  // namespace
