// What the log takes from the settings, and when it reads them.
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "config/open_store.h"
#include "diag/log_reader.h"
#include "errlog.h"

namespace {

using namespace kvtest;

constexpr const char* kDebug = "ZMW\\Advanced\\Debug";

/// A default store whose log is in a folder of its own, and nothing read from it so far.
class LogSettings : public DefaultStore {
protected:
    LogSettings() { gdwOutputToStdDebug = 0; }
    ~LogSettings() override { ErrLogSetMode(1, nullptr); }

    void store(const std::string& elements) {
        makeFile(path(),
                 configWith("<ZMW Type=\"0\"><Advanced Type=\"0\"><Debug Type=\"0\"><DefaultLogName Type=\"1\">" +
                            folder / "stored.log" + "</DefaultLogName>" + elements + "</Debug></Advanced></ZMW>"));
    }
    void makeLogs(int count) {
        for (int i = 0; i < count; ++i) makeFile(folder / ("old" + std::to_string(i) + ".log"));
    }
    std::size_t logs() { return kvtest::namesIn(folder.path()).size(); }

    ScratchFolder folder;
};

TEST_F(LogSettings, AreReadByTheFirstMessagePutAndNotByTheNext) {
    store("<ShowWarnings Value=\"1\" Type=\"2\" />");
    ErrLogPut(0, "a");
    EXPECT_EQ(gfReadReg, 1u);
    EXPECT_EQ(gfShowWarnings, 1u);
    EXPECT_EQ(gszLogName, folder / "stored.log");
    setDword(KVSTDCONFIG, kDebug, "ShowWarnings", 0);
    ErrLogPut(0, "b");
    EXPECT_EQ(gfShowWarnings, 1u);
}

TEST_F(LogSettings, AreReadByTheNamingOfAPathOnlyWhileNobodyDid) {
    store("<ShowWarnings Value=\"1\" Type=\"2\" />");
    gfReadReg = 1;
    ErrLogSetName((folder / "a.log").c_str());
    EXPECT_EQ(gfShowWarnings, 0u);
    gfReadReg = 0;
    ErrLogSetName((folder / "b.log").c_str());
    EXPECT_EQ(gfShowWarnings, 1u);
    EXPECT_EQ(gfReadReg, 1u);
    EXPECT_EQ(gszLogName, folder / "b.log");
}

TEST_F(LogSettings, AreReadByTheNamingOfARunWheneverThereIsNoName) {
    store("<ShowWarnings Value=\"1\" Type=\"2\" />");
    gfReadReg = 1;
    ErrLogSetFileName("run");
    EXPECT_EQ(gfShowWarnings, 1u);
    EXPECT_EQ(gszLogName, folder / "run.log");
    setDword(KVSTDCONFIG, kDebug, "ShowWarnings", 0);
    gfReadReg = 0;
    ErrLogSetFileName("run");
    EXPECT_EQ(gfShowWarnings, 1u);
    EXPECT_EQ(gfReadReg, 0u);
    gfReadReg = 1;
    gszLogName[0] = '\0';
    ErrLogSetFileName("run");
    EXPECT_EQ(gfShowWarnings, 0u);
}

TEST_F(LogSettings, TurnAFileOffThatWasBegunBeforeTheFirstMessage) {
    store("<EnableLog Value=\"0\" Type=\"2\" />");
    std::string name = folder / "x.log";
    name.resize(4096);
    ErrLogSetMode(0, name.data());
    EXPECT_EQ(gfEnableLog, 1u);
    ErrLogPut(0, "\na");
    EXPECT_EQ(gfEnableLog, 0u);
    gfEnableLog = 1;
    ErrLogPut(0, "\nb");
    EXPECT_EQ(kvErrLog_IsOpen(), 1u);
    const std::string path = logPath();
    ErrLogClose();
    EXPECT_EQ(readLog(path).lines.size(), 1u);
}

TEST_F(LogSettings, TellHowManyFilesThereMayBeAndTheValueOutlivesItsKey) {
    store("<MaxLogFiles Value=\"3\" Type=\"2\" />");
    makeLogs(5);
    ErrLogSetFileName("run");
    EXPECT_EQ(logs(), 2u);
    makeLogs(5);
    ASSERT_EQ(kvCFGDeleteValue(KVSTDCONFIG, kDebug, "MaxLogFiles"), 0u);
    ErrLogSetFileName("run");
    EXPECT_EQ(logs(), 2u);
    EXPECT_EQ(dwordOf(KVSTDCONFIG, kDebug, "MaxLogFiles"), std::nullopt);  // it is never written
}

TEST_F(LogSettings, TellHowManyFilesThereMayBeToModeZeroToo) {
    store("<MaxLogFiles Value=\"3\" Type=\"2\" />");
    std::string name = folder / "x.log";
    name.resize(4096);
    ErrLogSetMode(0, name.data());
    ErrLogSetMode(1, nullptr);
    ASSERT_EQ(kvCFGDeleteValue(KVSTDCONFIG, kDebug, "MaxLogFiles"), 0u);
    makeLogs(5);
    ErrLogSetFileName("run");
    EXPECT_EQ(logs(), 2u);
}

}  // namespace
