// A new config.xml against a list of what has to be in it, which was not made from the library's table.
//
// Lines of the list: "key PATH", then for each value "dword NAME NUMBER", "string NAME TEXT", "binary NAME DIGITS", or
// "userfile NAME FILE" for a file in the user's own configuration directory.
#include <fstream>
#include <sstream>
#include <tinyxml.h>

#include "config/open_store.h"
#include "hosts.h"
#include "kvos/attributes.h"

namespace {

using namespace kvtest;

struct Expected {
    std::string key, name, type, value;
    bool operator==(const Expected&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Expected& row) {
    return out << row.key << " " << row.name << " " << row.type << " " << row.value;
}

std::vector<Expected> expectedValues() {
    std::ifstream list(DEFAULT_TREE_EXPECTED);
    char folder[4096] = "";
    kvOSGetConfigDir(folder, 1);
    std::vector<Expected> values;
    std::string line, key;
    while (std::getline(list, line)) {
        std::istringstream words(line);
        std::string kind, name, value;
        words >> kind >> name >> std::ws;
        std::getline(words, value);
        if (kind == "key") {
            key = name;
        } else if (kind == "dword") {
            values.push_back({key, name, "2", value});
        } else if (kind == "binary") {
            values.push_back({key, name, "3", value});
        } else {
            values.push_back({key, name, "1", kind == "userfile" ? folder + value : value});
        }
    }
    for (const char* host : {KVUTIL_STORAGE_HOST, KVUTIL_IDENTITY_HOST}) {
        values.push_back({std::string("MediaKiln\\OAuth2\\") + host, "oauth2server", "1", KVUTIL_TOKEN_ENDPOINT});
    }
    return values;
}

/// All values of a file, in the file's order, but for those of deeper keys, which come where their key begins.
void collect(const TiXmlElement& key, const std::string& path, std::vector<Expected>& values) {
    for (const TiXmlElement* at = key.FirstChildElement(); at != nullptr; at = at->NextSiblingElement()) {
        const std::string type = at->Attribute("Type") == nullptr ? "" : at->Attribute("Type");
        if (type == "0") {
            collect(*at, path.empty() ? at->ValueStr() : path + "\\" + at->ValueStr(), values);
        } else if (type == "2") {
            EXPECT_STREQ(at->FirstAttribute()->Name(), "Value");
            EXPECT_EQ(at->FirstChild(), nullptr);
            values.push_back({path, at->ValueStr(), type, at->Attribute("Value")});
        } else {
            EXPECT_STREQ(at->FirstAttribute()->Name(), "Type");
            values.push_back({path, at->ValueStr(), type, at->GetText() == nullptr ? "" : at->GetText()});
        }
    }
}

class DefaultTree : public ::testing::Test {
protected:
    DefaultTree() { OpenStore store(file_); }

    ScratchFolder scratch_;
    std::string file_ = scratch_ / "config.xml";
};

TEST_F(DefaultTree, HoldsExactlyTheListedValuesInTheirOrder) {
    TiXmlDocument document;
    ASSERT_TRUE(document.LoadFile(file_.c_str()));
    std::vector<Expected> found;
    collect(*document.RootElement(), "", found);
    const std::vector<Expected> expected = expectedValues();
    ASSERT_EQ(expected.size(), 500u + 2u);  // of 506, six have an empty default and are not in the file
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(found[i], expected[i]) << i;
}

TEST_F(DefaultTree, BeginsWithDeclarationRootAndTwoComments) {
    EXPECT_TRUE(
        contentOf(file_).starts_with("<?xml version=\"1.0\" encoding=\"iso-8859-1\" ?>\n<KorvaneConfig>\n"
                                     "    <!--KorvaneConfig xml structure version 1,0-->\n"
                                     "    <!--Key Types 0=Key,1=String,2=Dword,3=Binary-->\n"
                                     "    <ZMW Type=\"0\">\n"
                                     "        <Advanced Type=\"0\">\n"
                                     "            <EnableLargeRW Value=\"1\" Type=\"2\" />\n"));
}

TEST_F(DefaultTree, EmptyDefaultsAreNotInTheFile) {
    const std::string content = contentOf(file_);
    for (const char* name : {"<Password", "<UserName", "<FilmFile", "<EditFile", "<LastClip", "<ChannelName"}) {
        EXPECT_EQ(content.find(name), std::string::npos) << name;
    }
}

TEST_F(DefaultTree, NamesWrittenTwiceHaveTheLaterValue) {
    OpenStore store(file_);
    EXPECT_EQ(dwordOf(store, "ZMW\\Control0", "EditOn"), 6u);
    EXPECT_EQ(dwordOf(store, "ZMW\\Control0", "EditOff"), 6u);
    EXPECT_EQ(dwordOf(store, "ZMW\\Internal0", "EditOn"), 4u);
    EXPECT_EQ(dwordOf(store, "ZMW\\Internal0", "EditOff"), 4u);
}

TEST_F(DefaultTree, ReadsThroughTheCalls) {
    OpenStore store(file_);
    EXPECT_EQ(dwordOf(store, "ZMW\\Advanced", "EnableLargeRW"), 1u);
    EXPECT_EQ(dwordOf(store, "ZMW\\Advanced\\Debug", "ShowWarnings"), 1u);
    EXPECT_EQ(dwordOf(store, "ZMW\\Advanced\\Debug", "EnableLog"), 1u);
    EXPECT_EQ(dwordOf(store, "ZMW\\Advanced\\MediaFile\\TestPatterns", "UBLtc"), 0xABCDEF01u);
    EXPECT_EQ(dwordOf(store, "ZMW\\Advanced\\ZMWUNC", "ProcessorMask"), 0xFFFFFFFFu);
    EXPECT_EQ(stringOf(store, "ZMW\\RecordDir", "Dir"), "/var/www/html/video/live/");
    unsigned char bytes[64] = {};
    EXPECT_EQ(kvCFGValueBinary(store, "ZMW\\Advanced\\ZMWUNC", "AudioMappingInput", bytes, nullptr, 0), 64u);
    for (unsigned i = 0; i < 16; ++i) {
        std::uint32_t word = 0;
        for (unsigned byte = 4; byte-- > 0;) word = word << 8 | bytes[i * 4 + byte];
        EXPECT_EQ(word, 1u << i);
    }
    EXPECT_EQ(kvCFGValueBinary(store, "ZMW\\Control0", "DiskName", bytes, nullptr, 0), 11u);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(bytes), 11), std::string("ZMW Disk\0\0\0", 11));
}

TEST_F(DefaultTree, HasOneChannelOnly) {
    OpenStore store(file_);
    EXPECT_EQ(kvCFGKeyExists(store, "ZMW\\Control0"), 1u);
    EXPECT_EQ(kvCFGKeyExists(store, "ZMW\\Control1"), 0u);
}

TEST_F(DefaultTree, FillingAStoreAgainSetsValuesBackAndKeepsOthers) {
    OpenStore store(file_);
    setDword(store, "ZMW\\Control0", "EditOn", 9);
    setDword(store, "ZMW\\Control0", "Mine", 9);
    EXPECT_EQ(kvCFGDefaultZMW(store), 0u);
    EXPECT_EQ(kvCFGIsModified(store), 0u);  // it saves
    OpenStore again(file_);
    EXPECT_EQ(dwordOf(again, "ZMW\\Control0", "EditOn"), 6u);
    EXPECT_EQ(dwordOf(again, "ZMW\\Control0", "Mine"), 9u);
    EXPECT_EQ(kvCFGDefaultZMW(nullptr), kFailed);
}

}  // namespace
