// All digests are SHA-256 of mbed TLS. Its calls for a digest of known kind changed their names between versions; the
// generic ones used here did not.
#include "file/s3/signature.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <mbedtls/md.h>
#include <new>

namespace kv::file::s3 {
namespace {

constexpr std::string_view kAlgorithm = "AWS4-HMAC-SHA256";
constexpr std::string_view kService = "s3";
constexpr std::string_view kScopeEnd = "aws4_request";

using Digest = std::array<unsigned char, 32>;

const mbedtls_md_info_t& sha256() { return *mbedtls_md_info_from_type(MBEDTLS_MD_SHA256); }

const unsigned char* bytesOf(std::string_view text) { return reinterpret_cast<const unsigned char*>(text.data()); }

/// The digests fail for want of memory alone, and then there is nothing that could be sent.
void orOutOfMemory(int result) {
    if (result != 0) throw std::bad_alloc();
}

Digest keyedDigest(std::string_view key, std::string_view text) {
    Digest digest;
    orOutOfMemory(mbedtls_md_hmac(&sha256(), bytesOf(key), key.size(), bytesOf(text), text.size(), digest.data()));
    return digest;
}

std::string_view asText(const Digest& digest) { return {reinterpret_cast<const char*>(digest.data()), digest.size()}; }

std::string hex(const Digest& digest) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    text.reserve(2 * digest.size());
    for (const unsigned char byte : digest) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

bool isUnreserved(char character) {
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') ||
           (character >= '0' && character <= '9') || character == '-' || character == '.' || character == '_' ||
           character == '~';
}

std::string encoded(std::string_view text, bool keepsSlashes) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string out;
    out.reserve(text.size());
    for (const char character : text) {
        if (isUnreserved(character) || (keepsSlashes && character == '/')) {
            out += character;
        } else {
            const auto byte = static_cast<unsigned char>(character);
            out += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
        }
    }
    return out;
}

std::string lowerCase(std::string text) {
    for (char& character : text) {
        if (character >= 'A' && character <= 'Z') character = static_cast<char>(character | 0x20);
    }
    return text;
}

/// Without blanks at the ends, and with one for each run of them.
std::string trimmed(std::string_view value) {
    std::string out;
    for (const char character : value) {
        const bool blank = character == ' ' || character == '\t';
        if (!blank) {
            out += character;
        } else if (!out.empty() && out.back() != ' ') {
            out += ' ';
        }
    }
    if (out.ends_with(' ')) out.pop_back();
    return out;
}

NamedTexts canonicalHeaders(const NamedTexts& headers) {
    NamedTexts canonical;
    for (const auto& [name, value] : headers) canonical.emplace_back(lowerCase(name), trimmed(value));
    std::ranges::sort(canonical);
    return canonical;
}

std::string signedNames(const NamedTexts& canonical) {
    std::string names;
    for (const auto& header : canonical) {
        if (!names.empty()) names += ';';
        names += header.first;
    }
    return names;
}

/// "20130524T000000Z"; its first eight characters are the day.
std::string timeStamp(std::int64_t now) {
    using namespace std::chrono;
    const sys_seconds moment{seconds(now)};
    const sys_days day = floor<days>(moment);
    const year_month_day date(day);
    const hh_mm_ss time(moment - day);
    std::array<char, 64> text;
    std::snprintf(text.data(), text.size(), "%04d%02u%02uT%02d%02d%02dZ", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text.data();
}

std::string dayOf(std::int64_t now) { return timeStamp(now).substr(0, 8); }

std::string scopeOf(std::string_view region, std::int64_t now) {
    std::string scope = dayOf(now);
    for (const std::string_view piece : {region, kService, kScopeEnd}) scope.append("/").append(piece);
    return scope;
}

Digest signingKey(const std::string& secretKey, std::string_view region, std::int64_t now) {
    Digest key = keyedDigest("AWS4" + secretKey, dayOf(now));
    for (const std::string_view piece : {region, kService, kScopeEnd}) key = keyedDigest(asText(key), piece);
    return key;
}

}  // namespace

std::string percentEncoded(std::string_view text) { return encoded(text, false); }

std::string percentEncodedPath(std::string_view path) { return encoded(path, true); }

std::string canonicalQuery(const NamedTexts& query) {
    NamedTexts sorted;
    for (const auto& [name, value] : query) sorted.emplace_back(percentEncoded(name), percentEncoded(value));
    std::ranges::sort(sorted);
    std::string text;
    for (const auto& [name, value] : sorted) {
        if (!text.empty()) text += '&';
        text.append(name).append("=").append(value);
    }
    return text;
}

std::string hexDigest(std::span<const std::byte> bytes) {
    Digest digest;
    orOutOfMemory(
        mbedtls_md(&sha256(), reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), digest.data()));
    return hex(digest);
}

std::string canonicalRequest(const HttpRequest& request, std::string_view payload) {
    const NamedTexts headers = canonicalHeaders(request.headers);
    std::string text = request.method + '\n' + request.path + '\n' + canonicalQuery(request.query) + '\n';
    for (const auto& [name, value] : headers) text.append(name).append(":").append(value).append("\n");
    return text.append("\n").append(signedNames(headers)).append("\n").append(payload);
}

std::string stringToSign(const std::string& canonicalRequest, std::string_view region, std::int64_t now) {
    std::string text(kAlgorithm);
    text.append("\n").append(timeStamp(now)).append("\n").append(scopeOf(region, now)).append("\n");
    return text.append(hexDigest(std::as_bytes(std::span(canonicalRequest))));
}

void sign(HttpRequest& request, const Credentials& credentials, std::string_view region, std::string_view payload,
          std::int64_t now) {
    request.headers.emplace_back("x-amz-content-sha256", payload);
    request.headers.emplace_back("x-amz-date", timeStamp(now));
    if (!credentials.sessionToken.empty()) {
        request.headers.emplace_back("x-amz-security-token", credentials.sessionToken);
    }
    const std::string text = stringToSign(canonicalRequest(request, payload), region, now);
    const std::string signature = hex(keyedDigest(asText(signingKey(credentials.secretKey, region, now)), text));
    std::string authorization(kAlgorithm);
    authorization.append(" Credential=").append(credentials.accessKey).append("/").append(scopeOf(region, now));
    authorization.append(",SignedHeaders=").append(signedNames(canonicalHeaders(request.headers)));
    authorization.append(",Signature=").append(signature);
    request.headers.emplace_back("authorization", authorization);
}

}  // namespace kv::file::s3
