// Files that are cut, zeroed, full of noise, nested deeply or large: a backup takes their place, or a new file does.
#include <cerrno>
#include <random>
#include <tinyxml.h>

#include "config/open_store.h"

namespace {

using namespace kvtest;

class Damage : public ::testing::Test {
protected:
    Damage() {
        std::string values;
        for (int i = 0; i < 40; ++i)
            values += "<V" + std::to_string(i) + " Value=\"" + std::to_string(i) + "\" Type=\"2\" />\n";
        good_ = configWith("<!--c--><K Type=\"0\">" + values + "<S Type=\"1\">te&amp;xt<!--why--></S></K>");
    }

    /// What the file is worth: the settings, a new store, or nothing at all.
    enum class Outcome { intact, fresh, none, wrong };

    Outcome outcomeOf(std::uint32_t flags = 0) const {
        OpenStore store(file_, flags);
        if (!store.isOpen()) return Outcome::none;
        if (dwordOf(store, "K", "V39") == 39u && stringOf(store, "K", "S") == "te&xt") return Outcome::intact;
        return kvCFGKeyExists(store, "a") == 1 && kvCFGKeyExists(store, "K") == 0 ? Outcome::fresh : Outcome::wrong;
    }

    void reset(const std::string& content, bool withBackup) const {
        for (const auto& entry : std::filesystem::directory_iterator(scratch_.path())) {
            std::filesystem::remove_all(entry.path());
        }
        makeFile(file_, content);
        if (withBackup) makeFile(backup_, good_);
    }

    /// A damaged file that can't be read: recovered from a backup, else made anew.
    void expectRecovery(const std::string& damaged) const {
        reset(damaged, true);
        EXPECT_EQ(outcomeOf(), Outcome::intact);
        EXPECT_EQ(contentOf(file_), good_);
        EXPECT_EQ(contentOf(file_ + ".bad"), damaged);
        EXPECT_FALSE(std::filesystem::exists(backup_));

        reset(damaged, false);
        EXPECT_EQ(outcomeOf(), Outcome::fresh);
        EXPECT_FALSE(std::filesystem::exists(file_ + ".bad"));
        EXPECT_EQ(outcomeOf(), Outcome::fresh);
        EXPECT_TRUE(contentOf(file_).ends_with("<a Type=\"0\"></a>\n</KorvaneConfig>\n"));
    }

    ScratchFolder scratch_;
    std::string file_ = scratch_ / "a.xml";
    std::string backup_ = scratch_ / "a.000.xml";
    std::string good_;
};

TEST_F(Damage, CutAtEveryByteTheStoreRecovers) {
    const std::size_t whole = good_.rfind("</KorvaneConfig>") + std::string_view("</KorvaneConfig>").size();
    for (std::size_t length = 0; length < whole; ++length) {
        SCOPED_TRACE(length);
        expectRecovery(good_.substr(0, length));
        if (HasFailure()) return;
    }
    reset(good_.substr(0, whole), false);
    EXPECT_EQ(outcomeOf(), Outcome::intact);
}

TEST_F(Damage, ZeroedInAnyBlockTheStoreRecovers) {
    for (std::size_t at = 0; at + 32 < good_.size(); at += 512) {
        SCOPED_TRACE(at);
        std::string damaged = good_;
        for (std::size_t i = at; i < std::min(at + 512, damaged.size()); ++i) damaged[i] = '\0';
        expectRecovery(damaged);
    }
}

TEST_F(Damage, NoiseIsRecoveredFromAndNeverCrashes) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < 300; ++round) {
        std::string noise(random() % 4096, '\0');
        for (char& byte : noise) byte = static_cast<char>(random());
        if (!noise.empty() && noise.front() == '<') noise.front() = 'x';
        expectRecovery(noise);
        if (HasFailure()) return;
    }
}

TEST_F(Damage, SingleBytesOfNoiseNeverCrash) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < 1000; ++round) {
        std::string damaged = good_;
        for (unsigned i = 0; i <= random() % 4; ++i) damaged[random() % damaged.size()] = static_cast<char>(random());
        reset(damaged, true);
        OpenStore store(file_);
        if (!store.isOpen()) continue;
        kvCFGEnumKey(store, nullptr, nullptr, nullptr, 1);
        setDword(store, "K", "V0", 99);
        EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
    }
}

