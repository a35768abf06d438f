// kv cfg.
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/stat.h>

#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;

constexpr const char* kSmall =
    "<?xml version=\"1.0\" encoding=\"iso-8859-1\" ?>\n<KorvaneConfig><ZMW Type=\"0\"><A Type=\"0\">"
    "<D Value=\"-1\" Type=\"2\" /><S Type=\"1\">text</S></A><B Type=\"3\">0AFF</B></ZMW><Empty Type=\"0\" />"
    "</KorvaneConfig>\n";

Outcome cfg(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"cfg", "--file", "a.xml"});
    return runKv(std::move(arguments));
}

/// A value after the fact, as another run of the program sees it.
std::string valueOf(const std::string& path) { return cfg({"get", path}).out; }

std::string home() { return std::getenv("HOME"); }

bool hasSettingsForAll() { return std::filesystem::exists("/Library/Application Support"); }

class Cfg : public ::testing::Test {
protected:
    Cfg() { makeFile("a.xml", kSmall); }
};

TEST_F(Cfg, GetsValuesWithBackslashesOrSlashes) {
    EXPECT_EQ(valueOf("ZMW\\A\\D"), "-1\n");
    EXPECT_EQ(valueOf("ZMW/A/S"), "text\n");
    EXPECT_EQ(valueOf("ZMW/B"), "0AFF\n");
    EXPECT_EQ(cfg({"get", "ZMW/A/D", "--json"}).json(),
              nlohmann::json({{"path", "ZMW\\A\\D"}, {"type", "dword"}, {"value", -1}}));
}

TEST_F(Cfg, TellsWhatCanNotBeGot) {
    EXPECT_EQ(cfg({"get", "ZMW/None"}).err, "kv: cannot get 'ZMW\\None': there is no such setting\n");
    EXPECT_EQ(cfg({"get", "ZMW/A"}).err, "kv: cannot get 'ZMW\\A': it is a key (see kv cfg list)\n");
    EXPECT_EQ(cfg({"get", "ZMW/A"}).exit, 1);
    EXPECT_EQ(cfg({"get"}).exit, 2);
    EXPECT_EQ(cfg({}).exit, 2);
    EXPECT_EQ(runKv({"cfg", "--file", "none.xml", "get", "A"}).err,
              "kv: cannot open settings 'none.xml': No such file or directory\n");
    EXPECT_FALSE(std::filesystem::exists("none.xml"));
    makeFile("other.xml", "<Other/>");
    EXPECT_EQ(runKv({"cfg", "-f", "other.xml", "list"}).err,
              "kv: cannot open settings 'other.xml': it is XML, but holds no settings\n");
    makeFile("euro.xml",
             "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?><KorvaneConfig><S>&#8364;</S></KorvaneConfig>");
    EXPECT_EQ(runKv({"cfg", "-f", "euro.xml", "list"}).err,
              std::string("kv: cannot open settings 'euro.xml': ") + std::strerror(EILSEQ) + "\n");
}

TEST_F(Cfg, ListsATree) {
    EXPECT_EQ(cfg({"list"}).out,
              "a.xml\n"
              "├── ZMW\n"
              "│   ├── A\n"
              "│   │   ├── D = -1\n"
              "│   │   └── S = \"text\"\n"
              "│   └── B = 0AFF\n"
              "└── Empty\n");
    EXPECT_EQ(cfg({"list", "ZMW/A"}).out, "ZMW\\A\n├── D = -1\n└── S = \"text\"\n");
    EXPECT_EQ(cfg({"list", "None"}).exit, 1);
}

TEST_F(Cfg, ListsJson) {
    const auto all = cfg({"list", "--json"}).json();
    ASSERT_EQ(all.size(), 6u);
    EXPECT_EQ(all[0], nlohmann::json({{"path", "ZMW"}, {"type", "key"}}));
    EXPECT_EQ(all[2], nlohmann::json({{"path", "ZMW\\A\\D"}, {"type", "dword"}, {"value", -1}}));
    EXPECT_EQ(all[4], nlohmann::json({{"path", "ZMW\\B"}, {"type", "binary"}, {"value", "0AFF"}}));
}

TEST_F(Cfg, ListingNamesThatComeTwiceEnds) {
    makeFile("a.xml", "<KorvaneConfig><K Type=\"0\"><A/><B/><A/></K></KorvaneConfig>");
    EXPECT_EQ(cfg({"list"}).out, "a.xml\n└── K\n    ├── A = \n    └── B = \n");
}

TEST_F(Cfg, SetsValuesInTheTypeTheyHave) {
    EXPECT_EQ(cfg({"set", "ZMW/A/D", "0x10"}).exit, 0);
    EXPECT_EQ(valueOf("ZMW/A/D"), "16\n");
    EXPECT_EQ(cfg({"set", "ZMW/A/D", "4294967295"}).exit, 0);
    EXPECT_EQ(valueOf("ZMW/A/D"), "-1\n");
    EXPECT_EQ(cfg({"set", "ZMW/A/D", "--", "-5"}).exit, 0);
    EXPECT_EQ(valueOf("ZMW/A/D"), "-5\n");
    EXPECT_EQ(cfg({"set", "ZMW/A/S", "17"}).exit, 0);
    EXPECT_EQ(cfg({"get", "ZMW/A/S", "--json"}).json()["type"], "string");
    EXPECT_EQ(cfg({"set", "ZMW/B", "00ff10"}).exit, 0);
    EXPECT_EQ(valueOf("ZMW/B"), "00FF10\n");
}

