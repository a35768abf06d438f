#include "servers/store_request.h"

#include <algorithm>
#include <charconv>
#include <map>

namespace kvtest {
namespace {

std::map<std::string, std::string> queryOf(std::string_view text) {
    std::map<std::string, std::string> query;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('&'), text.size());
        const std::string_view field = text.substr(0, end);
        const std::size_t equals = std::min(field.find('='), field.size());
        query[decoded(field.substr(0, equals), true)] = decoded(field.substr(std::min(equals + 1, field.size())), true);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return query;
}

std::string operationOf(const StoreRequest& request) {
    const auto asks = [&](const char* name) { return request.query.contains(name); };
    const std::string& method = request.http.method;
    if (request.bucket.empty()) return "Unknown";
    if (request.key.empty()) {
        if (method != "GET") return "Unknown";
        if (asks("location")) return "GetBucketLocation";
        return asks("list-type") ? "ListObjectsV2" : "ListObjects";
    }
    if (method == "HEAD") return "HeadObject";
    if (method == "GET") return "GetObject";
    if (method == "PUT" && asks("partNumber"))
        return request.http.has("x-amz-copy-source") ? "UploadPartCopy" : "UploadPart";
    if (method == "PUT") return "PutObject";
    if (method == "DELETE") return asks("uploadId") ? "AbortMultipartUpload" : "DeleteObject";
    if (method == "POST" && asks("uploads")) return "CreateMultipartUpload";
    if (method == "POST" && asks("uploadId")) return "CompleteMultipartUpload";
    return "Unknown";
}

}  // namespace

std::string decoded(std::string_view text, bool plusIsBlank) {
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        unsigned char byte = 0;
        if (text[at] == '%' && at + 2 < text.size() &&
            std::from_chars(&text[at + 1], &text[at + 1] + 2, byte, 16).ptr == &text[at + 1] + 2) {
            plain += static_cast<char>(byte);
            at += 2;
        } else {
            plain += plusIsBlank && text[at] == '+' ? ' ' : text[at];
        }
    }
    return plain;
}

StoreRequest understood(const Request& http) {
    StoreRequest request;
    request.http = http;
    const std::string_view target = http.target;
    const std::size_t question = std::min(target.find('?'), target.size());
    std::string_view path = target.substr(0, question);
    request.query = queryOf(target.substr(std::min(question + 1, target.size())));
    path.remove_prefix(path.starts_with('/') ? 1 : 0);
    const std::string host = http.header("Host");
    const std::size_t domain = host.find("." + std::string(kDomain));
    if (domain != std::string::npos) {
        request.byHostName = true;
        request.bucket = host.substr(0, domain);
        request.key = decoded(path, false);
    } else {
        const std::size_t slash = std::min(path.find('/'), path.size());
        request.bucket = decoded(path.substr(0, slash), false);
        request.key = decoded(path.substr(std::min(slash + 1, path.size())), false);
    }
    request.operation = operationOf(request);
    return request;
}

}  // namespace kvtest
