// The end of a process with requests of the S3 client in flight, and of the client's own libraries.
#include <cstdlib>

#include "file/s3_client_fixture.h"
#include "support/sanitizers.h"

namespace {

using namespace s3client;

TEST(S3ClientAsync, AProcessEndsWithARequestInFlight) {
    if (kvtest::kThreadSanitizer) GTEST_SKIP() << "it refuses to fork a process with threads";
    ScriptedServer server = answering({.body = kContent, .stallAfter = 5});
    EXPECT_EXIT(
        {
            const auto context = std::make_shared<Waiting>("7");
            const auto client = clientOf(server);
            client->getObjectAsync({"bucket", "key", "", context->destination()}, &tellOutcome, context);
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
}

TEST(S3ClientApi, StartsAndStopsInAnyOrder) {
    shutdownApi();
    initApi();
    initApi();
    shutdownApi();
    shutdownApi();
    ScriptedServer server = answering({.body = kContent});
    EXPECT_EQ(get(*clientOf(server), "").text, kContent);
}

}  // namespace