TEST_F(Cfg, SetsWhatTheLibraryWouldLeaveAlone) {
    EXPECT_EQ(cfg({"set", "ZMW/A/S", "TEXT"}).exit, 0);
    EXPECT_EQ(valueOf("ZMW/A/S"), "TEXT\n");
    EXPECT_EQ(cfg({"set", "ZMW/B", "0AFF01"}).exit, 0);
    EXPECT_EQ(valueOf("ZMW/B"), "0AFF01\n");
    EXPECT_EQ(cfg({"set", "ZMW/A/S", ""}).exit, 0);
    EXPECT_EQ(valueOf("ZMW/A/S"), "\n");
}

TEST_F(Cfg, SetsNewValuesUnderNewKeys) {
    EXPECT_EQ(cfg({"set", "New/Deep/Number", "5"}).exit, 0);
    EXPECT_EQ(cfg({"get", "New/Deep/Number", "--json"}).json()["type"], "dword");
    EXPECT_EQ(cfg({"set", "New/Text", "some words"}).exit, 0);
    EXPECT_EQ(cfg({"get", "New/Text", "--json"}).json()["type"], "string");
    EXPECT_EQ(cfg({"set", "--type", "string", "New/Digits", "5"}).exit, 0);
    EXPECT_EQ(cfg({"get", "New/Digits", "--json"}).json()["type"], "string");
    EXPECT_EQ(cfg({"set", "--type", "binary", "Other/Key/Bytes", "AB"}).exit, 0);
    EXPECT_EQ(valueOf("Other/Key/Bytes"), "AB\n");
    EXPECT_EQ(cfg({"set", "-t", "string", "New/None", ""}).exit, 0);
    EXPECT_EQ(valueOf("New/None"), "\n");
}

TEST_F(Cfg, TellsWhatCanNotBeSet) {
    const std::string before = contentOf("a.xml");
    EXPECT_EQ(cfg({"set", "ZMW/A/D", "many"}).err, "kv: cannot set 'ZMW\\A\\D': 'many' is no number of 32 bits\n");
    EXPECT_EQ(cfg({"set", "ZMW/A/D", "4294967296"}).exit, 1);
    EXPECT_EQ(cfg({"set", "ZMW/B", "ABC"}).err, "kv: cannot set 'ZMW\\B': 'ABC' is not pairs of hexadecimal digits\n");
    EXPECT_EQ(cfg({"set", "ZMW/A", "1"}).err, "kv: cannot set 'ZMW\\A': it is a key\n");
    EXPECT_EQ(cfg({"set", "ZMW/A/D", "-t", "string", "x"}).err,
              "kv: cannot set 'ZMW\\A\\D': it is there as a dword (see kv cfg rm)\n");
    EXPECT_EQ(cfg({"set", "Top", "1"}).err, "kv: cannot set 'Top': a value is in a key, as in KEY\\NAME\n");
    EXPECT_EQ(cfg({"set", "ZMW/a b", "1"}).err, "kv: cannot set 'ZMW\\a b': that can't be a name\n");
    EXPECT_EQ(cfg({"set", "ZMW/D", "1", "-t", "word"}).exit, 2);
    EXPECT_EQ(contentOf("a.xml"), before);
}

TEST_F(Cfg, TellsWhereAValueCanNotGo) {
    for (const char* type : {"1", "3"}) {
        makeFile("a.xml",
                 "<KorvaneConfig><K Type=\"0\"><S Type=\"" + std::string(type) + "\"><!--c--></S></K></KorvaneConfig>");
        const std::string before = contentOf("a.xml");
        const auto outcome = cfg({"set", "K/S", "AB"});
        EXPECT_EQ(outcome.exit, 1);
        EXPECT_EQ(outcome.err, "kv: cannot set 'K\\S': it holds something else ahead of its value (see kv cfg rm)\n");
        EXPECT_EQ(contentOf("a.xml"), before);
        EXPECT_EQ(cfg({"rm", "K/S"}).exit, 0);
        EXPECT_EQ(cfg({"set", "K/S", "AB"}).exit, 0);
        EXPECT_EQ(valueOf("K/S"), "AB\n");
    }
}

TEST_F(Cfg, RemovesRenamesAndCopies) {
    EXPECT_EQ(cfg({"copy", "ZMW/A", "A2"}).exit, 0);
    EXPECT_EQ(valueOf("ZMW/A2/D"), "-1\n");
    EXPECT_EQ(cfg({"rename", "ZMW/A2/D", "E"}).exit, 0);
    EXPECT_EQ(valueOf("ZMW/A2/E"), "-1\n");
    EXPECT_EQ(cfg({"rm", "ZMW/A2"}).exit, 0);
    EXPECT_EQ(cfg({"get", "ZMW/A2/E"}).exit, 1);
    EXPECT_EQ(cfg({"copy", "ZMW", "ZMW2"}).exit, 0);
    EXPECT_EQ(valueOf("ZMW2/B"), "0AFF\n");
}

