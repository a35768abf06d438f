// Port numbers: the links to devices that are there, and which name a number opens.
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "devices/line_calls.h"
#include "devices/own_devices.h"
#include "devices/pseudo_terminal.h"
#include "kvos/attributes.h"
#include "kvos/serial.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace {

using namespace kvtest;
namespace fs = std::filesystem;

std::vector<std::string> devicesInOrder() {
    std::vector<std::string> all;
    for (const char* kind : {"/dev/ttyUSB", "/dev/ttyACM"}) {
        for (char digit = '0'; digit <= '9'; ++digit) all.push_back(kind + std::string(1, digit));
    }
    return all;
}

/// Links are made in a directory below the test's own home.
class SerialLinks : public ::testing::Test {
protected:
    void SetUp() override {
        if (fs::exists("/Library/Application Support")) GTEST_SKIP() << "this machine has settings for all its users";
        directory_ = std::string(std::getenv("HOME")) + "/Library/Application Support/Korvane/";
        fs::remove_all(directory_);  // or a file would be written through the link of a test before
        fs::create_directories(directory_);
    }

    std::string link(int number) const { return directory_ + "ttyS" + std::to_string(number); }

    /// What the links from "ttyS0" on point at, up to the first that is none.
    std::vector<std::string> targets() const {
        std::vector<std::string> all;
        for (int i = 0; fs::is_symlink(link(i)); ++i) all.push_back(fs::read_symlink(link(i)));
        return all;
    }

    std::string directory_;
};

/// With devices that count as present because the list of names says so.
class NamedDevices : public SerialLinks {
protected:
    void SetUp() override {
        SerialLinks::SetUp();
        for (const std::string& device : devicesInOrder()) {
            if (fs::exists(device)) GTEST_SKIP() << "this machine has " << device;
        }
    }
    ~NamedDevices() override {
        gvecNames.clear();
        lineCalls() = {};
    }

    /// The names that a port asks the system for, none of which is there.
    static std::vector<std::string> openedBy(std::uint32_t port) {
        lineCalls().hasOwnDevices = true;
        lineCalls().opened.clear();
        EXPECT_EQ(kvOSSerialOpen(port), 0);
        EXPECT_EQ(errno, ENOENT);
        return lineCalls().opened;
    }
};

/// With a "/dev" of the test's own.
class OwnedDevices : public SerialLinks {
protected:
    void SetUp() override {
        SerialLinks::SetUp();
        if (!devices_.why().empty()) GTEST_SKIP() << devices_.why();
    }

    /// Whether the port opens this terminal.
    static bool opens(std::uint32_t port, const PseudoTerminal& terminal) {
        const std::int64_t line = kvOSSerialOpen(port);
        struct stat opened {};
        struct stat expected {};
        const bool isIt = line > 0 && fstat(static_cast<int>(line - 1), &opened) == 0 &&
                          stat(terminal.device().c_str(), &expected) == 0 && opened.st_rdev == expected.st_rdev;
        kvOSSerialClose(line);
        return isIt;
    }

    OwnDevices devices_;
};

TEST_F(NamedDevices, LinksFollowTheTablesOrderAndNotTheListsOne) {
    gvecNames = {"/dev/ttyACM0", "/dev/ttyUSB3", "/dev/ttyACM7", "/dev/ttyUSB0"};
    errno = 77;
    EXPECT_EQ(kvOSSerialSetupSystem(1), 0u);
    EXPECT_EQ(errno, 77);
    EXPECT_EQ(targets(), (std::vector<std::string>{"/dev/ttyUSB0", "/dev/ttyUSB3", "/dev/ttyACM0", "/dev/ttyACM7"}));
}

TEST_F(NamedDevices, TheTableHoldsTwentyDevicesOfWhichTenGetALink) {
    const std::vector<std::string> all = devicesInOrder();
    for (const std::string& device : all) gvecNames.push_back(device.c_str());
    EXPECT_EQ(kvOSSerialSetupSystem(1), 0u);
    EXPECT_EQ(targets(), std::vector<std::string>(all.begin(), all.begin() + 10));

    gvecNames.erase(gvecNames.begin(), gvecNames.begin() + 12);
    EXPECT_EQ(kvOSSerialSetupSystem(1), 0u);
    EXPECT_EQ(targets(), std::vector<std::string>(all.begin() + 12, all.end()));
}