TEST_F(Damage, DeepNestingCountsAsDamage) {
    for (const int depth : {257, 300, 10000, 300000}) {
        std::string open, close;
        for (int i = 0; i < depth; ++i) {
            open += "<k>";
            close += "</k>";
        }
        SCOPED_TRACE(depth);
        expectRecovery("<KorvaneConfig>" + open + close + "</KorvaneConfig>");
        expectRecovery("<KorvaneConfig>" + open);
    }
}

std::string nested(int depth) {
    std::string text;
    for (int i = 0; i < depth; ++i) text += "<k>";
    for (int i = 0; i < depth; ++i) text += "</k>";
    return text;
}

TEST_F(Damage, ADeclarationCanNotHideHowDeepAFileIs) {
    for (const char* name : {"version", "encoding", "standalone", "VERSION", "Encoding"}) {
        for (const char* quote : {"\"", "'"}) {
            const std::string hiding = std::string(name) + "=" + quote + "><!--" + quote + " ?>";
            const std::string reference = std::string(name) + "=" + quote + "&#x" + quote + "><!--x41;" + quote + " ?>";
            SCOPED_TRACE(hiding);
            for (const char* start : {"<?xml ", "<?XmL\t", "<?xml x=\" ", "<?xml-style y=' "}) {
                expectRecovery(start + hiding + "<KorvaneConfig>" + nested(300000) + "</KorvaneConfig>");
                expectRecovery(start + reference + "<KorvaneConfig>" + nested(300000) + "</KorvaneConfig>");
                expectRecovery("<KorvaneConfig>" + (start + hiding) + nested(300000) + "</KorvaneConfig>");
            }
        }
    }
}

TEST_F(Damage, AReferenceCanNotHideHowDeepAFileIs) {
    for (const char* reference : {"&#x<!--x41;", "&#<!--#65;"}) {
        SCOPED_TRACE(reference);
        expectRecovery("<KorvaneConfig>" + std::string(reference) + nested(300000) + "</KorvaneConfig>");
    }
    for (const char* value : {"\"&#x\"><!--x41;\"", "'&#'><!--#65;'"}) {
        SCOPED_TRACE(value);
        expectRecovery("<KorvaneConfig><a b=" + std::string(value) + ">" + nested(300000) + "</a></KorvaneConfig>");
    }
}

TEST_F(Damage, UsualDeclarationsAndReferencesAreNone) {
    for (const char* start : {"<?xml version='1.0'?>", "<?XML Version = \"1.0\" ?>", "<?xml?>", "<?xml version=1.0 ?>",
                              "<?xml-stylesheet type=\"text/xsl\" href='a \"b\".xsl'?>", "<!--&#x <k>;-->"}) {
        reset(start + std::string("<KorvaneConfig><S Type=\"1\">&#65;&#x42;&amp;&none;</S><?xml x='y'?><![CDATA[&# ]]>"
                                  "</KorvaneConfig>"),
              false);
        OpenStore store(file_);
        EXPECT_EQ(namesIn(store, nullptr), std::vector<std::string>{"S"}) << start;
    }
}

std::size_t depthOf(const TiXmlNode& node) {
    std::size_t deepest = 0;
    for (const TiXmlNode* at = node.FirstChild(); at != nullptr; at = at->NextSibling()) {
        if (at->ToElement() != nullptr) deepest = std::max(deepest, depthOf(*at) + 1);
    }
    return deepest;
}

