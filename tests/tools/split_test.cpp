// kv split.
#include <string>

#include "tools/run_kv.h"

namespace {

using namespace kvtest;

TEST(Split, ShowsThePartsAsATable) {
    const Outcome run = runKv({"split", "/media/clip0012.tga"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "drive      -\n"
              "directory  /media/\n"
              "name       clip0012\n"
              "extension  .tga\n"
              "base       clip\n"
              "number     12\n"
              "digits     4\n");
}

TEST(Split, ShowsThePartsAsJson) {
    const Outcome run = runKv({"split", "--json", "C:/media/clip0012.tga"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.json(), nlohmann::json::parse(R"({"drive": "C:", "directory": "/media/", "name": "clip0012",
        "extension": ".tga", "base": "clip", "number": 12, "digits": 4})"));
}

TEST(Split, ANameWithoutANumberShowsNone) {
    const Outcome run = runKv({"split", "/two words/gr\u00FC\u00DFe"});
    EXPECT_TRUE(run.out.ends_with("base       gr\u00FC\u00DFe\nnumber     -\ndigits     -\n")) << run.out;
    EXPECT_EQ(runKv({"split", "--json", "/a/b"}).json()["digits"], 0);
}

TEST(Split, APathWithoutAFolderIsItsOwnAsTheLibrarySays) {
    EXPECT_EQ(runKv({"split", "--json", "name.ext"}).json()["directory"], "name.ext/");
}

TEST(Split, TheQueryOfALocatorIsNoPart) {
    const auto parts = runKv({"split", "--json", "http://host/a/b.mov?x=1.2"}).json();
    EXPECT_EQ(parts["name"], "b");
    EXPECT_EQ(parts["extension"], ".mov");
}

TEST(Split, AnEmptyPathHasNoParts) {
    const Outcome run = runKv({"split", "--json", ""});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.json()["name"], "");
}

TEST(Split, APathTooLongIsTold) {
    const std::string path = "/" + std::string(4096, 'x');
    expectFailure(runKv({"split", path}), "kv: cannot split '" + path + "': File name too long\n");
}

TEST(Split, BytesThatAreNoUtf8AreReplacedInJson) {
    EXPECT_EQ(runKv({"split", "--json", "/a/odd\xFF.mov"}).json()["name"], "odd\uFFFD");
}

}  // namespace
