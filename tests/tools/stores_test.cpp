// Every command on objects of a store, and the secrets of locators.
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

#include "kvcfg.h"
#include "servers/nginx.h"
#include "servers/scripted_server.h"
#include "servers/scripted_store.h"
#include "support/scratch.h"
#include "tools/run_kv.h"
#include "tools/running_kv.h"

namespace {

using namespace kvtest;

/// Settings of the user that kv runs for: plain HTTP to stores, and no verification of a certificate.
class Stores : public ::testing::Test {
protected:
    void SetUp() override {
        if (std::filesystem::exists("/Library/Application Support")) GTEST_SKIP() << "the machine has settings for all";
        std::filesystem::create_directories(std::string(std::getenv("HOME")) + "/Library/Application Support");
        set("S3DisableSSL", 1);
    }

    static void set(const char* name, std::uint32_t value) {
        ASSERT_EQ(kvCFGValueDword(KVSTDCONFIG, "MediaKiln\\Default", name, &value, 1), 0u);
        ASSERT_EQ(kvCFGSave(KVSTDCONFIG, nullptr, 1), 0u);
    }

    std::string shown(const std::string& key) const { return "s3://ACCESS:***@" + store_.host() + "/bucket/" + key; }
    std::vector<std::string> listed(const std::string& pattern) const {
        std::vector<std::string> names;
        for (const auto& entry : runKv({"ls", "--json", store_.locator(pattern)}).json())
            names.push_back(entry["name"]);
        return names;
    }

    ScriptedStore store_;
};

using Names = std::vector<std::string>;

std::string manyBytes(std::size_t size) {
    std::string bytes(size, 'x');
    for (std::size_t i = 0; i < size; i += 97) bytes[i] = static_cast<char>(i / 97);
    return bytes;
}

void expectDone(const Outcome& run) {
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
}

}  // namespace

TEST_F(Stores, CatGivesExactlyTheBytes) {
    for (const std::size_t size : {1u, 1000u, 5u << 20, (11u << 20) + 1}) {
        store_.put("clip", manyBytes(size));
        const Outcome run = runKv({"cat", store_.locator("clip")});
        expectDone(run);
        EXPECT_TRUE(run.out == manyBytes(size)) << size;
    }
    store_.put("empty", "");
    const Outcome run = runKv({"cat", store_.locator("empty")});
    expectDone(run);
    EXPECT_EQ(run.out, "");
}

TEST_F(Stores, PutAndCpStoreAFileWhole) {
    const std::string content = manyBytes(3 << 20);
    expectDone(runKv({"put", store_.locator("put.wav")}, {.in = content}));
    EXPECT_EQ(store_.content("put.wav"), content);
    EXPECT_EQ(store_.contentType("put.wav"), "audio/wave");
    makeFile("clip.mov", content);
    expectDone(runKv({"cp", "clip.mov", store_.locator("copies/")}));
    EXPECT_EQ(store_.content("copies/clip.mov"), content);
    expectDone(runKv({"cp", store_.locator("copies/clip.mov"), "back.mov"}));
    EXPECT_EQ(contentOf("back.mov"), content);
    expectDone(runKv({"cp", store_.locator("put.wav"), store_.locator("other.wav")}));
    EXPECT_EQ(store_.content("other.wav"), content);
    EXPECT_EQ(store_.keys(), (Names{"copies/clip.mov", "other.wav", "put.wav"}));  // no parts are left
}

TEST_F(Stores, CpAndMvKeepEveryByteOfEverySize) {
    for (const std::size_t size : {1u, 100u, 1u << 20, (1u << 20) + 100}) {
        SCOPED_TRACE(size);
        makeFile("clip", manyBytes(size));
        expectDone(runKv({"cp", "clip", store_.locator("copy")}));
        EXPECT_TRUE(store_.content("copy") == manyBytes(size));
        expectDone(runKv({"mv", "clip", store_.locator("moved")}));
        EXPECT_TRUE(store_.content("moved") == manyBytes(size));
        EXPECT_FALSE(std::filesystem::exists("clip"));
        expectDone(runKv({"cp", store_.locator("moved"), "back"}));
        EXPECT_TRUE(contentOf("back") == manyBytes(size));
    }
}

TEST_F(Stores, AMoveThatAStoreDidNotTakeKeepsTheSource) {
    store_.next("UploadPartCopy", 1, fault::refused(500, "InternalError", "We encountered an internal error."));
    makeFile("clip", "0123456789");
    EXPECT_EQ(runKv({"mv", "clip", store_.locator("moved")}).exit, 1);
    EXPECT_EQ(contentOf("clip"), "0123456789");
}