TEST_F(Damage, WhatTheXmlLibraryReadsDeeperThanAStoreMayBeIsNeverOpened) {
    constexpr const char* kPieces[] = {"<k>",   "</k>",  "<k a=",    ">",          "/>",         "\"",   "'",    "=",
                                       "<?xml", "<?XML", " version", "standalone", " encoding=", " ",    "\n",   "?>",
                                       "<!--",  "-->",   "<!",       "<![CDATA[",  "]]>",        "&#",   "&#x",  "x41;",
                                       "#65;",  ";",     "&quot;",   "a",          " b='x'",     "\x80", "<k/>", "<>"};
    constexpr const char* kStarts[] = {"<k>", "<?xml version=", "<k><?xml", "<k a=\"", "<k>&#x"};
    const auto seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const std::string deep = nested(300);
    int readable = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string text = "<KorvaneConfig>";
        if (random() % 4 == 0) text.clear();
        text += kStarts[random() % std::size(kStarts)];
        for (unsigned i = random() % 8; i > 0; --i) text += kPieces[random() % std::size(kPieces)];
        text += deep + "</k>";
        if (random() % 2 == 0) text += "</KorvaneConfig>";
        TiXmlDocument document;
        document.Parse(text.c_str(), nullptr, TIXML_ENCODING_LEGACY);
        if (document.Error() || depthOf(document) <= 257) continue;
        ++readable;
        reset(text, false);
        EXPECT_EQ(outcomeOf(), Outcome::fresh) << text.substr(0, text.find(deep));
    }
    EXPECT_GT(readable, 0);
}

TEST_F(Damage, AFileWithoutAnyElementCountsAsDamage) {
    expectRecovery("<!--only a comment-->\n");
    expectRecovery("<?xml version=\"1.0\" encoding=\"iso-8859-1\" ?>\n<!--a--><!--b-->\n");
}

TEST_F(Damage, AnElementThatTheXmlLibraryDoesNotComeToIsNoneAndTheFileStays) {
    const std::string root = "<KorvaneConfig><K Type=\"0\" /></KorvaneConfig>";
    for (const std::string& text :
         {"<!DOCTYPE KorvaneConfig [ <!ENTITY x \"y\"> ]>" + root,
          "<?xml version=\"1.0\"?>\n<!DOCTYPE KorvaneConfig [\n<!ENTITY x \"y\">\n]>\n" + root,
          "<!--c--> text " + root}) {
        for (const bool withBackup : {false, true}) {
            SCOPED_TRACE(text);
            reset(text, withBackup);
            errno = 0;
            EXPECT_EQ(outcomeOf(), Outcome::none);
            EXPECT_EQ(errno, EINVAL);
            EXPECT_EQ(contentOf(file_), text);
            EXPECT_EQ(std::filesystem::exists(backup_), withBackup);
            EXPECT_FALSE(std::filesystem::exists(file_ + ".bad"));
        }
    }
}

TEST_F(Damage, ABackupWithoutARootThatTheXmlLibraryComesToIsPassedOver) {
    reset("<broken", false);
    makeFile(backup_, "<!--c--> text <KorvaneConfig/>");
    makeFile(scratch_ / "a.001.xml", good_);
    EXPECT_EQ(outcomeOf(), Outcome::intact);
    EXPECT_TRUE(std::filesystem::exists(backup_));
}

TEST_F(Damage, ADoctypeWithoutDeclarationsOfItsOwnIsNone) {
    reset("<!DOCTYPE KorvaneConfig SYSTEM \"a.dtd\"><KorvaneConfig><S Type=\"1\" /></KorvaneConfig>", false);
    OpenStore store(file_);
    EXPECT_EQ(namesIn(store, nullptr), std::vector<std::string>{"S"});
}

TEST_F(Damage, NestingThatCommentsAndValuesOnlyShowIsNone) {
    std::string many;
    for (int i = 0; i < 1000; ++i) many += "<k>";
    reset("<KorvaneConfig><!--" + many + "--><a Type=\"0\" x=\"" + many + "\" y='>' /><![CDATA[" + many +
              "]]><b /></KorvaneConfig>",
          false);
    OpenStore store(file_);
    EXPECT_EQ(namesIn(store, nullptr), (std::vector<std::string>{"a", "b"}));
}

TEST_F(Damage, ManySiblingsAndLongValuesAreRead) {
    std::string many;
    for (int i = 0; i < 20000; ++i) many += "<k>x</k>";
    reset(configWith(many + "<S Type=\"1\">" + std::string(8 << 20, 'y') + "</S>"), false);
    OpenStore store(file_);
    ASSERT_TRUE(store.isOpen());
    EXPECT_EQ(kvCFGKeyExists(store, "S"), 1u);
    EXPECT_EQ(kvCFGKeyExists(store, "a"), 0u);
}

