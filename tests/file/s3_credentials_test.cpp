// Key files: which is read, what of it counts, and what is said where there is none.
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "file/ordinary_user.h"
#include "kvcfg.h"
#include "kvos/attributes.h"
#include "kvos/locator.h"
#include "kvos/s3.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace {

using namespace kvtest;

/// "/etc/Korvane" stands for a folder of the test while it lives.
class KeyFiles : public ::testing::Test {
protected:
    KeyFiles() {
        gszReDir_Source = from_.data();
        gszReDir_NewDir = to_.data();
    }
    ~KeyFiles() override { gszReDir_Source = gszReDir_NewDir = nullptr; }

    /// The three texts of the key file for "/bucket" with this content, the result ahead of them.
    std::string read(const std::string& content) {
        makeFile(folder_ / "bucket.csv", content);
        return access("/bucket");
    }
    static std::string access(const char* bucket) {
        char accessKey[256] = "old", secretKey[256] = "old", region[256] = "old";
        const uint8_t result = kvOSAwsAccess(accessKey, secretKey, region, bucket);
        return std::to_string(result) + ":" + accessKey + "|" + secretKey + "|" + region;
    }

    ScratchFolder folder_;

private:
    std::string from_ = "/etc/Korvane";
    std::string to_ = folder_.path();
};

const std::string kAll = "AWSAccessKeyId=AKIA\nAWSSecretKey=secret\nAWSRegion=eu-west-1\n";

}  // namespace

TEST_F(KeyFiles, AllThreeValuesAreRead) { EXPECT_EQ(read(kAll), "1:AKIA|secret|eu-west-1"); }

TEST_F(KeyFiles, ABucketsOwnFileWinsOverTheCommonOne) {
    makeFile(folder_ / "rootkey.csv", "AWSAccessKeyId=COMMON\n");
    EXPECT_EQ(access("/bucket"), "1:COMMON||");
    EXPECT_EQ(read(kAll), "1:AKIA|secret|eu-west-1");
    EXPECT_EQ(access("/other"), "1:COMMON||");
}

TEST_F(KeyFiles, TheBucketsTextIsPartOfThePathAsItStands) {
    makeFile(folder_ / "@bucket.csv", kAll);
    makeFile(folder_ / "plain.csv", "AWSAccessKeyId=PLAIN\n");
    EXPECT_EQ(access("@bucket"), "1:AKIA|secret|eu-west-1");
    EXPECT_EQ(access("plain"), "1:PLAIN||");
    makeFile(folder_ / ".csv", "AWSAccessKeyId=NONE\n");
    EXPECT_EQ(access(""), "1:NONE||");
}

TEST_F(KeyFiles, AMissingFileIsToldWithTheBucketsPath) {
    CapturedMessages messages;
    EXPECT_EQ(access("/bucket"), "0:||");
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(messages.text(), "\nKeyFile</etc/Korvane//bucket.csv> Does not exist ");
}

TEST_F(KeyFiles, AFileThatCannotBeOpenedIsToldWithItsError) {
    makeFile(folder_ / "bucket.csv", kAll);
    std::filesystem::permissions(folder_ / "bucket.csv", std::filesystem::perms::none);
    openToAll(folder_.path());
    EXPECT_TRUE(trueAsOrdinaryUser([] {
        CapturedMessages messages;
        const bool refused = access("/bucket") == "0:||" && errno == EACCES;
        return refused && messages.count("\nKeyFile</etc/Korvane//bucket.csv> UNABLE TO OPEN error = 13 (0xd) ") == 1;
    }));
}

TEST_F(KeyFiles, TheFirstOfEachNameCounts) {
    EXPECT_EQ(read("AWSSecretKey=one\nAWSSecretKey=two\nAWSAccessKeyId=A\nAWSAccessKeyId=B\n"), "1:A|one|");
}

TEST_F(KeyFiles, AnEmptyValueDoesNotCount) {
    EXPECT_EQ(read("AWSSecretKey=\nAWSSecretKey\nAWSSecretKey=two\nAWSAccessKeyId"), "1:|two|");
}

TEST_F(KeyFiles, OtherLinesArePassedOver) {
    EXPECT_EQ(read("# AWSAccessKeyId=NO\n\n AWSRegion=no\nx=AWSSecretKey=no\nawsregion=no\n" + kAll + "end"),
              "1:AKIA|secret|eu-west-1");
    EXPECT_EQ(read("nothing that counts"), "1:||");
    EXPECT_EQ(read(""), "1:||");
}

TEST_F(KeyFiles, AValueRunsToTheEndOfItsLine) {
    EXPECT_EQ(read("AWSSecretKey=a=b c/+= \nAWSAccessKeyId=x"), "1:x|a=b c/+= |");
}

TEST_F(KeyFiles, TheValueBeginsAtItsColumnWhateverStandsAheadOfIt) {
    EXPECT_EQ(read("AWSSecretKey:secret\nAWSRegion==eu\n"), "1:|secret|=eu");
    EXPECT_EQ(read("AWSSecretKeys=secret\n"), "1:|=secret|");
}

