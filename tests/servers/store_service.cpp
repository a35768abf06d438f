#include "servers/store_service.h"

#include <algorithm>
#include <charconv>
#include <vector>

#include "servers/store_request.h"
#include "servers/store_xml.h"

namespace kvtest {
namespace {

constexpr std::string_view kTime = "2024-05-06T07:08:09.000Z";  // kStoredTime
constexpr std::string_view kHttpTime = "Mon, 06 May 2024 07:08:09 GMT";

Answer xmlAnswer(std::string_view name, const std::string& content) {
    return {.headers = {{"Content-Type", "application/xml"}}, .body = document(name, content)};
}

std::string valueOf(const std::map<std::string, std::string>& fields, const std::string& name) {
    const auto found = fields.find(name);
    return found == fields.end() ? std::string() : found->second;
}

std::vector<std::string> elementsOf(const std::string& xml, const std::string& name) {
    std::vector<std::string> found;
    const std::string begin = "<" + name + ">";
    for (std::size_t at = 0; (at = xml.find(begin, at)) != std::string::npos;) {
        at += begin.size();
        found.push_back(xml.substr(at, xml.find("</" + name + ">", at) - at));
    }
    return found;
}

void replaceEach(std::string& text, std::string_view what, std::string_view with) {
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
        text.replace(at, what.size(), with);
    }
}

void describe(const StoredObject& object, Answer& answer) {
    answer.headers = {{"Content-Type", object.contentType},
                      {"ETag", object.eTag},
                      {"Last-Modified", std::string(kHttpTime)},
                      {"Accept-Ranges", "bytes"}};
}

Answer head(const StoredObject& object) {
    Answer answer{.announced = object.size};
    describe(object, answer);
    return answer;
}

Answer part(const StoredObject& object, const std::string& range) {
    Answer answer;
    describe(object, answer);
    std::uint64_t first = 0;
    std::uint64_t last = object.size;
    constexpr std::size_t kUnit = 6;  // "bytes="
    if (!range.starts_with("bytes=")) {
        answer.body = object.read(0, object.size);
        return answer;
    }
    const char* const end = range.data() + range.size();
    const char* dash = std::from_chars(range.data() + kUnit, end, first).ptr;
    if (dash < end) std::from_chars(dash + 1, end, last);
    if (first >= object.size) return refusal(416, "InvalidRange", "The requested range is not satisfiable");
    last = std::min(last, object.size - 1);
    answer.status = 206;
    answer.reason = "Partial Content";
    answer.headers.emplace_back("Content-Range", "bytes " + std::to_string(first) + "-" + std::to_string(last) + "/" +
                                                     std::to_string(object.size));
    answer.body = object.read(first, last - first + 1);
    return answer;
}

}  // namespace

Answer StoreService::answerTo(const StoreRequest& request) {
    if (request.operation == "Unknown") return refusal(501, "NotImplemented", "This store does not do that.");
    if (request.bucket != kBucket) return refusal(404, "NoSuchBucket", "The specified bucket does not exist");
    if (request.operation == "GetBucketLocation") return location();
    if (request.operation.starts_with("ListObjects")) return listing(request);
    if (request.operation.ends_with("Object")) return objectAnswer(request);
    return uploadAnswer(request);
}

Answer StoreService::location() const {
    const std::string text = region_ == "us-east-1" ? std::string() : asXmlText(region_);
    return xmlAnswer("LocationConstraint", text);
}

Answer StoreService::listing(const StoreRequest& request) const {
    const bool isSecond = request.operation == "ListObjectsV2";
    const std::string token = valueOf(request.query, isSecond ? "continuation-token" : "marker");
    const std::string after = isSecond && token.empty() ? valueOf(request.query, "start-after") : token;
    const ListPage page = list(objects, {.prefix = valueOf(request.query, "prefix"),
                                         .delimiter = valueOf(request.query, "delimiter"),
                                         .after = after,
                                         .pageSize = pageSize});
    std::string xml = element("Name", kBucket) + element("Prefix", valueOf(request.query, "prefix")) +
                      element("IsTruncated", page.next ? "true" : "false");
    if (isSecond) xml += element("KeyCount", std::to_string(page.contents.size() + page.commonPrefixes.size()));
    if (page.next && isSecond) xml += element("NextContinuationToken", *page.next);
    // The older call tells where to go on only to those who group; others go on behind the last key.
    if (page.next && !isSecond && request.query.contains("delimiter")) xml += element("NextMarker", *page.next);
    for (const auto& [key, object] : page.contents) {
        xml += "<Contents>" + element("Key", key) + element("LastModified", kTime) + element("ETag", object.eTag) +
               element("Size", std::to_string(object.size)) + element("StorageClass", "STANDARD") + "</Contents>";
    }
    for (const std::string& prefix : page.commonPrefixes) {
        xml += "<CommonPrefixes>" + element("Prefix", prefix) + "</CommonPrefixes>";
    }
    return xmlAnswer("ListBucketResult", xml);
}

