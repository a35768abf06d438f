// What the library and other clients of real object stores make of each other's objects: s3cmd, whose signing and whose
// encoding of keys are its own, and libcurl's signing, by which ObjectStore reads and writes.
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>

#include "file/owned_file.h"
#include "kvos/attributes.h"
#include "kvos/s3.h"
#include "servers/object_store.h"
#include "support/scratch.h"
#include "tools/run_kv.h"

namespace kvtest {

void PrintTo(ObjectStore::Engine engine, std::ostream* out) {
    *out << (engine == ObjectStore::Engine::ceph ? "Ceph" : "Swift");
}

}  // namespace kvtest

namespace {

using namespace kvtest;
using Engine = ObjectStore::Engine;

constexpr std::uint32_t kPartSize = 60u << 20;

/// Each has something in it that one encoding or another could lose.
const std::vector<std::string> kKeys{
    "two words.mov", "one+two.mov",           "50%.mov",        "a%20b%2Fc.mov",      "salt & pepper=2.mov", ".hidden",
    "folder/.clip",  "ümläut € \u65e5\u672c", "quote'\"<>.mov", "what?no#!,;(1)*.mov"};

/// Not a repetition of anything, so that no two places can be taken for one another.
std::string anyBytes(std::size_t count) {
    std::mt19937_64 random(count);
    std::string bytes(count + sizeof(std::uint64_t), '\0');
    for (std::size_t at = 0; at < count; at += sizeof(std::uint64_t)) {
        const std::uint64_t value = random();
        std::memcpy(&bytes[at], &value, sizeof value);
    }
    bytes.resize(count);
    return bytes;
}

class S3Cross : public ::testing::TestWithParam<Engine> {
protected:
    S3Cross() {
        sdwS3DisableSSL = 1;
        sdwS3VerifySSL = 1;
    }

    /// Ceph 16.2 decodes the source of a part's copy twice, and every file is finished by such a copy.
    bool canWrite(const std::string& key) const {
        return GetParam() != Engine::ceph || key.find('%') == std::string::npos;
    }

    void writeByLibrary(const std::string& locator, const std::string& content) {
        OwnedFile file = openFile(locator, KVFILE_WRITE, KVFILE_CREATE_ALWAYS);
        ASSERT_TRUE(file.isOpen()) << locator;
        EXPECT_EQ(
            kvOSWriteFile(file.handle(), content.data(), static_cast<std::uint32_t>(content.size()), nullptr, nullptr),
            content.size());
        EXPECT_EQ(file.close(), 1u);
    }

    std::string readByLibrary(const std::string& locator) {
        const OwnedFile file = openForReading(locator);
        EXPECT_TRUE(file.isOpen()) << locator;
        return file.isOpen() ? readAll(file) : std::string();
    }

    std::string object(const std::string& key) const { return "s3://" + store_.bucket() + "/" + key; }

    void s3cmd(std::vector<std::string> arguments) {
        for (const std::string& option :
             {std::string("--no-ssl"), "--access_key=" + store_.accessKey(), "--secret_key=" + store_.secretKey(),
              "--host=" + store_.host(), "--host-bucket=" + store_.host(), "--region=" + store_.region()}) {
            arguments.push_back(option);
        }
        const Outcome run = runProgram("/usr/bin/s3cmd", std::move(arguments));
        EXPECT_EQ(run.exit, 0) << run.out << run.err;
    }

