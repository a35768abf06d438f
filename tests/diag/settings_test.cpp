// The reading of the switches and of the log's name from the settings.
#include <cstring>
#include <gtest/gtest.h>
#include <string>

#include "config/open_store.h"
#include "errlog.h"
#include "support/captured_messages.h"

namespace {

using namespace kvtest;

constexpr const char* kDebug = "ZMW\\Advanced\\Debug";

/// A default store that holds just these elements under ZMW.
class ReadSettings : public DefaultStore {
protected:
    void settings(const std::string& elements) {
        makeFile(path(), configWith("<ZMW Type=\"0\">" + elements + "</ZMW>"));
    }
    void debugSettings(const std::string& elements) {
        settings("<Advanced Type=\"0\"><Debug Type=\"0\">" + elements + "</Debug></Advanced>");
    }
};

TEST_F(ReadSettings, TheDefaultFileGivesItsDefaults) {
    EXPECT_EQ(_ReadRegSettings(), gszLogName);
    EXPECT_EQ(gfReadReg, 1u);
    EXPECT_EQ(gfShowInfomational, 0u);
    EXPECT_EQ(gfShowWarnings, 1u);
    EXPECT_EQ(gfShowErrors, 1u);
    EXPECT_EQ(gfEnableLog, 1u);
    EXPECT_EQ(gfEnableList, 1u);
    EXPECT_STREQ(gszLogName, "/var/www/html/logs/default.log");
    EXPECT_STREQ(szLogName, "/var/www/html/logs/default.log");
}

TEST_F(ReadSettings, StoredNumbersStayAsTheyAre) {
    debugSettings(
        "<ShowInformational Value=\"1\" Type=\"2\" /><ShowWarnings Value=\"2\" Type=\"2\" />"
        "<ShowErrors Value=\"0\" Type=\"2\" /><UseErrorBox Value=\"3\" Type=\"2\" />"
        "<MKTestActive Value=\"4\" Type=\"2\" /><UseWindow Value=\"6\" Type=\"2\" />"
        "<DebugLevel Value=\"5\" Type=\"2\" /><EnableLog Value=\"0\" Type=\"2\" />"
        "<EnableList Value=\"7\" Type=\"2\" />");
    _ReadRegSettings();
    EXPECT_EQ(gfShowInfomational, 1u);
    EXPECT_EQ(gfShowWarnings, 2u);
    EXPECT_EQ(gfShowErrors, 0u);
    EXPECT_EQ(gfUseErrorBox, 3u);
    EXPECT_EQ(gfMKTestActive, 4u);
    EXPECT_EQ(gfUseErrorWin, 6u);
    EXPECT_EQ(gdwDebugLevel, 5u);
    EXPECT_EQ(gfEnableLog, 0u);
    EXPECT_EQ(gfEnableList, 7u);
    EXPECT_EQ(dwordOf(KVSTDCONFIG, kDebug, "DebugLevel"), 5u);
    gfEnableList = 1;
    gfMKTestActive = 0;
}

TEST_F(ReadSettings, MissingOnesAreWrittenInTheOrderOfReadingFromWhatTheVariablesHold) {
    debugSettings("");
    gdwDebugLevel = 5;
    _ReadRegSettings();
    EXPECT_EQ(gdwDebugLevel, 1u);  // brought to 0 or 1
    EXPECT_EQ(
        namesIn(KVSTDCONFIG, kDebug),
        (std::vector<std::string>{"ShowInformational", "ShowWarnings", "ShowErrors", "UseErrorBox", "MKTestActive",
                                  "UseWindow", "DebugLevel", "EnableLog", "EnableList", "DefaultLogName"}));
    EXPECT_EQ(dwordOf(KVSTDCONFIG, kDebug, "ShowErrors"), 1u);
    EXPECT_EQ(dwordOf(KVSTDCONFIG, kDebug, "DebugLevel"), 1u);
    EXPECT_EQ(dwordOf(KVSTDCONFIG, kDebug, "EnableLog"), 0u);
    EXPECT_EQ(dwordOf(KVSTDCONFIG, kDebug, "EnableList"), 1u);
    EXPECT_EQ(contentOf(path()).find("ShowErrors"), std::string::npos);  // in memory only
}

TEST_F(ReadSettings, AMissingLogNameBecomesADotAndTheGlobalNameStays) {
    debugSettings("");
    std::strcpy(gszLogName, "/set/by/the/host.log");
    _ReadRegSettings();
    EXPECT_STREQ(gszLogName, "/set/by/the/host.log");
    EXPECT_EQ(stringOf(KVSTDCONFIG, kDebug, "DefaultLogName"), ".");
}

TEST_F(ReadSettings, WithoutAnyNameAndServerTheDotStaysAndTheGlobalNameIsEmpty) {
    debugSettings("");
    _ReadRegSettings();
    EXPECT_STREQ(gszLogName, "");
    EXPECT_STREQ(szLogName, "");
    EXPECT_EQ(stringOf(KVSTDCONFIG, kDebug, "DefaultLogName"), ".");
}

TEST_F(ReadSettings, WithoutANameTheServersFolderHasTheLogAndTheStoreIsSaved) {
    settings(
        "<Advanced Type=\"0\"><Debug Type=\"0\" /></Advanced><NetServer Type=\"0\"><HttpDirs Type=\"0\">"
        "<Path Type=\"1\">/srv/www</Path></HttpDirs></NetServer>");
    _ReadRegSettings();
    EXPECT_STREQ(gszLogName, "/srv/www/debugout.log");
    EXPECT_EQ(stringOf(KVSTDCONFIG, kDebug, "DefaultLogName"), "/srv/www/debugout.log");
    EXPECT_NE(contentOf(path()).find("/srv/www/debugout.log"), std::string::npos);
}

TEST_F(ReadSettings, ARelativeNameAndAShortOneAreWiped) {
    for (const char* name : {"relative.log", "/a", "./x.log"}) {
        debugSettings("<DefaultLogName Type=\"1\">" + std::string(name) + "</DefaultLogName>");
        gszLogName[0] = '\0';
        _ReadRegSettings();
        EXPECT_STREQ(gszLogName, "") << name;
        EXPECT_EQ(stringOf(KVSTDCONFIG, kDebug, "DefaultLogName"), "") << name;
        kvCFGClose(KVSTDCONFIG, 0);
    }
    debugSettings("<DefaultLogName Type=\"1\">/ab</DefaultLogName>");
    _ReadRegSettings();
    EXPECT_STREQ(gszLogName, "/ab");
}

TEST_F(ReadSettings, AWipedNameGivesWayToTheServersFolder) {
    settings(
        "<Advanced Type=\"0\"><Debug Type=\"0\"><DefaultLogName Type=\"1\">relative</DefaultLogName></Debug>"
        "</Advanced><NetServer Type=\"0\"><HttpDirs Type=\"0\"><Path Type=\"1\">/srv</Path></HttpDirs></NetServer>");
    _ReadRegSettings();
    EXPECT_STREQ(gszLogName, "/srv/debugout.log");
    EXPECT_EQ(stringOf(KVSTDCONFIG, kDebug, "DefaultLogName"), "/srv/debugout.log");
}

TEST_F(ReadSettings, ANameTooLongForItsBufferIsWipedToo) {
    debugSettings("<DefaultLogName Type=\"1\">/" + std::string(5000, 'x') + "</DefaultLogName>");
    _ReadRegSettings();
    EXPECT_STREQ(gszLogName, "");
    settings("<NetServer Type=\"0\"><HttpDirs Type=\"0\"><Path Type=\"1\">/" + std::string(4090, 'x') +
             "</Path></HttpDirs></NetServer>");
    kvCFGClose(KVSTDCONFIG, 0);
    _ReadRegSettings();
    EXPECT_STREQ(gszLogName, "");
}

TEST_F(ReadSettings, AServersFolderTooLongForAPathIsAsGoodAsNone) {
    for (const std::size_t length : {std::size_t{4085}, std::size_t{4096}, std::size_t{4200}}) {
        settings("<NetServer Type=\"0\"><HttpDirs Type=\"0\"><Path Type=\"1\">/" + std::string(length - 1, 'x') +
                 "</Path></HttpDirs></NetServer>");
        const std::string before = contentOf(path());
        _ReadRegSettings();
        EXPECT_STREQ(gszLogName, "") << length;
        EXPECT_EQ(stringOf(KVSTDCONFIG, kDebug, "DefaultLogName"), ".") << length;
        EXPECT_EQ(contentOf(path()), before) << length;
        kvCFGClose(KVSTDCONFIG, 0);
    }
}

TEST_F(ReadSettings, TheFirstReportReadsThemOnce) {
    debugSettings("<ShowWarnings Value=\"1\" Type=\"2\" />");
    CapturedMessages messages;
    EXPECT_EQ(gfReadReg, 0u);
    ErrMsg(0x40000001, "text", 0, 0, nullptr, 0);
    EXPECT_EQ(gfReadReg, 1u);
    EXPECT_EQ(gfShowWarnings, 1u);
    setDword(KVSTDCONFIG, kDebug, "ShowWarnings", 0);
    ErrMsg(0x40000001, "text", 0, 0, nullptr, 0);
    EXPECT_EQ(gfShowWarnings, 1u);
}

TEST_F(ReadSettings, AnotherRootInTheFileLeavesTheDefaults) {
    makeFile(path(), "<Other />");
    _ReadRegSettings();
    EXPECT_EQ(gfShowErrors, 1u);
    EXPECT_EQ(gfEnableList, 1u);
    EXPECT_STREQ(gszLogName, "");
}

}  // namespace