TEST_F(NamedDevices, WithoutForceNothingChangesWhileTheFirstLinkIsThere) {
    makeFile(link(0), "kept");
    makeFile(link(5), "kept");
    gvecNames = {"/dev/ttyUSB1"};
    EXPECT_EQ(kvOSSerialSetupSystem(0), 0u);
    EXPECT_EQ(contentOf(link(0)), "kept");
    EXPECT_EQ(kvOSSerialSetupSystem(1), 0u);
    EXPECT_EQ(targets(), std::vector<std::string>{"/dev/ttyUSB1"});
    EXPECT_FALSE(fs::exists(link(5)));
}

TEST_F(NamedDevices, AFirstLinkOnTheListOfNamesIsThere) {
    const std::string first = link(0);
    gvecNames = {"/dev/ttyUSB1", first.c_str()};
    EXPECT_EQ(kvOSSerialSetupSystem(0), 0u);
    EXPECT_FALSE(fs::is_symlink(first));
}

TEST_F(NamedDevices, LinksToDevicesThatAreGoneAreMadeAnew) {
    fs::create_symlink("/dev/ttyUSB8", link(0));
    fs::create_symlink("/dev/ttyUSB9", link(9));
    makeFile(link(10), "kept");
    gvecNames = {"/dev/ttyACM2"};
    EXPECT_EQ(kvOSSerialSetupSystem(0), 0u);
    EXPECT_EQ(targets(), std::vector<std::string>{"/dev/ttyACM2"});
    EXPECT_FALSE(fs::is_symlink(link(9)));
    EXPECT_EQ(contentOf(link(10)), "kept");  // not one of the ten
}

TEST_F(NamedDevices, EveryOpenMakesTheLinks) {
    gvecNames = {"/dev/ttyUSB4"};
    EXPECT_EQ(kvOSSerialOpenString("/dev/no-such-line"), 0);
    EXPECT_EQ(targets(), std::vector<std::string>{"/dev/ttyUSB4"});
    fs::remove(link(0));
    kvOSSerialClose(kvOSSerialOpen(77));
    EXPECT_EQ(targets(), std::vector<std::string>{"/dev/ttyUSB4"});
}

TEST_F(NamedDevices, WithoutADirectoryThereAreNoLinksAndNoMessages) {
    fs::remove_all(std::string(std::getenv("HOME")) + "/Library");
    gvecNames = {"/dev/ttyUSB4"};
    CapturedMessages messages;
    EXPECT_EQ(kvOSSerialSetupSystem(1), 0u);
    EXPECT_EQ(messages.text(), "");
    EXPECT_TRUE(targets().empty());
    EXPECT_FALSE(fs::exists(std::string(std::getenv("HOME")) + "/Library"));
}

TEST_F(NamedDevices, ADeviceKeepsItsNumberWhereItsLinkCanNotBeMade) {
    fs::create_directories(link(0) + "/kept");
    gvecNames = {"/dev/ttyUSB1", "/dev/ttyUSB5"};
    EXPECT_EQ(kvOSSerialSetupSystem(1), 0u);
    EXPECT_TRUE(fs::is_directory(fs::symlink_status(link(0))));
    EXPECT_EQ(fs::read_symlink(link(1)), "/dev/ttyUSB5");
    EXPECT_FALSE(fs::is_symlink(link(2)));
}

TEST_F(NamedDevices, PortsOpenTheirLinkOrElseTheDeviceOfTheirNumber) {
    const std::string last = link(9);
    const std::vector<std::string> all = devicesInOrder();
    for (const std::string& device : all) gvecNames.push_back(device.c_str());
    gvecNames.push_back(last.c_str());
    EXPECT_EQ(openedBy(10), std::vector<std::string>{last});
    EXPECT_EQ(openedBy(9), std::vector<std::string>{"/dev/ttyS8"});    // its link's device is gone
    EXPECT_EQ(openedBy(11), std::vector<std::string>{"/dev/ttyS10"});  // meant: ten links and no more
    EXPECT_EQ(openedBy(100), std::vector<std::string>{"/dev/ttyS99"});
    EXPECT_EQ(targets(), std::vector<std::string>(all.begin(), all.begin() + 10));
}

