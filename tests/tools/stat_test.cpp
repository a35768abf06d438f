// kv stat.
#include <cstdlib>
#include <string>
#include <sys/stat.h>

#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;

/// Gives a file a time of the last change and of the last access.
void setTimes(const std::string& path, std::time_t modified, std::time_t accessed) {
    const timespec times[2] = {{accessed, 0}, {modified, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

TEST(Stat, ShowsAFileAsATable) {
    setenv("TZ", "UTC-2", 1);
    makeFile("two words", std::string(1536, 'x'));
    setTimes("two words", 1795280709, 1795280710);
    const Outcome run = runKv({"stat", "two words"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(
        run.out.starts_with("name       two words\n"
                            "type       file\n"
                            "size       1.5 KiB (1536 bytes)\n"
                            "read-only  no\n"
                            "modified   2026-11-21 19:05:09\n"
                            "changed    "))
        << run.out;
    EXPECT_TRUE(run.out.ends_with("\naccessed   2026-11-21 19:05:10\n")) << run.out;
}

TEST(Stat, ShowsAFileAsJsonWithExactBytesAndTimesInUtc) {
    setenv("TZ", "UTC-2", 1);
    makeFile("clip", std::string(1536, 'x'));
    setTimes("clip", 1795280709, 1795280710);
    const auto all = runKv({"stat", "--json", "clip"}).json();
    ASSERT_EQ(all.size(), 1u);
    EXPECT_EQ(all[0]["name"], "clip");
    EXPECT_EQ(all[0]["type"], "file");
    EXPECT_EQ(all[0]["size"], 1536);
    EXPECT_EQ(all[0]["readOnly"], false);
    EXPECT_EQ(all[0]["modified"], "2026-11-21T17:05:09Z");
    EXPECT_EQ(all[0]["accessed"], "2026-11-21T17:05:10Z");
    EXPECT_EQ(all[0]["changed"].get<std::string>().size(), 20u);
}

TEST(Stat, AFolderHasNoSize) {
    std::filesystem::create_directory("folder");
    const auto all = runKv({"stat", "--json", "folder"}).json();
    EXPECT_EQ(all[0]["type"], "folder");
    EXPECT_TRUE(all[0]["size"].is_null());
    EXPECT_NE(runKv({"stat", "folder"}).out.find("size       -\n"), std::string::npos);
}

TEST(Stat, AnEmptyFileHasTheSizeZero) {
    makeFile("empty");
    EXPECT_EQ(runKv({"stat", "--json", "empty"}).json()[0]["size"], 0);
    EXPECT_NE(runKv({"stat", "empty"}).out.find("size       0 bytes\n"), std::string::npos);
}

TEST(Stat, AFilePastFourGibibytesHasItsWholeSize) {
    makeFile("large");
    std::error_code error;
    std::filesystem::resize_file("large", 5368709123u, error);
    if (error) GTEST_SKIP() << "no file with holes here: " << error.message();
    EXPECT_EQ(runKv({"stat", "--json", "large"}).json()[0]["size"], 5368709123u);
}

TEST(Stat, AReadOnlyFileIsShownAsSuch) {
    makeFile("clip");
    ASSERT_EQ(chmod("clip", 0444), 0);
    EXPECT_EQ(runKv({"stat", "--json", "clip"}).json()[0]["readOnly"], true);
    EXPECT_NE(runKv({"stat", "clip"}).out.find("read-only  yes\n"), std::string::npos);
}

TEST(Stat, ADeviceIsNeitherFileNorFolder) {
    const auto all = runKv({"stat", "--json", "/dev/null"}).json();
    EXPECT_EQ(all[0]["type"], "other");
    EXPECT_TRUE(all[0]["size"].is_null());
}

TEST(Stat, APipeIsNotWaitedFor) {
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    EXPECT_EQ(runKv({"stat", "--json", "pipe"}).json()[0]["type"], "other");
}

TEST(Stat, MissingOnesAreToldAndTheOthersShown) {
    makeFile("a");
    makeFile("b");
    const Outcome table = runKv({"stat", "a", "none", "b"});
    EXPECT_EQ(table.exit, 1);
    EXPECT_EQ(table.err, "kv: cannot find 'none': No such file or directory\n");
    EXPECT_NE(table.out.find("name       a\n"), std::string::npos);
    EXPECT_NE(table.out.find("\n\nname       b\n"), std::string::npos);

    const Outcome json = runKv({"stat", "--json", "a", "none", "b"});
    EXPECT_EQ(json.exit, 1);
    EXPECT_EQ(json.json().size(), 2u);
}

TEST(Stat, WithNothingFoundJsonIsAnEmptyArray) {
    const Outcome run = runKv({"stat", "none", "--json"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.json(), nlohmann::json::array());
}

TEST(Stat, BytesThatAreNoUtf8AreReplacedInJson) {
    const std::string name = "odd\xFF\xC3name";
    makeFile(name, "x");
    if (!std::filesystem::exists(name)) GTEST_SKIP() << "such names are refused here";
    const Outcome run = runKv({"stat", "--json", name});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.json()[0]["name"], "odd\uFFFD\uFFFDname");
    EXPECT_NE(runKv({"stat", name}).out.find(name), std::string::npos);
}

TEST(Stat, ANameInBracketsIsOneName) {
    makeFile("[a,b]");
    EXPECT_EQ(runKv({"stat", "--json", "[a,b]"}).json()[0]["name"], "[a,b]");
}

TEST(Stat, LocatorsThatTheLibraryRefusesAreNotFound) {
    for (const char* locator : {"mem://clip", "http://host.invalid/clip", ""}) {
        const Outcome run = runKv({"stat", locator});
        EXPECT_EQ(run.exit, 1) << locator;
        EXPECT_EQ(run.out, "") << locator;
        EXPECT_TRUE(run.err.starts_with("kv: cannot find '" + std::string(locator) + "': ")) << run.err;
    }
}

}  // namespace
