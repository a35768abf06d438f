#include "file/s3/answers.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <optional>

#include "file/s3/xml_answer.h"

namespace kv::file::s3 {
namespace {

constexpr long kOk = 200;

std::string nameOfStatus(long status) {
    switch (status) {
        case 403:
            return "AccessDenied";
        case 404:
            return "NotFound";
        default:
            return "HTTP " + std::to_string(status);
    }
}

/// The element with the code and the message, wherever a store puts it.
const TiXmlElement* errorElement(const TiXmlElement& root) {
    return root.ValueStr() == "Error" ? &root : root.FirstChildElement("Error");
}

Error errorOf(const TiXmlElement* element, long status) {
    Error error{.exceptionName = "", .message = "", .httpStatus = status};
    if (element != nullptr) {
        error.exceptionName = textOf(*element, "Code");
        error.message = textOf(*element, "Message");
    }
    if (error.exceptionName.empty()) error.exceptionName = nameOfStatus(status);
    if (error.message.empty()) error.message = "HTTP " + std::to_string(status);
    return error;
}

Error malformed() {
    return {std::string(kMalformedAnswer), "The store's answer is not the one that belongs to the request", kOk};
}

/// Reads an answer that began as a success: `take` gets its root, and gives nothing for a root of another name.
template <class Result, class Take>
Answer<Result> answerIn(std::string_view body, Take take) {
    TiXmlDocument document;
    if (!readXml(body, document)) return malformed();
    const TiXmlElement& root = *document.RootElement();
    if (root.ValueStr() == "Error") return errorOf(&root, kOk);
    std::optional<Result> result = take(root);
    if (!result) return malformed();
    return *std::move(result);
}

int valueOfHexDigit(char digit) {
    if (digit >= '0' && digit <= '9') return digit - '0';
    const char letter = static_cast<char>(digit | 0x20);
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

/// A text of an encoded listing. Some stores encode as forms do, where "+" is a blank; none leaves a "+" of its own.
std::string decoded(const std::string& text) {
    std::string out;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const int high = at + 2 < text.size() ? valueOfHexDigit(text[at + 1]) : -1;
        const int low = high >= 0 ? valueOfHexDigit(text[at + 2]) : -1;
        if (text[at] == '%' && low >= 0) {
            out += static_cast<char>(high << 4 | low);
            at += 2;
        } else {
            out += text[at] == '+' ? ' ' : text[at];
        }
    }
    return out;
}

std::uint64_t numberIn(const std::string& text) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc{} && end == text.data() + text.size() ? number : 0;
}

/// Seconds since 1970 of "2009-10-12T17:50:30.000Z"; 0 for what is no date.
std::int64_t momentIn(const std::string& text) {
    using namespace std::chrono;
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    unsigned hour = 0;
    unsigned minute = 0;
    unsigned second = 0;
    const int read = std::sscanf(text.c_str(), "%4d-%2u-%2uT%2u:%2u:%2u", &year, &month, &day, &hour, &minute, &second);
    const year_month_day date{std::chrono::year(year), std::chrono::month(month), std::chrono::day(day)};
    if (read != 6 || !date.ok() || hour > 23 || minute > 59 || second > 60) return 0;
    return (sys_days(date).time_since_epoch() + hours(hour) + minutes(minute) + seconds(second)) / seconds(1);
}

ListedObject objectOf(const TiXmlElement& entry) {
    return {.key = textOf(entry, "Key"),
            .eTag = textOf(entry, "ETag"),
            .size = numberIn(textOf(entry, "Size")),
            .lastModified = momentIn(textOf(entry, "LastModified"))};
}

/// The last text of a page, be it a key or a prefix.
std::string lastOf(const Listing& listing) {
    std::string last;
    if (!listing.contents.empty()) last = listing.contents.back().key;
    if (!listing.commonPrefixes.empty()) last = std::max(last, listing.commonPrefixes.back());
    return last;
}

/// Where the next page begins. Stores that say it name the last text of this one, in an encoded listing some as it is
/// and some encoded.
std::string nextMarkerOf(const Listing& page, const std::string& told, bool isEncoded) {
    std::string last = lastOf(page);
    if (told.empty() || told == last) return last;
    return isEncoded ? decoded(told) : told;
}

std::optional<Listing> listingOf(const TiXmlElement& root) {
    if (!root.ValueStr().starts_with("ListBucket")) return std::nullopt;
    const bool isEncoded = textOf(root, "EncodingType") == "url";
    const auto plain = [&](const std::string& text) { return isEncoded ? decoded(text) : text; };
    Listing listing;
    for (auto* at = root.FirstChildElement("Contents"); at != nullptr; at = at->NextSiblingElement("Contents")) {
        ListedObject object = objectOf(*at);
        object.key = plain(object.key);
        if (!object.key.empty()) listing.contents.push_back(std::move(object));
    }
    for (auto* at = root.FirstChildElement("CommonPrefixes"); at != nullptr;
         at = at->NextSiblingElement("CommonPrefixes")) {
        // One element for each prefix with most stores, one for all of them with others.
        for (auto* prefix = at->FirstChildElement("Prefix"); prefix != nullptr;
             prefix = prefix->NextSiblingElement("Prefix")) {
            listing.commonPrefixes.push_back(plain(textIn(prefix)));
        }
    }
    listing.isTruncated = textOf(root, "IsTruncated") == "true";
    if (listing.isTruncated) listing.nextMarker = nextMarkerOf(listing, textOf(root, "NextMarker"), isEncoded);
    listing.nextContinuationToken = textOf(root, "NextContinuationToken");  // never encoded: it is the store's own
    return listing;
}

std::optional<BucketLocation> locationOf(const TiXmlElement& root) {
    constexpr const char* kName = "LocationConstraint";
    if (root.ValueStr() == kName) return BucketLocation{textIn(&root)};
    const TiXmlElement* const inner = root.FirstChildElement(kName);
    if (inner != nullptr) return BucketLocation{textIn(inner)};
    // An element around nothing.
    if (root.FirstChildElement() == nullptr && textIn(&root).empty()) return BucketLocation{};
    return std::nullopt;
}

std::optional<MultipartUpload> uploadOf(const TiXmlElement& root) {
    std::string uploadId = textOf(root, "UploadId");
    if (uploadId.empty()) return std::nullopt;
    return MultipartUpload{std::move(uploadId)};
}

/// Whether the root of an answer has this name; stores differ in what they put in there.
bool isNamed(const TiXmlElement& root, std::string_view name) { return root.ValueStr() == name; }

std::string escaped(std::string_view text) {
    std::string out;
    for (const char character : text) {
        switch (character) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            default:
                out += character;
        }
    }
    return out;
}

}  // namespace