TEST_F(Damage, AFileLargerThanAnyStoreCountsAsDamage) {
    reset(good_, true);
    std::error_code error;
    std::filesystem::resize_file(file_, (std::uintmax_t{64} << 20) + 1, error);
    if (error) GTEST_SKIP() << error.message();
    EXPECT_EQ(outcomeOf(), Outcome::intact);
    EXPECT_TRUE(std::filesystem::exists(file_ + ".bad"));
}

TEST_F(Damage, AStoreTooLargeToBeReadAgainIsNotSaved) {
    reset(good_, false);
    OpenStore store(file_);
    std::string text(33 << 20, 'x');
    std::uint32_t length = 0;
    kvCFGValueString(store, "K", "Large1", text.data(), &length, 1);
    kvCFGValueString(store, "K", "Large2", text.data(), &length, 1);
    EXPECT_EQ(kvCFGClose(kvCFGOpen((scratch_ / "other.xml").c_str(), 0), 0), 0u);
    KVTiXmlConfig* handle = store;
    EXPECT_EQ(handle->SaveConfig(), kFailed);
    EXPECT_EQ(contentOf(file_), good_);
}

TEST_F(Damage, OfSeveralBackupsTheNewestGoodOneIsTaken) {
    reset("<broken", false);
    makeFile(scratch_ / "a.000.xml", "<broken too");
    makeFile(scratch_ / "a.003.xml", good_);
    makeFile(scratch_ / "a.004.xml", configWith("<Old />"));
    EXPECT_EQ(outcomeOf(), Outcome::intact);
    EXPECT_EQ(contentOf(scratch_ / "a.000.xml"), "<broken too");
    EXPECT_FALSE(std::filesystem::exists(scratch_ / "a.003.xml"));
    EXPECT_TRUE(std::filesystem::exists(scratch_ / "a.004.xml"));
}

TEST_F(Damage, SixBackupsAreTried) {
    reset("<broken", false);
    makeFile(scratch_ / "a.005.xml", good_);
    EXPECT_EQ(outcomeOf(), Outcome::intact);
    reset("<broken", false);
    makeFile(scratch_ / "a.006.xml", good_);
    EXPECT_EQ(outcomeOf(), Outcome::fresh);
}

TEST_F(Damage, AnEarlierBadFileIsReplaced) {
    reset("<broken", true);
    makeFile(file_ + ".bad", "earlier");
    EXPECT_EQ(outcomeOf(), Outcome::intact);
    EXPECT_EQ(contentOf(file_ + ".bad"), "<broken");
}

TEST_F(Damage, WithoutBackupsNoBadFileIsKept) {
    reset("<broken", false);
    makeFile(file_ + ".bad", "earlier");
    EXPECT_EQ(outcomeOf(), Outcome::fresh);
    EXPECT_EQ(contentOf(file_ + ".bad"), "earlier");
}

TEST_F(Damage, AMissingFileIsRestoredFromABackupWithoutABadFile) {
    reset("", true);
    std::filesystem::remove(file_);
    EXPECT_EQ(outcomeOf(), Outcome::intact);
    EXPECT_EQ(contentOf(file_), good_);
    EXPECT_FALSE(std::filesystem::exists(file_ + ".bad"));
}

TEST_F(Damage, TheFlagLeavesTheBackupsAlone) {
    reset("<broken", true);
    EXPECT_EQ(outcomeOf(KVCFG_NO_BACKUPS), Outcome::fresh);
    EXPECT_EQ(contentOf(backup_), good_);
    EXPECT_FALSE(std::filesystem::exists(file_ + ".bad"));
    reset(good_, true);
    EXPECT_EQ(outcomeOf(KVCFG_NO_BACKUPS), Outcome::intact);
    reset("<broken", true);
    EXPECT_EQ(outcomeOf(KVCFG_NO_BACKUPS ^ 0xFFFFFFFF), Outcome::intact);
}

}  // namespace
