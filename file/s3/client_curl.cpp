// The client over the transfer library: each operation as a request, and its answer as an outcome.
//
// Bucket and key are looked at before a request is made of them: without its key, the deletion of an object would be
// that of its bucket.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>

#include "border/guard.h"
#include "file/s3/answers.h"
#include "file/s3/client.h"
#include "file/s3/endpoint.h"
#include "file/s3/executor.h"
#include "file/s3/http.h"
#include "file/s3/object_body.h"
#include "file/s3/signature.h"

namespace kv::file::s3 {
namespace {

constexpr std::string_view kInvalidArgument = "InvalidArgument";

/// An operation on a bucket, or with a key on an object in it.
struct Operation {
    std::string method;
    const std::string& bucket;
    std::string_view key = {};
    NamedTexts query = {};
    NamedTexts headers = {};
    std::span<const std::byte> body = {};
    BodySink* sink = nullptr;
    const std::atomic<bool>* abandon = nullptr;
    std::chrono::seconds Patience::*patience = &Patience::usual;
};

HttpAnswer refused(std::string_view name, std::string message) {
    HttpAnswer answer;
    answer.failed = Error{std::string(name), std::move(message), 0};
    answer.error = EINVAL;
    return answer;
}

bool holdsControls(std::string_view text) {
    return std::ranges::any_of(text, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; });
}

NamedTexts typeHeader(const std::string& contentType) {
    if (contentType.empty()) return {};
    return {{"content-type", contentType}};
}

std::int64_t now() {
    using namespace std::chrono;
    return duration_cast<seconds>(system_clock::now().time_since_epoch()).count();
}

/// The outcome of what `take` makes of a success; errno tells why there is none.
template <class Result, class Take>
Answer<Result> outcomeOf(const HttpAnswer& http, Take take) {
    Answer<Result> outcome = http.failed              ? Answer<Result>(*http.failed)
                             : !http.head.isSuccess() ? Answer<Result>(errorIn(http.head.status, http.body))
                                                      : Answer<Result>(take(http));
    if (!outcome.isSuccess()) errno = http.error != 0 ? http.error : EBADMSG;
    return outcome;
}

class CurlClient final : public Client {
public:
    CurlClient(const Credentials& credentials, const ClientConfiguration& configuration, bool signPayloads,
               bool virtualAddressing)
        : credentials_(credentials),
          region_(configuration.region.empty() ? "us-east-1" : configuration.region),
          endpoint_(configuration),
          verifyTls_(configuration.verifySsl),
          patience_(configuration.patience),
          signPayloads_(signPayloads),
          virtualAddressing_(virtualAddressing) {}

    Answer<BucketLocation> getBucketLocation(const GetBucketLocationRequest& request) override;
    Answer<ObjectHead> headObject(const HeadObjectRequest& request) override;
    Answer<ObjectBody> getObject(const GetObjectRequest& request) override { return fetch(request, nullptr); }
    void getObjectAsync(GetObjectRequest request, GetObjectHandler handler,
                        std::shared_ptr<const AsyncCallerContext> context) override;
    Answer<StoredObject> putObject(const PutObjectRequest& request) override;
    Answer<Listing> listObjects(const ListObjectsRequest& request) override;
    Answer<Listing> listObjectsV2(const ListObjectsV2Request& request) override;
    Answer<Deleted> deleteObject(const DeleteObjectRequest& request) override;
    Answer<MultipartUpload> createMultipartUpload(const CreateMultipartUploadRequest& request) override;
    Answer<CopiedPart> uploadPartCopy(const UploadPartCopyRequest& request) override;
    Answer<CompletedUpload> completeMultipartUpload(const CompleteMultipartUploadRequest& request) override;

private:
    Answer<ObjectBody> fetch(const GetObjectRequest& request, const std::atomic<bool>* abandon);
    HttpAnswer onObject(const Operation& operation);
    HttpAnswer onBucket(const Operation& operation);
    HttpAnswer at(const Place& place, const Operation& operation);

