// kv log.
#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;

/// A log as the library writes it: history, a burst of two messages, a run of three and a message of two lines.
const std::string kLog =
    "LOG STARTED 2024-01-09T10:05:07.008 10: 5: 7 \n"
    "before"
    "\n3\t2024-01-09T10:05:07.010\tfirst <b>\nsecond & last\n"
    "\n5\t2024-01-09T10:05:08.200\tWARNING(gen): care\t\t\t\t\t\t[repeat x3]\n"
    "\n6\t2024-01-09T10:05:09.000\tbad  -402509807 [0xE8023011] {ERROR }  ";

std::string makeLog(const std::string& name = "run.log") {
    makeFile(name, kLog);
    setenv("TZ", "UTC0", 1);
    return name;
}

std::size_t countOf(const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++found;
    return found;
}

TEST(Log, TailShowsEachMessageOnOneLine) {
    const Outcome run = runKv({"log", "tail", makeLog()});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "-  2024-01-09T10:05:07.008  before\n"
              "3  2024-01-09T10:05:07.010  first <b>\\x0Asecond & last\n"
              "5  2024-01-09T10:05:08.200  WARNING(gen): care  [repeat x3]\n"
              "6  2024-01-09T10:05:09.000  bad  -402509807 [0xE8023011] {ERROR }  \n");
}

TEST(Log, WrappedFileBeginsWithTheMarkOfIt) {
    for (const std::string time : {"", "2024-01-09T10:05:07.008"}) {
        makeFile("run.log", "999\t" + time +
                                "\tLog Wrapped\n\n999\t2024-01-09T10:05:07.010\tnew, and its rest of old"
                                "\n5\t2024-01-09T10:05:01.000\told");
        const Outcome run = runKv({"log", "tail", "run.log"});
        EXPECT_EQ(run.err, "");
        EXPECT_EQ(run.out,
                  "999  2024-01-09T10:05:07.010  new, and its rest of old\n"
                  "5  2024-01-09T10:05:01.000  old\n");
    }
    makeFile("run.log", "999\t2024-01-09T10:05:07.008\tLog Wrapped");
    EXPECT_EQ(runKv({"log", "tail", "run.log"}).exit, 1);
}

TEST(Log, WrappedFileMayGoOnWithTheEndOfARun) {
    makeFile("run.log",
             "2\t2024-01-09T10:05:07.008\tLog Wrapped\n\t\t\t\t\t\t[repeat x2]\n\n2\t2024-01-09T10:05:07.008\tm");
    EXPECT_EQ(runKv({"log", "tail", "run.log"}).out, "2  2024-01-09T10:05:07.008  m\n");
}

TEST(Log, StartLinesInsideAreNoText) {
    const std::string start = "LOG STARTED 2024-01-09T10:06:00.000 10: 6: 0 \n";
    makeFile("run.log", "LOG STARTED 2024-01-09T10:05:07.008 10: 5: 7 \n\n0\t2024-01-09T10:05:07.010\ta" + start +
                            start + "ran on\n1\t2024-01-09T10:06:00.010\tLOG STARTED by hand");
    EXPECT_EQ(runKv({"log", "tail", "run.log"}).out,
              "0  2024-01-09T10:05:07.010  a\n"
              "-  2024-01-09T10:06:00.000  ran on\n"
              "1  2024-01-09T10:06:00.010  LOG STARTED by hand\n");
}

TEST(Log, EndOfARunIsKnownWhateverFollowsIt) {
    const std::string tabs(6, '\t');
    makeFile("run.log", "LOG STARTED 2024-01-09T10:05:07.008 10: 5: 7 \n\n0\t2024-01-09T10:05:07.010\ta" + tabs +
                            "[repeat x3]\nb" + tabs + "[repeat x2]\nc" + tabs + "[repeat x]\n");
    EXPECT_EQ(runKv({"log", "tail", "run.log"}).out,
              "0  2024-01-09T10:05:07.010  a  [repeat x3]\n"
              "-  2024-01-09T10:05:07.010  b  [repeat x2]\n"
              "-  2024-01-09T10:05:07.010  c\\x09\\x09\\x09\\x09\\x09\\x09[repeat x]\n");
}

TEST(Log, TailShowsTheLastOnes) {
    makeLog();
    EXPECT_TRUE(runKv({"log", "tail", "-n", "2", "run.log"}).out.starts_with("5  "));
    EXPECT_EQ(runKv({"log", "tail", "-n", "0", "run.log"}).out, "");
    EXPECT_EQ(runKv({"log", "tail", "-n", "-1", "run.log"}).exit, 2);
}

TEST(Log, TailAsJson) {
    const auto messages = runKv({"log", "tail", "--json", makeLog()}).json();
    ASSERT_EQ(messages.size(), 4u);
    EXPECT_TRUE(messages[0]["number"].is_null());
    EXPECT_EQ(messages[1]["text"], "first <b>\nsecond & last");
    EXPECT_EQ(messages[2]["repeats"], 3);
    EXPECT_EQ(messages[2]["code"], 0x80000000u);
    EXPECT_EQ(messages[3]["number"], 6);
    EXPECT_EQ(messages[3]["code"], 0xE8023011u);
}