TEST_F(KeyFiles, LinesMayEndInCarriageReturnAndLineFeed) {
    EXPECT_EQ(read("AWSAccessKeyId=AKIA\r\nAWSSecretKey=secret\r\nAWSRegion=eu-west-1\r\n"), "1:AKIA|secret|eu-west-1");
}

TEST_F(KeyFiles, AZeroByteEndsTheFile) {
    EXPECT_EQ(read(std::string("AWSAccessKeyId=AKIA\n") + '\0' + "x"), "1:AKIA||");
    EXPECT_EQ(read(std::string(3, '\0')), "1:||");
}

TEST_F(KeyFiles, AValueThatDoesNotFitIsRefusedAndNotShown) {
    const std::string longest(255, 'k');
    EXPECT_EQ(read("AWSSecretKey=" + longest + "\n"), "1:|" + longest + "|");
    CapturedMessages messages;
    EXPECT_EQ(read("AWSAccessKeyId=AKIA\nAWSSecretKey=" + longest + "k\n"), "0:||");
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(messages.text(), "\nKeyFile</etc/Korvane//bucket.csv> UNABLE TO OPEN error = 36 (0x24) ");
}

TEST_F(KeyFiles, AFileOfMoreThan64KiBIsRefused) {
    CapturedMessages messages;
    EXPECT_EQ(read(kAll + std::string(65536, 'x')), "0:||");
    EXPECT_EQ(errno, EFBIG);
    EXPECT_EQ(messages.text(), "\nKeyFile</etc/Korvane//bucket.csv> UNABLE TO OPEN error = 27 (0x1b) ");
}

TEST_F(KeyFiles, APathThatDoesNotFitIsRefused) {
    CapturedMessages messages;
    EXPECT_EQ(access(("/" + std::string(5000, 'b')).c_str()), "0:||");
    EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST_F(KeyFiles, NullIsRefused) {
    char text[3][256] = {"a", "b", "c"};
    EXPECT_EQ(kvOSAwsAccess(text[0], text[1], text[2], nullptr), 0u);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_STREQ(text[0], "");
    EXPECT_EQ(kvOSAwsAccess(nullptr, text[1], text[2], "/bucket"), 0u);
    EXPECT_EQ(kvOSAwsAccess(text[0], nullptr, text[2], "/bucket"), 0u);
    EXPECT_EQ(kvOSAwsAccess(text[0], text[1], nullptr, "/bucket"), 0u);
}

// ---- the region ----

namespace {

constexpr const char* kKey = "MediaKiln\\Default";

void storeRegion(std::string text) {
    std::uint32_t length = 0;
    kvCFGValueString(KVSTDCONFIG, kKey, "AWSRegion", text.data(), &length, 1);
}

std::string storedRegion() {
    char text[256] = "";
    std::uint32_t length = 0;
    kvCFGValueString(KVSTDCONFIG, kKey, "AWSRegion", text, &length, 0);
    return text;
}

}  // namespace

TEST(AwsRegion, TheVariableIsWhatIsReturned) {
    EXPECT_EQ(getAwsRegion(), gszAwsRegion);
    EXPECT_STREQ(getAwsRegion(), "us-east-1");
    EXPECT_EQ(sizeof gszAwsRegion, 32u);
}

TEST(AwsRegion, SettingsAreNotAskedWhileItIsFilled) {
    storeRegion("eu-west-1");
    EXPECT_STREQ(getAwsRegion(), "us-east-1");
}

TEST(AwsRegion, AClearedOneIsFilledFromTheSettings) {
    storeRegion("eu-west-1");
    gszAwsRegion[0] = '\0';
    EXPECT_STREQ(getAwsRegion(), "eu-west-1");
    EXPECT_EQ(gszAwsRegion[31], '\0');
}

TEST(AwsRegion, WithoutASettingTheFirstRegionIsStoredAndSaved) {
    std::filesystem::create_directories(std::string(std::getenv("HOME")) + "/Library/Application Support");
    char folder[4096];
    ASSERT_EQ(kvOSGetConfigDir(folder, 1), 0);
    gszAwsRegion[0] = '\0';
    EXPECT_STREQ(getAwsRegion(), "us-east-1");
    EXPECT_EQ(storedRegion(), "us-east-1");
    if (std::filesystem::exists("/Library/Application Support")) GTEST_SKIP() << "the machine has settings for all";
    EXPECT_NE(contentOf(std::string(folder) + "config.xml").find("AWSRegion"), std::string::npos);
}

TEST(AwsRegion, ASettingWithoutTextCountsAsMissing) {
    storeRegion("");
    gszAwsRegion[0] = '\0';
    EXPECT_STREQ(getAwsRegion(), "us-east-1");
    EXPECT_EQ(storedRegion(), "us-east-1");
}

TEST(AwsRegion, ATextThatDoesNotFitCountsAsMissingAndStays) {
    storeRegion(std::string(31, 'r'));
    gszAwsRegion[0] = '\0';
    EXPECT_EQ(getAwsRegion(), std::string(31, 'r'));
    storeRegion(std::string(32, 'r'));
    gszAwsRegion[0] = '\0';
    EXPECT_STREQ(getAwsRegion(), "us-east-1");
    EXPECT_EQ(storedRegion(), std::string(32, 'r'));
}
