// What the store in memory promises, seen by a client that knows HTTP.
#include "servers/scripted_store.h"

#include <gtest/gtest.h>
#include <thread>

#include "servers/fetch.h"

namespace {

using namespace kvtest;

/// The store, and how its objects and its bucket are asked for.
struct Service {
    std::string object(const std::string& key) const { return "http://" + store.host() + "/bucket/" + key; }
    std::string bucket(const std::string& query = "") const { return "http://" + store.host() + "/bucket" + query; }

    ScriptedStore store;
};

std::vector<std::string> elementsOf(const std::string& xml, const std::string& name) {
    std::vector<std::string> found;
    for (std::size_t at = 0; (at = xml.find("<" + name + ">", at)) != std::string::npos;) {
        at += name.size() + 2;
        found.push_back(xml.substr(at, xml.find("</", at) - at));
    }
    return found;
}

TEST(ScriptedStore, KeepsWhatIsPutUntilItIsDeleted) {
    const Service service;
    const std::string content(3'000'000, 'x');
    EXPECT_EQ(fetch(service.object("a%20b%2Bc"), {.headers = {"Content-Type: video/mp4"}, .upload = &content}).status,
              200);
    EXPECT_EQ(service.store.keys(), std::vector<std::string>{"a b+c"});
    EXPECT_EQ(service.store.contentType("a b+c"), "video/mp4");
    EXPECT_TRUE(fetch(service.object("a%20b+c")).body == content);
    const Fetched head = fetch(service.object("a%20b+c"), {.headOnly = true});
    EXPECT_NE(head.headers.find("Content-Length: 3000000\r\n"), std::string::npos) << head.headers;
    EXPECT_EQ(fetch(service.object("a%20b+c"), {.method = "DELETE"}).status, 204);
    EXPECT_EQ(fetch(service.object("a%20b+c")).status, 404);
    EXPECT_EQ(service.store.count("PutObject"), 1u);
    EXPECT_EQ(service.store.count("GetObject"), 2u);
    EXPECT_EQ(service.store.count("HeadObject"), 1u);
    EXPECT_EQ(service.store.count("DeleteObject"), 1u);
}

TEST(ScriptedStore, ServesRangesOfAnObjectThatTakesNoMemory) {
    Service service;
    constexpr std::uint64_t kSize = 1ull << 40;
    service.store.putPattern("clip", kSize);
    const Fetched part = fetch(service.object("clip"), {.range = "1000000000000-1000000000003"});
    EXPECT_EQ(part.status, 206);
    std::string wanted;
    for (std::uint64_t at = 1000000000000; at <= 1000000000003; ++at) wanted += patternAt(at);
    EXPECT_EQ(part.body, wanted);
    EXPECT_EQ(fetch(service.object("clip"), {.range = "1099511627775-"}).body.size(), 1u);
    EXPECT_EQ(fetch(service.object("clip"), {.range = "1099511627776-1099511627777"}).status, 416);
}

TEST(ScriptedStore, ListsInPagesWithObjectsAndGroups) {
    Service service;
    for (const char* key : {"a", "dir/1", "dir/2", "e&", "other/x"}) service.store.put(key, "1");
    service.store.setPageSize(2);
    const std::string query = "?list-type=2&delimiter=%2F";
    const std::string first = fetch(service.bucket(query)).body;
    EXPECT_EQ(elementsOf(first, "Key"), std::vector<std::string>{"a"});
    EXPECT_EQ(elementsOf(first, "Prefix"), (std::vector<std::string>{"", "dir/"}));
    EXPECT_EQ(elementsOf(first, "IsTruncated"), std::vector<std::string>{"true"});
    EXPECT_EQ(elementsOf(first, "NextContinuationToken"), std::vector<std::string>{"dir/"});
    const std::string second = fetch(service.bucket(query + "&continuation-token=dir%2F")).body;
    EXPECT_EQ(elementsOf(second, "Key"), std::vector<std::string>{"e&amp;"});
    EXPECT_EQ(elementsOf(second, "Prefix"), (std::vector<std::string>{"", "other/"}));
    EXPECT_EQ(elementsOf(second, "IsTruncated"), std::vector<std::string>{"false"});
    EXPECT_EQ(service.store.count("ListObjectsV2"), 2u);
}

TEST(ScriptedStore, TheOlderListingTellsWhereToGoOnOnlyToThoseWhoGroup) {
    Service service;
    for (const char* key : {"a/1", "b", "c"}) service.store.put(key, "1");
    service.store.setPageSize(1);
    EXPECT_EQ(elementsOf(fetch(service.bucket("?delimiter=/")).body, "NextMarker"), std::vector<std::string>{"a/"});
    const std::string plain = fetch(service.bucket("?marker=a/1")).body;
    EXPECT_EQ(elementsOf(plain, "Key"), std::vector<std::string>{"b"});
    EXPECT_TRUE(elementsOf(plain, "NextMarker").empty());
    EXPECT_EQ(service.store.count("ListObjects"), 2u);
}

TEST(ScriptedStore, JoinsCopiedParts) {
    Service service;
    service.store.put("a%", "first ");
    service.store.put("b", "second");
    const std::string created = fetch(service.object("whole?uploads"), {.method = "POST"}).body;
    const std::string upload = service.object("whole?uploadId=" + elementsOf(created, "UploadId").at(0));
    std::string list;
    for (int part = 1; part <= 2; ++part) {
        const std::string source = part == 1 ? "/bucket/a%25" : "/bucket/b";
        const Fetched copied = fetch(upload + "&partNumber=" + std::to_string(part),
                                     {.method = "PUT", .headers = {"x-amz-copy-source: " + source}});
        list += "<Part><PartNumber>" + std::to_string(part) + "</PartNumber><ETag>" +
                elementsOf(copied.body, "ETag").at(0) + "</ETag></Part>";
    }
    EXPECT_EQ(service.store.openUploads(), 1u);
    EXPECT_EQ(fetch(upload, {.body = "<CompleteMultipartUpload>" + list + "</CompleteMultipartUpload>"}).status, 200);
    EXPECT_EQ(service.store.content("whole"), "first second");
    EXPECT_EQ(fetch(service.object("whole"), {.range = "4-8"}).body, "t sec");
    EXPECT_EQ(service.store.openUploads(), 0u);
    EXPECT_EQ(service.store.count("UploadPartCopy"), 2u);
}

TEST(ScriptedStore, KnowsABucketByTheHostsName) {
    Service service;
    service.store.put("clip", "content");
    EXPECT_EQ(fetch("http://bucket." + service.store.virtualHost() + "/clip").body, "content");
    EXPECT_TRUE(service.store.requests().at(0).byHostName);
    EXPECT_EQ(fetch("http://other." + service.store.virtualHost() + "/clip").status, 404);
}

TEST(ScriptedStore, TellsItsRegion) {
    const ScriptedStore far("eu-west-1");
    EXPECT_EQ(elementsOf(fetch("http://" + far.host() + "/bucket?location").body, "LocationConstraint").size(), 0u);
    EXPECT_NE(fetch("http://" + far.host() + "/bucket?location").body.find(">eu-west-1</"), std::string::npos);
    EXPECT_EQ(far.count("GetBucketLocation"), 2u);
}

TEST(ScriptedStore, MakesAFaultAsOftenAsItIsTold) {
    Service service;
    service.store.put("clip", "content");
    service.store.next("GetObject", 2, fault::refused(503, "SlowDown", "Please & wait"));
    for (int tries = 0; tries < 2; ++tries) {
        const Fetched got = fetch(service.object("clip"));
        EXPECT_EQ(got.status, 503);
        EXPECT_NE(got.body.find("<Code>SlowDown</Code><Message>Please &amp; wait</Message>"), std::string::npos);
    }
    EXPECT_EQ(fetch(service.object("clip")).body, "content");
}

TEST(ScriptedStore, MakesFaultsOfEachKind) {
    Service service;
    service.store.put("clip", "content");
    const auto withFault = [&](Fault fault, const Client::Options& options = {}) {
        service.store.next([](const StoreRequest& request) { return request.key == "clip"; }, 1, std::move(fault));
        return fetch(service.object("clip"), options);
    };
    EXPECT_EQ(withFault(fault::cutAfter(3)).body, "con");
    EXPECT_EQ(withFault(fault::tooLong("more")).body, "content");
    EXPECT_NE(withFault(fault::announcing(99), {.headOnly = true}).headers.find("Content-Length: 99\r\n"),
              std::string::npos);
    EXPECT_EQ(withFault(fault::without("ETag")).headers.find("ETag"), std::string::npos);
    EXPECT_EQ(withFault(fault::dropped()).result, CURLE_GOT_NOTHING);
    EXPECT_EQ(withFault(fault::garbage("<a")).body, "<a");
    EXPECT_EQ(withFault(fault::body("all of it"), {.range = "0-1"}).status, 200);
    const std::string wrong = withFault(fault::wrongRegion("us-east-1", "eu-west-1")).body;
    EXPECT_NE(wrong.find("region &#39;us-east-1&#39; is wrong; expecting &#39;eu-west-1&#39;</Message>"),
              std::string::npos)
        << wrong;
    EXPECT_EQ(elementsOf(wrong, "Region"), std::vector<std::string>{"eu-west-1"});
}

TEST(ScriptedStore, HoldsAnswersBackUntilTheyAreReleased) {
    Service service;
    service.store.put("clip", "content");
    service.store.hold("GetObject");
    Fetched got;
    std::thread client([&, url = service.object("clip")] { got = fetch(url); });
    EXPECT_TRUE(service.store.waitForHeld(1));
    EXPECT_EQ(fetch(service.object("clip"), {.headOnly = true}).status, 200);
    service.store.release();
    client.join();
    EXPECT_EQ(got.body, "content");
    EXPECT_EQ(fetch(service.object("clip")).body, "content");
}

TEST(ScriptedStore, EndsWhileItHoldsAnswersBack) {
    auto store = std::make_unique<ScriptedStore>();
    store->hold("GetObject");
    std::thread client([url = "http://" + store->host() + "/bucket/clip"] { fetch(url); });
    EXPECT_TRUE(store->waitForHeld(1));
    store.reset();
    client.join();
}

}  // namespace
