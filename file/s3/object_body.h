// The bytes of an object on their way into the caller's buffer.
//
// Wrong bytes are worse than none: a store that answers another range than the one asked for is refused, and of one
// that sends the whole object instead of a range, the range is taken out of the stream.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "file/s3/http.h"

namespace kv::file::s3 {

/// First and last byte of a range; the last is all ones where none is named.
struct ByteRange {
    std::uint64_t first = 0;
    std::uint64_t last = ~std::uint64_t{0};
};

/// The range of a "bytes=0-99" or "bytes=100-"; nothing for any other text.
std::optional<ByteRange> rangeIn(std::string_view text);

class ObjectSink final : public BodySink {
public:
    /// `arrived` is null, or told what stands in the destination by now, from 0 on.
    ObjectSink(std::span<std::byte> destination, std::optional<ByteRange> range, std::atomic<std::uint64_t>* arrived);

    void begin(const AnswerHead& head) override;
    bool take(std::span<const std::byte> bytes) override;

    /// What came of a transfer that ended well, or ended because this had enough.
    Answer<ObjectBody> outcome() const;

private:
    void beginPart(const AnswerHead& head);
    void beginWhole(const AnswerHead& head);

    std::span<std::byte> destination_;
    std::optional<ByteRange> range_;
    std::atomic<std::uint64_t>* arrived_;
    std::uint64_t skip_ = 0;                  // bytes ahead of the range that are still to come
    std::optional<std::uint64_t> announced_;  // bytes of the range that the answer says will come
    std::optional<std::uint64_t> onItsWay_;   // bytes of the body that are still to come
    std::uint64_t received_ = 0;
    std::optional<Error> refused_;
};

}  // namespace kv::file::s3
