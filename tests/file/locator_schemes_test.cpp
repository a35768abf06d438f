// Which schemes make a text a URL, a network file or a live stream.
#include <cctype>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "kvos/locator.h"
#include "support/turkish_locale.h"

namespace {

const std::vector<std::string> kUrls{"http://", "https://", "ftp://"};
const std::vector<std::string> kNetworkFiles{"http:", "https:", "s3:", "glacier:", "ftp:"};
const std::vector<std::string> kStreams{"rtp:", "srt:",  "rist:",  "rtsp:",    "rtmp:", "rtmps:",  "rtmf:",    "sip:",
                                        "ndi:", "sdi:",  "s2110:", "s2022:",   "cdi:",  "whip:",   "webrtc:",  "tcp:",
                                        "bls:", "blss:", "hls:",   "hlslive:", "udp:",  "hlsvod:", "rivermax:"};

std::string upper(std::string text) {
    for (char& character : text) character = static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
    return text;
}

void expectEverySchemeOf(const std::vector<std::string>& schemes, uint32_t (*accepts)(const char*)) {
    for (const std::string& scheme : schemes) {
        SCOPED_TRACE(scheme);
        EXPECT_EQ(accepts(scheme.c_str()), 1u);
        EXPECT_EQ(accepts((upper(scheme) + "rest").c_str()), 1u);
        EXPECT_EQ(accepts((" " + scheme).c_str()), 0u);
        EXPECT_EQ(accepts(scheme.substr(0, scheme.size() - 1).c_str()), 0u);
    }
}

}  // namespace

TEST(LocatorSchemes, UrlsAreHttpHttpsAndFtpInAnyCase) { expectEverySchemeOf(kUrls, kvOSFUseCurl); }

TEST(LocatorSchemes, NetworkFilesAreKnownByTheirSchemeInAnyCase) {
    expectEverySchemeOf(kNetworkFiles, kvOSIsNetworkFile);
}

TEST(LocatorSchemes, StreamsAreKnownByTheirSchemeInAnyCase) { expectEverySchemeOf(kStreams, kvOSIsNetworkStream); }

TEST(LocatorSchemes, ANetworkSourceIsAFileOrAStream) {
    for (const std::string& scheme : kNetworkFiles) EXPECT_EQ(kvOSIsNetworkSource(scheme.c_str()), 1u) << scheme;
    for (const std::string& scheme : kStreams) EXPECT_EQ(kvOSIsNetworkSource(scheme.c_str()), 1u) << scheme;
    EXPECT_EQ(kvOSIsNetworkSource("HLS:x"), 1u);
    EXPECT_EQ(kvOSIsNetworkSource("/http:x"), 0u);
    EXPECT_EQ(kvOSIsNetworkSource("file:///x"), 0u);
}

TEST(LocatorSchemes, ASchemeWithoutSlashesIsANetworkFileButNoUrl) {
    EXPECT_EQ(kvOSFUseCurl("http:x"), 0u);
    EXPECT_EQ(kvOSFUseCurl("http:/x"), 0u);
    EXPECT_EQ(kvOSIsNetworkFile("http:x"), 1u);
}

TEST(LocatorSchemes, ObjectStoresAreNetworkFilesButNoUrls) {
    for (const char* text : {"s3://bucket/key", "glacier://vault/key"}) {
        EXPECT_EQ(kvOSIsNetworkFile(text), 1u) << text;
        EXPECT_EQ(kvOSFUseCurl(text), 0u) << text;
        EXPECT_EQ(kvOSIsNetworkStream(text), 0u) << text;
    }
}

TEST(LocatorSchemes, FilesAndStreamsAreDifferentTables) {
    for (const std::string& scheme : kNetworkFiles) EXPECT_EQ(kvOSIsNetworkStream(scheme.c_str()), 0u) << scheme;
    for (const std::string& scheme : kStreams) EXPECT_EQ(kvOSIsNetworkFile(scheme.c_str()), 0u) << scheme;
}

TEST(LocatorSchemes, NullAndEmptyTextsAreNothing) {
    for (const char* text : {static_cast<const char*>(nullptr), ""}) {
        EXPECT_EQ(kvOSFUseCurl(text), 0u);
        EXPECT_EQ(kvOSIsNetworkFile(text), 0u);
        EXPECT_EQ(kvOSIsNetworkStream(text), 0u);
        EXPECT_EQ(kvOSIsNetworkSource(text), 0u);
    }
}

TEST(LocatorSchemes, AreTheSameInATurkishLocale) {
    const kvtest::TurkishLocale turkish;
    if (!turkish.isInForce()) GTEST_SKIP() << "the locale can't be made here";
    for (const char* text : {"SIP:x", "RIST:x", "WHIP:x", "HLSLIVE:x"}) EXPECT_EQ(kvOSIsNetworkStream(text), 1u);
    EXPECT_EQ(kvOSIsNetworkFile("GLACIER:x"), 1u);
    char path[4096];
    EXPECT_STREQ(kvOSFullPath(path, "FILE:///x", sizeof path), "/x");
}
