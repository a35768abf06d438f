// What both real stores promise; each row of the suite is one of them.
#include "servers/object_store.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "servers/fetch.h"
#include "servers/sockets.h"

namespace kvtest {

void PrintTo(ObjectStore::Engine engine, std::ostream* out) {
    *out << (engine == ObjectStore::Engine::ceph ? "Ceph" : "Swift");
}

}  // namespace kvtest

namespace {

using namespace kvtest;
using Engine = ObjectStore::Engine;

/// In a process of its own, which an exception must not leave either.
[[noreturn]] void dieAsOwner(Engine engine, int told) noexcept {
    const ObjectStore store(engine, {});
    const auto port = static_cast<std::uint16_t>(std::stoi(store.host().substr(store.host().find(':') + 1)));
    if (write(told, &port, sizeof port) == sizeof port) raise(SIGKILL);
    _exit(1);
}

class RealStore : public ::testing::TestWithParam<Engine> {};

TEST_P(RealStore, KeepsObjectsUnderKeysOfAllKinds) {
    ObjectStore store = ObjectStore::shared(GetParam());
    const std::vector<std::string> keys{".dot",    "a b",   "folder/",  "folder/clip",
                                        "one+two", "x%20y", "x&y=z;?#", "\xc3\xa4\xe2\x82\xac"};
    for (const std::string& key : keys) store.put(key, "content of " + key);
    EXPECT_EQ(store.keys(), keys);
    for (const std::string& key : keys) EXPECT_EQ(store.content(key), "content of " + key);
    EXPECT_EQ(store.header(".dot", "content-length"), "15");
    EXPECT_EQ(store.header("none", "content-length"), "");
    store.remove("a b");
    EXPECT_FALSE(store.content("a b").has_value());
}

TEST_P(RealStore, GivesEachObjectOfTheClassABucketOfItsOwn) {
    ObjectStore one = ObjectStore::shared(GetParam());
    const ObjectStore other = ObjectStore::shared(GetParam());
    one.put("clip", "1");
    EXPECT_NE(one.bucket(), other.bucket());
    EXPECT_TRUE(other.keys().empty());
    EXPECT_EQ(one.locator("clip"),
              "s3://" + one.accessKey() + ":" + one.secretKey() + "@" + one.host() + "/" + one.bucket() + "/clip");
}

TEST_P(RealStore, RefusesAStranger) {
    ObjectStore store = ObjectStore::shared(GetParam());
    store.put("clip", "1");
    const auto statusFor = [&](const std::string& user) {
        return fetch("http://" + store.host() + "/" + store.bucket() + "/clip",
                     {.headers = {"x-amz-content-sha256: UNSIGNED-PAYLOAD"},
                      .user = user,
                      .signature = "aws:amz:" + store.region() + ":s3"})
            .status;
    };
    EXPECT_EQ(statusFor(store.accessKey() + ":" + store.secretKey()), 200);
    EXPECT_EQ(statusFor(store.strangerAccessKey() + ":" + store.strangerSecretKey()), 403);
    EXPECT_EQ(statusFor(store.accessKey() + ":wrong"), 403);
}

TEST_P(RealStore, ServesByTlsAndByTheBucketsOwnName) {
    ObjectStore store = ObjectStore::shared(GetParam());
    store.put("clip", "content");
    const Client::Options options{.headers = {"x-amz-content-sha256: UNSIGNED-PAYLOAD"},
                                  .certificate = store.certificate(),
                                  .user = store.accessKey() + ":" + store.secretKey(),
                                  .signature = "aws:amz:" + store.region() + ":s3"};
    EXPECT_EQ(fetch("https://" + store.secureHost() + "/" + store.bucket() + "/clip", options).body, "content");
    EXPECT_EQ(fetch("http://" + store.bucket() + "." + store.virtualHost() + "/clip", options).body, "content");
}

TEST_P(RealStore, TellsTheRegionThatItWasStartedWith) {
    const ObjectStore store(GetParam(), {.region = "eu-west-1"});
    const Fetched got = fetch("http://" + store.host() + "/" + store.bucket() + "?location=",
                              {.headers = {"x-amz-content-sha256: UNSIGNED-PAYLOAD"},
                               .user = store.accessKey() + ":" + store.secretKey(),
                               .signature = "aws:amz:eu-west-1:s3"});
    EXPECT_NE(got.body.find(">eu-west-1</LocationConstraint>"), std::string::npos) << got.body;
    EXPECT_THROW(store.secureHost(), std::runtime_error);
}

TEST_P(RealStore, EndsWhenItsOwnersProcessIsKilled) {
    int ports[2];
    ASSERT_EQ(pipe(ports), 0);
    const pid_t owner = fork();
    if (owner == 0) dieAsOwner(GetParam(), ports[1]);
    close(ports[1]);
    std::uint16_t port = 0;
    ASSERT_EQ(read(ports[0], &port, sizeof port), static_cast<ssize_t>(sizeof port));
    int status = 0;
    EXPECT_EQ(waitpid(owner, &status, 0), owner);
    EXPECT_TRUE(WIFSIGNALED(status));
    while (connectTo(port).isOpen()) std::this_thread::yield();
}

INSTANTIATE_TEST_SUITE_P(Engines, RealStore, ::testing::Values(Engine::ceph, Engine::swift),
                         ::testing::PrintToStringParamName());

}  // namespace
