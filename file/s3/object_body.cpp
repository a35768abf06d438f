#include "file/s3/object_body.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace kv::file::s3 {
namespace {

constexpr std::uint64_t kNoEnd = ~std::uint64_t{0};
constexpr long kPartOfIt = 206;

/// Reads a number off the front.
std::optional<std::uint64_t> takeNumber(std::string_view& text) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{}) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

bool takePrefix(std::string_view& text, std::string_view prefix) {
    if (!text.starts_with(prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

/// The bytes of a "bytes 0-99/1234".
std::optional<ByteRange> contentRangeIn(std::string_view text) {
    if (!takePrefix(text, "bytes ")) return std::nullopt;
    const auto first = takeNumber(text);
    if (!first || !takePrefix(text, "-")) return std::nullopt;
    const auto last = takeNumber(text);
    if (!last || *last < *first || *last == kNoEnd || !text.starts_with("/")) return std::nullopt;
    return ByteRange{*first, *last};
}

}  // namespace

std::optional<ByteRange> rangeIn(std::string_view text) {
    if (!takePrefix(text, "bytes=")) return std::nullopt;
    const auto first = takeNumber(text);
    if (!first || !takePrefix(text, "-")) return std::nullopt;
    if (text.empty()) return ByteRange{*first, kNoEnd};
    const auto last = takeNumber(text);
    if (!last || *last < *first || *last == kNoEnd || !text.empty()) return std::nullopt;
    return ByteRange{*first, *last};
}

ObjectSink::ObjectSink(std::span<std::byte> destination, std::optional<ByteRange> range,
                       std::atomic<std::uint64_t>* arrived)
    : destination_(destination), range_(range), arrived_(arrived) {
    if (arrived_ != nullptr) arrived_->store(0, std::memory_order_relaxed);
    if (range_ && range_->last != kNoEnd) {
        destination_ = destination_.first(
            static_cast<std::size_t>(std::min<std::uint64_t>(destination_.size(), range_->last - range_->first + 1)));
    }
}

void ObjectSink::begin(const AnswerHead& head) {
    onItsWay_ = head.contentLength;
    if (head.status == kPartOfIt) {
        beginPart(head);
    } else {
        beginWhole(head);
    }
}

void ObjectSink::beginPart(const AnswerHead& head) {
    const auto sent = contentRangeIn(head.contentRange);
    if (!range_ || !sent || sent->first != range_->first) {
        refused_ = Error{"UnexpectedRange", "The answer holds another range than the one asked for", head.status};
        return;
    }
    announced_ = head.contentLength ? *head.contentLength : sent->last - sent->first + 1;
}

void ObjectSink::beginWhole(const AnswerHead& head) {
    if (range_) skip_ = range_->first;
    if (!head.contentLength) return;
    if (range_ && *head.contentLength <= range_->first) {
        refused_ = Error{"InvalidRange", "The range begins behind the object's end", head.status};
        return;
    }
    announced_ = *head.contentLength - skip_;
    if (range_ && range_->last != kNoEnd) announced_ = std::min(*announced_, range_->last - range_->first + 1);
}

bool ObjectSink::take(std::span<const std::byte> bytes) {
    if (refused_) return false;
    if (onItsWay_) *onItsWay_ -= std::min<std::uint64_t>(*onItsWay_, bytes.size());
    const auto skipped = static_cast<std::size_t>(std::min<std::uint64_t>(skip_, bytes.size()));
    skip_ -= skipped;
    bytes = bytes.subspan(skipped);
    const std::size_t room = destination_.size() - static_cast<std::size_t>(received_);
    const std::size_t taken = std::min(room, bytes.size());
    if (taken > 0) std::memcpy(destination_.data() + received_, bytes.data(), taken);
    received_ += taken;
    if (arrived_ != nullptr) arrived_->store(received_, std::memory_order_release);
    // Of a body without a length, only the first byte too many tells that it goes on.
    const bool goesOn = taken < bytes.size() || onItsWay_.value_or(0) > 0;
    return received_ < destination_.size() || !goesOn;
}

Answer<ObjectBody> ObjectSink::outcome() const {
    if (refused_) return *refused_;
    const std::uint64_t expected = announced_ ? std::min<std::uint64_t>(*announced_, destination_.size()) : received_;
    if (received_ < expected) {
        return Error{"IncompleteBody", "The body ended before the length that it was announced with", 200};
    }
    return ObjectBody{.contentLength = announced_.value_or(received_), .received = received_};
}

}  // namespace kv::file::s3
