// The question for a newer version. The call is compiled into this program, with a request in place of the real one
// that keeps what it was asked and answers what the test says.
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <optional>
#include <string>

#include "hosts.h"
#include "kvos/memory.h"
#include "kvos/rest.h"
#include "kvos/system.h"

namespace {

struct Asked {
    int times = 0;
    std::string url;
    std::string method;
    std::string headers;
    const void* body = nullptr;
    std::uint32_t bodyLength = 1;
    std::uint32_t timeout_ms = 1;
    bool hadAnswer = true;
} asked;

std::optional<std::string> answerToGive;

constexpr const char* kDocument =
    R"({"player":{"mac":{"version_major":"5","version_minor":"3","version_build":"1","url":"https://host/p",
        "description":"Better"}}})";

/// What one call gave back.
struct Outcome {
    std::int32_t result;
    char* version = nullptr;
    char* url = nullptr;
    char* description = nullptr;
};

Outcome check(const char* product, std::uint32_t major, std::uint32_t minor, std::uint32_t build) {
    Outcome outcome{};
    outcome.result =
        kvOSGetAppVersion(product, major, minor, build, &outcome.version, &outcome.url, &outcome.description);
    return outcome;
}

}  // namespace

std::uint32_t kvOSHTTPCommand(const char* pUrl, const char* pMethod, char* pHeaders, const void* pBody,
                              std::uint32_t dwBodyLength, char** ppResult, std::uint32_t* pdwResultLength,
                              std::uint32_t dwTimeoutMs) {
    asked = {asked.times + 1, pUrl, pMethod, pHeaders, pBody, dwBodyLength, dwTimeoutMs, *ppResult != nullptr};
    if (!answerToGive) return 1;
    *ppResult = strdup(answerToGive->c_str());
    *pdwResultLength = static_cast<std::uint32_t>(answerToGive->size());
    return 1;
}

TEST(VersionCheck, AsksTheMainServerWithABareHeader) {
    check("player", 1, 0, 0);
    EXPECT_EQ(asked.times, 1);
    EXPECT_EQ(asked.url, "https://" KVUTIL_UPDATE_HOST "/versions.json");
    EXPECT_EQ(asked.method, "GET");
    EXPECT_EQ(asked.headers, "application/json");
    EXPECT_EQ(asked.body, nullptr);
    EXPECT_EQ(asked.bodyLength, 0u);
    EXPECT_EQ(asked.timeout_ms, 0u);
    EXPECT_FALSE(asked.hadAnswer);
}

TEST(VersionCheck, OneProductWrittenExactlySoHasAServerOfItsOwn) {
    const std::string main = "https://" KVUTIL_UPDATE_HOST "/versions.json";
    check("mediaferry", 1, 0, 0);
    EXPECT_EQ(asked.url, "https://" KVUTIL_SECOND_UPDATE_HOST "/versions.json");
    for (const char* other : {"MediaFerry", "mediaferry2", "mediaferr", ""}) {
        check(other, 1, 0, 0);
        EXPECT_EQ(asked.url, main) << other;
    }
}

TEST(VersionCheck, ANewerVersionIsToldWithItsTexts) {
    answerToGive = kDocument;
    const Outcome outcome = check("player", 5, 2, 9);
    EXPECT_EQ(outcome.result, 1);
    EXPECT_STREQ(outcome.version, "5.3.1");
    EXPECT_STREQ(outcome.url, "https://host/p");
    EXPECT_STREQ(outcome.description, "Better");
    KVFree(outcome.version);
    KVFree(outcome.url);
    KVFree(outcome.description);
}

TEST(VersionCheck, AVersionThatIsUpToDateIsToldInConstantWords) {
    answerToGive = kDocument;
    for (const std::uint32_t major : {5u, 6u}) {
        const Outcome outcome = check("player", major, 3, 1);
        EXPECT_EQ(outcome.result, 0);
        EXPECT_STREQ(outcome.version, "5.3.1");
        EXPECT_STREQ(outcome.url, "https://host/p");
        EXPECT_STREQ(outcome.description, "Up to date with the latest version");
        KVFree(outcome.version);
        KVFree(outcome.url);
    }
}

TEST(VersionCheck, WithoutAnAnswerTheErrorSaysSo) {
    answerToGive = std::nullopt;
    const Outcome outcome = check("player", 5, 3, 1);
    EXPECT_EQ(outcome.result, -1);
    EXPECT_STREQ(outcome.version, "");
    EXPECT_STREQ(outcome.url, "");
    EXPECT_STREQ(outcome.description, "Error: No information returned from server");
}

TEST(VersionCheck, AProductOrASystemThatIsNotInTheDocumentIsAnError) {
    for (const char* document : {kDocument, "{\"other\":{\"win\":{}}}", "", "<html>", "{\"other\":{\"mac\":{}}}"}) {
        answerToGive = document;
        const Outcome outcome = check("other", 5, 3, 1);
        EXPECT_EQ(outcome.result, -1);
        EXPECT_STREQ(outcome.version, "");
        EXPECT_STREQ(outcome.url, "");
        EXPECT_STREQ(outcome.description, "Error: could not find product name or operating system") << document;
    }
}

TEST(VersionCheck, NullArgumentsAreRefusedWithoutARequest) {
    const int before = asked.times;
    char* text = nullptr;
    errno = 0;
    EXPECT_EQ(check(nullptr, 1, 0, 0).result, -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_STREQ(check(nullptr, 1, 0, 0).description, "Error: No information returned from server");
    EXPECT_EQ(kvOSGetAppVersion("p", 1, 0, 0, nullptr, &text, &text), -1);
    EXPECT_EQ(kvOSGetAppVersion("p", 1, 0, 0, &text, nullptr, &text), -1);
    EXPECT_EQ(kvOSGetAppVersion("p", 1, 0, 0, &text, &text, nullptr), -1);
    EXPECT_EQ(asked.times, before);
}
