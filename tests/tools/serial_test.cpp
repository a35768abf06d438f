// kv serial.
#include <cstdlib>
#include <filesystem>
#include <string>

#include "devices/own_devices.h"
#include "devices/pseudo_terminal.h"
#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;
namespace fs = std::filesystem;

/// With a "/dev" of the test's own, and links below its own home.
class Serial : public ::testing::Test {
protected:
    void SetUp() override {
        if (fs::exists("/Library/Application Support")) GTEST_SKIP() << "this machine has settings for all its users";
        if (!devices_.why().empty()) GTEST_SKIP() << devices_.why();
        folder_ = std::string(std::getenv("HOME")) + "/Library/Application Support/Korvane/";
        fs::create_directories(folder_);
    }

    OwnDevices devices_;
    std::string folder_;
};

TEST_F(Serial, ListsPortsByTheirNumbers) {
    const PseudoTerminal usb, acm, own;
    OwnDevices::name(acm.device(), "ttyACM0");
    OwnDevices::name(usb.device(), "ttyUSB2");
    makeFile("/dev/ttyS0");
    makeFile("/dev/ttyS99");
    const Outcome run = runKv({"serial"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "PORT  DEVICE        OPENED AS\n"
              "   0  /dev/ttyS0    /dev/ttyS0\n"
              "   1  /dev/ttyUSB2  " +
                  folder_ +
                  "ttyS0\n"
                  "   2  /dev/ttyACM0  " +
                  folder_ +
                  "ttyS1\n"
                  " 100  /dev/ttyS99   /dev/ttyS99\n");
}

TEST_F(Serial, JsonHoldsNumberDeviceAndName) {
    const PseudoTerminal usb, deck;
    OwnDevices::name(usb.device(), "ttyUSB0");
    OwnDevices::name(deck.device(), "tty.Kona Serial");
    const auto all = runKv({"serial", "--json"}).json();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0], (nlohmann::json{{"port", 0}, {"device", deck.device()}, {"name", "/dev/tty.Kona Serial"}}));
    EXPECT_EQ(all[1], (nlohmann::json{{"port", 1}, {"device", "/dev/ttyUSB0"}, {"name", folder_ + "ttyS0"}}));
}

TEST_F(Serial, NumbersStayUntilTheyAreRenewed) {
    const PseudoTerminal first, second;
    OwnDevices::name(first.device(), "ttyACM0");
    EXPECT_EQ(runKv({"serial", "--json"}).json()[0]["device"], "/dev/ttyACM0");
    OwnDevices::name(second.device(), "ttyUSB0");
    EXPECT_EQ(runKv({"serial", "--json"}).json()[0]["device"], "/dev/ttyACM0");
    EXPECT_EQ(runKv({"serial", "--json", "--renew"}).json()[0]["device"], "/dev/ttyUSB0");
}

TEST_F(Serial, NoPortIsTold) {
    const Outcome run = runKv({"serial", "--json"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.json(), nlohmann::json::array());
    EXPECT_EQ(run.err, "kv: no serial port is here\n");
    EXPECT_EQ(runKv({"serial"}).out, "");
}

}  // namespace
