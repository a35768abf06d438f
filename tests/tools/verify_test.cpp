// kv verify.
#include <string>

#include "servers/nginx.h"
#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;

class Verify : public testing::Test {
protected:
    Outcome verify(std::string_view first, std::string_view second) {
        makeFile("a", first);
        makeFile("b", second);
        return runKv({"verify", "a", "b"});
    }
};

TEST_F(Verify, FilesThatAreTheSameAreNotWorthAWord) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{4} << 20, std::size_t{9} << 20}) {
        const Outcome run = verify(std::string(size, 'x'), std::string(size, 'x'));
        EXPECT_EQ(run.exit, 0) << size;
        EXPECT_EQ(run.out + run.err, "");
    }
}

TEST_F(Verify, TheFirstByteThatDiffersIsTold) {
    const std::string first((std::size_t{5} << 20) + 3, 'x');
    for (const std::size_t at : {std::size_t{0}, std::size_t{4} << 20, first.size() - 1}) {
        std::string second = first;
        second[at] = 'y';
        const Outcome run = verify(first, second);
        EXPECT_EQ(run.exit, 1);
        EXPECT_EQ(run.err, "kv: 'a' and 'b' differ: byte " + std::to_string(at) + " is the first\n");
    }
}

TEST_F(Verify, SizesThatDifferAreTold) {
    EXPECT_EQ(verify("abc", "abcd").err, "kv: 'a' and 'b' differ: 3 and 4 bytes\n");
    EXPECT_EQ(verify("", "x").err, "kv: 'a' and 'b' differ: 0 and 1 bytes\n");
}

TEST_F(Verify, AFileThatCanNotBeOpenedIsToldWhicheverItIs) {
    makeFile("a", "x");
    EXPECT_EQ(runKv({"verify", "a", "none"}).err, "kv: cannot open 'none': No such file or directory\n");
    EXPECT_EQ(runKv({"verify", "none", "a"}).exit, 1);
    EXPECT_EQ(runKv({"verify", ".", "."}).err, "kv: cannot read '.': Is a directory\n");
}

TEST_F(Verify, ServersFilesAreComparedAsWell) {
    const Nginx server;
    const std::string content((std::size_t{5} << 20) + 3, 'x');
    server.makeDocument("/clip", content);
    makeFile("a", content);
    EXPECT_EQ(runKv({"verify", "a", server.url("/clip")}).exit, 0);
    EXPECT_EQ(runKv({"verify", server.url("/chunked/clip"), server.url("/clip")}).exit, 0);
    makeFile("a", content.substr(1));
    const Outcome run = runKv({"verify", server.url("/chunked/clip"), "a"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: '" + server.url("/chunked/clip") + "' and 'a' differ: 'a' ends after " +
                           std::to_string(content.size() - 1) + " bytes\n");
}

}  // namespace