    const Credentials credentials_;
    const std::string region_;
    const Endpoint endpoint_;
    const bool verifyTls_;
    const Patience patience_;
    const bool signPayloads_;
    std::atomic<bool> virtualAddressing_;  // turned off when the host of a bucket has no address
    Connections connections_;
};

HttpAnswer CurlClient::onObject(const Operation& operation) {
    if (operation.key.empty()) return refused(kInvalidArgument, "The key is empty");
    return onBucket(operation);
}

HttpAnswer CurlClient::onBucket(const Operation& operation) {
    const border::KeepErrno keep;
    if (operation.bucket.empty()) return refused(kInvalidArgument, "The bucket is empty");
    if (!endpoint_.isUsable()) return refused(kInvalidArgument, "The endpoint is no host");
    if (virtualAddressing_.load(std::memory_order_relaxed) && endpoint_.allowsVirtual(operation.bucket)) {
        HttpAnswer answer = at(endpoint_.virtualPlace(operation.bucket, operation.key), operation);
        if (!answer.isUnresolved) return answer;
        // Many stores have a name of their own, and none for their buckets.
        virtualAddressing_.store(false, std::memory_order_relaxed);
    }
    return at(endpoint_.pathPlace(operation.bucket, operation.key), operation);
}

HttpAnswer CurlClient::at(const Place& place, const Operation& operation) {
    HttpRequest request{operation.method, place.path, operation.query, {{"host", place.host}}};
    request.headers.insert(request.headers.end(), operation.headers.begin(), operation.headers.end());
    if (!credentials_.accessKey.empty() || !credentials_.secretKey.empty()) {
        const std::string payload = signPayloads_ ? hexDigest(operation.body) : std::string(kUnsignedPayload);
        sign(request, credentials_, region_, payload, now());
    }
    for (const auto& [name, value] : request.headers) {
        if (holdsControls(value)) return refused(kInvalidArgument, "A control character in the header " + name);
    }
    return connections_.run({.request = request,
                             .url = endpoint_.url(place, canonicalQuery(request.query)),
                             .body = operation.body,
                             .verifyTls = verifyTls_,
                             .sink = operation.sink,
                             .abandon = operation.abandon,
                             .longestSilence = patience_.*operation.patience});
}

Answer<BucketLocation> CurlClient::getBucketLocation(const GetBucketLocationRequest& request) {
    const HttpAnswer http = onBucket({.method = "GET", .bucket = request.bucket, .query = {{"location", ""}}});
    return outcomeOf<BucketLocation>(http, [](const HttpAnswer& answer) { return locationIn(answer.body); });
}

Answer<ObjectHead> CurlClient::headObject(const HeadObjectRequest& request) {
    const HttpAnswer http = onObject({.method = "HEAD", .bucket = request.bucket, .key = request.key});
    return outcomeOf<ObjectHead>(http, [](const HttpAnswer& answer) {
        const AnswerHead& head = answer.head;
        return ObjectHead{head.contentLength.value_or(0), head.contentType, head.eTag};
    });
}

Answer<ObjectBody> CurlClient::fetch(const GetObjectRequest& request, const std::atomic<bool>* abandon) {
    const std::optional<ByteRange> range = rangeIn(request.range);
    ObjectSink sink(request.destination, range, request.arrived);
    Operation operation{.method = "GET", .bucket = request.bucket, .key = request.key};
    operation.sink = &sink;
    operation.abandon = abandon;
    if (!request.range.empty()) operation.headers = {{"range", request.range}};
    const bool isUnderstood = range.has_value() || request.range.empty();
    const HttpAnswer http = isUnderstood ? onObject(operation) : refused(kInvalidArgument, "The range is none");
    return outcomeOf<ObjectBody>(http, [&](const HttpAnswer&) { return sink.outcome(); });
}

void CurlClient::getObjectAsync(GetObjectRequest request, GetObjectHandler handler,
                                std::shared_ptr<const AsyncCallerContext> context) {
    const int error = border::atBorder(ENOMEM, [&] {
        return startDetached([self = shared_from_this(), request, handler, context]() mutable noexcept {
            const auto outcome = border::atBorder(Answer<ObjectBody>(Error{"OutOfMemory", "No memory", 0}), [&] {
                return static_cast<CurlClient&>(*self).fetch(request, &isProcessEnding());
            });
            if (isProcessEnding()) {
                context.reset();  // a reader that waits for it may be what ends the process
                yieldToTheEnd();
            }
            border::atBorder(0, [&] {
                handler(*self, request, outcome, context);
                return 0;
            });
        });
    });
    if (error == 0) return;
    errno = error;
    handler(*this, request, Error{"NoThread", std::strerror(error), 0}, context);
}

Answer<StoredObject> CurlClient::putObject(const PutObjectRequest& request) {
    const HttpAnswer http = onObject({.method = "PUT",
                                      .bucket = request.bucket,
                                      .key = request.key,
                                      .headers = typeHeader(request.contentType),
                                      .body = request.body});
    return outcomeOf<StoredObject>(http, [](const HttpAnswer& answer) { return StoredObject{answer.head.eTag}; });
}

Answer<Deleted> CurlClient::deleteObject(const DeleteObjectRequest& request) {
    const HttpAnswer http = onObject({.method = "DELETE", .bucket = request.bucket, .key = request.key});
    return outcomeOf<Deleted>(http, [](const HttpAnswer&) { return Deleted{}; });
}

/// The query of a listing. Keys come encoded, since XML has no way to write some letters that they may hold.
NamedTexts listingQuery(const std::string& prefix, const std::string& delimiter) {
    NamedTexts query{{"encoding-type", "url"}, {"prefix", prefix}};
    if (!delimiter.empty()) query.emplace_back("delimiter", delimiter);
    return query;
}

/// A page that has a next one must say where that is, or the listing would begin anew forever.
Answer<Listing> pageIn(const HttpAnswer& http, std::string Listing::*next) {
    return outcomeOf<Listing>(http, [&](const HttpAnswer& answer) -> Answer<Listing> {
        Answer<Listing> page = listingIn(answer.body);
        if (!page.isSuccess() || !page.result().isTruncated || !(page.result().*next).empty()) return page;
        return Error{std::string(kMalformedAnswer), "The listing goes on, but does not say where", answer.head.status};
    });
}

Answer<Listing> CurlClient::listObjects(const ListObjectsRequest& request) {
    NamedTexts query = listingQuery(request.prefix, request.delimiter);
    if (!request.marker.empty()) query.emplace_back("marker", request.marker);
    return pageIn(onBucket({.method = "GET", .bucket = request.bucket, .query = query}), &Listing::nextMarker);
}

Answer<Listing> CurlClient::listObjectsV2(const ListObjectsV2Request& request) {
    NamedTexts query = listingQuery(request.prefix, request.delimiter);
    query.emplace_back("list-type", "2");
    if (!request.continuationToken.empty()) query.emplace_back("continuation-token", request.continuationToken);
    return pageIn(onBucket({.method = "GET", .bucket = request.bucket, .query = query}),
                  &Listing::nextContinuationToken);
}

Answer<MultipartUpload> CurlClient::createMultipartUpload(const CreateMultipartUploadRequest& request) {
    const HttpAnswer http = onObject({.method = "POST",
                                      .bucket = request.bucket,
                                      .key = request.key,
                                      .query = {{"uploads", ""}},
                                      .headers = typeHeader(request.contentType)});
    return outcomeOf<MultipartUpload>(http, [](const HttpAnswer& answer) { return uploadIn(answer.body); });
}

Answer<CopiedPart> CurlClient::uploadPartCopy(const UploadPartCopyRequest& request) {
    const HttpAnswer http =
        onObject({.method = "PUT",
                  .bucket = request.bucket,
                  .key = request.key,
                  .query = {{"partNumber", std::to_string(request.partNumber)}, {"uploadId", request.uploadId}},
                  .headers = {{"x-amz-copy-source", percentEncodedPath(request.copySource)}},
                  .patience = &Patience::copying});
    return outcomeOf<CopiedPart>(http, [](const HttpAnswer& answer) { return copiedPartIn(answer.body); });
}

Answer<CompletedUpload> CurlClient::completeMultipartUpload(const CompleteMultipartUploadRequest& request) {
    const std::string body = completionOf(request.parts);
    const HttpAnswer http = onObject({.method = "POST",
                                      .bucket = request.bucket,
                                      .key = request.key,
                                      .query = {{"uploadId", request.uploadId}},
                                      .headers = typeHeader("application/xml"),
                                      .body = std::as_bytes(std::span(body)),
                                      .patience = &Patience::joining});
    return outcomeOf<CompletedUpload>(http, [](const HttpAnswer& answer) { return completedUploadIn(answer.body); });
}

}  // namespace

std::shared_ptr<Client> makeClient(const Credentials& credentials, const ClientConfiguration& configuration,
                                   bool signPayloads, bool virtualAddressing) {
    return std::make_shared<CurlClient>(credentials, configuration, signPayloads, virtualAddressing);
}

}  // namespace kv::file::s3