TEST_F(NamedDevices, PortZeroAsksForTheDecksOwnLinesFirst) {
    const std::string first = link(0);
    gvecNames = {"/dev/ttyUSB0", first.c_str()};
    EXPECT_EQ(openedBy(0), std::vector<std::string>{"/dev/ttyS0"});  // and for no link
    gvecNames.push_back("/dev/tty.RS422 Deck Control");
    EXPECT_EQ(openedBy(0), std::vector<std::string>{"/dev/tty.RS422 Deck Control"});
    gvecNames.push_back("/dev/tty.Kona Serial");
    EXPECT_EQ(openedBy(0), std::vector<std::string>{"/dev/tty.Kona Serial"});
}

TEST_F(NamedDevices, PortElevenIsTheLineOfItsDevice) {
    const PseudoTerminal eleventh;
    lineCalls().hasOwnDevices = true;
    lineCalls().devices = {{"/dev/ttyS10", eleventh.device()}};
    const std::int64_t line = kvOSSerialOpen(11);
    ASSERT_GT(line, 0);
    EXPECT_EQ(std::string(ttyname(static_cast<int>(line - 1))), eleventh.device());
    kvOSSerialClose(line);
}

TEST_F(SerialLinks, PortsThatAreNotThereGive0InSilence) {
    kvOSFileExists("/");  // what the first question about a file has to say is said here
    CapturedMessages messages;
    EXPECT_EQ(kvOSSerialOpen(100), 0);
    EXPECT_EQ(errno, ENOENT);
    for (const std::uint32_t port : {101u, 1000u, 0xFFFFFFFFu}) {
        EXPECT_EQ(kvOSSerialOpen(port), 0);
        EXPECT_EQ(errno, ENODEV) << port;
    }
    EXPECT_EQ(messages.text(), "");
}

TEST_F(OwnedDevices, NumbersOpenTheDevicesThatAreThere) {
    const PseudoTerminal usb, acm;
    OwnDevices::name(acm.device(), "ttyACM1");
    OwnDevices::name(usb.device(), "ttyUSB6");
    EXPECT_TRUE(opens(1, usb));
    EXPECT_TRUE(opens(2, acm));
    EXPECT_EQ(targets(), (std::vector<std::string>{"/dev/ttyUSB6", "/dev/ttyACM1"}));
}

TEST_F(OwnedDevices, ALinkStandsAheadOfTheDeviceOfThatName) {
    const PseudoTerminal linked, first, second;
    OwnDevices::name(linked.device(), "ttyUSB0");
    OwnDevices::name(first.device(), "ttyS0");
    OwnDevices::name(second.device(), "ttyS1");
    EXPECT_TRUE(opens(1, linked));
    EXPECT_TRUE(opens(2, second));  // there is no second link
}

TEST_F(OwnedDevices, PortElevenHasNoLinkAndOpensTheDevice) {
    std::vector<PseudoTerminal> adapters(11);
    for (int i = 0; i < 10; ++i)
        OwnDevices::name(adapters[static_cast<std::size_t>(i)].device(), "ttyUSB" + std::to_string(i));
    OwnDevices::name(adapters[10].device(), "ttyACM0");
    const PseudoTerminal eleventh, last;
    OwnDevices::name(eleventh.device(), "ttyS10");
    OwnDevices::name(last.device(), "ttyS99");
    EXPECT_TRUE(opens(10, adapters[9]));
    EXPECT_TRUE(opens(11, eleventh));
    EXPECT_TRUE(opens(100, last));
}

TEST_F(OwnedDevices, PortZeroIsTheDecksOwnLineWhereThereIsOne) {
    const PseudoTerminal first, control, kona, linked;
    OwnDevices::name(linked.device(), "ttyUSB0");
    OwnDevices::name(first.device(), "ttyS0");
    EXPECT_TRUE(opens(0, first));
    OwnDevices::name(control.device(), "tty.RS422 Deck Control");
    EXPECT_TRUE(opens(0, control));
    OwnDevices::name(kona.device(), "tty.Kona Serial");
    EXPECT_TRUE(opens(0, kona));
}

}  // namespace
