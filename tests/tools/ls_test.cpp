// kv ls.
#include <algorithm>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;
using Names = std::vector<std::string>;

/// The names that a run of kv ls --json listed, in their order.
Names listed(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"ls", "--json"});
    Names names;
    for (const auto& entry : runKv(arguments).json()) names.push_back(entry["name"]);
    return names;
}

TEST(Ls, ShowsATableOfTypeSizeTimeAndName) {
    setenv("TZ", "UTC-2", 1);
    makeFile("clip 1.mov", std::string(1536, 'x'));
    std::filesystem::create_directory("frames");
    const timespec times[2] = {{1795280709, 0}, {1795280709, 0}};
    for (const char* name : {"clip 1.mov", "frames"}) ASSERT_EQ(utimensat(AT_FDCWD, name, times, 0), 0);
    const Outcome run = runKv({"ls", "."});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "TYPE       SIZE  MODIFIED             NAME\n"
              "file    1.5 KiB  2026-11-21 19:05:09  clip 1.mov\n"
              "folder        -  2026-11-21 19:05:09  frames\n");
}

TEST(Ls, JsonHasExactBytesAndTimesInUtc) {
    makeFile("clip", std::string(1536, 'x'));
    const timespec times[2] = {{1795280710, 0}, {1795280709, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, "clip", times, 0), 0);
    const auto all = runKv({"ls", "--json", "clip"}).json();
    ASSERT_EQ(all.size(), 1u);
    EXPECT_EQ(all[0]["type"], "file");
    EXPECT_EQ(all[0]["size"], 1536);
    EXPECT_EQ(all[0]["readOnly"], false);
    EXPECT_EQ(all[0]["modified"], "2026-11-21T17:05:09Z");
    EXPECT_EQ(all[0]["accessed"], "2026-11-21T17:05:10Z");
}

TEST(Ls, RelativePatternsWork) {
    std::filesystem::create_directory("sub");
    for (const char* name : {"b.mov", "a.mov", "a.wav", "sub/c.mov"}) makeFile(name);
    EXPECT_EQ(listed({"*.mov"}), (Names{"a.mov", "b.mov"}));
    EXPECT_EQ(listed({"a.*"}), (Names{"a.mov", "a.wav"}));
    EXPECT_EQ(listed({"?.wav"}), (Names{"a.wav"}));
    EXPECT_EQ(listed({"a.mov"}), (Names{"a.mov"}));
    EXPECT_EQ(listed({"./*.mov"}), (Names{"a.mov", "b.mov"}));
    EXPECT_EQ(listed({"sub/*"}), (Names{"c.mov"}));
    EXPECT_EQ(listed({"sub"}), (Names{"c.mov"}));
    EXPECT_EQ(listed({"sub/"}), (Names{"c.mov"}));
    EXPECT_EQ(listed({"sub/.."}), (Names{"a.mov", "a.wav", "b.mov", "sub"}));
}

TEST(Ls, AWorkingFolderWithWildcardsInItsNameIsNoHindrance) {
    std::filesystem::create_directory("take *?");
    std::filesystem::current_path("take *?");
    makeFile("a.mov");
    EXPECT_EQ(listed({"*.mov"}), (Names{"a.mov"}));
    EXPECT_EQ(listed({"."}), (Names{"a.mov"}));
}

TEST(Ls, PatternsDirectlyUnderTheRootWork) {
    const Names all = listed({"/"});
    EXPECT_NE(std::find(all.begin(), all.end(), "dev"), all.end());
    EXPECT_EQ(listed({"/de?"}), (Names{"dev"}));
    EXPECT_EQ(listed({"/*"}), all);
}

TEST(Ls, HiddenEntriesAreShownOnlyWhenAskedFor) {
    for (const char* name : {".hidden", "seen"}) makeFile(name);
    EXPECT_EQ(listed({"."}), (Names{"seen"}));
    EXPECT_EQ(listed({"*"}), (Names{"seen"}));
    EXPECT_EQ(listed({"-a", "."}), (Names{".hidden", "seen"}));
    EXPECT_EQ(listed({"--all", "*"}), (Names{".hidden", "seen"}));
    EXPECT_EQ(listed({".h*"}), (Names{".hidden"}));
    EXPECT_EQ(listed({".hidden"}), (Names{".hidden"}));
}

