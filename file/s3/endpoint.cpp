#include "file/s3/endpoint.h"

#include <algorithm>
#include <arpa/inet.h>

#include "file/s3/signature.h"
#include "hosts.h"

namespace kv::file::s3 {
namespace {

bool isLowerOrDigit(char character) {
    return (character >= 'a' && character <= 'z') || (character >= '0' && character <= '9');
}

bool isDigit(char character) { return character >= '0' && character <= '9'; }

bool canStandInHost(char character) {
    const char lower = character >= 'A' && character <= 'Z' ? static_cast<char>(character | 0x20) : character;
    return isLowerOrDigit(lower) || character == '-' || character == '.' || character == '_';
}

bool isIpv4(std::string_view host) {
    in_addr address;
    return inet_pton(AF_INET, std::string(host).c_str(), &address) == 1;
}

/// "[" and "]" around an address.
bool isIpv6(std::string_view host) {
    in6_addr address;
    return host.size() > 2 && host.front() == '[' && host.back() == ']' &&
           inet_pton(AF_INET6, std::string(host.substr(1, host.size() - 2)).c_str(), &address) == 1;
}

bool isPort(std::string_view text) {
    return !text.empty() && text.size() <= 5 && std::ranges::all_of(text, isDigit) &&
           std::stoi(std::string(text)) < 65536;
}

/// Where the port begins, at its ":"; the end for none. Colons inside brackets belong to the address.
std::size_t portIn(std::string_view host) {
    const std::size_t colon = host.rfind(':');
    const std::size_t bracket = host.rfind(']');
    if (colon == std::string_view::npos || (bracket != std::string_view::npos && bracket > colon)) return host.size();
    return colon;
}

}  // namespace

Endpoint::Endpoint(const ClientConfiguration& configuration)
    : host_(configuration.endpointOverride), tls_(configuration.useHttps) {
    if (host_.empty()) {
        host_ = "s3." + (configuration.region.empty() ? "us-east-1" : configuration.region) + ".";
        host_ += kv::hosts::kS3ServiceDomain;
    }
}

bool Endpoint::isUsable() const {
    const std::string_view host(host_);
    const std::size_t end = portIn(host);
    if (end != host.size() && !isPort(host.substr(end + 1))) return false;
    const std::string_view name = host.substr(0, end);
    return isIpv6(name) || (!name.empty() && std::ranges::all_of(name, canStandInHost));
}

bool Endpoint::allowsVirtual(std::string_view bucket) const {
    const std::string_view name = std::string_view(host_).substr(0, portIn(host_));
    if (name.find('.') == std::string_view::npos || isIpv4(name) || isIpv6(name)) return false;
    if (bucket.size() < 3 || bucket.size() > 63) return false;
    if (!isLowerOrDigit(bucket.front()) || !isLowerOrDigit(bucket.back())) return false;
    // A certificate for "*.host" covers no further dots; an empty label is no name at all.
    if (bucket.find('.') != std::string_view::npos && (tls_ || bucket.find("..") != std::string_view::npos))
        return false;
    return std::ranges::all_of(bucket, [](char c) { return isLowerOrDigit(c) || c == '-' || c == '.'; });
}

Place Endpoint::virtualPlace(const std::string& bucket, std::string_view key) const {
    return {.host = bucket + "." + host_, .path = "/" + percentEncodedPath(key)};
}

Place Endpoint::pathPlace(std::string_view bucket, std::string_view key) const {
    const std::string path = "/" + percentEncoded(bucket);
    return {.host = host_, .path = key.empty() ? path : path + "/" + percentEncodedPath(key)};
}

std::string Endpoint::url(const Place& place, const std::string& query) const {
    std::string url = (tls_ ? "https://" : "http://") + place.host + place.path;
    if (!query.empty()) url.append("?").append(query);
    return url;
}

}  // namespace kv::file::s3
