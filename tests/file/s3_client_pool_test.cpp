// Connections of the S3 client, and its requests on threads of their own.
#include <atomic>
#include <vector>

#include "file/s3_client_fixture.h"

namespace {

using namespace s3client;

TEST(S3ClientConnections, AreUsedAgain) {
    ScriptedServer server = answering({.body = "<ListBucketResult/>"});
    const auto client = clientOf(server);
    client->putObject({"bucket", "key", "", bytesOf("text")});
    client->listObjects({"bucket", "", "", ""});
    client->headObject({"bucket", "key"});
    get(*client, "");
    std::thread([&] { client->deleteObject({"bucket", "key"}); }).join();
    EXPECT_EQ(server.requests().size(), 5u);
    EXPECT_EQ(server.connections(), 1);
}

TEST(S3ClientConnections, ThatTheServerClosedAreMadeAnew) {
    ScriptedServer server = answering({.keepAlive = false});
    const auto client = clientOf(server);
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(client->putObject({"bucket", "key", "", bytesOf("text")}).isSuccess());
    EXPECT_EQ(server.connections(), 3);
}

ClientConfiguration impatient(const ScriptedServer& server, std::chrono::seconds joining) {
    ClientConfiguration configuration = plainHttp(server.host());
    configuration.patience = {.usual = std::chrono::seconds(1), .copying = joining, .joining = joining};
    return configuration;
}

TEST(S3ClientConnections, AStoreThatIsSilentIsGivenUp) {
    ScriptedServer server = answering({.body = kContent, .stall = true});
    const auto client = makeClient(kKeys, impatient(server, std::chrono::seconds(600)), false, true);
    errno = 0;
    EXPECT_EQ(get(*client, "").text, "(NetworkError)");
    EXPECT_EQ(errno, ETIMEDOUT);
}

// The time that the usual requests have goes by twice, and on the same connection.
TEST(S3ClientConnections, ACopyAndACompletionMayTakeTheStoreFarLonger) {
    ScriptedServer server([](const Request& request) {
        if (request.method == "HEAD") return kvtest::Answer{};
        const bool isCopy = request.method == "PUT";
        return kvtest::Answer{.body = isCopy ? "<CopyPartResult><ETag>t</ETag></CopyPartResult>"
                                             : "<CompleteMultipartUploadResult><ETag>t</ETag>"
                                               "</CompleteMultipartUploadResult>",
                              .delay = std::chrono::milliseconds(3500)};
    });
    const auto client = makeClient(kKeys, impatient(server, std::chrono::seconds(600)), false, true);
    EXPECT_TRUE(client->headObject({"bucket", "key"}).isSuccess());
    EXPECT_TRUE(client->uploadPartCopy({"bucket", "key", "id", "/bucket/a", 1}).isSuccess());
    EXPECT_TRUE(client->completeMultipartUpload({"bucket", "key", "id", {{"t", 1}}}).isSuccess());
    EXPECT_EQ(server.connections(), 1);
}

TEST(S3ClientConnections, ACopyAndACompletionThatNeverComeAreGivenUpToo) {
    ScriptedServer server = answering({.body = kContent, .stall = true});
    const auto client = makeClient(kKeys, impatient(server, std::chrono::seconds(1)), false, true);
    EXPECT_EQ(failureOf(client->uploadPartCopy({"bucket", "key", "id", "/bucket/a", 1})), "NetworkError");
    EXPECT_EQ(failureOf(client->completeMultipartUpload({"bucket", "key", "id", {{"t", 1}}})), "NetworkError");
}

TEST(S3ClientConnections, AreWaitedForHalfAMinuteTwoForACopyAndTenForACompletion) {
    EXPECT_EQ(ClientConfiguration().patience.usual, std::chrono::seconds(30));
    EXPECT_EQ(ClientConfiguration().patience.copying, std::chrono::minutes(2));
    EXPECT_EQ(ClientConfiguration().patience.joining, std::chrono::minutes(10));
}

TEST(S3ClientConnections, ServeSeveralThreadsAtOnce) {
    ScriptedServer server([](const Request& request) { return kvtest::answerWithRange(request, kContent); });
    const auto client = clientOf(server);
    std::vector<std::thread> threads;
    std::atomic<int> wrong = 0;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int k = 0; k < 25; ++k) wrong += get(*client, "bytes=3-5").text == "345" ? 0 : 1;
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_LE(server.connections(), 4);
}

