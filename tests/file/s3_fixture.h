// What the tests of S3 files share: a store in the process, plain HTTP to it, and key files in a folder of the test.
#pragma once

#include <gtest/gtest.h>
#include <string>

#include "file/owned_file.h"
#include "file/s3/object.h"
#include "kvcfg.h"
#include "kvos/locator.h"
#include "kvos/s3.h"
#include "servers/scripted_store.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace kvtest {

/// The region that a request was signed for; empty for one without a signature.
inline std::string regionOf(const StoreRequest& request) {
    // "AWS4-HMAC-SHA256 Credential=ACCESS/20240506/us-east-1/s3/aws4_request, ..."
    std::string text = request.http.header("Authorization");
    text = text.substr(std::min(text.find("Credential="), text.size()));
    for (int i = 0; i < 2; ++i) text = text.substr(std::min(text.find('/') + 1, text.size()));
    return text.substr(0, text.find('/'));
}

/// The access key that a request was signed with; empty for one without a signature.
inline std::string signerOf(const StoreRequest& request) {
    const std::string text = request.http.header("Authorization");
    const std::size_t at = text.find("Credential=");
    if (at == std::string::npos) return {};
    const std::size_t begin = at + std::string("Credential=").size();
    return text.substr(begin, text.find('/', begin) - begin);
}

inline void setSetting(const char* name, std::uint32_t value) {
    ASSERT_EQ(kvCFGValueDword(KVSTDCONFIG, "MediaKiln\\Default", name, &value, 1), 0u);
}

/// Plain HTTP, and the folder of key files moved to one that is the test's own.
class S3Test : public ::testing::Test {
protected:
    S3Test() {
        sdwS3DisableSSL = 1;
        gszReDir_Source = keysFrom_.data();
        gszReDir_NewDir = keysTo_.data();
    }
    ~S3Test() override {
        gszReDir_Source = gszReDir_NewDir = nullptr;
        sdwS3DisableSSL = 0;
        sdwS3VerifySSL = 1;
        glAmazonS3Refs = 0;
        std::string("us-east-1").copy(gszAwsRegion, sizeof gszAwsRegion);
        gszAwsRegion[9] = '\0';
    }

    /// A locator without credentials.
    std::string anonymous(const ScriptedStore& store, const std::string& key) const {
        return "s3://" + store.host() + "/" + store.bucket() + "/" + key;
    }
    /// A key whose locator counts as one of the provider, whose domain stands in it.
    static std::string atProvider(const std::string& key) { return "amazonaws.com/" + key; }

    const ScratchFolder keys_;

private:
    std::string keysFrom_ = "/etc/Korvane";
    std::string keysTo_ = keys_.path();
};

}  // namespace kvtest