TEST(Ls, AFileThatAPatternFindsTwiceIsListedOnce) {
    makeFile("x.a");
    EXPECT_EQ(listed({"*a.*"}), listed({"*a"}));
    EXPECT_EQ(listed({"*.*"}), (Names{"x.a"}));
}

TEST(Ls, NamesOfAnyKindAreListedAsTheyAre) {
    const Names names{"[a,b]", "back\\slash", "gr\u00FC\u00DFe", "two words", "wild*card"};
    for (const std::string& name : names) makeFile(name);
    EXPECT_EQ(listed({"."}), names);
    EXPECT_EQ(listed({"[a,b]"}), (Names{"[a,b]"}));
}

TEST(Ls, AFolderWithABackslashInItsNameIsListed) {
    std::filesystem::create_directory("back\\slash");
    makeFile("back\\slash/clip");
    EXPECT_EQ(listed({"back\\slash"}), (Names{"clip"}));
}

TEST(Ls, ALineEndInANameDoesNotBreakTheTable) {
    makeFile("two\nlines");
    const Outcome run = runKv({"ls", "."});
    EXPECT_TRUE(run.out.ends_with("  two\\x0Alines\n")) << run.out;
    EXPECT_EQ(listed({"."}), (Names{"two\nlines"}));
}

TEST(Ls, BytesThatAreNoUtf8AreReplacedInJson) {
    makeFile("odd\xFF");
    if (!std::filesystem::exists("odd\xFF")) GTEST_SKIP() << "such names are refused here";
    EXPECT_EQ(listed({"."}), (Names{"odd\uFFFD"}));
}

TEST(Ls, AFilePastFourGibibytesHasItsWholeSize) {
    makeFile("large");
    std::error_code error;
    std::filesystem::resize_file("large", 5368709123u, error);
    if (error) GTEST_SKIP() << "no file with holes here: " << error.message();
    EXPECT_EQ(runKv({"ls", "--json", "large"}).json()[0]["size"], 5368709123u);
    EXPECT_NE(runKv({"ls", "large"}).out.find("5.0 GiB"), std::string::npos);
}

TEST(Ls, PipesAndLinksToNothingAreListedWithoutBeingOpened) {
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    std::filesystem::create_symlink("nothing", "link");
    const auto all = runKv({"ls", "--json", "."}).json();
    ASSERT_EQ(all.size(), 2u);
    for (const auto& entry : all) {
        EXPECT_EQ(entry["type"], "other");
        EXPECT_TRUE(entry["size"].is_null());
    }
}

TEST(Ls, AnEmptyFolderIsAnEmptyListing) {
    std::filesystem::create_directory("empty");
    const Outcome table = runKv({"ls", "empty"});
    EXPECT_EQ(table.exit, 0);
    EXPECT_EQ(table.out, "");
    EXPECT_EQ(table.err, "");
    const Outcome json = runKv({"ls", "--json", "empty"});
    EXPECT_EQ(json.exit, 0);
    EXPECT_EQ(json.json(), nlohmann::json::array());
}

TEST(Ls, NothingFoundIsTold) {
    makeFile(".hidden");
    for (const char* pattern : {"none", "none*", "none/*", "n*/x", "*.mov", "*", "", "mem://clip"}) {
        const Outcome run = runKv({"ls", pattern});
        EXPECT_EQ(run.exit, 1) << pattern;
        EXPECT_EQ(run.out, "") << pattern;
        EXPECT_EQ(run.err, "kv: cannot list '" + std::string(pattern) + "': nothing found\n");
    }
}

TEST(Ls, NothingFoundIsAnEmptyArrayInJson) {
    const Outcome run = runKv({"ls", "--json", "none*"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.json(), nlohmann::json::array());
    EXPECT_EQ(run.err, "kv: cannot list 'none*': nothing found\n");
}

TEST(Ls, AFolderThatCanNotBeListedIsTold) {
    std::filesystem::create_directory("take *");
    const Outcome run = runKv({"ls", "take *"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot list 'take *': the folder can't be read, or there is a * or ? in its path\n");
}

TEST(Ls, AUrlHasNoListing) {
    const Outcome run = runKv({"ls", "http://host.invalid/*.mov"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot list 'http://host.invalid/*.mov': a URL has no listing\n");
}

TEST(Ls, APatternTooLongIsToldAsSuch) {
    const std::string pattern = "./" + std::string(4096, 'x');
    EXPECT_EQ(runKv({"ls", pattern}).err, "kv: cannot list '" + pattern + "': File name too long\n");
}

}  // namespace
