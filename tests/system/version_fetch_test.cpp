// Where the question for a newer version goes. A proxy of the test's own is asked for the way there, and refuses it.
#include <cstdlib>
#include <gtest/gtest.h>

#include "hosts.h"
#include "kvos/system.h"
#include "servers/scripted_server.h"

using namespace kvtest;

TEST(VersionFetch, GoesThroughTlsToTheServerOfTheProduct) {
    const ScriptedServer proxy([](const Request&) { return Answer{.status = 502, .reason = "No Way"}; });
    setenv("https_proxy", proxy.url("").c_str(), 1);
    unsetenv("no_proxy");
    unsetenv("NO_PROXY");
    for (const char* product : {"player", "mediaferry"}) {
        char* version = nullptr;
        char* url = nullptr;
        char* description = nullptr;
        EXPECT_EQ(kvOSGetAppVersion(product, 1, 0, 0, &version, &url, &description), -1);
        EXPECT_STREQ(version, "");
        EXPECT_STREQ(url, "");
        EXPECT_STREQ(description, "Error: No information returned from server");
    }
    const auto requests = proxy.requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0].method, "CONNECT");
    EXPECT_EQ(requests[0].target, KVUTIL_UPDATE_HOST ":443");
    EXPECT_EQ(requests[1].target, KVUTIL_SECOND_UPDATE_HOST ":443");
}
