// What object stores say in XML, those that differ and those that mean harm.
#include <gtest/gtest.h>

#include "file/s3/answers.h"

namespace {

using namespace kv::file::s3;

constexpr char kDeclaration[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
constexpr char kSpace[] = " xmlns=\"http://s3.amazonaws.com/doc/2006-03-01/\"";

/// The XML of an answer whose root is called so.
std::string xml(const std::string& root, const std::string& inside) {
    return kDeclaration + ("<" + root) + kSpace + ">" + inside + "</" + root + ">";
}

std::string repeated(std::string_view text, std::size_t count) {
    std::string all;
    for (std::size_t i = 0; i < count; ++i) all += text;
    return all;
}

std::string listing(const std::string& inside) { return xml("ListBucketResult", inside); }
std::string entry(const std::string& key) { return "<Contents><Key>" + key + "</Key></Contents>"; }

std::string onlyKey(const std::string& inside) {
    const auto answer = listingIn(listing(inside));
    if (!answer.isSuccess()) return "(" + answer.error().exceptionName + ")";
    const auto& contents = answer.result().contents;
    return contents.size() == 1 ? contents[0].key : "(" + std::to_string(contents.size()) + " keys)";
}

template <class Result>
std::string failureOf(const Answer<Result>& answer) {
    return answer.isSuccess() ? "(success)" : answer.error().exceptionName;
}

TEST(S3Errors, CodeAndMessageBecomeNameAndMessage) {
    const Error error = errorIn(404, xml("Error", "<Code>NoSuchKey</Code><Message>It's &lt;not&gt; here</Message>"));
    EXPECT_EQ(error.exceptionName, "NoSuchKey");
    EXPECT_EQ(error.message, "It's <not> here");
    EXPECT_EQ(error.httpStatus, 404);
}

TEST(S3Errors, AMessageThatNamesARegionStaysAsItIs) {
    const std::string message = "The authorization header is malformed; the region 'a' is wrong; expecting 'b'";
    EXPECT_EQ(errorIn(400, xml("Error", "<Code>X</Code><Message>" + message + "</Message>")).message, message);
}

TEST(S3Errors, AreFoundBelowAnotherRoot) {
    EXPECT_EQ(errorIn(400, "<ErrorResponse><Error><Code>Bad</Code></Error></ErrorResponse>").exceptionName, "Bad");
}

TEST(S3Errors, WithoutABodyAreNamedAfterTheStatus) {
    const std::pair<long, const char*> names[] = {
        {404, "NotFound"}, {403, "AccessDenied"}, {400, "HTTP 400"}, {301, "HTTP 301"}, {503, "HTTP 503"}};
    for (const auto& [status, name] : names) {
        const Error error = errorIn(status, "");
        EXPECT_EQ(error.exceptionName, name);
        EXPECT_EQ(error.message, "HTTP " + std::to_string(status));
        EXPECT_EQ(error.httpStatus, status);
    }
}

TEST(S3Errors, WithAnEmptyMessageTellTheStatus) {
    const Error error = errorIn(403, "<Error><Code>AccessDenied</Code><Message></Message></Error>");
    EXPECT_EQ(error.exceptionName, "AccessDenied");
    EXPECT_EQ(error.message, "HTTP 403");
}

TEST(S3Errors, WithABodyThatIsNoXmlAreNamedAfterTheStatus) {
    for (const char* body : {"Bad Gateway", "<html><body>no</body></html>", "<Error><Code>X", "<", "\xFF\xFE"}) {
        EXPECT_EQ(errorIn(502, body).exceptionName, "HTTP 502") << body;
    }
}

TEST(S3Location, IsTheConstraint) {
    EXPECT_EQ(locationIn(xml("LocationConstraint", "eu-west-1")).result().constraint, "eu-west-1");
    EXPECT_EQ(locationIn("<LocationConstraint>eu</LocationConstraint>").result().constraint, "eu");
    EXPECT_EQ(
        locationIn(xml("CreateBucketConfiguration", "<LocationConstraint>eu</LocationConstraint>")).result().constraint,
        "eu");
}

TEST(S3Location, IsEmptyWhereNoneIsSet) {
    for (const std::string& body :
         {xml("LocationConstraint", ""), std::string("<LocationConstraint/>"),
          std::string("<LocationConstraint xmlns=\"x\"/>"), std::string(), xml("CreateBucketConfiguration", ""),
          xml("CreateBucketConfiguration", "<LocationConstraint/>")}) {
        const auto answer = locationIn(body);
        ASSERT_TRUE(answer.isSuccess()) << body;
        EXPECT_EQ(answer.result().constraint, "") << body;
    }
}

TEST(S3Location, IsNoneInAnotherAnswer) {
    EXPECT_EQ(failureOf(locationIn("<html><body>Welcome</body></html>")), "MalformedAnswer");
    EXPECT_EQ(failureOf(locationIn("Welcome")), "MalformedAnswer");
}

TEST(S3Listing, TellsObjectsPrefixesAndTheNextPage) {
    const auto answer = listingIn(listing(
        "<Name>b</Name><Prefix>p</Prefix><MaxKeys>2</MaxKeys><IsTruncated>true</IsTruncated>"
        "<Contents><Key>p/a.mxf</Key><LastModified>2009-10-12T17:50:30.000Z</LastModified>"
        "<ETag>&quot;fba9&quot;</ETag><Size>18446744073709551615</Size><StorageClass>STANDARD</StorageClass>"
        "<Owner><ID>1</ID><DisplayName>x</DisplayName></Owner></Contents>\n  "
        "<Contents>\n    <Key>p/b</Key>\n    <LastModified>1970-01-01T00:00:01Z</LastModified><Size>0</Size></Contents>"
        "<CommonPrefixes><Prefix>p/d/</Prefix></CommonPrefixes><CommonPrefixes><Prefix>p/e/</Prefix></CommonPrefixes>"
        "<NextContinuationToken>t+o%2Fk  en=</NextContinuationToken>"));
    ASSERT_TRUE(answer.isSuccess());
    const Listing& page = answer.result();
    ASSERT_EQ(page.contents.size(), 2u);
    EXPECT_EQ(page.contents[0].key, "p/a.mxf");
    EXPECT_EQ(page.contents[0].eTag, "\"fba9\"");
    EXPECT_EQ(page.contents[0].size, ~std::uint64_t{0});
    EXPECT_EQ(page.contents[0].lastModified, 1255369830);
    EXPECT_EQ(page.contents[1].key, "p/b");
    EXPECT_EQ(page.contents[1].eTag, "");
    EXPECT_EQ(page.contents[1].size, 0u);
    EXPECT_EQ(page.contents[1].lastModified, 1);
    EXPECT_EQ(page.commonPrefixes, (std::vector<std::string>{"p/d/", "p/e/"}));
    EXPECT_TRUE(page.isTruncated);
    EXPECT_EQ(page.nextContinuationToken, "t+o%2Fk  en=");
    EXPECT_EQ(page.nextMarker, "p/e/");
}

TEST(S3Listing, PrefixesMayShareAnElement) {
    const auto answer = listingIn(listing("<CommonPrefixes><Prefix>a/</Prefix><Prefix>b/</Prefix></CommonPrefixes>"));
    EXPECT_EQ(answer.result().commonPrefixes, (std::vector<std::string>{"a/", "b/"}));
}

TEST(S3Listing, OfAnEmptyBucketIsEmpty) {
    for (const std::string& body : {listing(""), listing("<IsTruncated>false</IsTruncated>"),
                                    std::string("<ListBucketResult/>"), xml("ListBucketV2Result", "")}) {
        const auto answer = listingIn(body);
        ASSERT_TRUE(answer.isSuccess()) << body;
        EXPECT_TRUE(answer.result().contents.empty());
        EXPECT_TRUE(answer.result().commonPrefixes.empty());
        EXPECT_FALSE(answer.result().isTruncated);
        EXPECT_EQ(answer.result().nextMarker, "");
    }
}

TEST(S3Listing, EncodedKeysAreDecoded) {
    const std::string encoding = "<EncodingType>url</EncodingType>";
    EXPECT_EQ(onlyKey(encoding + entry("a%20b%2Bc+d%25/%C3%A9%0A")), "a b+c d%/\xC3\xA9\n");
    EXPECT_EQ(onlyKey(encoding + entry("100%")), "100%");
    EXPECT_EQ(onlyKey(encoding + entry("%4")), "%4");
    EXPECT_EQ(onlyKey(encoding + entry("%zz%g1%1g")), "%zz%g1%1g");
    const auto prefixes = listingIn(listing(encoding + "<CommonPrefixes><Prefix>%26/</Prefix></CommonPrefixes>"));
    EXPECT_EQ(prefixes.result().commonPrefixes, std::vector<std::string>{"&/"});
}

TEST(S3Listing, KeysThatAreNotEncodedStayAsTheyAre) {
    EXPECT_EQ(onlyKey(entry("a%20b+c")), "a%20b+c");
    EXPECT_EQ(onlyKey(entry("&lt;&amp;&gt;&quot;&apos;")), "<&>\"'");
    EXPECT_EQ(onlyKey(entry(" two  blanks\tand ends ")), " two  blanks\tand ends ");
    EXPECT_EQ(onlyKey(entry("\xC3\xA9\xE6\x97\xA5")), "\xC3\xA9\xE6\x97\xA5");
    EXPECT_EQ(onlyKey(entry("..")), "..");
}

TEST(S3Listing, NumericReferencesAreLetters) {
    EXPECT_EQ(onlyKey(entry("&#97;&#x62;&#13;&#x9;")), "ab\r\t");
    EXPECT_EQ(onlyKey(entry("&#0000000000097;")), "a");
    EXPECT_EQ(onlyKey(entry("&#233;&#xE9;&#x65e5;&#x1F3AC;")), "\xC3\xA9\xC3\xA9\xE6\x97\xA5\xF0\x9F\x8E\xAC");
}

TEST(S3Listing, KeysInACdataSectionAreRead) { EXPECT_EQ(onlyKey(entry("<![CDATA[a&b<c]]>")), "a&b<c"); }

TEST(S3Listing, EntriesWithoutAKeyAreLeftOut) {
    EXPECT_EQ(onlyKey("<Contents/><Contents><Key/></Contents>" + entry("a")), "a");
}

TEST(S3Listing, NumbersAndDatesThatAreNoneAreZero) {
    for (const char* text : {"", "x", "-1", "1x", "99999999999999999999"}) {
        const auto answer = listingIn(listing("<Contents><Key>a</Key><Size>" + std::string(text) +
                                              "</Size><LastModified>" + text + "</LastModified></Contents>"));
        EXPECT_EQ(answer.result().contents.at(0).size, 0u) << text;
        EXPECT_EQ(answer.result().contents.at(0).lastModified, 0) << text;
    }
    for (const char* date : {"2009-13-12T17:50:30.000Z", "2009-02-29T00:00:00Z", "2009-10-12T24:00:00Z", "2009-10-12",
                             "2009-10-12T17:60:00Z"}) {
        const auto answer = listingIn(
            listing("<Contents><Key>a</Key><LastModified>" + std::string(date) + "</LastModified></Contents>"));
        EXPECT_EQ(answer.result().contents.at(0).lastModified, 0) << date;
    }
}

TEST(S3Listing, TheNextMarkerIsTheLastTextWhereNoneIsTold) {
    const std::string cut = "<IsTruncated>true</IsTruncated>";
    EXPECT_EQ(listingIn(listing(cut + entry("a") + entry("b"))).result().nextMarker, "b");
    EXPECT_EQ(listingIn(listing(cut + entry("z") + "<CommonPrefixes><Prefix>b/</Prefix></CommonPrefixes>"))
                  .result()
                  .nextMarker,
              "z");
    EXPECT_EQ(listingIn(listing(cut)).result().nextMarker, "");
    EXPECT_EQ(listingIn(listing(cut + entry("a") + "<NextMarker>told</NextMarker>")).result().nextMarker, "told");
}

TEST(S3Listing, TheNextMarkerIsReadWhetherTheStoreEncodesItOrNot) {
    const std::string page = "<EncodingType>url</EncodingType><IsTruncated>true</IsTruncated>" + entry("a%2520b");
    for (const char* told : {"a%20b", "a%2520b"}) {  // the key's own text, and its encoded form
        EXPECT_EQ(listingIn(listing(page + "<NextMarker>" + told + "</NextMarker>")).result().nextMarker, "a%20b");
    }
}

TEST(S3Upload, IsNamedByItsId) {
    const auto answer =
        uploadIn(xml("InitiateMultipartUploadResult", "<Bucket>b</Bucket><Key>k</Key><UploadId>2~a b+/=</UploadId>"));
    EXPECT_EQ(answer.result().uploadId, "2~a b+/=");
    EXPECT_EQ(failureOf(uploadIn(xml("InitiateMultipartUploadResult", "<UploadId/>"))), "MalformedAnswer");
}

TEST(S3Parts, TheCopiedOneHasATag) {
    EXPECT_EQ(copiedPartIn(xml("CopyPartResult", "<ETag>&quot;a&quot;</ETag>")).result().eTag, "\"a\"");
    EXPECT_EQ(copiedPartIn(xml("CopyPartResult", "<ETag>a</ETag>")).result().eTag, "a");
    EXPECT_EQ(copiedPartIn(xml("CopyPartResult", "")).result().eTag, "");
}

TEST(S3Parts, TheJoinedObjectHasATagOrNone) {
    EXPECT_EQ(completedUploadIn(xml("CompleteMultipartUploadResult", "<ETag>a-2</ETag>")).result().eTag, "a-2");
    // Blanks keep a connection alive while the store joins the parts.
    const std::string late = kDeclaration + std::string(5000, ' ') + "<CompleteMultipartUploadResult/>";
    EXPECT_EQ(completedUploadIn(late).result().eTag, "");
}

TEST(S3Answers, AnErrorAfterASuccessfulStatusIsAFailure) {
    const std::string body = xml("Error", "<Code>InternalError</Code><Message>Try again</Message>");
    for (const auto& error : {copiedPartIn(body).error(), completedUploadIn(body).error(), uploadIn(body).error(),
                              listingIn(body).error(), locationIn(body).error()}) {
        EXPECT_EQ(error.exceptionName, "InternalError");
        EXPECT_EQ(error.message, "Try again");
        EXPECT_EQ(error.httpStatus, 200);
    }
}

TEST(S3Answers, OfAnotherRequestAreMalformed) {
    const std::string body = xml("Other", "<UploadIds>1</UploadIds>");
    for (const std::string& name :
         {failureOf(copiedPartIn(body)), failureOf(completedUploadIn(body)), failureOf(uploadIn(body)),
          failureOf(listingIn(body)), failureOf(locationIn(xml("Other", "<X/>")))}) {
        EXPECT_EQ(name, "MalformedAnswer");
    }
}

TEST(S3Answers, ThatAreNoXmlAreMalformed) {
    using namespace std::string_view_literals;
    for (const std::string_view body : {""sv, " "sv, "x"sv, "<"sv, "<ListBucketResult>"sv, "<ListBucketResult"sv,
                                        "<ListBucketResult/>\0"sv, "<!DOCTYPE x>"sv, "\xEF\xBB\xBF"sv, "\xF0\x9F"sv}) {
        EXPECT_EQ(failureOf(listingIn(body)), "MalformedAnswer") << body;
    }
}

TEST(S3Answers, AByteOrderMarkIsNoPartOfTheText) {
    EXPECT_TRUE(listingIn("\xEF\xBB\xBF<ListBucketResult/>").isSuccess());
}

TEST(S3Answers, ThatAreNestedTooDeepAreRefused) {
    EXPECT_EQ(failureOf(listingIn(listing(repeated("<a>", 100) + repeated("</a>", 100)))), "MalformedAnswer");
    EXPECT_EQ(failureOf(listingIn(repeated("<a>", 900000))), "MalformedAnswer");
    EXPECT_EQ(errorIn(500, repeated("<Error>", 900000)).exceptionName, "HTTP 500");
    EXPECT_EQ(onlyKey(repeated("<a>", 20) + repeated("</a>", 20) + entry("k")), "k");
}

TEST(S3Answers, WithTooManyTagsAreRefused) {
    EXPECT_EQ(failureOf(listingIn(listing(repeated("<a/>", 1000001)))), "MalformedAnswer");
}

TEST(S3Answers, OfMoreThanTheLargestSizeAreRefused) {
    EXPECT_EQ(failureOf(listingIn(listing(std::string(kLargestAnswer, ' ')))), "MalformedAnswer");
}

TEST(S3Completion, ListsThePartsInTheirOrderWithTheirTagsEscaped) {
    EXPECT_EQ(completionOf({{"\"a\"", 1}, {"b<&>", 20}}),
              "<CompleteMultipartUpload xmlns=\"http://s3.amazonaws.com/doc/2006-03-01/\">"
              "<Part><PartNumber>1</PartNumber><ETag>&quot;a&quot;</ETag></Part>"
              "<Part><PartNumber>20</PartNumber><ETag>b&lt;&amp;&gt;</ETag></Part></CompleteMultipartUpload>");
}

}  // namespace