TEST(S3ClientAsync, TheHandlerRunsOnAnotherThreadWithSignalsBlocked) {
    ScriptedServer server = answering({.body = kContent});
    const auto client = clientOf(server);
    const auto context = std::make_shared<Waiting>("7");
    client->getObjectAsync({"bucket", "key", "bytes=0-3", context->destination()}, &tellOutcome, context);
    EXPECT_EQ(context->outcome.get_future().get(), "key (success)");
    EXPECT_EQ(context->buffer.substr(0, 5), "0123.");
    EXPECT_NE(context->thread, std::this_thread::get_id());
    for (const int number : {SIGINT, SIGTERM, SIGALRM, SIGUSR1, SIGCHLD, SIGPIPE}) {
        EXPECT_EQ(sigismember(&context->blocked, number), 1) << number;
    }
    sigset_t own;
    pthread_sigmask(SIG_SETMASK, nullptr, &own);
    EXPECT_EQ(sigismember(&own, SIGINT), 0);
}

TEST(S3ClientAsync, AFailureReachesTheHandler) {
    ScriptedServer server = answering({.status = 404, .body = "<Error><Code>NoSuchKey</Code></Error>"});
    const auto context = std::make_shared<Waiting>("7");
    clientOf(server)->getObjectAsync({"bucket", "key", "", context->destination()}, &tellOutcome, context);
    EXPECT_EQ(context->outcome.get_future().get(), "key NoSuchKey");
}

TEST(S3ClientAsync, TheClientLivesUntilTheHandlerHasRun) {
    ScriptedServer server = answering({.body = kContent, .stall = true});
    const auto context = std::make_shared<Waiting>("7");
    auto client = clientOf(server);
    client->getObjectAsync({"bucket", "key", "", context->destination()}, &tellOutcome, context);
    ASSERT_TRUE(server.waitForRequests(1));
    const std::weak_ptr<Client> watched = client;
    client.reset();
    EXPECT_FALSE(watched.expired());
    shutdownApi();
    server.release();
    EXPECT_EQ(context->outcome.get_future().get(), "key (success)");
}

TEST(S3ClientAsync, ManyRequestsRunAtOnce) {
    constexpr int kRequests = 20;
    ScriptedServer server = answering({.body = kContent, .stall = true});
    const auto client = clientOf(server);
    std::vector<std::shared_ptr<Waiting>> contexts;
    for (int i = 0; i < kRequests; ++i) {
        contexts.push_back(std::make_shared<Waiting>(std::to_string(i)));
        client->getObjectAsync({"bucket", "key", "", contexts.back()->destination()}, &tellOutcome, contexts.back());
    }
    EXPECT_TRUE(server.waitForRequests(kRequests));
    server.release();
    for (const auto& context : contexts) EXPECT_EQ(context->outcome.get_future().get(), "key (success)");
}

TEST(S3ClientAsync, WithoutAThreadTheHandlerRunsAtOnceWithAnError) {
    // Threads want a stack as large as the whole address space.
    pthread_attr_t before;
    pthread_attr_t huge;
    ASSERT_EQ(pthread_getattr_default_np(&before), 0);
    ASSERT_EQ(pthread_getattr_default_np(&huge), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&huge, std::size_t{1} << 46), 0);
    ASSERT_EQ(pthread_setattr_default_np(&huge), 0);
    const auto context = std::make_shared<Waiting>("7");
    const auto client = makeClient(kKeys, plainHttp("127.0.0.1:1"), false, true);
    client->getObjectAsync({"bucket", "key", "", context->destination()}, &tellOutcome, context);
    pthread_setattr_default_np(&before);
    EXPECT_EQ(context->thread, std::this_thread::get_id());
    EXPECT_EQ(context->outcome.get_future().get(), "key NoThread");
}

}  // namespace
