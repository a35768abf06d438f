// kv lcd, with a panel that is a process of its own.
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "devices/own_devices.h"
#include "devices/panel.h"
#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;

class Lcd : public ::testing::Test {
protected:
    void SetUp() override {
        if (!mayReopen()) GTEST_SKIP() << "only root opens a pseudo-terminal again while its other side is open";
    }

    Outcome run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"lcd", panel_.device()});
        return runKv(arguments);
    }
    /// The next frame that says more than which speed is meant and that somebody is there.
    std::string sawCommand() {
        std::string seen;
        do {
            seen = panel_.saw();
        } while (seen.starts_with("noise ") || seen.find(" 0010") != std::string::npos ||
                 seen.find(" 2101") != std::string::npos);
        return seen;
    }
    void expectSeen(std::uint8_t command, const Bytes& data) {
        EXPECT_EQ(sawCommand(), Panel::frame(19200, command, data));
    }

    Panel panel_;
};

TEST_F(Lcd, ShowsTextRowByRow) {
    const Outcome done = run({"--clear", "--text", "On Air", "--text", R"(\065\x42\b01000011)", "--column", "3"});
    EXPECT_EQ(done.exit, 0) << done.err;
    EXPECT_EQ(done.out, "");
    EXPECT_EQ(done.err, "");
    expectSeen(0x06, {});
    expectSeen(0x1F, {3, 0, 'O', 'n', ' ', 'A', 'i', 'r'});
    expectSeen(0x1F, {3, 1, 'A', 'B', 'C'});
}

TEST_F(Lcd, ShowsTextInTheLastRow) {
    EXPECT_EQ(run({"--row", "254", "--text", "a", "--text", "b"}).exit, 0);
    expectSeen(0x1F, {0, 254, 'a'});
    expectSeen(0x1F, {0, 255, 'b'});
}

TEST_F(Lcd, LightsLedsAndStoresThem) {
    EXPECT_EQ(run({"--led", "0:100:0", "--led", "5:0:255", "--boot"}).exit, 0);
    expectSeen(0x22, {12, 100});
    expectSeen(0x22, {11, 0});
    expectSeen(0x22, {2, 0});
    expectSeen(0x22, {1, 255});
    expectSeen(0x04, {});
}

TEST_F(Lcd, LoadsTheGraphic) {
    EXPECT_EQ(run({"--graphic"}).exit, 0);
    expectSeen(0x09, {0, 0x00, 0x00, 0x10, 0x2F, 0x2F, 0x3F, 0x10, 0x00});
}

TEST_F(Lcd, TellsTheKeysAsBytes) {
    const Outcome text = run({"--keys"});
    EXPECT_EQ(text.exit, 0) << text.err;
    EXPECT_EQ(text.out, "keys 01 20 08\n");
    EXPECT_EQ(run({"--keys", "--json"}).json(), (nlohmann::json{{"keys", {1, 32, 8}}}));
}

TEST_F(Lcd, FindsAPanelThatMissesTheFirstQuestions) {
    panel_.next({"silence", "silence", "silence"});
    EXPECT_EQ(run({"--clear", "--wait", "200"}).exit, 0);
    expectSeen(0x06, {});
}

TEST_F(Lcd, ASilentPanelIsToldAndDoesNotHoldTheProgram) {
    panel_.setSpeed(0);
    const Outcome done = run({"--clear", "--wait", "40"});
    EXPECT_EQ(done.exit, 1);
    EXPECT_EQ(done.err, "kv: the panel on '" + panel_.device() + "' does not answer\n");
}

TEST_F(Lcd, WithoutWaitingASilentPanelIsNotNoticed) {
    panel_.setSpeed(0);
    EXPECT_EQ(run({"--clear", "--wait", "0"}).exit, 0);
}

TEST_F(Lcd, IsFoundByItsPortNumberToo) {
    if (std::filesystem::exists("/Library/Application Support")) GTEST_SKIP() << "this machine has settings for all";
    std::filesystem::create_directories(std::string(std::getenv("HOME")) + "/Library/Application Support/Korvane");
    const OwnDevices devices;
    if (!devices.why().empty()) GTEST_SKIP() << devices.why();
    OwnDevices::name(panel_.device(), "ttyUSB7");
    EXPECT_EQ(runKv({"lcd", "1", "--clear"}).exit, 0);
    expectSeen(0x06, {});
}

TEST(LcdArguments, ALineThatCanNotBeOpenedIsTold) {
    const Outcome run = runKv({"lcd", "/dev/no-such-line"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot open the panel's line '/dev/no-such-line': No such file or directory\n");
}

TEST(LcdArguments, MistakesAreToldBeforeTheLineIsOpened) {
    const Outcome text = runKv({"lcd", "1", "--text", "twenty-one characters"});
    EXPECT_EQ(text.exit, 2);
    EXPECT_EQ(text.err, "kv: 'twenty-one characters' is too long: a row of text has at most 20 bytes\n");
    for (const char* led : {"6:0:0", "0:256:0", "0:0", "0:0:0:0", "a:0:0", "", "-1:0:0", "0:0:"}) {
        const Outcome run = runKv({"lcd", "1", "--led", led});
        EXPECT_EQ(run.exit, 2) << led;
        EXPECT_EQ(run.err, "kv: '" + std::string(led) +
                               "' is no LED: its number from 0 to 5 and two levels up to 255, as in 2:100:0\n");
    }
    EXPECT_EQ(runKv({"lcd", "1", "--keys", "--wait", "0"}).err,
              "kv: keys can't be read without waiting for the panel\n");
    const Outcome rows = runKv({"lcd", "1", "--row", "254", "--text", "a", "--text", "b", "--text", "c"});
    EXPECT_EQ(rows.exit, 2);
    EXPECT_EQ(rows.err, "kv: 3 texts from row 254 run beyond row 255, the last that a panel can have\n");
    EXPECT_EQ(runKv({"lcd", "1", "--speed", "9600"}).exit, 2);
    EXPECT_EQ(runKv({"lcd"}).exit, 2);
}

}  // namespace