Answer StoreService::objectAnswer(const StoreRequest& request) {
    if (request.operation == "PutObject") {
        StoredObject& object = objects[request.key];
        object = makeObject(request.http.body, request.http.header("Content-Type"));
        return {.headers = {{"ETag", object.eTag}}};
    }
    if (request.operation == "DeleteObject") {
        objects.erase(request.key);
        return {.status = 204, .reason = "No Content"};
    }
    const auto found = objects.find(request.key);
    if (found == objects.end()) {
        Answer none = refusal(404, "NoSuchKey", "The specified key does not exist.");
        if (request.operation == "HeadObject") none.body.clear();
        return none;
    }
    return request.operation == "HeadObject" ? head(found->second) : part(found->second, request.http.header("Range"));
}

Answer StoreService::uploadAnswer(const StoreRequest& request) {
    if (request.operation == "CreateMultipartUpload") {
        const std::string id = "upload-" + std::to_string(++lastUpload_);
        uploads_[id] = {.key = request.key, .contentType = request.http.header("Content-Type"), .parts = {}};
        return xmlAnswer("InitiateMultipartUploadResult",
                         element("Bucket", kBucket) + element("Key", request.key) + element("UploadId", id));
    }
    const auto upload = uploads_.find(valueOf(request.query, "uploadId"));
    if (upload == uploads_.end() || upload->second.key != request.key) {
        return refusal(404, "NoSuchUpload", "The specified upload does not exist.");
    }
    if (request.operation == "AbortMultipartUpload") {
        uploads_.erase(upload);
        return {.status = 204, .reason = "No Content"};
    }
    if (request.operation == "CompleteMultipartUpload") return complete(request, upload->first);
    return addPart(request, upload->second);
}

Answer StoreService::addPart(const StoreRequest& request, Upload& upload) {
    StoredObject part = makeObject(request.http.body);
    const bool isCopy = request.operation == "UploadPartCopy";
    if (isCopy) {
        std::string source = decoded(request.http.header("x-amz-copy-source"), false);
        source.erase(0, source.starts_with('/') ? 1 : 0);
        const auto found = objects.find(source.substr(std::min(kBucket.size() + 1, source.size())));
        if (!source.starts_with(std::string(kBucket) + "/") || found == objects.end()) {
            return refusal(404, "NoSuchKey", "The specified key does not exist.");
        }
        part = found->second;
    }
    int number = 0;
    const std::string text = valueOf(request.query, "partNumber");
    std::from_chars(text.data(), text.data() + text.size(), number);
    if (number < 1 || number > 10000) return refusal(400, "InvalidArgument", "Part number must be 1 to 10000");
    upload.parts[number] = part;
    if (!isCopy) return {.headers = {{"ETag", part.eTag}}};
    return xmlAnswer("CopyPartResult", element("LastModified", kTime) + element("ETag", part.eTag));
}

Answer StoreService::complete(const StoreRequest& request, const std::string& id) {
    const Upload upload = uploads_[id];
    const std::vector<std::string> numbers = elementsOf(request.http.body, "PartNumber");
    const std::vector<std::string> tags = elementsOf(request.http.body, "ETag");
    std::vector<StoredObject> parts;
    int before = 0;
    for (std::size_t at = 0; at < numbers.size(); ++at) {
        int number = 0;
        std::from_chars(numbers[at].data(), numbers[at].data() + numbers[at].size(), number);
        std::string tag = at < tags.size() ? tags[at] : std::string();
        replaceEach(tag, "&quot;", "\"");
        const auto part = upload.parts.find(number);
        if (number <= before) return refusal(400, "InvalidPartOrder", "The list of parts was not in ascending order");
        if (part == upload.parts.end() || part->second.eTag != tag) {
            return refusal(400, "InvalidPart", "One or more of the specified parts could not be found");
        }
        parts.push_back(part->second);
        before = number;
    }
    if (parts.empty()) return refusal(400, "MalformedXML", "The XML you provided was not well-formed");
    StoredObject& whole = objects[request.key];
    whole = joined(parts);
    whole.contentType = upload.contentType;
    uploads_.erase(id);
    return xmlAnswer("CompleteMultipartUploadResult",
                     element("Bucket", kBucket) + element("Key", request.key) + element("ETag", whole.eTag));
}

}  // namespace kvtest
