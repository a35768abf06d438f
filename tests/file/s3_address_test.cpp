// Which locators name an S3 object.
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>

#include "hosts.h"
#include "kvos/locator.h"

namespace {

const std::string kDomain(kv::hosts::kS3ServiceDomain);
const std::string kGlobalHost(kv::hosts::kS3GlobalHost);

void expectAll(uint32_t expected, std::initializer_list<std::string> texts) {
#ifndef KVUTIL_TESTS_WITH_S3
    expected = 0;  // the build without S3 support knows no address
#endif
    for (const std::string& text : texts) EXPECT_EQ(kvOSUseAws(text.c_str()), expected) << text;
}

}  // namespace

TEST(S3Address, NullAndEmptyAreNone) {
    EXPECT_EQ(kvOSUseAws(nullptr), 0u);
    EXPECT_EQ(kvOSUseAws(""), 0u);
    EXPECT_EQ(kvOSUseAws("s"), 0u);
    EXPECT_EQ(kvOSUseAws("\\"), 0u);
}

TEST(S3Address, LocalPathsAreNoneWhateverTheyHold) {
    expectAll(0, {"/s3://bucket/key", "\\\\s3://bucket/key", "\\:s3://bucket/key", "C:s3://bucket/key",
                  "C:\\" + kGlobalHost, "/" + kDomain, "name"});
}

TEST(S3Address, AnObjectSchemeAnywhereIsOne) {
    expectAll(1, {"s3://bucket/key", "glacier://vault/key", "x s3://bucket", "\\s3://bucket",
                  "http://host/?s3://X-Amz-Credential=", "ftp://host/s3://bucket/key"});
}

TEST(S3Address, TheObjectSchemeCountsInLowerCaseOnly) { expectAll(0, {"S3://bucket/key", "GLACIER://vault/key"}); }

TEST(S3Address, APresignedUrlIsAnOrdinaryUrl) {
    expectAll(0, {"https://s3.example.com/b/k?X-Amz-Credential=x", "https://b.s3." + kDomain + "/k?X-Amz-Credential="});
    expectAll(1, {"https://s3.example.com/b/k?x-amz-credential=x"});
}

TEST(S3Address, AnS3HostInAnyCaseIsOne) {
    expectAll(1, {"https://s3.example.com/b/k", "HTTP://S3.example.com/b/k", "http://s3."});
    expectAll(0, {"https://s3-example.com/b/k", "ftp://s3.example.com/b/k", "http://s3"});
}

TEST(S3Address, TheServiceDomainAnywhereIsOne) {
    expectAll(1, {"https://bucket.s3.eu-west-1." + kDomain + "/k", kDomain, "https://" + kGlobalHost + "/b/k"});
    expectAll(0, {"https://bucket.host.example/k"});
}

TEST(S3Address, FileUrlsThatHoldOneOnlyHaveTheirBackslashesChanged) {
    char text[] = "file:///a%20s3://b\\c";
    kvOSFixSeparators(text);
#ifdef KVUTIL_TESTS_WITH_S3
    EXPECT_STREQ(text, "file:///a%20s3://b/c");
#else
    EXPECT_STREQ(text, "//a s3://b/c");
#endif
}
