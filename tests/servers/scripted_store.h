// An object store inside the test's own process: it does what the library asks of a store, counts it, and makes faults
// on command. It looks at no signature: that is for the real stores.
//
//   ScriptedStore store;
//   store.put("clip", content);
//   store.next("GetObject", 2, fault::refused(503, "SlowDown", "Please reduce your request rate."));
//   ... open store.locator("clip"), read ...
//   EXPECT_EQ(store.count("GetObject"), 3);
//
// Operations have the names that the service gives them: GetBucketLocation, HeadObject, GetObject, PutObject,
// ListObjects, ListObjectsV2, DeleteObject, CreateMultipartUpload, UploadPart, UploadPartCopy, CompleteMultipartUpload,
// AbortMultipartUpload. Anything else is "Unknown" and answered with 501.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "servers/scripted_server.h"
#include "servers/stored_objects.h"

namespace kvtest {

/// What was asked of the store.
struct StoreRequest {
    std::string operation;
    std::string bucket;
    std::string key;                           // decoded
    std::map<std::string, std::string> query;  // decoded
    bool byHostName = false;                   // the bucket stood in the host's name, not in the path
    Request http;                              // as it came: method, target, headers, body, number of its connection
};

/// What becomes of the answer that the store had ready.
using Fault = std::function<void(Answer&)>;

namespace fault {

Fault refused(int status, const std::string& code, const std::string& message);
/// As a store refuses a request that was signed for another region than its own.
Fault wrongRegion(const std::string& used, const std::string& expected);
/// The connection ends within the body.
Fault cutAfter(std::size_t bytes);
/// The body has bytes more than are announced.
Fault tooLong(const std::string& more);
/// The length that is announced, of a HEAD above all; the body stays as it is.
Fault announcing(std::uint64_t length);
/// The object's whole content with status 200, whatever range was asked for.
Fault body(const std::string& content);
/// Neither the header nor an XML element of that name.
Fault without(const std::string& name);
/// No answer: the connection ends.
Fault dropped();
/// The status stays, the body becomes this.
Fault garbage(const std::string& text);

}  // namespace fault

class ScriptedStore {
public:
    static constexpr std::size_t kAlways = static_cast<std::size_t>(-1);
    using Which = std::function<bool(const StoreRequest&)>;

    /// Listens on a free port of 127.0.0.1, with one empty bucket.
    explicit ScriptedStore(const std::string& region = "us-east-1");
    ~ScriptedStore();
    ScriptedStore(const ScriptedStore&) = delete;
    ScriptedStore& operator=(const ScriptedStore&) = delete;

    std::string host() const;         // "127.0.0.1:PORT"
    std::string virtualHost() const;  // "s3.localhost:PORT": the bucket is served at BUCKET.s3.localhost as well
    std::string bucket() const;       // "bucket"
    std::string locator(std::string_view key) const;  // "s3://ACCESS:SECRET@HOST/bucket/KEY", the key as it is given

    void put(const std::string& key, const std::string& content);
    /// An object of any size that takes no memory; see patternAt.
    void putPattern(const std::string& key, std::uint64_t size);
    void remove(const std::string& key);
    std::optional<std::string> content(const std::string& key) const;
    std::string contentType(const std::string& key) const;
    std::vector<std::string> keys() const;
    /// Uploads that were begun, and neither completed nor given up.
    std::size_t openUploads() const;

    /// At most so many entries in an answer to a listing.
    void setPageSize(std::size_t entries);

    /// The fault for so many of the requests of the operation that come from now on. Faults of the same requests come
    /// one after another, in the order in which they were asked for.
    void next(const std::string& operation, std::size_t times, Fault fault);
    /// The same for requests that are chosen by more than their operation.
    void next(Which which, std::size_t times, Fault fault);

    /// From now on requests of the operation get no byte of an answer before release().
    void hold(const std::string& operation);
    /// The same for requests that are chosen by more than their operation.
    void hold(Which which);
    /// Waits until so many requests are held; false if they do not come within half a minute.
    bool waitForHeld(std::size_t count) const;
    /// Answers those that are held, and holds no more.
    void release();

    std::vector<StoreRequest> requests() const;
    std::vector<StoreRequest> requests(const std::string& operation) const;
    std::size_t count(const std::string& operation) const;
    /// Connections accepted so far.
    int connections() const;

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace kvtest
