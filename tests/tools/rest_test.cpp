// kv rest.
#include <mutex>
#include <string>
#include <utility>

#include "servers/scripted_server.h"
#include "support/scratch.h"
#include "tools/run_kv.h"

namespace {

using namespace kvtest;

class Rest : public testing::Test {
protected:
    Request only() const {
        EXPECT_EQ(server.requests().size(), 1u);
        return server.requests().empty() ? Request{} : server.requests().front();
    }

    void answerWith(Answer other) {
        const std::lock_guard held(lock_);
        answer_ = std::move(other);
    }

private:
    Answer answer() {
        const std::lock_guard held(lock_);
        return answer_;
    }

    // Ahead of the server, whose threads look at them.
    std::mutex lock_;
    Answer answer_{.body = "answer\n"};

protected:
    ScriptedServer server{[this](const Request&) { return answer(); }};
};

TEST_F(Rest, ShowsTheAnswerAsItCame) {
    answerWith({.body = everyByte()});
    const Outcome run = runKv({"rest", "POST", server.url("/a?b=c")});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, everyByte());
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(only().method, "POST");
    EXPECT_EQ(only().target, "/a?b=c");
    EXPECT_EQ(only().body, "");
}

TEST_F(Rest, SendsTheMethodInAnyCaseAndGetAsPost) {
    for (const std::string method : {"PUT", "patch", "Delete"}) runKv({"rest", method, server.url("/")});
    runKv({"rest", "get", server.url("/")});
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 4u);
    EXPECT_EQ(requests[0].method, "PUT");
    EXPECT_EQ(requests[1].method, "PATCH");
    EXPECT_EQ(requests[2].method, "DELETE");
    EXPECT_EQ(requests[3].method, "POST");
}

TEST_F(Rest, SendsHeadersOneAnOption) {
    EXPECT_EQ(runKv({"rest", "-H", "X-One: 1", "--header", "X-Two: [2]", "PUT", "-H", "[x]: y", server.url("/")}).exit,
              0);
    EXPECT_EQ(only().header("X-One"), "1");
    EXPECT_EQ(only().header("X-Two"), "[2]");
    EXPECT_EQ(only().header("[x]"), "y");
}

TEST_F(Rest, RefusesAHeaderThatWouldBeParted) {
    const Outcome run = runKv({"rest", "POST", server.url("/"), "-H", "X-One: 1§2"});
    EXPECT_EQ(run.exit, 2);
    EXPECT_EQ(run.err, "kv: the header 'X-One: 1§2' has a letter that can not be sent in one\n");
    EXPECT_TRUE(server.requests().empty());
}

TEST_F(Rest, SendsATextAsTheBody) {
    runKv({"rest", "POST", server.url("/"), "-d", "[1,2]"});
    EXPECT_EQ(only().body, "[1,2]");
}

TEST_F(Rest, SendsAFileAsTheBody) {
    makeFile("body", everyByte());
    runKv({"rest", "PUT", server.url("/"), "--data", "@body"});
    EXPECT_EQ(only().body, everyByte());
}

TEST_F(Rest, SendsItsInputAsTheBody) {
    runKv({"rest", "PATCH", server.url("/"), "-d", "@-"}, {.in = everyByte()});
    EXPECT_EQ(only().body, everyByte());
}

TEST_F(Rest, ABodyThatIsNotThereIsToldAndNothingSent) {
    const Outcome run = runKv({"rest", "PUT", server.url("/"), "-d", "@none"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot open 'none': No such file or directory\n");
    EXPECT_TRUE(server.requests().empty());
}

TEST_F(Rest, ARefusalIsAnAnswer) {
    answerWith({.status = 404, .reason = "Not Found", .body = "no such job\n"});
    const Outcome run = runKv({"rest", "DELETE", server.url("/")});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, "no such job\n");
}

TEST_F(Rest, AnEmptyAnswerIsOne) {
    answerWith({.status = 204, .reason = "No Content"});
    expectSilentSuccess(runKv({"rest", "POST", server.url("/")}));
}

TEST_F(Rest, AServerThatGivesNoAnswerIsTold) {
    answerWith({.stall = true});
    const Outcome run = runKv({"rest", "POST", server.url("/"), "--timeout", "200"});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot reach '" + server.url("/") + "': Connection timed out\n");
}

TEST(RestUsage, AMethodOrATimeThatIsNoneIsAMistake) {
    for (const std::string method : {"HEAD", "GETTING", ""}) {
        const Outcome run = runKv({"rest", method, "http://127.0.0.1/"});
        EXPECT_EQ(run.exit, 2) << method;
        EXPECT_NE(run.err.find("(see kv rest --help)"), std::string::npos) << run.err;
    }
    EXPECT_EQ(runKv({"rest", "GET"}).exit, 2);
    for (const std::string time : {"-1", "soon", "4294967296", "0.5"}) {
        EXPECT_EQ(runKv({"rest", "GET", "http://127.0.0.1/", "--timeout", time}).exit, 2) << time;
    }
}

TEST(RestUsage, AServerThatIsNotThereIsTold) {
    std::string url;
    {
        const ScriptedServer server([](const Request&) { return Answer{}; });
        url = server.url("/");
    }
    const Outcome run = runKv({"rest", "POST", url});
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "kv: cannot reach '" + url + "': Connection refused\n");
}

}  // namespace
