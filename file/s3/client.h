// The operations of an object store that the library needs: requests and outcomes as plain values.
//
// Everything else in this folder talks to this interface alone, so that a second implementation can stand behind
// makeClient without being noticed. A client may be used by several threads at once.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace kv::file::s3 {

/// Both keys empty: requests go out unsigned.
struct Credentials {
    std::string accessKey;
    std::string secretKey;
    std::string sessionToken;
};

/// After how long a transfer that moves nothing is given up.
struct Patience {
    std::chrono::seconds usual{30};
    std::chrono::seconds copying{120};  // the copy of a part, at which stores work
    std::chrono::seconds joining{600};  // the completion of an upload, at which they work for minutes
};

struct ClientConfiguration {
    std::string region = "us-east-1";
    std::string endpointOverride;  // host, or host:port; empty: the provider's own endpoint of the region
    bool useHttps = true;
    bool verifySsl = true;
    Patience patience = {};
};

/// What a refused or failed request left: the service's error code, or a name of our own where no answer came.
struct Error {
    std::string exceptionName;
    std::string message;
    long httpStatus = 0;  // 0 when no answer came
};

/// The outcome of one request: its result, or why there is none.
template <class Result>
class Answer {
public:
    Answer(Result result) : result_(std::move(result)) {}
    Answer(Error error) : error_(std::move(error)) {}
    bool isSuccess() const { return result_.has_value(); }
    const Result& result() const { return *result_; }
    const Error& error() const { return error_; }

private:
    std::optional<Result> result_;
    Error error_;
};

// In all requests the bucket is the bare name, and keys and prefixes are the object's own texts, not yet encoded.

struct GetBucketLocationRequest {
    std::string bucket;
};
struct BucketLocation {
    std::string constraint;  // empty: none is set
};

struct HeadObjectRequest {
    std::string bucket;
    std::string key;
};
struct ObjectHead {
    std::uint64_t contentLength = 0;
    std::string contentType;
    std::string eTag;
};

struct GetObjectRequest {
    std::string bucket;
    std::string key;
    std::string range;                 // "bytes=0-99", or empty for the whole object
    std::span<std::byte> destination;  // receives the body; what does not fit is dropped, and then the transfer ended
    std::atomic<std::uint64_t>* arrived = nullptr;  // null, or told how many bytes stand in the destination by now
};
struct ObjectBody {
    std::uint64_t contentLength = 0;  // what the answer announced, or what came where it announced nothing
    std::uint64_t received = 0;       // bytes that stand in the destination
};

struct PutObjectRequest {
    std::string bucket;
    std::string key;
    std::string contentType;
    std::span<const std::byte> body;
};
struct StoredObject {
    std::string eTag;
};

struct ListObjectsRequest {
    std::string bucket;
    std::string prefix;
    std::string delimiter;
    std::string marker;
};
struct ListObjectsV2Request {
    std::string bucket;
    std::string prefix;
    std::string delimiter;
    std::string continuationToken;
};
struct ListedObject {
    std::string key;
    std::string eTag;
    std::uint64_t size = 0;
    std::int64_t lastModified = 0;  // seconds since 1970 in UTC
};
struct Listing {
    std::vector<ListedObject> contents;
    std::vector<std::string> commonPrefixes;
    bool isTruncated = false;
    std::string nextMarker;             // of ListObjects
    std::string nextContinuationToken;  // of ListObjectsV2
};

struct DeleteObjectRequest {
    std::string bucket;
    std::string key;
};
struct Deleted {};

struct CreateMultipartUploadRequest {
    std::string bucket;
    std::string key;
    std::string contentType;
};
struct MultipartUpload {
    std::string uploadId;
};

struct UploadPartCopyRequest {
    std::string bucket;
    std::string key;
    std::string uploadId;
    std::string copySource;  // "/bucket/key", not yet encoded
    std::int32_t partNumber = 0;
};
struct CopiedPart {
    std::string eTag;
};

struct CompletedPart {
    std::string eTag;
    std::int32_t partNumber = 0;
};
struct CompleteMultipartUploadRequest {
    std::string bucket;
    std::string key;
    std::string uploadId;
    std::vector<CompletedPart> parts;
};
struct CompletedUpload {
    std::string eTag;
};

/// Travels with an asynchronous request to its handler. Who starts the request may derive from it.
struct AsyncCallerContext {
    explicit AsyncCallerContext(std::string identifier) : uuid(std::move(identifier)) {}
    virtual ~AsyncCallerContext() = default;
    std::string uuid;
};

class Client;
using GetObjectHandler = void (*)(Client& client, const GetObjectRequest& request, const Answer<ObjectBody>& outcome,
                                  const std::shared_ptr<const AsyncCallerContext>& context);

/// Requests wait for their answers, but for the asynchronous one. One that fails leaves in errno what comes nearest to
/// its reason.
class Client : public std::enable_shared_from_this<Client> {
public:
    virtual ~Client() = default;
    virtual Answer<BucketLocation> getBucketLocation(const GetBucketLocationRequest& request) = 0;
    virtual Answer<ObjectHead> headObject(const HeadObjectRequest& request) = 0;
    virtual Answer<ObjectBody> getObject(const GetObjectRequest& request) = 0;
    /// Runs the request and then the handler on a thread of the executor, and returns at once. The client lives on
    /// until the handler has returned; the destination has to as well, which is the context's business. When no thread
    /// can be had, the handler runs with an error before the call returns.
    virtual void getObjectAsync(GetObjectRequest request, GetObjectHandler handler,
                                std::shared_ptr<const AsyncCallerContext> context) = 0;
    virtual Answer<StoredObject> putObject(const PutObjectRequest& request) = 0;
    virtual Answer<Listing> listObjects(const ListObjectsRequest& request) = 0;
    virtual Answer<Listing> listObjectsV2(const ListObjectsV2Request& request) = 0;
    virtual Answer<Deleted> deleteObject(const DeleteObjectRequest& request) = 0;
    virtual Answer<MultipartUpload> createMultipartUpload(const CreateMultipartUploadRequest& request) = 0;
    virtual Answer<CopiedPart> uploadPartCopy(const UploadPartCopyRequest& request) = 0;
    virtual Answer<CompletedUpload> completeMultipartUpload(const CompleteMultipartUploadRequest& request) = 0;
};

/// A client for these credentials and this configuration. Payloads go out unsigned unless signPayloads says otherwise.
/// With virtualAddressing a bucket is part of the host name wherever its name and the endpoint allow that.
std::shared_ptr<Client> makeClient(const Credentials& credentials, const ClientConfiguration& configuration,
                                   bool signPayloads, bool virtualAddressing);

/// What the client's libraries need once for the process. Calling initApi again is harmless.
void initApi();
void shutdownApi();

}  // namespace kv::file::s3