    ObjectStore store_ = ObjectStore::shared(GetParam());
    const ScratchFolder folder_;
};

TEST_P(S3Cross, ReadsWhatS3cmdWrote) {
    for (const std::string& key : kKeys) {
        std::filesystem::create_directories(std::filesystem::path(folder_ / key).parent_path());
        makeFile(folder_ / key, "content of " + key);
    }
    s3cmd({"put", "--recursive", folder_ / "", object("")});
    for (const std::string& key : kKeys) EXPECT_EQ(readByLibrary(store_.locator(key)), "content of " + key);
}

TEST_P(S3Cross, WritesWhatS3cmdReads) {
    std::vector<std::string> written = kKeys;
    std::erase_if(written, [&](const std::string& key) { return !canWrite(key); });
    for (const std::string& key : written) writeByLibrary(store_.locator(key), "content of " + key);
    s3cmd({"get", "--recursive", object(""), folder_ / ""});
    for (const std::string& key : written) EXPECT_EQ(contentOf(folder_ / key), "content of " + key);
    std::ranges::sort(written);
    EXPECT_EQ(store_.keys(), written);
}

// s3cmd takes a key with a slash at its end for a folder.
TEST_P(S3Cross, ExchangesAKeyThatEndsWithASlash) {
    store_.put("folder/", "one");
    EXPECT_EQ(readByLibrary(store_.locator("folder/")), "one");
    writeByLibrary(store_.locator("other/folder/"), "two");
    EXPECT_EQ(store_.content("other/folder/"), "two");
}

TEST_P(S3Cross, WritesPartsThatS3cmdReadsAsOneObject) {
    const std::string content = anyBytes(kPartSize + 12'345);
    writeByLibrary(store_.locator("long clip.mxf"), content);
    s3cmd({"get", object("long clip.mxf"), folder_ / "copy"});
    EXPECT_TRUE(contentOf(folder_ / "copy") == content);
    EXPECT_EQ(store_.keys(), std::vector<std::string>{"long clip.mxf"});
    EXPECT_EQ(store_.header("long clip.mxf", "Content-Type"), "application/mxf");
}

TEST_P(S3Cross, ReadsAnObjectThatS3cmdPutTogetherOfParts) {
    const std::string content = anyBytes(kPartSize + 12'345);
    makeFile(folder_ / "clip", content);
    s3cmd({"put", "--multipart-chunk-size-mb=15", folder_ / "clip", object("long clip.mxf")});
    EXPECT_TRUE(readByLibrary(store_.locator("long clip.mxf")) == content);
}

// A deletion always goes through TLS.
TEST_P(S3Cross, DeletesWhatAnotherClientWrote) {
    for (const std::string& key : kKeys) {
        store_.put(key, key);
        EXPECT_EQ(kvOSDeleteFile(store_.secureLocator(key).c_str()), 0u) << key;
    }
    EXPECT_TRUE(store_.keys().empty());
}

TEST_P(S3Cross, ReadsABucketByItsHostsName) {
    store_.put("clip.mov", "content");
    const std::string user = store_.accessKey() + ":" + store_.secretKey();
    EXPECT_EQ(readByLibrary("s3://" + user + "@" + store_.bucket() + "." + store_.virtualHost() + "/clip.mov"),
              "content");
}

TEST_P(S3Cross, ReadsAndWritesThroughTls) {
    sdwS3DisableSSL = 0;
    sdwS3VerifySSL = 0;
    writeByLibrary(store_.secureLocator("clip.mov"), "content");
    EXPECT_EQ(store_.content("clip.mov"), "content");
    EXPECT_EQ(readByLibrary(store_.secureLocator("clip.mov")), "content");
}

TEST_P(S3Cross, RefusesACertificateThatNobodyVouchesFor) {
    sdwS3DisableSSL = 0;
    store_.put("clip.mov", "content");
    EXPECT_FALSE(openForReading(store_.secureLocator("clip.mov")).isOpen());
}

TEST_P(S3Cross, OpensNothingForAStrangerNorWithAWrongKey) {
    store_.put("clip.mov", "content");
    EXPECT_FALSE(openForReading(store_.strangerLocator("clip.mov")).isOpen());
    std::string wrong = store_.locator("clip.mov");
    wrong.insert(wrong.find('@'), "x");
    EXPECT_FALSE(openForReading(wrong).isOpen());
    EXPECT_FALSE(openForReading("s3://" + store_.host() + "/" + store_.bucket() + "/clip.mov").isOpen());
}

INSTANTIATE_TEST_SUITE_P(Engines, S3Cross, ::testing::Values(Engine::ceph, Engine::swift),
                         ::testing::PrintToStringParamName());

}  // namespace