Error errorIn(long status, std::string_view body) {
    TiXmlDocument document;
    const bool isXml = readXml(body, document);
    return errorOf(isXml ? errorElement(*document.RootElement()) : nullptr, status);
}

Answer<BucketLocation> locationIn(std::string_view body) {
    if (body.empty()) return BucketLocation{};
    return answerIn<BucketLocation>(body, locationOf);
}

Answer<Listing> listingIn(std::string_view body) { return answerIn<Listing>(body, listingOf); }

Answer<MultipartUpload> uploadIn(std::string_view body) { return answerIn<MultipartUpload>(body, uploadOf); }

Answer<CopiedPart> copiedPartIn(std::string_view body) {
    return answerIn<CopiedPart>(body, [](const TiXmlElement& root) -> std::optional<CopiedPart> {
        if (!isNamed(root, "CopyPartResult") && !isNamed(root, "CopyObjectResult")) return std::nullopt;
        return CopiedPart{textOf(root, "ETag")};
    });
}

Answer<CompletedUpload> completedUploadIn(std::string_view body) {
    return answerIn<CompletedUpload>(body, [](const TiXmlElement& root) -> std::optional<CompletedUpload> {
        if (!isNamed(root, "CompleteMultipartUploadResult")) return std::nullopt;
        return CompletedUpload{textOf(root, "ETag")};
    });
}

std::string completionOf(const std::vector<CompletedPart>& parts) {
    std::string body = "<CompleteMultipartUpload xmlns=\"http://s3.amazonaws.com/doc/2006-03-01/\">";
    for (const CompletedPart& part : parts) {
        body.append("<Part><PartNumber>").append(std::to_string(part.partNumber)).append("</PartNumber><ETag>");
        body.append(escaped(part.eTag)).append("</ETag></Part>");
    }
    return body.append("</CompleteMultipartUpload>");
}

}  // namespace kv::file::s3
