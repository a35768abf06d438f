// kv event and kv events.
#include <filesystem>
#include <regex>
#include <string>

#include "support/own_var.h"
#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;

const std::string kHeader = "Date-Time, Timecode, Code, SubCode, Event, Description, Details\n";
const std::string kTwoEvents = kHeader +
                               "2026_1_9-08_05_07,01:00:00:00,Lost signal,0x00000010,0x000000FF,Input 3,no carrier\n"
                               "2026_11_13-16_30_29,,Signal back,0x00000011,0x00000000,,\n";

TEST(Event, IsAppendedToTheFileThatIsTold) {
    const Outcome run = runKv({"event", "Lost signal", "-c", "0x10", "-s", "255", "-d", "Input 3", "--details",
                               "no carrier", "-t", "01:00:00:00", "-f", "events.csv"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, "./events.csv\n");
    EXPECT_EQ(runKv({"event", "Signal back", "-f", "./events.csv"}).exit, 0);
    const auto all = runKv({"events", "--json", "events.csv"}).json();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0]["timecode"], "01:00:00:00");
    EXPECT_EQ(all[0]["name"], "Lost signal");
    EXPECT_EQ(all[0]["code"], 16);
    EXPECT_EQ(all[0]["subCode"], 255);
    EXPECT_EQ(all[0]["description"], "Input 3");
    EXPECT_EQ(all[0]["details"], "no carrier");
    EXPECT_EQ(all[1]["name"], "Signal back");
    EXPECT_EQ(all[1]["code"], 0);
    EXPECT_TRUE(contentOf("events.csv").starts_with(kHeader));
}

TEST(Event, TextsThatWouldBreakTheLogAreRefused) {
    for (const char* text : {"a,b", "50%", "a \"quote\"", "two\nlines"}) {
        const Outcome run = runKv({"event", "-f", "events.csv", "name", "-d", text});
        EXPECT_EQ(run.exit, 2) << text;
        EXPECT_TRUE(run.err.starts_with("kv: cannot log '") && run.err.ends_with("control character\n")) << run.err;
    }
    EXPECT_FALSE(std::filesystem::exists("events.csv"));
}

TEST(Event, AFileThatCanNotBeWrittenIsTold) {
    expectFailure(runKv({"event", "name", "-f", "/no/such/events.csv"}),
                  "kv: cannot open '/no/such/events.csv': No such file or directory\n");
}

TEST(Events, ShowsATable) {
    makeFile("events.csv", kTwoEvents);
    const Outcome run = runKv({"events", "events.csv"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "TIME                 TIMECODE     CODE        SUBCODE     EVENT\n"
              "2026-01-09 08:05:07  01:00:00:00  0x00000010  0x000000FF  Lost signal: Input 3 (no carrier)\n"
              "2026-11-13 16:30:29               0x00000011  0x00000000  Signal back\n");
}

TEST(Events, OnlyTheLastAreShownWhenTold) {
    makeFile("events.csv", kTwoEvents);
    const auto last = runKv({"events", "-n", "1", "--json", "events.csv"}).json();
    ASSERT_EQ(last.size(), 1u);
    EXPECT_EQ(last[0]["time"], "2026-11-13T16:30:29");
    EXPECT_EQ(runKv({"events", "-n", "0", "events.csv"}).out, "");
    EXPECT_EQ(runKv({"events", "-n", "7", "--json", "events.csv"}).json().size(), 2u);
}

TEST(Events, CommasInTextsAreToldByTheCodes) {
    makeFile("events.csv", "2026_1_9-08_05_07,tc,a,b,0x00000001,0x00000002,c,d,e\n");
    const auto all = runKv({"events", "--json", "events.csv"}).json();
    ASSERT_EQ(all.size(), 1u);
    EXPECT_EQ(all[0]["name"], "a,b");
    EXPECT_EQ(all[0]["description"], "c");
    EXPECT_EQ(all[0]["details"], "d,e");
}

TEST(Events, WhatIsNoEventIsPassedOver) {
    makeFile("events.csv",
             "\n,,,\nnonsense\n2026_1_9-08_05_07\n2026_1_9-08_05_07,,,1,2,,\n2026_1_9,,,0x00000001,"
             "0x00000002,,\n2026_1_9-08_05_07,,,0x00000001,0x00000002,\n" +
                 kTwoEvents);
    EXPECT_EQ(runKv({"events", "--json", "events.csv"}).json().size(), 2u);
}

TEST(Events, AFileThatCanNotBeReadIsTold) {
    const Outcome run = runKv({"events", "none.csv"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot open 'none.csv': No such file or directory\n");
}

class EventFolder : public ::testing::Test {
protected:
    void SetUp() override {
        if (!var_.why().empty()) GTEST_SKIP() << var_.why();
    }

    const std::string folder_ = "/var/www/html/events/";
    OwnVar var_;
};

TEST_F(EventFolder, EachEventBeginsTheNextFileThere) {
    const std::regex form("/var/www/html/events/event_000000000([0-9])_[0-9_]+-[0-9_]+\\.csv\n");
    for (const char* number : {"1", "2", "3"}) {
        const Outcome run = runKv({"event", std::string("event ") + number});
        EXPECT_EQ(run.exit, 0);
        std::smatch parts;
        ASSERT_TRUE(std::regex_match(run.out, parts, form)) << run.out;
        EXPECT_EQ(parts[1], number);
    }
    const auto all = runKv({"events", "--json", "-n", "2"}).json();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0]["name"], "event 2");
    EXPECT_EQ(all[1]["name"], "event 3");
}

TEST_F(EventFolder, TheLatestEventsAreThoseOfTheHighestNumbers) {
    std::filesystem::create_directories(folder_);
    makeFile(folder_ + "event_0000000009_2026_1_9-08_05_07.csv", kTwoEvents);
    makeFile(folder_ + "event_0000000010_2026_1_9-08_05_07.csv",
             kHeader + "2026_11_14-00_00_00,,newest,0x00000000,0x00000000,,\n");
    makeFile(folder_ + "other.csv", kTwoEvents);
    const auto all = runKv({"events", "--json"}).json();
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[0]["name"], "Lost signal");
    EXPECT_EQ(all[2]["name"], "newest");
}

TEST_F(EventFolder, WithoutAnyEventThatIsTold) {
    const Outcome run = runKv({"events", "--json"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.json(), nlohmann::json::array());
    EXPECT_EQ(run.err, "kv: no events in '/var/www/html/events/'\n");
}

TEST_F(EventFolder, AFolderThatCanNotBeMadeIsTold) {
    makeFile("/var/www", "in the way");
    const Outcome run = runKv({"event", "name"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot write the event to '/var/www/html/events/' (with -v the library tells why)\n");
}

}  // namespace