TEST(Log, DumpWritesEveryForm) {
    makeLog();
    const auto dumped = [](const char* form) { return runKv({"log", "dump", "--form", form, "run.log"}).out; };
    // The time is the file's, in milliseconds cut to 32 bits and printed as a signed number.
    const std::string line = "6@-307307512ms: 0xE8023011  bad  -402509807 [0xE8023011] {ERROR }  \n";
    EXPECT_TRUE(dumped("line").ends_with(line)) << dumped("line");
    EXPECT_EQ(runKv({"log", "dump", "run.log"}).out, dumped("line"));
    EXPECT_TRUE(dumped("text").starts_with("beforefirst <b>"));
    EXPECT_NE(dumped("html").find("<FONT color=Fuchsia>0x80000000  WARNING(gen): care</FONT><BR>\n"),
              std::string::npos);
    EXPECT_EQ(countOf(dumped("table"), "<tr class=kverrmsg>"), 4u);
    EXPECT_NE(dumped("xml").find("<messageNumber>3</messageNumber>"), std::string::npos);
    EXPECT_EQ(runKv({"log", "dump", "--form", "pdf", "run.log"}).exit, 2);
}

TEST(Log, PageIsATableInWhichNoTextCountsAsMarkup) {
    makeFile("run.log", kLog + "\n7\t2024-01-09T10:05:09.100\t</td><script>alert(\"ä\")</script>&lt;");
    const Outcome run = runKv({"log", "html", "run.log"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_TRUE(run.out.starts_with("<!DOCTYPE html>\n"));
    EXPECT_TRUE(run.out.ends_with("</tbody>\n</table>\n</body>\n</html>\n"));
    EXPECT_NE(run.out.find("<meta charset=\"utf-8\">"), std::string::npos);
    EXPECT_NE(run.out.find("<title>run.log</title>"), std::string::npos);
    EXPECT_EQ(countOf(run.out, "<tr class=kverrmsg>"), 5u);
    EXPECT_EQ(countOf(run.out, "<td"), 5u * 4u);
    EXPECT_EQ(countOf(run.out, "</td></tr>\n"), 5u);
    EXPECT_NE(run.out.find("<td class=kverrmsgnum>3</td>"), std::string::npos);
    EXPECT_NE(run.out.find("first &lt;b&gt;\nsecond &amp; last"), std::string::npos);
    EXPECT_NE(run.out.find("<font color=Fuchsia>WARNING(gen): care [repeat x3]</font>"), std::string::npos);
    EXPECT_NE(run.out.find("<font color=Red>bad "), std::string::npos);
    EXPECT_NE(run.out.find("&lt;/td&gt;&lt;script&gt;alert(\"ä\")&lt;/script&gt;&amp;lt;"), std::string::npos);
    EXPECT_EQ(run.out.find("<script"), std::string::npos);
}

TEST(Log, MoreMessagesThanTheListHolds) {
    std::string log = "LOG STARTED 2024-01-09T10:05:07.008 10: 5: 7 \n";
    for (int i = 0; i < 3000; ++i) log += "\n" + std::to_string(i) + "\t2024-01-09T10:05:07.010\tm";
    makeFile("long.log", log);
    EXPECT_EQ(countOf(runKv({"log", "dump", "-f", "table", "long.log"}).out, "<tr"), 3000u);
    EXPECT_EQ(countOf(runKv({"log", "tail", "long.log"}).out, "\n"), 20u);
}

TEST(Log, ClearEmptiesALogAndNothingElse) {
    makeLog();
    makeFile("clip.mov", "precious");
    EXPECT_EQ(runKv({"log", "clear", "run.log"}).exit, 0);
    EXPECT_EQ(contentOf("run.log"), "");
    const Outcome run = runKv({"log", "clear", "clip.mov"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: 'clip.mov' is no log file: it does not begin with \"LOG STARTED\"\n");
    EXPECT_EQ(contentOf("clip.mov"), "precious");
    EXPECT_EQ(runKv({"log", "clear", "--force", "clip.mov"}).exit, 0);
    EXPECT_EQ(contentOf("clip.mov"), "");
}

TEST(Log, RotateLeavesRoomForOne) {
    std::filesystem::create_directory("logs");
    for (const char* name : {"a.log", "b.log", "c.log", "d.txt", "e.txt"}) makeFile(std::string("logs/") + name);
    EXPECT_EQ(runKv({"log", "rotate", "--max", "3", "logs"}).exit, 0);
    const auto count = [] {
        return std::distance(std::filesystem::directory_iterator("logs"), std::filesystem::directory_iterator());
    };
    EXPECT_EQ(count(), 4);
    EXPECT_EQ(runKv({"log", "rotate", "-m", "1", "-e", ".txt", "logs/"}).exit, 0);
    EXPECT_EQ(count(), 2);
    EXPECT_EQ(runKv({"log", "rotate", "logs"}).exit, 2);
    EXPECT_EQ(runKv({"log", "rotate", "-m", "0", "logs"}).exit, 2);
    EXPECT_EQ(runKv({"log", "rotate", "-m", "3", "none"}).exit, 1);
}

TEST(Log, WhatIsNotThereIsTold) {
    for (const char* command : {"tail", "dump", "html", "clear"}) {
        expectFailure(runKv({"log", command, "none.log"}), "kv: cannot open 'none.log': No such file or directory\n");
    }
    EXPECT_EQ(runKv({"log"}).exit, 2);
}

}  // namespace