TEST_F(Cfg, TellsWhatCanNotBeRemovedRenamedOrCopied) {
    EXPECT_EQ(cfg({"rm", "ZMW/None"}).err, "kv: cannot remove 'ZMW\\None': there is no such setting\n");
    EXPECT_EQ(cfg({"rm", "ZMW"}).err, "kv: cannot remove 'ZMW': a top key stays\n");
    EXPECT_EQ(cfg({"rename", "ZMW/A", "B"}).err, "kv: cannot rename 'ZMW\\A': 'B' is there already\n");
    EXPECT_EQ(cfg({"rename", "ZMW/A", "a b"}).err, "kv: cannot rename 'ZMW\\A': 'a b' can't be a name\n");
    EXPECT_EQ(cfg({"rename", "ZMW", "X"}).err, "kv: cannot rename 'ZMW': a top key stays\n");
    EXPECT_EQ(cfg({"copy", "ZMW/None", "X"}).err, "kv: cannot copy 'ZMW\\None': there is no such setting\n");
    EXPECT_EQ(cfg({"copy", "ZMW/A", "1"}).exit, 1);
}

TEST_F(Cfg, AReadOnlyFileIsTold) {
    ASSERT_EQ(chmod("a.xml", 0444), 0);
    EXPECT_EQ(cfg({"set", "ZMW/A/D", "1"}).err, "kv: cannot save settings 'a.xml': the file is read-only\n");
    EXPECT_EQ(valueOf("ZMW/A/D"), "-1\n");
}

TEST_F(Cfg, ADamagedFileIsRecoveredFromItsBackup) {
    EXPECT_EQ(cfg({"set", "ZMW/A/D", "5"}).exit, 0);
    makeFile("a.xml", "damaged");
    EXPECT_EQ(valueOf("ZMW/A/D"), "5\n");
    EXPECT_EQ(contentOf("a.xml.bad"), "damaged");
}

// ---- the default settings ----------------------------------------------------------------------------------------

TEST(CfgDefaults, AreReadWithoutAFolderAndChangesAreRefused) {
    if (hasSettingsForAll()) GTEST_SKIP() << "this machine has settings for all its users";
    EXPECT_EQ(runKv({"cfg", "get", "ZMW/Control0/EditOn"}).out, "6\n");
    EXPECT_GT(runKv({"cfg", "list", "--json"}).json().size(), 500u);
    const Outcome run = runKv({"cfg", "set", "ZMW/Control0/EditOn", "7"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("there is no such file, and no folder for it (see kv cfg init)\n"), std::string::npos)
        << run.err;
}

TEST(CfgDefaults, InitMakesTheFolderAndSaysWhere) {
    if (hasSettingsForAll()) GTEST_SKIP() << "this machine has settings for all its users";
    const Outcome run = runKv({"cfg", "init"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    const std::string folder = run.out.substr(0, run.out.size() - 1);
    EXPECT_TRUE(std::filesystem::equivalent(folder, home() + "/Library/Application Support/Korvane"));
    EXPECT_EQ(runKv({"cfg", "init"}).out, run.out);
    EXPECT_EQ(runKv({"cfg", "path"}).out, folder + "config.xml\n");
    EXPECT_EQ(runKv({"cfg", "set", "ZMW/Control0/EditOn", "7"}).exit, 0);
    EXPECT_EQ(runKv({"cfg", "get", "ZMW/Control0/EditOn"}).out, "7\n");
}

TEST(CfgDefaults, InitTellsWhatItCanNotMake) {
    if (hasSettingsForAll()) GTEST_SKIP() << "this machine has settings for all its users";
    makeFile(home() + "/Library");
    const Outcome run = runKv({"cfg", "init"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("Library/Application Support/Korvane/': Not a directory\n"), std::string::npos) << run.err;
}

TEST(CfgDefaults, DisabledSavingIsToldAndForced) {
    if (hasSettingsForAll()) GTEST_SKIP() << "this machine has settings for all its users";
    ASSERT_EQ(runKv({"cfg", "init"}).exit, 0);
    EXPECT_EQ(runKv({"cfg", "set", "ZMW/Config/DisableSave", "1"}).exit, 0);
    const Outcome run = runKv({"cfg", "set", "ZMW/Control0/EditOn", "7"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_NE(run.err.find("its DisableSave is set (--force saves all the same)\n"), std::string::npos) << run.err;
    EXPECT_EQ(runKv({"cfg", "get", "ZMW/Control0/EditOn"}).out, "6\n");
    EXPECT_EQ(runKv({"cfg", "set", "--force", "ZMW/Config/DisableSave", "0"}).exit, 0);
    EXPECT_EQ(runKv({"cfg", "set", "ZMW/Control0/EditOn", "7"}).exit, 0);
}

}  // namespace