TEST_F(Stores, AnObjectIsReplacedAlsoByOneOfTheSameLength) {
    store_.put("clip", "0123456789");
    expectDone(runKv({"put", store_.locator("clip")}, {.in = "abcdefghij"}));
    EXPECT_EQ(store_.content("clip"), "abcdefghij");
}

TEST_F(Stores, WhatAStoreDidNotTakeIsTold) {
    store_.put("clip", "0123456789");
    store_.next("UploadPartCopy", 2, fault::refused(500, "InternalError", "We encountered an internal error."));
    Outcome run = runKv({"put", store_.locator("clip")}, {.in = "abcdefghij"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot write '" + shown("clip") + "': the store still has the old one\n");
    EXPECT_EQ(store_.content("clip"), "0123456789");
    run = runKv({"put", store_.locator("new")}, {.in = "abcdefghij"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot write '" + shown("new") + "': the store does not have all of it\n");
}

TEST_F(Stores, AFileWithoutContentIsRefused) {
    const Outcome run = runKv({"put", store_.locator("empty")});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot write '" + shown("empty") + "': a store keeps no file without content\n");
}

TEST_F(Stores, WhatIsMissingOrRefusedIsToldWithoutTheSecret) {
    Outcome run = runKv({"cat", store_.locator("none")});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot open '" + shown("none") + "': No such file or directory\n");
    store_.next("CreateMultipartUpload", 1, fault::refused(403, "AccessDenied", "Access Denied"));
    run = runKv({"put", store_.locator("clip")}, {.in = "x"});
    EXPECT_EQ(run.err, "kv: cannot create '" + shown("clip") + "': Permission denied\n");
    run = runKv({"-v", "cat", store_.locator("none")});
    EXPECT_EQ(run.err.find("SECRET"), std::string::npos) << run.err;
    EXPECT_EQ(runKv({"nonsense", store_.locator("clip")}).err.find("SECRET"), std::string::npos);
    EXPECT_EQ(runKv({"cat", "clip", store_.locator("clip")}).err.find("SECRET"), std::string::npos);
}

TEST_F(Stores, VerifyComparesAndCutTakesARange) {
    store_.put("clip", manyBytes(1 << 20));
    makeFile("same", manyBytes(1 << 20));
    makeFile("other", manyBytes(1 << 20).replace(5000, 1, "?"));
    expectDone(runKv({"verify", "same", store_.locator("clip")}));
    EXPECT_EQ(runKv({"verify", store_.locator("clip"), "other"}).err,
              "kv: '" + shown("clip") + "' and 'other' differ: byte 5000 is the first\n");
    expectDone(runKv({"cut", store_.locator("clip"), "part", "--from", "1000", "--bytes", "70000"}));
    EXPECT_EQ(contentOf("part"), manyBytes(1 << 20).substr(1000, 70000));
}

TEST_F(Stores, StatTellsTypeAndSizeAndHidesTheSecret) {
    store_.put("clip", std::string(1234, 'x'));
    const auto all = runKv({"stat", "--json", store_.locator("clip"), store_.locator("folder/")}).json();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0]["name"], shown("clip"));
    EXPECT_EQ(all[0]["type"], "file");
    EXPECT_EQ(all[0]["size"], 1234);
    EXPECT_TRUE(all[0]["modified"].is_null());
    EXPECT_EQ(all[1]["type"], "folder");
    EXPECT_EQ(runKv({"stat", store_.locator("none")}).exit, 1);
}

TEST_F(Stores, LsListsFoldersAndPatterns) {
    for (const char* key : {"clips/a.mov", "clips/b.wav", "clips/.hidden", "clips/sub/c", "top"}) {
        store_.put(key, std::string(1536, 'x'));
    }
    for (const char* folder : {"clips/", "clips"})
        EXPECT_EQ(listed(folder), (Names{"sub", "a.mov", "b.wav"})) << folder;
    EXPECT_EQ(listed("clips/*.mov"), (Names{"a.mov"}));
    EXPECT_EQ(listed("clips/?.*"), (Names{"a.mov", "b.wav"}));
    EXPECT_EQ(listed("clips/b.wav"), (Names{"b.wav"}));
    EXPECT_EQ(listed("clips/sub"), (Names{"c"}));
    EXPECT_EQ(listed(""), (Names{"clips", "top"}));
    const Outcome run = runKv({"ls", store_.locator("clips/")});
    expectDone(run);
    EXPECT_EQ(run.out,
              "TYPE       SIZE  MODIFIED  NAME\n"
              "folder        -  -         sub\n"
              "file    1.5 KiB  -         a.mov\n"
              "file    1.5 KiB  -         b.wav\n");
}

TEST_F(Stores, LsTellsWhatIsNotListed) {
    store_.put("a/clip", "x");
    EXPECT_EQ(runKv({"ls", store_.locator("none/")}).err, "kv: cannot list '" + shown("none/") + "': nothing found\n");
    EXPECT_EQ(runKv({"ls", store_.locator("none")}).err, "kv: cannot list '" + shown("none") + "': nothing found\n");
    EXPECT_EQ(runKv({"ls", store_.locator("a/")}).err,
              "kv: cannot list '" + shown("a/") + "': a folder of one letter can't be listed\n");
    store_.next("ListObjectsV2", 1, fault::refused(403, "AccessDenied", "Access Denied"));
    EXPECT_EQ(runKv({"ls", store_.locator("clips/")}).err,
              "kv: cannot list '" + shown("clips/") + "': Permission denied\n");
    for (const char* key : {"clips/a", "clips/b", "clips/c"}) store_.put(key, "x");
    store_.setPageSize(2);
    store_.next([](const StoreRequest& request) { return request.query.contains("continuation-token"); }, 1,
                fault::refused(403, "AccessDenied", "Access Denied"));
    const Outcome run = runKv({"ls", store_.locator("clips/")});
    EXPECT_EQ(run.exit, 1);
    EXPECT_NE(run.out.find(" b\n"), std::string::npos);
    EXPECT_EQ(run.err, "kv: '" + shown("clips/") + "' is not listed whole: Permission denied\n");
}

TEST_F(Stores, RmAndMvDeleteOverTlsAlone) {
    const Nginx server;
    server.makeDocument("/clip", "0123456789");
    const std::string locator = "s3://ACCESS:SECRET@" + server.secureHost() + "/dav/clip";
    expectDone(runKv({"rm", locator}));
    EXPECT_FALSE(std::filesystem::exists(server.root() + "/clip"));
    set("S3DisableSSL", 0);
    set("S3VerifySSL", 0);
    server.makeDocument("/clip", "0123456789");
    expectDone(runKv({"mv", locator, "moved"}));
    EXPECT_EQ(contentOf("moved"), "0123456789");
    EXPECT_FALSE(std::filesystem::exists(server.root() + "/clip"));
    EXPECT_EQ(runKv({"rm", "s3://ACCESS:SECRET@" + server.host() + "/dav/clip"}).exit, 1);
    EXPECT_EQ(runKv({"rm", store_.locator("")}).err, "kv: cannot delete '" + shown("") + "': Invalid argument\n");
}

TEST_F(Stores, APlaylistInAStoreIsRead) {
    store_.put("list.m3u8", "#EXTM3U\n#EXTINF:2,\none.ts\n#EXTINF:2,\ntwo.ts\n#EXT-X-ENDLIST\n");
    store_.put("one.ts", "0123");
    store_.put("two.ts", "456");
    const Outcome run = runKv({"m3u8", "info", store_.locator("list.m3u8")});
    expectDone(run);
    EXPECT_NE(run.out.find("two.ts"), std::string::npos) << run.out;
    EXPECT_EQ(run.out.find("SECRET"), std::string::npos) << run.out;
}

TEST_F(Stores, SecretsAreNotAmongTheArgumentsThatTheSystemShows) {
    store_.put("clip", "x");
    store_.hold("HeadObject");
    RunningKv kv({"cat", store_.locator("clip")});
    ASSERT_TRUE(store_.waitForHeld(1));
    const std::string arguments = contentOf("/proc/" + std::to_string(kv.process()) + "/cmdline");
    EXPECT_NE(arguments.find("s3://ACCESS:******@" + store_.host()), std::string::npos) << arguments;
    store_.release();
    EXPECT_EQ(kv.wait().exit, 0);
}

TEST_F(Stores, SignaturesOfPresignedUrlsAreNotAmongThemEither) {
    ScriptedServer server([](const Request& request) {
        Answer answer = answerWithRange(request, "x");
        answer.stall = true;
        return answer;
    });
    const std::string url = server.url("/clip?X-Amz-Signature=");
    RunningKv kv({"cat", url + "5ec12e7&x=1"});
    ASSERT_TRUE(server.waitForRequests(1));
    const std::string arguments = contentOf("/proc/" + std::to_string(kv.process()) + "/cmdline");
    EXPECT_NE(arguments.find(url + "*******&x=1"), std::string::npos) << arguments;
    server.release();
    const Outcome run = kv.wait();
    EXPECT_EQ((run.out + run.err).find("5ec12e7"), std::string::npos) << run.err;
}

TEST_F(Stores, HelpNamesObjects) { EXPECT_NE(runKv({"--help"}).out.find("s3://"), std::string::npos); }
